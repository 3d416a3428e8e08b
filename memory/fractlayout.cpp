// CFractLayoutByteArray: the fractional layout, in units of six bytes. Offsets of the value
// operations count units; appends are always whole units at the end, with no alignment.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "memory/bytearr_dump.h"
#include "memory/layouts.h"
#include "memory/segkind.h"
#include "memory/units.h"
#include "platform/msgbox.h"

using vem::units::kFractUnit;
using vem::units::Unit;

VEM_IMPLEMENT_SERIAL(CFractLayoutByteArray, CVemByteArray, 5)

namespace {

void AnnounceLayout(u8 layout) {
    if (layout == CFractLayoutByteArray::kLayout) return;
    CString text;
    text.Format("A FractLayout of %i is NOT ALLOWED!!!", static_cast<int>(layout));
    AfxMessageBox(text);
}

}  // namespace

CFractLayoutByteArray::CFractLayoutByteArray() : CVemByteArray(1, 1) { AnnounceLayout(m_fractLayout); }

CFractLayoutByteArray::CFractLayoutByteArray(u16 alignment, u8 fractLayout)
    : CVemByteArray(alignment, 1), m_fractLayout(fractLayout) {
    AnnounceLayout(m_fractLayout);
}

CFractLayoutByteArray::CFractLayoutByteArray(const CFractLayoutByteArray& other)
    : CVemByteArray(other), m_fractLayout(other.m_fractLayout) {
    AnnounceLayout(m_fractLayout);
}

CVemByteArray* CFractLayoutByteArray::Clone() const {
    auto copy = std::make_unique<CFractLayoutByteArray>(m_alignment, m_fractLayout);
    copy->m_motorolaFormat = m_motorolaFormat;
    copy->m_byteSize = m_byteSize;
    copy->CVemByteArray::Append(m_data, m_length);
    return copy.release();
}

// The kind is the raw byte 2; all bytes go on one line, with a wider gap behind each half unit.
void CFractLayoutByteArray::Dump(CStringArray& lines) {
    const u8 kind = m_length > 2 ? m_data[2] : 0xFF;
    lines.Add(vem::SegmentKindName(kind));
    CString line = vem::dump::HexLineStart(0);
    for (u32 i = 0; i < m_length; ++i) vem::dump::AppendHexByte(line, m_data[i], i % kFractUnit == 2);
    lines.Add(line);
    vem::dump::DumpTables(*this, kind, lines);
}

int CFractLayoutByteArray::Append(const CVemByteArray* other) {
    if (other) Append(other->GetBytePointer(), other->GetLength());
    return 1;
}

// Raw bytes at the end: no alignment, no padding, no values of their own.
int CFractLayoutByteArray::Append(const void* bytes, unsigned count) {
    const u32 at = static_cast<u16>(m_length);
    const u64 newLength = static_cast<u64>(at) + count;
    if (newLength > m_maxSize) VemThrowMemory();
    std::vector<u8> own;
    if (vem::units::PointsInto(bytes, m_data, m_allocated)) {
        own.assign(static_cast<const u8*>(bytes), static_cast<const u8*>(bytes) + count);
        bytes = own.data();
    }
    SetLength(static_cast<u32>(newLength), -1);
    if (count) std::memcpy(m_data + at, bytes, count);
    return 1;
}

int CFractLayoutByteArray::AppendByte(u8 value) {
    Unit u{};
    u[0] = value;
    return Append(u.data(), kFractUnit);
}

int CFractLayoutByteArray::AppendWord(u16 value) {
    Unit u{};
    vem::units::PutLittleWord(u, value);
    return Append(u.data(), kFractUnit);
}

int CFractLayoutByteArray::AppendDword(u32 value) {
    Unit u{};
    vem::units::PutFractDword(u, value);
    return Append(u.data(), kFractUnit);
}

// Text packed three characters to a half, each half in reverse order, in whole units. Count 0 means
// the text with its terminator.
int CFractLayoutByteArray::AppendStringRaw(const char* text, int count) {
    const std::size_t length = text ? std::strlen(text) : 0;
    const long long c = count == 0 ? static_cast<long long>(length) + 1 : count;
    const std::size_t units = c > 0 ? static_cast<std::size_t>((c + kFractUnit - 1) / kFractUnit) : 1;
    if (units * kFractUnit > m_maxSize) VemThrowMemory();  // before a buffer is made for it
    std::vector<u8> buffer(units * kFractUnit, 0);
    for (std::size_t i = 0; i < length && i < buffer.size(); ++i)
        buffer[vem::units::FractCharPos(static_cast<unsigned>(i))] = static_cast<u8>(text[i]);
    return Append(buffer.data(), static_cast<unsigned>(buffer.size()));
}

// A unit count first (the text's units plus its own), then the text without its first two
// characters, cut to count - 2.
int CFractLayoutByteArray::AppendString(const char* text, int count) {
    const std::size_t length = text ? std::strlen(text) : 0;
    const int c = count == 0 ? static_cast<int>(length) + 1 : count;
    const int k = c - 2;
    AppendWord(static_cast<u16>(k / 6 + (k % 6 != 0 ? 1 : 0) + 1));
    std::string rest;
    if (length > 2) rest.assign(text + 2, std::min<std::size_t>(length - 2, k > 0 ? static_cast<std::size_t>(k) : 0));
    return AppendStringRaw(rest.c_str(), k);
}

// Unit u starts at byte 6u, cut to 16 bits.
int CFractLayoutByteArray::Patch(u16 unit, const void* bytes, unsigned count) {
    return CVemByteArray::Patch(static_cast<u16>(unit * kFractUnit), bytes, count);
}

int CFractLayoutByteArray::PatchOffset(u16 unit, u16 value) { return PatchWord(unit, value); }

int CFractLayoutByteArray::PatchByte(u16 unit, u8 value) { return Patch(unit, &value, 1); }

int CFractLayoutByteArray::PatchWord(u16 unit, u16 value) {
    const u8 bytes[2] = {static_cast<u8>(value), static_cast<u8>(value >> 8)};
    return Patch(unit, bytes, 2);
}

int CFractLayoutByteArray::PatchDword(u16 unit, u32 value) {
    Unit u{};
    vem::units::PutFractDword(u, value);
    return Patch(unit, u.data(), kFractUnit);
}

const u8* CFractLayoutByteArray::UnitAt(u16 unit) const {
    const u64 start = static_cast<u64>(unit) * kFractUnit;
    if (start + kFractUnit > m_length) return nullptr;
    return m_data + start;
}

int CFractLayoutByteArray::GetByte(u16 unit, u8* result) {
    const u8* p = UnitAt(unit);
    if (!p) return 0;
    *result = p[0];
    return 1;
}

int CFractLayoutByteArray::GetWord(u16 unit, u16* result) {
    const u8* p = UnitAt(unit);
    if (!p) return 0;
    *result = static_cast<u16>(p[0] | (p[1] << 8));
    return 1;
}

int CFractLayoutByteArray::GetDword(u16 unit, u32* result) {
    const u8* p = UnitAt(unit);
    if (!p) return 0;
    *result = vem::units::GetFractDword(p);
    return 1;
}

// Sizes count whole units; aligning changes nothing here.
u16 CFractLayoutByteArray::GetAlignedLength(u16 /*alignment*/) { return static_cast<u16>(GetSize()); }

u32 CFractLayoutByteArray::GetSize() { return m_length / kFractUnit; }

int CFractLayoutByteArray::IsFractLayout() { return 1; }
