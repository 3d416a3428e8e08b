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

TEST(MemoryIniFile, NamesCompareWithoutCase) {
    const IniRead r = ReadIni("[sEG]\ndatabytes=2\nDATA=10 20\n");
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(r.bytes, (ByteVec{0x10, 0x20}));
}

TEST(MemoryIniFile, MissingFileOrCountGivesZero) {
    Array a(0, 1, 1);
    EXPECT_EQ(VemBaReadIniFile(a, "/nonexistent/dir/bytes.ini", "Seg", "Data"), 0);
    EXPECT_EQ(ReadIni("[Seg]\nData=01\n").result, 0);               // no count key
    EXPECT_EQ(ReadIni("[Seg]\nDataBytes=\nData=01\n").result, 0);   // empty count
    EXPECT_EQ(ReadIni("[Seg]\nDataBytes=-1\nData=01\n").result, 0);  // negative count
    EXPECT_EQ(ReadIni("[Other]\nDataBytes=1\n[Seg]\nData=01\n").result, 0);
}

TEST(MemoryIniFile, ACountOfZeroReadsNoLine) {
    const IniRead r = ReadIni("[Seg]\nDataBytes=0\nData=01 02\n");
    EXPECT_EQ(r.result, 1);
    EXPECT_TRUE(r.bytes.empty());
    EXPECT_EQ(ReadIni("[Seg]\nDataBytes=abc\nData=01\n").result, 1);  // reads as 0 as well
}

TEST(MemoryIniFile, TheArrayIsNotClearedFirst) {
    TempDir dir;
    vemtest::WriteFileText(dir.file("b.ini"), "[Seg]\nDataBytes=1\nData=01\n");
    Array a(0, 1, 1);
    VemBaAppendByte(a, 0x77);
    EXPECT_EQ(VemBaReadIniFile(a, dir.file("b.ini").c_str(), "Seg", "Data"), 0);
    EXPECT_EQ(a.bytes(), (ByteVec{0x77, 0x01}));
}

TEST(MemoryIniFile, ABadTokenEndsItsLineAndKeepsWhatWasAdded) {
    const IniRead bad = ReadIni("[Seg]\nDataBytes=3\nData=01 0G 03\n");
    EXPECT_EQ(bad.result, 0);
    EXPECT_EQ(bad.bytes, ByteVec{0x01});
    const IniRead glued = ReadIni("[Seg]\nDataBytes=2\nData=0102\n");  // no blank between tokens
    EXPECT_EQ(glued.result, 0);
    EXPECT_TRUE(glued.bytes.empty());
    const IniRead resumed = ReadIni("[Seg]\nDataBytes=2\nData=01 zz\nData0=02\n");
    EXPECT_EQ(resumed.result, 1);
    EXPECT_EQ(resumed.bytes, (ByteVec{0x01, 0x02}));
}

TEST(MemoryIniFile, TooFewLinesOrTooManyBytesGiveZero) {
    const IniRead few = ReadIni("[Seg]\nDataBytes=4\nData=01 02\nData0=03\n");
    EXPECT_EQ(few.result, 0);
    EXPECT_EQ(few.bytes, (ByteVec{1, 2, 3}));
    const IniRead many = ReadIni("[Seg]\nDataBytes=2\nData=01 02 03\n");
    EXPECT_EQ(many.result, 0);
    EXPECT_EQ(many.bytes.size(), 3u);
    EXPECT_EQ(ReadIni("[Seg]\nDataBytes=100000000\nData=01\n").result, 0);
}

TEST(MemoryIniFile, ShortValuesAndGapsAreSkipped) {
    const IniRead r = ReadIni("[Seg]\nDataBytes=2\nData=1\nData1=0A    0b\n");
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(r.bytes, (ByteVec{0x0A, 0x0B}));
}

TEST(MemoryIniFile, TheNextSectionHeadEndsTheSearch) {
    EXPECT_EQ(ReadIni("[Seg]\nDataBytes=1\n[X]\nData=01\n[Seg]\nData=01\n").result, 0);
    // A "[" behind an "=" makes no section head.
    const IniRead r = ReadIni("[Seg]\nDataBytes=1\nNote=[x]\nData=7F\n");
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(r.bytes, ByteVec{0x7F});
    // The first line of a key wins.
    EXPECT_EQ(ReadIni("[Seg]\nDataBytes=1\nData=01\nData=02\n").bytes, ByteVec{0x01});
}

TEST(MemoryIniFile, AtMost998CharactersOfAValueAreKept) {
    std::string value;
    for (int i = 0; i < 400; ++i) value += "01 ";
    // 332 tokens with their blanks take 996 characters; the 333rd ends the kept text.
    const IniRead r = ReadIni("[Seg]\nDataBytes=333\nData=" + value + "\n");
    EXPECT_EQ(r.result, 1);
    EXPECT_EQ(r.bytes.size(), 333u);
}
