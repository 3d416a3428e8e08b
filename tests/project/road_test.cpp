// The road of one resource: built as a compiler builds it, written as a node file and task files,
// loaded in a fresh tree, asked for addresses by path, and deleted.
#include <string>
#include <vector>

#include "alloc_hook.h"
#include "compiled_test_util.h"
#include "resource_builder.h"
#include "test_util.h"
#include "vem_settings.h"

using vemtest::MessageCapture;
using vemtest::TempDir;

using compiledtest::CodeNodePaths;
using vemtest::ChildNames;

namespace {

using vembuild::ResourceShape;

CVemBaseNode* Child(CVemBaseNode* parent, const char* name, tVemNodeType type) {
    return VemFindVemNodeByNameAndType(parent, name, type);
}

CVemBaseNode* Container(CVemBaseNode* exe) { return Child(exe, "TASKS", kVemTaskContainerNode); }

CVemBaseNode* Task(CVemBaseNode* exe, int index) {
    return Child(Container(exe), vembuild::TaskName(index).c_str(), kVemTuiTaskNode);
}

class Road : public ::testing::Test {
protected:
    void SetUp() override { LurResetSettings(); }
    void TearDown() override { LurResetSettings(); }

    // Builds and writes the resource; the tree in memory has no tasks afterwards.
    void Write(const ResourceShape& shape) {
        CVemBaseNode* exe = vembuild::BuildResource(shape);
        ASSERT_EQ(vembuild::WriteResource(exe, dir_.path(), NodeFile()), 1);
        VemDeleteNode(exe);
    }
    std::string NodeFile() const { return dir_.file("res1.vem"); }

    TempDir dir_;
    ResourceShape shape_;
};

}  // namespace

// Steps 1 to 4 in memory: numbers, filtered code nodes, absolute offsets, expanded arrays.
TEST_F(Road, CompilerSideBeforeWriting) {
    shape_.unitsPerTask = 2;
    CVemBaseNode* exe = vembuild::BuildResource(shape_);
    EXPECT_EQ(VemGetProgramNr(Task(exe, 0)), 1);
    EXPECT_EQ(VemGetProgramNr(Task(exe, 1)), 2);
    EXPECT_EQ(VemGetProgramNr(Child(Task(exe, 1), "V3", kVemVariableNode)), 2);
    CVemBaseNode* global = Child(exe, vembuild::kGlobalName, kVemBaseNode);
    EXPECT_EQ(VemGetProgramNr(Child(global, vembuild::kGlobalTaskName, kVemTuiTaskNode)), 0);

    // One code node per unit: the tasks' own, the two blocks whatever the case of their paths, and
    // GLOBAL with its function. The tasks' lists are empty.
    EXPECT_EQ(CodeNodePaths(exe),
              (std::vector<std::string>{"C:\\PRJ\\GLOBAL.st", "C:\\PRJ\\GFUN.st", "C:\\PRJ\\FB0.st", "C:\\PRJ\\FB1.st",
                                        "C:\\PRJ\\TASK1.st", "C:\\PRJ\\TASK2.st"}));
    EXPECT_TRUE(CodeNodePaths(Task(exe, 0)).empty());
    EXPECT_TRUE(CodeNodePaths(Task(exe, 1)).empty());

    // Code 20 (8 + 4 * 3), data 4 + 8 * 2 + 4 * 2 + 2 * 2 = 32, two blocks of code 20 and data 6.
    const std::vector<u32> expected = {0, 0, 20, 52, 72, 78, 98, 104};
    for (int i = 0; i < static_cast<int>(expected.size()); ++i)
        EXPECT_EQ(VemGetAbsOffset(Task(exe, 0), i), expected[i]) << i;
    EXPECT_THROW(VemGetAbsOffset(Task(exe, 0), static_cast<int>(expected.size())), CInvalidArgException);

    CVemBaseNode* array = Child(Task(exe, 0), "A0", kVemArrayNode);
    EXPECT_EQ(ChildNames(array), (std::vector<std::string>{"A0 [ 0 ] ", "A0 [ 1 ] ", "A0 [ 2 ] ", "A0 [ 3 ] "}));
    EXPECT_EQ(VemGetOffset(VemGetLastChild(array)), 4 + 16 + 6);
    VemDeleteNode(exe);
}

// Steps 4 to 7: the files, a fresh tree, addresses by path, nothing left behind.
TEST_F(Road, WrittenLoadedAskedAndDeleted) {
    vemtest::AllocationWatch watch;
    Write(shape_);
    CVemBaseNode* root = VemLoadNode(NodeFile().c_str());
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(VemGetNodeType(root), kVemExeNode);
    EXPECT_EQ(VemGetParentNode(root), nullptr);

    const tCompiledTasks counts = VemAllTaskCompiledSuccesfully(Container(root));
    EXPECT_EQ(counts.NoOfTasks, 2);
    EXPECT_EQ(counts.NoOfCompiledTasks, 2);
    EXPECT_EQ(ChildNames(Container(root)), (std::vector<std::string>{"TASK1", "TASK2"}));
    EXPECT_EQ(VemGetParentNode(Task(root, 1)), Container(root));
    EXPECT_EQ(VemGetProgramNr(Task(root, 1)), 2);

    CVemBaseNode* task = Task(root, 1);
    VemCreateChildNodePathList(task);
    // Code 20; data starts at 20 behind its header of 4.
    EXPECT_EQ(VemGetAbsoluteVariableOffset(task, "task2.v3"), 20u + 4 + 6);
    EXPECT_EQ(VemGetAbsoluteVariableOffset(task, "TASK2.A0"), 20u + 4 + 16);
    EXPECT_EQ(VemGetAbsoluteVariableOffset(task, "TASK2.S0.M1"), 20u + 4 + 16 + 8 + 2);
    // The block's variable lies in its own data segment 4, which starts at 20 + 32 + 20.
    EXPECT_EQ(VemGetAbsoluteVariableOffset(task, "TASK2.FBI0.X"), 72u + 4);
    EXPECT_EQ(VemGetAbsoluteVariableOffset(task, "TASK2.FBI0 "), 72u);
    EXPECT_EQ(VemGetAbsoluteVariableOffset(task, "TASK2.A0 [ 1 ] "), 0u);  // elements have no keys

    CVemBaseNode* array = Child(task, "A0", kVemArrayNode);
    EXPECT_EQ(VemGetReferenceNode(array), nullptr);
    EXPECT_EQ(ChildNames(array).size(), 4u);

    EXPECT_EQ(CodeNodePaths(root).size(), 5u);
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(root, 3), CString(vembuild::kGlobalFunctionPath));
    EXPECT_EQ(VemGetDeviceSettings(root)->Alignment, 2);
    EXPECT_STREQ(VemGetDatacontFilesProjectName(root), "PRJ");

    CSegmentTable* segments = VemGetSegmentTable(task);
    ASSERT_NE(VemSegTblGetSegment(segments, 2), nullptr);
    EXPECT_EQ(VemBaGetLength(VemSegTblGetSegment(segments, 2)), 32u);
    EXPECT_EQ(VemBaGetBytePointer(VemSegTblGetSegment(segments, 2))[31], 31);

    u8 ipType = 0;
    EXPECT_EQ(VemGetIpType(NodeFile().c_str(), &ipType), 1);
    EXPECT_EQ(ipType, 7);

    VemDeleteNode(root);
    EXPECT_EQ(root, nullptr);
    EXPECT_EQ(watch.Live(), 0);
}

// The files of a resource read back only with the switch with which they were written. A task
// file alone would load with its code node count left unread behind the record; but GLOBAL stands
// inline in the node file, so the executable's own fields are read two bytes too early and the file
// ends before them: the load fails, without a message. Written off and read on, it fails as well.
// Without GLOBAL (and units) the node file holds only the executable's record, whose code nodes stay
// unread behind it, and the task files the same: that loads.
TEST_F(Road, TheSwitchWhenWrittenAndWhenRead) {
    struct Row {
        int written, read;
        bool global, loads;
    };
    for (const Row& r :
         {Row{0, 0, true, true}, Row{1, 0, true, false}, Row{0, 1, true, false}, Row{1, 0, false, true}}) {
        SCOPED_TRACE(testing::Message() << r.written << r.read << r.global);
        LurSetEvemEnabled(r.written);
        shape_.unitsPerTask = r.global ? 1 : 0;
        CVemBaseNode* exe = vembuild::BuildResource(shape_);
        if (!r.global) VemDeleteChildNode(exe, Child(exe, vembuild::kGlobalName, kVemBaseNode));
        ASSERT_EQ(vembuild::WriteResource(exe, dir_.path(), NodeFile()), 1);
        VemDeleteNode(exe);
        LurSetEvemEnabled(r.read);
        MessageCapture messages;
        vemtest::AllocationWatch watch;
        CVemBaseNode* root = VemLoadNode(NodeFile().c_str());
        ASSERT_EQ(root != nullptr, r.loads);
        if (root) {
            EXPECT_EQ(ChildNames(Container(root)), (std::vector<std::string>{"TASK1", "TASK2"}));
            EXPECT_TRUE(CodeNodePaths(root).empty());
            VemCreateChildNodePathList(Task(root, 0));
            EXPECT_EQ(VemGetAbsoluteVariableOffset(Task(root, 0), "TASK1.V0"), vembuild::CodeLength(shape_) + 4u);
            VemDeleteNode(root);
        }
        EXPECT_EQ(watch.Live(), 0);
        EXPECT_TRUE(messages.texts().empty());
    }
}

// A large resource: 10 tasks of 5000 plain variables each.
TEST_F(Road, ThousandsOfVariables) {
    shape_.tasks = 10;
    shape_.variablesPerTask = 5000;
    Write(shape_);
    CVemBaseNode* root = VemLoadNode(NodeFile().c_str());
    ASSERT_NE(root, nullptr);
    EXPECT_GT(vembuild::CountNodes(root), 50000);
    CVemBaseNode* task = Task(root, 9);
    VemCreateChildNodePathList(task);
    const u32 code = vembuild::CodeLength(shape_);
    EXPECT_EQ(VemGetAbsoluteVariableOffset(task, "task10.v4999"), code + 4 + 2 * 4999);
    VemDeleteNode(root);
}
