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
    CVemDumpText& operator<<(char c) { return Append(&c, 1); }
    // "%u", "%lu"
    CVemDumpText& Unsigned(unsigned long value) { return Digits(value); }
    // "%i", "%d", "%li"
    CVemDumpText& Signed(long value) { return Digits(value); }
    // "%x"
    CVemDumpText& Hex(unsigned long value) { return Digits(value, 16); }

    void WriteTo(CFile* file) const { file->Write(data_, static_cast<unsigned>(size_)); }

    CVemDumpText& Append(const char* text, std::size_t count) {
        if (size_ + count > capacity_) Grow(count);
        std::memcpy(data_ + size_, text, count);
        size_ += count;
        return *this;
    }

private:
    template <class Integer>
    CVemDumpText& Digits(Integer value, int base = 10) {
        constexpr std::size_t kMost = 24;
        if (size_ + kMost > capacity_) Grow(kMost);
        size_ = static_cast<std::size_t>(std::to_chars(data_ + size_, data_ + size_ + kMost, value, base).ptr - data_);
        return *this;
    }
    void Grow(std::size_t count) {
        std::size_t capacity = capacity_ * 2;
        while (capacity < size_ + count) capacity *= 2;
        auto larger = std::make_unique<char[]>(capacity);
        std::memcpy(larger.get(), data_, size_);
        heap_ = std::move(larger);
        data_ = heap_.get();
        capacity_ = capacity;
    }

    static constexpr std::size_t kRoom = 1024;
    char room_[kRoom];
    std::unique_ptr<char[]> heap_;
    char* data_ = room_;
    std::size_t size_ = 0;
    std::size_t capacity_ = kRoom;
};
