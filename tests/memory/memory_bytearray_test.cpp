// Little-endian byte arrays: alignment, values at every ByteSize, reads, checksum, limits.
#include "memory/cbytearr.h"
#include "memory_test_util.h"

using memtest::Array;
using memtest::ByteVec;

namespace {

void AppendRaw(CVemByteArray* a, const ByteVec& bytes) {
    VemBaAppend(a, bytes.data(), static_cast<unsigned>(bytes.size()));
}

}  // namespace

TEST(MemoryByteArray, RawAppendPadsFromTheAlignment) {
    struct Case {
        u16 alignment;
        ByteVec first, second, want;
    };
    const Case cases[] = {
        {4, {1, 2, 3, 4, 5}, {0xAA, 0xBB}, {1, 2, 3, 4, 5, 0, 0, 0, 0xAA, 0xBB}},  // grain 2, padding 3
        {2, {9}, {1, 2, 3, 4}, {9, 0, 1, 2, 3, 4}},                                // grain 2, padding 1
        // length 13, four bytes: padding 8 - 1 = 7, so the value starts at 20
        {8, {1, 2, 3, 4, 5, 6, 7, 8, 1, 2, 3, 4, 5}, {0xA1, 0xA2, 0xA3, 0xA4}, {1, 2, 3, 4, 5,    6,    7,    8,
                                                                                1, 2, 3, 4, 5,    0,    0,    0,
                                                                                0, 0, 0, 0, 0xA1, 0xA2, 0xA3, 0xA4}},
        {8, {1}, {2}, {1, 2}},  // a single byte below the alignment has grain 1: no padding
        {4, {1}, {}, {1}},      // nothing to append, nothing padded
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.alignment << " " << c.first.size());
        Array a(0, c.alignment, 1);
        AppendRaw(a, c.first);
        EXPECT_EQ(VemBaAppend(a, c.second.empty() ? nullptr : c.second.data(), static_cast<unsigned>(c.second.size())),
                  1);
        EXPECT_EQ(a.bytes(), c.want);
    }
    Array a(0, 8, 1);  // the same for single bytes appended as values
    VemBaAppendByte(a, 1);
    VemBaAppendByte(a, 2);
    EXPECT_EQ(a.bytes(), (ByteVec{1, 2}));
}

TEST(MemoryByteArray, ValuesTakeTheWidthsOfTheByteSize) {
    {
        Array a(0, 1, 2);
        VemBaAppendByte(a, 0x12);
        VemBaAppendWord(a, 0x1234);
        VemBaAppendDword(a, 0x11223344);
        EXPECT_EQ(a.bytes(), (ByteVec{0x12, 0, 0x34, 0x12, 0x44, 0x33, 0x22, 0x11}));
    }
    {
        Array a(0, 1, 4);
        VemBaAppendWord(a, 0x1234);
        VemBaAppendOffset(a, 0x5678);
        VemBaAppendDword(a, 0x11223344);
        EXPECT_EQ(a.bytes(), (ByteVec{0x34, 0x12, 0, 0, 0x78, 0x56, 0, 0, 0x44, 0x33, 0x22, 0x11}));
    }
    {
        Array a(0, 1, 6);
        VemBaAppendByte(a, 0x12);
        VemBaAppendDword(a, 0x11223344);
        EXPECT_EQ(a.bytes(), (ByteVec{0x12, 0, 0, 0, 0, 0, 0x44, 0x33, 0x22, 0x11, 0, 0}));
    }
}

// The big-endian form mirrors the little-endian one: the high half of a double word, then the low
// half, each in a unit of three; read back, the halves come exchanged.
TEST(MemoryByteArray, ByteSizeThreeSplitsADoubleWordIntoHighAndLowHalves) {
    const std::pair<int, ByteVec> layouts[] = {{0, {0x34, 0x12, 0, 0x22, 0x11, 0, 0x44, 0x33, 0}},
                                               {1, {0, 0x12, 0x34, 0, 0x33, 0x44, 0, 0x11, 0x22}}};
    for (const auto& [motorola, bytes] : layouts) {
        Array a(motorola, 1, 3);
        VemBaAppendWord(a, 0x1234);
        VemBaAppendDword(a, 0x11223344);
        EXPECT_EQ(a.bytes(), bytes) << motorola;
        u32 value = 0;
        ASSERT_EQ(VemBaGetDword(a, 3, &value), 1);
        EXPECT_EQ(value, 0x33441122u) << motorola;
        u16 word = 0;
        ASSERT_EQ(VemBaGetWord(a, 0, &word), 1);
        EXPECT_EQ(word, 0x1234) << motorola;
    }
}

TEST(MemoryByteArray, RawAppendOfOneValueWidensItAsTheByteSizeWants) {
    Array three(0, 1, 3);
    const u32 host = 0x11223344;
    VemBaAppend(three, &host, 4);  // goes on as a double word
    EXPECT_EQ(three.bytes(), (ByteVec{0x22, 0x11, 0, 0x44, 0x33, 0}));
    Array two(0, 1, 2);
    const u8 one = 0x7F;
    VemBaAppend(two, &one, 1);  // goes on as a byte in its unit
    EXPECT_EQ(two.bytes(), (ByteVec{0x7F, 0}));
}

TEST(MemoryByteArray, PatchesOverwriteWholeUnits) {
    Array a(0, 1, 4);
    AppendRaw(a, ByteVec(12, 0xEE));
    VemBaPatchByte(a, 0, 0x12);
    VemBaPatchWord(a, 4, 0x1234);
    VemBaPatchDword(a, 8, 0xA1B2C3D4);
    EXPECT_EQ(a.bytes(), (ByteVec{0x12, 0, 0, 0, 0x34, 0x12, 0, 0, 0xD4, 0xC3, 0xB2, 0xA1}));
    const u8 raw[2] = {1, 2};
    VemBaPatchString(a, 1, raw, 2);
    VemBaPatchString(a, 9, CString("xy"), 3);  // the bytes behind the text's end are zero
    EXPECT_EQ(a.bytes(), (ByteVec{0x12, 1, 2, 0, 0x34, 0x12, 0, 0, 0xD4, 'x', 'y', 0}));
    VemBaPatchString(a, 10, CString("long text"), 1 << 30);  // stops at the length
    EXPECT_EQ(a.bytes()[11], 'o');
    EXPECT_EQ(VemBaGetLength(a), 12u);
}

TEST(MemoryByteArray, ReadsStopAtTheLengthAndLeaveTheResult) {
    Array a(0, 1, 1);
    AppendRaw(a, {1, 2, 3});
    u8 byte = 0x55;
    u16 word = 0x5555;
    u32 dword = 0x55555555;
    EXPECT_EQ(VemBaGetByte(a, 3, &byte), 0);
    EXPECT_EQ(VemBaGetWord(a, 2, &word), 0);
    EXPECT_EQ(VemBaGetDword(a, 0, &dword), 0);
    EXPECT_EQ(byte, 0x55);
    EXPECT_EQ(word, 0x5555);
    EXPECT_EQ(dword, 0x55555555u);
    EXPECT_EQ(VemBaGetByte(a, 2, &byte), 1);
    EXPECT_EQ(byte, 3);
    EXPECT_EQ(VemBaGetOffset(a, 1, &word), 1);
    EXPECT_EQ(word, 0x0302);
}

TEST(MemoryByteArray, MisalignedReadsRaiseTheMemoryException) {
    Array a(0, 2, 1);
    AppendRaw(a, {1, 2, 3, 4, 5, 6, 7, 8});
    u16 word = 0;
    u32 dword = 0;
    EXPECT_THROW(VemBaGetWord(a, 1, &word), CMemoryException);
    EXPECT_THROW(VemBaGetDword(a, 3, &dword), CMemoryException);
    EXPECT_EQ(VemBaGetDword(a, 2, &dword), 1);
    EXPECT_EQ(dword, 0x06050403u);
    VemBaSetAlignment(a, 16);  // counted as 4 for double words
    EXPECT_THROW(VemBaGetDword(a, 2, &dword), CMemoryException);
    EXPECT_EQ(VemBaGetDword(a, 4, &dword), 1);
}

TEST(MemoryByteArray, OffsetReadsADoubleWordFromByteSizeFour) {
    CVemByteArray a(1, 4);
    a.AppendOffset(0x1234);
    a.AppendOffset(0);
    a.PatchByte(2, 0x56);  // a unit of four from byte 2: the upper half of the first offset
    u32 offset = 0;
    ASSERT_EQ(a.GetOffset(0, &offset), 1);
    EXPECT_EQ(offset, 0x00561234u);
    CVemByteArray b(1, 3);
    b.AppendOffset(0x1234);
    ASSERT_EQ(b.GetOffset(0, &offset), 1);
    EXPECT_EQ(offset, 0x1234u);
}

TEST(MemoryByteArray, StringsHaveAFixedLength) {
    Array a(0, 1, 1);
    VemBaAppendString(a, "AB", 0);    // with its terminator
    VemBaAppendString(a, "CDEF", 3);  // cut, so no terminator
    VemBaAppendStringRaw(a, "G", 3);  // padded with zeros
    EXPECT_EQ(a.bytes(), (ByteVec{'A', 'B', 0, 'C', 'D', 'E', 'G', 0, 0}));
}

TEST(MemoryByteArray, CStyleStringGoesByteByByte) {
    Array a(0, 1, 2);  // each byte a unit of two
    EXPECT_EQ(VemBaAppendCStyleString(a, "ABC", 2), 1);
    EXPECT_EQ(a.bytes(), (ByteVec{'A', 0, 'B', 0}));
    EXPECT_EQ(VemBaAppendCStyleString(a, "X", 3), 1);
    EXPECT_EQ(a.bytes(), (ByteVec{'A', 0, 'B', 0, 'X', 0, 0, 0, 0, 0}));
    EXPECT_EQ(VemBaAppendCStyleString(a, "Y", 0), 1);
    EXPECT_EQ(VemBaAppendCStyleString(a, "Y", -4), 1);
    EXPECT_EQ(VemBaGetLength(a), 10u);
}

TEST(MemoryByteArray, PopLastByteWorksOnRawBytes) {
    Array a(0, 1, 2);
    u8 byte = 0x55;
    EXPECT_EQ(VemBaPopLastByte(a, &byte), 0);
    EXPECT_EQ(byte, 0x55);
    VemBaAppendByte(a, 0x12);
    ASSERT_EQ(VemBaPopLastByte(a, &byte), 1);
    EXPECT_EQ(byte, 0);
    ASSERT_EQ(VemBaPopLastByte(a, &byte), 1);
    EXPECT_EQ(byte, 0x12);
    EXPECT_EQ(VemBaGetLength(a), 0u);
    EXPECT_EQ(VemBaGetBytePointer(a), nullptr);  // a one-byte array leaves no storage behind
    VemBaAppendWord(a, 1);
    VemBaRemoveAllBytes(a);
    EXPECT_EQ(VemBaGetLength(a), 0u);
    EXPECT_EQ(VemBaGetBytePointer(a), nullptr);
}

TEST(MemoryByteArray, AlignedLengthPadsTheArray) {
    Array a(0, 2, 1);
    AppendRaw(a, {1, 2, 3, 4, 5});
    EXPECT_EQ(VemBaGetAlignedLength(a, 4), 8);
    EXPECT_EQ(a.bytes(), (ByteVec{1, 2, 3, 4, 5, 0, 0, 0}));
    EXPECT_EQ(VemBaGetAlignedLength(a, 4), 8);
    EXPECT_EQ(VemBaGetLength(a), 8u);
    VemBaAppendByte(a, 9);
    EXPECT_EQ(VemBaGetAlignedLength(a, 0), 10);  // 0 takes the array's own alignment
    EXPECT_EQ(VemBaGetSize(a), 10u);
}

TEST(MemoryByteArray, ChecksumIsTheCrcOverTheRawBytesWithTheLengthAbove) {
    Array a(0, 1, 1);
    EXPECT_EQ(VemBaComputeCheckSum(a, 0x12345678), 0x00005678u);
    AppendRaw(a, {'1', '2', '3', '4', '5', '6', '7', '8', '9'});
    EXPECT_EQ(VemBaComputeCheckSum(a, 0), 0x00094767u);  // polynomial 0x4321 from 0, by hand
    Array b(0, 1, 1);
    AppendRaw(b, {1, 2, 3});
    EXPECT_EQ(VemBaComputeCheckSum(b, 0xFFFF1234), 0x0003EF88u);  // the high half of the seed is ignored
    Array big(1, 1, 1);
    AppendRaw(big, {1, 2, 3});
    EXPECT_EQ(VemBaComputeCheckSum(big, 0x1234), 0x0003EF88u);  // the same for every layout
    Array longer(0, 1, 1);
    ByteVec data;
    for (int i = 0; i < 1000; ++i) data.push_back(static_cast<u8>(i * 7 + 3));
    AppendRaw(longer, data);
    u32 reg = 0xBEEF;  // a long array against the bit-wise definition of the polynomial
    for (u8 b : data) {
        reg ^= static_cast<u32>(b) << 8;
        for (int k = 0; k < 8; ++k) reg = (reg & 0x8000) ? ((reg << 1) ^ 0x4321) & 0xFFFF : (reg << 1) & 0xFFFF;
    }
    EXPECT_EQ(VemBaComputeCheckSum(longer, 0xBEEF), (1000u << 16) + reg);
}

TEST(MemoryByteArray, LengthAboveMaxSizeRaisesAndLeavesTheArray) {
    Array a(0, 4, 1);
    VemBaSetMaxSize(a, 8);
    AppendRaw(a, {1, 2, 3, 4, 5});
    EXPECT_THROW(AppendRaw(a, {6, 7}), CMemoryException);  // 5 + 3 padding + 2 > 8
    EXPECT_EQ(a.bytes(), (ByteVec{1, 2, 3, 4, 5}));
    EXPECT_THROW(VemBaAppendString(a, "x", 100000), CMemoryException);
    EXPECT_EQ(VemBaGetLength(a), 5u);
    Array full(0, 1, 1);
    AppendRaw(full, ByteVec(65300, 1));
    EXPECT_THROW(VemBaAppendByte(full, 1), CMemoryException);
}

TEST(MemoryByteArray, GrowingToTheLastIndexOfTheWidestSizeRaises) {
    CLargeByteArray a;
    a.SetMaxSize(0xFFFFFFFFu);  // index + 1 would wrap to a length of 0
    EXPECT_THROW(a.SetAtGrow(0xFFFFFFFFu, 1), CMemoryException);
    EXPECT_EQ(a.GetLength(), 0u);
}

TEST(MemoryByteArray, AppendOfAnotherArrayGivesZeroButAppends) {
    Array a(0, 1, 1), b(0, 1, 1);
    AppendRaw(b, {7, 8});
    EXPECT_EQ(VemBaAppend(a, b.p), 0);
    EXPECT_EQ(VemBaAppend(a, a.p), 0);  // from itself
    EXPECT_EQ(a.bytes(), (ByteVec{7, 8, 7, 8}));
}

TEST(MemoryByteArray, CloneKeepsClassFormatAndBytes) {
    Array a(0, 4, 2);
    VemBaAppendWord(a, 0x1234);
    VemBaAppendByte(a, 0x56);
    VemBaSetMaxSize(a, 100);
    CVemByteArray* copy = VemBaClone(a);
    EXPECT_EQ(memtest::BytesOf(copy), a.bytes());
    EXPECT_EQ(VemBaGetAlignment(copy), 4);
    EXPECT_EQ(VemBaGetByteSize(copy), 2);
    EXPECT_EQ(VemBaIsMotorolaFormat(copy), 0);
    EXPECT_EQ(copy->GetMaxSize(), 65300u);
    VemBaDeleteByteArray(copy);
    VemBaDeleteByteArray(nullptr);
}

TEST(MemoryByteArray, WriteIniFileOnlySaysSo) {
    vemtest::MessageCapture messages;
    Array a(0, 1, 1);
    EXPECT_EQ(VemBaWriteIniFile(a, "x.ini", "S", "K"), 0);
    ASSERT_EQ(messages.texts().size(), 1u);
    EXPECT_EQ(messages.texts()[0], " CVemByteArray :: WriteIniFile - Not implemented yet");
}
