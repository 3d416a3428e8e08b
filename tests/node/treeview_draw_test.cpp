// Painting the tree: what the recorded calls do not show. The calls themselves are golden files
// (golden_test.cpp). Texts are measured at 7 pixels a byte and 16 pixels high.
#include "treeview_test_util.h"

using vemtest::Add;

// Where a symbol would stand beside a leaf variable (left 40 - 6, top 25 + 3) nothing is struck; a
// node with a symbol at the same origin is struck there.
TEST(TreeViewDraw, LeafVariableHasNoSymbolToStrike) {
    CVemBaseNode parent(kVemBaseNode, "P", 1);
    CVemBaseNode* v = Add(&parent, new CVemBaseNode(kVemVariableNode, "v", 0));
    CVemRecordingDC dc;
    VemDraw(&parent, &dc, CPoint(20, 0), CPoint(20, 0), nullptr);
    EXPECT_EQ(VemGetSelectedNode(v, CPoint(36, 32)), nullptr);
    EXPECT_EQ(VemGetSelectedNode(&parent, CPoint(36, 32)), nullptr);
    CVemBaseNode withSymbol(kVemBaseNode, "s", 0);
    VemDraw(&withSymbol, &dc, CPoint(40, 25), CPoint(40, 25), nullptr);
    EXPECT_EQ(VemGetSelectedNode(&withSymbol, CPoint(36, 32)), &withSymbol);
    EXPECT_EQ(VemGetKlikedSymbol(&withSymbol), kTuiKlikedExpandSymbol);
}

TEST(TreeViewDraw, RecordingContextKeepsOperationsAndArguments) {
    CVemRecordingDC wide(10, 20);
    EXPECT_EQ(wide.GetTextExtent("abc").cx, 30);
    EXPECT_EQ(wide.GetTextExtent("abc").cy, 20);
    wide.Clear();
    CVemBaseNode node(kVemBaseNode, "abc", 1);
    VemDraw(&node, &wide, CPoint(0, 0), CPoint(0, 0), nullptr);
    EXPECT_EQ(wide.Calls()[0].Op, "MoveTo");
    EXPECT_EQ(wide.Calls()[2].Args, (std::vector<i64>{-4, 5, 102}));
}
