// Stepping through the shown nodes with the cursor keys: the order of painting, the ends, and
// collapsed subtrees.
#include "treeview_test_util.h"

using vemtest::Add;

namespace {

// root
//   a
//     a1
//     a2
//   b (collapsed)
//     b1
//   c
// Shown in the order root, a, a1, a2, b, c. Nothing needs to be drawn for stepping.
struct ShownTree : ::testing::Test {
    CVemBaseNode root{kVemBaseNode, "root", 1};
    CVemBaseNode* a = Add(&root, new CVemBaseNode(kVemBaseNode, "a", 1));
    CVemBaseNode* a1 = Add(a, new CVemBaseNode(kVemVariableNode, "a1", 0));
    CVemBaseNode* a2 = Add(a, new CVemBaseNode(kVemVariableNode, "a2", 0));
    CVemBaseNode* b = Add(&root, new CVemBaseNode(kVemBaseNode, "b", 0));
    CVemBaseNode* b1 = Add(b, new CVemBaseNode(kVemVariableNode, "b1", 0));
    CVemBaseNode* c = Add(&root, new CVemBaseNode(kVemBaseNode, "c", 1));
};

}  // namespace

// The operations of a node keep the last node walked between calls; a node that goes is forgotten,
// so the next step gives null, as at the start, never the deleted node (AddressSanitizer run).
TEST_F(ShownTree, AStepNeverGivesBackANodeThatWent) {
    for (const bool subtree : {false, true}) {
        VemInitPrevNextStaticVar(&root);
        CVemBaseNode* last = subtree ? b : a2;  // the last node walked before the target is missed
        EXPECT_EQ((subtree ? b : a)->GetSelectedPrevNode(c), nullptr);
        ASSERT_EQ(VemDeleteChildNode(&root, last), 1);
        CVemBaseNode* back = c->GetSelectedPrevNode(c);
        EXPECT_EQ(back, nullptr) << (back ? VemGetName(back).str() : "");
    }
}
