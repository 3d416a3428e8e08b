// CSegmentTable: the stored form and the text dump.
#include <memory>

#include "memory/bytearr_dump.h"
#include "memory/layouts.h"
#include "memory/segtbl.h"
#include "node/dumptext.h"

namespace {

constexpr u16 kObjectVersion = 0;

// Entry tags: nothing, a little-endian array, a big-endian array. A fract layout array goes as a
// little-endian one and comes back as such.
enum : u8 { kEntryNull = 0, kEntryLittle = 1, kEntryBig = 2 };

void StoreEntry(CArchive& ar, CVemByteArray* array) {
    if (!array) {
        ar << u8{kEntryNull};
        return;
    }
    ar << u8{array->IsMotorolaFormat() ? kEntryBig : kEntryLittle};
    array->Serialize(ar);
}

// Any other tag is an empty number with nothing more to read.
CVemByteArray* LoadEntry(CArchive& ar) {
    u8 tag = 0;
    ar >> tag;
    std::unique_ptr<CVemByteArray> array;
    if (tag == kEntryLittle) array = std::make_unique<CVemByteArray>(1, 1);
    if (tag == kEntryBig) array = std::make_unique<CMotorolaByteArray>(1, 1);
    if (array) array->Serialize(ar);
    return array.release();
}

}  // namespace

//  Width  Field
//  2      count: highest number stored plus 1
//  ...    count entries: tag (u8), and behind tags 1 and 2 the array's record
//  2      object version (0)
//  ...    usedNumbers, as an array record
//  ...    pouName (string)
//  2      noOfSegments
//  2      startSegmentNo
//  2      nextSegmentNo
void CSegmentTable::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        const int count = GetSize();
        VemStoreCount16(ar, static_cast<u64>(count));
        for (int i = 0; i < count; ++i) StoreEntry(ar, At(i));
    } else {
        const u16 count = ar.ReadCount16(1);  // every entry takes at least its tag
        DeleteAllArrays();
        SetSize(count);
        for (int i = 0; i < count; ++i) SetAt(i, LoadEntry(ar));
    }
    VemSerializeSchema(ar, kObjectVersion);
    m_usedNumbers.Serialize(ar);
    if (ar.IsStoring())
        ar << m_pouName << m_noOfSegments << m_startSegmentNo << m_nextSegmentNo;
    else
        ar >> m_pouName >> m_noOfSegments >> m_startSegmentNo >> m_nextSegmentNo;
}

// A segment is one write; each of its lines begins with the prefix.
void CSegmentTable::Dump(const CString& prefix, CFile* file) {
    if (!file) return;
    auto put = [&](const CString& text) { file->Write(text.GetString(), static_cast<unsigned>(text.GetLength())); };
    put(prefix + "======== Dump of SegmentTable ========= \n");
    for (int i = 0; i < GetSize(); ++i) {
        CVemByteArray* array = At(i);
        if (!array) continue;
        CVemDumpText text;
        text << prefix << "\n=====================================\n" << prefix << "No: ";
        text.Signed(i) << "   0x";
        text.Hex(static_cast<unsigned>(i)) << "     ";
        if (array->GetRuntimeClass() == RUNTIME_CLASS(CVemByteArray)) {
            vem::dump::AppendPlainDump(*array, prefix, text);  // the common case, without a string per line
        } else {
            CStringArray lines;
            array->Dump(lines);
            for (int k = 0; k < lines.GetSize(); ++k) text << prefix << lines[k] << '\n';
        }
        text.WriteTo(file);
    }
    put(prefix + "\n" + "======== End Dump of SegmentTable ========= \n");
}
