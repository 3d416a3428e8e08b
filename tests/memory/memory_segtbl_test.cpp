// The segment table: numbering, ownership, header patches, the chained checksum, stored form, dump.
#include "alloc_hook.h"
#include "memory/layouts.h"
#include "memory/segtbl.h"
#include "memory_test_util.h"

using memtest::ByteVec;
using memtest::Load;
using memtest::Stored;
using vemtest::Bytes;

namespace {

// Owns a table made by VemSegTblNew for the length of a test.
struct Table {
    CSegmentTable* p = VemSegTblNew();
    ~Table() { VemSegTblDelete(p); }
    operator CSegmentTable*() const { return p; }  // NOLINT: passes as the pointer
};

CVemByteArray* NewArray(const ByteVec& bytes, int motorola = 0, u8 byteSize = 1, int fract = 0) {
    CVemByteArray* a = VemBaNewByteArray(motorola, 1, byteSize, fract);
    if (!bytes.empty()) VemBaAppend(a, bytes.data(), static_cast<unsigned>(bytes.size()));
    return a;
}

std::vector<u8> SegmentBytes(CSegmentTable* t, u16 number) { return memtest::BytesOf(VemSegTblGetSegment(t, number)); }

}  // namespace

TEST(MemorySegTbl, ANewTableStartsAtItsStartNumber) {
    Table t;
    EXPECT_EQ(VemSegTblGetMaxSegmentNo(t), 65535);  // start 0, nothing given out
    EXPECT_EQ(GetVemSegTblVersion(), 1);

    CSegmentTable five(5);
    EXPECT_EQ(VemSegTblGetMaxSegmentNo(&five), 4);
    EXPECT_EQ(VemSegTblGetStartSegmentNo(&five), 5);
    EXPECT_EQ(VemSegTblAddNewSegment(&five, NewArray({1})), 5);
    for (u16 n = 0; n < 5; ++n) EXPECT_EQ(VemSegTblGetSegment(&five, n), nullptr);
    EXPECT_EQ(VemSegTblGetNoOfSegments(&five), 1);
    EXPECT_EQ(VemDllGetMaxSegmentNo(&five), 5);
    EXPECT_THROW(VemSegTblGetSegment(&five, 6), CInvalidArgException);
    EXPECT_THROW(GetSegmentBytePointer(&five, 6), CInvalidArgException);
}

TEST(MemorySegTbl, ExplicitNumbersAreSkippedByTheSearch) {
    Table t;
    EXPECT_EQ(VemSegTblAddNewSegment(t, 7, NewArray({7})), 1);
    EXPECT_EQ(VemSegTblGetMaxSegmentNo(t), 65535);  // nextSegmentNo stays
    for (u16 n = 0; n < 7; ++n) EXPECT_EQ(VemSegTblAddNewSegment(t, NewArray({1})), n);
    EXPECT_EQ(VemSegTblAddNewSegment(t, NewArray({8})), 8);
    EXPECT_EQ(VemSegTblGetNoOfSegments(t), 9);
    EXPECT_EQ(SegmentBytes(t, 7), ByteVec{7});
    EXPECT_EQ(VemDllGetNoOfSegments(t), 9);
}

TEST(MemorySegTbl, DeletedNumbersAreNotGivenOutAgain) {
    Table t;
    for (int i = 0; i < 5; ++i) VemSegTblAddNewSegment(t, NewArray({static_cast<u8>(i)}));
    EXPECT_EQ(VemSegTblDeleteSegment(t, 3), 1);
    EXPECT_EQ(VemSegTblGetSegment(t, 3), nullptr);
    EXPECT_EQ(VemSegTblGetNoOfSegments(t), 4);
    EXPECT_EQ(VemSegTblDeleteSegment(t, 3), 1);  // holds nothing: changes nothing
    EXPECT_EQ(VemSegTblGetNoOfSegments(t), 4);
    EXPECT_EQ(VemSegTblDeleteSegment(t, 5), 0);  // not given out yet
    EXPECT_EQ(VemSegTblAddNewSegment(t, NewArray({9})), 5);
}

TEST(MemorySegTbl, ReplacingUnderAGivenNumberDoesNotCountAgain) {
    Table t;
    CVemByteArray* a = NewArray({1});
    VemSegTblAddNewSegment(t, NewArray({0}));
    EXPECT_EQ(VemSegTblAddNewSegment(t, a), 1);
    EXPECT_EQ(VemSegTblAddNewSegment(t, 1, a), 1);  // the same array: nothing happens
    EXPECT_EQ(VemSegTblGetSegment(t, 1), a);
    EXPECT_EQ(VemSegTblGetNoOfSegments(t), 2);
    EXPECT_EQ(VemSegTblAddNewSegment(t, 1, NewArray({2})), 1);  // the old one is deleted
    EXPECT_EQ(SegmentBytes(t, 1), ByteVec{2});
    EXPECT_EQ(VemSegTblGetNoOfSegments(t), 2);
    EXPECT_EQ(VemSegTblAddNewSegment(t, 1, nullptr), 1);
    EXPECT_EQ(VemSegTblGetSegment(t, 1), nullptr);
    EXPECT_EQ(VemSegTblGetNoOfSegments(t), 2);
}

TEST(MemorySegTbl, AnExplicitNumberBelowTheNextOneMustLieInTheTable) {
    CSegmentTable t(5);
    CVemByteArray* a = NewArray({1});
    EXPECT_THROW(VemSegTblAddNewSegment(&t, 3, a), CInvalidArgException);
    EXPECT_EQ(t.GetSize(), 0);
    VemSegTblAddNewSegment(&t, NewArray({5}));
    EXPECT_EQ(VemSegTblAddNewSegment(&t, 3, a), 1);  // within the table now, and unmarked
    EXPECT_EQ(VemSegTblGetSegment(&t, 3), a);
    EXPECT_EQ(VemSegTblGetNoOfSegments(&t), 2);
}

TEST(MemorySegTbl, AtMost8192NumbersAreGivenOut) {
    Table t;
    for (unsigned n = 0; n < 8192; ++n) ASSERT_EQ(VemSegTblAddNewSegment(t, nullptr), n);
    EXPECT_EQ(VemSegTblGetNoOfSegments(t), 0);  // null reserves without counting
    CVemByteArray* a = NewArray({1});
    EXPECT_EQ(VemSegTblAddNewSegment(t, a), 65535);
    EXPECT_EQ(VemSegTblGetMaxSegmentNo(t), 8191);
    EXPECT_EQ(VemSegTblAddNewSegment(t, 9000, a), 1);  // an explicit number has no such limit
    EXPECT_EQ(VemSegTblGetSegment(t, 9000), a);
    CVemByteArray* b = NewArray({2});
    EXPECT_THROW(VemSegTblAddNewSegment(t, 65300, b), CMemoryException);  // cannot be marked
    EXPECT_EQ(t.p->GetSize(), 9001);
    VemBaDeleteByteArray(b);
}

TEST(MemorySegTbl, SegmentsAndTheirBytes) {
    Table t;
    CVemByteArray* a = NewArray({1, 2});
    VemSegTblAddNewSegment(t, a);
    VemSegTblAddNewSegment(t, nullptr);
    EXPECT_EQ(GetSegmentBytePointer(t, 0), VemBaGetBytePointer(a));
    EXPECT_EQ(VemDllGetSegmentBytePointer(t, 0), VemBaGetBytePointer(a));
    EXPECT_EQ(GetSegmentBytePointer(t, 1), nullptr);
    EXPECT_EQ(VemDllGetSegment(t, 0), a);
    VemSegTblSetPouName(t, "PLC_PRG");
    EXPECT_EQ(VemSegTblGetPouName(t), "PLC_PRG");
    VemSegTblSetStartSegmentNo(t, 20);  // numbering anew; arrays and marks stay
    EXPECT_EQ(VemSegTblGetNoOfSegments(t), 0);
    EXPECT_EQ(VemSegTblGetMaxSegmentNo(t), 19);
    EXPECT_EQ(VemSegTblGetSegment(t, 0), a);
    EXPECT_EQ(VemSegTblAddNewSegment(t, NewArray({3})), 20);
    VemSegTblDelete(nullptr);
}

// The rest of the header keeps its bytes; a fract layout takes the field in raw bytes.
TEST(MemorySegTbl, CorrespondingSegmentGoesBehindKindAndHeaderLength) {
    struct Case {
        int motorola;
        u8 byteSize;
        int fract;
        std::size_t at;
        ByteVec field;
    };
    const Case cases[] = {
        {0, 1, 0, 4, {0x34, 0x12}},        {0, 2, 0, 6, {0x34, 0x12}}, {0, 3, 0, 9, {0x34, 0x12, 0}},
        {0, 4, 0, 12, {0x34, 0x12, 0, 0}}, {1, 2, 0, 6, {0x12, 0x34}}, {1, 4, 0, 12, {0, 0, 0x12, 0x34}},
        {0, 6, 1, 4, {0x34, 0x12}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.motorola << " " << int{c.byteSize} << " " << c.fract);
        Table t;
        VemSegTblAddNewSegment(t, NewArray(ByteVec(24, 0xEE), c.motorola, c.byteSize, c.fract));
        ASSERT_EQ(VemSegTblPatchCorrespondingSegment(t, 0, 0x1234), 1);
        ByteVec want(24, 0xEE);
        std::copy(c.field.begin(), c.field.end(), want.begin() + static_cast<long>(c.at));
        EXPECT_EQ(SegmentBytes(t, 0), want);
    }
}

// Patches need six bytes; the halves of an instance handle stand two bytes apart.
TEST(MemorySegTbl, PatchesNeedSixBytesAndInstanceHandleHalvesStandApart) {
    Table t;
    VemSegTblAddNewSegment(t, NewArray({1, 2, 3, 4, 5}));
    VemSegTblAddNewSegment(t, nullptr);
    VemSegTblAddNewSegment(t, NewArray(ByteVec(10, 0), 1, 1));
    EXPECT_EQ(VemSegTblPatchCorrespondingSegment(t, 0, 1), 0);
    EXPECT_EQ(VemSegTblPatchCorrespondingSegment(t, 1, 1), 1);  // an empty number
    EXPECT_EQ(VemSegTblPatchInstanceHandle(t, 0, 0, tInstanceHandle{1, 2}), 0);
    EXPECT_EQ(SegmentBytes(t, 0), (ByteVec{1, 2, 3, 4, 5}));
    ASSERT_EQ(VemSegTblPatchInstanceHandle(t, 2, 2, tInstanceHandle{0x1122, 0x3344}), 1);
    EXPECT_EQ(SegmentBytes(t, 2), (ByteVec{0, 0, 0x11, 0x22, 0x33, 0x44, 0, 0, 0, 0}));
}

TEST(MemorySegTbl, ChecksumChainsThroughTheArrays) {
    Table t;
    EXPECT_EQ(VemSegTblComputeCheckSum(t, 0xABCD1111), 0xABCD1111u);  // no arrays: the seed as it is
    VemSegTblAddNewSegment(t, NewArray({0xAA, 0xBB}));
    VemSegTblAddNewSegment(t, nullptr);
    VemSegTblAddNewSegment(t, NewArray({1, 2, 3, 4}));
    // By hand: the register over AA BB from 0x1111, then over 01 02 03 04, the last length above.
    EXPECT_EQ(VemSegTblComputeCheckSum(t, 0xABCD1111), 0x00045748u);
}

TEST(MemorySegTbl, StoredFormByteForByte) {
    Table t;
    VemSegTblAddNewSegment(t, nullptr);
    VemSegTblAddNewSegment(t, NewArray({0xAA}));
    VemSegTblAddNewSegment(t, NewArray({0xBB}, 1));
    VemSegTblSetPouName(t, "P");
    const ByteVec bytes = Stored([&](CArchive& ar) { t.p->Serialize(ar); });
    Bytes b;
    b.u16_(3);                                                // count
    b.u8_(0);                                                 // 0: null
    b.u8_(1).u16_(1).u16_(1).u8_(0xAA).u8_(0).u8_(1);         // 1: little-endian array
    b.u8_(2).u16_(1).u16_(1).u8_(0xBB).u8_(1).u8_(1);         // 2: big-endian array
    b.u16_(0);                                                // version
    b.u16_(1).u16_(3).raw({0xFF, 0xFF, 0xFF}).u8_(0).u8_(1);  // usedNumbers
    b.str("P");                                               // pouName
    b.u16_(2).u16_(0).u16_(3);                                // noOfSegments, start, next
    EXPECT_EQ(bytes, b.v);

    CSegmentTable back;
    back.AddNewSegment(NewArray({5}));  // reloaded in place: what stood there goes
    Load(bytes, [&](CArchive& ar) { back.Serialize(ar); });
    EXPECT_EQ(VemSegTblGetSegment(&back, 0), nullptr);
    EXPECT_EQ(SegmentBytes(&back, 1), ByteVec{0xAA});
    EXPECT_NE(dynamic_cast<CMotorolaByteArray*>(VemSegTblGetSegment(&back, 2)), nullptr);
    EXPECT_EQ(VemSegTblGetPouName(&back), "P");
    EXPECT_EQ(VemSegTblGetNoOfSegments(&back), 2);
    EXPECT_EQ(VemSegTblAddNewSegment(&back, NewArray({6})), 3);

    CSegmentTable again;
    Load(bytes, [&](CArchive& ar) { again.Serialize(ar); });
    EXPECT_EQ(Stored([&](CArchive& ar) { again.Serialize(ar); }), bytes);
}

// A segment table that ran out of memory half way through a load leaked the arrays it had read.
TEST(MemorySegTbl, AFailedAllocationDuringALoadLeavesNothingBehind) {
    Table t;
    VemSegTblAddNewSegment(t, NewArray({1, 2, 3}));
    VemSegTblAddNewSegment(t, nullptr);
    VemSegTblAddNewSegment(t, NewArray({4}, 1));
    const ByteVec bytes = Stored([&](CArchive& ar) { t.p->Serialize(ar); });
    long k = 0;
    for (;; ++k) {
        vemtest::AllocationWatch watch;
        bool failed = false;
        {
            watch.FailAfter(k);
            CSegmentTable back;
            try {
                Load(bytes, [&](CArchive& ar) { back.Serialize(ar); });
            } catch (const std::bad_alloc&) {
                failed = true;
            } catch (const CMemoryException&) {
                failed = true;
            }
        }
        EXPECT_EQ(watch.Live(), 0) << "allocation " << k;
        if (!failed) break;
    }
    EXPECT_GE(k, 4);  // the two arrays with their storage at least
}

// The dump of a segment is its lines from VemBaDump behind the prefix, for either byte order
// (the plain class is written straight, the other through its lines), ByteSize and length.
TEST(MemorySegTbl, DumpOfASegmentIsItsLinesBehindThePrefix) {
    for (const int motorola : {0, 1}) {
        for (const u8 byteSize : {1, 2, 3, 5, 8}) {
            for (const std::size_t length : {0U, 1U, 4U, 9U, 300U}) {
                ByteVec bytes(length);
                for (std::size_t i = 0; i < length; ++i) bytes[i] = static_cast<u8>(i * 37 + 5);
                CVemByteArray* array = NewArray(bytes, motorola, byteSize);
                CStringArray lines;
                VemBaDump(array, lines);
                std::string expected = "->\n=====================================\n->No: 3   0x3     ";
                for (int k = 0; k < lines.GetSize(); ++k) expected += "->" + lines[k].str() + "\n";
                Table t;
                VemSegTblAddNewSegment(t, 3, array);
                CMemFile file;
                VemSegTblDump(t, "->", &file);
                const std::string text(file.Data().begin(), file.Data().end());
                const std::string head = "->======== Dump of SegmentTable ========= \n";
                const std::string tail = "->\n======== End Dump of SegmentTable ========= \n";
                ASSERT_GT(text.size(), head.size() + tail.size());
                EXPECT_EQ(text.substr(head.size(), text.size() - head.size() - tail.size()), expected)
                    << "motorola " << motorola << ", ByteSize " << int{byteSize} << ", length " << length;
            }
        }
    }
}
