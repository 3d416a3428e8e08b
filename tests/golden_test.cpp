// Texts that the library writes for people: node dumps, segment dumps, the calls that paint the
// tree and the tree as an SVG file. Each case makes its text; the text must equal
// tests/golden/<case>.txt byte for byte. VEM_UPDATE_GOLDEN=1 writes the files instead;
// tests/golden/README.md says how to review that.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>

#include "compiled_test_util.h"
#include "evem_test_util.h"
#include "treeview_test_util.h"
#include "units/pou.h"

namespace {

using compiledtest::MakeNode;
using evemtest::PointerText;
using Lines = std::vector<std::string>;

std::string Join(const Lines& lines) {
    std::string text;
    for (const auto& line : lines) text += line + "\n";
    return text;
}

// Several texts of one case, each under a head line of its own.
struct Parts {
    std::string text;
    Parts& add(const std::string& label, const std::string& part) {
        text += "=== " + label + "\n" + part + "\n";
        return *this;
    }
};

// Heap addresses differ from run to run: each known one is shown by its name.
std::string Mask(std::string text, std::initializer_list<std::pair<const void*, const char*>> pointers) {
    for (const auto& [pointer, name] : pointers) {
        const std::string from = PointerText(pointer);
        for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at))
            text.replace(at, from.size(), std::string("<") + name + ">");
    }
    return text;
}

// ---- units ----

std::string NodeDumpFile(CVemBaseNode* node) {
    vemtest::TempDir dir;
    EXPECT_EQ(CVemNodeDump(node, dir.file("dump.txt").c_str()), 1);
    return vemtest::ReadFileText(dir.file("dump.txt"));
}

void AddEntry(CVemBaseNode* unit, u16 line, i32 codeLine, u32 operandType, u32 aeType) {
    auto* entry = new CStatListEntry;
    entry->AwlLine = line;
    entry->CodeLine = codeLine;
    entry->OperandType = operandType;
    entry->AEType = aeType;
    VemGetStatList(unit)->NewEntry(entry);
}

std::string UnitsProgram() {
    compiledtest::NodePtr program = MakeNode(kVemProgramNode, "MAIN");
    CVemBaseNode* p = program.get();
    VemSetPathName(p, "C:\\PRJ\\MAIN.poe");
    VemSetGlobal(p, 1);
    VemAddChildTail(p, VemCreateCVemVariableNode("X", 4, kCbeTypeInt, 2, 1));
    VemSetSegmentNumbers(p, 4, 3, 5, 6);
    VemSetDataSegLength(p, 20);
    VemSetProgramNr(p, 2);
    VemSetCrSize(p, 6);
    VemSetCodePathName(p, "main.obj");
    VemSetCheckSum(p, 4000000000u);
    static_cast<CVemPouNode*>(p)->Date = 1234;
    p->SetStartOffset(70000);
    VemSetCrStackSize(p, 8);
    VemSetCrStackElements(p, 9);
    AddEntry(p, 10, -1, 3, 4);
    AddEntry(p, 2, 70000, 65535, 0);
    return NodeDumpFile(p);
}

// Child units repeat the indent behind every line; programs only add their head below other nodes.
std::string UnitsNested() {
    compiledtest::NodePtr program = MakeNode(kVemProgramNode, "P");
    CVemBaseNode* fb = VemCreateCVemFbNode("F : T", "f.poe");
    AddEntry(fb, 1, 16, 2, 1);
    VemAddChildTail(program.get(), fb);
    VemAddChildTail(fb, VemCreateCVemFunctionNode("G", ""));
    Parts out;
    out.add("program", NodeDumpFile(program.get()));
    compiledtest::NodePtr root = MakeNode(kVemBaseNode);
    CVemBaseNode* below = compiledtest::Named(kVemProgramNode, "Q");
    VemSetGlobal(below, -1);
    VemAddChildTail(root.get(), below);
    return out.add("program below a base", NodeDumpFile(root.get())).text;
}

// Base nodes give their type with an indent that grows by level; the task its resource's name;
// the variable the German labels, and its children.
std::string NodesWithChildren() {
    compiledtest::NodePtr root = MakeNode(kVemBaseNode);
    CVemBaseNode* child = vemtest::Add(root.get(), new CVemBaseNode(kVemTaskNode, "c", 1));
    VemAddChildTail(child, new CVemBaseNode(kVemConfigNode, "d", 1));
    Parts out;
    out.add("base nodes", NodeDumpFile(root.get()));
    compiledtest::NodePtr task = MakeNode(kVemTaskNode, "T");
    VemSetResourceName(task.get(), "R");
    VemAddChildTail(task.get(), compiledtest::Named(kVemBaseNode, "x"));
    out.add("task", NodeDumpFile(task.get()));
    compiledtest::NodePtr v(VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 1));
    VemSetProgramNr(v.get(), 3);
    VemSetParentSegment(v.get(), 12);
    VemAddChildTail(v.get(), VemCreateCVemVariableNode("C", 6, kCbeTypeBool, 1, 0));
    return out.add("variable", NodeDumpFile(v.get())).text;
}

// ---- executable nodes and compiled tasks ----

using compiledtest::CodeNode;
using compiledtest::DumpText;

std::string ExeFlags() {
    LurSetEvemEnabled(0);
    compiledtest::NodePtr exe = MakeNode(kVemExeNode, "R");
    Parts out;
    out.add("switch off", DumpText(exe.get(), "P>"));
    tVemDeviceSettings s = *VemGetDeviceSettings(exe.get());
    s.MotorolaFormat = s.ResourceGlobalSegTable = s.OnlineLinking = s.IncrementalDownload = 1;
    s.OneSegTableAtOnlineLinking = s.OnlineEditor = s.TaskDownload = s.TaskStart = 2;
    s.MaxWatchEntries = 300;
    VemSetDeviceSettings(exe.get(), s);
    return out.add("every flag", DumpText(exe.get(), "P>")).text;
}

// The task definition segment; both tables print straight to the file, ahead of the text gathered
// so far; the code nodes and the children.
std::string ExeContents() {
    Parts out;
    compiledtest::NodePtr exe = MakeNode(kVemExeNode, "R");
    CVemByteArray* taskDefs = VemBaNewByteArray(0, 1, 1, 0);
    for (int i = 0; i < 20; ++i) VemBaAppendByte(taskDefs, static_cast<u8>(i));
    VemSetTaskDefSegment(exe.get(), taskDefs);
    out.add("task definition segment", DumpText(exe.get(), "P>"));
    exe = MakeNode(kVemExeNode, "R");
    VemSegTblAddNewSegment(VemGetSegmentTable(exe.get()), VemBaNewByteArray(0, 1, 1, 0));
    VemSegTblAddNewSegment(VemGetComponentList(exe.get()), VemBaNewByteArray(0, 1, 1, 0));
    out.add("tables ahead of the head", DumpText(exe.get(), "P>"));
    exe = MakeNode(kVemExeNode, "R");
    VemGetEvemRootNodeListPtr(exe.get())->AddTail(CodeNode("C:\\PRJ\\A.st"));
    VemGetEvemRootNodeListPtr(exe.get())->AddTail(CodeNode("C:\\PRJ\\B.st"));
    VemAddChildTail(exe.get(), VemNewNode(kVemTaskContainerNode));
    return out.add("code nodes and children", DumpText(exe.get(), "P>")).text;
}

// Project code 271 asks for the line maps behind the code nodes.
std::string ExeLineMaps() {
    compiledtest::NodePtr exe = MakeNode(kVemExeNode, "R");
    VemGetEvemRootNodeListPtr(exe.get())->AddTail(CodeNode("C:\\PRJ\\A.st"));
    Parts out;
    out.add("plain", DumpText(exe.get(), "P>"));
    LurSetProjectCode(271);
    return out.add("project code 271", DumpText(exe.get(), "P>")).text;
}

// The offsets and the path map, each with and without the other.
std::string TaskOffsetsAndPaths() {
    LurSetEvemEnabled(0);
    Parts out;
    for (const auto& [label, offsets, map] : {std::tuple{"offsets and paths", true, true},
                                              {"without map", true, false},
                                              {"map without offsets", false, true}}) {
        compiledtest::NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
        VemAddChildTail(task.get(), compiledtest::Variable("V", 4, 2));
        if (offsets) {
            VemAddNewSegmentLength(task.get(), 100);
            VemAddNewSegmentLength(task.get(), 50);
        }
        if (map) VemCreateChildNodePathList(task.get());
        out.add(label, DumpText(task.get(), "P>"));
    }
    return out.text;
}

// The table writes its own dump at once, so its lines stand ahead of the task's head line.
std::string TaskSegmentTableFirst() {
    compiledtest::NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
    CVemByteArray* segment = VemBaNewByteArray(0, 1, 1, 0);
    VemBaAppendByte(segment, 1);
    VemSegTblAddNewSegment(VemGetSegmentTable(task.get()), segment);
    return DumpText(task.get(), "P>");
}

std::string TaskContainerFiles() {
    vemtest::TempDir dir;
    vemtest::WriteFileText(dir.file("t.cfg"), "cfg");
    compiledtest::NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
    VemAddContainerFile(task.get(), dir.file("t.cfg").c_str(), "CFG", 3);
    VemSetContainerFileCheckSum(task.get(), "CFG", 77);
    return DumpText(task.get(), "P>");
}

// The container lists its tasks, compiled or not, ahead of its children.
std::string TaskContainer() {
    compiledtest::NodePtr tasks(VemNewNode(kVemTaskContainerNode));
    Parts out;
    out.add("empty", NodeDumpFile(tasks.get()));
    VemRegisterTask(tasks.get(), "T1");
    VemTaskCompiled(tasks.get(), "T2", "t2.tsk");
    VemAddChildTail(tasks.get(), compiledtest::Named(kVemBaseNode, "x"));
    return out.add("two tasks", DumpText(tasks.get(), "> ")).text;
}

std::string TaskCodeNodes() {
    compiledtest::NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
    VemGetEvemRootNodeListPtr(task.get())->AddTail(CodeNode("C:\\PRJ\\A.st"));
    return DumpText(task.get(), "P>");
}

// ---- statement model ----

using evemtest::Create;
using EDump = std::string (*)(CEVemBaseNode*, const char*);
const EDump kEDump = evemtest::DumpText;

std::string EvemNewStatement() {
    evemtest::NodePtr s = Create(kEVemNotStmtNode);
    Parts out;
    out.add("new", kEDump(s.get(), "P>"));
    EVemSetAwlPosition(s.get(), 12, 3);
    EVemSetUcodeOffset(s.get(), 0x20);
    return out.add("placed", kEDump(s.get(), "")).text;
}

// Kinds 0 and 1 dump with their trailing blank.
std::string EvemKindsZeroAndOne() {
    const CRuntimeClass* cls = CRuntimeClass::FromName("CEVemBaseNode");
    if (!cls) return "no class";
    evemtest::NodePtr bare(static_cast<CEVemBaseNode*>(cls->CreateObject()));
    Parts out;
    out.add("made", kEDump(bare.get(), "-"));
    CMemFile file(vemtest::Bytes().u16_(3).u16_(0).v);  // base record of kind 0
    CArchive ar(&file, CArchive::load);
    bare->Serialize(ar);
    return out.add("loaded kind 0", kEDump(bare.get(), "-")).text;
}

std::string EvemKindAndTypeNames() {
    Parts out;
    for (tEVemNodeType kind : {kEVemLdConstStmtNode, kEVemParXornIndexedVarStmtNode, kEVemIndexedRefStmtNode})
        out.add(std::to_string(kind), kEDump(Create(kind).get(), ""));
    evemtest::NodePtr abs = Create(kEVemStdAbsStmtNode);
    out.add("unset", kEDump(abs.get(), ""));
    for (u32 type : {1u, 14u, 37u, 40u, 38u, 0u}) {
        EVemSetCbeType(abs.get(), static_cast<tCbeType>(type));
        out.add(std::to_string(type), kEDump(abs.get(), ""));
    }
    return out.text;
}

std::string EvemSignAndAccumulator() {
    evemtest::NodePtr s = Create(kEVemAddVarStmtNode);
    Parts out;
    EVemSetNegOperand(s.get(), 1);
    EVemSetAccuType(s.get(), 1);
    out.add("1 1", kEDump(s.get(), ""));
    EVemSetNegOperand(s.get(), 2);  // only 1 reads as negated
    EVemSetAccuType(s.get(), 2);    // every other value is the shadow accumulator
    return out.add("2 2", kEDump(s.get(), "")).text;
}

std::string EvemAddressModes() {
    evemtest::NodePtr s = Create(kEVemLdVariableStmtNode);
    EVemSetName(s.get(), "inst.x");
    EVemSetVemNode(s.get(), reinterpret_cast<CVemBaseNode*>(0xAB0));
    Parts out;
    for (tEVemAddressMode mode :
         {kEVemFarAddress, kEVemNearAddress, kEVemRefAddress, kEVemIndAddress, kEVemNoAddressMode}) {
        EVemSetAddressMode(s.get(), mode);
        out.add(std::to_string(mode), Mask(kEDump(s.get(), ">"), {{reinterpret_cast<void*>(0xAB0), "vem node"}}));
    }
    return out.text;
}

std::string EvemNewAndLoadedVariable() {
    evemtest::NodePtr s = Create(kEVemStVariableStmtNode);
    evemtest::NodePtr loaded = evemtest::LoadRecord(evemtest::StoreRecord(s.get()), kEVemStVariableStmtNode);
    const std::string made = kEDump(s.get(), "");
    EXPECT_EQ(kEDump(loaded.get(), ""), made);
    return made;
}

std::string EvemArrayIndexes() {
    evemtest::NodePtr s = Create(kEVemLdIndexedVarStmtNode);
    CEVemBaseNode* i0 = EVemCreateNode(kEVemLdConstStmtNode, "");
    CEVemBaseNode* i1 = EVemCreateNode(kEVemNotStmtNode, "");
    EVemAddIndexNode(s.get(), i0);
    EVemAddIndexNode(s.get(), i1);
    EVemSetPrevOperandNode(s.get(), EVemCreateNode(kEVemNegStmtNode, ""));
    return Mask(kEDump(s.get(), "#"), {{i0, "index 0"}, {i1, "index 1"}});
}

// Missing bytes of a value read as zero.
std::string EvemConstantValues() {
    struct Value {
        tCbeType type;
        std::vector<u8> bytes;
    };
    const Value values[] = {
        {kCbeTypeBool, {0xAB}},
        {kCbeTypeBit, {0x01}},
        {kCbeTypeByte, {200}},
        {kCbeTypeUsint, {7}},
        {kCbeTypeWord, {0xFE, 0xFF}},
        {kCbeTypeUint, {0x34, 0x12}},
        {kCbeTypeEnum, {3, 0}},
        {kCbeTypeDword, {0xFF, 0xFF, 0xFF, 0xFF}},
        {kCbeTypeUdint, {1, 0, 1, 0}},
        {kCbeTypeTime, {0xE8, 0x03, 0, 0}},
        {kCbeTypeSint, {0xFF}},
        {kCbeTypeInt, {0x00, 0x80}},
        {kCbeTypeDint, {0, 0, 0, 0x80}},
        {kCbeTypeReal, {0, 0, 0xC0, 0x3F}},
        {kCbeTypeDate, {0xE8, 0x07, 3, 7}},
        {kCbeTypeTod, {9, 5, 0}},
        {kCbeTypeLreal, {0, 0, 0, 0, 0, 0, 0x02, 0xC0}},
        {kCbeTypeString, {3, 3, 'a', 'b', 'c', 0, 'z'}},
        {kCbeTypeUndef, {1, 2, 3, 4}},
        {kCbeTypeDt, {1, 2, 3, 4}},
        {kCbeTypeLword, {1, 2, 3, 4}},
        {kCbeTypeArray, {1, 2, 3, 4}},
        {kCbeTypeWString, {1, 2, 3, 4}},
        {kCbeTypeCount, {1, 2, 3, 4}},
        {kCbeTypeDword, {5}},
        {kCbeTypeString, {3}},
    };
    std::string text;
    for (const auto& [type, bytes] : values) {
        evemtest::NodePtr s = Create(kEVemLdConstStmtNode);
        CVemByteArray value;
        value.Append(bytes.data(), static_cast<unsigned>(bytes.size()));
        EVemSetValue(s.get(), &value);
        EVemSetCbeType(s.get(), type);
        const std::string dump = kEDump(s.get(), "");
        text += std::to_string(type) + ":" + std::to_string(bytes.size()) + " " + dump.substr(dump.find("Value = "));
    }
    evemtest::NodePtr bare = Create(kEVemAddConstStmtNode);  // no value at all
    EVemSetCbeType(bare.get(), kCbeTypeInt);
    return Parts().add("values", text).add("no value", kEDump(bare.get(), "")).text;
}

// Labels, calls, references, conversions and the parameters of the string functions.
std::string EvemOperands() {
    evemtest::NodePtr label = Create(kEVemLabelDefStmtNode, "L1");
    EVemSetLabelNum(label.get(), 7);
    EVemSetOffset(label.get(), 68);
    evemtest::NodePtr call = Create(kEVemCalFunStmtNode, "F");
    EVemSetTypeName(call.get(), "FUN");
    evemtest::NodePtr ref = Create(kEVemStRefStmtNode);
    EVemSetOffset(ref.get(), 1);
    EVemSetFarOffset(ref.get(), 2);
    evemtest::NodePtr conv = Create(kEVemBcdToTypeStmtNode);
    EVemSetInType(conv.get(), kCbeTypeWord);
    EVemSetOutType(conv.get(), kCbeTypeInt);
    evemtest::NodePtr replace = Create(kEVemStdStringReplaceStmtNode);
    CEVemBaseNode* p = EVemCreateNode(kEVemNotStmtNode, "");
    EVemSetStdStringPParamStmtNode(replace.get(), p);
    return Parts()
        .add("label", kEDump(label.get(), ""))
        .add("call", kEDump(call.get(), "."))
        .add("reference", kEDump(ref.get(), ""))
        .add("conversion", kEDump(conv.get(), ""))
        .add("replace", Mask(kEDump(replace.get(), ""), {{p, "p"}}))
        .add("insert", kEDump(Create(kEVemStdStringInsertStmtNode).get(), ""))
        .add("delete", kEDump(Create(kEVemStdStringDeleteStmtNode).get(), ""))
        .text;
}

// The dump file replaces an older, longer one whole; a new code node, and one of a function block.
std::string EvemCodeNodeFile() {
    vemtest::TempDir dir;
    const std::string path = dir.file("unit.txt");
    vemtest::WriteFileText(path, "an older dump that is longer than the new one, which replaces it whole\n");
    evemtest::NodePtr code = Create(kEVemPouCodeNode, "Unit");
    EVemSetPathName(code.get(), "U");
    EVemSetPouType(code.get(), kEVemPouFunction);
    EVemSetDataSegSize(code.get(), 4);
    EVemAddNewStmtNode(code.get(), kEVemNotStmtNode);
    EVemAddNewStmtNode(code.get(), kEVemReturnStmtNode);
    EVemNodeDump(code.get(), path.c_str());
    evemtest::NodePtr bare = Create(kEVemPouCodeNode, "");
    Parts out;
    out.add("file", vemtest::ReadFileText(path)).add("new", kEDump(bare.get(), ""));
    EVemSetPouType(bare.get(), kEVemPouFunctionBlock);
    return out.add("function block", kEDump(bare.get(), "")).text;
}

// ---- segments ----

using memtest::Array;

std::string SegmentDump(CVemByteArray* array) {
    CStringArray lines;
    VemBaDump(array, lines);
    Lines out;
    for (int i = 0; i < lines.GetSize(); ++i) out.push_back("[" + lines[i].str() + "]");
    return Join(out);
}

void AppendRaw(CVemByteArray* a, const std::vector<u8>& bytes) {
    VemBaAppend(a, bytes.data(), static_cast<unsigned>(bytes.size()));
}

// The common header through the array's own operations: Size, kind, header length, Next Seg, Num.
void AppendHeader(CVemByteArray* a, u16 size, u8 kind, u16 next, u16 num) {
    VemBaAppendWord(a, size);
    VemBaAppendByte(a, kind);
    VemBaAppendByte(a, 8);
    VemBaAppendWord(a, next);
    VemBaAppendWord(a, num);
}

// Names of the kinds keep their blanks and line feeds; unknown kinds are said.
std::string SegmentKindNames() {
    std::string text;
    for (u8 kind : {0, 2, 18, 24, 25, 39, 57, 128, 129, 135, 8, 26, 136}) {
        Array a(0, 1, 1);
        AppendHeader(a, 8, kind, 0, 0);
        CStringArray lines;
        VemBaDump(a, lines);
        text += std::to_string(kind) + " [" + lines[0].str() + "]\n";
    }
    return text;
}

std::string SegmentByteSizes() {
    Parts out;
    {
        Array a(0, 1, 1);  // eight bytes a line with a gap in the middle
        AppendHeader(a, 10, 1, 0, 0);
        AppendRaw(a, {0x11, 0x22});
        out.add("byte size 1", SegmentDump(a));
    }
    out.add("empty", SegmentDump(Array(0, 1, 1)));
    {
        Array five(0, 1, 5);  // one unit a line
        VemBaAppendWord(five, 0x0102);
        VemBaAppendByte(five, 1);
        out.add("byte size 5", SegmentDump(five));
    }
    {
        Array four(1, 1, 4);  // big-endian: the kind is read at the end of its unit
        VemBaAppendWord(four, 0x0C);
        VemBaAppendByte(four, 2);
        VemBaAppendByte(four, 8);
        out.add("byte size 4, big-endian", SegmentDump(four));
    }
    {
        Array a(0, 1, 1);
        AppendHeader(a, 8, 1, 0, 0);
        VemBaSetByteSize(a, 9);
        out.add("byte size outside the model", SegmentDump(a));
    }
    {
        Array a(0, 1, 6, 1);  // the fract layout has all bytes on one line
        AppendRaw(a, {0x0C, 0, 1, 8, 0, 0, 0, 0});
        VemBaAppendByte(a, 0x77);
        out.add("fract", SegmentDump(a));
    }
    return out.text;
}

std::string SegmentInstanceTables() {
    Parts out;
    {
        Array a(0, 1, 1);
        AppendHeader(a, 22, 20, 3, 2);
        AppendRaw(a, {8, 0, 5, 0, 6, 0, 0xAA, 0xBB});  // Len 8, DataSeg 5, IniSeg 6, two bytes
        AppendRaw(a, {6, 0, 1, 0, 2, 0});              // Len 6: no data
        out.add("two records", SegmentDump(a));
    }
    {
        Array a(0, 1, 1);
        AppendHeader(a, 8, 21, 0, 0);
        out.add("no records", SegmentDump(a));
    }
    {
        Array a(0, 1, 3);
        AppendHeader(a, 27, 20, 9, 1);  // fields every three bytes: 0, 3, 6, 9, 12
        VemBaAppendWord(a, 12);         // record at 15: Len, DataSeg, IniSeg, one byte unit
        VemBaAppendWord(a, 4);
        VemBaAppendWord(a, 7);
        VemBaAppendByte(a, 0x5A);
        out.add("byte size 3", SegmentDump(a));
    }
    for (u8 kind : {22, 23}) {  // both download table kinds are summed up
        Array a(1, 1, 2);
        AppendHeader(a, 12, kind, 17, 1);
        out.add("download table " + std::to_string(kind), SegmentDump(a));
    }
    return out.text;
}

// ---- the tree: the calls on the device context, then the places the draw left ----

std::string Point(const CPoint& p) { return "(" + std::to_string(p.x) + "," + std::to_string(p.y) + ")"; }
std::string Rect(const CRect& r) {
    return "(" + std::to_string(r.left) + "," + std::to_string(r.top) + "," + std::to_string(r.right) + "," +
           std::to_string(r.bottom) + ")";
}

std::string Drawn(CVemBaseNode* root, CVemRecordingDC& dc, CPoint from, CPoint origin, CVemBaseNode* selected,
                  std::initializer_list<CVemBaseNode*> nodes) {
    VemDraw(root, &dc, from, origin, selected);
    std::string text = Join(dc.CallTexts());
    for (CVemBaseNode* node : nodes)
        text += VemGetName(node).str() + ": bottom " + Point(VemGetBottomOfTree(node)) + " rect " +
                Rect(VemGetNodeSymbolRect(node)) + "\n";
    return text + "back colour " + std::to_string(dc.GetBkColor()) + "\n";
}

using vemtest::Add;
using vemtest::ShownNode;

// A base node named "Node" at the origin (20, 40), its line coming from (3, 7); unselected and
// selected, on the host's colour.
std::string TreeOneNode() {
    CVemBaseNode node(kVemBaseNode, "Node", 1);
    Parts out;
    CVemRecordingDC dc;
    out.add("plain", Drawn(&node, dc, CPoint(3, 7), CPoint(20, 40), nullptr, {&node}));
    CVemRecordingDC host;
    host.SetBkColor(0x123456);
    host.Clear();
    out.add("selected", Drawn(&node, host, CPoint(3, 7), CPoint(20, 40), &node, {&node}));
    CVemRecordingDC wide(10, 20);  // the recording context measures with its cells
    CVemBaseNode abc(kVemBaseNode, "abc", 1);
    return out.add("wide cells", Drawn(&abc, wide, CPoint(0, 0), CPoint(0, 0), nullptr, {&abc})).text;
}

// The host's colour comes back and only the selected text is opaque.
std::string TreeSelectedAmongSiblings() {
    CVemBaseNode root(kVemBaseNode, "root", 1);
    CVemBaseNode* a = Add(&root, new CVemBaseNode(kVemBaseNode, "a", 1));
    CVemBaseNode* b = Add(&root, new CVemBaseNode(kVemVariableNode, "b", 0));
    CVemBaseNode* c = Add(&root, new CVemBaseNode(kVemBaseNode, "c", 1));
    CVemRecordingDC dc;
    dc.SetBkColor(0x00ABCDEF);
    dc.Clear();
    return Drawn(&root, dc, CPoint(0, 0), CPoint(10, 0), b, {&root, a, b, c});
}

// A project's relative points are all 0 but the text position (21, 21); an executable draws like
// a project, expanded whatever it was made with.
std::string TreeProject() {
    ShownNode project(kVemProjectNode, "Project", 119);
    CVemBaseNode* cfg = Add(&project, new ShownNode(kVemConfigNode, "Cfg", 138));
    CVemBaseNode* res = Add(&project, new ShownNode(kVemResourceNode, "Res", 121));
    Parts out;
    CVemRecordingDC dc;
    out.add("project", Drawn(&project, dc, CPoint(0, 0), CPoint(0, 0), nullptr, {&project, cfg, res}));
    ShownNode exe(kVemExeNode, "E", 121, 125, 0);
    CVemRecordingDC other;
    return out.add("executable", Drawn(&exe, other, CPoint(0, 0), CPoint(5, 5), nullptr, {&exe})).text;
}

// Children stand one below the other and widen the bottom; a leaf variable has no symbol, its
// anchor stands nine below its origin.
std::string TreeChildren() {
    CVemBaseNode root(kVemBaseNode, "R", 1);
    CVemBaseNode* wide = Add(&root, new CVemBaseNode(kVemBaseNode, "LongerName", 1));
    CVemBaseNode* narrow = Add(&root, new CVemBaseNode(kVemBaseNode, "x", 1));
    Parts out;
    CVemRecordingDC dc;
    out.add("children", Drawn(&root, dc, CPoint(20, 0), CPoint(20, 0), nullptr, {&root, wide, narrow}));
    CVemBaseNode parent(kVemBaseNode, "P", 1);
    CVemBaseNode* v = Add(&parent, new CVemBaseNode(kVemVariableNode, "v", 0));
    CVemBaseNode* w = Add(&parent, new CVemBaseNode(kVemVariableNode, "w", 0));
    CVemRecordingDC leaves;
    return out.add("leaf variables", Drawn(&parent, leaves, CPoint(20, 0), CPoint(20, 0), nullptr, {&parent, v, w}))
        .text;
}

// A collapsed node ends at its own text; expanded, its child is drawn.
std::string TreeCollapsed() {
    CVemBaseNode node(kVemBaseNode, "Col", 0);
    Add(&node, new CVemBaseNode(kVemBaseNode, "AVeryLongChildName", 1));
    Parts out;
    CVemRecordingDC dc;
    out.add("collapsed", Drawn(&node, dc, CPoint(20, 0), CPoint(20, 0), nullptr, {&node}));
    VemToggleExpanded(&node);
    dc.Clear();
    return out.add("expanded", Drawn(&node, dc, CPoint(20, 0), CPoint(20, 0), nullptr, {&node})).text;
}

// The relative points come from the type that the node was made with; a clone takes them from
// the type it copies.
std::string TreeGeometryFixedAtMaking() {
    CVemBaseNode node(kVemBaseNode, "n", 1);
    node.NodeType = kVemProjectNode;  // as a load would read it
    Parts out;
    CVemRecordingDC dc;
    out.add("loaded type", Drawn(&node, dc, CPoint(0, 0), CPoint(0, 0), nullptr, {&node}));
    CVemBaseNode* clone = VemClone(&node);
    dc.Clear();
    out.add("clone", Drawn(clone, dc, CPoint(0, 0), CPoint(0, 0), nullptr, {clone}));
    VemDeleteNode(clone);
    return out.text;
}

// A compiled resource as the tree view shows it, painted into an SVG file: names with markup
// characters, Latin-1 letters and a control byte; one instance collapsed, its variable not shown.
// Then one text alone: the markup escaped, Latin-1 turned into UTF-8; lines and a known icon (an
// unknown one is not drawn); a file that cannot be made is not written.
std::string TreeSvg() {
    ShownNode exe(kVemExeNode, "Res1 <Steuerung & Co>", 121, 125);
    ShownNode* tasks = Add(&exe, new ShownNode(kVemTaskContainerNode, "TASKS", 122, 127));
    ShownNode* fast = Add(tasks, new ShownNode(kVemTuiTaskNode, "Fast", 122, 112));
    ShownNode* prog = Add(fast, new ShownNode(kVemProgramNode, "Main : PROG", 137, 112));
    ShownNode* counter = Add(prog, new ShownNode(kVemVariableNode, "Z\xE4hler", 125, 116, 0));
    Add(prog, new ShownNode(kVemArrayNode, "Werte[0..9]", 129, 116, 0));
    ShownNode* motor = Add(prog, new ShownNode(kVemFbInstanceNode, "Motor1 : FB_Motor", 125, 116, 0));
    Add(motor, new ShownNode(kVemVariableNode, "Speed", 125, 116, 0));
    ShownNode* slow = Add(tasks, new ShownNode(kVemTuiTaskNode, "Slow", 122, 112));
    Add(slow, new ShownNode(kVemFbNode, "FB_Motor", 115, 115));
    Add(slow, new ShownNode(kVemFunctionNode, "Scale", 124, 114));
    ShownNode* global = Add(&exe, new ShownNode(kVemBaseNode, "Global - Resource", 117, 149));
    ShownNode* rec = Add(global, new ShownNode(kVemStructNode, "Rec \"a\" 'b'", 130, 116));
    Add(rec, new ShownNode(kVemVariableNode, "x\x01y", 125, 116, 0));
    CVemSvgDC svg;
    VemDraw(&exe, &svg, CPoint(4, 4), CPoint(4, 4), counter);
    const CPoint bottom = VemGetBottomOfTree(&exe);
    vemtest::TempDir dir;
    const std::string path = dir.file("tree.svg");
    EXPECT_EQ(svg.WriteFile(path.c_str(), bottom), 1);
    EXPECT_FALSE(vemtest::FileExists(path + ".tmp"));
    const std::string file = vemtest::ReadFileText(path);
    EXPECT_EQ(file, svg.GetDocument(bottom));
    CVemSvgDC one;
    one.TextOut(0, 0, "a<b>&\"c\" \xFC\xDF\x80\x7F");
    CVemSvgDC lines;  // the lines join into one path, on the middles of the pixels
    lines.MoveTo(CPoint(-4, 0));
    lines.LineTo(CPoint(-4, 5));
    lines.LineTo(CPoint(3, 5));
    lines.MoveTo(CPoint(0, 9));
    lines.LineTo(CPoint(2, 9));
    const std::string joined = lines.GetDocument(CPoint(10, 10));
    EXPECT_FALSE(lines.DrawIcon(CPoint(0, 0), 999));
    EXPECT_TRUE(lines.DrawIcon(CPoint(0, 0), 117));
    EXPECT_EQ(lines.WriteFile(dir.file("missing/tree.svg").c_str(), CPoint(10, 10)), 0);
    EXPECT_FALSE(vemtest::FileExists(dir.file("missing/tree.svg")));
    return Parts()
        .add("resource", file)
        .add("one text", one.GetDocument(CPoint(100, 20)))
        .add("lines", joined)
        .add("lines and an icon", lines.GetDocument(CPoint(10, 10)))
        .text;
}

struct GoldenCase {
    const char* name;
    std::function<std::string()> make;
};

const GoldenCase kCases[] = {
    {"units_program", UnitsProgram},
    {"units_nested", UnitsNested},
    {"nodes_with_children", NodesWithChildren},
    {"exe_flags", ExeFlags},
    {"exe_contents", ExeContents},
    {"exe_line_maps", ExeLineMaps},
    {"tuitask_offsets_and_paths", TaskOffsetsAndPaths},
    {"tuitask_segment_table_first", TaskSegmentTableFirst},
    {"tuitask_container_files", TaskContainerFiles},
    {"tuitask_code_nodes", TaskCodeNodes},
    {"task_container", TaskContainer},
    {"evem_new_statement", EvemNewStatement},
    {"evem_kinds_zero_and_one", EvemKindsZeroAndOne},
    {"evem_kind_and_type_names", EvemKindAndTypeNames},
    {"evem_sign_and_accumulator", EvemSignAndAccumulator},
    {"evem_address_modes", EvemAddressModes},
    {"evem_new_and_loaded_variable", EvemNewAndLoadedVariable},
    {"evem_array_indexes", EvemArrayIndexes},
    {"evem_constant_values", EvemConstantValues},
    {"evem_operands", EvemOperands},
    {"evem_code_node", EvemCodeNodeFile},
    {"segment_kind_names", SegmentKindNames},
    {"segment_byte_sizes", SegmentByteSizes},
    {"segment_instance_tables", SegmentInstanceTables},
    {"tree_one_node", TreeOneNode},
    {"tree_selected_among_siblings", TreeSelectedAmongSiblings},
    {"tree_project", TreeProject},
    {"tree_children", TreeChildren},
    {"tree_collapsed", TreeCollapsed},
    {"tree_geometry_fixed_at_making", TreeGeometryFixedAtMaking},
    {"tree_svg", TreeSvg},
};

// The build may name this file relative to its build directory ("../tests/golden_test.cpp"): look
// for "tests/golden_test.cpp" from the working directory up.
std::filesystem::path GoldenDir() {
    std::filesystem::path source;
    for (const auto& part : std::filesystem::path(__FILE__))
        if (part != ".." && part != ".") source /= part;
    std::filesystem::path dir = std::filesystem::current_path();
    while (!std::filesystem::exists(dir / source) && dir.has_relative_path()) dir = dir.parent_path();
    return (dir / source).parent_path() / "golden";
}

}  // namespace

// The dumps print a null pointer in the C library's own form; the files keep the "(nil)" of glibc.
std::string HostNeutral(std::string text) {
    char null[32];
    std::snprintf(null, sizeof null, "%p", static_cast<void*>(nullptr));
    const std::string from = std::string("= ") + null + "\n";
    if (from == "= (nil)\n") return text;
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += 8)
        text.replace(at, from.size(), "= (nil)\n");
    return text;
}

TEST(Golden, EveryTextAsItsFile) {
    const bool update = std::getenv("VEM_UPDATE_GOLDEN") != nullptr;
    for (const GoldenCase& c : kCases) {
        LurResetSettings();
        const std::string text = HostNeutral(c.make());
        LurResetSettings();
        const std::filesystem::path path = GoldenDir() / (std::string(c.name) + ".txt");
        if (update) {
            vemtest::WriteFileText(path.string(), text);
            continue;
        }
        EXPECT_EQ(text, vemtest::ReadFileText(path.string()))
            << path << ": review the change, then VEM_UPDATE_GOLDEN=1";
    }
    EXPECT_FALSE(update) << "golden files written; review them with git diff tests/golden";
}

// Every file under golden/ belongs to a case, so a renamed case leaves no stale text behind.
TEST(Golden, NoFileWithoutItsCase) {
    std::set<std::string> names;
    for (const GoldenCase& c : kCases) names.insert(std::string(c.name) + ".txt");
    for (const auto& entry : std::filesystem::directory_iterator(GoldenDir())) {
        const std::string file = entry.path().filename().string();
        EXPECT_TRUE(file == "README.md" || file == ".gitattributes" || names.count(file)) << file;
    }
}

TEST(Golden, DumpToAFileThatCannotBeMadeWritesNothing) {
    vemtest::TempDir dir;
    evemtest::NodePtr code = Create(kEVemPouCodeNode, "U");
    const std::string path = dir.file("missing/unit.txt");
    EVemNodeDump(code.get(), path.c_str());
    EXPECT_FALSE(vemtest::FileExists(path));
    evemtest::NodePtr statement = Create(kEVemNotStmtNode);  // only code nodes write dump files
    EVemNodeDump(statement.get(), dir.file("s.txt").c_str());
    EXPECT_FALSE(vemtest::FileExists(dir.file("s.txt")));
}
