// Painting the tree: the calls on the device context, node by node, and the places that a draw
// leaves on the nodes. Texts are measured at 7 pixels a byte and 16 pixels high.
#include "treeview_test_util.h"

using vemtest::Add;
using vemtest::ShownNode;

namespace {

using Calls = std::vector<std::string>;

Calls Slice(const Calls& calls, std::size_t from, std::size_t count) {
    if (from >= calls.size()) return {};
    count = std::min(count, calls.size() - from);
    return Calls(calls.begin() + static_cast<std::ptrdiff_t>(from),
                 calls.begin() + static_cast<std::ptrdiff_t>(from + count));
}

}  // namespace

// A base node named "Node" at the origin (20, 40), its line coming from (3, 7).
TEST(TreeViewDraw, OneNodeStepByStep) {
    CVemBaseNode node(kVemBaseNode, "Node", 1);
    CVemRecordingDC dc;
    VemDraw(&node, &dc, CPoint(3, 7), CPoint(20, 40), nullptr);
    const Calls expected = {
        "MoveTo(3,7)",               // the line from the parent...
        "LineTo(20,45)",             // ...to origin + LineEnd (0, 5)
        "DrawIcon(16,45,102)",       // expanded symbol at origin + SymbolPos (-4, 5)
        "MoveTo(24,49)",             // origin + ElbowPoint (4, 9)
        "LineTo(29,49)",             // origin + IconLineEnd (9, 9)
        "SetBkMode(1)",              // transparent
        "DrawIcon(29,44,117)",       // the base node's icon at origin + IconPos (9, 4)
        "GetTextExtent(\"Node\")",   // 28 x 16, so TextSize is (30, 18)
        "GetBkColor()",              // remembered
        "SetBkMode(1)",              // not selected: transparent
        "TextOut(55,44,\"Node\")",   // origin.x + TextPos.x 30 + 5, origin.y + IconPos.y 4
        "SetBkColor(16777215)",      // the remembered white back
    };
    EXPECT_EQ(dc.CallTexts(), expected);
    // BottomOfTree: (20 + 30 + 30 + 5, 40 + 25); NodeRect from origin + IconPos, as wide and high
    // as BottomOfTree minus the origin.
    EXPECT_EQ(VemGetBottomOfTree(&node), CPoint(85, 65));
    EXPECT_EQ(VemGetNodeSymbolRect(&node), CRect(29, 44, 94, 69));
}

TEST(TreeViewDraw, SelectedNodeGetsAFrameAndAYellowBackground) {
    CVemBaseNode node(kVemBaseNode, "Node", 1);
    CVemRecordingDC dc;
    dc.SetBkColor(0x123456);  // the host's colour
    dc.Clear();
    VemDraw(&node, &dc, CPoint(3, 7), CPoint(20, 40), &node);
    const Calls expected = {
        "MoveTo(3,7)",
        "LineTo(20,45)",
        "DrawIcon(16,45,102)",
        "MoveTo(24,49)",
        "LineTo(29,49)",
        "SetBkMode(1)",
        "DrawIcon(29,44,117)",
        "GetTextExtent(\"Node\")",
        "Rectangle(53,42,85,62)",  // left 20 + 30 + 3, top 40 + 4 - 2, right left + 30 + 2, bottom top + 18 + 2
        "GetBkColor()",
        "SetBkColor(65535)",       // yellow
        "SetBkMode(2)",            // opaque
        "TextOut(55,44,\"Node\")",
        "SetBkColor(1193046)",     // 0x123456 back
    };
    EXPECT_EQ(dc.CallTexts(), expected);
    EXPECT_EQ(dc.GetBkColor(), 0x123456u);
}

TEST(TreeViewDraw, HostColourComesBackAndOnlyTheSelectedTextIsOpaque) {
    CVemBaseNode root(kVemBaseNode, "root", 1);
    Add(&root, new CVemBaseNode(kVemBaseNode, "a", 1));
    CVemBaseNode* b = Add(&root, new CVemBaseNode(kVemVariableNode, "b", 0));
    Add(&root, new CVemBaseNode(kVemBaseNode, "c", 1));
    CVemRecordingDC dc;
    dc.SetBkColor(0x00ABCDEF);
    dc.Clear();
    VemDraw(&root, &dc, CPoint(0, 0), CPoint(10, 0), b);
    const Calls calls = dc.CallTexts();
    int texts = 0;
    for (std::size_t i = 0; i < calls.size(); ++i) {
        if (calls[i].rfind("TextOut", 0) != 0) continue;
        ++texts;
        const bool selected = calls[i].find("\"b\"") != std::string::npos;
        EXPECT_EQ(calls[i - 1], selected ? "SetBkMode(2)" : "SetBkMode(1)") << calls[i];
        if (selected) {
            EXPECT_EQ(calls[i - 2], "SetBkColor(65535)");
        }
        EXPECT_EQ(calls[i + 1], "SetBkColor(11259375)") << calls[i];  // 0xABCDEF back after every text
    }
    EXPECT_EQ(texts, 4);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "SetBkColor(65535)"), 1);
    EXPECT_EQ(std::count_if(calls.begin(), calls.end(), [](const std::string& c) { return c.rfind("Rectangle", 0) == 0; }),
              1);
    EXPECT_EQ(dc.GetBkColor(), 0x00ABCDEFu);
}

// A project at (0, 0): all its relative points are 0 but the text position (21, 21).
TEST(TreeViewDraw, ProjectTextAt26And0AndChildLinesAtX11) {
    ShownNode project(kVemProjectNode, "Project", 119);
    Add(&project, new ShownNode(kVemConfigNode, "Cfg", 138));
    Add(&project, new ShownNode(kVemResourceNode, "Res", 121));
    CVemRecordingDC dc;
    VemDraw(&project, &dc, CPoint(0, 0), CPoint(0, 0), nullptr);
    const Calls calls = dc.CallTexts();
    const Calls projectCalls = {
        "MoveTo(0,0)",       "LineTo(0,0)",         "DrawIcon(0,0,102)",         "MoveTo(0,0)",
        "LineTo(0,0)",       "SetBkMode(1)",        "DrawIcon(0,0,119)",         "GetTextExtent(\"Project\")",
        "GetBkColor()",      "SetBkMode(1)",        "TextOut(26,0,\"Project\")", "SetBkColor(16777215)",
    };
    EXPECT_EQ(Slice(calls, 0, 12), projectCalls);
    // The project's BottomOfTree is (21 + 51 + 5, 21) and ChildStart (11, 21). The configuration has
    // no symbol: its line bends at (11, 30) and its anchor is (11, 30).
    const Calls configCalls = {"MoveTo(11,21)", "LineTo(11,26)", "LineTo(11,30)", "LineTo(15,30)"};
    EXPECT_EQ(Slice(calls, 12, 4), configCalls);
    // The configuration ends at y 21 + 25 = 46; the resource's line comes from its anchor.
    const Calls resourceCalls = {"MoveTo(11,30)", "LineTo(11,51)", "DrawIcon(7,51,102)"};
    EXPECT_EQ(Slice(calls, 25, 3), resourceCalls);
    EXPECT_EQ(VemGetBottomOfTree(&project), CPoint(77, 71));
}

TEST(TreeViewDraw, LeafVariableHasNoSymbolAndItsAnchorNineBelowItsOrigin) {
    CVemBaseNode parent(kVemBaseNode, "P", 1);
    CVemBaseNode* v = Add(&parent, new CVemBaseNode(kVemVariableNode, "v", 0));
    Add(&parent, new CVemBaseNode(kVemVariableNode, "w", 0));
    CVemRecordingDC dc;
    VemDraw(&parent, &dc, CPoint(20, 0), CPoint(20, 0), nullptr);
    const Calls calls = dc.CallTexts();
    // P ends at (20 + 30 + 9 + 5, 25); its children start at (40, 25).
    const Calls variableCalls = {
        "MoveTo(40,25)",  "LineTo(40,30)",        "LineTo(40,34)",         "LineTo(44,34)",
        "MoveTo(44,34)",  "LineTo(49,34)",        "SetBkMode(1)",          "DrawIcon(49,29,117)",
        "GetTextExtent(\"v\")", "GetBkColor()",   "SetBkMode(1)",          "TextOut(75,29,\"v\")",
        "SetBkColor(16777215)",
    };
    EXPECT_EQ(Slice(calls, 12, 13), variableCalls);
    // The next sibling's line starts at v's anchor (40, 25 + 9) and runs to its origin (40, 50).
    const Calls nextCalls = {"MoveTo(40,34)", "LineTo(40,55)"};
    EXPECT_EQ(Slice(calls, 25, 2), nextCalls);
    // Where a symbol would stand (left 40 - 6, top 25 + 3) nothing is struck; a node with a symbol
    // at the same origin is struck there.
    EXPECT_EQ(VemGetSelectedNode(v, CPoint(36, 32)), nullptr);
    EXPECT_EQ(VemGetSelectedNode(&parent, CPoint(36, 32)), nullptr);
    CVemBaseNode withSymbol(kVemBaseNode, "s", 0);
    VemDraw(&withSymbol, &dc, CPoint(40, 25), CPoint(40, 25), nullptr);
    EXPECT_EQ(VemGetSelectedNode(&withSymbol, CPoint(36, 32)), &withSymbol);
    EXPECT_EQ(VemGetKlikedSymbol(&withSymbol), kTuiKlikedExpandSymbol);
}

TEST(TreeViewDraw, ChildrenStandOneBelowTheOtherAndWidenTheBottom) {
    CVemBaseNode root(kVemBaseNode, "R", 1);
    CVemBaseNode* wide = Add(&root, new CVemBaseNode(kVemBaseNode, "LongerName", 1));
    CVemBaseNode* narrow = Add(&root, new CVemBaseNode(kVemBaseNode, "x", 1));
    CVemRecordingDC dc;
    VemDraw(&root, &dc, CPoint(20, 0), CPoint(20, 0), nullptr);
    // R alone ends at (64, 25). The wide child at (40, 25) ends at (40 + 30 + 72 + 5, 50), further
    // right, so both coordinates are taken; the narrow one at (40, 50) ends at (84, 75), and only
    // its y is taken.
    EXPECT_EQ(VemGetBottomOfTree(wide), CPoint(147, 50));
    EXPECT_EQ(VemGetBottomOfTree(narrow), CPoint(84, 75));
    EXPECT_EQ(VemGetBottomOfTree(&root), CPoint(147, 75));
    // The root's NodeRect was set before its children were drawn.
    EXPECT_EQ(VemGetNodeSymbolRect(&root), CRect(29, 4, 73, 29));
    EXPECT_EQ(VemGetNodeSymbolRect(narrow), CRect(49, 54, 93, 79));
}

TEST(TreeViewDraw, CollapsedNodeEndsAtItsOwnText) {
    CVemBaseNode node(kVemBaseNode, "Col", 0);
    Add(&node, new CVemBaseNode(kVemBaseNode, "AVeryLongChildName", 1));
    CVemRecordingDC dc;
    VemDraw(&node, &dc, CPoint(20, 0), CPoint(20, 0), nullptr);
    EXPECT_EQ(dc.CallTexts().size(), 12u);  // nothing of the child
    EXPECT_EQ(dc.CallTexts()[2], "DrawIcon(16,5,113)");  // the collapsed symbol
    EXPECT_EQ(VemGetBottomOfTree(&node), CPoint(20 + 30 + 23 + 5, 25));

    VemToggleExpanded(&node);
    dc.Clear();
    VemDraw(&node, &dc, CPoint(20, 0), CPoint(20, 0), nullptr);
    EXPECT_EQ(dc.CallTexts()[2], "DrawIcon(16,5,102)");
    EXPECT_EQ(VemGetBottomOfTree(&node), CPoint(40 + 30 + 128 + 5, 50));
}

TEST(TreeViewDraw, ExecutableDrawsLikeAProject) {
    ShownNode exe(kVemExeNode, "E", 121, 125, 0);
    CVemRecordingDC dc;
    VemDraw(&exe, &dc, CPoint(0, 0), CPoint(5, 5), nullptr);
    EXPECT_EQ(dc.CallTexts()[2], "DrawIcon(5,5,102)");  // expanded whatever it was made with
    EXPECT_EQ(dc.CallTexts()[10], "TextOut(31,5,\"E\")");
}

// The relative points come from the type that the node was made with; a clone takes them from
// the type it copies.
TEST(TreeViewDraw, GeometryIsFixedWhenTheNodeIsMade) {
    CVemBaseNode node(kVemBaseNode, "n", 1);
    node.NodeType = kVemProjectNode;  // as a load would read it
    CVemRecordingDC dc;
    VemDraw(&node, &dc, CPoint(0, 0), CPoint(0, 0), nullptr);
    EXPECT_EQ(dc.CallTexts()[10], "TextOut(35,4,\"n\")");

    CVemBaseNode* clone = VemClone(&node);
    dc.Clear();
    VemDraw(clone, &dc, CPoint(0, 0), CPoint(0, 0), nullptr);
    EXPECT_EQ(dc.CallTexts()[10], "TextOut(26,0,\"n\")");
    VemDeleteNode(clone);
}

TEST(TreeViewDraw, RecordingContextMeasuresWithItsCells) {
    CVemRecordingDC wide(10, 20);
    EXPECT_EQ(wide.GetTextExtent("abc").cx, 30);
    EXPECT_EQ(wide.GetTextExtent("abc").cy, 20);
    wide.Clear();
    CVemBaseNode node(kVemBaseNode, "abc", 1);
    VemDraw(&node, &wide, CPoint(0, 0), CPoint(0, 0), nullptr);
    EXPECT_EQ(VemGetBottomOfTree(&node), CPoint(30 + 32 + 5, 25));
    EXPECT_EQ(wide.Calls()[0].Op, "MoveTo");
    EXPECT_EQ(wide.Calls()[2].Args, (std::vector<i64>{-4, 5, 102}));
}
