// CString: an owned string of 8-bit characters.
#pragma once

#include <cstdarg>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "platform/types.h"

class VEM_API CString {
public:
    CString() = default;
    CString(const char* text) : s_(text ? text : "") {}  // NOLINT: implicit, as callers pass literals
    CString(const char* text, int length) : s_(text ? std::string(text, length > 0 ? length : 0) : std::string()) {}
    CString(std::string text) : s_(std::move(text)) {}  // NOLINT
    CString(std::string_view text) : s_(text) {}        // NOLINT
    CString(char ch, int repeat) : s_(repeat > 0 ? static_cast<std::size_t>(repeat) : 0, ch) {}

    int GetLength() const { return static_cast<int>(s_.size()); }
    bool IsEmpty() const { return s_.empty(); }
    void Empty() { s_.clear(); }
    const char* GetString() const { return s_.c_str(); }
    operator const char*() const { return s_.c_str(); }  // NOLINT: as the platform's string
    const std::string& str() const { return s_; }
    std::string& str() { return s_; }
    std::string_view view() const { return s_; }

    char GetAt(int index) const { return s_[static_cast<std::size_t>(index)]; }
    char operator[](int index) const { return s_[static_cast<std::size_t>(index)]; }
    void SetAt(int index, char ch) { s_[static_cast<std::size_t>(index)] = ch; }

    CString& operator=(const char* text) {
        s_ = text ? text : "";
        return *this;
    }
    CString& operator+=(const CString& other) {
        s_ += other.s_;
        return *this;
    }
    CString& operator+=(const char* text) {
        if (text) s_ += text;
        return *this;
    }
    CString& operator+=(char ch) {
        s_ += ch;
        return *this;
    }
    CString& operator+=(std::string_view text) {
        s_ += text;
        return *this;
    }

    // Byte-wise comparison with case counting: negative, 0 or positive.
    int Compare(const char* text) const;
    int CompareNoCase(const char* text) const;

    CString Left(int count) const;
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString Right(int count) const;

    // -1 when not found.
    int Find(char ch, int start = 0) const;
    int Find(const char* text, int start = 0) const;
    int ReverseFind(char ch) const;

    // ASCII rules: bytes above 127 stay as they are, whatever the locale.
    CString& MakeUpper();
    CString& MakeLower();
    CString& TrimLeft();
    CString& TrimRight();
    CString& Trim();

    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void AppendFormat(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void FormatV(const char* format, va_list args);
    void AppendFormatV(const char* format, va_list args);

    // Writable buffer of at least minLength bytes; ReleaseBuffer(-1) takes the length up to the first zero.
    char* GetBuffer(int minLength);
    void ReleaseBuffer(int newLength = -1);

    friend CString operator+(const CString& a, const CString& b) { return CString(a.s_ + b.s_); }
    // A temporary on the left grows in place, so that a chain a + b + c + ... copies each part once.
    friend CString operator+(CString&& a, const CString& b) {
        a.s_ += b.s_;
        return std::move(a);
    }
    friend CString operator+(CString&& a, const char* b) {
        if (b) a.s_ += b;
        return std::move(a);
    }
    friend CString operator+(CString&& a, char b) {
        a.s_ += b;
        return std::move(a);
    }
    friend CString operator+(const CString& a, const char* b) { return CString(a.s_ + (b ? b : "")); }
    friend CString operator+(const char* a, const CString& b) { return CString((a ? a : "") + b.s_); }
    friend CString operator+(const CString& a, char b) { return CString(a.s_ + b); }
    friend CString operator+(char a, const CString& b) { return CString(a + b.s_); }

    friend bool operator==(const CString& a, const CString& b) { return a.s_ == b.s_; }
    friend bool operator==(const CString& a, const char* b) { return a.s_ == (b ? b : ""); }
    friend bool operator==(const char* a, const CString& b) { return b == a; }
    friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }
    friend bool operator!=(const CString& a, const char* b) { return !(a == b); }
    friend bool operator!=(const char* a, const CString& b) { return !(b == a); }
    friend bool operator<(const CString& a, const CString& b) { return a.Compare(b.s_.c_str()) < 0; }
    friend bool operator>(const CString& a, const CString& b) { return a.Compare(b.s_.c_str()) > 0; }

private:
    std::string s_;
};

VEM_API std::ostream& operator<<(std::ostream& os, const CString& s);

// Hash for use as a key of the standard containers.
struct CStringHash {
    std::size_t operator()(const CString& s) const noexcept { return std::hash<std::string>()(s.str()); }
};
