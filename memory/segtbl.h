// CSegmentTable: the byte arrays of one compile result by segment number. The table owns them.
#pragma once

#include "memory/cbytearr.h"
#include "platform/collections.h"
#include "platform/cstring.h"
#include "platform/file.h"
#include "vem32_types.h"

class VEM_API CSegmentTable : public CObArray {
    VEM_DECLARE_SERIAL(CSegmentTable)
public:
    // Numbers given out by the automatic search lie below this.
    static constexpr u16 kMaxAutoNumbers = 8192;
    static constexpr u16 kNoNumber = 0xFFFF;

    CSegmentTable();  // start number 0
    explicit CSegmentTable(u16 startSegmentNo);
    CSegmentTable(const CSegmentTable&) = delete;
    CSegmentTable& operator=(const CSegmentTable&) = delete;
    ~CSegmentTable() override;  // deletes every array

    // The next free number for the array (null reserves the number); 65535 if none is left, and
    // the array stays the caller's.
    u16 AddNewSegment(CVemByteArray* array);
    // The array at a number of the caller's choice. Always 1.
    int AddNewSegment(u16 number, CVemByteArray* array);
    int DeleteSegment(u16 number);
    // Null for an empty number; a number beyond the table is the invalid-argument exception.
    CVemByteArray* GetSegment(u16 number) const;
    const u8* GetSegmentBytePointer(u16 number) const;
    // Writes the partner's number into the header of a segment.
    int PatchCorrespondingSegment(u16 number, u16 other);
    int PatchInstanceHandle(u16 number, u16 offset, tInstanceHandle handle);
    // Chained over the arrays in ascending number, each sum the seed of the next.
    u32 ComputeCheckSum(u32 seed);

    void Serialize(CArchive& ar) override;
    using CObject::Dump;
    virtual void Dump(const CString& prefix, CFile* file);

    u16 GetStartSegmentNo() const { return m_startSegmentNo; }
    // Starts the numbering anew at `number`; the arrays and the marks stay.
    void SetStartSegmentNo(u16 number);
    u16 GetNextSegmentNo() const { return m_nextSegmentNo; }
    u16 GetNoOfSegments() const { return m_noOfSegments; }
    const CString& GetPouName() const { return m_pouName; }
    void SetPouName(const CString& name) { m_pouName = name; }
    const CVemByteArray& GetUsedNumbers() const { return m_usedNumbers; }

private:
    static constexpr u8 kUsed = 0xFF;

    bool IsMarked(u16 number) const;
    void Mark(u16 number);
    // Moves nextSegmentNo past the numbers given out; false if none below the limit is left.
    bool FindFreeNumber();
    // Deletes every array and leaves the table empty.
    void DeleteAllArrays();
    CVemByteArray* At(int number) const { return static_cast<CVemByteArray*>(GetAt(number)); }

    u16 m_startSegmentNo = 0;
    u16 m_nextSegmentNo = 0;
    u16 m_noOfSegments = 0;
    CString m_pouName;
    CVemByteArray m_usedNumbers{1, 1};
};
