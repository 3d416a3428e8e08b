// CLargeByteArray: the plain growing buffer under every byte array.
#include <cstring>
#include <new>
#include <utility>

#include "memory/cbytearr.h"
#include "node/layoutepoch.h"

VEM_IMPLEMENT_SERIAL(CLargeByteArray, CObject, 0)

namespace {

// Zeroed storage of exactly `size` bytes; an allocation failure is the memory exception.
u8* AllocateZeroed(u32 size) {
    u8* p = nullptr;
    try {
        p = new u8[size];
    } catch (const std::bad_alloc&) {
        VemThrowMemory();
    }
    std::memset(p, 0, size);
    return p;
}

}  // namespace

CLargeByteArray::CLargeByteArray() = default;

CLargeByteArray::CLargeByteArray(const CLargeByteArray& other)
    : CObject(other), m_maxSize(other.m_maxSize), m_growBy(other.m_growBy) {
    if (other.m_length == 0) return;
    m_data = AllocateZeroed(other.m_length);
    std::memcpy(m_data, other.m_data, other.m_length);
    m_length = m_allocated = other.m_length;
}

CLargeByteArray& CLargeByteArray::operator=(const CLargeByteArray& other) {
    if (this == &other) return *this;
    CLargeByteArray copy(other);
    std::swap(m_data, copy.m_data);
    std::swap(m_maxSize, copy.m_maxSize);
    std::swap(m_length, copy.m_length);
    std::swap(m_allocated, copy.m_allocated);
    std::swap(m_growBy, copy.m_growBy);
    return *this;
}

CLargeByteArray::~CLargeByteArray() { delete[] m_data; }

// Storage grows by whole steps with one spare step, is capped at maxSize and never shrinks
// except to nothing.
void CLargeByteArray::SetLength(u32 newLength, int growBy) {
    if (newLength > m_maxSize) VemThrowMemory();
    if (newLength != m_length) vem::TouchLayout();  // where a segment ends is an answer of an address index
    // A step of 0 would stall the growth rule; -1 and other non-positive values keep the step.
    if (growBy > 0) m_growBy = static_cast<u32>(growBy);
    if (newLength == 0) {
        delete[] m_data;
        m_data = nullptr;
        m_length = m_allocated = 0;
        return;
    }
    if (!m_data) {
        m_data = AllocateZeroed(newLength);
        m_length = m_allocated = newLength;
        return;
    }
    if (newLength <= m_allocated) {
        if (newLength > m_length) std::memset(m_data + m_length, 0, newLength - m_length);
        m_length = newLength;
        return;
    }
    u64 capacity = (static_cast<u64>(newLength) / m_growBy + 2) * m_growBy;
    if (capacity >= m_maxSize) capacity = m_maxSize;
    if (capacity < m_allocated) capacity = m_maxSize;
    if (newLength > capacity) capacity = newLength;
    u8* grown = AllocateZeroed(static_cast<u32>(capacity));
    std::memcpy(grown, m_data, m_length);
    delete[] m_data;
    m_data = grown;
    m_allocated = static_cast<u32>(capacity);
    m_length = newLength;
}

void CLargeByteArray::SetAtGrow(u32 index, u8 value) {
    if (index >= m_maxSize) VemThrowMemory();  // index + 1 must not wrap to 0
    if (index >= m_length) SetLength(index + 1, -1);
    m_data[index] = value;
}

u32 CLargeByteArray::Add(u8 value) {
    u32 index = m_length;
    SetAtGrow(index, value);
    return index;
}

//  Offset  Width  Field
//  0       2      count: bytes in use; more than 16 bits hold fail the store
//  2       count  the bytes
void CLargeByteArray::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        VemStoreCount16(ar, m_length);
        if (m_length) ar.Write(m_data, static_cast<unsigned>(m_length));
        return;
    }
    // Refuse before anything is allocated: a count above the limit, or more bytes than the file holds.
    const u16 count = ar.ReadCount16(1, m_maxSize);
    SetLength(count, -1);
    if (count) ar.EnsureRead(m_data, count);
}
