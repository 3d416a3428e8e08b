#include "units/statlist.h"

#include <memory>
#include <new>

#include "platform/fieldio.h"

VEM_IMPLEMENT_SERIAL(CStatListEntry, CObject, 5)
VEM_IMPLEMENT_SERIAL(CStatList, CMapWordToOb, 5)

namespace {

// A line and an entry's record: 2 + 12 bytes.
constexpr u64 kStoredEntryBytes = 14;

}  // namespace

// ---- entries ---------------------------------------------------------------------------------------

CStatListEntryBase::CStatListEntryBase() = default;

CStatListEntryBase::CStatListEntryBase(const CStatListEntryBase& other) = default;

CStatListEntryBase::~CStatListEntryBase() = default;

CStatListEntry::CStatListEntry() = default;

CStatListEntry::CStatListEntry(const CStatListEntry& other) : CObject(), CStatListEntryBase(other) {}

CStatListEntry::~CStatListEntry() = default;

//  offset  width   field
//  0       2       version (0)
//  2       2       AwlLine
//  4       4       CodeLine
//  8       2       AEType, low 16 bits
//  10      2       OperandType, low 16 bits
void CStatListEntry::Serialize(CArchive& ar) {
    VemSerializeSchema(ar, kVersion);
    vem::SerializeField<u16>(ar, AwlLine);
    vem::SerializeField<u32>(ar, CodeLine);
    vem::SerializeField<u16>(ar, AEType);
    vem::SerializeField<u16>(ar, OperandType);
}

// ---- list ------------------------------------------------------------------------------------------

CStatList::CStatList() : CMapWordToOb(10) {}

CStatList::~CStatList() { DeleteEntries(); }

void CStatList::DeleteEntries() {
    for (POSITION pos = GetStartPosition(); pos;) {
        u16 key;
        CObject* entry;
        GetNextAssoc(pos, key, entry);
        delete entry;
    }
    RemoveAll();
}

// The slot is made before anything is deleted, so a failure leaves the list as it was.
void CStatList::Replace(u16 key, CStatListEntry* entry) {
    CObject*& slot = (*this)[key];
    delete slot;
    slot = entry;
}

// A later entry for a line replaces the earlier one.
void CStatList::NewEntry(CStatListEntry* entry) {
    const u16 key = entry->AwlLine;
    if (key > MaxLine) MaxLine = key;
    Replace(key, entry);
}

CStatListEntry* CStatList::GetEntry(u16 key) {
    CObject* entry = nullptr;
    return Lookup(key, entry) ? static_cast<CStatListEntry*>(entry) : nullptr;
}

// A walk over every line that may have an entry; it shows nothing.
void CStatList::Trace() {
    for (u32 line = 0; line <= MaxLine; ++line) (void)GetEntry(static_cast<u16>(line));
}

// Entries are copied under their keys directly, so MaxLine stays 0 in the copy.
CStatList* CStatList::Clone() const {
    try {
        auto copy = std::make_unique<CStatList>();
        for (POSITION pos = GetStartPosition(); pos;) {
            u16 key;
            CObject* entry;
            GetNextAssoc(pos, key, entry);
            auto entryCopy = std::make_unique<CStatListEntry>(*static_cast<CStatListEntry*>(entry));
            copy->SetAt(key, entryCopy.get());
            entryCopy.release();
        }
        return copy.release();
    } catch (const CException&) {
        return nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

//  width   field
//  2       count of entries
//  count × (2 line, 12 entry record), in the list's order
// A load stores each entry directly under its line; MaxLine is not restored.
void CStatList::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        VemStoreCount16(ar, static_cast<u64>(GetCount()));
        for (POSITION pos = GetStartPosition(); pos;) {
            u16 key;
            CObject* entry;
            GetNextAssoc(pos, key, entry);
            ar << key;
            entry->Serialize(ar);
        }
        return;
    }
    const u16 count = ar.ReadCount16(kStoredEntryBytes);
    for (u16 i = 0; i < count; ++i) {
        u16 key;
        ar >> key;
        auto entry = std::make_unique<CStatListEntry>();
        entry->Serialize(ar);
        Replace(key, entry.get());
        entry.release();
    }
}
