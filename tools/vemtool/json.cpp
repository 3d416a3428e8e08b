#include "json.h"

#include <charconv>

namespace vemtool {

namespace {
constexpr std::size_t kFlushAt = 1 << 20;  // the text goes out in pieces of about a megabyte
}

Json::~Json() { Flush(); }

void Json::Flush() {
    if (!text_.empty()) std::fwrite(text_.data(), 1, text_.size(), out_);
    text_.clear();
}

void Json::Indent() {
    if (compact_) return;
    text_ += '\n';
    text_.append(first_.size() * 2, ' ');
}

void Json::Separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!first_.empty()) {
        if (!first_.back()) text_ += ',';
        first_.back() = false;
        Indent();
    }
}

void Json::Open(char c) {
    Separate();
    text_ += c;
    first_.push_back(true);
}

void Json::Close(char c) {
    const bool empty = first_.back();
    first_.pop_back();
    if (!empty) Indent();
    text_ += c;
    if (first_.empty()) {
        text_ += '\n';
        Flush();
    } else if (text_.size() > kFlushAt) {
        Flush();
    }
}

void Json::Key(const char* key) {
    Separate();
    WriteString(key);
    text_ += compact_ ? ":" : ": ";
    afterKey_ = true;
}

void Json::Number(long long value) {
    Separate();
    char digits[24];
    text_.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void Json::Unsigned(unsigned long long value) {
    Separate();
    char digits[24];
    text_.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

void Json::Bool(bool value) {
    Separate();
    text_ += value ? "true" : "false";
}

void Json::Null() {
    Separate();
    text_ += "null";
}

void Json::String(const char* text) {
    Separate();
    WriteString(text);
}

void Json::WriteString(const char* text) {
    static const char kDigits[] = "0123456789abcdef";
    text_ += '"';
    for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text ? text : ""); *p; ++p) {
        const unsigned c = *p;
        if (c == '"' || c == '\\') {
            text_ += '\\';
            text_ += static_cast<char>(c);
        } else if (c < 0x20 || c >= 0x7F) {
            text_ += "\\u00";  // 8-bit texts read as Latin-1
            text_ += kDigits[c >> 4];
            text_ += kDigits[c & 15];
        } else {
            text_ += static_cast<char>(c);
        }
    }
    text_ += '"';
}

void Json::Hex(const unsigned char* bytes, std::size_t count) {
    static const char kDigits[] = "0123456789ABCDEF";
    Separate();
    text_ += '"';
    for (std::size_t i = 0; i < count; ++i) {
        text_ += kDigits[bytes[i] >> 4];
        text_ += kDigits[bytes[i] & 15];
    }
    text_ += '"';
}

}  // namespace vemtool
