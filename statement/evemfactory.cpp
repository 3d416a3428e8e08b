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

CEVemBaseNode* vem::evem::MakeNode(i32 type, const CString& name) {
    switch (type) {
#define EVEM_NODE_TYPE(Value, Name, Class) \
    case Value:                            \
        return Make##Class(Name, name);
#include "vem_evem_types.def"
#undef EVEM_NODE_TYPE
        default: return nullptr;
    }
}

namespace {

// One class for each class column of vem_evem_types.def.
const CRuntimeClass* ClassOfNone() { return nullptr; }
const CRuntimeClass* ClassOfCode() { return RUNTIME_CLASS(CEVemPouCodeNode); }
const CRuntimeClass* ClassOfBase() { return RUNTIME_CLASS(CEVemBaseStmtNode); }
const CRuntimeClass* ClassOfType() { return RUNTIME_CLASS(CEVemOpOnTypeStmtNode); }
const CRuntimeClass* ClassOfConst() { return RUNTIME_CLASS(CEVemOpOnConstStmtNode); }
const CRuntimeClass* ClassOfVar() { return RUNTIME_CLASS(CEVemOpOnVarStmtNode); }
const CRuntimeClass* ClassOfArray() { return RUNTIME_CLASS(CEVemArrayOperatorStmtNode); }
const CRuntimeClass* ClassOfConv() { return RUNTIME_CLASS(CEVemConvStmtNode); }
const CRuntimeClass* ClassOfLabel() { return RUNTIME_CLASS(CEVemJumpLabelStmtNode); }
const CRuntimeClass* ClassOfCal() { return RUNTIME_CLASS(CEVemCalStmtNode); }
const CRuntimeClass* ClassOfRef() { return RUNTIME_CLASS(CEVemReferenceStmtNode); }
const CRuntimeClass* ClassOfMidDel() { return RUNTIME_CLASS(CEVemStdStringMidDelNode); }
const CRuntimeClass* ClassOfInsert() { return RUNTIME_CLASS(CEVemStdStringInsertNode); }
const CRuntimeClass* ClassOfReplace() { return RUNTIME_CLASS(CEVemStdStringReplaceNode); }

const CRuntimeClass* ClassOfKind(i32 type) {
    switch (type) {
#define EVEM_NODE_TYPE(Value, Name, Class) \
    case Value:                            \
        return ClassOf##Class();
#include "vem_evem_types.def"
#undef EVEM_NODE_TYPE
        default: return nullptr;
    }
}

}  // namespace

bool vem::evem::KindFitsClass(i32 type, const CRuntimeClass* cls) { return cls && ClassOfKind(type) == cls; }

CEVemBaseNode* EVemCreateNode(tEVemNodeType type, CString name) {
    if (!vem::evem::IsEnabled()) return nullptr;
    try {
        return vem::evem::MakeNode(type, name);
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const CMemoryException&) {
        return nullptr;
    }
}

// Only statements are appended: kinds 7 and above.
CEVemBaseNode* EVemAddNewStmtNode(CEVemBaseNode* parent, tEVemNodeType type) {
    if (!vem::evem::IsEnabled() || !parent || type < kEVemLdConstStmtNode) return nullptr;
    CEVemBaseNode* node = EVemCreateNode(type, CString());
    if (node) parent->AddNewStmtNode(node);
    return node;
}
