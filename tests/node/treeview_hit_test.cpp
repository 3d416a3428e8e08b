// Hit tests on a drawn tree: the expand symbol, the icon and text, inclusive edges, collapsed
// subtrees and nodes that were never drawn.
#include "treeview_test_util.h"

namespace {

// A base node "Node" at (20, 40): its symbol rectangle is (14, 43, 21, 59) and its node rectangle
// (29, 44, 94, 69).
struct DrawnNode : ::testing::Test {
    CVemBaseNode node{kVemBaseNode, "Node", 1};
    CVemRecordingDC dc;
    void SetUp() override { VemDraw(&node, &dc, CPoint(20, 40), CPoint(20, 40), nullptr); }
};

}  // namespace

// Before the first draw all places are 0: only the point (0, 0) strikes, the symbol of a node
// that has one, the node itself otherwise.
TEST(TreeViewHit, UndrawnNodeIsStruckOnlyAtTheOrigin) {
    CVemBaseNode base(kVemBaseNode, "b", 1);
    CVemBaseNode variable(kVemVariableNode, "v", 0);
    EXPECT_EQ(VemGetNodeSymbolRect(&base), CRect(0, 0, 0, 0));
    EXPECT_EQ(VemGetBottomOfTree(&base), CPoint(0, 0));
    for (CPoint p : {CPoint(1, 0), CPoint(0, 1), CPoint(-1, 0), CPoint(0, -1), CPoint(1, 1)}) {
        EXPECT_EQ(VemGetSelectedNode(&base, p), nullptr);
        EXPECT_EQ(VemGetSelectedNode(&variable, p), nullptr);
    }
    base.KlikedSymbol = kTuiKlikedNode;
    EXPECT_EQ(VemGetSelectedNode(&base, CPoint(0, 0)), &base);
    EXPECT_EQ(VemGetKlikedSymbol(&base), kTuiKlikedExpandSymbol);
    EXPECT_EQ(VemGetSelectedNode(&variable, CPoint(0, 0)), &variable);
    EXPECT_EQ(VemGetKlikedSymbol(&variable), kTuiKlikedNode);
}

// The places of a drawn node go with it: nodes made after it, often in its very memory, start at 0.
TEST(TreeViewHit, ANodeMadeAfterADeletedDrawnOneHasNoPlaces) {
    CVemRecordingDC dc;
    for (int round = 0; round < 50; ++round) {
        CVemBaseNode* fresh = VemNewNode(kVemBaseNode);
        EXPECT_EQ(VemGetNodeSymbolRect(fresh), CRect(0, 0, 0, 0));
        EXPECT_EQ(VemGetBottomOfTree(fresh), CPoint(0, 0));
        VemDraw(fresh, &dc, CPoint(20, 40), CPoint(20, 40), nullptr);
        EXPECT_NE(VemGetBottomOfTree(fresh), CPoint(0, 0));
        VemDeleteNode(fresh);
    }
}
