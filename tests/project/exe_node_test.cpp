// Executable node: its tables and settings, the numbering of tasks, the code nodes of the units,
// units by code segment, and the type of the target of a node file.
#include "compiled_test_util.h"

using compiledtest::ChildNames;
using compiledtest::CodeNode;
using compiledtest::CodeNodePaths;
using compiledtest::MakeNode;
using compiledtest::Named;
using compiledtest::NodePtr;
using compiledtest::Variable;

namespace {

using ExeNode = compiledtest::SettingsTest;

CVemBaseNode* AddTask(CVemBaseNode* parent, const char* name) {
    return vemtest::Add(parent, Named(kVemTuiTaskNode, name));
}

CVemBaseNode* AddTaskWithCode(CVemBaseNode* parent, const char* name, const char* path, u16 code) {
    CVemBaseNode* task = AddTask(parent, name);
    VemSetPathName(task, path);
    VemSetSegmentNumbers(task, 2, code, 0xFFFF, 0xFFFF);
    return task;
}

}  // namespace

TEST_F(ExeNode, TablesAndTaskDefinitionSegmentAreHandedOver) {
    NodePtr exe = MakeNode(kVemExeNode);
    CSegmentTable* segments = VemSegTblNew();
    CSegmentTable* components = VemSegTblNew();
    CSegmentTable* givenSegments = segments;
    CSegmentTable* givenComponents = components;
    VemSetSegmentTable(exe.get(), segments);
    VemSetComponentList(exe.get(), components);
    EXPECT_EQ(segments, nullptr);
    EXPECT_EQ(components, nullptr);
    EXPECT_EQ(VemGetSegmentTable(exe.get()), givenSegments);
    EXPECT_EQ(VemGetComponentList(exe.get()), givenComponents);
    CVemByteArray* taskDefs = VemBaNewByteArray(0, 1, 1, 0);
    VemBaAppendWord(taskDefs, 0x0102);
    VemSetTaskDefSegment(exe.get(), taskDefs);
    EXPECT_EQ(VemGetTaskDefSegment(exe.get()), taskDefs);
    EXPECT_EQ(exe->GetTaskDefSegmentBytePointer(), VemBaGetBytePointer(taskDefs));
    EXPECT_EQ(exe->GetTaskDefSegmentBytePointer()[0], 0x02);
}

TEST_F(ExeNode, ProgramNumbersSkipOtherChildren) {
    NodePtr exe = MakeNode(kVemExeNode);
    CVemBaseNode* tasks = vemtest::Add(exe.get(), VemNewNode(kVemTaskContainerNode));
    CVemBaseNode* first = AddTask(tasks, "T1");
    VemAddChildTail(first, Variable("V", 0, 2));
    VemAddChildTail(tasks, Variable("NOT_A_TASK", 0, 2));
    CVemBaseNode* second = AddTask(tasks, "T2");
    CVemBaseNode* third = AddTask(tasks, "T3");
    CVemBaseNode* global = vemtest::Add(exe.get(), Named(kVemBaseNode, "Global - Resource"));
    CVemBaseNode* globalTask = AddTask(global, "G");
    VemComputeProgramNumbers(exe.get(), 0);
    EXPECT_EQ(VemGetProgramNr(first), 1);
    EXPECT_EQ(VemGetProgramNr(second), 2);
    EXPECT_EQ(VemGetProgramNr(third), 3);
    EXPECT_EQ(VemGetProgramNr(VemGetLastChild(first)), 1);  // through the whole subtree
    EXPECT_EQ(VemGetProgramNr(globalTask), 0);
    VemComputeProgramNumbers(exe.get(), 1);
    EXPECT_EQ(VemGetProgramNr(first), 0);
    EXPECT_EQ(VemGetProgramNr(third), 0);
    EXPECT_EQ(VemGetProgramNr(VemGetLastChild(first)), 0);
}

// The task container is preferred to a task node named TASKS; a node of another type named TASKS
// or a container with another name numbers nothing.
TEST_F(ExeNode, ContainerIsPreferredToATaskNode) {
    NodePtr exe = MakeNode(kVemExeNode);
    CVemBaseNode* plain = vemtest::Add(exe.get(), Named(kVemTaskNode, "TASKS"));
    CVemBaseNode* inPlain = AddTask(plain, "A");
    CVemBaseNode* container = vemtest::Add(exe.get(), VemNewNode(kVemTaskContainerNode));
    CVemBaseNode* inContainer = AddTask(container, "B");
    CVemBaseNode* other = Named(kVemBaseNode, "TASKS");  // right name, wrong type
    VemAddChildHead(exe.get(), other);
    CVemBaseNode* lower = Named(kVemTaskContainerNode, "tasks");  // right type, wrong case
    VemAddChildHead(exe.get(), lower);
    CVemBaseNode* inOther = AddTask(other, "C");
    CVemBaseNode* inLower = AddTask(lower, "D");
    VemComputeProgramNumbers(exe.get(), 0);
    EXPECT_EQ(VemGetProgramNr(inContainer), 1);
    EXPECT_EQ(VemGetProgramNr(inPlain), 0);
    VemDeleteChildNode(exe.get(), container);
    VemComputeProgramNumbers(exe.get(), 0);
    EXPECT_EQ(VemGetProgramNr(inPlain), 1);
    EXPECT_EQ(VemGetProgramNr(inOther), 0);
    EXPECT_EQ(VemGetProgramNr(inLower), 0);
}

TEST_F(ExeNode, UndefinedCodeNodeIsDeleted) {
    NodePtr exe = MakeNode(kVemExeNode);
    NodePtr task = MakeNode(kVemTuiTaskNode, "T1");
    CEVemBaseNode* undefined = CodeNode("C:\\PRJ\\U.st");
    undefined->NodeType = kEVemUndefNode;
    VemGetEvemRootNodeListPtr(task.get())->AddTail(undefined);
    VemGetEvemRootNodeListPtr(task.get())->AddTail(CodeNode("C:\\PRJ\\U.st"));
    EXPECT_EQ(VemAddFilteredEvemNodes(exe.get(), task.get()), 1);
    EXPECT_EQ(CodeNodePaths(exe.get()), std::vector<std::string>{"C:\\PRJ\\U.st"});
    EXPECT_EQ(EVemGetNodeType(static_cast<CEVemBaseNode*>(VemGetEvemRootNodeListPtr(exe.get())->GetHead())),
              kEVemPouCodeNode);
}

TEST_F(ExeNode, FilteringLeavesOtherNodesAndTheSwitchOffAlone) {
    NodePtr exe = MakeNode(kVemExeNode);
    NodePtr task = MakeNode(kVemTuiTaskNode, "T1");
    VemGetEvemRootNodeListPtr(task.get())->AddTail(CodeNode("C:\\PRJ\\A.st"));
    NodePtr program = MakeNode(kVemProgramNode, "P");
    EXPECT_EQ(VemAddFilteredEvemNodes(exe.get(), program.get()), 1);
    EXPECT_EQ(VemAddFilteredEvemNodes(exe.get(), nullptr), 1);
    LurSetEvemEnabled(0);
    EXPECT_EQ(VemAddFilteredEvemNodes(exe.get(), task.get()), 1);
    LurSetEvemEnabled(1);
    EXPECT_EQ(VemGetEvemRootNodeListPtr(task.get())->GetCount(), 1);
    EXPECT_TRUE(VemGetEvemRootNodeListPtr(exe.get())->IsEmpty());
    NodePtr resource = MakeNode(kVemResourceNode);
    EXPECT_EQ(VemAddFilteredEvemNodes(resource.get(), task.get()), 0);  // only the executable takes them
}

TEST_F(ExeNode, UnitPathsOfGlobalTasksOnly) {
    NodePtr exe = MakeNode(kVemExeNode);
    CVemBaseNode* tasks = vemtest::Add(exe.get(), VemNewNode(kVemTaskContainerNode));
    AddTaskWithCode(tasks, "T1", "C:\\PRJ\\T1.st", 7);
    CVemBaseNode* global = vemtest::Add(exe.get(), Named(kVemBaseNode, "Global - Resource"));
    AddTaskWithCode(global, "G1", "C:\\PRJ\\G1.st", 5);
    CVemBaseNode* second = AddTaskWithCode(global, "G2", "C:\\PRJ\\G2.st", 6);
    CVemBaseNode* fun = VemCreateCVemFunctionNode("F", "C:\\PRJ\\F.st");
    VemSetSegmentNumbers(fun, 2, 5, 0xFFFF, 0xFFFF);
    VemAddChildTail(second, fun);
    AddTaskWithCode(exe.get(), "DIRECT", "C:\\PRJ\\D.st", 8);
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(exe.get(), 5), CString("C:\\PRJ\\G1.st"));  // the first answer stands
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(exe.get(), 6), CString("C:\\PRJ\\G2.st"));
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(exe.get(), 8), CString("C:\\PRJ\\D.st"));
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(exe.get(), 7), CString());  // below "TASKS"
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(nullptr, 5), CString());
}

TEST_F(ExeNode, IpTypeOfANodeFile) {
    vemtest::TempDir dir;
    NodePtr exe = MakeNode(kVemExeNode, "R");
    tVemDeviceSettings settings = *VemGetDeviceSettings(exe.get());
    settings.IpType = 42;
    VemSetDeviceSettings(exe.get(), settings);
    ASSERT_EQ(VemWriteNode(exe.get(), dir.file("exe.vem").c_str()), 1);
    NodePtr resource = MakeNode(kVemResourceNode, "R");
    ASSERT_EQ(VemWriteNode(resource.get(), dir.file("res.vem").c_str()), 1);
    u8 ipType = 0;
    EXPECT_EQ(VemGetIpType(dir.file("exe.vem").c_str(), &ipType), 1);
    EXPECT_EQ(ipType, 42);
    ipType = 5;
    EXPECT_EQ(VemGetIpType(dir.file("res.vem").c_str(), &ipType), 0);
    EXPECT_EQ(ipType, 5);
    EXPECT_EQ(VemGetIpType(dir.file("missing.vem").c_str(), &ipType), 0);
    EXPECT_EQ(ipType, 5);
}
