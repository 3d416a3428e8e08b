// A task file through VemReadObject; what loads is dumped and must store, load and store again to
// the same bytes.
#include "fuzz_common.h"
#include "seed_shape.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vemfuzz::TheScratch();
    LurSetEvemEnabled(1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CMemFile file(data, size);
    CVemBaseNode* node = nullptr;
    try {
        CArchive ar(&file, CArchive::load);
        node = VemReadObject(ar);
    } catch (const CException&) {
        return 0;  // the user exception of a statement kind without a class reaches the caller
    }
    if (!node) return 0;
    CMemFile dump;
    CVemNodeDump(node, &dump);
    vemfuzz::CheckStable([&](CArchive& ar) { VemWriteObject(node, ar); },
                         [](CArchive& ar) {
                             CVemBaseNode* again = VemReadObject(ar);
                             if (!again) std::abort();
                             std::vector<u8> bytes = vemfuzz::Stored([&](CArchive& out) { VemWriteObject(again, out); });
                             VemDeleteNode(again);
                             return bytes;
                         });
    VemDeleteNode(node);
    return 0;
}
