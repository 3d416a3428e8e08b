// Statement lists: entries by line, copy, and the stored form.
#include "test_util.h"
#include "units/statlist.h"

using vemtest::Bytes;

namespace {

CStatListEntry* NewEntry(u16 line, i32 codeLine, u32 aeType, u32 operandType) {
    auto* entry = new CStatListEntry;
    entry->AwlLine = line;
    entry->CodeLine = codeLine;
    entry->AEType = aeType;
    entry->OperandType = operandType;
    return entry;
}

std::vector<u8> Store(CStatList& list) {
    CMemFile file;
    CArchive ar(&file, CArchive::store);
    list.Serialize(ar);
    ar.Close();
    return file.Data();
}

void Load(CStatList& list, const std::vector<u8>& bytes) {
    CMemFile file(bytes);
    CArchive ar(&file, CArchive::load);
    list.Serialize(ar);
}

}  // namespace

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
    EXPECT_EQ(Store(list), expected);
    CStatList empty;
    EXPECT_EQ(Store(empty), (std::vector<u8>{0, 0}));
}

TEST(UnitsStatList, ALineTwiceInAFileKeepsTheLaterEntry) {
    Bytes twice;
    twice.u16_(2);  // two entries of line 4: line, version, AwlLine, CodeLine, AEType, OperandType
    for (u32 codeLine : {1u, 2u}) twice.u16_(4).u16_(0).u16_(4).u32_(codeLine).u16_(0).u16_(0);
    CStatList list;
    Load(list, twice.v);
    EXPECT_EQ(list.GetCount(), 1);
    EXPECT_EQ(list.GetEntry(4)->CodeLine, 2);
}
