// Download list: entries by index, their segments, and the download table segments made of them.
#include "download/download.h"

#include <cstdint>
#include <memory>

#include "memory/segtbl.h"
#include "platform/msgbox.h"
#include "vem_bytearray.h"

VEM_IMPLEMENT_SERIAL(CVemDownloadListEntry, CObject, 5)
VEM_IMPLEMENT_SERIAL(CVemDownloadList, CObArray, 1)

namespace {

constexpr int kBlockSize = 10;
constexpr u16 kUnpatched = 0xCDCD;  // stands where a header word is filled in later
constexpr u8 kHeaderLength = 8;
constexpr u16 kNoSegmentNumber = 0xFFFF;

// Header offsets of a download table segment.
constexpr u16 kSizeAt = 0;
constexpr u16 kKindAt = 2;
constexpr u16 kNextSegAt = 4;
constexpr u16 kNumAt = 6;

constexpr char kNoDirectoryMessage[] =
    "Could not create directory%s -  Maybe disk is full or path is too long !\n"
    " Konnte Verzeichnis %s nicht erzeugen - Entweder ist Platte voll oder der Pfad zu lang !";

CObject* IndexToValue(int index) { return reinterpret_cast<CObject*>(static_cast<std::intptr_t>(index)); }
int ValueToIndex(CObject* value) { return static_cast<int>(reinterpret_cast<std::intptr_t>(value)); }

// ByteSize 1, alignment 1, in the chosen byte order.
std::unique_ptr<CVemByteArray> NewTableArray(int motorola) {
    CVemByteArray* array = VemBaNewByteArray(motorola, 1, 1, 0);
    if (!array) VemThrowMemory();
    return std::unique_ptr<CVemByteArray>(array);
}

void AppendSegmentHeader(CVemByteArray* segment) {
    segment->AppendOffset(kUnpatched);  // Size
    segment->AppendByte(static_cast<u8>(kIpSegDownloadTableStart));
    segment->AppendByte(kHeaderLength);
    segment->AppendOffset(kUnpatched);  // Next Seg
    segment->AppendOffset(kUnpatched);  // Num
}

void CloseSegment(CVemByteArray* segment, u16 nextSegment, u16 entries) {
    segment->PatchOffset(kSizeAt, static_cast<u16>(segment->GetLength()));
    segment->PatchOffset(kNextSegAt, nextSegment);
    segment->PatchOffset(kNumAt, entries);
}

}  // namespace

// ---- CVemDownloadListEntry -------------------------------------------------------------------------

CVemDownloadListEntry::CVemDownloadListEntry() = default;

CVemDownloadListEntry::~CVemDownloadListEntry() = default;

void CVemDownloadListEntry::CopyFrom(const tDownloadListEntry& entry) {
    Name = entry.Name;
    Value1 = entry.Value1;
    Value2 = entry.Value2;
    SecondSegment = entry.SecondSegment;
    FirstSegment = entry.FirstSegment;
    Value3 = entry.Value3;
}

void CVemDownloadListEntry::CopyTo(tDownloadListEntry& entry) const {
    entry.Name = Name;
    entry.Value1 = Value1;
    entry.Value2 = Value2;
    entry.SecondSegment = SecondSegment;
    entry.FirstSegment = FirstSegment;
    entry.Value3 = Value3;
}

void CVemDownloadListEntry::SetTailPathName(CString directory, u16 index) {
    Index = index;
    if (directory.IsEmpty()) return;
    TailPathName.Format("%s\\FILE%u", directory.GetString(), static_cast<unsigned>(index));
}

//  offset  width   value
//  0       word    0xCDCD
//  2       word    SecondSegment
//  4       dword   Value2
//  8       dword   Value1
//  12      36      Name, cut or filled with zeros
int CVemDownloadListEntry::CreateByteStream(CVemByteArray* array, int) {
    array->AppendOffset(kUnpatched);
    array->AppendOffset(SecondSegment);
    array->AppendDword(Value2);
    array->AppendDword(Value1);
    array->AppendString(Name, kNameBytes);
    return 1;
}

//  width   field
//  2       schema word (0)
//  string  TailPathName
//  string  Name
//  4       Value1
//  4       Value2
//  2       Index
//  2       SecondSegment
//  2       FirstSegment
//  2       Value3
void CVemDownloadListEntry::Serialize(CArchive& ar) {
    VemSerializeSchema(ar, kSchema);
    if (ar.IsStoring()) {
        ar << TailPathName << Name << Value1 << Value2 << Index << SecondSegment << FirstSegment << Value3;
    } else {
        ar >> TailPathName >> Name >> Value1 >> Value2 >> Index >> SecondSegment >> FirstSegment >> Value3;
    }
}

// ---- CVemDownloadList ------------------------------------------------------------------------------

CVemDownloadList::CVemDownloadList() : NameMap(kBlockSize) {}

CVemDownloadList::~CVemDownloadList() { DeleteAllEntries(); }

void CVemDownloadList::DeleteAllEntries() {
    for (int i = 0; i < GetSize(); ++i) delete EntryAt(i);
    RemoveAll();
}

int CVemDownloadList::SetPathName(CString path, CString name) {
    const VemPathParts parts = VemSplitPath(path);
    const CString directory = parts.drive + parts.directory + name.Left(8);
    try {
        CFile::Remove(directory);  // a file of that name would stand in the way
    } catch (const CFileException&) {
    }
    CFileStatus status;
    if (!CFile::GetStatus(directory, status) && !VemMakeDirectory(directory)) {
        CString text;
        text.Format(kNoDirectoryMessage, directory.GetString(), directory.GetString());
        AfxMessageBox(text);
        return 0;
    }
    // The system also removes directory + "\*.*" here, a name that no Windows file can have, so
    // that nothing already in the directory goes. On this host such a file could exist, and the
    // call is left out to keep the same outcome.
    PathName = directory;
    return 1;
}

int CVemDownloadList::GetIndexByName(CString name) {
    CObject* value = nullptr;
    return NameMap.Lookup(name, value) ? ValueToIndex(value) : -1;
}

CVemDownloadListEntry* CVemDownloadList::GetEntryByIndex(int index) {
    if (index > LastIndex) return nullptr;
    return EntryAt(index);
}

int CVemDownloadList::AddNextEntry(tDownloadListEntry& entry, int& isNew, CVemByteArray*& first,
                                   CVemByteArray*& second) {
    const int known = GetIndexByName(entry.Name);
    if (known != -1) {
        if (const CVemDownloadListEntry* stored = EntryAt(known)) stored->CopyTo(entry);
        isNew = 0;
        delete first;
        delete second;
        first = second = nullptr;
        return known;
    }
    ++LastIndex;
    auto created = std::make_unique<CVemDownloadListEntry>();
    created->CopyFrom(entry);
    created->SetTailPathName(PathName, static_cast<u16>(LastIndex));
    CVemDownloadListEntry* stored = created.get();
    SetAtGrow(LastIndex, stored);
    created.release();
    NameMap.SetAt(entry.Name, IndexToValue(LastIndex));
    isNew = 1;
    if (SegmentTable) {
        TakeSegments(entry, first, second);
        stored->CopyFrom(entry);
    }
    return LastIndex;
}

// The table takes both arrays. An array for which it has no number (65535) goes as well, and that
// number stands in the record; only segments that got a number are cross-linked.
void CVemDownloadList::TakeSegments(tDownloadListEntry& entry, CVemByteArray*& first, CVemByteArray*& second) {
    std::unique_ptr<CVemByteArray> firstArray(first), secondArray(second);
    first = second = nullptr;
    entry.FirstSegment = SegmentTable->AddNewSegment(firstArray.get());
    if (entry.FirstSegment != kNoSegmentNumber) firstArray.release();
    entry.SecondSegment = SegmentTable->AddNewSegment(secondArray.get());
    if (entry.SecondSegment != kNoSegmentNumber) secondArray.release();
    if (entry.FirstSegment != kNoSegmentNumber) {
        SegmentTable->PatchCorrespondingSegment(entry.FirstSegment, entry.SecondSegment);
    }
    if (entry.SecondSegment != kNoSegmentNumber) {
        SegmentTable->PatchCorrespondingSegment(entry.SecondSegment, entry.FirstSegment);
    }
}

//  offset  width   field (in the chosen byte order)
//  0       word    Size: length with the header
//  2       byte    kind: 22 in the first segment, 23 in each further one
//  3       byte    header length, 8
//  4       word    Next Seg: number of the next segment, 0 in the last
//  6       word    Num: entries in this segment
//  8       48 each entries, as CreateByteStream writes them
int CVemDownloadList::CreateSegments(CSegmentTable* table, int unused, int motorola) {
    if (GetSize() == 0) return 1;
    if (!table) VemThrowInvalidArg();
    CVemByteArray* current = nullptr;
    std::unique_ptr<CVemByteArray> refused;  // a segment that the table had no number for
    u16 entries = 0;
    bool wanted = true;
    for (int i = 0; i < GetSize(); ++i) {
        if (wanted) {
            std::unique_ptr<CVemByteArray> segment = NewTableArray(motorola);
            const u16 number = table->AddNewSegment(segment.get());
            CVemByteArray* opened = number == kNoSegmentNumber ? segment.get() : segment.release();
            AppendSegmentHeader(opened);
            if (current) {
                CloseSegment(current, number, entries);
                opened->PatchByte(kKindAt, static_cast<u8>(kIpSegDownloadTableContinue));
            }
            current = opened;
            if (segment) refused = std::move(segment);
            entries = 0;
            wanted = false;
        }
        CVemDownloadListEntry* entry = EntryAt(i);
        if (!entry) continue;
        std::unique_ptr<CVemByteArray> stream = NewTableArray(motorola);
        entry->CreateByteStream(stream.get(), unused);
        current->Append(stream.get());
        ++entries;
        if (current->GetLength() > kSegmentLimit) wanted = true;
    }
    CloseSegment(current, 0, entries);
    return 1;
}

//  width   field
//  count   entries, then one object reference each (0x0000 for the empty element 0)
//  2       schema word (0)
//  8       LastIndex as an IEEE double
//  string  PathName
void CVemDownloadList::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        CObArray::Serialize(ar);
        VemSerializeSchema(ar, kSchema);
        ar << static_cast<double>(LastIndex) << PathName;
        return;
    }
    DeleteAllEntries();
    NameMap.RemoveAll();
    const u32 count = ar.ReadCount(2);  // a null reference at the least
    for (u32 i = 0; i < count; ++i) {
        std::unique_ptr<CObject> entry(ar.ReadOwnedObject(RUNTIME_CLASS(CVemDownloadListEntry)));
        Add(entry.get());
        entry.release();
    }
    VemSerializeSchema(ar, kSchema);
    double lastIndex = 0;
    ar >> lastIndex >> PathName;
    lastIndex += 0.5;
    if (!(lastIndex > -2147483649.0 && lastIndex < 2147483648.0)) VemThrowArchive(CArchiveException::badIndex);
    LastIndex = static_cast<i32>(lastIndex);
}
