// The statement list of a unit: for each line of its instruction list source, where the compiler
// put it in the code and with which accumulator and operand types.
#pragma once

#include "platform/archive.h"
#include "platform/collections.h"

// The data of one entry. Only the numbers go to a file; the two texts are for the caller.
class VEM_API CStatListEntryBase {
public:
    CStatListEntryBase();
    CStatListEntryBase(const CStatListEntryBase& other);
    CStatListEntryBase& operator=(const CStatListEntryBase& other) = default;
    virtual ~CStatListEntryBase();

    CString Text1;
    CString Text2;
    u16 AwlLine = 0;      // line of the instruction list text; the key of the list
    i32 CodeLine = 0;     // place in the code, as the compiler reckons it
    u32 AEType = 0;       // type of the accumulator; 16 bits in a file
    u32 OperandType = 0;  // operand type of the statement; 16 bits in a file
};

// An entry as an object that a list can store.
class VEM_API CStatListEntry : public CObject, public CStatListEntryBase {
    VEM_DECLARE_SERIAL(CStatListEntry)
public:
    // Version of the entry's record.
    static constexpr u16 kVersion = 0;

    CStatListEntry();
    CStatListEntry(const CStatListEntry& other);
    CStatListEntry& operator=(const CStatListEntry&) = delete;
    ~CStatListEntry() override;

    // version (u16, 0), AwlLine (u16), CodeLine (u32), AEType (u16), OperandType (u16).
    void Serialize(CArchive& ar) override;
};

// The entries of a unit by their line; the list owns them.
class VEM_API CStatList : public CMapWordToOb {
    VEM_DECLARE_SERIAL(CStatList)
public:
    CStatList();
    CStatList(const CStatList&) = delete;
    CStatList& operator=(const CStatList&) = delete;
    ~CStatList() override;

    // Takes the entry; an entry held under the same line is deleted and replaced.
    void NewEntry(CStatListEntry* entry);
    // The entry of the line, or null.
    CStatListEntry* GetEntry(u16 key);
    // Visits every line from 0 to the highest that NewEntry was given.
    void Trace();

    // A deep copy, or null if it cannot be made.
    CStatList* Clone() const;
    // count (u16), then per entry its line (u16) and its record.
    void Serialize(CArchive& ar) override;

    // The highest line given to NewEntry on this object; neither stored nor copied.
    u16 MaxLine = 0;

private:
    // Stores the entry under the key, deleting one that was there.
    void Replace(u16 key, CStatListEntry* entry);
    void DeleteEntries();
};
