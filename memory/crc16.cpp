#include "memory/crc16.h"

namespace vem::crc {

namespace {

inline u16 Step(u16 reg, u8 byte) { return static_cast<u16>((reg << 8) ^ kTables[0][((reg >> 8) ^ byte) & 0xFF]); }

}  // namespace

u16 Update(u16 reg, const u8* bytes, std::size_t count) {
    const auto& t = kTables;
    // Eight bytes at a time: the register only reaches the first two of them.
    while (count >= 8) {
        unsigned r = reg;
        reg = static_cast<u16>(t[7][(r >> 8) ^ bytes[0]] ^ t[6][(r & 0xFF) ^ bytes[1]] ^ t[5][bytes[2]] ^
                               t[4][bytes[3]] ^ t[3][bytes[4]] ^ t[2][bytes[5]] ^ t[1][bytes[6]] ^ t[0][bytes[7]]);
        bytes += 8;
        count -= 8;
    }
    while (count-- > 0) reg = Step(reg, *bytes++);
    return reg;
}

}  // namespace vem::crc
