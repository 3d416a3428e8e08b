// The tree view: painting into the host's device context, hit tests, and stepping through the
// shown nodes with the cursor keys.
#include "node/basenode.h"
#include "node/resources.h"

namespace {

// Statics of the stepping; they live for one call of a flat stepping function.
CVemBaseNode* g_prevNode = nullptr;
int g_nextFound = 0;

constexpr COLORREF kSelectedBackground = 0x0000FFFF;  // yellow

}  // namespace

//                      LineEnd  SymbolPos SymbolSize ElbowPoint IconLineEnd IconPos  TextPos
const CVemBaseNode::Geometry& CVemBaseNode::GeometryOf(u32 nodeType) {
    static const Geometry normal{{0, 5}, {-4, 5}, {5, 14}, {4, 9}, {9, 9}, {9, 4}, {30, 25}};
    static const Geometry top{{0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}, {21, 21}};
    return (nodeType == kVemExeNode || nodeType == kVemProjectNode) ? top : normal;
}

void CVemBaseNode::Draw(CDC* dc, CPoint from, CPoint origin, CVemBaseNode* selected) {
    const Geometry& g = GetGeometry();
    dc->MoveTo(from);
    dc->LineTo(origin + g.LineEnd);
    if (HasSymbol) {
        SymbolRect.left = origin.x + g.SymbolPos.x - 2;
        SymbolRect.top = origin.y + g.SymbolPos.y - 2;
        SymbolRect.right = SymbolRect.left + g.SymbolSize.x + 2;
        SymbolRect.bottom = SymbolRect.top + g.SymbolSize.y + 2;
        dc->DrawIcon(origin + g.SymbolPos, Expanded ? kVemIconExpanded : kVemIconCollapsed);
    } else {
        dc->LineTo(CPoint(origin.x + g.LineEnd.x, origin.y + g.ElbowPoint.y));
        dc->LineTo(origin + g.ElbowPoint);
    }
    dc->MoveTo(origin + g.ElbowPoint);
    dc->LineTo(origin + g.IconLineEnd);

    const unsigned icon = GetIconID();
    dc->SetBkMode(TRANSPARENT);
    dc->DrawIcon(origin + g.IconPos, icon);

    const CString text = GetNodeText();
    const CSize extent = dc->GetTextExtent(text);
    TextSize = CPoint(extent.cx + 2, extent.cy + 2);
    if (this == selected) {
        CRect frame;
        frame.left = origin.x + g.TextPos.x + 3;
        frame.top = origin.y + g.IconPos.y - 2;
        frame.right = frame.left + TextSize.x + 2;
        frame.bottom = frame.top + TextSize.y + 2;
        dc->Rectangle(frame);
    }
    const COLORREF background = dc->GetBkColor();
    if (this == selected) {
        dc->SetBkColor(kSelectedBackground);
        dc->SetBkMode(OPAQUE);
    } else {
        dc->SetBkMode(TRANSPARENT);
    }
    dc->TextOut(origin.x + g.TextPos.x + 5, origin.y + g.IconPos.y, text);
    dc->SetBkColor(background);

    BottomOfTree = CPoint(origin.x + g.TextPos.x + TextSize.x + 5, origin.y + g.TextPos.y);
    NodeRect.left = origin.x + g.IconPos.x;
    NodeRect.top = origin.y + g.IconPos.y;
    NodeRect.right = NodeRect.left + (BottomOfTree.x - origin.x);
    NodeRect.bottom = NodeRect.top + (BottomOfTree.y - origin.y);
    ChildStart = CPoint(origin.x + g.TextPos.x - 10, origin.y + g.TextPos.y);
    ChildAnchor.x = origin.x + g.LineEnd.x;
    ChildAnchor.y = HasSymbol ? origin.y + g.LineEnd.y + 9 : origin.y + g.ElbowPoint.y;

    if (!Expanded) return;
    CPoint childFrom = ChildStart;
    CPoint childOrigin(ChildStart.x, BottomOfTree.y);
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = ChildAt(pos);
        child->Draw(dc, childFrom, childOrigin, selected);
        const CPoint bottom = child->BottomOfTree;
        if (BottomOfTree.x < bottom.x) {
            BottomOfTree = bottom;
        } else {
            BottomOfTree.y = bottom.y;
        }
        childFrom = *child->GetChildAnchor();
        childOrigin = CPoint(childFrom.x, BottomOfTree.y);
    }
}

CVemBaseNode* CVemBaseNode::GetSelectedNode(CPoint point) {
    if (HasSymbol && SymbolRect.ContainsInclusive(point)) {
        KlikedSymbol = kTuiKlikedExpandSymbol;
        return this;
    }
    if (NodeRect.ContainsInclusive(point)) {
        KlikedSymbol = kTuiKlikedNode;
        return this;
    }
    if (!Expanded) return nullptr;
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        if (CVemBaseNode* hit = ChildAt(pos)->GetSelectedNode(point)) return hit;
    }
    return nullptr;
}

CRect CVemBaseNode::GetNodeSymbolRect() { return NodeRect; }

CPoint CVemBaseNode::GetBottomOfTree() { return BottomOfTree; }

CPoint* CVemBaseNode::GetChildAnchor() { return &ChildAnchor; }

void CVemBaseNode::InitPrevNextStaticVar() {
    g_prevNode = nullptr;
    g_nextFound = 0;
}

CVemBaseNode* CVemBaseNode::GetSelectedPrevNode(CVemBaseNode* target) {
    if (this == target) return g_prevNode;
    g_prevNode = this;
    if (!Expanded) return nullptr;
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        if (CVemBaseNode* found = ChildAt(pos)->GetSelectedPrevNode(target)) return found;
    }
    return nullptr;
}

CVemBaseNode* CVemBaseNode::GetSelectedNextNode(CVemBaseNode* target) {
    if (g_nextFound) return this;
    if (this == target) g_nextFound = 1;
    if (!Expanded) return nullptr;
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        if (CVemBaseNode* found = ChildAt(pos)->GetSelectedNextNode(target)) return found;
    }
    return nullptr;
}
