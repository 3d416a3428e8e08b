// VemNewNode: the class of each node type, and what its constructor is given.
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
        case kVemBaseNode: node = new CVemBaseNode(kVemBaseNode, CString(), 1); break;
        case kVemVariableNode: node = new CVemVariableNode(CString(), 0, kCbeTypeUndef, 0, 0); break;
        case kVemProgramNode: node = new CVemProgramNode(CString(), CString(), CString()); break;
        case kVemFbNode: node = new CVemFbNode(CString(), CString(), CString()); break;
        case kVemFunctionNode: node = new CVemFunctionNode(CString(), CString(), CString()); break;
        case kVemArrayNode: node = new CVemArrayNode(CString(), 0, 0, 0, 0); break;
        case kVemStructNode: node = new CVemStructNode(CString(), 0, 0, 10); break;
        case kVemFbInstanceNode: node = new CVemFbInstanceNode(CString(), 0, CString()); break;
        case kVemTaskNode: node = new CVemTaskNode(CString()); break;
        case kVemExeNode: node = new CVemExeNode(CString()); break;
        case kVemResourceNode: node = new CVemResourceNode(CString()); break;
        case kVemConfigNode: node = new CVemConfigNode(CString()); break;
        case kVemProjectNode: node = new CVemProjectNode(CString()); break;
        case kVemTuiTaskNode: node = new CVemTuiTaskNode(CString(), CString()); break;
        case kVemTaskContainerNode: node = new CVemTaskContainerNode(); break;
        default: return nullptr;
    }
    node->Serial = VemTakeNextSerial();
    return node;
}

CVemBaseNode* VemNewNodeForLoad(u32 type) {
    CVemBaseNode* node = type <= 0xFFFF ? VemNewNode(static_cast<tVemNodeType>(type)) : nullptr;
    if (!node) VemThrowArchive(CArchiveException::badClass);
    return node;
}

namespace {

// The classes of VemNewNode, by type; null where a type has none.
const CRuntimeClass* ClassOfNodeType(u32 type) {
    switch (type) {
        case kVemBaseNode: return RUNTIME_CLASS(CVemBaseNode);
        case kVemVariableNode: return RUNTIME_CLASS(CVemVariableNode);
        case kVemProgramNode: return RUNTIME_CLASS(CVemProgramNode);
        case kVemFbNode: return RUNTIME_CLASS(CVemFbNode);
        case kVemFunctionNode: return RUNTIME_CLASS(CVemFunctionNode);
        case kVemArrayNode: return RUNTIME_CLASS(CVemArrayNode);
        case kVemStructNode: return RUNTIME_CLASS(CVemStructNode);
        case kVemFbInstanceNode: return RUNTIME_CLASS(CVemFbInstanceNode);
        case kVemTaskNode: return RUNTIME_CLASS(CVemTaskNode);
        case kVemExeNode: return RUNTIME_CLASS(CVemExeNode);
        case kVemResourceNode: return RUNTIME_CLASS(CVemResourceNode);
        case kVemConfigNode: return RUNTIME_CLASS(CVemConfigNode);
        case kVemProjectNode: return RUNTIME_CLASS(CVemProjectNode);
        case kVemTuiTaskNode: return RUNTIME_CLASS(CVemTuiTaskNode);
        case kVemTaskContainerNode: return RUNTIME_CLASS(CVemTaskContainerNode);
        default: return nullptr;
    }
}

}  // namespace

void VemCheckStoredType(const CVemBaseNode* node) {
    if (ClassOfNodeType(node->NodeType) != node->GetRuntimeClass()) VemThrowArchive(CArchiveException::badClass);
}
