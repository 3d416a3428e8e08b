// Byte array functions: target memory buffers in the target's layout. Each takes the array first
// and forwards to the operation of the same name; int results are 1 for success and 0 for failure.
// A length above the array's limit raises CMemoryException, as does a misaligned word or double
// word read on a little-endian array with an alignment above 1.
#pragma once

#include "vem32_types.h"

VEM_API int GetVemBaVersion();
// Kept for callers; nothing in the library reads it.
VEM_API void VemBaSetDefaultFormat(int format);

// A fract layout array if fractLayout is not 0 (byteSize is then taken as the layout), else a
// big-endian array if motorola is not 0, else a little-endian one. Null if there is no memory.
VEM_API CVemByteArray* VemBaNewByteArray(int motorola, u16 alignment, u8 byteSize, int fractLayout);
VEM_API void VemBaDeleteByteArray(CVemByteArray* array);  // null is accepted
VEM_API CVemByteArray* VemBaClone(CVemByteArray* array);
// Both directions: a tag word (class in the low byte, ByteSize in the high byte), then the record.
// A load deletes the array held first; an unknown tag leaves the pointer null.
VEM_API void VemBaSerialize(CVemByteArray*& array, CArchive& ar);

// Raw bytes; on a fract layout array a count of 1, 2 or 4 goes as one value in host order.
VEM_API int VemBaAppend(CVemByteArray* array, const void* bytes, unsigned count);
// Appends the other array's bytes; 0 on little- and big-endian arrays, 1 on fract layout ones.
VEM_API int VemBaAppend(CVemByteArray* array, CVemByteArray* other);
VEM_API int VemBaAppendByte(CVemByteArray* array, u8 value);
VEM_API int VemBaAppendWord(CVemByteArray* array, u16 value);
VEM_API int VemBaAppendDword(CVemByteArray* array, u32 value);
VEM_API int VemBaAppendOffset(CVemByteArray* array, u16 value);
VEM_API int VemBaAppendString(CVemByteArray* array, const char* text, int count);
VEM_API int VemBaAppendStringRaw(CVemByteArray* array, const char* text, int count);
// count bytes of the text, cut or padded with zeros, each appended as a raw byte of its own.
VEM_API int VemBaAppendCStyleString(CVemByteArray* array, const char* text, int count);

// Patches neither grow the array nor check the range.
VEM_API int VemBaPatch(CVemByteArray* array, u16 offset, const void* bytes, unsigned count);
VEM_API int VemBaPatchByte(CVemByteArray* array, u16 offset, u8 value);
VEM_API int VemBaPatchWord(CVemByteArray* array, u16 offset, u16 value);
VEM_API int VemBaPatchDword(CVemByteArray* array, u16 offset, u32 value);
VEM_API int VemBaPatchOffset(CVemByteArray* array, u16 offset, u16 value);
VEM_API int VemBaPatchString(CVemByteArray* array, u16 offset, const u8* bytes, unsigned count);
// Patches count bytes from a copy of the text; bytes behind its end are zero.
VEM_API int VemBaPatchString(CVemByteArray* array, u16 offset, const CString& text, int count);

// Reads give 0 and leave the result untouched when the value lies beyond the length.
VEM_API int VemBaGetByte(CVemByteArray* array, u16 offset, u8* result);
VEM_API int VemBaGetWord(CVemByteArray* array, u16 offset, u16* result);
VEM_API int VemBaGetDword(CVemByteArray* array, u16 offset, u32* result);
// The 16-bit read, whatever the ByteSize.
VEM_API int VemBaGetOffset(CVemByteArray* array, u16 offset, u16* result);

// Valid until the next operation that grows or empties the array.
VEM_API const u8* VemBaGetBytePointer(CVemByteArray* array);
VEM_API u32 VemBaGetLength(CVemByteArray* array);  // bytes
VEM_API u32 VemBaGetSize(CVemByteArray* array);    // bytes, or units of a fract layout array
// Pads the array with zeros to a multiple of the alignment (0: the array's own).
VEM_API u16 VemBaGetAlignedLength(CVemByteArray* array, u16 alignment);
VEM_API u16 VemBaGetAlignment(CVemByteArray* array);
VEM_API void VemBaSetAlignment(CVemByteArray* array, u16 alignment);
VEM_API u16 VemBaGetByteSize(CVemByteArray* array);
VEM_API void VemBaSetByteSize(CVemByteArray* array, u8 byteSize);
VEM_API void VemBaSetMaxSize(CVemByteArray* array, u32 maxSize);
VEM_API int VemBaIsMotorolaFormat(CVemByteArray* array);
VEM_API int VemBaIsFractLayout(CVemByteArray* array);
// Empties the array and releases its storage.
VEM_API void VemBaRemoveAllBytes(CVemByteArray* array);
// Takes the last raw byte off the array; 0 on an empty array.
VEM_API int VemBaPopLastByte(CVemByteArray* array, u8* byte);
VEM_API u32 VemBaComputeCheckSum(CVemByteArray* array, u32 seed);
VEM_API void VemBaDump(CVemByteArray* array, CStringArray& lines);

// Adds the bytes held in hexadecimal under key, key0, key1, ... of a section of a text file; the
// number of bytes stands under key + "Bytes". 1 if the array then holds exactly that many bytes.
VEM_API int VemBaReadIniFile(CVemByteArray* array, const char* fileName, const char* section, const char* key);
// Not available: shows a message and gives 0.
VEM_API int VemBaWriteIniFile(CVemByteArray* array, const char* fileName, const char* section, const char* key);
