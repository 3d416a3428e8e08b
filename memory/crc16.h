// The 16-bit cyclic redundancy check of byte arrays and segment tables: polynomial 0x4321, most
// significant bit first, no reflection, no final inversion.
#pragma once

#include <array>
#include <cstddef>

#include "platform/types.h"

namespace vem::crc {

constexpr u16 kPolynomial = 0x4321;

// tables[0] is the classic one-byte table; tables[k] advances a byte through k further zero
// bytes, so that eight bytes can be folded in with eight independent look-ups.
using Tables = std::array<std::array<u16, 256>, 8>;

constexpr Tables MakeTables() {
    Tables t{};
    for (unsigned i = 0; i < 256; ++i) {
        unsigned r = i << 8;
        for (int bit = 0; bit < 8; ++bit) r = (r & 0x8000) ? ((r << 1) & 0xFFFF) ^ kPolynomial : (r << 1) & 0xFFFF;
        t[0][i] = static_cast<u16>(r);
    }
    for (std::size_t k = 1; k < t.size(); ++k)
        for (unsigned i = 0; i < 256; ++i) {
            unsigned prev = t[k - 1][i];
            t[k][i] = static_cast<u16>(((prev << 8) & 0xFFFF) ^ t[0][prev >> 8]);
        }
    return t;
}

inline constexpr Tables kTables = MakeTables();

// Runs the register over the bytes: per byte, reg = (reg << 8) ^ table[(reg >> 8) ^ byte].
u16 Update(u16 reg, const u8* bytes, std::size_t count);

}  // namespace vem::crc
