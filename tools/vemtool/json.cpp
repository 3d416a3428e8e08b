#include "json.h"

namespace vemtool {

void Json::Indent() {
    if (compact_) return;
    std::fputc('\n', out_);
    for (std::size_t i = 0; i < first_.size(); ++i) std::fputs("  ", out_);
}

void Json::Separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!first_.empty()) {
        if (!first_.back()) std::fputc(',', out_);
        first_.back() = false;
        Indent();
    }
}

void Json::Open(char c) {
    Separate();
    std::fputc(c, out_);
    first_.push_back(true);
}

void Json::Close(char c) {
    const bool empty = first_.back();
    first_.pop_back();
    if (!empty) Indent();
    std::fputc(c, out_);
    if (first_.empty()) std::fputc('\n', out_);
}

void Json::Key(const char* key) {
    Separate();
    WriteString(key);
    std::fputs(compact_ ? ":" : ": ", out_);
    afterKey_ = true;
}

void Json::Number(long long value) {
    Separate();
    std::fprintf(out_, "%lld", value);
}

void Json::Unsigned(unsigned long long value) {
    Separate();
    std::fprintf(out_, "%llu", value);
}

void Json::Bool(bool value) {
    Separate();
    std::fputs(value ? "true" : "false", out_);
}

void Json::Null() {
    Separate();
    std::fputs("null", out_);
}

void Json::String(const char* text) {
    Separate();
    WriteString(text);
}

void Json::WriteString(const char* text) {
    std::fputc('"', out_);
    for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text ? text : ""); *p; ++p) {
        const unsigned c = *p;
        if (c == '"' || c == '\\') {
            std::fputc('\\', out_);
            std::fputc(static_cast<int>(c), out_);
        } else if (c < 0x20 || c >= 0x7F) {
            std::fprintf(out_, "\\u%04x", c);  // 8-bit texts read as Latin-1
        } else {
            std::fputc(static_cast<int>(c), out_);
        }
    }
    std::fputc('"', out_);
}

void Json::Hex(const unsigned char* bytes, std::size_t count) {
    Separate();
    std::fputc('"', out_);
    for (std::size_t i = 0; i < count; ++i) std::fprintf(out_, "%02X", bytes[i]);
    std::fputc('"', out_);
}

}  // namespace vemtool
