// Helpers of the target memory tests: archives over memory, exception causes, the bytes of an array.
#pragma once

#include <functional>
#include <vector>

#include "alloc_hook.h"
#include "test_util.h"

namespace memtest {

// What a store through the archive writes.
inline std::vector<u8> Stored(const std::function<void(CArchive&)>& store) {
    CMemFile file;
    CArchive ar(&file, CArchive::store);
    store(ar);
    ar.Close();
    return file.Data();
}

// Loads from the bytes; `load` may throw.
inline void Load(const std::vector<u8>& bytes, const std::function<void(CArchive&)>& load) {
    CMemFile file(bytes);
    CArchive ar(&file, CArchive::load);
    load(ar);
}

// What the object's Serialize stores, and a load of the bytes into it.
inline std::vector<u8> Stored(CObject& object) {
    return Stored([&](CArchive& ar) { object.Serialize(ar); });
}
inline void Load(CObject& object, const std::vector<u8>& bytes) {
    Load(bytes, [&](CArchive& ar) { object.Serialize(ar); });
}

// Every damaged form, and the good one cut at every byte, fails to load into a new T and leaves
// nothing allocated.
template <class T>
void ExpectDamagedLoadsFail(std::vector<std::vector<u8>> damaged, const std::vector<u8>& good) {
    for (std::size_t cut = 0; cut < good.size(); ++cut)
        damaged.emplace_back(good.begin(), good.begin() + static_cast<long>(cut));
    for (std::size_t i = 0; i < damaged.size(); ++i) {
        vemtest::AllocationWatch watch;
        {
            T loaded;
            EXPECT_THROW(Load(loaded, damaged[i]), CArchiveException) << i;
        }
        EXPECT_EQ(watch.Live(), 0) << i;
    }
}

// The cause of the archive exception the call raises, -1 if it raises none.
template <class F>
int CauseOf(F call) {
    try {
        call();
    } catch (const CArchiveException& e) {
        return e.m_cause;
    }
    return -1;
}

inline std::vector<u8> BytesOf(CVemByteArray* array) {
    const u8* p = VemBaGetBytePointer(array);
    return p ? std::vector<u8>(p, p + VemBaGetLength(array)) : std::vector<u8>();
}

// Owns an array made by VemBaNewByteArray for the length of a test.
struct Array {
    CVemByteArray* p;
    Array(int motorola, u16 alignment, u8 byteSize, int fract = 0)
        : p(VemBaNewByteArray(motorola, alignment, byteSize, fract)) {}
    ~Array() { VemBaDeleteByteArray(p); }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    operator CVemByteArray*() const { return p; }  // NOLINT: passes as the pointer
    std::vector<u8> bytes() const { return BytesOf(p); }
};

using ByteVec = std::vector<u8>;

}  // namespace memtest
