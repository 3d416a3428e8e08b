// The flat functions of the statement model: ask the switch, test the node, forward.
#include "statement/evembase.h"
#include "statement/evemstmt.h"

#define EVEM_FLAT_DEF_RES(Ret, Name, Params, Args, Off, Null) \
    Ret EVem##Name EVEM_NODE_PARAMS Params {                  \
        if (!vem::evem::IsEnabled()) return Off;              \
        if (!node) return Null;                               \
        return node->Name Args;                               \
    }
#define EVEM_FLAT_DEF_ONE(Ret, Name, Params, Args, Off, Null) \
    int EVem##Name EVEM_NODE_PARAMS Params {                  \
        if (!vem::evem::IsEnabled()) return Off;              \
        if (!node) return Null;                               \
        node->Name Args;                                      \
        return 1;                                             \
    }
#define EVEM_FLAT_DEF_TEXT(Ret, Name, Params, Args, Off, Null) \
    int EVem##Name(CEVemBaseNode* node, const char* text) {    \
        if (!vem::evem::IsEnabled()) return Off;               \
        if (!node) return Null;                                \
        node->Name(CString(text));                             \
        return 1;                                              \
    }
#define EVEM_FLAT_DEF_NONE(Ret, Name, Params, Args, Off, Null)
#define EVEM_OP(Ret, Name, Params, Args, Default, Flat, Off, Null) \
    EVEM_FLAT_DEF_##Flat(Ret, Name, Params, Args, Off, Null)
#include "vem_evem_ops.def"
#undef EVEM_OP

tEVemNodeType EVemGetNodeType(CEVemBaseNode* node) {
    if (!vem::evem::IsEnabled() || !node) return kEVemUndefNode;
    return static_cast<tEVemNodeType>(node->NodeType);
}

void EVemDeleteNode(CEVemBaseNode* node) {
    if (!vem::evem::IsEnabled() || !node) return;
    delete node;
}

void EVemNodeDump(CEVemBaseNode* node, const char* fileName) {
    if (!vem::evem::IsEnabled() || !node) return;
    node->NodeDump(CString(fileName));
}

void EVemSetUcodeOffset(CEVemBaseNode* statement, u16 offset) {
    if (!vem::evem::IsEnabled() || !vem::evem::IsStatement(statement)) return;
    static_cast<CEVemBaseStmtNode*>(statement)->UcodeOffset = offset;
}

u16 EVemGetUcodeOffset(CEVemBaseNode* statement) {
    if (!vem::evem::IsEnabled() || !vem::evem::IsStatement(statement)) return 0;
    return static_cast<CEVemBaseStmtNode*>(statement)->UcodeOffset;
}

int EVemWriteObject(CEVemBaseNode* node, CArchive& ar) {
    if (!vem::evem::ObjectsEnabled()) return 1;
    try {
        ar.WriteObject(node);
        return 1;
    } catch (const CFileException&) {
        return 0;
    } catch (const CArchiveException&) {
        return 0;
    }
}

CEVemBaseNode* EVemReadObject(CArchive& ar) {
    if (!vem::evem::ObjectsEnabled()) return nullptr;
    try {
        return static_cast<CEVemBaseNode*>(ar.ReadObject(RUNTIME_CLASS(CEVemBaseNode)));
    } catch (const CFileException&) {
        return nullptr;
    } catch (const CArchiveException&) {
        return nullptr;
    }
}
