// CVemByteArray: the reads of the little-endian layout, sizes, the checksum and the byte swaps.
#include "memory/cbytearr.h"
#include "memory/crc16.h"
#include "memory/units.h"

using vem::units::DwordWidth;
using vem::units::WordWidth;

namespace {

// Whether `width` bytes from `offset` lie wholly within `length`.
inline bool Fits(u32 offset, u32 width, u32 length) { return static_cast<u64>(offset) + width <= length; }

}  // namespace

int CVemByteArray::GetByte(u16 offset, u8* result) {
    if (!Fits(offset, 1, m_length)) return 0;
    *result = m_data[offset];
    return 1;
}

// Words sit on even offsets once the array is aligned at all.
int CVemByteArray::GetWord(u16 offset, u16* result) {
    if (!Fits(offset, WordWidth(m_byteSize), m_length)) return 0;
    if (m_alignment > 1 && (offset & 1)) VemThrowMemory();
    const u8* p = m_data + offset;
    *result = static_cast<u16>(p[0] | (p[1] << 8));
    return 1;
}

// Double words sit on multiples of the alignment, counted up to 4. At ByteSize 3 the low half is
// read from the first three-byte unit, so a value appended there comes back with its halves swapped.
int CVemByteArray::GetDword(u16 offset, u32* result) {
    if (!Fits(offset, DwordWidth(m_byteSize), m_length)) return 0;
    const unsigned a = m_alignment > 4 ? 4 : m_alignment;
    if (a > 1 && offset % a != 0) VemThrowMemory();
    const u8* p = m_data + offset;
    const u8 b[4] = {p[0], p[1], m_byteSize == 3 ? p[3] : p[2], m_byteSize == 3 ? p[4] : p[3]};
    *result = static_cast<u32>(b[0]) | static_cast<u32>(b[1]) << 8 | static_cast<u32>(b[2]) << 16 |
              static_cast<u32>(b[3]) << 24;
    return 1;
}

// An offset is as wide as a word; from ByteSize 4 on that is also the width of a double word.
int CVemByteArray::GetOffset(u16 offset, u32* result) {
    if (m_byteSize >= 4) return GetDword(offset, result);
    u16 word = 0;
    if (!GetWord(offset, &word)) return 0;
    *result = word;
    return 1;
}

// The register runs over the raw bytes from the low half of the seed; the length goes to the high
// half, so that a chain of arrays can carry the register on through the seed.
u32 CVemByteArray::ComputeCheckSum(u32 seed) {
    u16 reg = vem::crc::Update(static_cast<u16>(seed), m_data, m_length);
    return (m_length << 16) + reg;
}

// Pads with zero bytes up to the next multiple of the alignment given (0: the array's own).
u16 CVemByteArray::GetAlignedLength(u16 alignment) {
    const u32 a = alignment ? alignment : m_alignment;
    const u32 length = static_cast<u16>(m_length);
    if (a == 0 || length % a == 0) return static_cast<u16>(length);
    SetLength(m_length + (a - length % a), -1);
    return static_cast<u16>(m_length);
}

u32 CVemByteArray::GetSize() { return m_length; }

int CVemByteArray::IsFractLayout() { return 0; }

u16 CVemByteArray::SwapWord(u16 value) { return static_cast<u16>((value >> 8) | (value << 8)); }

u32 CVemByteArray::SwapDword(u32 value) {
    return (value >> 24) | ((value >> 8) & 0xFF00) | ((value << 8) & 0xFF0000) | (value << 24);
}
