// A small writer of JSON text: objects, arrays, numbers and strings (8-bit texts as Latin-1).
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "vem32.h"

namespace vemtool {

class Json {
public:
    explicit Json(std::FILE* out, bool compact = false) : out_(out), compact_(compact) {}
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
    std::FILE* out_;
    std::string text_;         // written out when a top-level value ends or the text grows large
    std::vector<bool> first_;  // per open level: no element written yet
    bool afterKey_ = false;
    bool compact_ = false;
};

}  // namespace vemtool
