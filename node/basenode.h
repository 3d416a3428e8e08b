// CVemBaseNode: the common base of every node of the tree, with the whole set of operations that a
// flat function may call on any node.
#pragma once

#include "memory/cbytearr.h"
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

    // Fields, in declared order.
    int HasSymbol = 1;
    int Expanded = 1;
    int KlikedSymbol = 0;
    u32 Serial = 0xFFFFFFFFu;
    u32 NodeType = kVemBaseNode;
    CString Name;
    CString ExtraText;
    CVemBaseNode* Parent = nullptr;
    CVemBaseNode* LastChild = nullptr;
    CObList Children;

    // Drawing state of the tree view, in absolute coordinates of the last Draw. Never stored.
    CPoint TextSize;
    CPoint BottomOfTree;
    CRect SymbolRect;
    CRect NodeRect;
    CPoint ChildStart;
    CPoint ChildAnchor;

    // Geometry relative to the node's origin, fixed by the node type when the node is made; a
    // load that reads another type into NodeType keeps it.
    struct Geometry {
        CPoint LineEnd, SymbolPos, SymbolSize, ElbowPoint, IconLineEnd, IconPos, TextPos;
    };
    const Geometry& GetGeometry() const { return *m_geometry; }
    static const Geometry& GeometryOf(u32 nodeType);

protected:
    // HasSymbol, the forced Expanded of executable and project nodes, and the geometry, by node type.
    void ApplyTypeRules();

private:
    const Geometry* m_geometry = &GeometryOf(NodeType);
};

// Running serial of nodes made by VemNewNode and by the copy of a clone.
VEM_API u32 VemTakeNextSerial();
