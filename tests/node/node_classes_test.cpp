// Every node class in one table: the class that each type makes, its icon and bitmap (and the icon
// of a global unit), and the class of its clone. A clone writes the same bytes as its source and
// owns copies of its children; where the table gives a clone of another class, only that differs.
// As an object, each names its class.
#include "memory_test_util.h"

namespace {

struct NodeClass {
    tVemNodeType type;
    const char* name;
    unsigned icon;
    unsigned bitmap;
    unsigned globalIcon;  // after VemSetGlobal(node, 1)
    int expanded;
    int hasSymbol;
    const char* nodeName;  // of a new node
    const char* cloneName;
};

// The upper levels clone to plain base nodes, and a compiled task to a program: such a clone keeps
// the type, the name and the children, not the record of its source's class.
const NodeClass kClasses[] = {
    {kVemBaseNode, "CVemBaseNode", 117, 149, 117, 1, 1, "", "CVemBaseNode"},
    {kVemVariableNode, "CVemVariableNode", 125, 116, 125, 0, 0, "", "CVemVariableNode"},
    {kVemProgramNode, "CVemProgramNode", 118, 112, 137, 1, 1, "", "CVemProgramNode"},
    {kVemFbNode, "CVemFbNode", 115, 115, 115, 1, 1, "", "CVemFbNode"},
    {kVemFunctionNode, "CVemFunctionNode", 124, 114, 124, 1, 1, "", "CVemFunctionNode"},
    {kVemArrayNode, "CVemArrayNode", 129, 116, 129, 0, 1, "", "CVemArrayNode"},
    {kVemStructNode, "CVemStructNode", 130, 116, 130, 0, 1, "", "CVemStructNode"},
    {kVemFbInstanceNode, "CVemFbInstanceNode", 125, 116, 125, 0, 1, "", "CVemFbInstanceNode"},
    {kVemTaskNode, "CVemTaskNode", 122, 127, 122, 1, 0, "", "CVemBaseNode"},
    {kVemExeNode, "CVemExeNode", 121, 125, 121, 1, 1, "", "CVemBaseNode"},
    {kVemResourceNode, "CVemResourceNode", 121, 125, 121, 1, 1, "", "CVemBaseNode"},
    {kVemConfigNode, "CVemConfigNode", 138, 149, 138, 0, 0, "", "CVemBaseNode"},
    {kVemProjectNode, "CVemProjectNode", 119, 126, 119, 1, 1, "", "CVemBaseNode"},
    {kVemTuiTaskNode, "CVemTuiTaskNode", 122, 112, 137, 1, 1, "", "CVemProgramNode"},
    {kVemTaskContainerNode, "CVemTaskContainerNode", 122, 127, 122, 1, 1, "TASKS", "CVemBaseNode"},
};

// A node of the type with a name and a child; an array also gets the range and prototype it needs.
CVemBaseNode* Filled(tVemNodeType type) {
    CVemBaseNode* node = vemtest::NewNode(type, "N");
    if (type == kVemArrayNode) {  // the tail of an array is its prototype, the head its children
        VemSetDimRange4Index(VemGetRange(node), 0, {0, 1, 0});
        VemAddChildTail(node, VemCreateCVemVariableNode("", 0, kCbeTypeInt, 2, 0));
    }
    VemAddChildHead(node, VemCreateCVemVariableNode("C", 2, kCbeTypeInt, 2, 0));
    return node;
}

}  // namespace

TEST(NodeClasses, ClassIconAndBitmapOfEveryType) {
    for (const NodeClass& c : kClasses) {
        CVemBaseNode* node = VemNewNode(c.type);
        ASSERT_NE(node, nullptr) << c.type;
        EXPECT_STREQ(node->GetRuntimeClass()->m_lpszClassName, c.name);
        EXPECT_EQ(VemGetNodeType(node), c.type);
        EXPECT_EQ(node->Expanded, c.expanded) << c.name;
        EXPECT_EQ(node->HasSymbol, c.hasSymbol) << c.name;
        EXPECT_EQ(VemGetName(node), c.nodeName) << c.name;
        EXPECT_NE(node->Serial, 0xFFFFFFFFu) << c.name;
        EXPECT_EQ(node->GetIconID(), c.icon) << c.name;
        EXPECT_EQ(VemGetBitmapID(node), c.bitmap) << c.name;
        VemSetGlobal(node, 1);
        EXPECT_EQ(node->GetIconID(), c.globalIcon) << c.name;
        VemDeleteNode(node);
    }
}

TEST(NodeClasses, ACloneWritesTheBytesOfItsSource) {
    for (const NodeClass& c : kClasses) {
        CVemBaseNode* source = Filled(c.type);
        CVemBaseNode* clone = VemClone(source);
        ASSERT_NE(clone, nullptr) << c.name;
        EXPECT_STREQ(clone->GetRuntimeClass()->m_lpszClassName, c.cloneName);
        EXPECT_EQ(VemGetNodeType(clone), c.type) << c.name;
        EXPECT_EQ(VemGetName(clone), "N") << c.name;
        EXPECT_NE(clone->Serial, source->Serial) << c.name;
        if (std::string(c.name) == c.cloneName) {
            EXPECT_EQ(vemtest::Written(clone), vemtest::Written(source)) << c.name;
        }
        EXPECT_EQ(clone->Parent, nullptr);
        ASSERT_EQ(clone->Children.GetCount(), 1) << c.name;
        auto* child = static_cast<CVemBaseNode*>(clone->Children.GetHead());
        EXPECT_NE(child, source->Children.GetHead()) << c.name;
        EXPECT_EQ(child->Parent, clone) << c.name;
        VemDeleteNode(clone);
        VemDeleteNode(source);
    }
}

// In a caller's archive, as a task file holds its task, a node is an object: a new class (FFFF,
// class schema 5, the class name), then its record. It reads back as its class, with its record.
TEST(NodeClasses, AnObjectNamesItsClassAndReadsBackWhole) {
    for (const NodeClass& c : kClasses) {
        CVemBaseNode* source = Filled(c.type);
        const auto object = [](CVemBaseNode* node) {
            return memtest::Stored([&](CArchive& ar) { EXPECT_EQ(VemWriteObject(node, ar), 1); });
        };
        const std::vector<u8> bytes = object(source);
        const vemtest::Bytes head = vemtest::Bytes().newClass(5, c.name);
        ASSERT_GT(bytes.size(), head.v.size()) << c.name;
        EXPECT_EQ(std::vector<u8>(bytes.begin(), bytes.begin() + static_cast<long>(head.v.size())), head.v);
        CVemBaseNode* read = nullptr;
        memtest::Load(bytes, [&](CArchive& ar) { read = VemReadObject(ar); });
        ASSERT_NE(read, nullptr) << c.name;
        EXPECT_STREQ(read->GetRuntimeClass()->m_lpszClassName, c.name);
        EXPECT_EQ(object(read), bytes) << c.name;
        VemDeleteNode(read);
        VemDeleteNode(source);
    }
}
