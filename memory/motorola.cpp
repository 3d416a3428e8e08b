// CMotorolaByteArray: the big-endian layout. Values are built in a zeroed unit as in the
// little-endian layout, but stand at its right-hand end, most significant byte first.
#include <memory>

#include "memory/layouts.h"
#include "memory/units.h"

using vem::units::DwordWidth;
using vem::units::Unit;
using vem::units::WordWidth;

VEM_IMPLEMENT_SERIAL(CMotorolaByteArray, CVemByteArray, 5)

namespace {

inline bool Fits(u32 offset, u32 width, u32 length) { return static_cast<u64>(offset) + width <= length; }

}  // namespace

CMotorolaByteArray::CMotorolaByteArray() { m_motorolaFormat = 1; }

CMotorolaByteArray::CMotorolaByteArray(u16 alignment, u8 byteSize) : CVemByteArray(alignment, byteSize) {
    m_motorolaFormat = 1;
}

CVemByteArray* CMotorolaByteArray::Clone() const {
    auto copy = std::make_unique<CMotorolaByteArray>(m_alignment, m_byteSize);
    copy->m_motorolaFormat = m_motorolaFormat;
    copy->CVemByteArray::Append(m_data, m_length);
    return copy.release();
}

int CMotorolaByteArray::AppendByte(u8 value) {
    Unit u{};
    vem::units::PutBigByte(u, value, m_byteSize);
    return Append(u.data(), m_byteSize);
}

int CMotorolaByteArray::AppendWord(u16 value) {
    Unit u{};
    vem::units::PutBigWord(u, value, WordWidth(m_byteSize));
    return Append(u.data(), WordWidth(m_byteSize));
}

int CMotorolaByteArray::AppendDword(u32 value) {
    Unit u{};
    vem::units::PutBigDword(u, value, m_byteSize, DwordWidth(m_byteSize));
    return Append(u.data(), DwordWidth(m_byteSize));
}

int CMotorolaByteArray::PatchByte(u16 offset, u8 value) {
    Unit u{};
    vem::units::PutBigByte(u, value, m_byteSize);
    return Patch(offset, u.data(), m_byteSize);
}

int CMotorolaByteArray::PatchWord(u16 offset, u16 value) {
    Unit u{};
    vem::units::PutBigWord(u, value, WordWidth(m_byteSize));
    return Patch(offset, u.data(), WordWidth(m_byteSize));
}

int CMotorolaByteArray::PatchDword(u16 offset, u32 value) {
    Unit u{};
    vem::units::PutBigDword(u, value, m_byteSize, DwordWidth(m_byteSize));
    return Patch(offset, u.data(), DwordWidth(m_byteSize));
}

int CMotorolaByteArray::GetByte(u16 offset, u8* result) {
    if (m_byteSize == 0 || !Fits(offset, m_byteSize, m_length)) return 0;
    *result = m_data[offset + m_byteSize - 1];
    return 1;
}

int CMotorolaByteArray::GetWord(u16 offset, u16* result) {
    const unsigned w = WordWidth(m_byteSize);
    if (!Fits(offset, w, m_length)) return 0;
    const u8* p = m_data + offset + w - 2;
    *result = static_cast<u16>((p[0] << 8) | p[1]);
    return 1;
}

// At ByteSize 3 the value is read from bytes 1, 2, 4 and 5 of the six, most significant first, so
// a value appended there comes back with its halves swapped.
int CMotorolaByteArray::GetDword(u16 offset, u32* result) {
    const unsigned d = DwordWidth(m_byteSize);
    if (!Fits(offset, d, m_length)) return 0;
    const u8* p = m_data + offset;
    const u8 b[4] = {m_byteSize == 3 ? p[1] : p[d - 4], m_byteSize == 3 ? p[2] : p[d - 3],
                     m_byteSize == 3 ? p[4] : p[d - 2], p[d - 1]};
    *result = static_cast<u32>(b[0]) << 24 | static_cast<u32>(b[1]) << 16 | static_cast<u32>(b[2]) << 8 |
              static_cast<u32>(b[3]);
    return 1;
}
