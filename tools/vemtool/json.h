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
    [[gnu::always_inline]] void Key(const char (&key)[N]) {
        PlainKey(key, N - 1);
    }
    [[gnu::always_inline]] void Key(Name key) { PlainKey(key.text, key.size); }
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

    // Fields of the innermost open object written in a row, for the objects that a large tree has
    // hundreds of thousands of: room for `fields` fields with `chars` characters of keys and values
    // is made once, and each field then goes in without a check of room, from a cursor that stays
    // in registers. Before any other call of the writer the row hands the text back (Hand), and
    // takes room again after it (Take).
    class Row {
    public:
        Row(Json& json, std::size_t fields, std::size_t chars) : json_(json) { Take(fields, chars); }
        Row(const Row&) = delete;
        Row& operator=(const Row&) = delete;
        void Take(std::size_t fields, std::size_t chars) {
            const std::size_t count = chars + fields * (json_.compact_ ? 5 : 6 + 2 * json_.depth_);
            if (json_.used_ + count > json_.text_.size()) json_.MakeRoom(count);
            out_ = json_.text_.data() + json_.used_;
            compact_ = json_.compact_;
            comma_ = json_.hasElement_;
            indent_ = json_.depth_ * 2;
        }
        void Hand() {
            json_.used_ = static_cast<std::size_t>(out_ - json_.text_.data());
            json_.hasElement_ = comma_;
        }
        template <std::size_t N>
        [[gnu::always_inline]] void Number(const char (&key)[N], long long value) {
            Key(key);
            if (static_cast<unsigned long long>(value) < 10)  // most are: flags, kinds, zero offsets
                *out_++ = static_cast<char>('0' + value);
            else
                out_ = std::to_chars(out_, out_ + kMaxDigits, value).ptr;
        }
        // A text of the tool's own that needs no escaping.
        template <std::size_t N>
        [[gnu::always_inline]] void Plain(const char (&key)[N], const char* text, std::size_t length) {
            Key(key);
            *out_++ = '"';
            std::memcpy(out_, text, length);
            out_ += length;
            *out_++ = '"';
        }
        // Any text up to its first zero byte and at most `length` characters, escaped where
        // needed: 6 characters of room for each of its own and 2 more.
        template <std::size_t N>
        [[gnu::always_inline]] void String(const char (&key)[N], const char* text, std::size_t length) {
            Key(key);
            out_ = Escaped(out_, text, length);
        }
        template <std::size_t N>
        [[gnu::always_inline]] void Literal(const char (&key)[N], const char* value, std::size_t length) {
            Key(key);
            std::memcpy(out_, value, length);
            out_ += length;
        }
        template <std::size_t N>
        void Null(const char (&key)[N]) {
            Literal(key, "null", 4);
        }
        template <std::size_t N>
        void Bool(const char (&key)[N], bool value) {
            if (value)
                Literal(key, "true", 4);
            else
                Literal(key, "false", 5);
        }

    private:
        template <std::size_t N>
        [[gnu::always_inline]] void Key(const char (&key)[N]) {
            char* out = out_;
            if (comma_) *out++ = ',';
            comma_ = true;
            if (!compact_) {
                *out++ = '\n';
                std::memset(out, ' ', indent_);
                out += indent_;
            }
            *out++ = '"';
            std::memcpy(out, key, N - 1);
            out += N - 1;
            *out++ = '"';
            *out++ = ':';
            if (!compact_) *out++ = ' ';
            out_ = out;
        }
        Json& json_;
        char* out_ = nullptr;
        std::size_t indent_ = 0;
        bool compact_ = false;
        bool comma_ = false;
    };

private:
    void MakeRoom(std::size_t count);
    static char* Escaped(char* out, const char* text, std::size_t length);
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
    [[gnu::always_inline]] void PlainKey(const char* text, std::size_t size) {
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
        if (static_cast<unsigned long long>(value) < 10) {
            Put(static_cast<char>('0' + value));
            return;
        }
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
