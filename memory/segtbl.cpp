// CSegmentTable: numbering, ownership and the patches of segment headers.
#include "memory/segtbl.h"

#include "node/layoutepoch.h"

VEM_IMPLEMENT_SERIAL(CSegmentTable, CObArray, 5)

CSegmentTable::CSegmentTable() : CSegmentTable(0) {}

CSegmentTable::CSegmentTable(u16 startSegmentNo) : m_startSegmentNo(startSegmentNo), m_nextSegmentNo(startSegmentNo) {}

CSegmentTable::~CSegmentTable() { DeleteAllArrays(); }

void CSegmentTable::DeleteAllArrays() {
    for (int i = 0; i < GetSize(); ++i) delete At(i);
    RemoveAll();
}

bool CSegmentTable::IsMarked(u16 number) const {
    return number < m_usedNumbers.GetLength() && m_usedNumbers.GetAt(number) == kUsed;
}

void CSegmentTable::Mark(u16 number) { m_usedNumbers.SetAtGrow(number, kUsed); }

bool CSegmentTable::FindFreeNumber() {
    while (IsMarked(m_nextSegmentNo)) ++m_nextSegmentNo;
    return m_nextSegmentNo < kMaxAutoNumbers;
}

// Marking comes first: a number that cannot be marked leaves the table as it was and the array
// with the caller.
u16 CSegmentTable::AddNewSegment(CVemByteArray* array) {
    vem::TouchLayout();
    if (!FindFreeNumber()) return kNoNumber;
    const u16 number = m_nextSegmentNo;
    Mark(number);
    CVemByteArray* old = number < GetSize() ? At(number) : nullptr;
    SetAtGrow(number, array);
    if (old != array) delete old;
    if (array) ++m_noOfSegments;
    ++m_nextSegmentNo;
    return number;
}

// A number of the caller's choice leaves nextSegmentNo alone; the automatic search skips it later
// by its mark. Replacing the array under a given-out number does not count it again.
int CSegmentTable::AddNewSegment(u16 number, CVemByteArray* array) {
    vem::TouchLayout();
    if (number < m_nextSegmentNo) {
        if (number >= GetSize()) VemThrowInvalidArg();
        CVemByteArray* old = At(number);
        if (old && IsMarked(number)) {
            if (old != array) {
                SetAt(number, array);
                delete old;
            }
            return 1;
        }
    }
    Mark(number);
    CVemByteArray* old = number < GetSize() ? At(number) : nullptr;
    SetAtGrow(number, array);
    if (old != array) delete old;
    if (array) ++m_noOfSegments;
    return 1;
}

// The mark stays, so that a deleted number is never given out again.
int CSegmentTable::DeleteSegment(u16 number) {
    vem::TouchLayout();
    if (number >= m_nextSegmentNo) return 0;
    if (number >= GetSize() || !At(number)) return 1;
    delete At(number);
    SetAt(number, nullptr);
    --m_noOfSegments;
    return 1;
}

CVemByteArray* CSegmentTable::GetSegment(u16 number) const { return static_cast<CVemByteArray*>(GetAt(number)); }

const u8* CSegmentTable::GetSegmentBytePointer(u16 number) const {
    const CVemByteArray* array = GetSegment(number);
    return array ? array->GetBytePointer() : nullptr;
}

// The partner's number goes to the header field behind the kind and the header length. A fract
// layout array keeps its header in raw bytes as at ByteSize 1.
int CSegmentTable::PatchCorrespondingSegment(u16 number, u16 other) {
    CVemByteArray* array = GetSegment(number);
    if (!array) return 1;
    if (array->GetLength() < 6) return 0;
    if (array->IsFractLayout()) {
        const u8 bytes[2] = {static_cast<u8>(other), static_cast<u8>(other >> 8)};
        array->CVemByteArray::Patch(4, bytes, 2);
        return 1;
    }
    const unsigned b = array->GetByteSize();
    array->PatchOffset(static_cast<u16>(b <= 2 ? 2 * b + 2 : 3 * b), other);
    return 1;
}

// The two halves of the handle stand two bytes apart, whatever the ByteSize.
int CSegmentTable::PatchInstanceHandle(u16 number, u16 offset, tInstanceHandle handle) {
    CVemByteArray* array = GetSegment(number);
    if (!array || array->GetLength() < 6) return 0;
    array->PatchOffset(offset, handle.First);
    array->PatchOffset(static_cast<u16>(offset + 2), handle.Second);
    return 1;
}

u32 CSegmentTable::ComputeCheckSum(u32 seed) {
    for (int i = 0; i < GetSize(); ++i)
        if (CVemByteArray* array = At(i)) seed = array->ComputeCheckSum(seed);
    return seed;
}

void CSegmentTable::SetStartSegmentNo(u16 number) {
    m_startSegmentNo = m_nextSegmentNo = number;
    m_noOfSegments = 0;
}
