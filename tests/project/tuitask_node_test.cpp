// Compiled task: its tables, the absolute offsets, the path map, the units by code segment.
#include "compiled_test_util.h"

using compiledtest::MakeNode;
using compiledtest::Named;
using compiledtest::NodePtr;
using compiledtest::Variable;

namespace {

using TuiTask = compiledtest::SettingsTest;

// A task whose table is 0, 0, 100, 150, 175.
NodePtr TaskWithSegments(const char* name = "TASK1") {
    NodePtr task = MakeNode(kVemTuiTaskNode, name);
    VemAddNewSegmentLength(task.get(), 100);
    VemAddNewSegmentLength(task.get(), 50);
    VemAddNewSegmentLength(task.get(), 25);
    return task;
}

}  // namespace

// The starts run on from segment 2 and wrap in sixteen bits.
TEST_F(TuiTask, SegmentLengthsGiveRunningStarts) {
    NodePtr task = TaskWithSegments();
    VemAddNewSegmentLength(task.get(), 65530);
    VemAddNewSegmentLength(task.get(), 10);
    const u32 expected[] = {0, 0, 100, 150, 175, 65705 & 0xFFFF, (65705 + 10) & 0xFFFF};
    for (int i = 0; i < 7; ++i) EXPECT_EQ(VemGetAbsOffset(task.get(), i), expected[i]) << i;
    EXPECT_THROW(VemGetAbsOffset(task.get(), 7), CInvalidArgException);
    EXPECT_THROW(VemGetAbsOffset(task.get(), -1), CInvalidArgException);
    NodePtr bare = MakeNode(kVemTuiTaskNode, "TASK1");  // no starts and no path map yet
    EXPECT_THROW(VemGetAbsOffset(bare.get(), 0), CInvalidArgException);
    EXPECT_EQ(VemGetAbsoluteVariableOffset(bare.get(), "TASK1.ANY"), 0u);
}

TEST_F(TuiTask, SegmentTableIsHandedOver) {
    NodePtr task = MakeNode(kVemTuiTaskNode);
    CSegmentTable* table = VemSegTblNew();
    VemSegTblAddNewSegment(table, VemBaNewByteArray(0, 1, 1, 0));
    CSegmentTable* given = table;
    VemSetSegmentTable(task.get(), table);
    EXPECT_EQ(table, nullptr);
    EXPECT_EQ(VemGetSegmentTable(task.get()), given);
    CSegmentTable* none = nullptr;
    VemSetSegmentTable(task.get(), none);  // a null table leaves a new empty one
    ASSERT_NE(VemGetSegmentTable(task.get()), nullptr);
    EXPECT_EQ(VemSegTblGetNoOfSegments(VemGetSegmentTable(task.get())), 0);
    EXPECT_EQ(VemSegTblGetStartSegmentNo(VemGetSegmentTable(task.get())), 0);
}

// Icons and the class of the clone are in node_classes_test.cpp.
TEST_F(TuiTask, TextWithTheDebugFlag) {
    NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
    NodePtr program = MakeNode(kVemProgramNode, "P");
    VemSetDebugFlag(1);
    EXPECT_EQ(VemGetNodeText(task.get()), CString("TASK1"));
    EXPECT_NE(VemGetNodeText(program.get()), CString("P"));
    VemSetDebugFlag(0);
}

TEST_F(TuiTask, UnitPathByCodeSegment) {
    NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
    VemSetPathName(task.get(), "C:\\PRJ\\TASK1.st");
    VemSetSegmentNumbers(task.get(), 2, 1, 0xFFFF, 0xFFFF);
    CVemBaseNode* fb = VemCreateCVemFbNode("a : FBA", "C:\\PRJ\\FBA.st");
    VemSetSegmentNumbers(fb, 4, 3, 0xFFFF, 0xFFFF);
    CVemBaseNode* inner = VemCreateCVemFunctionNode("F", "C:\\PRJ\\F.st");
    VemSetSegmentNumbers(inner, 4, 5, 0xFFFF, 0xFFFF);
    VemAddChildTail(fb, inner);
    CVemBaseNode* fun = VemCreateCVemFunctionNode("G", "C:\\PRJ\\G.st");
    VemSetSegmentNumbers(fun, 4, 6, 0xFFFF, 0xFFFF);
    CVemBaseNode* program = VemNewNode(kVemProgramNode);
    VemSetPathName(program, "C:\\PRJ\\P.st");
    VemSetSegmentNumbers(program, 4, 7, 0xFFFF, 0xFFFF);
    VemAddChildTail(task.get(), Variable("V", 0, 2));
    VemAddChildTail(task.get(), fb);
    VemAddChildTail(task.get(), fun);
    VemAddChildTail(task.get(), program);
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(task.get(), 1), CString("C:\\PRJ\\TASK1.st"));
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(task.get(), 3), CString("C:\\PRJ\\FBA.st"));
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(task.get(), 5), CString("C:\\PRJ\\F.st"));
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(task.get(), 6), CString("C:\\PRJ\\G.st"));
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(task.get(), 7), CString());  // programs are not asked
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(task.get(), 8), CString());
}

// The task's and the executable's; the project name and the user level are the executable's only.
TEST_F(TuiTask, DataContainerFunctionsReachTheContainer) {
    vemtest::TempDir dir;
    vemtest::WriteFileText(dir.file("a.bin"), "x");
    for (tVemNodeType type : {kVemTuiTaskNode, kVemExeNode}) {
        NodePtr node = MakeNode(type);
        EXPECT_EQ(VemSetContainerFileCheckSum(node.get(), "KEY", 1), 0);
        EXPECT_EQ(VemAddContainerFile(node.get(), dir.file("a.bin").c_str(), "KEY", 7), 1);
        EXPECT_EQ(VemSetContainerFileCheckSum(node.get(), "KEY", 0x1234), 1);
        EXPECT_EQ(VemGetContainerFileType(node.get(), "KEY"), 7u);
        EXPECT_EQ(VemGetContainerFileCheckSum(node.get(), "KEY"), 0x1234u);
        CVemByteArray array;
        EXPECT_EQ(VemWriteContainerFileContents2VemByteArray(node.get(), "KEY", &array), 1);
        EXPECT_EQ(VemGetContainerFileType(node.get(), "OTHER"), 0u);
        CStringList keys;
        EXPECT_EQ(VemGetContainerFileList(node.get(), &keys), 1);
        ASSERT_EQ(keys.GetCount(), 1);
        EXPECT_EQ(keys.GetHead(), CString("KEY"));
        CVemByteArray contents = VemGetContainerFileContents(node.get(), "KEY");
        EXPECT_EQ(VemBaGetLength(&contents), 0u);
        VemSetDatacontFilesProjectName(node.get(), "PROJECT");
        EXPECT_EQ(VemGetDatacontFilesProjectName(node.get()) == nullptr, type == kVemTuiTaskNode);
    }
}
