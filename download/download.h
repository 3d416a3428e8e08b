// Download list: the units that go to the controller, each with a running index, a file name below
// the download directory and its two segments; from all of them the chain of download table
// segments. Both classes are exported.
#pragma once

#include "platform/collections.h"
#include "platform/cstring.h"
#include "vem32_types.h"

// The record that a caller of the download list fills in and gets back.
struct tDownloadListEntry {
    CString Name;
    u32 Value1 = 0;
    u32 Value2 = 0;
    u16 SecondSegment = 0;
    u16 FirstSegment = 0;
    u16 Value3 = 0;
};

// One unit of the list.
class VEM_API CVemDownloadListEntry : public CObject {
    VEM_DECLARE_SERIAL(CVemDownloadListEntry)
public:
    static constexpr u16 kSchema = 0;
    // Bytes of the unit's name in its download table entry.
    static constexpr int kNameBytes = 36;

    CVemDownloadListEntry();
    ~CVemDownloadListEntry() override;
    CVemDownloadListEntry(const CVemDownloadListEntry&) = delete;
    CVemDownloadListEntry& operator=(const CVemDownloadListEntry&) = delete;

    // Appends the download table entry through the array's own operations, so in its byte order:
    // 0xCDCD, SecondSegment, Value2, Value1, the name in 36 bytes. The int has no effect. Always 1.
    int CreateByteStream(CVemByteArray* array, int unused);
    // Keeps the index; with a directory, TailPathName becomes directory + "\FILE" + index.
    void SetTailPathName(CString directory, u16 index);

    // schema word (u16, 0), TailPathName, Name, Value1, Value2 (u32), Index, SecondSegment,
    // FirstSegment, Value3 (u16)
    void Serialize(CArchive& ar) override;

    void CopyFrom(const tDownloadListEntry& entry);
    void CopyTo(tDownloadListEntry& entry) const;

    CString TailPathName;
    u16 Index = 0;
    CString Name;
    u32 Value1 = 0;
    u32 Value2 = 0;
    u16 SecondSegment = 0;
    u16 FirstSegment = 0;
    u16 Value3 = 0;
};

// The entries by index, from 1; element 0 stays null. The list owns its entries.
class VEM_API CVemDownloadList : public CObArray {
    VEM_DECLARE_SERIAL(CVemDownloadList)
public:
    static constexpr u16 kSchema = 0;
    // A download table segment is closed once it is longer than this.
    static constexpr u32 kSegmentLimit = 64000;

    CVemDownloadList();
    ~CVemDownloadList() override;
    CVemDownloadList(const CVemDownloadList&) = delete;
    CVemDownloadList& operator=(const CVemDownloadList&) = delete;

    // The index of the entry's name. A name seen before fills the caller's record from the stored
    // entry, sets isNew to 0 and deletes both arrays. A new name gets the next index; with a
    // SegmentTable the table takes both arrays, their numbers go to the record, and each segment's
    // header names the other. The array pointers are null afterwards unless the arrays stayed the
    // caller's (no SegmentTable).
    int AddNextEntry(tDownloadListEntry& entry, int& isNew, CVemByteArray*& first, CVemByteArray*& second);
    // The index of a name, or -1.
    int GetIndexByName(CString name);
    // Null above LastIndex; an index below 0 or beyond the array is the invalid-argument exception.
    CVemDownloadListEntry* GetEntryByIndex(int index);
    // Makes the download directory: the path's drive and directory and the first 8 characters of
    // the name. 1, or 0 after a message if it cannot be made.
    int SetPathName(CString path, CString name);
    // Adds the chain of download table segments (kinds 22, then 23) to the table. The int has no
    // effect. Always 1.
    int CreateSegments(CSegmentTable* table, int unused, int motorola);

    // entries (count and object references), schema word (u16, 0), LastIndex (IEEE double),
    // PathName. NameMap and SegmentTable are not stored.
    void Serialize(CArchive& ar) override;

    // Deletes every entry and empties the array.
    void DeleteAllEntries();

    CMapStringToOb NameMap;  // name → index, held in the pointer word
    i32 LastIndex = 0;
    CString PathName;
    CSegmentTable* SegmentTable = nullptr;  // not owned; null keeps the segments with the caller

private:
    CVemDownloadListEntry* EntryAt(int index) const { return static_cast<CVemDownloadListEntry*>(GetAt(index)); }
    void TakeSegments(tDownloadListEntry& entry, CVemByteArray*& first, CVemByteArray*& second);
};
