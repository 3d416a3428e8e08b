// Unit records in node files: the golden record of a function; statement lists: entries by line
// and their stored form.
#include "memory_test_util.h"
#include "units/pou.h"
#include "units/statlist.h"
#include "vem_bytearray.h"

using vemtest::Bytes;
using vemtest::ReadFileBytes;
using vemtest::TempDir;

namespace {

CStatListEntry* NewEntry(u16 line, i32 codeLine, u32 aeType, u32 operandType) {
    auto* entry = new CStatListEntry;
    entry->AwlLine = line;
    entry->CodeLine = codeLine;
    entry->AEType = aeType;
    entry->OperandType = operandType;
    return entry;
}

// Gives a unit the fields of the golden record.
void FillUnit(CVemBaseNode* unit) {
    VemGetStatList(unit)->NewEntry(NewEntry(4, -1, 2, 3));
    VemSetPflArray(unit, vemtest::NewArray({0xAA, 0xBB}));
    VemSetSegmentNumbers(unit, 8, 7, 9, 1);
    VemSetCrSize(unit, 1);
    VemSetCrStackSize(unit, 2);
    VemSetCrStackElements(unit, 3);
    VemSetCodePathName(unit, "C");
    VemSetCheckSum(unit, 0x11223344u);
    static_cast<CVemPouNode*>(unit)->Date = 0x55667788u;
    VemSetDataSegLength(unit, 0x0A0B);
    unit->SetStartOffset(0x01020304u);
    VemSetProgramNr(unit, 0x0506);
}

std::vector<u8> FunctionFile() {
    Bytes b = vemtest::Frame(5);  // 0 node type word of the root, 2 stamp, 26 end of the stamp
    b.u16_(0);                    // 27 schema word of the base record
    b.u8_(5);                     // 29 node type
    b.u8_(1);                     // 30 Expanded
    b.str("F");                   // 31 name
    b.u32_(0);                    // 33 Serial
    b.u8_(0);                     // 37 ExtraText
    b.u16_(0);                    // 38 child count
    b.u16_(1);                    // 40 statement list: count
    b.u16_(4).u16_(0);            // 42   line, 44 entry version
    b.u16_(4);                    // 46   AwlLine
    b.u32_(0xFFFFFFFF);           // 48   CodeLine
    b.u16_(2).u16_(3);            // 52   AEType, 54 OperandType
    b.u8_(3).u8_(1);              // 56 PflArray: tag 3, ByteSize 1
    b.u16_(1).u16_(2);            // 58   version, 60 count
    b.u8_(0xAA).u8_(0xBB);        // 62   bytes
    b.u8_(0).u8_(1);              // 64   not big-endian, 65 ByteSize
    b.u16_(7).u16_(8).u16_(9);    // 66 CodeSegNr, 68 DataSegNr, 70 IniDataSegNr
    b.u16_(1).u16_(2).u16_(3);    // 72 CrSize, 74 SizeCrStack, 76 ElemCrStack
    b.str("C");                   // 78 CodeFileName
    b.u32_(0x11223344);           // 80 Checksum
    b.u32_(0x55667788);           // 84 Date
    b.u16_(0x0A0B);               // 88 DataSegLength
    b.u32_(0x01020304);           // 90 StartOffset
    b.str("P");                   // 94 Path
    b.u16_(0x0506);               // 96 ProgramNr
    b.u16_(0);                    // 98 Reserved of the function
    return b.v;
}

}  // namespace

TEST(UnitsFile, FunctionRecordIsWrittenByteForByteAndLoadsEveryField) {
    TempDir dir;
    CVemBaseNode* function = VemCreateCVemFunctionNode("F", "P");
    FillUnit(function);
    VemSetOffset(function, 0x77);  // offset and kind are not stored
    VemSetSubSegmentKind(function, kIpSegData);
    ASSERT_EQ(VemWriteNode(function, dir.file("f.vem").c_str()), 1);
    VemDeleteNode(function);
    ASSERT_EQ(ReadFileBytes(dir.file("f.vem")), FunctionFile());
    CVemBaseNode* loaded = VemLoadNode(dir.file("f.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    ASSERT_EQ(loaded->GetRuntimeClass(), RUNTIME_CLASS(CVemFunctionNode));
    // Every stored field holds a value of its own, so the same bytes again mean each was loaded.
    ASSERT_EQ(VemWriteNode(loaded, dir.file("again.vem").c_str()), 1);
    EXPECT_EQ(ReadFileBytes(dir.file("again.vem")), FunctionFile());
    auto* f = static_cast<CVemFunctionNode*>(loaded);
    EXPECT_EQ(f->NccSegNr, CVemPouNode::kNoSegment);  // not stored
    EXPECT_EQ(f->Offset, 0);
    EXPECT_EQ(f->SubSegmentKind, kIpSegIo);
    EXPECT_EQ(f->DataSegmentPtr, nullptr);
    EXPECT_EQ(f->StatList->GetEntry(4)->CodeLine, -1);
    VemDeleteNode(loaded);
}

TEST(UnitsStatList, NewEntryAndGetEntry) {
    CStatList list;
    EXPECT_EQ(list.GetEntry(0), nullptr);
    CStatListEntry* a = NewEntry(7, 100, 1, 2);
    list.NewEntry(a);
    list.NewEntry(NewEntry(3, 50, 1, 2));
    EXPECT_EQ(list.GetEntry(7), a);
    EXPECT_EQ(list.GetEntry(3)->CodeLine, 50);
    EXPECT_EQ(list.GetEntry(4), nullptr);
    EXPECT_EQ(list.GetCount(), 2);
    EXPECT_EQ(list.MaxLine, 7);  // raised only
    // A later entry for a line replaces the earlier one, which goes (ASan reports it otherwise).
    CStatListEntry* second = NewEntry(3, 2, 0, 0);
    list.NewEntry(second);
    EXPECT_EQ(list.GetCount(), 2);
    EXPECT_EQ(list.GetEntry(3), second);
    list.NewEntry(NewEntry(0xFFFF, 0, 0, 0));
    EXPECT_EQ(list.MaxLine, 0xFFFF);
    list.Trace();  // walks every line up to the last one and ends
}

TEST(UnitsStatList, EntryDeletedThroughItsDataPartGoesWhole) {
    CStatListEntryBase* data = NewEntry(1, 2, 3, 4);
    data->Text1 = "kept in memory only";
    delete data;  // ASan checks that the whole entry went
}

TEST(UnitsStatList, StoredFormGivesACountAndLineAndTwelveBytesPerEntry) {
    CStatList list;
    list.NewEntry(NewEntry(0x0102, -1, 0x12345, 0x1FFFF));
    const std::vector<u8> expected = Bytes()
                                         .u16_(1)           // count
                                         .u16_(0x0102)      // line
                                         .u16_(0)           // version of the entry
                                         .u16_(0x0102)      // AwlLine
                                         .u32_(0xFFFFFFFF)  // CodeLine
                                         .u16_(0x2345)      // AEType, low 16 bits
                                         .u16_(0xFFFF)      // OperandType, low 16 bits
                                         .v;
    EXPECT_EQ(memtest::Stored(list), expected);
    CStatList empty;
    EXPECT_EQ(memtest::Stored(empty), (std::vector<u8>{0, 0}));
}
