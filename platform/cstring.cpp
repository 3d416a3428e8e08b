#include "platform/cstring.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ostream>

namespace {

char AsciiUpper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
char AsciiLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f'; }

std::size_t Clamp(int v, std::size_t max) {
    if (v < 0) return 0;
    return std::min(static_cast<std::size_t>(v), max);
}

}  // namespace

int CString::Compare(const char* text) const {
    const int r = std::strcmp(s_.c_str(), text ? text : "");
    return r < 0 ? -1 : (r > 0 ? 1 : 0);
}

int CString::CompareNoCase(const char* text) const {
    const char* a = s_.c_str();
    const char* b = text ? text : "";
    for (;; ++a, ++b) {
        const auto ca = static_cast<unsigned char>(AsciiLower(*a));
        const auto cb = static_cast<unsigned char>(AsciiLower(*b));
        if (ca != cb) return ca < cb ? -1 : 1;
        if (ca == 0) return 0;
    }
}

CString CString::Left(int count) const { return CString(s_.substr(0, Clamp(count, s_.size()))); }

CString CString::Mid(int first) const {
    const std::size_t f = Clamp(first, s_.size());
    return CString(s_.substr(f));
}

CString CString::Mid(int first, int count) const {
    const std::size_t f = Clamp(first, s_.size());
    return CString(s_.substr(f, Clamp(count, s_.size() - f)));
}

CString CString::Right(int count) const {
    const std::size_t n = Clamp(count, s_.size());
    return CString(s_.substr(s_.size() - n));
}

int CString::Find(char ch, int start) const {
    if (start < 0) start = 0;
    const std::size_t p = s_.find(ch, static_cast<std::size_t>(start));
    return p == std::string::npos ? -1 : static_cast<int>(p);
}

int CString::Find(const char* text, int start) const {
    if (start < 0) start = 0;
    if (static_cast<std::size_t>(start) > s_.size()) return -1;
    const std::size_t p = s_.find(text ? text : "", static_cast<std::size_t>(start));
    return p == std::string::npos ? -1 : static_cast<int>(p);
}

int CString::ReverseFind(char ch) const {
    const std::size_t p = s_.rfind(ch);
    return p == std::string::npos ? -1 : static_cast<int>(p);
}

CString& CString::MakeUpper() {
    for (char& c : s_) c = AsciiUpper(c);
    return *this;
}

CString& CString::MakeLower() {
    for (char& c : s_) c = AsciiLower(c);
    return *this;
}

CString& CString::TrimLeft() {
    std::size_t i = 0;
    while (i < s_.size() && IsBlank(s_[i])) ++i;
    s_.erase(0, i);
    return *this;
}

CString& CString::TrimRight() {
    std::size_t n = s_.size();
    while (n > 0 && IsBlank(s_[n - 1])) --n;
    s_.resize(n);
    return *this;
}

CString& CString::Trim() { return TrimRight().TrimLeft(); }

void CString::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
}

void CString::AppendFormat(const char* format, ...) {
    va_list args;
    va_start(args, format);
    AppendFormatV(format, args);
    va_end(args);
}

void CString::FormatV(const char* format, va_list args) {
    s_.clear();
    AppendFormatV(format, args);
}

void CString::AppendFormatV(const char* format, va_list args) {
    char small[256];
    va_list copy;
    va_copy(copy, args);
    const int n = std::vsnprintf(small, sizeof small, format, copy);
    va_end(copy);
    if (n < 0) return;
    if (static_cast<std::size_t>(n) < sizeof small) {
        s_.append(small, static_cast<std::size_t>(n));
        return;
    }
    const std::size_t old = s_.size();
    s_.resize(old + static_cast<std::size_t>(n) + 1);
    std::vsnprintf(&s_[old], static_cast<std::size_t>(n) + 1, format, args);
    s_.resize(old + static_cast<std::size_t>(n));
}

char* CString::GetBuffer(int minLength) {
    if (minLength > 0 && s_.size() < static_cast<std::size_t>(minLength)) s_.resize(static_cast<std::size_t>(minLength));
    return s_.data();
}

void CString::ReleaseBuffer(int newLength) {
    if (newLength < 0) {
        s_.resize(std::strlen(s_.c_str()));
    } else {
        s_.resize(static_cast<std::size_t>(newLength));
    }
}

std::ostream& operator<<(std::ostream& os, const CString& s) { return os << s.str(); }
