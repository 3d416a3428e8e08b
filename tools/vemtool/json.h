// A small writer of JSON text: objects, arrays, numbers and strings (8-bit texts as Latin-1).
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "vem32.h"

namespace vemtool {

class Json {
public:
    explicit Json(std::FILE* out, bool compact = false);
    ~Json();
    Json(const Json&) = delete;
    Json& operator=(const Json&) = delete;
    void BeginObject() { Open('{'); }
    void EndObject() { Close('}'); }
    void BeginArray() { Open('['); }
    void EndArray() { Close(']'); }
    void Key(const char* key);
    void Number(long long value);
    void Unsigned(unsigned long long value);
    void Bool(bool value);
    void Null();
    void String(const char* text);
    void Hex(const unsigned char* bytes, std::size_t count);  // as a string of hexadecimal digits

    // Shorthands for a key and its value.
    void Field(const char* key, long long value) { Key(key), Number(value); }
    void Field(const char* key, const char* text) { Key(key), String(text); }
    void Field(const char* key, const CString& text) { Key(key), String(text.GetString()); }

private:
    void Open(char c);
    void Close(char c);
    void Separate();
    void Indent();
    void WriteString(const char* text);
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
    std::FILE* out_;
    bool compact_ = false;
    std::vector<char> text_;   // written out when a top-level value ends or the text grows large
    std::size_t used_ = 0;     // characters of text_ in use
    std::vector<char> first_;  // per open level: no element written yet
    bool afterKey_ = false;
};

}  // namespace vemtool
