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
