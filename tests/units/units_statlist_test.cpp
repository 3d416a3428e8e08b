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

TEST(UnitsStatList, CloneCopiesEveryEntryWithItsTexts) {
    CStatList list;
    CStatListEntry* a = NewEntry(9, -5, 6, 7);
    a->Text1 = "one";
    a->Text2 = "two";
    list.NewEntry(a);
    list.NewEntry(NewEntry(4, 8, 0, 1));
    CStatList* copy = list.Clone();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetCount(), 2);
    CStatListEntry* c = copy->GetEntry(9);
    ASSERT_NE(c, nullptr);
    EXPECT_NE(c, a);
    EXPECT_EQ(Store(*copy), Store(list));  // the stored fields of every entry
    EXPECT_EQ(c->Text1, "one");
    EXPECT_EQ(c->Text2, "two");
    EXPECT_EQ(copy->MaxLine, 0);  // entries went in directly
    delete copy;
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

TEST(UnitsStatList, StoreAndLoad) {
    CStatList list;
    CStatListEntry* a = NewEntry(3, -1, 0x10001, 0x12345);
    a->Text1 = "lost";
    list.NewEntry(a);
    list.NewEntry(NewEntry(1, 77, 2, 3));
    CStatList loaded;
    Load(loaded, Store(list));
    EXPECT_EQ(loaded.GetCount(), 2);
    EXPECT_EQ(loaded.MaxLine, 0);
    CStatListEntry* b = loaded.GetEntry(3);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(b->CodeLine, -1);
    EXPECT_EQ(b->AEType, 1u);
    EXPECT_EQ(b->OperandType, 0x2345u);
    EXPECT_EQ(b->Text1, "");
    EXPECT_EQ(b->Text2, "");
    EXPECT_EQ(loaded.GetEntry(1)->CodeLine, 77);
}

TEST(UnitsStatList, LoadFailures) {
    const std::vector<u8> good = Bytes().u16_(1).u16_(4).u16_(0).u16_(4).u32_(1).u16_(2).u16_(3).v;
    std::vector<u8> newer = good;
    newer[4] = 1;  // version of the entry above 0
    for (std::size_t length = 0; length <= good.size(); ++length) {
        CStatList list;
        const auto bytes = length < good.size() ? std::vector<u8>(good.begin(), good.begin() + length) : newer;
        EXPECT_THROW(Load(list, bytes), CArchiveException) << length;
    }
    // A count that the bytes cannot hold fails before anything is made.
    CStatList huge;
    EXPECT_THROW(Load(huge, Bytes().u16_(0xFFFF).v), CArchiveException);
    EXPECT_EQ(huge.GetCount(), 0);
}

TEST(UnitsStatList, ALineTwiceInAFileKeepsTheLaterEntry) {
    const std::vector<u8> twice = Bytes()
                                      .u16_(2)
                                      .u16_(4)
                                      .u16_(0)
                                      .u16_(4)
                                      .u32_(1)
                                      .u16_(0)
                                      .u16_(0)
                                      .u16_(4)
                                      .u16_(0)
                                      .u16_(4)
                                      .u32_(2)
                                      .u16_(0)
                                      .u16_(0)
                                      .v;
    CStatList list;
    Load(list, twice);
    EXPECT_EQ(list.GetCount(), 1);
    EXPECT_EQ(list.GetEntry(4)->CodeLine, 2);
}

TEST(UnitsStatList, RunTimeClasses) {
    EXPECT_EQ(RUNTIME_CLASS(CStatList)->m_wSchema, 5u);
    EXPECT_EQ(RUNTIME_CLASS(CStatListEntry)->m_wSchema, 5u);
    EXPECT_STREQ(RUNTIME_CLASS(CStatListEntry)->m_lpszClassName, "CStatListEntry");
    EXPECT_TRUE(RUNTIME_CLASS(CStatList)->IsDerivedFrom(RUNTIME_CLASS(CMapWordToOb)));
}
