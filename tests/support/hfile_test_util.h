// Helpers of the source header file tests: blocks, filler text, expected bytes.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "test_util.h"
#include "units/hfile.h"

namespace hfiletest {

inline const std::string kBegin = "$BEGIN_ZQ_HEADER\r\n";
inline const std::string kEnd = "$END_ZQ_HEADER\r\n";

// The markers around the given lines, each line closed by CR LF.
inline std::string Block(std::initializer_list<std::string> lines) {
    std::string text = kBegin;
    for (const std::string& line : lines) text += line + "\r\n";
    return text + kEnd;
}

// Body text of exactly `size` bytes: assignments of varying length in lines closed by CR LF, with
// no unit keyword, no " = ", no "[" and no marker in them.
inline std::string Filler(std::size_t size, unsigned seed) {
    std::string text;
    for (unsigned i = seed; text.size() < size; ++i) {
        text += std::string(i % 7, ' ') + "v" + std::to_string(i) + " := v" + std::to_string(i * 31 % 977) + " + " +
                std::to_string(i % 13) + ";\r\n";
    }
    text.resize(size);
    return text;
}

// A key line that makes the line behind it start at `offset`, when the lines before it take `used`
// bytes.
inline std::string PadLine(std::size_t used, std::size_t offset) {
    return "PAD = " + std::string(offset - used - 8, 'x');  // 6 for "PAD = ", 2 for the line end
}

inline std::string Spliced(const std::string& text, std::size_t pos, std::size_t length, std::string_view with) {
    std::string out = text.substr(0, pos);
    out.append(with);
    out.append(text, pos + length);
    return out;
}

// The cause of the CFileException that f raises, -1 if it raises none.
template <class F>
int CauseOf(F f) {
    try {
        f();
    } catch (const CFileException& e) {
        return e.m_cause;
    }
    return -1;
}

class HFileTest : public ::testing::Test {
protected:
    std::string Put(const std::string& text, const std::string& name = "unit.st") {
        const std::string path = dir_.file(name);
        vemtest::WriteFileText(path, text);
        return path;
    }
    static std::string Content(const std::string& path) { return vemtest::ReadFileText(path); }
    // The text put in a file and opened for reading.
    std::unique_ptr<CHFile> Opened(const std::string& text, const std::string& name = "unit.st") {
        auto file = std::make_unique<CHFile>();
        EXPECT_EQ(file->OpenRead(Put(text, name).c_str(), 0), 1);
        return file;
    }

    vemtest::TempDir dir_;
};

}  // namespace hfiletest
