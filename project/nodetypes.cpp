// VemNewNode and the loads: the class of each node type, made from the rows of
// vem_node_types.def. It stands above the node layer, which does not know the classes of the
// levels above it.
#include "node/basenode.h"
#include "node/nodefile.h"
#include "project/exe.h"
#include "project/project.h"
#include "project/tasks.h"
#include "project/tuitask.h"
#include "units/pou.h"
#include "variables/array.h"
#include "variables/struct.h"
#include "vem_node.h"

CVemBaseNode* VemNewNode(tVemNodeType type) {
    CVemBaseNode* node = nullptr;
    switch (type) {
#define VEM_NODE_TYPE(Value, Enumerator, Class, Args, ...) \
    case Enumerator:                                       \
        node = new Class Args;                             \
        break;
#include "vem_node_types.def"
#undef VEM_NODE_TYPE
        default: return nullptr;
    }
    node->Serial = vem::TakeNextSerial();
    return node;
}

CVemBaseNode* vem::nodetypes::NewForLoad(u32 type) {
    CVemBaseNode* node = type <= 0xFFFF ? VemNewNode(static_cast<tVemNodeType>(type)) : nullptr;
    if (!node) VemThrowArchive(CArchiveException::badClass);
    return node;
}

void vem::nodetypes::CheckStoredType(const CVemBaseNode* node) {
    const CRuntimeClass* made = nullptr;  // the class of VemNewNode for the stored type
    switch (node->NodeType) {
#define VEM_NODE_TYPE(Value, Enumerator, Class, ...) \
    case Enumerator:                                 \
        made = RUNTIME_CLASS(Class);                 \
        break;
#include "vem_node_types.def"
#undef VEM_NODE_TYPE
        default: break;
    }
    if (made != node->GetRuntimeClass()) VemThrowArchive(CArchiveException::badClass);
}
