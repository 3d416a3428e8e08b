// CVemByteArray: construction, the stored form, and the appends and patches of the little-endian
// layout. The reads are in bytearr_read.cpp, the text dumps in bytearr_dump.cpp.
#include "memory/cbytearr.h"

#include <cstring>
#include <memory>
#include <vector>

#include "memory/units.h"
#include "node/layoutepoch.h"

using vem::units::DwordWidth;
using vem::units::Unit;
using vem::units::WordWidth;

VEM_IMPLEMENT_SERIAL(CVemByteArray, CLargeByteArray, 5)

namespace {
constexpr u16 kObjectVersion = 1;
constexpr u32 kVemGrowBy = 1024;
}  // namespace

CVemByteArray::CVemByteArray() { m_growBy = kVemGrowBy; }

CVemByteArray::CVemByteArray(u16 alignment, u8 byteSize) : m_alignment(alignment), m_byteSize(byteSize) {
    m_growBy = kVemGrowBy;
}

CVemByteArray::CVemByteArray(const CVemByteArray& other) = default;
CVemByteArray& CVemByteArray::operator=(const CVemByteArray& other) = default;
CVemByteArray::~CVemByteArray() = default;

//  Offset     Width  Field
//  0          2      object version (1)
//  2          2      count, cut to 16 bits
//  4          count  the bytes, raw
//  4+count    1      motorola flag (low byte)
//  5+count    1      ByteSize (present from version 1)
void CVemByteArray::Serialize(CArchive& ar) {
    u16 version = VemSerializeSchema(ar, kObjectVersion);
    CLargeByteArray::Serialize(ar);
    if (ar.IsStoring()) {
        ar << static_cast<u8>(m_motorolaFormat);
        ar << m_byteSize;
        return;
    }
    u8 motorola = 0;
    ar >> motorola;
    m_motorolaFormat = motorola;
    if (version > 0) ar >> m_byteSize;
}

CVemByteArray* CVemByteArray::Clone() const {
    auto copy = std::make_unique<CVemByteArray>(m_alignment, m_byteSize);
    copy->m_motorolaFormat = m_motorolaFormat;
    copy->CVemByteArray::Append(m_data, m_length);
    return copy.release();
}

int CVemByteArray::Append(const CVemByteArray* other) {
    if (other) Append(other->GetBytePointer(), other->GetLength());
    return 0;
}

// Raw append: the value is aligned by a grain G that follows from the count, and padded up to a
// multiple of the alignment A (from A, not from G). Single bytes, words and double words that the
// ByteSize widens go on as values of their own.
int CVemByteArray::Append(const void* bytes, unsigned count) {
    const unsigned a = m_alignment, b = m_byteSize;
    if (count == 1 && b > 1) return AppendByte(*static_cast<const u8*>(bytes));
    unsigned grain = a;
    if (count >= a) {
        u16 w;
        u32 d;
        if (count == 2 && b > 2) return AppendWord((std::memcpy(&w, bytes, 2), w));
        if (count == 4 && (b == 3 || b > 4)) return AppendDword((std::memcpy(&d, bytes, 4), d));
    } else if (count == 0) {
        return 1;
    } else {
        grain = count == 1 ? 1 : count <= 3 ? 2 : count <= 7 ? 4 : 8;
    }
    const u32 length = m_length;
    const u32 rest = grain ? length % grain : 0;
    const u32 padding = rest ? a - rest : 0;
    if (static_cast<u64>(length) + padding + count > m_maxSize) VemThrowMemory();
    // The source may lie inside this array, which the growth can move.
    std::vector<u8> own;
    if (vem::units::PointsInto(bytes, m_data, m_allocated)) {
        own.assign(static_cast<const u8*>(bytes), static_cast<const u8*>(bytes) + count);
        bytes = own.data();
    }
    SetLength(length + padding + count, -1);
    std::memset(m_data + length, 0, padding);
    if (count) std::memcpy(m_data + length + padding, bytes, count);
    return 1;
}

int CVemByteArray::AppendOffset(u16 value) { return AppendWord(value); }

int CVemByteArray::AppendByte(u8 value) {
    // One byte on a target of bytes needs no padding; while it fits in the storage it is simply
    // put behind the others (the general path below gives the same bytes).
    if (m_byteSize == 1 && m_length < m_allocated && m_length < m_maxSize) {
        m_data[m_length++] = value;
        vem::TouchLayout();
        return 1;
    }
    Unit u{};
    u[0] = value;
    return Append(u.data(), m_byteSize);
}

int CVemByteArray::AppendWord(u16 value) {
    Unit u{};
    vem::units::PutLittleWord(u, value);
    return Append(u.data(), WordWidth(m_byteSize));
}

int CVemByteArray::AppendDword(u32 value) {
    Unit u{};
    vem::units::PutLittleDword(u, value, m_byteSize);
    return Append(u.data(), DwordWidth(m_byteSize));
}

// A string of a fixed length: count 0 means the string with its terminator; a longer string is
// cut, so that one of exactly the count has no terminator.
int CVemByteArray::AppendString(const char* text, int count) {
    const std::size_t length = text ? std::strlen(text) : 0;
    const std::size_t size = count == 0 ? length + 1 : count > 0 ? static_cast<std::size_t>(count) : 0;
    if (size > m_maxSize) VemThrowMemory();  // before a buffer is made for it
    std::vector<u8> buffer(size, 0);
    if (length) std::memcpy(buffer.data(), text, length < size ? length : size);
    return Append(buffer.data(), static_cast<unsigned>(size));
}

int CVemByteArray::AppendStringRaw(const char* text, int count) { return AppendString(text, count); }

// Patches neither grow nor align. A range beyond the length is the caller's fault; what would fall
// outside is dropped rather than written past the storage.
int CVemByteArray::Patch(u16 offset, const void* bytes, unsigned count) {
    if (offset >= m_length) return 1;
    const u32 room = m_length - offset;
    std::memmove(m_data + offset, bytes, count < room ? count : room);
    return 1;
}

int CVemByteArray::PatchOffset(u16 offset, u16 value) { return PatchWord(offset, value); }

int CVemByteArray::PatchByte(u16 offset, u8 value) {
    Unit u{};
    u[0] = value;
    return Patch(offset, u.data(), m_byteSize);
}

int CVemByteArray::PatchWord(u16 offset, u16 value) {
    Unit u{};
    vem::units::PutLittleWord(u, value);
    return Patch(offset, u.data(), WordWidth(m_byteSize));
}

int CVemByteArray::PatchDword(u16 offset, u32 value) {
    Unit u{};
    vem::units::PutLittleDword(u, value, m_byteSize);
    return Patch(offset, u.data(), DwordWidth(m_byteSize));
}

int CVemByteArray::PatchString(u16 offset, const void* bytes, unsigned count) { return Patch(offset, bytes, count); }
