// The big-endian and the fractional layouts, exercised on this host as thoroughly as the
// little-endian one.
#include <cstring>

#include "memory/layouts.h"
#include "memory_test_util.h"

using memtest::Array;
using memtest::ByteVec;

TEST(MemoryMotorola, ValuesStandAtTheRightOfTheirUnits) {
    {
        Array a(1, 1, 1);
        VemBaAppendWord(a, 0x1234);
        VemBaAppendDword(a, 0x11223344);
        EXPECT_EQ(a.bytes(), (ByteVec{0x12, 0x34, 0x11, 0x22, 0x33, 0x44}));
        u16 word = 0;
        ASSERT_EQ(VemBaGetWord(a, 0, &word), 1);
        EXPECT_EQ(word, 0x1234);
    }
    {
        Array a(1, 1, 2);
        VemBaAppendByte(a, 0x12);
        VemBaAppendWord(a, 0x1234);
        EXPECT_EQ(a.bytes(), (ByteVec{0, 0x12, 0x12, 0x34}));
    }
    {
        Array a(1, 1, 4);
        VemBaAppendByte(a, 0x12);
        VemBaAppendWord(a, 0x1234);
        VemBaAppendDword(a, 0xA1B2C3D4);
        EXPECT_EQ(a.bytes(), (ByteVec{0, 0, 0, 0x12, 0, 0, 0x12, 0x34, 0xA1, 0xB2, 0xC3, 0xD4}));
        u8 byte = 0;
        ASSERT_EQ(VemBaGetByte(a, 0, &byte), 1);  // read at the first index of the unit
        EXPECT_EQ(byte, 0x12);
        u32 dword = 0;
        ASSERT_EQ(VemBaGetDword(a, 8, &dword), 1);
        EXPECT_EQ(dword, 0xA1B2C3D4u);
    }
    {
        Array a(1, 1, 6);
        VemBaAppendDword(a, 0x11223344);
        EXPECT_EQ(a.bytes(), (ByteVec{0, 0, 0x11, 0x22, 0x33, 0x44}));
        u32 dword = 0;
        ASSERT_EQ(VemBaGetDword(a, 0, &dword), 1);
        EXPECT_EQ(dword, 0x11223344u);
    }
}

TEST(MemoryMotorola, PatchesAndReadsMirrorTheAppends) {
    Array a(1, 1, 4);
    const ByteVec zeros(12, 0xEE);
    VemBaAppend(a, zeros.data(), 12);
    VemBaPatchByte(a, 0, 0x12);
    VemBaPatchOffset(a, 4, 0x1234);
    VemBaPatchDword(a, 8, 0x11223344);
    EXPECT_EQ(a.bytes(), (ByteVec{0, 0, 0, 0x12, 0, 0, 0x12, 0x34, 0x11, 0x22, 0x33, 0x44}));
    u8 byte = 0x55;
    EXPECT_EQ(VemBaGetByte(a, 9, &byte), 0);  // its unit would end beyond the length
    EXPECT_EQ(byte, 0x55);
}

TEST(MemoryMotorola, RawBytesStayInHostOrderUnlessWidened) {
    Array a(1, 1, 1);
    const u16 host = 0x1234;
    VemBaAppend(a, &host, 2);
    ByteVec inHostOrder(2);
    std::memcpy(inHostOrder.data(), &host, 2);  // {0x34, 0x12} on a little-endian host
    EXPECT_EQ(a.bytes(), inHostOrder);
    Array b(1, 1, 4);
    VemBaAppend(b, &host, 2);  // a word at ByteSize 4 goes through AppendWord and is swapped
    EXPECT_EQ(b.bytes(), (ByteVec{0, 0, 0x12, 0x34}));
}

TEST(MemoryMotorola, CloneAndAppendKeepTheClass) {
    Array a(1, 2, 2);
    VemBaAppendByte(a, 0x12);
    EXPECT_EQ(VemBaIsMotorolaFormat(a), 1);
    CVemByteArray* copy = VemBaClone(a);
    EXPECT_NE(dynamic_cast<CMotorolaByteArray*>(copy), nullptr);
    EXPECT_EQ(VemBaIsMotorolaFormat(copy), 1);
    EXPECT_EQ(VemBaGetAlignment(copy), 2);
    EXPECT_EQ(memtest::BytesOf(copy), (ByteVec{0, 0x12}));
    EXPECT_EQ(VemBaAppend(copy, a.p), 0);
    EXPECT_EQ(memtest::BytesOf(copy), (ByteVec{0, 0x12, 0, 0x12}));
    VemBaDeleteByteArray(copy);
}

TEST(MemoryFract, ValuesFillWholeUnitsOfSix) {
    Array a(0, 1, 6, 1);
    VemBaAppendByte(a, 0x12);
    VemBaAppendWord(a, 0x1234);
    VemBaAppendOffset(a, 0x5678);
    VemBaAppendDword(a, 0x11223344);
    EXPECT_EQ(a.bytes(), (ByteVec{0x12, 0,    0, 0, 0, 0, 0x34, 0x12, 0, 0,    0,    0,
                                  0x78, 0x56, 0, 0, 0, 0, 0x11, 0,    0, 0x44, 0x33, 0x22}));
    u8 byte = 0;
    u16 word = 0;
    u32 dword = 0;
    ASSERT_EQ(VemBaGetByte(a, 0, &byte), 1);
    ASSERT_EQ(VemBaGetWord(a, 1, &word), 1);
    ASSERT_EQ(VemBaGetDword(a, 3, &dword), 1);  // offsets count units
    EXPECT_EQ(byte, 0x12);
    EXPECT_EQ(word, 0x1234);
    EXPECT_EQ(dword, 0x11223344u);
    EXPECT_EQ(VemBaGetDword(a, 4, &dword), 0);
    EXPECT_EQ(VemBaGetOffset(a, 2, &word), 1);
    EXPECT_EQ(word, 0x5678);
}

TEST(MemoryFract, TextIsPackedInReverseHalves) {
    Array a(0, 1, 6, 1);
    VemBaAppendStringRaw(a, "ABCDE", 0);
    EXPECT_EQ(a.bytes(), (ByteVec{'C', 'B', 'A', 0, 'E', 'D'}));
    Array b(0, 1, 6, 1);
    VemBaAppendString(b, "ABCDEFGH", 9);  // k = 7: a unit count of 3, then two units of text
    EXPECT_EQ(b.bytes(), (ByteVec{3, 0, 0, 0, 0, 0, 'E', 'D', 'C', 'H', 'G', 'F', 0, 0, 0, 0, 0, 0}));
    Array c(0, 1, 6, 1);
    VemBaAppendString(c, "AB", 0);  // k = 1: no text, but still one empty unit
    EXPECT_EQ(c.bytes(), (ByteVec{2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    Array d(0, 1, 6, 1);
    VemBaAppendString(d, "ABC", 1);  // k = -1
    EXPECT_EQ(d.bytes(), (ByteVec{2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    Array e(0, 1, 6, 1);
    VemBaAppendString(e, "ABCDE", 2);  // k = 0: the text cut to nothing
    EXPECT_EQ(e.bytes(), (ByteVec{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(MemoryFract, PatchesCountUnits) {
    Array a(0, 1, 6, 1);
    const ByteVec fill(18, 0xEE);
    VemBaAppend(a, fill.data(), 18);
    VemBaPatchByte(a, 0, 0x12);  // the rest of the unit stays
    VemBaPatchOffset(a, 1, 0x1234);
    VemBaPatchDword(a, 2, 0x11223344);
    EXPECT_EQ(a.bytes(), (ByteVec{0x12, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0x34, 0x12, 0xEE, 0xEE, 0xEE, 0xEE, 0x11, 0, 0,
                                  0x44, 0x33, 0x22}));
    const u8 raw[2] = {1, 2};
    VemBaPatch(a, 1, raw, 2);
    VemBaPatchString(a, 2, CString("Z"), 1);
    EXPECT_EQ(a.bytes()[6], 1);
    EXPECT_EQ(a.bytes()[7], 2);
    EXPECT_EQ(a.bytes()[12], 'Z');
}

TEST(MemoryFract, SizesCountUnitsAndAlignNothing) {
    Array a(0, 4, 6, 1);
    const ByteVec bytes(12, 1);
    VemBaAppend(a, bytes.data(), 12);
    EXPECT_EQ(VemBaGetAlignedLength(a, 8), 2);
    EXPECT_EQ(VemBaGetSize(a), 2u);
    EXPECT_EQ(VemBaGetLength(a), 12u);
    EXPECT_EQ(VemBaIsFractLayout(a), 1);
    EXPECT_EQ(VemBaGetByteSize(a), 1);
}

TEST(MemoryFract, RawAppendHasNoAlignmentAndSingleValuesBecomeUnits) {
    Array a(0, 4, 6, 1);
    const u8 one = 0x7F;
    const u32 host = 0x11223344;
    const u8 three[3] = {1, 2, 3};
    EXPECT_EQ(VemBaAppend(a, three, 3), 1);
    EXPECT_EQ(VemBaAppend(a, &host, 4), 1);
    EXPECT_EQ(VemBaAppend(a, &one, 1), 1);
    EXPECT_EQ(a.bytes(), (ByteVec{1, 2, 3, 0x11, 0, 0, 0x44, 0x33, 0x22, 0x7F, 0, 0, 0, 0, 0}));
    Array b(0, 1, 6, 1);
    EXPECT_EQ(VemBaAppend(b, a.p), 1);
    EXPECT_EQ(b.bytes(), a.bytes());
    VemBaSetMaxSize(b, 20);
    EXPECT_THROW(VemBaAppendByte(b, 1), CMemoryException);
    EXPECT_EQ(VemBaGetLength(b), 15u);
}

TEST(MemoryFract, LayoutsOtherThanSixAreAnnouncedButKept) {
    vemtest::MessageCapture messages;
    Array six(0, 1, 6, 1);
    EXPECT_TRUE(messages.texts().empty());
    Array four(0, 2, 4, 1);
    ASSERT_NE(four.p, nullptr);
    ASSERT_EQ(messages.texts().size(), 1u);
    EXPECT_EQ(messages.texts()[0], "A FractLayout of 4 is NOT ALLOWED!!!");
    CVemByteArray* copy = VemBaClone(four);
    EXPECT_EQ(messages.texts().size(), 2u);
    auto* fract = dynamic_cast<CFractLayoutByteArray*>(copy);
    ASSERT_NE(fract, nullptr);
    EXPECT_EQ(fract->GetFractLayout(), 4);
    EXPECT_EQ(VemBaGetAlignment(copy), 2);
    VemBaDeleteByteArray(copy);
}
