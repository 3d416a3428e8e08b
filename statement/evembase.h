// CEVemBaseNode: the common base of the statement model's nodes, with the whole set of operations
// that a flat function may call on any of them.
#pragma once

#include "memory/cbytearr.h"
#include "vem_evem.h"

class VEM_API CEVemBaseNode : public CObject {
    VEM_DECLARE_SERIAL(CEVemBaseNode)
public:
    // Current version of every record of the statement model.
    static constexpr u16 kSchema = 3;

    CEVemBaseNode();  // kEVemBaseNode
    explicit CEVemBaseNode(tEVemNodeType type);
    CEVemBaseNode(const CEVemBaseNode&) = delete;
    CEVemBaseNode& operator=(const CEVemBaseNode&) = delete;
    ~CEVemBaseNode() override;

    // schema word (u16), node type (u16, widened with zeros on loading).
    void Serialize(CArchive& ar) override;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter"
#define EVEM_OP(Ret, Name, Params, Args, Default, Flat, Off, Null) virtual Ret Name Params Default
#include "vem_evem_ops.def"
#undef EVEM_OP
#pragma GCC diagnostic pop

    // Nodes of the model alive in this process; the tests count what a failed load leaves behind.
    static long LiveCount();

    i32 NodeType = kEVemBaseNode;

protected:
    // Writes text to the dump file in one write.
    static void WriteDump(CFile* file, const CString& text);
};

namespace vem::evem {

// True if the node is a statement of the chain (CEVemBaseStmtNode or below).
bool IsStatement(const CEVemBaseNode* node);
// Text of a kind in the dumps: its 40-character row, or empty outside 0 to 186.
const char* NodeTypeText(i32 type);
// The switch EvemEnabled of the settings library: not 0 means on. Asked at every use.
bool IsEnabled();
// The switch holds exactly 1: the condition of the object functions.
bool ObjectsEnabled();
// Makes a node of the kind, with no regard to the switch; null for a kind that has no class.
CEVemBaseNode* MakeNode(i32 type, const CString& name);
// Whether the kind is made as this class. A statement made by the kind in front of its record must
// bear a kind of its own class there: a store writes that kind in front of it, and another class
// would then read the record back.
bool KindFitsClass(i32 type, const CRuntimeClass* cls);

}  // namespace vem::evem
