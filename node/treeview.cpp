// The tree view: painting into the host's device context, hit tests, and stepping through the
// shown nodes with the cursor keys.
#include <atomic>
#include <mutex>
#include <unordered_map>

#include "node/basenode.h"
#include "node/resources.h"

namespace {

// Statics of the stepping; they live for one call of a flat stepping function. A node that goes
// is forgotten (vem::StepForget), so no later step can hand it back.
std::atomic<CVemBaseNode*> g_prevNode = nullptr;
int g_nextFound = 0;

constexpr COLORREF kSelectedBackground = 0x0000FFFF;  // yellow

// Drawing states of the nodes that were drawn: few of a large tree are, and the nodes do not
// carry them. A node's entry stays where it is until the node goes.
std::mutex g_drawnMutex;
std::unordered_map<const CVemBaseNode*, CVemBaseNode::DrawState> g_drawnStates;
const CVemBaseNode::DrawState kNeverDrawn{};

}  // namespace

CVemBaseNode::DrawState& CVemBaseNode::Drawn() {
    std::lock_guard lock(g_drawnMutex);
    m_drawn = 1;
    return g_drawnStates[this];
}

const CVemBaseNode::DrawState& CVemBaseNode::LastDrawn() const {
    if (!m_drawn) return kNeverDrawn;
    std::lock_guard lock(g_drawnMutex);
    return g_drawnStates.find(this)->second;
}

void CVemBaseNode::ForgetDrawn() {
    std::lock_guard lock(g_drawnMutex);
    g_drawnStates.erase(this);
    m_drawn = 0;
}

//                      LineEnd  SymbolPos SymbolSize ElbowPoint IconLineEnd IconPos  TextPos
const CVemBaseNode::Geometry& CVemBaseNode::GeometryOf(u32 nodeType) {
    static const Geometry normal{{0, 5}, {-4, 5}, {5, 14}, {4, 9}, {9, 9}, {9, 4}, {30, 25}};
    static const Geometry top{{0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}, {21, 21}};
    const vem::nodetypes::Row* row = vem::nodetypes::Find(nodeType);
    return row && row->Shape == vem::nodetypes::Row::Top ? top : normal;
}

void CVemBaseNode::Draw(CDC* dc, CPoint from, CPoint origin, CVemBaseNode* selected) {
    const Geometry& g = GetGeometry();
    DrawState& d = Drawn();
    dc->MoveTo(from);
    dc->LineTo(origin + g.LineEnd);
    if (HasSymbol) {
        d.SymbolRect.left = origin.x + g.SymbolPos.x - 2;
        d.SymbolRect.top = origin.y + g.SymbolPos.y - 2;
        d.SymbolRect.right = d.SymbolRect.left + g.SymbolSize.x + 2;
        d.SymbolRect.bottom = d.SymbolRect.top + g.SymbolSize.y + 2;
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
    d.TextSize = CPoint(extent.cx + 2, extent.cy + 2);
    if (this == selected) {
        CRect frame;
        frame.left = origin.x + g.TextPos.x + 3;
        frame.top = origin.y + g.IconPos.y - 2;
        frame.right = frame.left + d.TextSize.x + 2;
        frame.bottom = frame.top + d.TextSize.y + 2;
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

    d.BottomOfTree = CPoint(origin.x + g.TextPos.x + d.TextSize.x + 5, origin.y + g.TextPos.y);
    d.NodeRect.left = origin.x + g.IconPos.x;
    d.NodeRect.top = origin.y + g.IconPos.y;
    d.NodeRect.right = d.NodeRect.left + (d.BottomOfTree.x - origin.x);
    d.NodeRect.bottom = d.NodeRect.top + (d.BottomOfTree.y - origin.y);
    d.ChildStart = CPoint(origin.x + g.TextPos.x - 10, origin.y + g.TextPos.y);
    d.ChildAnchor.x = origin.x + g.LineEnd.x;
    d.ChildAnchor.y = HasSymbol ? origin.y + g.LineEnd.y + 9 : origin.y + g.ElbowPoint.y;

    if (!Expanded) return;
    CPoint childFrom = d.ChildStart;
    CPoint childOrigin(d.ChildStart.x, d.BottomOfTree.y);
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = ChildAt(pos);
        child->Draw(dc, childFrom, childOrigin, selected);
        const CPoint bottom = child->LastDrawn().BottomOfTree;
        if (d.BottomOfTree.x < bottom.x) {
            d.BottomOfTree = bottom;
        } else {
            d.BottomOfTree.y = bottom.y;
        }
        childFrom = *child->GetChildAnchor();
        childOrigin = CPoint(childFrom.x, d.BottomOfTree.y);
    }
}

CVemBaseNode* CVemBaseNode::GetSelectedNode(CPoint point) {
    const DrawState& d = LastDrawn();
    if (HasSymbol && d.SymbolRect.ContainsInclusive(point)) {
        KlikedSymbol = kTuiKlikedExpandSymbol;
        return this;
    }
    if (d.NodeRect.ContainsInclusive(point)) {
        KlikedSymbol = kTuiKlikedNode;
        return this;
    }
    if (!Expanded) return nullptr;
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        if (CVemBaseNode* hit = ChildAt(pos)->GetSelectedNode(point)) return hit;
    }
    return nullptr;
}

CRect CVemBaseNode::GetNodeSymbolRect() { return LastDrawn().NodeRect; }

CPoint CVemBaseNode::GetBottomOfTree() { return LastDrawn().BottomOfTree; }

// The pointer stays valid until the node goes, so the node gets its own state here.
CPoint* CVemBaseNode::GetChildAnchor() { return &Drawn().ChildAnchor; }

void vem::StepForget(const CVemBaseNode* node) {
    CVemBaseNode* last = g_prevNode.load(std::memory_order_relaxed);
    if (last == node) g_prevNode.compare_exchange_strong(last, nullptr, std::memory_order_relaxed);
}

void CVemBaseNode::InitPrevNextStaticVar() {
    g_prevNode = nullptr;
    g_nextFound = 0;
}

CVemBaseNode* CVemBaseNode::GetSelectedPrevNode(CVemBaseNode* target) {
    if (this == target) return g_prevNode.load(std::memory_order_relaxed);
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
