// Lists of code nodes in the records of compiled tasks and the executable node.
#include "statement/evemlist.h"

#include <memory>

#include "statement/evembase.h"

namespace {

// The shortest record of a code node: base record, schema word, kind, data size, empty path,
// end of chain.
constexpr u64 kShortestCodeNodeRecord = 4 + 2 + 2 + 2 + 1 + 2;

}  // namespace

void vem::evem::DeleteRootList(CObList& list) {
    while (!list.IsEmpty()) delete list.RemoveHead();
}

void vem::evem::SerializeRootList(CArchive& ar, CObList& list) {
    if (ar.IsStoring()) {
        VemStoreCount16(ar, static_cast<u64>(list.GetCount()));
        for (POSITION pos = list.GetHeadPosition(); pos;) list.GetNext(pos)->Serialize(ar);
        return;
    }
    vem::evem::DeleteRootList(list);
    const u16 count = ar.ReadCount16(kShortestCodeNodeRecord);
    for (u16 i = 0; i < count; ++i) {
        std::unique_ptr<CEVemBaseNode> node(EVemCreateNode(kEVemPouCodeNode, CString()));
        if (!node) VemThrowUser();
        node->Serialize(ar);
        list.AddTail(node.get());
        node.release();
    }
}

void vem::evem::DumpNode(CEVemBaseNode* node, CFile* file, const CString& prefix) {
    if (node) node->DumpNode(file, prefix);
}
