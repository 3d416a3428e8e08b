#include "json.h"

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>

#include "tool.h"

namespace vemtool {

namespace {

// The text goes out in the pieces of bulk output when it is large (export), and at the end of
// every top-level value.
constexpr std::size_t kFlushAt = kBulkPiece;

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
    WritePiece(out_, text_, used_);
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

void Json::MakeRoom(std::size_t count) {
    Flush();
    if (count > text_.size()) text_.resize(count);
}

void Json::Put(const char* text, std::size_t count) {
    if (count) std::memcpy(Room(count), text, count);
}

void Json::Indent() {
    char* at = Room(1 + depth_ * 2);
    *at = '\n';
    std::memset(at + 1, ' ', depth_ * 2);
}

void Json::Open(char c) {
    Separate();
    Put(c);
    ++depth_;
    hasElement_ = false;
}

void Json::Close(char c) {
    --depth_;
    if (hasElement_ && !compact_) Indent();
    hasElement_ = true;  // the level around holds this one
    Put(c);
    if (!depth_) {
        Put('\n');
        Flush();
    } else if (used_ > kFlushAt) {
        Flush();
    }
}

void Json::Key(std::string_view key) {
    const auto* text = reinterpret_cast<const unsigned char*>(key.data());
    std::size_t plain = 0;
    while (plain < key.size() && kPlain[text[plain]]) ++plain;
    if (plain < key.size()) {
        Separate();
        WriteString(std::string(key).c_str());
        Put(compact_ ? ":" : ": ", compact_ ? 1 : 2);
        afterKey_ = true;
    } else {
        PlainKey(key.data(), key.size());
    }
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

namespace {

// Whether all of `count` characters stand in a string as they are; eight at a time.
bool AllPlain(const unsigned char* p, std::size_t count) {
    constexpr std::uint64_t kOnes = ~std::uint64_t{0} / 255, kHigh = kOnes * 0x80;
    const auto hasZero = [](std::uint64_t v) { return (v - kOnes) & ~v & kHigh; };
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8) {
        std::uint64_t w;
        std::memcpy(&w, p + i, 8);
        // below a blank, 8-bit, DEL, quote or backslash
        if (((w - kOnes * 0x20) & ~w & kHigh) | (w & kHigh) | hasZero(w ^ (kOnes * 0x7F)) | hasZero(w ^ (kOnes * '"')) |
            hasZero(w ^ (kOnes * '\\')))
            return false;
    }
    for (; i < count; ++i) {
        if (!kPlain[p[i]]) return false;
    }
    return true;
}

// One character of a string: as it is, behind a backslash, or as \u00XX (8-bit texts read as Latin-1).
inline char* EscapedChar(char* out, unsigned char c) {
    static const char kDigits[] = "0123456789abcdef";
    if (kPlain[c]) {
        *out++ = static_cast<char>(c);
    } else if (c == '"' || c == '\\') {
        *out++ = '\\';
        *out++ = static_cast<char>(c);
    } else {
        std::memcpy(out, "\\u00", 4);
        out[4] = kDigits[c >> 4];
        out[5] = kDigits[c & 15];
        out += 6;
    }
    return out;
}

}  // namespace

void Json::WriteString(const char* text) {
    const char* from = text ? text : "";
    // Most strings are short names: copied in one pass up to their end while they stay plain.
    constexpr std::size_t kShort = 64;
    if (used_ + kShort + 2 <= text_.size()) {
        char* const start = text_.data() + used_;
        char* out = start;
        *out++ = '"';
        const auto* q = reinterpret_cast<const unsigned char*>(from);
        for (const unsigned char* end = q + kShort; q < end && kPlain[*q]; ++q) *out++ = static_cast<char>(*q);
        if (*q == 0) {
            *out++ = '"';
            used_ += static_cast<std::size_t>(out - start);
            return;
        }
    }
    const std::size_t length = std::strlen(from);
    const auto* p = reinterpret_cast<const unsigned char*>(from);
    if (AllPlain(p, length)) {
        char* out = Room(length + 2);
        *out++ = '"';
        std::memcpy(out, from, length);
        out[length] = '"';
        return;
    }
    // Room for the worst, every character escaped; what is left over is given back.
    const std::size_t most = 2 + 6 * length;
    char* const start = Room(most);
    char* out = start;
    *out++ = '"';
    for (const unsigned char* end = p + length; p < end; ++p) {
        out = EscapedChar(out, *p);
    }
    *out++ = '"';
    used_ -= most - static_cast<std::size_t>(out - start);
}

// The text in quotes, up to its first zero byte and at most `length` characters, escaped where
// needed; gives the end. Most texts are short names, copied in the one pass that checks them.
char* Json::Escaped(char* out, const char* text, std::size_t length) {
    const auto* p = reinterpret_cast<const unsigned char*>(text ? text : "");
    const unsigned char* const end = p + (text ? length : 0);
    *out++ = '"';
    if (length >= 16 && text && AllPlain(p, length)) {
        std::memcpy(out, p, length);
        out += length;
        p = end;
    }
    for (; p < end && *p; ++p) {
        out = EscapedChar(out, *p);
    }
    *out++ = '"';
    return out;
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
