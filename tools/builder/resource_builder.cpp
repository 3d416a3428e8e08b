#include "resource_builder.h"

#include <array>

namespace vembuild {

namespace {

constexpr u16 kNoSegment = 0xFFFF;
constexpr u16 kCodeSegment = 1;
constexpr u16 kDataSegment = 2;
constexpr u16 kIntSize = 2;
constexpr int kSegmentKinds = 136;

constexpr std::array<u16, kSegmentKinds> kStartOffsets = [] {
    std::array<u16, kSegmentKinds> starts{};
    starts[kIpSegData] = kDataHeader;
    return starts;
}();

CVemBaseNode* IntVariable(const std::string& name, u16 offset) {
    CVemBaseNode* v = VemCreateCVemVariableNode(name.c_str(), offset, kCbeTypeInt, kIntSize, 0);
    VemSetSubSegmentKind(v, kIpSegData);
    return v;
}

// A segment of the given length in the target's format, filled with a pattern.
u16 AddSegment(CSegmentTable* table, const ResourceShape& shape, u16 length) {
    CVemByteArray* array = VemBaNewByteArray(0, shape.alignment, 1, 0);
    for (u16 i = 0; i < length; ++i) VemBaAppendByte(array, static_cast<u8>(i));
    return VemSegTblAddNewSegment(table, array);
}

CVemBaseNode* IntArray(const ResourceShape& shape, int index) {
    CVemBaseNode* a = Named(kVemArrayNode, Numbered("A", index));
    VemSetOffset(a, ArrayOffset(shape, index));
    VemSetSize(a, static_cast<u16>(kIntSize * shape.arrayLength));
    VemSetSubSegmentKind(a, kIpSegData);
    VemSetDimRange4Index(VemGetRange(a), 0, tVemDimRange{0, shape.arrayLength - 1, 0});
    VemAddChildTail(a, VemCreateCVemVariableNode("", 0, kCbeTypeInt, kIntSize, 0));
    return a;
}

CVemBaseNode* IntStruct(const ResourceShape& shape, int index) {
    CVemBaseNode* s = Named(kVemStructNode, Numbered("S", index));
    VemSetOffset(s, StructOffset(shape, index));
    VemSetSize(s, static_cast<u16>(kIntSize * shape.membersPerStruct));
    VemSetSubSegmentKind(s, kIpSegData);
    for (int m = 0; m < shape.membersPerStruct; ++m) {
        VemAddChildTail(s, VemCreateCVemVariableNode(Numbered("M", m).c_str(), static_cast<u16>(kIntSize * m),
                                                     kCbeTypeInt, kIntSize, 0));
    }
    return s;
}

// A code node of the unit with its statements, or null with the statement model off.
CEVemBaseNode* CodeNode(const ResourceShape& shape, const std::string& name, const std::string& path,
                        tEVemPouType kind) {
    CEVemBaseNode* code = EVemCreateNode(kEVemPouCodeNode, name.c_str());
    if (!code) return nullptr;
    EVemSetPathName(code, path.c_str());
    EVemSetPouType(code, kind);
    for (int i = 0; i < shape.statementsPerUnit; ++i) {
        const tEVemNodeType type = i == 0 ? kEVemLdVariableStmtNode : kEVemStVariableStmtNode;
        CEVemBaseNode* statement = EVemAddNewStmtNode(code, type);
        EVemSetName(statement, Numbered("V", i).c_str());
        EVemSetAwlLine(statement, static_cast<u16>(10 + i));
        EVemSetUcodeOffset(statement, static_cast<u16>(4 * i));
    }
    return code;
}

std::string LowerCase(std::string text) {
    for (char& c : text) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return text;
}

// Segment 0 is reserved; the task's code and data are 1 and 2.
void AddTaskSegments(CVemBaseNode* task, const ResourceShape& shape, u16 dataLength) {
    CSegmentTable* table = VemGetSegmentTable(task);
    VemSegTblAddNewSegment(table, nullptr);
    AddSegment(table, shape, CodeLength(shape));
    AddSegment(table, shape, dataLength);
}

void AddFunctionBlocks(CVemBaseNode* task, const ResourceShape& shape, int taskIndex) {
    CSegmentTable* table = VemGetSegmentTable(task);
    for (int k = 0; k < shape.unitsPerTask; ++k) {
        const u16 code = AddSegment(table, shape, CodeLength(shape));
        const u16 data = AddSegment(table, shape, kDataHeader + kIntSize);
        CVemBaseNode* fb = VemCreateCVemFbNode(UnitName(k).c_str(), UnitPath(k).c_str());
        VemAddChildTail(fb, IntVariable("X", 0));
        VemSetSegmentNumbers(fb, data, code, kNoSegment, kNoSegment);
        VemAddChildTail(task, fb);
        const std::string path = taskIndex % 2 ? LowerCase(UnitPath(k)) : UnitPath(k);
        AddCodeNode(task, CodeNode(shape, Numbered("FB", k), path, kEVemPouFunctionBlock));
    }
}

// The task's own entry of the task definition segment: its code and data segment.
CVemByteArray* TaskDefEntry(const ResourceShape& shape) {
    CVemByteArray* entry = VemBaNewByteArray(0, shape.alignment, 1, 0);
    VemBaAppendWord(entry, kCodeSegment);
    VemBaAppendWord(entry, kDataSegment);
    return entry;
}

CVemBaseNode* CompiledTask(CVemBaseNode* container, const ResourceShape& shape, int index) {
    CVemBaseNode* task = Named(kVemTuiTaskNode, TaskName(index));
    VemSetPathName(task, TaskPath(index).c_str());
    VemAddChildTail(container, task);  // below the executable node before its arrays expand
    for (int i = 0; i < shape.variablesPerTask; ++i)
        VemAddChildTail(task, IntVariable(Numbered("V", i), VariableOffset(i)));
    for (int j = 0; j < shape.arraysPerTask; ++j) VemAddChildTail(task, IntArray(shape, j));
    for (int j = 0; j < shape.structsPerTask; ++j) VemAddChildTail(task, IntStruct(shape, j));
    AddTaskSegments(task, shape, TaskDataLength(shape));
    AddFunctionBlocks(task, shape, index);
    VemSetSegmentNumbers(task, kDataSegment, kCodeSegment, kNoSegment, kNoSegment);
    VemComputeOffsets(task, StartOffsets());
    VemExpandArray(task);
    AddSegmentLengths(task);
    VemSetTaskDefEntry(task, TaskDefEntry(shape));
    AddCodeNode(task, CodeNode(shape, TaskName(index), TaskPath(index), kEVemPouProg));
    return task;
}

CVemBaseNode* GlobalTask(CVemBaseNode* global, const ResourceShape& shape) {
    CVemBaseNode* task = Named(kVemTuiTaskNode, kGlobalTaskName);
    VemSetPathName(task, "C:\\PRJ\\GLOBAL.st");
    VemSetGlobal(task, 1);
    VemAddChildTail(global, task);
    for (int i = 0; i < shape.globalVariables; ++i)
        VemAddChildTail(task, IntVariable(Numbered("G", i), VariableOffset(i)));
    const u16 dataLength = static_cast<u16>(kDataHeader + kIntSize * shape.globalVariables);
    AddTaskSegments(task, shape, dataLength);
    const u16 functionCode = AddSegment(VemGetSegmentTable(task), shape, CodeLength(shape));
    CVemBaseNode* function = VemCreateCVemFunctionNode("GFUN", kGlobalFunctionPath);
    VemSetSegmentNumbers(function, kDataSegment, functionCode, kNoSegment, kNoSegment);
    VemAddChildTail(task, function);
    VemSetSegmentNumbers(task, kDataSegment, kCodeSegment, kNoSegment, kNoSegment);
    VemComputeOffsets(task, StartOffsets());
    AddSegmentLengths(task);
    AddCodeNode(task, CodeNode(shape, kGlobalTaskName, "C:\\PRJ\\GLOBAL.st", kEVemPouProg));
    AddCodeNode(task, CodeNode(shape, "GFUN", kGlobalFunctionPath, kEVemPouFunction));
    return task;
}

tVemDeviceSettings DeviceSettings(const ResourceShape& shape) {
    tVemDeviceSettings settings{};
    settings.Alignment = shape.alignment;
    settings.ByteSize = shape.byteSize;
    settings.IpType = shape.ipType;
    settings.MaxWatchEntries = 64;
    settings.TaskDownload = 1;
    return settings;
}

// The resource's own tables: the task definition segment (each task's entry one behind the
// other) also as resource segment 1, and one component per task.
void FillResourceTables(CVemBaseNode* exe, CVemBaseNode* container, const ResourceShape& shape) {
    CVemByteArray* taskDefs = VemBaNewByteArray(0, shape.alignment, 1, 0);
    CSegmentTable* components = VemGetComponentList(exe);
    VemSegTblAddNewSegment(components, nullptr);
    CObList* tasks = VemGetChildList(container);
    for (POSITION pos = tasks->GetHeadPosition(); pos;) {
        auto* task = static_cast<CVemBaseNode*>(tasks->GetNext(pos));
        VemBaAppend(taskDefs, VemGetTaskDefEntry(task));
        CVemByteArray* component = VemBaNewByteArray(0, shape.alignment, 1, 0);
        VemBaAppendWord(component, VemGetProgramNr(task));
        VemSegTblAddNewSegment(components, component);
    }
    CSegmentTable* segments = VemGetSegmentTable(exe);
    VemSegTblAddNewSegment(segments, nullptr);
    VemSegTblAddNewSegment(segments, VemBaClone(taskDefs));
    VemAddNewSegmentLength(exe, static_cast<u16>(VemBaGetLength(taskDefs)));
    VemSetTaskDefSegment(exe, taskDefs);
    VemSetDatacontFilesProjectName(exe, "PRJ");
    VemSetDatacontFilesUserLevel(exe, 3);
}

void CountBelow(CVemBaseNode* node, long& count) {
    ++count;
    CObList* children = VemGetChildList(node);
    for (POSITION pos = children->GetHeadPosition(); pos;)
        CountBelow(static_cast<CVemBaseNode*>(children->GetNext(pos)), count);
}

}  // namespace

u16 CodeLength(const ResourceShape& shape) { return static_cast<u16>(8 + 4 * shape.statementsPerUnit); }

u16 VariableOffset(int index) { return static_cast<u16>(kIntSize * index); }

u16 ArrayOffset(const ResourceShape& shape, int index) {
    return static_cast<u16>(VariableOffset(shape.variablesPerTask) + kIntSize * shape.arrayLength * index);
}

u16 StructOffset(const ResourceShape& shape, int index) {
    return static_cast<u16>(ArrayOffset(shape, shape.arraysPerTask) + kIntSize * shape.membersPerStruct * index);
}

u16 TaskDataLength(const ResourceShape& shape) {
    return static_cast<u16>(kDataHeader + StructOffset(shape, shape.structsPerTask));
}

long VariableCount(const ResourceShape& shape) {
    const long perTask = shape.variablesPerTask + static_cast<long>(shape.arraysPerTask) * shape.arrayLength +
                         static_cast<long>(shape.structsPerTask) * shape.membersPerStruct + shape.unitsPerTask;
    return perTask * shape.tasks + shape.globalVariables;
}

std::string TaskName(int index) { return Numbered("TASK", index + 1); }

std::string TaskPath(int index) { return "C:\\PRJ\\" + TaskName(index) + ".st"; }

std::string UnitName(int index) { return Numbered("FBI", index) + Numbered(" : FB", index); }

std::string UnitPath(int index) { return Numbered("C:\\PRJ\\FB", index) + ".st"; }

CVemBaseNode* BuildResource(const ResourceShape& shape) {
    Road road;
    road.name = kResourceName;
    road.configName = "C:\\PRJ\\CFG1.cfg";
    road.pathName = "C:\\PRJ\\RES1.obj";
    road.settings = DeviceSettings(shape);
    road.tasks = shape.tasks;
    road.taskName = TaskName;
    road.globalTask = [&](CVemBaseNode* global) { return GlobalTask(global, shape); };
    road.compiledTask = [&](CVemBaseNode* container, int index) { CompiledTask(container, shape, index); };
    road.tables = [&](CVemBaseNode* exe, CVemBaseNode* container) { FillResourceTables(exe, container, shape); };
    return BuildExecutable(road);
}

int WriteResource(CVemBaseNode* exe, const std::string& directory, const std::string& nodeFile) {
    return WriteTasksAndNode(exe, directory, nodeFile);
}

long CountNodes(CVemBaseNode* root) {
    long count = 0;
    CountBelow(root, count);
    return count;
}

std::string Numbered(const char* prefix, long number) {
    std::string text = prefix;  // appended rather than prepended to a temporary string
    text += std::to_string(number);
    return text;
}

CVemBaseNode* Named(tVemNodeType type, const std::string& name) {
    CVemBaseNode* node = VemNewNode(type);
    VemSetName(node, name.c_str());
    return node;
}

const u16* StartOffsets() { return kStartOffsets.data(); }

void AddSegmentLengths(CVemBaseNode* task) {
    CSegmentTable* table = VemGetSegmentTable(task);
    for (u16 s = 1; s <= VemSegTblGetMaxSegmentNo(table); ++s) {
        VemAddNewSegmentLength(task, static_cast<u16>(VemBaGetLength(VemSegTblGetSegment(table, s))));
    }
}

void AddCodeNode(CVemBaseNode* task, CEVemBaseNode* code) {
    if (code) VemGetEvemRootNodeListPtr(task)->AddTail(code);
}

CVemBaseNode* BuildExecutable(const Road& road) {
    CVemBaseNode* exe = Named(kVemExeNode, road.name);
    VemSetConfigName(exe, road.configName.c_str());
    VemSetPathName(exe, road.pathName.c_str());
    VemSetDeviceSettings(exe, road.settings);
    CVemBaseNode* container = VemNewNode(kVemTaskContainerNode);
    VemAddChildTail(exe, container);
    CVemBaseNode* global = Named(kVemBaseNode, kGlobalName);
    VemAddChildTail(exe, global);
    for (int t = 0; t < road.tasks; ++t) VemRegisterTask(container, road.taskName(t).c_str());
    CVemBaseNode* globalTask = road.globalTask(global);
    for (int t = 0; t < road.tasks; ++t) road.compiledTask(container, t);
    VemComputeProgramNumbers(exe, 0);
    VemAddFilteredEvemNodes(exe, globalTask);
    CObList* tasks = VemGetChildList(container);
    for (POSITION pos = tasks->GetHeadPosition(); pos;)
        VemAddFilteredEvemNodes(exe, static_cast<CVemBaseNode*>(tasks->GetNext(pos)));
    road.tables(exe, container);
    return exe;
}

int WriteTasksAndNode(CVemBaseNode* exe, const std::string& directory, const std::string& nodeFile,
                      const std::function<void()>& written) {
    CVemBaseNode* container = VemFindVemNodeByNameAndType(exe, "TASKS", kVemTaskContainerNode);
    if (!container) return 0;
    CObList* tasks = VemGetChildList(container);
    for (POSITION pos = tasks->GetHeadPosition(); pos;) {
        auto* task = static_cast<CVemBaseNode*>(tasks->GetNext(pos));
        const std::string path = directory + "/" + VemGetName(task).str() + ".tsk";
        CVemReplaceFile file;  // as a careful compiler does: the old task file stays until the new one is whole
        if (!file.OpenReplace(path.c_str())) return 0;
        CArchive ar(&file, CArchive::store);
        if (!VemWriteObject(task, ar)) return 0;
        ar.Close();
        file.Commit();
        VemTaskCompiled(container, VemGetName(task), path.c_str());
        if (written) written();
    }
    return VemWriteNode(exe, nodeFile.c_str());
}

}  // namespace vembuild
