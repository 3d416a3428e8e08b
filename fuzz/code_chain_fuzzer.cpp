// The record of a code node with its chain of statements. The first byte sets the switch of the
// statement model (bit 0); the rest is the record. A chain that loads is dumped, walked both ways
// and must store, load and store again to the same bytes.
#include "fuzz_common.h"
#include "statement/evemcode.h"

namespace {

std::vector<u8> StoreAgain(CArchive& ar) {
    CEVemPouCodeNode again;
    again.Serialize(ar);
    return vemfuzz::Stored([&](CArchive& out) { again.Serialize(out); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    LurSetEvemEnabled(data[0] & 1);
    CMemFile file(data + 1, size - 1);
    CEVemPouCodeNode node;
    try {
        CArchive ar(&file, CArchive::load);
        node.Serialize(ar);
    } catch (const CException&) {
        return 0;
    }
    CMemFile dump;
    node.DumpNode(&dump, CString());
    CEVemBaseNode* last = nullptr;
    for (CEVemBaseNode* s = node.GetStatementNode(); s; s = s->GetNext()) {
        if (s->GetPrevious() != last) std::abort();  // the chain is linked both ways
        last = s;
    }
    vemfuzz::CheckStable([&](CArchive& ar) { node.Serialize(ar); }, StoreAgain);
    return 0;
}
