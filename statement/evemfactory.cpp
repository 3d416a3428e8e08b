// Making nodes of the statement model by kind.
#include <new>

#include "statement/evemcode.h"
#include "statement/evemlabel.h"
#include "statement/evemoperand.h"
#include "statement/evemstring.h"

namespace {

// One maker for each class column of vem_evem_types.def.
CEVemBaseNode* MakeNone(tEVemNodeType, const CString&) { return nullptr; }
CEVemBaseNode* MakeCode(tEVemNodeType, const CString& name) { return new CEVemPouCodeNode(name, kEVemPouUndef); }
CEVemBaseNode* MakeBase(tEVemNodeType type, const CString&) { return new CEVemBaseStmtNode(type); }
CEVemBaseNode* MakeType(tEVemNodeType type, const CString&) { return new CEVemOpOnTypeStmtNode(type); }
CEVemBaseNode* MakeConst(tEVemNodeType type, const CString&) { return new CEVemOpOnConstStmtNode(type); }
CEVemBaseNode* MakeVar(tEVemNodeType type, const CString&) { return new CEVemOpOnVarStmtNode(type); }
CEVemBaseNode* MakeArray(tEVemNodeType type, const CString&) { return new CEVemArrayOperatorStmtNode(type); }
CEVemBaseNode* MakeConv(tEVemNodeType type, const CString&) { return new CEVemConvStmtNode(type); }
CEVemBaseNode* MakeLabel(tEVemNodeType type, const CString& name) { return new CEVemJumpLabelStmtNode(type, name); }
CEVemBaseNode* MakeCal(tEVemNodeType type, const CString& name) { return new CEVemCalStmtNode(type, name); }
CEVemBaseNode* MakeRef(tEVemNodeType type, const CString&) { return new CEVemReferenceStmtNode(type); }
CEVemBaseNode* MakeMidDel(tEVemNodeType type, const CString&) { return new CEVemStdStringMidDelNode(type); }
CEVemBaseNode* MakeInsert(tEVemNodeType type, const CString&) { return new CEVemStdStringInsertNode(type); }
CEVemBaseNode* MakeReplace(tEVemNodeType type, const CString&) { return new CEVemStdStringReplaceNode(type); }

}  // namespace

CEVemBaseNode* EVemMakeNode(i32 type, const CString& name) {
    switch (type) {
#define EVEM_NODE_TYPE(Value, Name, Class) \
    case Value: return Make##Class(Name, name);
#include "vem_evem_types.def"
#undef EVEM_NODE_TYPE
        default: return nullptr;
    }
}

CEVemBaseNode* EVemCreateNode(tEVemNodeType type, CString name) {
    if (!EVemIsEnabled()) return nullptr;
    try {
        return EVemMakeNode(type, name);
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const CMemoryException&) {
        return nullptr;
    }
}

// Only statements are appended: kinds 7 and above.
CEVemBaseNode* EVemAddNewStmtNode(CEVemBaseNode* parent, tEVemNodeType type) {
    if (!EVemIsEnabled() || !parent || type < kEVemLdConstStmtNode) return nullptr;
    CEVemBaseNode* node = EVemCreateNode(type, CString());
    if (node) parent->AddNewStmtNode(node);
    return node;
}
