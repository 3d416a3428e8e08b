// Segment table functions: byte arrays by segment number. The table owns the arrays handed to it.
// A number beyond the table's size raises CInvalidArgException where a segment is looked up.
#pragma once

#include "vem32_types.h"

VEM_API int GetVemSegTblVersion();

VEM_API CSegmentTable* VemSegTblNew();  // start number 0
// Deletes the table with all its arrays; null is accepted.
VEM_API void VemSegTblDelete(CSegmentTable* table);

// The next free number below 8192 for the array, or 65535 (the array then stays the caller's).
VEM_API u16 VemSegTblAddNewSegment(CSegmentTable* table, CVemByteArray* array);
// The array under a number of the caller's choice; always 1.
VEM_API int VemSegTblAddNewSegment(CSegmentTable* table, u16 number, CVemByteArray* array);
// Deletes the array under a number given out before; the number is not given out again.
VEM_API int VemSegTblDeleteSegment(CSegmentTable* table, u16 number);
VEM_API int VemSegTblPatchCorrespondingSegment(CSegmentTable* table, u16 number, u16 other);
VEM_API int VemSegTblPatchInstanceHandle(CSegmentTable* table, u16 number, u16 offset, tInstanceHandle handle);
// Chained over all arrays: the running check in the low half, the last array's length in the high half.
VEM_API u32 VemSegTblComputeCheckSum(CSegmentTable* table, u32 seed);
VEM_API void VemSegTblDump(CSegmentTable* table, const CString& prefix, CFile* file);

VEM_API CString VemSegTblGetPouName(CSegmentTable* table);
VEM_API void VemSegTblSetPouName(CSegmentTable* table, CString name);
VEM_API u16 VemSegTblGetStartSegmentNo(CSegmentTable* table);
// Starts the numbering anew; the arrays and the numbers given out stay.
VEM_API void VemSegTblSetStartSegmentNo(CSegmentTable* table, u16 number);
// The number before the next one to be given out.
VEM_API u16 VemSegTblGetMaxSegmentNo(CSegmentTable* table);
VEM_API u16 VemSegTblGetNoOfSegments(CSegmentTable* table);
// Null for a number that holds no array.
VEM_API CVemByteArray* VemSegTblGetSegment(CSegmentTable* table, u16 number);
VEM_API const u8* GetSegmentBytePointer(CSegmentTable* table, u16 number);

// The same functions under the names that older callers bind.
VEM_API u16 VemDllGetMaxSegmentNo(CSegmentTable* table);
VEM_API u16 VemDllGetNoOfSegments(CSegmentTable* table);
VEM_API CVemByteArray* VemDllGetSegment(CSegmentTable* table, u16 number);
VEM_API const u8* VemDllGetSegmentBytePointer(CSegmentTable* table, u16 number);
