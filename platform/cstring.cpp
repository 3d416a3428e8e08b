#include "platform/cstring.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <stdexcept>

namespace {

char AsciiUpper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }
char AsciiLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f'; }

std::size_t Clamp(int v, std::size_t max) {
    if (v < 0) return 0;
    return std::min(static_cast<std::size_t>(v), max);
}

}  // namespace

namespace {

// A block for `capacity` characters and the closing zero, holding `length` of them; gives the
// characters. The words in front of them are set up, the characters are not.
char* NewBlock(std::size_t capacity, std::size_t length) {
    if (capacity > 0x7FFFFFFEu) throw std::length_error("CString");
    const bool roomy = capacity != length;
    const std::size_t head = roomy ? 3 * sizeof(u32) : 2 * sizeof(u32);
    char* chars = static_cast<char*>(::operator new(head + capacity + 1)) + head;
    u32* words = reinterpret_cast<u32*>(chars);
    words[-1] = static_cast<u32>(length) | (roomy ? 0x80000000u : 0);
    words[-2] = 1;
    if (roomy) words[-3] = static_cast<u32>(capacity);
    return chars;
}

}  // namespace

CString::CString(char ch, int repeat) : CString() {
    if (repeat <= 0) return;
    Reserve(static_cast<std::size_t>(repeat));
    std::memset(Owned(), ch, static_cast<std::size_t>(repeat));
    SetSize(static_cast<std::size_t>(repeat));
}

void CString::Init(const char* text, std::size_t length) {
    if (length == 0) return;
    char* chars;
    if (length <= kInlineCapacity) {
        m_v = (length << 1) | 1;
        chars = Owned();
    } else {
        chars = NewBlock(length, length);
        m_v = reinterpret_cast<std::uintptr_t>(chars);
    }
    std::memcpy(chars, text, length);
    chars[length] = '\0';
}

void CString::Drop() noexcept {
    // The only holder needs no atomic write: nobody else can take a share meanwhile.
    std::atomic_ref<u32> refs(Refs());
    if (refs.load(std::memory_order_acquire) == 1 || refs.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        ::operator delete(Word((LengthWord() & kHasCapacity) ? 3 : 2));
    }
}

void CString::Empty() noexcept {
    if (IsShared()) {
        Drop();
        m_v = kEmpty;
    } else {
        SetSize(0);
    }
}

char* CString::Mutable() {
    if (IsShared()) Reserve(Size());
    return Owned();
}

// A block of exactly the capacity asked for; appends ask for more than they need.
void CString::Reserve(std::size_t capacity) {
    const bool shared = IsShared();
    if (capacity <= Capacity() && !shared) return;
    const std::size_t length = Size();
    capacity = std::max(capacity, length);
    if (capacity <= kInlineCapacity) {  // a shared block of a short text, as GetBuffer may leave it
        CString fresh(Data(), static_cast<int>(length));
        *this = std::move(fresh);
        return;
    }
    char* chars = NewBlock(capacity, length);
    std::memcpy(chars, Data(), length + 1);
    Release();
    m_v = reinterpret_cast<std::uintptr_t>(chars);
}

void CString::SetSize(std::size_t length) noexcept {
    if (IsInline()) {
        m_v = (m_v & ~std::uintptr_t{0xFF}) | (length << 1) | 1;
    } else {
        LengthWord() = static_cast<u32>(length) | (LengthWord() & kHasCapacity);
    }
    Owned()[length] = '\0';
}

void CString::Append(const char* text, std::size_t length) {
    if (length == 0) return;
    const std::size_t old = Size();
    if (old + length > Capacity() || IsShared()) {
        // The text may lie in this string: it moves along with the characters.
        const auto at = reinterpret_cast<std::uintptr_t>(text);
        const auto from = reinterpret_cast<std::uintptr_t>(Data());
        const bool own = at >= from && at <= from + old;
        // Keep a shared block alive while its characters are copied.
        CString keep(*this);
        Reserve(std::max(old + length, old + old / 2 + 15));
        if (own) text = Data() + (at - from);
        std::memmove(Owned() + old, text, length);
        SetSize(old + length);
        return;
    }
    std::memmove(Owned() + old, text, length);
    SetSize(old + length);
}

void CString::SetString(const char* text, int length) {
    const std::size_t n = length > 0 ? static_cast<std::size_t>(length) : 0;
    if (IsInline()) {  // as every string that a load fills: nothing to keep
        if (n > kInlineCapacity) {
            Init(text, n);
        } else {
            std::uintptr_t word = (n << 1) | 1;  // the text may lie in this word
            std::memcpy(reinterpret_cast<char*>(&word) + kInlineChars, text, n);
            m_v = word;
        }
        return;
    }
    if (n > Capacity() || IsShared()) {
        CString fresh(text, length);
        *this = std::move(fresh);
        return;
    }
    if (n) std::memmove(Owned(), text, n);
    SetSize(n);
}

// A sum that does not fit in the word is most often a part of a chain that goes on growing: it gets
// the room that an append would give it.
CString CString::Concat(std::string_view a, std::string_view b) {
    CString r;
    const std::size_t n = a.size() + b.size();
    r.Reserve(n > kInlineCapacity ? n + n / 2 + 15 : n);
    r.Append(a.data(), a.size());
    r.Append(b.data(), b.size());
    return r;
}

int CString::Compare(const char* text) const {
    const int r = std::strcmp(Data(), text ? text : "");
    return r < 0 ? -1 : (r > 0 ? 1 : 0);
}

int CString::CompareNoCase(const char* text) const {
    const char* a = Data();
    const char* b = text ? text : "";
    for (;; ++a, ++b) {
        const auto ca = static_cast<unsigned char>(AsciiLower(*a));
        const auto cb = static_cast<unsigned char>(AsciiLower(*b));
        if (ca != cb) return ca < cb ? -1 : 1;
        if (ca == 0) return 0;
    }
}

CString CString::Left(int count) const { return CString(view().substr(0, Clamp(count, Size()))); }

CString CString::Mid(int first) const {
    const std::size_t f = Clamp(first, Size());
    return CString(view().substr(f));
}

CString CString::Mid(int first, int count) const {
    const std::size_t f = Clamp(first, Size());
    return CString(view().substr(f, Clamp(count, Size() - f)));
}

CString CString::Right(int count) const {
    const std::size_t n = Clamp(count, Size());
    return CString(view().substr(Size() - n));
}

int CString::Find(char ch, int start) const {
    if (start < 0) start = 0;
    const std::size_t p = view().find(ch, static_cast<std::size_t>(start));
    return p == std::string_view::npos ? -1 : static_cast<int>(p);
}

int CString::Find(const char* text, int start) const {
    if (start < 0) start = 0;
    if (static_cast<std::size_t>(start) > Size()) return -1;
    const std::size_t p = view().find(text ? text : "", static_cast<std::size_t>(start));
    return p == std::string_view::npos ? -1 : static_cast<int>(p);
}

int CString::ReverseFind(char ch) const {
    const std::size_t p = view().rfind(ch);
    return p == std::string_view::npos ? -1 : static_cast<int>(p);
}

CString& CString::MakeUpper() {
    char* p = Mutable();
    for (std::size_t i = 0; i < Size(); ++i) p[i] = AsciiUpper(p[i]);
    return *this;
}

CString& CString::MakeLower() {
    char* p = Mutable();
    for (std::size_t i = 0; i < Size(); ++i) p[i] = AsciiLower(p[i]);
    return *this;
}

CString& CString::TrimLeft() {
    std::size_t i = 0;
    const std::size_t n = Size();
    const char* text = Data();
    while (i < n && IsBlank(text[i])) ++i;
    if (i == 0) return *this;
    char* p = Mutable();
    std::memmove(p, p + i, n - i);
    SetSize(n - i);
    return *this;
}

CString& CString::TrimRight() {
    std::size_t n = Size();
    while (n > 0 && IsBlank(Data()[n - 1])) --n;
    if (n == Size()) return *this;
    Mutable();
    SetSize(n);
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
    Empty();
    AppendFormatV(format, args);
}

namespace {

// The conversions that the library's texts use (%s %c %d %i %u %x %X %%, with l or ll, a width and
// the flag 0), written as the C library writes them but without its general machinery: a dump of
// a large tree makes millions of such texts. Gives the length, or -1 where the format asks for
// anything else, a null text among it, or the text does not fit: the C library then does it all.
int QuickFormat(char* out, std::size_t room, const char* format, va_list args) {
    char* at = out;
    char* const end = out + room - 1;  // room for the closing zero
    for (const char* f = format; *f;) {
        if (*f != '%') {
            const char* next = std::strchr(f, '%');
            const std::size_t run = next ? static_cast<std::size_t>(next - f) : std::strlen(f);
            if (static_cast<std::size_t>(end - at) < run) return -1;
            std::memcpy(at, f, run);
            at += run;
            f += run;
            continue;
        }
        ++f;
        if (*f == '%') {
            if (at == end) return -1;
            *at++ = *f++;
            continue;
        }
        const bool zero = *f == '0';
        if (zero) ++f;
        std::size_t width = 0;
        while (*f >= '0' && *f <= '9' && width < 100) width = width * 10 + static_cast<std::size_t>(*f++ - '0');
        int longs = 0;
        while (*f == 'l' && longs < 3) ++longs, ++f;
        if (longs > 2 || width >= 100) return -1;
        char digits[32];
        const char* text = digits;
        std::size_t length = 0;
        switch (*f++) {
            case 's':
                if (zero || longs) return -1;
                text = va_arg(args, const char*);
                if (!text) return -1;
                length = std::strlen(text);
                break;
            case 'c':
                if (zero || longs) return -1;
                digits[0] = static_cast<char>(va_arg(args, int));
                length = 1;
                break;
            case 'd':
            case 'i': {
                const long long v = longs == 2   ? va_arg(args, long long)
                                    : longs == 1 ? va_arg(args, long)
                                                 : va_arg(args, int);
                length = static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, v).ptr - digits);
                break;
            }
            case 'u':
            case 'x':
            case 'X': {
                const char conversion = f[-1];
                const unsigned long long v = longs == 2   ? va_arg(args, unsigned long long)
                                             : longs == 1 ? va_arg(args, unsigned long)
                                                          : va_arg(args, unsigned);
                length = static_cast<std::size_t>(
                    std::to_chars(digits, digits + sizeof digits, v, conversion == 'u' ? 10 : 16).ptr - digits);
                if (conversion == 'X') {
                    for (std::size_t i = 0; i < length; ++i)
                        if (digits[i] >= 'a') digits[i] = static_cast<char>(digits[i] - 'a' + 'A');
                }
                break;
            }
            default: return -1;
        }
        const std::size_t pad = width > length ? width - length : 0;
        if (static_cast<std::size_t>(end - at) < pad + length) return -1;
        if (zero && length && text[0] == '-') {  // the sign stands before the zeros
            *at++ = '-';
            ++text;
            --length;
        }
        std::memset(at, zero ? '0' : ' ', pad);
        at += pad;
        std::memcpy(at, text, length);
        at += length;
    }
    *at = '\0';
    return static_cast<int>(at - out);
}

}  // namespace

void CString::AppendFormatV(const char* format, va_list args) {
    char small[256];
    va_list copy;
    va_copy(copy, args);
    int n = QuickFormat(small, sizeof small, format, copy);
    va_end(copy);
    if (n < 0) {
        va_copy(copy, args);
        n = std::vsnprintf(small, sizeof small, format, copy);
        va_end(copy);
    }
    if (n < 0) return;
    if (static_cast<std::size_t>(n) < sizeof small) {
        Append(small, static_cast<std::size_t>(n));
        return;
    }
    const std::size_t old = Size();
    Reserve(old + static_cast<std::size_t>(n));
    std::vsnprintf(Owned() + old, static_cast<std::size_t>(n) + 1, format, args);
    SetSize(old + static_cast<std::size_t>(n));
}

char* CString::GetBuffer(int minLength) {
    const std::size_t want = minLength > 0 ? static_cast<std::size_t>(minLength) : 0;
    const std::size_t old = Size();
    Reserve(want);
    if (want > old) {
        std::memset(Owned() + old, 0, want - old);
        SetSize(want);
    }
    return Owned();
}

void CString::ReleaseBuffer(int newLength) {
    Mutable();
    if (newLength < 0) {
        SetSize(std::strlen(Data()));
    } else if (static_cast<std::size_t>(newLength) <= Size()) {
        SetSize(static_cast<std::size_t>(newLength));
    } else {
        GetBuffer(newLength);
    }
}

std::ostream& operator<<(std::ostream& os, const CString& s) { return os << s.view(); }
