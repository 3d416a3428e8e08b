// A small writer of JSON text: objects, arrays, numbers and strings (8-bit texts as Latin-1).
#pragma once

#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#include "vem32_classes.h"

namespace vemtool {

class Json {
public:
    // A key of the tool's own, written as it is: a literal of plain printable characters without
    // quote or backslash, whose length is known when compiling.
    struct Name {
        template <std::size_t N>
        constexpr Name(const char (&literal)[N]) : text(literal), size(N - 1) {}  // NOLINT: implicit by design
        const char* text;
        std::size_t size;
    };

    explicit Json(std::FILE* out, bool compact = false);
    ~Json();
    Json(const Json&) = delete;
    Json& operator=(const Json&) = delete;
    void BeginObject() { Open('{'); }
    void EndObject() { Close('}'); }
    void BeginArray() { Open('['); }
    void EndArray() { Close(']'); }
    template <std::size_t N>
    void Key(const char (&key)[N]) {
        Key(Name(key));
    }
    void Key(Name key) { PlainKey(key.text, key.size); }
    void Key(std::string_view key);  // any text, escaped where needed
    void Number(long long value) {
        Separate();
        Digits(value);
    }
    void Unsigned(unsigned long long value) {
        Separate();
        Digits(value);
    }
    void Bool(bool value);
    void Null();
    void String(const char* text);
    // A text of the tool's own, such as the name of a number, that needs no escaping.
    void PlainString(const char* text) {
        Separate();
        const std::size_t length = std::strlen(text);
        char* out = Room(length + 2);
        *out++ = '"';
        std::memcpy(out, text, length);
        out[length] = '"';
    }
    void Hex(const unsigned char* bytes, std::size_t count);  // as a string of hexadecimal digits

    // Shorthands for a key and its value.
    void Field(Name key, long long value) {
        KeyOfField(key.text, key.size);
        Digits(value);
    }
    void Field(Name key, const char* text) {
        KeyOfField(key.text, key.size);
        WriteString(text);
    }
    void Field(Name key, const CString& text) { Field(key, text.GetString()); }
    template <std::size_t N>
    void Field(const char (&key)[N], long long value) {
        KeyOfField(key, N - 1);
        Digits(value);
    }
    template <std::size_t N>
    void Field(const char (&key)[N], const char* text) {
        KeyOfField(key, N - 1);
        WriteString(text);
    }
    template <std::size_t N>
    void Field(const char (&key)[N], const CString& text) {
        KeyOfField(key, N - 1);
        WriteString(text.GetString());
    }

private:
    void Open(char c);
    void Close(char c);
    // What comes before a value: nothing behind a key; else a comma behind an element of the same
    // level and, when pretty, a new line.
    void Separate() {
        if (afterKey_) {
            afterKey_ = false;
            return;
        }
        if (depth_) {
            if (hasElement_) Put(',');
            hasElement_ = true;
            if (!compact_) Indent();
        }
    }
    void Indent();
    void PlainKey(const char* text, std::size_t size) {
        KeyOfField(text, size);
        afterKey_ = true;
    }
    // A plain key with what goes before it; the value follows at once.
    [[gnu::always_inline]] void KeyOfField(const char* text, std::size_t size) {
        Separate();
        char* out = Room(size + (compact_ ? 3 : 4));
        *out++ = '"';
        std::memcpy(out, text, size);
        out += size;
        *out++ = '"';
        *out++ = ':';
        if (!compact_) *out = ' ';
    }
    void WriteString(const char* text);
    template <class Integer>
    [[gnu::always_inline]] void Digits(Integer value) {
        char* at = Room(kMaxDigits);
        used_ -= kMaxDigits - static_cast<std::size_t>(std::to_chars(at, at + kMaxDigits, value).ptr - at);
    }
    void Flush();
    char* Room(std::size_t count) {
        if (used_ + count > text_.size()) return MoreRoom(count);
        char* at = text_.data() + used_;
        used_ += count;
        return at;
    }
    char* MoreRoom(std::size_t count);
    void Put(const char* text, std::size_t count);
    void Put(char c) { *Room(1) = c; }
    static constexpr std::size_t kMaxDigits = 24;
    std::FILE* out_;
    bool compact_ = false;
    std::vector<char> text_;   // written out when a top-level value ends or the text grows large
    std::size_t used_ = 0;     // characters of text_ in use
    std::size_t depth_ = 0;    // open objects and arrays
    bool hasElement_ = false;  // the innermost open level has an element
    bool afterKey_ = false;
};

}  // namespace vemtool
