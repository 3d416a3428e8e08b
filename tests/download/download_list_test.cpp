// Download list: indexes and names, segments of the units, download table segments, stored form.
#include <cmath>
#include <cstring>
#include <filesystem>

#include "alloc_hook.h"
#include "memory/segtbl.h"
#include "memory_test_util.h"
#include "vem_bytearray.h"

using memtest::Load;
using memtest::Stored;
using vemtest::Bytes;
using vemtest::MessageCapture;
using vemtest::TempDir;

namespace {

// The prefix followed by the number, appended rather than prepended to a temporary string.
std::string Numbered(const char* prefix, long number) {
    std::string text = prefix;
    text += std::to_string(number);
    return text;
}

tDownloadListEntry Entry(const char* name, u32 value1 = 0, u32 value2 = 0, u16 value3 = 0) {
    tDownloadListEntry e;
    e.Name = name;
    e.Value1 = value1;
    e.Value2 = value2;
    e.Value3 = value3;
    return e;
}

// A unit's segment: a header of 8 bytes, whose word at 4 the partner's number fills.
CVemByteArray* UnitSegment() {
    CVemByteArray* a = VemBaNewByteArray(0, 1, 1, 0);
    for (int i = 0; i < 8; ++i) a->AppendByte(0);
    return a;
}

int AddEntry(CVemDownloadList& list, tDownloadListEntry e, int& isNew) {
    CVemByteArray* first = nullptr;
    CVemByteArray* second = nullptr;
    return list.AddNextEntry(e, isNew, first, second);
}

int AddWithoutSegments(CVemDownloadList& list, const char* name, int& isNew) {
    return AddEntry(list, Entry(name), isNew);
}

void AddEntries(CVemDownloadList& list, int count) {
    int isNew = 0;
    for (int i = 0; i < count; ++i) AddWithoutSegments(list, Numbered("U", i).c_str(), isNew);
}

std::vector<u8> SegmentBytes(CSegmentTable& table, u16 number) {
    CVemByteArray* a = table.GetSegment(number);
    const u8* p = a->GetBytePointer();
    return std::vector<u8>(p, p + a->GetLength());
}

u16 WordLE(const std::vector<u8>& b, std::size_t at) { return static_cast<u16>(b[at] | (b[at + 1] << 8)); }

// The record of an entry as a new object; the class is new unless its number is given.
Bytes& EntryObject(Bytes& b, unsigned classNumber, const std::string& tail, const std::string& name, u16 index) {
    if (classNumber == 0) {
        b.newClass(5, "CVemDownloadListEntry");
    } else {
        b.u16_(0x8000 | classNumber);
    }
    b.u16_(0).str(tail).str(name);          // schema word, TailPathName, Name
    b.u32_(0x01020304).u32_(0x05060708);    // Value1, Value2
    b.u16_(index).u16_(3).u16_(4).u16_(9);  // Index, SecondSegment, FirstSegment, Value3
    return b;
}

Bytes& Double(Bytes& b, double value) {
    u64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return b.u32_(static_cast<u32>(bits)).u32_(static_cast<u32>(bits >> 32));
}

}  // namespace

TEST(DownloadList, SetPathNameMakesTheDirectoryBesideTheProject) {
    TempDir dir;
    MessageCapture messages;
    CVemDownloadList list;
    const std::string project = dir.path() + "\\prj\\project.prj";  // the directory part is dir/prj
    std::filesystem::create_directory(dir.file("prj"));
    vemtest::WriteFileText(dir.file("prj/DOWNLOAD"), "a file in the way");
    EXPECT_EQ(list.SetPathName(project.c_str(), "DOWNLOADLIST"), 1);
    EXPECT_EQ(list.PathName, (dir.path() + "\\prj\\DOWNLOAD").c_str());
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("prj/DOWNLOAD")));

    // An existing directory is kept with what it holds.
    vemtest::WriteFileText(dir.file("prj/DOWNLOAD/keep"), "x");
    EXPECT_EQ(list.SetPathName(project.c_str(), "DOWNLOAD"), 1);
    EXPECT_TRUE(vemtest::FileExists(dir.file("prj/DOWNLOAD/keep")));
    EXPECT_TRUE(messages.texts().empty());

    // Entries take their file names from it.
    int isNew = 0;
    AddWithoutSegments(list, "A", isNew);
    EXPECT_EQ(list.GetEntryByIndex(1)->TailPathName, (dir.path() + "\\prj\\DOWNLOAD\\FILE1").c_str());
}

TEST(DownloadList, SetPathNameReportsADirectoryThatCannotBeMade) {
    TempDir dir;
    MessageCapture messages;
    CVemDownloadList list;
    list.PathName = "before";
    const std::string project = dir.path() + "/missing/deeper/p.prj";
    EXPECT_EQ(list.SetPathName(project.c_str(), "DL"), 0);
    const std::string path = dir.path() + "/missing/deeper/DL";
    ASSERT_EQ(messages.texts().size(), 1u);
    EXPECT_EQ(messages.texts()[0], "Could not create directory" + path +
                                       " -  Maybe disk is full or path is too long !\n Konnte Verzeichnis " + path +
                                       " nicht erzeugen - Entweder ist Platte voll oder der Pfad zu lang !");
    EXPECT_EQ(list.PathName, "before");
}

TEST(DownloadList, NamesGetRunningIndexesFromOne) {
    CVemDownloadList list;
    int isNew = -1;
    EXPECT_EQ(AddWithoutSegments(list, "A", isNew), 1);
    EXPECT_EQ(isNew, 1);
    EXPECT_EQ(AddWithoutSegments(list, "B", isNew), 2);
    EXPECT_EQ(list.GetIndexByName("B"), 2);
    EXPECT_EQ(list.GetIndexByName("b"), -1);
    EXPECT_EQ(list.LastIndex, 2);
    EXPECT_EQ(list.GetSize(), 3);
    EXPECT_EQ(list.GetAt(0), nullptr);
    EXPECT_EQ(list.GetEntryByIndex(2)->Name, "B");
    EXPECT_EQ(list.GetEntryByIndex(3), nullptr);  // above LastIndex
    EXPECT_THROW(list.GetEntryByIndex(-1), CInvalidArgException);
    list.LastIndex = 5;
    EXPECT_THROW(list.GetEntryByIndex(4), CInvalidArgException);  // beyond the array
}

TEST(DownloadList, ANameSeenBeforeGivesItsStoredEntryAndDropsTheArrays) {
    CVemDownloadList list;
    tDownloadListEntry e = Entry("A", 1, 2, 3);
    e.FirstSegment = 10;
    e.SecondSegment = 11;
    int isNew = 0;
    CVemByteArray* first = UnitSegment();
    CVemByteArray* second = UnitSegment();
    EXPECT_EQ(list.AddNextEntry(e, isNew, first, second), 1);
    EXPECT_EQ(isNew, 1);
    ASSERT_NE(first, nullptr);  // without a segment table the arrays stay the caller's
    ASSERT_NE(second, nullptr);
    VemBaDeleteByteArray(first);
    VemBaDeleteByteArray(second);

    tDownloadListEntry again = Entry("A", 7, 7, 7);
    first = UnitSegment();
    second = UnitSegment();
    vemtest::AllocationWatch watch;
    EXPECT_EQ(list.AddNextEntry(again, isNew, first, second), 1);
    EXPECT_LT(watch.Live(), 0);  // the two arrays went
    EXPECT_EQ(isNew, 0);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(again.Value1, 1u);
    EXPECT_EQ(again.Value2, 2u);
    EXPECT_EQ(again.Value3, 3u);
    EXPECT_EQ(again.FirstSegment, 10);
    EXPECT_EQ(again.SecondSegment, 11);
    EXPECT_EQ(list.LastIndex, 1);
}

TEST(DownloadList, ATableTakesTheSegmentsAndTheyNameEachOther) {
    CSegmentTable table;
    CVemByteArray* reserved = nullptr;
    table.AddNewSegment(reserved);  // number 0 stays empty
    CVemDownloadList list;
    list.SegmentTable = &table;
    tDownloadListEntry e = Entry("A");
    int isNew = 0;
    CVemByteArray* first = UnitSegment();
    CVemByteArray* second = UnitSegment();
    CVemByteArray* firstArray = first;
    EXPECT_EQ(list.AddNextEntry(e, isNew, first, second), 1);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(e.FirstSegment, 1);
    EXPECT_EQ(e.SecondSegment, 2);
    EXPECT_EQ(table.GetSegment(1), firstArray);
    EXPECT_EQ(WordLE(SegmentBytes(table, 1), 4), 2);  // the partner's number behind kind and length
    EXPECT_EQ(WordLE(SegmentBytes(table, 2), 4), 1);
    EXPECT_EQ(list.GetEntryByIndex(1)->FirstSegment, 1);
    EXPECT_EQ(list.GetEntryByIndex(1)->SecondSegment, 2);
}

TEST(DownloadList, AnEmptyListMakesNoSegment) {
    CVemDownloadList list;
    CSegmentTable table;
    EXPECT_EQ(list.CreateSegments(&table, 0, 0), 1);
    EXPECT_EQ(table.GetNoOfSegments(), 0);
}

TEST(DownloadList, OneEntryMakesOneSegmentOf56BytesInEitherByteOrder) {
    for (int motorola : {0, 1}) {
        SCOPED_TRACE(motorola);
        CVemDownloadList list;
        tDownloadListEntry e = Entry("UNIT", 0x11223344, 0x55667788);
        e.SecondSegment = 0x0102;
        int isNew = 0;
        AddEntry(list, e, isNew);
        CSegmentTable table;
        EXPECT_EQ(list.CreateSegments(&table, 0, motorola), 1);
        ASSERT_EQ(table.GetNoOfSegments(), 1);
        Bytes want;
        if (motorola) {
            want.raw({0x00, 0x38});                                      // Size 56, high byte first
            want.u8_(22).u8_(8);                                         // kind, header length
            want.raw({0x00, 0x00, 0x00, 0x01});                          // Next Seg, Num
            want.raw({0xCD, 0xCD, 0x01, 0x02});                          // constant word, SecondSegment
            want.raw({0x55, 0x66, 0x77, 0x88, 0x11, 0x22, 0x33, 0x44});  // Value2, Value1
        } else {
            want.u16_(56);          // Size, with the header
            want.u8_(22);           // kind: first download table segment
            want.u8_(8);            // header length
            want.u16_(0);           // Next Seg: none
            want.u16_(1);           // Num
            want.u16_(0xCDCD);      // entry: constant word
            want.u16_(0x0102);      // SecondSegment
            want.u32_(0x55667788);  // Value2
            want.u32_(0x11223344);  // Value1
        }
        want.raw({'U', 'N', 'I', 'T'}).raw(std::vector<u8>(32, 0));  // name in 36 bytes
        EXPECT_EQ(SegmentBytes(table, 0), want.v);
        EXPECT_EQ(table.GetSegment(0)->IsMotorolaFormat() != 0, motorola == 1);
    }
}

TEST(DownloadList, ANameOf40CharactersIsCutTo36) {
    CVemDownloadListEntry entry;
    entry.Name = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789abcd";
    CVemByteArray* array = VemBaNewByteArray(0, 1, 1, 0);
    EXPECT_EQ(entry.CreateByteStream(array, 0), 1);
    ASSERT_EQ(array->GetLength(), 48u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(array->GetBytePointer()) + 12, 36),
              "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789");
    VemBaDeleteByteArray(array);
}

TEST(DownloadList, A64000ByteSegmentHolds1334Entries) {
    for (int count : {1334, 1335}) {
        CVemDownloadList list;
        AddEntries(list, count);
        CSegmentTable table;
        CVemByteArray* reserved = nullptr;
        table.AddNewSegment(reserved);  // the chain starts at number 1
        EXPECT_EQ(list.CreateSegments(&table, 0, 0), 1);
        const std::vector<u8> first = SegmentBytes(table, 1);
        EXPECT_EQ(first[2], 22);
        if (count == 1334) {
            EXPECT_EQ(table.GetNoOfSegments(), 1);
            EXPECT_EQ(WordLE(first, 0), 8 + 48 * 1334);
            EXPECT_EQ(WordLE(first, 4), 0);
            EXPECT_EQ(WordLE(first, 6), 1334);
            continue;
        }
        ASSERT_EQ(table.GetNoOfSegments(), 2);
        const std::vector<u8> second = SegmentBytes(table, 2);
        EXPECT_EQ(WordLE(first, 0), 64040);  // 8 + 48 * 1334: the first length above 64000
        EXPECT_EQ(WordLE(first, 4), 2);      // Next Seg: the second's number
        EXPECT_EQ(WordLE(first, 6), 1334);
        EXPECT_EQ(WordLE(second, 0), 56);
        EXPECT_EQ(second[2], 23);  // a continuation
        EXPECT_EQ(second[3], 8);
        EXPECT_EQ(WordLE(second, 4), 0);
        EXPECT_EQ(WordLE(second, 6), 1);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(second.data()) + 8 + 12), "U1334");
    }
}

TEST(DownloadList, StoredFormByteForByteAndLoaded) {
    CVemDownloadList list;
    tDownloadListEntry e = Entry("A", 0x01020304, 0x05060708, 9);
    e.SecondSegment = 3;
    e.FirstSegment = 4;
    int isNew = 0;
    AddEntry(list, e, isNew);
    list.GetEntryByIndex(1)->TailPathName = "D\\FILE1";
    list.PathName = "D";
    Bytes want;
    want.u16_(2);  // entries: count
    want.u16_(0);  // element 0: null
    EntryObject(want, 0, "D\\FILE1", "A", 1);
    want.u16_(0);       // schema word
    Double(want, 1.0);  // LastIndex
    want.str("D");      // PathName
    EXPECT_EQ(Stored(list), want.v);
    // Loaded, the entries are found by index but not by name: a name seen before is taken for new.
    CVemDownloadList loaded;
    Load(loaded, want.v);
    EXPECT_EQ(loaded.LastIndex, 1);
    EXPECT_EQ(loaded.PathName, "D");
    EXPECT_EQ(loaded.GetEntryByIndex(1)->Name, "A");
    EXPECT_EQ(loaded.GetIndexByName("A"), -1);
    EXPECT_EQ(AddWithoutSegments(loaded, "A", isNew), 2);
    EXPECT_EQ(isNew, 1);
    EXPECT_EQ(loaded.GetEntryByIndex(2)->TailPathName, "D\\FILE2");
    // As an object the list has class schema 1.
    EXPECT_EQ(memtest::Stored([&](CArchive& ar) { ar.WriteObject(&list); }),
              Bytes().newClass(1, "CVemDownloadList").raw(want.v).v);
}

TEST(DownloadList, LastIndexIsRoundedFromItsDouble) {
    struct Case {
        double stored;
        int index;
    };
    for (const Case& c : {Case{2.6, 3}, Case{2.4, 2}, Case{-0.4, 0}, Case{7.0, 7}}) {
        Bytes b;
        b.u16_(1).u16_(0).u16_(0);  // one null element, schema word
        Double(b, c.stored).str("");
        CVemDownloadList loaded;
        Load(loaded, b.v);
        EXPECT_EQ(loaded.LastIndex, c.index) << c.stored;
    }
}

TEST(DownloadList, ADamagedStoredFormFailsWithoutLeaks) {
    Bytes twice;  // the second element refers back to the first entry
    twice.u16_(2);
    EntryObject(twice, 0, "", "A", 1).u16_(2);
    Bytes wrongClass;
    wrongClass.u16_(1).newClass(0, "CStringList");
    wrongClass.u16_(0);
    Bytes newer;
    newer.u16_(1).u16_(0).u16_(1);  // schema word 1
    Bytes nan;
    nan.u16_(1).u16_(0).u16_(0);
    Double(nan, std::nan("")).str("");
    Bytes huge;
    huge.u16_(1).u16_(0).u16_(0);
    Double(huge, 1e12).str("");
    Bytes good;
    good.u16_(3).u16_(0);
    EntryObject(good, 0, "D\\FILE1", "A", 1);
    EntryObject(good, 1, "D\\FILE2", "B", 2);
    good.u16_(0);
    Double(good, 2.0).str("D");

    memtest::ExpectDamagedLoadsFail<CVemDownloadList>({twice.v, wrongClass.v, newer.v, nan.v, huge.v}, good.v);
    CVemDownloadList loaded;
    Load(loaded, good.v);
    EXPECT_EQ(loaded.GetEntryByIndex(2)->Name, "B");
}
