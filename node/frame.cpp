// The library frame: versions, module handles, the delay and the two checksum functions.
#include <array>
#include <vector>

#include "node/basenode.h"
#include "node/resources.h"
#include "vem_node.h"
#include "vem_plain.h"

namespace {

// The object that InitVem32 gives a host with a module state of its own: opaque to the caller.
struct ModuleRecord {
    const char* name;
};
ModuleRecord g_module{"vem32"};

// Entry n: n << 8, then eight steps of: bit 15 set -> (r ^ 5) << 1, else r << 1, kept to 16 bits.
constexpr std::array<u16, 256> MakeTable() {
    std::array<u16, 256> table{};
    for (unsigned n = 0; n < 256; ++n) {
        unsigned r = (n << 8) & 0xFFFF;
        for (int i = 0; i < 8; ++i) r = (r & 0x8000) ? ((r ^ 5) << 1) & 0xFFFF : (r << 1) & 0xFFFF;
        table[n] = static_cast<u16>(r);
    }
    return table;
}
constexpr std::array<u16, 256> kTable = MakeTable();

u16 Sum(u16 sum, const u8* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        sum = static_cast<u16>(((sum << 8) & 0xFFFF) ^ kTable[((sum >> 8) ^ bytes[i]) & 0xFF]);
    }
    return sum;
}

}  // namespace

int GetVemDllVersion() { return 9; }

void VemXDelay(u32) {}

void InitVem() {}

void* InitVem32() { return &g_module; }

// The module through which the library's bitmaps and icons are found.
void* GetResourceHandleVemDll() { return &vem::LibraryModule(); }

u16 VemComputeChecksumForBuffer(const u8* buffer, u32 length, u16 seed) {
    if (!buffer || length == 0) return seed;
    return Sum(seed, buffer, length);
}

// The first byte of the file does not enter the sum.
int VemComputeChecksum(const CString& fileName, u16 seed) {
    CFile file;
    if (!file.Open(fileName, CFile::modeRead | CFile::shareDenyNone | CFile::typeBinary)) return -1;
    try {
        u8 first;
        if (file.Read(&first, 1) == 0) return 0;
        u16 sum = seed;
        std::vector<u8> block(65536);
        for (unsigned got; (got = file.Read(block.data(), static_cast<unsigned>(block.size()))) > 0;) {
            sum = Sum(sum, block.data(), got);
        }
        return sum;
    } catch (const CFileException&) {
        return -1;
    }
}
