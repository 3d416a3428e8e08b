// Hit tests on a drawn tree: the expand symbol, the icon and text, inclusive edges, collapsed
// subtrees and nodes that were never drawn.
#include "treeview_test_util.h"

using vemtest::Add;

namespace {

// A base node "Node" at (20, 40): its symbol rectangle is (14, 43, 21, 59) and its node rectangle
// (29, 44, 94, 69).
struct DrawnNode : ::testing::Test {
    CVemBaseNode node{kVemBaseNode, "Node", 1};
    CVemRecordingDC dc;
    void SetUp() override { VemDraw(&node, &dc, CPoint(20, 40), CPoint(20, 40), nullptr); }
};

}  // namespace

TEST_F(DrawnNode, EveryEdgePixelOfTheNodeRectangleCounts) {
    ASSERT_EQ(VemGetNodeSymbolRect(&node), CRect(29, 44, 94, 69));
    for (CPoint p : {CPoint(29, 44), CPoint(94, 44), CPoint(29, 69), CPoint(94, 69), CPoint(60, 44), CPoint(94, 50)}) {
        node.KlikedSymbol = kTuiKlikedExpandSymbol;
        EXPECT_EQ(VemGetSelectedNode(&node, p), &node) << p.x << "," << p.y;
        EXPECT_EQ(VemGetKlikedSymbol(&node), kTuiKlikedNode);
    }
    for (CPoint p : {CPoint(28, 50), CPoint(95, 50), CPoint(60, 43), CPoint(60, 70)}) {
        EXPECT_EQ(VemGetSelectedNode(&node, p), nullptr) << p.x << "," << p.y;
    }
}

TEST_F(DrawnNode, TheExpandSymbolIsStruckFirst) {
    for (CPoint p : {CPoint(14, 43), CPoint(21, 59), CPoint(17, 50)}) {
        node.KlikedSymbol = kTuiKlikedNode;
        EXPECT_EQ(VemGetSelectedNode(&node, p), &node);
        EXPECT_EQ(VemGetKlikedSymbol(&node), kTuiKlikedExpandSymbol);
    }
    EXPECT_EQ(VemGetSelectedNode(&node, CPoint(13, 50)), nullptr);
    EXPECT_EQ(VemGetSelectedNode(&node, CPoint(17, 60)), nullptr);
}

TEST(TreeViewHit, ChildrenOfACollapsedNodeAreNotStruck) {
    CVemBaseNode root(kVemBaseNode, "root", 1);
    CVemBaseNode* branch = Add(&root, new CVemBaseNode(kVemBaseNode, "branch", 1));
    CVemBaseNode* leaf = Add(branch, new CVemBaseNode(kVemVariableNode, "leaf", 0));
    CVemRecordingDC dc;
    VemDraw(&root, &dc, CPoint(20, 0), CPoint(20, 0), nullptr);
    const CRect leafRect = VemGetNodeSymbolRect(leaf);
    const CPoint inLeaf(leafRect.left + 1, leafRect.top + 1);
    EXPECT_EQ(VemGetSelectedNode(&root, inLeaf), leaf);
    EXPECT_EQ(VemGetKlikedSymbol(leaf), kTuiKlikedNode);

    // Collapsed without a new draw: the leaf keeps its places but is not asked.
    VemSetExpanded(branch, 0);
    EXPECT_EQ(VemGetSelectedNode(&root, inLeaf), nullptr);
    VemSetExpanded(branch, 1);
    EXPECT_EQ(VemGetSelectedNode(&root, inLeaf), leaf);
}

TEST(TreeViewHit, FirstChildInListOrderWins) {
    CVemBaseNode root(kVemBaseNode, "root", 1);
    CVemBaseNode* a = Add(&root, new CVemBaseNode(kVemBaseNode, "a", 1));
    CVemBaseNode* b = Add(&root, new CVemBaseNode(kVemBaseNode, "b", 1));
    CVemRecordingDC dc;
    VemDraw(&root, &dc, CPoint(20, 0), CPoint(20, 0), nullptr);
    // Drawn again at a's place, b's rectangle covers a's. (The top row of a's rectangle is also
    // the bottom row of the root's.)
    VemDraw(b, &dc, CPoint(0, 0), CPoint(40, 25), nullptr);
    const CRect rect = VemGetNodeSymbolRect(a);
    ASSERT_EQ(VemGetNodeSymbolRect(b), rect);
    EXPECT_EQ(VemGetSelectedNode(&root, CPoint(rect.left, rect.top)), &root);
    EXPECT_EQ(VemGetSelectedNode(&root, CPoint(rect.left, rect.top + 1)), a);
}

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

TEST(TreeViewHit, ALoadedOrClonedNodeHasNoPlacesYet) {
    CVemBaseNode node(kVemBaseNode, "n", 1);
    CVemRecordingDC dc;
    VemDraw(&node, &dc, CPoint(20, 40), CPoint(20, 40), nullptr);
    CVemBaseNode* clone = VemClone(&node);
    EXPECT_EQ(VemGetNodeSymbolRect(clone), CRect(0, 0, 0, 0));
    EXPECT_EQ(VemGetBottomOfTree(clone), CPoint(0, 0));
    EXPECT_EQ(VemGetSelectedNode(clone, CPoint(30, 45)), nullptr);
    VemDeleteNode(clone);
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
