// CString: an owned string of 8-bit characters.
#pragma once

#include <atomic>
#include <bit>
#include <cstdarg>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "platform/types.h"

class VEM_API CString {
public:
    CString() noexcept = default;
    CString(const char* text) : CString() {  // NOLINT: implicit, as callers pass literals
        if (text) Init(text, std::char_traits<char>::length(text));
    }
    CString(const char* text, int length) : CString() {
        if (text && length > 0) Init(text, static_cast<std::size_t>(length));
    }
    CString(std::string text) : CString() { Init(text.data(), text.size()); }       // NOLINT
    CString(std::string_view text) : CString() { Init(text.data(), text.size()); }  // NOLINT
    CString(char ch, int repeat);
    // A short text is copied with its word, a longer one shares the other's block.
    CString(const CString& other) noexcept : m_v(other.m_v) { AddRef(); }
    CString(CString&& other) noexcept : m_v(other.m_v) { other.m_v = kEmpty; }
    CString& operator=(const CString& other) noexcept {
        if (m_v != other.m_v) {
            other.AddRef();
            Release();
            m_v = other.m_v;
        }
        return *this;
    }
    CString& operator=(CString&& other) noexcept {
        if (this != &other) {
            Release();
            m_v = other.m_v;
            other.m_v = kEmpty;
        }
        return *this;
    }
    ~CString() { Release(); }

    int GetLength() const { return static_cast<int>(Size()); }
    bool IsEmpty() const { return Size() == 0; }
    void Empty() noexcept;
    const char* GetString() const { return Data(); }
    operator const char*() const { return Data(); }  // NOLINT: as the platform's string
    std::string str() const { return std::string(Data(), Size()); }
    std::string_view view() const { return std::string_view(Data(), Size()); }

    char GetAt(int index) const { return Data()[index]; }
    char operator[](int index) const { return Data()[index]; }
    void SetAt(int index, char ch) { Mutable()[index] = ch; }

    // The text of `length` bytes at `text` (which may lie in this string), in the storage held.
    void SetString(const char* text, int length);

    CString& operator=(const char* text) {
        if (text) {
            SetString(text, static_cast<int>(std::char_traits<char>::length(text)));
        } else {
            Empty();
        }
        return *this;
    }
    CString& operator+=(const CString& other) {
        Append(other.Data(), other.Size());
        return *this;
    }
    CString& operator+=(const char* text) {
        if (text) Append(text, std::char_traits<char>::length(text));
        return *this;
    }
    CString& operator+=(char ch) {
        Append(&ch, 1);
        return *this;
    }
    CString& operator+=(std::string_view text) {
        Append(text.data(), text.size());
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

    friend CString operator+(const CString& a, const CString& b) { return Concat(a.view(), b.view()); }
    // A temporary on the left grows in place, so that a chain a + b + c + ... copies each part once.
    friend CString operator+(CString&& a, const CString& b) {
        a += b;
        return std::move(a);
    }
    friend CString operator+(CString&& a, const char* b) {
        a += b;
        return std::move(a);
    }
    friend CString operator+(CString&& a, char b) {
        a += b;
        return std::move(a);
    }
    friend CString operator+(const CString& a, const char* b) { return Concat(a.view(), b ? b : ""); }
    friend CString operator+(const char* a, const CString& b) { return Concat(a ? a : "", b.view()); }
    friend CString operator+(const CString& a, char b) { return Concat(a.view(), std::string_view(&b, 1)); }
    friend CString operator+(char a, const CString& b) { return Concat(std::string_view(&a, 1), b.view()); }

    friend bool operator==(const CString& a, const CString& b) { return a.view() == b.view(); }
    friend bool operator==(const CString& a, const char* b) { return a.view() == std::string_view(b ? b : ""); }
    friend bool operator==(const char* a, const CString& b) { return b == a; }
    friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }
    friend bool operator!=(const CString& a, const char* b) { return !(a == b); }
    friend bool operator!=(const char* a, const CString& b) { return !(b == a); }
    friend bool operator<(const CString& a, const CString& b) { return a.Compare(b.Data()) < 0; }
    friend bool operator>(const CString& a, const CString& b) { return a.Compare(b.Data()) > 0; }

private:
    // One pointer wide. A text of up to six characters lies in the word itself: its low byte holds
    // the length doubled plus one, the other bytes the characters and their closing zero. A longer
    // text lies in a block that copies share; the word points at its characters, in front of which
    // stand the length and the count of strings that share the block (the 32-bit words just below
    // the characters), and the capacity below them where the block has room beyond its text. The
    // top bit of the length word says so: a text read or copied takes exactly its own bytes. Blocks
    // are aligned, so the word's lowest bit is 0. An empty string is thus the word 1 and costs no
    // allocation. The count is changed atomically, so that strings on different threads may share a
    // block; one that is written to first takes a block of its own unless it is the only holder.
    static constexpr std::uintptr_t kEmpty = 1;
    static constexpr std::size_t kInlineCapacity = sizeof(std::uintptr_t) - 2;
    static constexpr u32 kHasCapacity = 0x80000000u;
    // The characters of a short text follow the low byte in memory on a little-endian host and
    // precede it on a big-endian one.
    static constexpr std::size_t kInlineChars = std::endian::native == std::endian::little ? 1 : 0;

    bool IsInline() const noexcept { return (m_v & 1) != 0; }
    const char* Data() const noexcept {
        return IsInline() ? reinterpret_cast<const char*>(&m_v) + kInlineChars : reinterpret_cast<const char*>(m_v);
    }
    // Only for a string that holds its storage alone.
    char* Owned() noexcept {
        return IsInline() ? reinterpret_cast<char*>(&m_v) + kInlineChars : reinterpret_cast<char*>(m_v);
    }
    // The characters, for writing: a shared block is copied first.
    char* Mutable();
    u32* Word(std::size_t below) const noexcept { return reinterpret_cast<u32*>(m_v) - below; }
    u32& LengthWord() const noexcept { return *Word(1); }
    u32& Refs() const noexcept { return *Word(2); }
    bool IsShared() const noexcept {
        return !IsInline() && std::atomic_ref<u32>(Refs()).load(std::memory_order_acquire) != 1;
    }
    std::size_t Size() const noexcept { return IsInline() ? (m_v & 0xFF) >> 1 : LengthWord() & ~kHasCapacity; }
    std::size_t Capacity() const noexcept {
        if (IsInline()) return kInlineCapacity;
        return (LengthWord() & kHasCapacity) ? *Word(3) : LengthWord();
    }

    static CString Concat(std::string_view a, std::string_view b);
    // Init: this string is empty; the block, if any, takes exactly the text.
    void Init(const char* text, std::size_t length);
    void AddRef() const noexcept {
        if (!IsInline()) std::atomic_ref<u32>(Refs()).fetch_add(1, std::memory_order_relaxed);
    }
    void Release() noexcept {
        if (!IsInline()) Drop();
    }
    void Drop() noexcept;
    // Storage held alone with room for `capacity` characters, keeping the characters held.
    void Reserve(std::size_t capacity);
    // For storage held alone; keeps the characters held up to the new size.
    void SetSize(std::size_t length) noexcept;
    void Append(const char* text, std::size_t length);

    std::uintptr_t m_v = kEmpty;
};

VEM_API std::ostream& operator<<(std::ostream& os, const CString& s);

// Hash for use as a key of the standard containers.
struct CStringHash {
    std::size_t operator()(const CString& s) const noexcept { return std::hash<std::string_view>()(s.view()); }
};
