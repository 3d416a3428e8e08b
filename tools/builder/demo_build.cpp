#include "demo_build.h"

#include <vector>

#include "resource_builder.h"

namespace vemtool {

namespace {

using vembuild::AddCodeNode;
using vembuild::AddSegmentLengths;
using vembuild::Named;
using vembuild::Numbered;

constexpr u16 kNone = 0xFFFF;
constexpr u16 kHeader = vembuild::kDataHeader;  // every data segment starts with a header of its own
constexpr u8 kAlignment = 2;

CVemBaseNode* Scalar(const char* name, u16 offset, tCbeType type, u16 size, const char* typeName) {
    CVemBaseNode* v = VemCreateCVemVariableNode(name, offset, type, size, 0);
    VemSetSubSegmentKind(v, kIpSegData);
    VemSetTypeName(v, typeName);
    return v;
}

u16 Align(u16 offset) { return static_cast<u16>((offset + kAlignment - 1) / kAlignment * kAlignment); }

// Variables laid out one behind the other in a data segment.
class Layout {
public:
    u16 Take(u16 size) {
        const u16 at = Align(next_);
        next_ = static_cast<u16>(at + size);
        return at;
    }
    u16 Length() const { return static_cast<u16>(kHeader + Align(next_)); }

private:
    u16 next_ = 0;
};

u16 AddSegment(CSegmentTable* table, u16 length, u8 kind) {
    CVemByteArray* array = VemBaNewByteArray(0, kAlignment, 1, 0);
    VemBaAppendWord(array, length);  // the header: size, kind, header length
    VemBaAppendByte(array, kind);
    VemBaAppendByte(array, 8);
    for (u16 i = 4; i < length; ++i) VemBaAppendByte(array, static_cast<u8>(kind == kIpSegCode ? i * 7 : 0));
    return VemSegTblAddNewSegment(table, array);
}

// One statement of a unit's instruction list.
struct Stmt {
    tEVemNodeType type;
    u16 line;
    std::string operand;  // owned: the texts of generated operands are made per statement
};

CEVemBaseNode* CodeNode(const std::string& name, const std::string& path, tEVemPouType kind,
                        const std::vector<Stmt>& statements) {
    CEVemBaseNode* code = EVemCreateNode(kEVemPouCodeNode, name.c_str());
    if (!code) return nullptr;  // the statement model is switched off
    EVemSetPathName(code, path.c_str());
    EVemSetPouType(code, kind);
    EVemSetDataSegSize(code, 16);
    u16 offset = 0;
    for (const Stmt& s : statements) {
        CEVemBaseNode* node = EVemAddNewStmtNode(code, s.type);
        EVemSetAwlPosition(node, s.line, 2);
        if (!s.operand.empty()) EVemSetName(node, s.operand.c_str());
        if (s.type == kEVemLdVariableStmtNode || s.type == kEVemStVariableStmtNode) {
            EVemSetAddressMode(node, kEVemNearAddress);
        }
        EVemSetUcodeOffset(node, offset);
        offset = static_cast<u16>(offset + 4);
    }
    return code;
}

// The instruction list of a task's program: count while running, compare with the line speed,
// call the debounce blocks with a parameter list, read an array, call the scaling function.
std::vector<Stmt> ProgramStatements(int units) {
    std::vector<Stmt> s = {
        {kEVemLdVariableStmtNode, 3, "Running"}, {kEVemLdVariableStmtNode, 4, "Count"},
        {kEVemAddConstStmtNode, 5, {}},          {kEVemStVariableStmtNode, 6, "Count"},
        {kEVemLdVariableStmtNode, 7, "Count"},   {kEVemGtVarStmtNode, 8, "LineSpeed"},
        {kEVemStVariableStmtNode, 9, "Running"},
    };
    u16 line = 10;
    for (int k = 0; k < units; ++k) {
        const std::string inst = "Deb" + std::to_string(k);
        s.push_back({kEVemInputInoutParamListStmtNode, line, {}});
        s.push_back({kEVemLdVariableStmtNode, line, "Running"});
        s.push_back({kEVemStVariableStmtNode, line, inst + ".IN"});
        s.push_back({kEVemCalFbStmtNode, line, inst});
        s.push_back({kEVemOutputParamListStmtNode, static_cast<u16>(line + 1), {}});
        s.push_back({kEVemLdVariableStmtNode, static_cast<u16>(line + 1), inst + ".Q"});
        s.push_back({kEVemStVariableStmtNode, static_cast<u16>(line + 1), "Running"});
        s.push_back({kEVemEndParamListStmtNode, static_cast<u16>(line + 1), {}});
        line = static_cast<u16>(line + 2);
    }
    s.push_back({kEVemLdIndexedVarStmtNode, line, "Speeds"});
    s.push_back({kEVemCalFunStmtNode, static_cast<u16>(line + 1), "Scale"});
    s.push_back({kEVemStIndexedVarStmtNode, static_cast<u16>(line + 2), "Stations"});
    return s;
}

// ARRAY [low..high] OF an element made by `element`.
CVemBaseNode* ArrayOf(const char* name, u16 offset, int low, int high, u16 elementSize, CVemBaseNode* element) {
    CVemBaseNode* a = VemNewNode(kVemArrayNode);
    VemSetName(a, name);
    VemSetOffset(a, offset);
    VemSetSize(a, static_cast<u16>(elementSize * (high - low + 1)));
    VemSetSubSegmentKind(a, kIpSegData);
    VemSetDimensions(a, 1);
    VemSetDimRange4Index(VemGetRange(a), 0, tVemDimRange{low, high, low});
    VemAddChildTail(a, element);  // the element's prototype
    return a;
}

CVemBaseNode* StationType() {
    CVemBaseNode* s = VemNewNode(kVemStructNode);
    VemSetName(s, "");
    VemSetTypeName(s, "StationT");
    VemSetSize(s, 4);
    VemAddChildTail(s, Scalar("Id", 0, kCbeTypeInt, 2, "INT"));
    VemAddChildTail(s, Scalar("Busy", 2, kCbeTypeBool, 1, "BOOL"));
    return s;
}

void AddDebounce(CVemBaseNode* task, CSegmentTable* table, Layout& layout, int k) {
    const std::string inst = "Deb" + std::to_string(k);
    CVemBaseNode* instance = VemNewNode(kVemFbInstanceNode);
    VemSetName(instance, inst.c_str());
    VemSetTypeName(instance, "Debounce");
    VemSetOffset(instance, layout.Take(4));
    VemSetSubSegmentKind(instance, kIpSegData);
    VemAddChildTail(task, instance);

    const u16 code = AddSegment(table, 24, kIpSegCode);
    const u16 data = AddSegment(table, kHeader + 12, kIpSegData);
    CVemBaseNode* fb = VemCreateCVemFbNode((inst + " : Debounce").c_str(), kDemoDebouncePath);
    VemSetCodePathName(fb, "C:\\PLANT\\DEBOUNCE.obj");
    VemAddChildTail(fb, Scalar("IN", 0, kCbeTypeBool, 1, "BOOL"));
    VemAddChildTail(fb, Scalar("PT", 2, kCbeTypeTime, 4, "TIME"));
    VemAddChildTail(fb, Scalar("Q", 6, kCbeTypeBool, 1, "BOOL"));
    VemAddChildTail(fb, Scalar("ET", 8, kCbeTypeTime, 4, "TIME"));
    VemAddChildTail(task, fb);
    VemSetSegmentNumbers(fb, data, code, kNone, kNone);
    VemSetDataSegLength(fb, kHeader + 12);
}

CVemBaseNode* Task(CVemBaseNode* container, const DemoShape& shape, int index) {
    CVemBaseNode* task = Named(kVemTuiTaskNode, DemoTaskName(index));
    VemSetPathName(task, DemoTaskPath(index).c_str());
    VemAddChildTail(container, task);  // below the executable before the arrays expand
    CSegmentTable* table = VemGetSegmentTable(task);
    VemSegTblAddNewSegment(table, nullptr);  // segment 0 is reserved
    Layout layout;
    VemAddChildTail(task, Scalar("Count", layout.Take(2), kCbeTypeInt, 2, "INT"));
    VemAddChildTail(task, Scalar("Running", layout.Take(1), kCbeTypeBool, 1, "BOOL"));
    for (int v = 0; v < shape.vars; ++v) {
        VemAddChildTail(task, Scalar(Numbered("V", v).c_str(), layout.Take(2), kCbeTypeInt, 2, "INT"));
    }
    VemAddChildTail(task, ArrayOf("Speeds", layout.Take(8), 1, 4, 2, Scalar("", 0, kCbeTypeInt, 2, "INT")));
    VemAddChildTail(task, ArrayOf("Stations", layout.Take(8), 0, 1, 4, StationType()));
    CVemBaseNode* labels = ArrayOf("Labels", layout.Take(24), 0, 2, 8, Scalar("", 0, kCbeTypeString, 8, "STRING"));
    VemSetArrayElementSizeOfType(labels, 8);
    VemAddChildTail(task, labels);
    const u16 code = AddSegment(table, static_cast<u16>(32 + 32 * shape.units), kIpSegCode);
    for (int k = 0; k < shape.units; ++k) AddDebounce(task, table, layout, k);
    const u16 data = AddSegment(table, layout.Length(), kIpSegData);
    VemSetSegmentNumbers(task, data, code, kNone, kNone);
    VemSetDataSegLength(task, layout.Length());
    VemComputeOffsets(task, vembuild::StartOffsets());
    VemExpandArray(task);
    AddSegmentLengths(task);
    CVemByteArray* entry = VemBaNewByteArray(0, kAlignment, 1, 0);
    VemBaAppendWord(entry, code);
    VemBaAppendWord(entry, data);
    VemSetTaskDefEntry(task, entry);
    AddCodeNode(task, CodeNode(DemoTaskName(index), DemoTaskPath(index), kEVemPouProg, ProgramStatements(shape.units)));
    for (int k = 0; k < shape.units; ++k) {
        AddCodeNode(task, CodeNode("Debounce", kDemoDebouncePath, kEVemPouFunctionBlock,
                                   {{kEVemLdVariableStmtNode, 2, "IN"}, {kEVemStVariableStmtNode, 3, "Q"}}));
    }
    return task;
}

CVemBaseNode* GlobalTask(CVemBaseNode* global) {
    CVemBaseNode* task = Named(kVemTuiTaskNode, "GLOBAL");
    VemSetPathName(task, "C:\\PLANT\\GLOBAL.st");
    VemSetGlobal(task, 1);
    VemAddChildTail(global, task);
    CSegmentTable* table = VemGetSegmentTable(task);
    VemSegTblAddNewSegment(table, nullptr);
    Layout layout;
    VemAddChildTail(task, Scalar("EmergencyStop", layout.Take(1), kCbeTypeBool, 1, "BOOL"));
    VemAddChildTail(task, Scalar("LineSpeed", layout.Take(2), kCbeTypeInt, 2, "INT"));
    CVemBaseNode* recipe = VemNewNode(kVemStructNode);
    VemSetName(recipe, "Recipe");
    VemSetTypeName(recipe, "RecipeT");
    VemSetSize(recipe, 18);
    VemSetOffset(recipe, layout.Take(18));
    VemSetSubSegmentKind(recipe, kIpSegData);
    VemAddChildTail(recipe, Scalar("Name", 0, kCbeTypeString, 12, "STRING"));
    VemAddChildTail(recipe, Scalar("Target", 12, kCbeTypeInt, 2, "INT"));
    VemAddChildTail(recipe, Scalar("Tolerance", 14, kCbeTypeReal, 4, "REAL"));
    VemAddChildTail(task, recipe);
    // Arrays of the global task stay unexpanded: a debugger places their elements by the rules.
    CVemBaseNode* matrix = ArrayOf("Matrix", layout.Take(24), 0, 2, 2, Scalar("", 0, kCbeTypeInt, 2, "INT"));
    VemSetDimensions(matrix, 2);
    VemSetDimRange4Index(VemGetRange(matrix), 1, tVemDimRange{1, 4, 1});
    VemSetSize(matrix, 24);
    VemAddChildTail(task, matrix);
    VemAddChildTail(task, ArrayOf("Shelves", layout.Take(12), 1, 3, 4, StationType()));
    const u16 code = AddSegment(table, 16, kIpSegCode);
    const u16 data = AddSegment(table, layout.Length(), kIpSegData);
    const u16 scaleCode = AddSegment(table, 20, kIpSegCode);
    CVemBaseNode* scale = VemCreateCVemFunctionNode("Scale", kDemoScalePath);
    VemSetSegmentNumbers(scale, data, scaleCode, kNone, kNone);
    VemAddChildTail(task, scale);
    VemSetSegmentNumbers(task, data, code, kNone, kNone);
    VemComputeOffsets(task, vembuild::StartOffsets());
    AddSegmentLengths(task);
    AddCodeNode(task,
                CodeNode("GLOBAL", "C:\\PLANT\\GLOBAL.st", kEVemPouProg,
                         {{kEVemLdVariableStmtNode, 2, "EmergencyStop"}, {kEVemStVariableStmtNode, 3, "LineSpeed"}}));
    AddCodeNode(task, CodeNode("Scale", kDemoScalePath, kEVemPouFunction,
                               {{kEVemLdVariableStmtNode, 2, "LineSpeed"}, {kEVemMulConstStmtNode, 3, {}}}));
    return task;
}

// The resource's task definition segment: its header, then every task's entry.
void TaskDefinitions(CVemBaseNode* exe, CVemBaseNode* container, const DemoShape& shape) {
    CObList* tasks = VemGetChildList(container);
    CVemByteArray* taskDefs = VemBaNewByteArray(0, kAlignment, 1, 0);
    VemBaAppendWord(taskDefs, 0);
    VemBaAppendByte(taskDefs, kIpSegTaskDef);
    VemBaAppendByte(taskDefs, 8);
    VemBaAppendWord(taskDefs, 0);
    VemBaAppendWord(taskDefs, static_cast<u16>(shape.tasks));
    for (POSITION pos = tasks->GetHeadPosition(); pos;) {
        VemBaAppend(taskDefs, VemGetTaskDefEntry(static_cast<CVemBaseNode*>(tasks->GetNext(pos))));
    }
    VemBaPatchWord(taskDefs, 0, static_cast<u16>(VemBaGetLength(taskDefs)));
    CSegmentTable* segments = VemGetSegmentTable(exe);
    VemSegTblAddNewSegment(segments, nullptr);
    VemSegTblAddNewSegment(segments, VemBaClone(taskDefs));
    VemAddNewSegmentLength(exe, static_cast<u16>(VemBaGetLength(taskDefs)));
    VemSetTaskDefSegment(exe, taskDefs);
    VemSetDatacontFilesProjectName(exe, "PLANT");
    VemSetDatacontFilesUserLevel(exe, 2);
}

}  // namespace

std::string DemoTaskName(int index) {
    if (index == 0) return "FAST";
    if (index == 1) return "SLOW";
    return Numbered("TASK", index + 1);
}

std::string DemoTaskPath(int index) { return "C:\\PLANT\\" + DemoTaskName(index) + ".st"; }

CVemBaseNode* BuildDemo(const DemoShape& shape) {
    vembuild::Road road;
    road.name = road.pathName = "C:\\PLANT\\LINE1.obj";
    road.configName = "C:\\PLANT\\PACKING.cfg";
    road.settings.Alignment = kAlignment;
    road.settings.ByteSize = 1;
    road.settings.IpType = 7;
    road.settings.MaxWatchEntries = 64;
    road.settings.TaskDownload = 1;
    road.settings.TaskStart = 1;
    road.tasks = shape.tasks;
    road.taskName = DemoTaskName;
    road.globalTask = GlobalTask;
    road.compiledTask = [&](CVemBaseNode* container, int t) {
        Task(container, shape, t);
        if (shape.onTask) shape.onTask(t);
    };
    road.tables = [&](CVemBaseNode* exe, CVemBaseNode* container) { TaskDefinitions(exe, container, shape); };
    return vembuild::BuildExecutable(road);
}

int WriteDemo(CVemBaseNode* exe, const std::string& dir, const std::string& nodeFile, const DemoShape& shape) {
    int index = 0;
    return vembuild::WriteTasksAndNode(exe, dir, nodeFile, [&] {
        if (shape.onTask) shape.onTask(shape.tasks + index++);
    });
}

}  // namespace vemtool
