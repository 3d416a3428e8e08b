// Executable node: the dump with its device settings, tables, files and code nodes.
#include "compiled_test_util.h"

using compiledtest::CodeNode;
using compiledtest::Contains;
using compiledtest::DumpText;
using compiledtest::MakeNode;
using compiledtest::NodePtr;

namespace {

using ExeDump = compiledtest::SettingsTest;

const std::string kRule = "========================================  \n";

const std::string kFlagsOff =
    "P>    Format:  Intel \n"
    "P>    SegmentTabelle TaskGlobal \n"
    "P>    Online Linking disabled\n"
    "P>    incremental download disabled\n"
    "P>    two segment tables at online linking \n"
    "P>    no online Editor possible\n"
    "P>    only resources can be downloaded"
    "P>    only whole resources can be started\n";

const std::string kFlagsOn =
    "P>    Format: MOTOROLA \n"
    "P>    SegmentTabelle resource global \n"
    "P>    online linking enabled\n"
    "P>    incremental download enabled\n"
    "P>    one segment table at online linking \n"
    "P>\tonline Editor possible\n"
    "P>\tTask can be downloaded seperatly\n"
    "P>     Task can be started seperatly\n";

std::string Expected(const std::string& flags, int maxWatch) {
    return "P>*EXENODE: R\nP> Device Settings \n" + flags + "Max Watch Entries: " + std::to_string(maxWatch) +
           "\n\nP>" + kRule + "P>============= Dump of Task Defintion Segment =====================\n" +
           "\nP>No Segmenttable found !! \n\nP>No Componentlist found !! \n\nP>" + kRule +
           "P>======== Datacontainer ========= \nP>No Datacontainermembers found !! \n\nP>" + kRule +
           "P>======== EXENODE has EVEM Information for following Pou's   ========= "
           "\nP>No EVEM Information for this OEM !! \n\nP>" +
           kRule + "P>BaseNodeType: 12\n";
}

}  // namespace

TEST_F(ExeDump, NewNodeWithTheSwitchOff) {
    LurSetEvemEnabled(0);
    NodePtr exe = MakeNode(kVemExeNode, "R");
    EXPECT_EQ(DumpText(exe.get(), "P>"), Expected(kFlagsOff, 0));
}

TEST_F(ExeDump, EveryFlagSet) {
    LurSetEvemEnabled(0);
    NodePtr exe = MakeNode(kVemExeNode, "R");
    tVemDeviceSettings s = *VemGetDeviceSettings(exe.get());
    s.MotorolaFormat = s.ResourceGlobalSegTable = s.OnlineLinking = s.IncrementalDownload = 1;
    s.OneSegTableAtOnlineLinking = s.OnlineEditor = s.TaskDownload = s.TaskStart = 2;
    s.MaxWatchEntries = 300;
    VemSetDeviceSettings(exe.get(), s);
    EXPECT_EQ(DumpText(exe.get(), "P>"), Expected(kFlagsOn, 300));
}

TEST_F(ExeDump, TaskDefinitionSegmentLineByLine) {
    NodePtr exe = MakeNode(kVemExeNode, "R");
    CVemByteArray* taskDefs = VemBaNewByteArray(0, 1, 1, 0);
    for (int i = 0; i < 20; ++i) VemBaAppendByte(taskDefs, static_cast<u8>(i));
    VemSetTaskDefSegment(exe.get(), taskDefs);
    CStringArray lines;
    VemBaDump(taskDefs, lines);
    ASSERT_GT(lines.GetSize(), 0);
    std::string expected = "P>============= Dump of Task Defintion Segment =====================\n";
    for (int i = 0; i < lines.GetSize(); ++i) expected += "P>" + lines[i].str() + "\n";
    expected += "\nP>No Segmenttable found !! \n";
    EXPECT_TRUE(Contains(DumpText(exe.get(), "P>"), expected));
}

// Both tables print straight to the file, ahead of the text gathered so far.
TEST_F(ExeDump, TablesStandAheadOfTheHead) {
    NodePtr exe = MakeNode(kVemExeNode, "R");
    VemSegTblAddNewSegment(VemGetSegmentTable(exe.get()), VemBaNewByteArray(0, 1, 1, 0));
    VemSegTblAddNewSegment(VemGetComponentList(exe.get()), VemBaNewByteArray(0, 1, 1, 0));
    const std::string dump = DumpText(exe.get(), "P>");
    const std::size_t head = dump.find("P>*EXENODE: R");
    EXPECT_EQ(dump.find("P>======== Dump of SegmentTable ========= \n"), 0u);
    const std::size_t second = dump.find("P>======== Dump of SegmentTable ========= \n", 1);
    EXPECT_LT(second, head);
    EXPECT_TRUE(Contains(dump.substr(head), "P>============= Dump of Task Defintion Segment =====================\n"
                                            "\nP> ============== Dump of Component List ===================== \n"
                                            "\nP>" + kRule));
    EXPECT_FALSE(Contains(dump, "No Segmenttable found"));
    EXPECT_FALSE(Contains(dump, "No Componentlist found"));
}

TEST_F(ExeDump, CodeNodesAndChildren) {
    NodePtr exe = MakeNode(kVemExeNode, "R");
    VemGetEvemRootNodeListPtr(exe.get())->AddTail(CodeNode("C:\\PRJ\\A.st"));
    VemGetEvemRootNodeListPtr(exe.get())->AddTail(CodeNode("C:\\PRJ\\B.st"));
    VemAddChildTail(exe.get(), VemNewNode(kVemTaskContainerNode));
    const std::string dump = DumpText(exe.get(), "P>");
    const std::string head = "P>======== EXENODE has EVEM Information for following Pou's   ========= \nP>C:\\PRJ\\A.st\n";
    ASSERT_TRUE(Contains(dump, head));
    const std::string rest = dump.substr(dump.find(head) + head.size());
    EXPECT_EQ(rest.find("\nP>->>Version = 3\n"), 0u);
    EXPECT_LT(rest.find("\nP>C:\\PRJ\\B.st\n"), rest.find("\nP>" + kRule + "P>BaseNodeType: 12\nP>  - *TUITASKNODE: TASKS\n"));
    EXPECT_FALSE(Contains(dump, "No EVEM Information"));
}

// Project code 271 asks for the line maps behind the code nodes; the dump closes the same way.
TEST_F(ExeDump, LineMapsOnlyAddToTheDump) {
    NodePtr exe = MakeNode(kVemExeNode, "R");
    VemGetEvemRootNodeListPtr(exe.get())->AddTail(CodeNode("C:\\PRJ\\A.st"));
    const std::string plain = DumpText(exe.get(), "P>");
    LurSetProjectCode(271);
    const std::string withMaps = DumpText(exe.get(), "P>");
    const std::string end = "\nP>" + kRule + "P>BaseNodeType: 12\n";
    EXPECT_EQ(withMaps.substr(withMaps.size() - end.size()), end);
    EXPECT_EQ(withMaps.substr(0, plain.size() - end.size()), plain.substr(0, plain.size() - end.size()));
}
