// Widths of values in target memory and their placement inside a unit, for the three layouts.
// Internal to the byte arrays.
#pragma once

#include <array>
#include <cstdint>

#include "platform/types.h"

namespace vem::units {

// A unit is never wider than the widest ByteSize a u8 can hold.
using Unit = std::array<u8, 256>;

// ByteSize B: a byte takes B bytes, a word max(B, 2), a double word 4 up to B = 2, 6 at B = 3, else B.
inline unsigned ByteWidth(unsigned byteSize) { return byteSize; }
inline unsigned WordWidth(unsigned byteSize) { return byteSize > 2 ? byteSize : 2; }
inline unsigned DwordWidth(unsigned byteSize) {
    if (byteSize <= 2) return 4;
    return byteSize == 3 ? 6 : byteSize;
}

inline u8 ByteOf(u32 value, unsigned i) { return static_cast<u8>(value >> (8 * i)); }

// Little-endian: the value at the start of its unit. At ByteSize 3 a double word is two
// three-byte halves, the high half first: b2 b3 0 b0 b1 0.
inline void PutLittleWord(Unit& u, u16 value) {
    u[0] = ByteOf(value, 0);
    u[1] = ByteOf(value, 1);
}
inline void PutLittleDword(Unit& u, u32 value, unsigned byteSize) {
    if (byteSize == 3) {
        u[0] = ByteOf(value, 2);
        u[1] = ByteOf(value, 3);
        u[3] = ByteOf(value, 0);
        u[4] = ByteOf(value, 1);
        return;
    }
    for (unsigned i = 0; i < 4; ++i) u[i] = ByteOf(value, i);
}

// Big-endian: the value at the right-hand end of a unit of `width` bytes, most significant first.
// At ByteSize 3 a double word is 0 b1 b0 0 b3 b2, the reverse of the little-endian form.
inline void PutBigByte(Unit& u, u8 value, unsigned width) {
    if (width >= 1) u[width - 1] = value;
}
inline void PutBigWord(Unit& u, u16 value, unsigned width) {
    u[width - 2] = ByteOf(value, 1);
    u[width - 1] = ByteOf(value, 0);
}
inline void PutBigDword(Unit& u, u32 value, unsigned byteSize, unsigned width) {
    if (byteSize == 3) {
        u[1] = ByteOf(value, 1);
        u[2] = ByteOf(value, 0);
        u[4] = ByteOf(value, 3);
        u[5] = ByteOf(value, 2);
        return;
    }
    for (unsigned i = 0; i < 4; ++i) u[width - 1 - i] = ByteOf(value, i);
}

// Fractional layout: units of six bytes, two halves of three. A double word puts its low three
// bytes in the second half and its high byte at the start of the first: b3 0 0 b0 b1 b2.
constexpr unsigned kFractUnit = 6;
constexpr unsigned kFractHalf = kFractUnit / 2;

inline unsigned FractDwordPos(unsigned i) { return i < kFractHalf ? i + kFractHalf : i - kFractHalf; }
inline void PutFractDword(Unit& u, u32 value) {
    for (unsigned i = 0; i < 4; ++i) u[FractDwordPos(i)] = ByteOf(value, i);
}
inline u32 GetFractDword(const u8* unit) {
    u32 v = 0;
    for (unsigned i = 0; i < 4; ++i) v |= static_cast<u32>(unit[FractDwordPos(i)]) << (8 * i);
    return v;
}
// Text in the fractional layout: each half holds three characters in reverse order.
inline unsigned FractCharPos(unsigned i) { return 3 * (i / 3) + 2 - (i % 3); }

}  // namespace vem::units

namespace vem::units {

// Whether a source range starts inside an array's storage, which a growth of that array would move.
inline bool PointsInto(const void* p, const u8* data, u32 allocated) {
    auto at = reinterpret_cast<std::uintptr_t>(p), begin = reinterpret_cast<std::uintptr_t>(data);
    return data && at >= begin && at < begin + allocated;
}

}  // namespace vem::units
