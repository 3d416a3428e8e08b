#include "json.h"

#include <charconv>
#include <cstring>

namespace vemtool {

namespace {

constexpr std::size_t kFlushAt = 1 << 20;  // the text goes out in pieces of about a megabyte

// The characters that a string holds as they are: printable ASCII but the quote and the backslash.
struct PlainTable {
    bool plain[256] = {};
    constexpr PlainTable() {
        for (int c = 0x20; c < 0x7F; ++c) plain[c] = c != '"' && c != '\\';
    }
    constexpr bool operator[](unsigned char c) const { return plain[c]; }
};
constexpr PlainTable kPlain;

}  // namespace

Json::Json(std::FILE* out, bool compact) : out_(out), compact_(compact), text_(kFlushAt + 4096) {}

Json::~Json() { Flush(); }

void Json::Flush() {
    if (used_) std::fwrite(text_.data(), 1, used_, out_);
    used_ = 0;
}

// Room for `count` more characters where the buffer is full; a text of its own beyond the buffer
// makes it grow.
char* Json::MoreRoom(std::size_t count) {
    Flush();
    if (count > text_.size()) text_.resize(count);
    char* at = text_.data() + used_;
    used_ += count;
    return at;
}

void Json::Put(const char* text, std::size_t count) {
    if (count) std::memcpy(Room(count), text, count);
}

void Json::Indent() {
    if (compact_) return;
    char* at = Room(1 + first_.size() * 2);
    *at = '\n';
    std::memset(at + 1, ' ', first_.size() * 2);
}

void Json::Separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!first_.empty()) {
        if (!first_.back()) Put(',');
        first_.back() = false;
        Indent();
    }
}

void Json::Open(char c) {
    Separate();
    Put(c);
    first_.push_back(true);
}

void Json::Close(char c) {
    const bool empty = first_.back();
    first_.pop_back();
    if (!empty) Indent();
    Put(c);
    if (first_.empty()) {
        Put('\n');
        Flush();
    } else if (used_ > kFlushAt) {
        Flush();
    }
}

// Keys are mostly the tool's own names, which need no escaping: they go in with one copy.
void Json::Key(const char* key) {
    Separate();
    const char* text = key ? key : "";
    const auto* end = reinterpret_cast<const unsigned char*>(text);
    while (kPlain[*end]) ++end;
    if (*end) {
        WriteString(text);
        Put(compact_ ? ":" : ": ", compact_ ? 1 : 2);
    } else {
        const auto length = static_cast<std::size_t>(reinterpret_cast<const char*>(end) - text);
        char* out = Room(length + (compact_ ? 3 : 4));
        *out++ = '"';
        std::memcpy(out, text, length);
        out += length;
        *out++ = '"';
        *out++ = ':';
        if (!compact_) *out = ' ';
    }
    afterKey_ = true;
}

void Json::Number(long long value) {
    Separate();
    char digits[24];
    Put(digits, static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits));
}

void Json::Unsigned(unsigned long long value) {
    Separate();
    char digits[24];
    Put(digits, static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, value).ptr - digits));
}

void Json::Bool(bool value) {
    Separate();
    if (value)
        Put("true", 4);
    else
        Put("false", 5);
}

void Json::Null() {
    Separate();
    Put("null", 4);
}

void Json::String(const char* text) {
    Separate();
    WriteString(text);
}

void Json::WriteString(const char* text) {
    static const char kDigits[] = "0123456789abcdef";
    Put('"');
    const auto* p = reinterpret_cast<const unsigned char*>(text ? text : "");
    for (;;) {
        // Runs of characters that stand as they are go in with one copy.
        const unsigned char* run = p;
        while (kPlain[*p]) ++p;
        Put(reinterpret_cast<const char*>(run), static_cast<std::size_t>(p - run));
        const unsigned c = *p;
        if (c == 0) break;
        if (c == '"' || c == '\\') {
            const char escaped[] = {'\\', static_cast<char>(c)};
            Put(escaped, sizeof escaped);
        } else {
            const char escaped[] = {'\\',           'u', '0', '0', kDigits[c >> 4],
                                    kDigits[c & 15]};  // 8-bit texts read as Latin-1
            Put(escaped, sizeof escaped);
        }
        ++p;
    }
    Put('"');
}

void Json::Hex(const unsigned char* bytes, std::size_t count) {
    static const char kDigits[] = "0123456789ABCDEF";
    Separate();
    char* out = Room(2 * count + 2);
    *out++ = '"';
    for (std::size_t i = 0; i < count; ++i) {
        *out++ = kDigits[bytes[i] >> 4];
        *out++ = kDigits[bytes[i] & 15];
    }
    *out = '"';
}

}  // namespace vemtool
