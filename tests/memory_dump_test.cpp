// Text dumps of segments, character for character.
#include "memory_test_util.h"

using memtest::Array;
using memtest::ByteVec;

namespace {

using Lines = std::vector<std::string>;

Lines DumpOf(CVemByteArray* array) {
    CStringArray lines;
    VemBaDump(array, lines);
    Lines out;
    for (int i = 0; i < lines.GetSize(); ++i) out.push_back(lines[i].str());
    return out;
}

void AppendRaw(CVemByteArray* a, const ByteVec& bytes) {
    VemBaAppend(a, bytes.data(), static_cast<unsigned>(bytes.size()));
}

// The common header through the array's own operations: Size, kind, header length, Next Seg, Num.
void AppendHeader(CVemByteArray* a, u16 size, u8 kind, u16 next, u16 num) {
    VemBaAppendWord(a, size);
    VemBaAppendByte(a, kind);
    VemBaAppendByte(a, 8);
    VemBaAppendWord(a, next);
    VemBaAppendWord(a, num);
}

std::string KindLine(u8 kind) {
    Array a(0, 1, 1);
    AppendHeader(a, 8, kind, 0, 0);
    return DumpOf(a)[0];
}

}  // namespace

TEST(MemoryDump, KindNamesKeepTheirBlanksAndLineFeeds) {
    EXPECT_EQ(KindLine(0), "Codesegment\n");
    EXPECT_EQ(KindLine(2), "Initialsegment\n");
    EXPECT_EQ(KindLine(18), " IO Complex Table - Start\n");
    EXPECT_EQ(KindLine(24), "Native Code");
    EXPECT_EQ(KindLine(25), "SegInitSecond");
    EXPECT_EQ(KindLine(39), "OemVarInfoTable");
    EXPECT_EQ(KindLine(57), "ByRef Access Info Segment");
    EXPECT_EQ(KindLine(128), "intern - PI - segment \n");
    EXPECT_EQ(KindLine(129), "intern - NI - segment\n ");
    EXPECT_EQ(KindLine(135), "intern - AETypeStck segment\n");
    EXPECT_EQ(KindLine(8), "### unknown segment ###");
    EXPECT_EQ(KindLine(26), "### unknown segment ###");
    EXPECT_EQ(KindLine(136), "### unknown segment ###");
}

TEST(MemoryDump, ByteSizeOneShowsEightBytesALineWithAGapInTheMiddle) {
    Array a(0, 1, 1);
    AppendHeader(a, 10, 1, 0, 0);
    AppendRaw(a, {0x11, 0x22});
    const Lines expected{
        "Datasegment\n",
        " ByteSize = 1 \n",
        "    0000 : 0A 00 01 08  00 00 00 00 ",
        "    0008 : 11 22 ",
    };
    EXPECT_EQ(DumpOf(a), expected);
}

TEST(MemoryDump, AnEmptyArrayHasOneLineOfBytes) {
    Array a(0, 1, 1);
    const Lines dump = DumpOf(a);
    ASSERT_EQ(dump.size(), 3u);
    EXPECT_EQ(dump[1], " ByteSize = 1 \n");
    EXPECT_EQ(dump[2], "    0000 : ");
}

TEST(MemoryDump, OtherByteSizesShowOneUnitALine) {
    Array five(0, 1, 5);
    VemBaAppendWord(five, 0x0102);
    VemBaAppendByte(five, 1);
    const Lines expected{
        "Datasegment\n",
        " ByteSize = 5 \n",
        "    0000 : 02 01 00 00  00 ",
        "    0005 : 01 00 00 00  00 ",
    };
    EXPECT_EQ(DumpOf(five), expected);
    Array four(1, 1, 4);  // big-endian: the kind is read at the end of its unit
    VemBaAppendWord(four, 0x0C);
    VemBaAppendByte(four, 2);
    VemBaAppendByte(four, 8);
    const Lines big{
        "Initialsegment\n",
        " ByteSize = 4 \n",
        "    0000 : 00 00 00 0C  00 00 00 02 ",
        "    0008 : 00 00 00 08  ",
    };
    EXPECT_EQ(DumpOf(four), big);
}

TEST(MemoryDump, AByteSizeOutsideTheModelIsSaid) {
    Array a(0, 1, 1);
    AppendHeader(a, 8, 1, 0, 0);
    VemBaSetByteSize(a, 9);
    const Lines dump = DumpOf(a);
    ASSERT_EQ(dump.size(), 3u);
    EXPECT_EQ(dump[1], " ByteSize nicht korrekt!! \n");
    EXPECT_EQ(dump[2], "    0000 : 08 00 01 08  00 00 00 00 ");
}

TEST(MemoryDump, InstanceTableListsItsRecords) {
    Array a(0, 1, 1);
    AppendHeader(a, 22, 20, 3, 2);
    AppendRaw(a, {8, 0, 5, 0, 6, 0, 0xAA, 0xBB});  // Len 8, DataSeg 5, IniSeg 6, two bytes
    AppendRaw(a, {6, 0, 1, 0, 2, 0});              // Len 6: no data
    const Lines expected{
        " Instance Table - Start \n",
        " ByteSize = 1 \n",
        "    0000 : 16 00 14 08  03 00 02 00 ",
        "    0008 : 08 00 05 00  06 00 AA BB ",
        "    0010 : 06 00 01 00  02 00 ",
        "",
        "Size: 22 ",
        "Next Seg: 3 ",
        "Num: 2 ",
        "Len:   8, IniSeg:  6, DataSeg:  5 :  AA BB ",
        "Len:   6, IniSeg:  2, DataSeg:  1 :  ",
    };
    EXPECT_EQ(DumpOf(a), expected);
}

TEST(MemoryDump, InstanceTableWithoutRecordsStopsAfterItsHead) {
    Array a(0, 1, 1);
    AppendHeader(a, 8, 21, 0, 0);
    const Lines dump = DumpOf(a);
    ASSERT_EQ(dump.size(), 7u);
    EXPECT_EQ(dump[0], " Instance Table - Continue\n");
    EXPECT_EQ(dump[4], "Size: 8 ");
    EXPECT_EQ(dump[6], "Num: 0 ");
}

TEST(MemoryDump, InstanceTableAtByteSizeThreeHasItsFieldsEveryThreeBytes) {
    Array a(0, 1, 3);
    AppendHeader(a, 27, 20, 9, 1);  // positions 0, 3, 6, 9, 12
    VemBaAppendWord(a, 12);         // record at 15: Len, DataSeg, IniSeg, one byte unit
    VemBaAppendWord(a, 4);
    VemBaAppendWord(a, 7);
    VemBaAppendByte(a, 0x5A);
    const Lines dump = DumpOf(a);
    ASSERT_EQ(dump.size(), 2u + 9u + 5u);
    EXPECT_EQ(dump[2], "    0000 : 1B 00 00 ");
    EXPECT_EQ(dump[12], "Size: 27 ");
    EXPECT_EQ(dump[13], "Next Seg: 9 ");
    EXPECT_EQ(dump[14], "Num: 1 ");
    EXPECT_EQ(dump[15], "Len:  12, IniSeg:  7, DataSeg:  4 :  5A 00 00 ");
}

TEST(MemoryDump, BothDownloadTableKindsAreSummedUp) {
    for (u8 kind : {22, 23}) {
        Array a(1, 1, 2);
        AppendHeader(a, 12, kind, 17, 1);
        const Lines dump = DumpOf(a);
        ASSERT_EQ(dump.size(), 6u + 2u);
        EXPECT_EQ(dump[4], "");
        EXPECT_EQ(dump[5], "Size: 12 ");
        EXPECT_EQ(dump[6], "Next Seg: 17 ");
        EXPECT_EQ(dump[7], "full dump of kPlcSegDownloadTable(2) segments not implemented");
    }
}

TEST(MemoryDump, FractLayoutShowsAllBytesOnOneLine) {
    Array a(0, 1, 6, 1);
    const ByteVec header{0x0C, 0, 1, 8, 0, 0, 0, 0};
    AppendRaw(a, header);
    VemBaAppendByte(a, 0x77);
    const Lines expected{
        "Datasegment\n",
        "    0000 : 0C 00 01  08 00 00 00 00 77  00 00 00 00 00 ",
    };
    EXPECT_EQ(DumpOf(a), expected);
}
