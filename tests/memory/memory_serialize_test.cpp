// The stored form of byte arrays: golden bytes and round trips; damaged input is the hostile records'.
#include "memory/layouts.h"
#include "memory_test_util.h"

using memtest::Array;
using memtest::ByteVec;
using memtest::Load;
using memtest::Stored;
using vemtest::Bytes;

namespace {

ByteVec SerializeOut(CVemByteArray* array) {
    return Stored([&](CArchive& ar) { VemBaSerialize(array, ar); });
}

// Loads one array; the caller deletes it.
CVemByteArray* SerializeIn(const ByteVec& bytes) {
    CVemByteArray* array = nullptr;
    Load(bytes, [&](CArchive& ar) { VemBaSerialize(array, ar); });
    return array;
}

// The example array: little-endian, ByteSize 1, bytes AA BB.
ByteVec ExampleBytes() {
    Bytes b;
    b.u8_(3).u8_(1);  // tag 3 (little-endian), ByteSize 1
    b.u16_(1);        // object version
    b.u16_(2);        // count
    b.u8_(0xAA).u8_(0xBB);
    b.u8_(0);  // not big-endian
    b.u8_(1);  // ByteSize
    return b.v;
}

}  // namespace

TEST(MemorySerialize, TheTenByteExample) {
    Array a(0, 1, 1);
    VemBaAppendByte(a, 0xAA);
    VemBaAppendByte(a, 0xBB);
    EXPECT_EQ(SerializeOut(a), ExampleBytes());

    CVemByteArray* loaded = SerializeIn(ExampleBytes());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->GetRuntimeClass(), RUNTIME_CLASS(CVemByteArray));
    EXPECT_EQ(memtest::BytesOf(loaded), (ByteVec{0xAA, 0xBB}));
    EXPECT_EQ(VemBaGetByteSize(loaded), 1);
    VemBaDeleteByteArray(loaded);
}

TEST(MemorySerialize, NullIsTheSingleWordOne) {
    EXPECT_EQ(SerializeOut(nullptr), (ByteVec{0x01, 0x00}));
    CVemByteArray* held = VemBaNewByteArray(0, 1, 1, 0);
    Load({0x01, 0x00}, [&](CArchive& ar) { VemBaSerialize(held, ar); });  // deletes what it held
    EXPECT_EQ(held, nullptr);
}

TEST(MemorySerialize, EveryClassComesBackAsItWent) {
    Array big(1, 4, 4);
    VemBaAppendWord(big, 0x1234);
    const ByteVec bigBytes = SerializeOut(big);
    Bytes expected;
    expected.u8_(2).u8_(4);                            // tag 2 (big-endian), ByteSize 4
    expected.u16_(1).u16_(4).raw({0, 0, 0x12, 0x34});  // version, count, bytes
    expected.u8_(1).u8_(4);                            // big-endian, ByteSize
    EXPECT_EQ(bigBytes, expected.v);
    CVemByteArray* loaded = SerializeIn(bigBytes);
    ASSERT_NE(dynamic_cast<CMotorolaByteArray*>(loaded), nullptr);
    EXPECT_EQ(VemBaGetAlignment(loaded), 1);  // the alignment is not stored
    EXPECT_EQ(VemBaGetByteSize(loaded), 4);
    EXPECT_EQ(loaded->GetMaxSize(), 65300u);
    u16 word = 0;
    ASSERT_EQ(VemBaGetWord(loaded, 0, &word), 1);
    EXPECT_EQ(word, 0x1234);
    VemBaDeleteByteArray(loaded);

    Array fract(0, 1, 6, 1);
    VemBaAppendDword(fract, 0x11223344);
    const ByteVec fractBytes = SerializeOut(fract);
    EXPECT_EQ(fractBytes[0], 6);  // tag 6, ByteSize 1
    EXPECT_EQ(fractBytes[1], 1);
    loaded = SerializeIn(fractBytes);
    auto* asFract = dynamic_cast<CFractLayoutByteArray*>(loaded);
    ASSERT_NE(asFract, nullptr);
    EXPECT_EQ(asFract->GetFractLayout(), 6);
    EXPECT_EQ(memtest::BytesOf(loaded), fract.bytes());
    VemBaDeleteByteArray(loaded);
}

TEST(MemorySerialize, TheTagWordGivesTheByteSize) {
    Bytes b;
    b.u16_(0x0403).u16_(1).u16_(0).u8_(0).u8_(4);  // tag 3, ByteSize 4, empty
    CVemByteArray* loaded = SerializeIn(b.v);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(VemBaGetByteSize(loaded), 4);
    EXPECT_EQ(VemBaIsMotorolaFormat(loaded), 0);
    VemBaDeleteByteArray(loaded);

    Bytes v0;
    v0.u16_(0x0002).u16_(0).u16_(1).u8_(0x42).u8_(1);  // ByteSize 0 reads as 1; version 0 has no ByteSize byte
    loaded = SerializeIn(v0.v);
    ASSERT_NE(dynamic_cast<CMotorolaByteArray*>(loaded), nullptr);
    EXPECT_EQ(VemBaGetByteSize(loaded), 1);
    EXPECT_EQ(memtest::BytesOf(loaded), (ByteVec{0x42}));
    VemBaDeleteByteArray(loaded);
}

TEST(MemorySerialize, ArrayRecordAloneHasNoTagWord) {
    CVemByteArray a(2, 3);
    a.AppendByte(0x42);
    const ByteVec bytes = Stored([&](CArchive& ar) { a.Serialize(ar); });
    EXPECT_EQ(bytes, (ByteVec{1, 0, 3, 0, 0x42, 0, 0, 0, 3}));
    CVemByteArray back;
    Load(bytes, [&](CArchive& ar) { back.Serialize(ar); });
    EXPECT_EQ(back.GetByteSize(), 3);
    EXPECT_EQ(back.GetLength(), 3u);
}
