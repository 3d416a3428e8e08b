// Compiled task: the dump, step by step.
#include "compiled_test_util.h"

using compiledtest::CodeNode;
using compiledtest::Contains;
using compiledtest::DumpText;
using compiledtest::MakeNode;
using compiledtest::NodePtr;
using compiledtest::Variable;

namespace {

using TuiTaskDump = compiledtest::SettingsTest;

const std::string kRule = "========================================  \n";

// The task's own part of the dump: what stands before the program's.
std::string OwnPart(const std::string& dump) { return dump.substr(0, dump.find("P>*PROGRAMNODE: ")); }

NodePtr TaskWithVariable(bool offsets) {
    NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
    VemAddChildTail(task.get(), Variable("V", 4, 2));
    if (offsets) {
        VemAddNewSegmentLength(task.get(), 100);
        VemAddNewSegmentLength(task.get(), 50);
    }
    return task;
}

std::string Head() {
    return "P>*TUITASKNODE: TASK1\nP>GlobalFlag: 0 \n\nP>" + kRule +
           "P>======== Dump of SegmentTable in TuiTaskNode =========\n \nP>No Segmenttable found !! \n"
           "P>======== AbsoluteOffsetTable and ChildNodePathList ========= ";
}

std::string ContainerAndEnd() {
    return "P>======== Datacontainer ========= \nP>No Datacontainermembers found !! \n\nP>" + kRule +
           "P>======== TuiTaskNode has EVEM Information for following Pou's   ========= "
           "\nP>No EVEM Information for this OEM !! \n\nP>" +
           kRule;
}

}  // namespace

TEST_F(TuiTaskDump, OffsetsAndPathsWithTheSwitchOff) {
    LurSetEvemEnabled(0);
    NodePtr task = TaskWithVariable(true);
    VemCreateChildNodePathList(task.get());
    const std::string expected = Head() +
                                 "\nP>SegmentNr: 1 ->Offset:0\nP>SegmentNr: 2 ->Offset:100\nP>SegmentNr: 3 ->Offset:150"
                                 "\nP>" + kRule + "\nP>Variable: TASK1.V ->Offset:104\nP>" + kRule + ContainerAndEnd();
    const std::string dump = DumpText(task.get(), "P>");
    EXPECT_EQ(OwnPart(dump), expected);
    EXPECT_TRUE(Contains(dump, "P>*PROGRAMNODE: TASK1\nP>GlobalFlag: 0 \n"));
    EXPECT_TRUE(Contains(dump, "P>  - *VARIABLE: V\n"));
}

TEST_F(TuiTaskDump, WithoutMapOrOffsets) {
    LurSetEvemEnabled(0);
    NodePtr task = TaskWithVariable(true);
    EXPECT_EQ(OwnPart(DumpText(task.get(), "P>")),
              Head() + "\nP>No AbsoluteOffsetTable  found !! \n" + ContainerAndEnd());
}

TEST_F(TuiTaskDump, MapWithoutOffsetsListsTheNodes) {
    LurSetEvemEnabled(0);
    NodePtr task = TaskWithVariable(false);
    VemCreateChildNodePathList(task.get());
    EXPECT_EQ(OwnPart(DumpText(task.get(), "P>")),
              Head() + "\nP>No AbsoluteOffsetTable  found !! \n\nP>Dump of Childnodepathlist " +
                  "\nP>Variable: TASK1.V ->NodeName:V , SegmentNummer:2\nP>" + kRule + ContainerAndEnd());
}

// The table writes its own dump at once, so its lines stand ahead of the task's head line.
TEST_F(TuiTaskDump, SegmentTableStandsFirst) {
    NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
    CVemByteArray* segment = VemBaNewByteArray(0, 1, 1, 0);
    VemBaAppendByte(segment, 1);
    VemSegTblAddNewSegment(VemGetSegmentTable(task.get()), segment);
    const std::string dump = DumpText(task.get(), "P>");
    EXPECT_EQ(dump.find("P>======== Dump of SegmentTable ========= \n"), 0u);
    EXPECT_LT(dump.find("End Dump of SegmentTable"), dump.find("P>*TUITASKNODE: TASK1"));
    EXPECT_FALSE(Contains(dump, "No Segmenttable found"));
}

TEST_F(TuiTaskDump, ContainerFiles) {
    vemtest::TempDir dir;
    vemtest::WriteFileText(dir.file("t.cfg"), "cfg");
    NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
    VemAddContainerFile(task.get(), dir.file("t.cfg").c_str(), "CFG", 3);
    VemSetContainerFileCheckSum(task.get(), "CFG", 77);
    EXPECT_TRUE(Contains(DumpText(task.get(), "P>"),
                         "P>======== Datacontainer ========= \nP>File: CFG -> Filetype: 3, Checksum: 77\nP>" + kRule));
}

TEST_F(TuiTaskDump, CodeNodesWithTheSwitchOn) {
    NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
    VemGetEvemRootNodeListPtr(task.get())->AddTail(CodeNode("C:\\PRJ\\A.st"));
    const std::string dump = DumpText(task.get(), "P>");
    const std::string head = "P>======== TuiTaskNode has EVEM Information for following Pou's   ========= \nP>C:\\PRJ\\A.st\n";
    ASSERT_TRUE(Contains(dump, head));
    const std::string codeDump = dump.substr(dump.find(head) + head.size());
    EXPECT_EQ(codeDump.find("\nP>->>Version = 3\n"), 0u);
    EXPECT_TRUE(Contains(codeDump, "\nP>" + kRule + "P>*PROGRAMNODE: TASK1"));
    EXPECT_FALSE(Contains(dump, "No EVEM Information"));
}
