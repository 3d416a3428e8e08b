// CVemBaseNode: the common base of every node of the tree, with the whole set of operations that a
// flat function may call on any node.
#pragma once

#include "memory/cbytearr.h"
#include "node/nodetypes.h"
#include "vem32_types.h"

class VEM_API CVemBaseNode : public CObject {
    VEM_DECLARE_SERIAL(CVemBaseNode)
public:
    // Current version of the base record.
    static constexpr u16 kSchema = 0;

    CVemBaseNode();  // type 1, empty name, expanded
    CVemBaseNode(u32 nodeType, const CString& name, int expanded);
    // Copy for Clone: a new serial, no parent, no drawing state, the children cloned.
    CVemBaseNode(const CVemBaseNode& other);
    CVemBaseNode& operator=(const CVemBaseNode&) = delete;
    ~CVemBaseNode() override;

    // schema word (u16), node type (u8), expanded (u8), name, serial (u32, written 0), extra text,
    // child count (u16), then per child: its type (u8) and its record.
    void Serialize(CArchive& ar) override;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-parameter"
#define VEM_OP(Ret, Name, Params, Args, Default, Flat) virtual Ret Name Params Default
#include "vem_node_ops.def"
#undef VEM_OP
#pragma GCC diagnostic pop

    // Helpers of the tree that are not part of the table.
    CVemBaseNode* ChildAt(POSITION& pos) const { return static_cast<CVemBaseNode*>(Children.GetNext(pos)); }
    // Destroys every child and empties the list.
    void DeleteAllChildren();
    // The child list of the base record: count, then each child's type byte and record.
    void SerializeChildren(CArchive& ar);
    // NodeDump of every child, with "  - " added to the indent.
    void DumpChildren(CFile* file, const CString& indent);
    // Writes a dump text in one write.
    static void WriteText(CFile* file, const CString& text);

    // Fields, ordered by width so that a node holds no padding: a plain variable node, its name and
    // its link in the parent's list fit in 200 bytes of heap.
    CString Name;
    CString ExtraText;
    CVemBaseNode* Parent = nullptr;
    CVemBaseNode* LastChild = nullptr;
    [[no_unique_address]] CObList Children;  // Serial fills the padding at its end
    u32 Serial = 0xFFFFFFFFu;
    int Expanded = 1;
    u16 NodeType = kVemBaseNode;  // the file holds 8 bits
    u8 KlikedSymbol = 0;
    u8 HasSymbol : 1 = 1;

private:
    // In the byte of HasSymbol.
    u8 m_topGeometry : 1 = 0;  // the geometry of executable and project nodes
    u8 m_drawn : 1 = 0;        // the tree view keeps a drawing state for the node

public:
    // Geometry relative to the node's origin, fixed by the node type when the node is made; a
    // load that reads another type into NodeType keeps it.
    struct Geometry {
        CPoint LineEnd, SymbolPos, SymbolSize, ElbowPoint, IconLineEnd, IconPos, TextPos;
    };
    const Geometry& GetGeometry() const { return GeometryOf(m_topGeometry ? kVemExeNode : kVemBaseNode); }
    static const Geometry& GeometryOf(u32 nodeType);

    // Drawing state of the tree view, in absolute coordinates of the last Draw. Never stored, and
    // kept beside the tree only for nodes that were drawn.
    struct DrawState {
        CPoint TextSize;
        CPoint BottomOfTree;
        CRect SymbolRect;
        CRect NodeRect;
        CPoint ChildStart;
        CPoint ChildAnchor;
    };

protected:
    // HasSymbol, the forced Expanded of executable and project nodes, and the geometry, by node type.
    void ApplyTypeRules();

private:
    // The node's drawing state, made on first use.
    DrawState& Drawn();
    // The drawing state of the last Draw, or all zeros for a node never drawn.
    const DrawState& LastDrawn() const;
    // Drops the drawing state of a node that goes.
    void ForgetDrawn();
};

namespace vem {

// Running serial of nodes made by VemNewNode and by the copy of a clone.
u32 TakeNextSerial();
// Forgets a node that goes if the stepping through the shown nodes remembers it (treeview.cpp).
void StepForget(const CVemBaseNode* node);

}  // namespace vem
