// The byte array functions: thin forwarders to the array's operations, and the few that do more.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "memory/cbytearr.h"
#include "memory/layouts.h"
#include "vem_bytearray.h"

namespace {

int g_defaultFormat = 0;  // kept for callers only

// Tag word of the stored form: class in the low byte, ByteSize in the high byte.
enum : u8 { kTagNull = 1, kTagMotorola = 2, kTagVem = 3, kTagFract = 6 };

u8 TagOf(CVemByteArray* array) {
    if (array->IsFractLayout()) return kTagFract;
    if (array->GetRuntimeClass() == RUNTIME_CLASS(CMotorolaByteArray)) return kTagMotorola;
    return kTagVem;
}

std::unique_ptr<CVemByteArray> MakeForTag(u16 word) {
    const u8 tag = static_cast<u8>(word);
    const u8 byteSize = word < 0x100 ? 1 : static_cast<u8>(word >> 8);
    switch (tag) {
        case kTagMotorola: return std::make_unique<CMotorolaByteArray>(1, byteSize);
        case kTagVem: return std::make_unique<CVemByteArray>(1, byteSize);
        case kTagFract: return std::make_unique<CFractLayoutByteArray>(1, CFractLayoutByteArray::kLayout);
        default: return nullptr;
    }
}

}  // namespace

int GetVemBaVersion() { return 1; }

void VemBaSetDefaultFormat(int format) { g_defaultFormat = format; }

// Null when there is no memory for the array.
CVemByteArray* VemBaNewByteArray(int motorola, u16 alignment, u8 byteSize, int fractLayout) {
    try {
        if (fractLayout) return new CFractLayoutByteArray(alignment, byteSize);
        if (motorola) return new CMotorolaByteArray(alignment, byteSize);
        return new CVemByteArray(alignment, byteSize);
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const CMemoryException&) {
        return nullptr;
    }
}

void VemBaDeleteByteArray(CVemByteArray* array) { delete array; }

CVemByteArray* VemBaClone(CVemByteArray* array) { return array->Clone(); }

//  Width  Field
//  2      tag (low byte: 1 null, 2 big-endian, 3 little-endian, 6 fract layout) and ByteSize
//         (high byte; 0 reads as 1)
//  ...    the array's record, unless the tag is 1
void VemBaSerialize(CVemByteArray*& array, CArchive& ar) {
    if (ar.IsStoring()) {
        if (!array) {
            ar << u16{kTagNull};
            return;
        }
        ar << static_cast<u16>(TagOf(array) | array->GetByteSize() << 8);
        array->Serialize(ar);
        return;
    }
    delete array;
    array = nullptr;
    u16 word = 0;
    ar >> word;
    std::unique_ptr<CVemByteArray> loaded = MakeForTag(word);
    if (!loaded) return;
    loaded->Serialize(ar);
    array = loaded.release();
}

void vem::SerializeOwned(std::unique_ptr<CVemByteArray>& array, CArchive& ar) {
    CVemByteArray* held = array.release();
    try {
        VemBaSerialize(held, ar);
    } catch (...) {
        array.reset(held);
        throw;
    }
    array.reset(held);
}

// Only a fract layout array takes single values from raw bytes; the others answer 1 whatever
// the raw append gives.
int VemBaAppend(CVemByteArray* array, const void* bytes, unsigned count) {
    if (!array->IsFractLayout()) {
        array->Append(bytes, count);
        return 1;
    }
    u16 word;
    u32 dword;
    switch (count) {
        case 1: return array->AppendByte(*static_cast<const u8*>(bytes));
        case 2: return array->AppendWord((std::memcpy(&word, bytes, 2), word));
        case 4: return array->AppendDword((std::memcpy(&dword, bytes, 4), dword));
        default: return array->Append(bytes, count);
    }
}

int VemBaAppend(CVemByteArray* array, CVemByteArray* other) { return array->Append(other); }
int VemBaAppendByte(CVemByteArray* array, u8 value) { return array->AppendByte(value); }
int VemBaAppendWord(CVemByteArray* array, u16 value) { return array->AppendWord(value); }
int VemBaAppendDword(CVemByteArray* array, u32 value) { return array->AppendDword(value); }
int VemBaAppendOffset(CVemByteArray* array, u16 value) { return array->AppendOffset(value); }
int VemBaAppendString(CVemByteArray* array, const char* text, int count) { return array->AppendString(text, count); }
int VemBaAppendStringRaw(CVemByteArray* array, const char* text, int count) {
    return array->AppendStringRaw(text, count);
}

// Byte by byte as strncpy would fill a buffer of count bytes: the text, then zeros.
int VemBaAppendCStyleString(CVemByteArray* array, const char* text, int count) {
    bool ended = !text;
    for (int i = 0; i < count; ++i) {
        const u8 byte = ended ? 0 : static_cast<u8>(text[i]);
        ended = ended || byte == 0;
        array->Append(&byte, 1);
    }
    return 1;
}

int VemBaPatch(CVemByteArray* array, u16 offset, const void* bytes, unsigned count) {
    return array->Patch(offset, bytes, count);
}
int VemBaPatchByte(CVemByteArray* array, u16 offset, u8 value) { return array->PatchByte(offset, value); }
int VemBaPatchWord(CVemByteArray* array, u16 offset, u16 value) { return array->PatchWord(offset, value); }
int VemBaPatchDword(CVemByteArray* array, u16 offset, u32 value) { return array->PatchDword(offset, value); }
int VemBaPatchOffset(CVemByteArray* array, u16 offset, u16 value) { return array->PatchOffset(offset, value); }
int VemBaPatchString(CVemByteArray* array, u16 offset, const u8* bytes, unsigned count) {
    return array->PatchString(offset, bytes, count);
}

// Patches reach no further than the length, so the copy need not be longer than the array.
int VemBaPatchString(CVemByteArray* array, u16 offset, const CString& text, int count) {
    unsigned n = count > 0 ? static_cast<unsigned>(count) : 0;
    if (n > array->GetLength()) n = array->GetLength();
    std::vector<u8> copy(n, 0);
    if (n)
        std::memcpy(copy.data(), text.GetString(),
                    std::min<std::size_t>(n, static_cast<std::size_t>(text.GetLength())));
    return array->PatchString(offset, copy.data(), n);
}

int VemBaGetByte(CVemByteArray* array, u16 offset, u8* result) { return array->GetByte(offset, result); }
int VemBaGetWord(CVemByteArray* array, u16 offset, u16* result) { return array->GetWord(offset, result); }
int VemBaGetDword(CVemByteArray* array, u16 offset, u32* result) { return array->GetDword(offset, result); }
int VemBaGetOffset(CVemByteArray* array, u16 offset, u16* result) { return array->GetWord(offset, result); }

const u8* VemBaGetBytePointer(CVemByteArray* array) { return array->GetBytePointer(); }
u32 VemBaGetLength(CVemByteArray* array) { return array->GetLength(); }
u32 VemBaGetSize(CVemByteArray* array) { return array->GetSize(); }
u16 VemBaGetAlignedLength(CVemByteArray* array, u16 alignment) { return array->GetAlignedLength(alignment); }
u16 VemBaGetAlignment(CVemByteArray* array) { return array->GetAlignment(); }
void VemBaSetAlignment(CVemByteArray* array, u16 alignment) { array->SetAlignment(alignment); }
u16 VemBaGetByteSize(CVemByteArray* array) { return array->GetByteSize(); }
void VemBaSetByteSize(CVemByteArray* array, u8 byteSize) { array->SetByteSize(byteSize); }
void VemBaSetMaxSize(CVemByteArray* array, u32 maxSize) { array->SetMaxSize(maxSize); }
int VemBaIsMotorolaFormat(CVemByteArray* array) { return array->IsMotorolaFormat(); }
int VemBaIsFractLayout(CVemByteArray* array) { return array->IsFractLayout(); }
void VemBaRemoveAllBytes(CVemByteArray* array) { array->SetLength(0, 1024); }

int VemBaPopLastByte(CVemByteArray* array, u8* byte) {
    const u32 length = array->GetLength();
    if (length == 0) return 0;
    *byte = array->GetAt(length - 1);
    array->SetAt(length - 1, 0);
    array->SetLength(length - 1, 1024);
    return 1;
}

u32 VemBaComputeCheckSum(CVemByteArray* array, u32 seed) { return array->ComputeCheckSum(seed); }
void VemBaDump(CVemByteArray* array, CStringArray& lines) { array->Dump(lines); }
