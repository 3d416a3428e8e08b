// A block of dump text put together in place: texts copied whole, numbers written without a format
// string, and the block handed to the file in one write. A node's block fits the room on the stack;
// a longer one moves to the heap.
#pragma once

#include <charconv>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/cstring.h"
#include "platform/file.h"

class CVemDumpText {
public:
    CVemDumpText() = default;
    CVemDumpText(const CVemDumpText&) = delete;
    CVemDumpText& operator=(const CVemDumpText&) = delete;

    // Up to the first null character, as "%s" takes it.
    CVemDumpText& operator<<(const char* text) { return Append(text, std::strlen(text)); }
    // Every character of the string, as the string's operator + takes it.
    CVemDumpText& operator<<(const CString& text) { return Append(text.GetString(), text.view().size()); }
    CVemDumpText& operator<<(std::string_view text) { return Append(text.data(), text.size()); }
    CVemDumpText& operator<<(char c) { return Append(&c, 1); }
    // "%u", "%lu"
    CVemDumpText& Unsigned(unsigned long value) { return Digits(value); }
    // "%i", "%d", "%li"
    CVemDumpText& Signed(long value) { return Digits(value); }
    // "%x"
    CVemDumpText& Hex(unsigned long value) { return Digits(value, 16); }

    void WriteTo(CFile* file) const { file->Write(m_data, static_cast<unsigned>(m_size)); }

    // Room for up to `count` characters written in place; Commit takes them up to `end`.
    char* Room(std::size_t count) {
        if (m_size + count > m_capacity) Grow(count);
        return m_data + m_size;
    }
    void Commit(const char* end) { m_size = static_cast<std::size_t>(end - m_data); }

    CVemDumpText& Append(const char* text, std::size_t count) {
        if (m_size + count > m_capacity) Grow(count);
        char* const to = m_data + m_size;
        // Most pieces are a few characters: two overlapping moves of fixed width instead of a call.
        if (count >= 8 && count <= 16) {
            std::memcpy(to, text, 8);
            std::memcpy(to + count - 8, text + count - 8, 8);
        } else if (count >= 4 && count < 8) {
            std::memcpy(to, text, 4);
            std::memcpy(to + count - 4, text + count - 4, 4);
        } else if (count > 0 && count < 4) {
            to[0] = text[0];
            to[count / 2] = text[count / 2];
            to[count - 1] = text[count - 1];
        } else {
            std::memcpy(to, text, count);
        }
        m_size += count;
        return *this;
    }

private:
    template <class Integer>
    CVemDumpText& Digits(Integer value, int base = 10) {
        constexpr std::size_t kMost = 24;
        if (m_size + kMost > m_capacity) Grow(kMost);
        m_size =
            static_cast<std::size_t>(std::to_chars(m_data + m_size, m_data + m_size + kMost, value, base).ptr - m_data);
        return *this;
    }
    void Grow(std::size_t count) {
        std::size_t capacity = m_capacity * 2;
        while (capacity < m_size + count) capacity *= 2;
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);  // written before it is read
        std::memcpy(larger.get(), m_data, m_size);
        m_heap = std::move(larger);
        m_data = m_heap.get();
        m_capacity = capacity;
    }

    static constexpr std::size_t kRoom = 1024;
    char m_room[kRoom];
    std::unique_ptr<char[]> m_heap;
    char* m_data = m_room;
    std::size_t m_size = 0;
    std::size_t m_capacity = kRoom;
};
