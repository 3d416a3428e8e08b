// The base node: defaults of the operations, deleting, finding, path maps, the module's frame.
#include "node/basenode.h"
#include "test_util.h"

using vemtest::ChildNames;

namespace {

CVemBaseNode* Named(const char* name, u32 type = kVemBaseNode) { return new CVemBaseNode(type, name, 1); }

}  // namespace

TEST(NodeDefaults, ABaseNodeAnswersTheNeutralValues) {
    CVemBaseNode* n = VemNewNode(kVemBaseNode);
    EXPECT_EQ(VemGetCrSize(n), 12345);
    EXPECT_EQ(VemGetCrStackSize(n), 12345);
    EXPECT_EQ(VemGetCrStackElements(n), 12345);
    EXPECT_EQ(n->GetStartOffset(), 0xFFFFFFFFu);
    EXPECT_EQ(VemGetOffset(n), 0);
    EXPECT_EQ(VemGetAbsoluteVariableOffset(n, "X"), 0u);
    EXPECT_EQ(VemGetPathName(n), "");
    EXPECT_EQ(VemGetSegmentTable(n), nullptr);
    EXPECT_EQ(VemGetDeviceSettings(n), nullptr);
    EXPECT_EQ(VemGetDatacontFilesProjectName(n), nullptr);
    unsigned a = 7, b = 9;
    VemGetDclPosition(n, a, b);
    EXPECT_EQ(a, 0u);
    EXPECT_EQ(b, 0u);
    const tCompiledTasks counts = VemAllTaskCompiledSuccesfully(n);
    EXPECT_EQ(counts.NoOfTasks, 0);
    EXPECT_EQ(counts.NoOfCompiledTasks, 0);
    CVemByteArray contents = VemGetContainerFileContents(n, "key");
    EXPECT_EQ(contents.GetLength(), 0u);
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(nullptr, 3), "");
    EXPECT_EQ(VemGetNodeText(nullptr), "");
    EXPECT_EQ(VemSetSegmentNumbers(nullptr, 1, 2, 3, 4), 0);
    EXPECT_EQ(VemSetSegmentNumbers(n, 1, 2, 3, 4), 1);
    EXPECT_THROW(VemGetAbsOffset(n, 0), CInvalidArgException);
    VemDeleteNode(n);
}

TEST(NodeTree, DeleteSearchesTheSubtreeAndGivesTheParent) {
    CVemBaseNode* root = VemNewNode(kVemBaseNode);
    CVemBaseNode* child = Named("child");
    CVemBaseNode* grandchild = Named("grandchild");
    VemAddChildTail(root, child);
    VemAddChildTail(child, grandchild);
    VemAddChildTail(child, Named("other"));

    EXPECT_EQ(VemDeleteNode(root, root), nullptr);
    EXPECT_EQ(VemDeleteChildNode(nullptr, child), 0);
    CVemBaseNode stranger;
    EXPECT_EQ(VemDeleteChildNode(root, &stranger), 0);
    EXPECT_EQ(VemDeleteNode(root, grandchild), child);
    EXPECT_EQ(ChildNames(child), (std::vector<std::string>{"other"}));
    EXPECT_EQ(VemDeleteChildNode(root, child), 1);
    EXPECT_TRUE(VemGetChildList(root)->IsEmpty());

    CVemBaseNode* none = nullptr;
    VemDeleteNode(none);
    EXPECT_EQ(none, nullptr);
    VemDeleteNodeEx(root);
    EXPECT_EQ(root, nullptr);
}

TEST(NodeTree, DeepTreesAreDestroyedWithoutRecursion) {
    CVemBaseNode* root = VemNewNode(kVemBaseNode);
    CVemBaseNode* at = root;
    for (int i = 0; i < 200000; ++i) {
        CVemBaseNode* next = new CVemBaseNode(kVemBaseNode, CString(), 1);
        at->AddChildTail(next);
        at = next;
    }
    VemDeleteNode(root);
    SUCCEED();
}

TEST(NodeFind, DirectChildrenOnly) {
    CVemBaseNode* root = VemNewNode(kVemBaseNode);
    CVemBaseNode* task = Named("T", kVemTaskNode);
    VemAddChildTail(root, Named("x"));
    VemAddChildTail(root, task);
    VemAddChildTail(task, Named("deep", kVemFbNode));
    CVemBaseNode* fb = Named("inst : FBTYPE", kVemFbNode);
    CVemBaseNode* lead = Named(" : LEAD", kVemFbNode);
    VemAddChildTail(root, fb);
    VemAddChildTail(root, lead);

    EXPECT_EQ(VemGetFirstNodeOfType(root, kVemTaskNode), task);
    EXPECT_EQ(VemGetFirstNodeOfTypeEx(root, kVemTaskNode), task);
    EXPECT_EQ(VemGetFirstNodeOfType(root, kVemConfigNode), nullptr);
    EXPECT_EQ(VemFindVemNodeByNameAndType(root, "T", kVemTaskNode), task);
    EXPECT_EQ(VemFindVemNodeByNameAndType(root, "T", kVemFbNode), nullptr);
    EXPECT_EQ(VemFindVemNodeByNameAndType(root, "deep", kVemFbNode), nullptr);
    EXPECT_EQ(VemFindVemNodeByTypeNameAndType(root, "FBTYPE", kVemFbNode), fb);
    EXPECT_EQ(VemFindVemNodeByTypeNameAndType(root, "inst", kVemFbNode), nullptr);
    EXPECT_EQ(VemFindVemNodeByTypeNameAndType(root, " : LEAD", kVemFbNode), lead);
    EXPECT_EQ(VemFindVemNodeByTypeNameAndType(root, "LEAD", kVemFbNode), nullptr);
    EXPECT_EQ(VemFindVemNodeByTypeNameAndType(root, "deep", kVemFbNode), nullptr);
    EXPECT_EQ(VemGetChildNodeByName(root, "x"), nullptr);  // only structures answer
    VemDeleteNode(root);
}

TEST(NodePathMap, StepsAndEntriesByType) {
    CVemBaseNode task(kVemTuiTaskNode, "Task1", 1);
    task.AddChildTail(Named("Count", kVemVariableNode));
    CVemBaseNode* s = Named("S", kVemStructNode);
    s->AddChildTail(Named("A", kVemVariableNode));
    task.AddChildTail(s);
    CVemBaseNode* fb = Named("Fb1 : TON", kVemFbNode);
    fb->AddChildTail(Named("Q", kVemVariableNode));
    task.AddChildTail(fb);
    task.AddChildTail(Named("Inst", kVemFbInstanceNode));

    CVemBaseNode top(kVemBaseNode, "top", 1);
    CVemBaseNode* taskCopy = VemClone(&task);
    taskCopy->NodeType = kVemTuiTaskNode;
    top.AddChildTail(taskCopy);

    CMapStringToOb map;
    VemBuildNodePath2NodeList(&top, "", &map);
    std::vector<std::string> keys;
    CString key;
    CObject* value = nullptr;
    for (POSITION pos = map.GetStartPosition(); pos;) {
        map.GetNextAssoc(pos, key, value);
        keys.push_back(key.str());
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"TASK1.COUNT", "TASK1.S.A", "TASK1.FB1 ", "TASK1.FB1.Q"}));
    EXPECT_FALSE(map.PLookup("TASK1.S"));

    CMapStringToOb cut;
    VemBuildNodePath2NodeList(&task, "P Q", &cut);  // the prefix is cut at its first blank
    EXPECT_TRUE(cut.PLookup("P.COUNT"));
}

TEST(NodeText, DebugFlagAndBufferForms) {
    EXPECT_EQ(VemGetDebugFlag(), 0);
    VemSetDebugFlag(3);
    EXPECT_EQ(VemGetDebugFlag(), 3);
    VemSetDebugFlag(0);
    CVemBaseNode* n = Named("Name");
    char buffer[32];
    VemGetNameEx(n, buffer);
    EXPECT_STREQ(buffer, "Name");
    VemDeleteNode(n);
}

TEST(Frame, VersionsAndModule) {
    EXPECT_EQ(GetVemDllVersion(), 9);
    VemXDelay(1000000);
    InitVem();
    EXPECT_NE(InitVem32(), nullptr);
    EXPECT_NE(GetResourceHandleVemDll(), nullptr);
}

TEST(Frame, ChecksumsAgree) {
    vemtest::TempDir dir;
    std::vector<u8> bytes;
    for (int i = 0; i < 5000; ++i) bytes.push_back(static_cast<u8>(i * 7 + 3));
    vemtest::WriteFileBytes(dir.file("f"), bytes);
    const u16 seed = 0x1D0F;
    EXPECT_EQ(VemComputeChecksum(dir.file("f").c_str(), seed),
              VemComputeChecksumForBuffer(bytes.data() + 1, static_cast<u32>(bytes.size() - 1), seed));
    vemtest::WriteFileBytes(dir.file("one"), {0x42});
    EXPECT_EQ(VemComputeChecksum(dir.file("one").c_str(), seed), seed);
    vemtest::WriteFileBytes(dir.file("empty"), {});
    EXPECT_EQ(VemComputeChecksum(dir.file("empty").c_str(), seed), 0);
    EXPECT_EQ(VemComputeChecksum(dir.file("missing").c_str(), seed), -1);
    EXPECT_EQ(VemComputeChecksumForBuffer(bytes.data(), 0, seed), seed);
    EXPECT_EQ(VemComputeChecksumForBuffer(nullptr, 5, seed), seed);
    const u8 zero = 0;
    EXPECT_EQ(VemComputeChecksumForBuffer(&zero, 1, 0), 0);
    // One byte from seed 0: table[1] = 1 << 8 shifted eight times with the step of (r ^ 5) << 1.
    const u8 one = 1;
    unsigned r = 0x100;
    for (int i = 0; i < 8; ++i) r = (r & 0x8000) ? ((r ^ 5) << 1) & 0xFFFF : (r << 1) & 0xFFFF;
    EXPECT_EQ(VemComputeChecksumForBuffer(&one, 1, 0), r);
    EXPECT_EQ(r, 0x000Au);
}
