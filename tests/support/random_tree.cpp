#include "random_tree.h"

#include <iterator>

#include "node/basenode.h"
#include "test_util.h"

namespace vemtest {

namespace {

constexpr tVemNodeType kClasses[] = {kVemBaseNode,     kVemVariableNode,      kVemProgramNode,   kVemFbNode,
                                     kVemFunctionNode, kVemArrayNode,         kVemStructNode,    kVemTaskNode,
                                     kVemExeNode,      kVemResourceNode,      kVemConfigNode,    kVemProjectNode,
                                     kVemTuiTaskNode,  kVemTaskContainerNode, kVemFbInstanceNode};

CVemByteArray* RandomArray(Random& r) {
    // One draw a statement: the order in which a call's arguments are worked out differs by host.
    const int motorola = r.Coin();
    CVemByteArray* array = VemBaNewByteArray(motorola, static_cast<u16>(1 << r.Int(0, 2)), 1, 0);
    for (int i = r.Int(0, 40); i > 0; --i) VemBaAppendByte(array, static_cast<u8>(r.Int(0, 255)));
    return array;
}

void FillTable(Random& r, CSegmentTable* table) {
    if (!table) return;
    for (int i = r.Int(0, 5); i > 0; --i) VemSegTblAddNewSegment(table, r.Coin() ? RandomArray(r) : nullptr);
    VemSegTblSetPouName(table, r.Text());
}

// The class of each kind of statement, by the name of its column in the table of kinds.
constexpr const char* kKindClass[] = {
#define EVEM_NODE_TYPE(Value, Name, Class) #Class,
#include "vem_evem_types.def"
#undef EVEM_NODE_TYPE
};

// A statement of a random kind with random values in what a node file keeps of it: its place and
// code offset, and the operand of a variable, label, call or reference. The rest of a statement
// (types, constant, parameters) lives in memory only.
void AddRandomStatement(Random& r, CEVemBaseNode* code) {
    const int kind = r.Int(kEVemLdConstStmtNode, kEVemNodeTypeCount - 1);
    CEVemBaseNode* s = EVemAddNewStmtNode(code, static_cast<tEVemNodeType>(kind));
    if (!s) return;  // a kind without a class
    EVemSetAwlLine(s, r.Word());
    EVemSetUcodeOffset(s, r.Word());
    EVemSetName(s, r.Text().GetString());
    EVemSetTypeName(s, r.Text().GetString());
    EVemSetAddressMode(s, static_cast<tEVemAddressMode>(r.Int(0, 3)));
    EVemSetLabelNum(s, r.Word());
    if (std::string(kKindClass[kind]) != "Ref") {
        EVemSetOffset(s, r.Word());
        EVemSetFarOffset(s, r.Word());
    }
}

CEVemBaseNode* RandomCode(Random& r) {
    CEVemBaseNode* code = EVemCreateNode(kEVemPouCodeNode, CString());  // the name is not stored
    EVemSetPathName(code, r.Text().GetString());
    EVemSetPouType(code, static_cast<tEVemPouType>(r.Int(0, 3)));
    EVemSetDataSegSize(code, r.Word());
    for (int i = r.Int(0, 12); i > 0; --i) AddRandomStatement(r, code);
    return code;
}

tVemDeviceSettings RandomSettings(Random& r) {
    tVemDeviceSettings s{};
    s.DeviceWord1 = r.Word();
    s.DeviceWord2 = r.Word();
    s.MotorolaFormat = r.Int(0, 1);
    s.ResourceGlobalSegTable = r.Int(0, 1);
    s.OnlineLinking = r.Int(0, 1);
    s.IncrementalDownload = r.Int(0, 1);
    s.TaskDownload = r.Int(0, 1);
    s.MaxWatchEntries = r.Word();
    s.DeviceByte1 = static_cast<u8>(r.Int(0, 255));
    s.IpType = static_cast<u8>(r.Int(0, 255));
    s.Alignment = static_cast<u8>(r.Int(1, 4));
    s.ByteSize = static_cast<u8>(r.Int(1, 2));
    s.DeviceLong1 = static_cast<u32>(r.Int(0, 1 << 30));
    return s;
}

// Every setter of the node family with a random value; a node keeps those that it has a field for.
void SetFields(Random& r, CVemBaseNode* node, const std::string& dir) {
    VemSetName(node, r.Text());
    VemSetExpanded(node, r.Int(0, 1));
    VemSetCheckSum(node, static_cast<u32>(r.Int(0, 1 << 30)));
    VemSetScope(node, static_cast<tCbeVarScope>(r.Int(0, 8)));
    VemSetPredefinedFlag(node, r.Int(0, 1));
    VemSetPiLocation(node, r.Text());
    const auto line = static_cast<unsigned>(r.Int(0, 1 << 20));
    VemSetDclPosition(node, line, static_cast<unsigned>(r.Int(0, 1 << 20)));
    VemSetHeaderLength(node, r.Word());
    u16 segments[4];
    for (u16& segment : segments) segment = r.Word();
    VemSetSegmentNumbers(node, segments[0], segments[1], segments[2], segments[3]);
    VemSetParentSegment(node, r.Word());
    VemSetVariableType(node, static_cast<tCbeType>(r.Int(0, 30)));
    VemSetVarInOut(node, r.Int(0, 1));
    VemSetSize(node, r.Word());
    VemSetOffset(node, r.Word());
    VemSetSubSegmentKind(node, static_cast<tIpSegmentKind>(r.Int(0, 40)));
    VemSetNetVar(node, r.Int(0, 1));
    VemSetReference(node, r.Int(0, 1));
    VemSetGlobal(node, r.Int(0, 1));
    VemSetCrSize(node, r.Word());
    VemSetCrStackSize(node, r.Word());
    VemSetCrStackElements(node, r.Word());
    VemSetConfigName(node, r.Text());
    VemSetPathName(node, r.Text());
    VemSetCodePathName(node, r.Text());
    VemSetDataSegLength(node, r.Word());
    VemSetProgramNr(node, r.Word());
    VemSetTypeName(node, r.Text());
    VemSetVarQualifier(node, static_cast<tVemVarQualifiers>(r.Int(0, 15)));
    VemSetDatacontFilesProjectName(node, r.Text());
    VemSetDatacontFilesUserLevel(node, r.Word());
    VemSetDeviceSettings(node, RandomSettings(r));
    VemVariableCanBeWatched(node, r.Int(0, 1));
    for (int i = r.Int(0, 3); i > 0; --i) VemAddNewSegmentLength(node, r.Word());
    if (CDWordArray* offsets = node->GetAbsOffsets())
        for (int i = r.Int(0, 6); i > 0; --i) offsets->Add(static_cast<u32>(r.Int(0, 1 << 30)));
    FillTable(r, VemGetSegmentTable(node));
    FillTable(r, VemGetComponentList(node));
    if (CVemDimRange* range = VemGetRange(node)) {
        const int dimensions = r.Int(1, 3);
        VemSetDimensions(node, static_cast<u8>(dimensions));
        for (int d = 0; d < dimensions; ++d) {
            const int low = r.Int(-5, 5);
            VemSetDimRange4Index(range, static_cast<u8>(d), tVemDimRange{low, low + r.Int(0, 4), 0});
        }
    }
    const tVemNodeType type = VemGetNodeType(node);
    if (type == kVemExeNode) {
        VemSetTaskDefSegment(node, RandomArray(r));
        for (int i = r.Int(0, 2); i > 0; --i) {
            const std::string file = dir + "/carried" + std::to_string(r.Int(0, 1 << 20));
            vemtest::WriteFileText(file, r.Text().str());
            const CString key = r.Text();
            VemAddContainerFile(node, file.c_str(), key.GetString(), static_cast<unsigned>(r.Int(0, 3)));
        }
    }
    if (type == kVemTuiTaskNode) VemSetTaskDefEntry(node, RandomArray(r));
    if (type == kVemTaskContainerNode)
        for (int i = r.Int(0, 3); i > 0; --i) VemRegisterTask(node, r.Text());  // no file: no child is read
    if (CObList* codes = VemGetEvemRootNodeListPtr(node))
        for (int i = r.Int(0, 3); i > 0; --i) codes->AddTail(RandomCode(r));
}

}  // namespace

CVemBaseNode* RandomTree(Random& r, const std::string& dir, int depth) {
    CVemBaseNode* node = VemNewNode(kClasses[r.Int(0, std::size(kClasses) - 1)]);
    SetFields(r, node, dir);
    // A container stores the names of its tasks instead of its children.
    if (depth < 4 && VemGetNodeType(node) != kVemTaskContainerNode)
        for (int i = r.Int(0, 4 - depth); i > 0; --i) VemAddChildTail(node, RandomTree(r, dir, depth + 1));
    return node;
}

}  // namespace vemtest
