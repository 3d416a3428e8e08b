// The segment table functions.
#include "memory/segtbl.h"
#include "vem_bytearray.h"
#include "vem_segtbl.h"

int GetVemSegTblVersion() { return GetVemBaVersion(); }

CSegmentTable* VemSegTblNew() { return new CSegmentTable(0); }
void VemSegTblDelete(CSegmentTable* table) { delete table; }

u16 VemSegTblAddNewSegment(CSegmentTable* table, CVemByteArray* array) { return table->AddNewSegment(array); }
int VemSegTblAddNewSegment(CSegmentTable* table, u16 number, CVemByteArray* array) {
    return table->AddNewSegment(number, array);
}
int VemSegTblDeleteSegment(CSegmentTable* table, u16 number) { return table->DeleteSegment(number); }
int VemSegTblPatchCorrespondingSegment(CSegmentTable* table, u16 number, u16 other) {
    return table->PatchCorrespondingSegment(number, other);
}
int VemSegTblPatchInstanceHandle(CSegmentTable* table, u16 number, u16 offset, tInstanceHandle handle) {
    return table->PatchInstanceHandle(number, offset, handle);
}
u32 VemSegTblComputeCheckSum(CSegmentTable* table, u32 seed) { return table->ComputeCheckSum(seed); }
void VemSegTblDump(CSegmentTable* table, const CString& prefix, CFile* file) { table->Dump(prefix, file); }

CString VemSegTblGetPouName(CSegmentTable* table) { return table->GetPouName(); }
void VemSegTblSetPouName(CSegmentTable* table, CString name) { table->SetPouName(name); }
u16 VemSegTblGetStartSegmentNo(CSegmentTable* table) { return table->GetStartSegmentNo(); }
void VemSegTblSetStartSegmentNo(CSegmentTable* table, u16 number) { table->SetStartSegmentNo(number); }
u16 VemSegTblGetMaxSegmentNo(CSegmentTable* table) { return static_cast<u16>(table->GetNextSegmentNo() - 1); }
u16 VemSegTblGetNoOfSegments(CSegmentTable* table) { return table->GetNoOfSegments(); }
CVemByteArray* VemSegTblGetSegment(CSegmentTable* table, u16 number) { return table->GetSegment(number); }
const u8* GetSegmentBytePointer(CSegmentTable* table, u16 number) { return table->GetSegmentBytePointer(number); }

u16 VemDllGetMaxSegmentNo(CSegmentTable* table) { return VemSegTblGetMaxSegmentNo(table); }
u16 VemDllGetNoOfSegments(CSegmentTable* table) { return VemSegTblGetNoOfSegments(table); }
CVemByteArray* VemDllGetSegment(CSegmentTable* table, u16 number) { return VemSegTblGetSegment(table, number); }
const u8* VemDllGetSegmentBytePointer(CSegmentTable* table, u16 number) { return GetSegmentBytePointer(table, number); }
