// Bytes from a text file of sections and keys.
#include "memory_test_util.h"

using memtest::Array;
using memtest::ByteVec;
using vemtest::TempDir;

namespace {

// Reads key "Data" of section "Seg" from a file with the given text into a fresh array.
struct IniRead {
    int result;
    ByteVec bytes;
};

IniRead ReadIni(const std::string& text, const char* section = "Seg", const char* key = "Data") {
    TempDir dir;
    const std::string path = dir.file("bytes.ini");
    vemtest::WriteFileText(path, text);
    Array a(0, 1, 1);
    const int result = VemBaReadIniFile(a, path.c_str(), section, key);
    return {result, a.bytes()};
}

}  // namespace

TEST(MemoryIniFile, ReadsTheKeyThenNumberedKeysUntilTheCount) {
    const IniRead r = ReadIni(
        "[Other]\n"
        "DataBytes=1\n"
        "Data=FF\n"
        "[Seg]\n"
        "; bytes of the segment\n"
        "  DataBytes = 5\n"
        "Data = 01 02 ab\n"
        "Data0=CD\r\n"
        "Data1=EF ; the last one\n"
        "Data2=99\n");
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(r.bytes, (ByteVec{0x01, 0x02, 0xAB, 0xCD, 0xEF}));
}

TEST(MemoryIniFile, MissingFileOrCountGivesZero) {
    Array a(0, 1, 1);
    EXPECT_EQ(VemBaReadIniFile(a, "/nonexistent/dir/bytes.ini", "Seg", "Data"), 0);
    EXPECT_EQ(ReadIni("[Seg]\nData=01\n").result, 0);                // no count key
    EXPECT_EQ(ReadIni("[Seg]\nDataBytes=\nData=01\n").result, 0);    // empty count
    EXPECT_EQ(ReadIni("[Seg]\nDataBytes=-1\nData=01\n").result, 0);  // negative count
    EXPECT_EQ(ReadIni("[Other]\nDataBytes=1\n[Seg]\nData=01\n").result, 0);
}

TEST(MemoryIniFile, ResultAndBytesOfTheCases) {
    struct Case {
        const char* what;
        const char* text;
        int result;
        ByteVec bytes;
    };
    const Case cases[] = {
        {"names compare without case", "[sEG]\ndatabytes=2\nDATA=10 20\n", 1, {0x10, 0x20}},
        {"a count of zero reads no line", "[Seg]\nDataBytes=0\nData=01 02\n", 1, {}},
        {"a count that is no number reads as 0", "[Seg]\nDataBytes=abc\nData=01\n", 1, {}},
        {"a bad token ends its line and keeps what was added", "[Seg]\nDataBytes=3\nData=01 0G 03\n", 0, {0x01}},
        {"no blank between tokens", "[Seg]\nDataBytes=2\nData=0102\n", 0, {}},
        {"the next line goes on after a bad token", "[Seg]\nDataBytes=2\nData=01 zz\nData0=02\n", 1, {0x01, 0x02}},
        {"too few lines", "[Seg]\nDataBytes=4\nData=01 02\nData0=03\n", 0, {1, 2, 3}},
        {"too many bytes", "[Seg]\nDataBytes=2\nData=01 02 03\n", 0, {1, 2, 3}},
        {"short values and gaps are skipped", "[Seg]\nDataBytes=2\nData=1\nData1=0A    0b\n", 1, {0x0A, 0x0B}},
        {"the next section head ends the search", "[Seg]\nDataBytes=1\n[X]\nData=01\n[Seg]\nData=01\n", 0, {}},
        {"a [ behind an = makes no section head", "[Seg]\nDataBytes=1\nNote=[x]\nData=7F\n", 1, {0x7F}},
        {"the first line of a key wins", "[Seg]\nDataBytes=1\nData=01\nData=02\n", 1, {0x01}},
        {"lines far apart", "[Seg]\nDataBytes=2000000000\nData=01\nData1999999999=02\n", 0, {0x01, 0x02}},
        {"a line beyond twice the count", "[Seg]\nDataBytes=1\nData3=01\n", 0, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const IniRead r = ReadIni(c.text);
        EXPECT_EQ(r.result, c.result);
        EXPECT_EQ(r.bytes, c.bytes);
    }
    EXPECT_EQ(ReadIni("[Seg]\nDataBytes=100000000\nData=01\n").result, 0);
}

TEST(MemoryIniFile, AtMost998CharactersOfAValueAreKept) {
    std::string value;
    for (int i = 0; i < 400; ++i) value += "01 ";
    // 332 tokens with their blanks take 996 characters; the 333rd ends the kept text.
    const IniRead r = ReadIni("[Seg]\nDataBytes=333\nData=" + value + "\n");
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(r.bytes.size(), 333u);
}
