// A task file through VemReadObject, read with the statement model switched on and off (a file read
// with another setting than it was written with). What loads is dumped and must store, load and
// store again to the same bytes.
#include "fuzz_common.h"

namespace {

void ReadWith(const std::uint8_t* data, std::size_t size) {
    CMemFile file(data, size);
    CVemBaseNode* node = nullptr;
    try {
        CArchive ar(&file, CArchive::load);
        node = VemReadObject(ar);
    } catch (const CException&) {
        return;  // the user exception of a statement kind without a class reaches the caller
    }
    if (!node) return;
    CMemFile dump;
    CVemNodeDump(node, &dump);
    vemfuzz::CheckStable([&](CArchive& ar) { VemWriteObject(node, ar); },
                         [](CArchive& ar) {
                             CVemBaseNode* again = VemReadObject(ar);
                             if (!again) std::abort();
                             std::vector<u8> bytes =
                                 vemfuzz::Stored([&](CArchive& out) { VemWriteObject(again, out); });
                             VemDeleteNode(again);
                             return bytes;
                         });
    VemDeleteNode(node);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vemfuzz::TheScratch();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const int on : {1, 0}) {
        LurSetEvemEnabled(on);
        ReadWith(data, size);
    }
    return 0;
}
