// export: the whole tree with its stored fields as JSON, for other tools.
#include <cstdio>

#include "json.h"
#include "tool.h"

namespace vemtool {
namespace {

bool IsVariable(u32 t) {
    return t == kVemVariableNode || t == kVemArrayNode || t == kVemStructNode || t == kVemFbInstanceNode;
}
bool IsUnit(u32 t) { return t == kVemProgramNode || t == kVemFbNode || t == kVemFunctionNode || t == kVemTuiTaskNode; }

void Bytes(Json& j, const char* key, CVemByteArray* array) {
    j.Key(key);
    if (!array) {
        j.Null();
        return;
    }
    j.BeginObject();
    j.Field("class", array->GetRuntimeClass()->m_lpszClassName);
    j.Field("byteSize", VemBaGetByteSize(array));
    j.Key("motorola");
    j.Bool(VemBaIsMotorolaFormat(array) != 0);
    j.Field("alignment", VemBaGetAlignment(array));
    j.Field("length", VemBaGetLength(array));
    j.Field("checkSum", VemBaComputeCheckSum(array, 0));
    j.Key("bytes");
    j.Hex(VemBaGetBytePointer(array), VemBaGetLength(array));
    j.EndObject();
}

void Segments(Json& j, const char* key, CSegmentTable* table, const CDWordArray* absolute = nullptr) {
    j.Key(key);
    if (!table) {
        j.Null();
        return;
    }
    j.BeginObject();
    j.Field("pouName", VemSegTblGetPouName(table));
    j.Field("startSegmentNo", VemSegTblGetStartSegmentNo(table));
    j.Field("nextSegmentNo", static_cast<u16>(VemSegTblGetMaxSegmentNo(table) + 1));
    j.Field("noOfSegments", VemSegTblGetNoOfSegments(table));
    j.Key("segments");
    j.BeginArray();
    for (int n = 0; n < table->GetSize(); ++n) {
        CVemByteArray* segment = VemSegTblGetSegment(table, static_cast<u16>(n));
        if (!segment) continue;
        j.BeginObject();
        j.Field("number", n);
        j.Key("absoluteStart");
        if (absolute && n < absolute->GetSize())
            j.Unsigned(absolute->GetAt(n));
        else
            j.Null();
        Bytes(j, "array", segment);
        j.EndObject();
    }
    j.EndArray();
    j.EndObject();
}

void AbsOffsets(Json& j, CVemBaseNode* node) {
    const CDWordArray* offsets = node->GetAbsOffsets();
    if (!offsets) return;
    j.Key("absOffsets");
    j.BeginArray();
    for (int i = 0; i < offsets->GetSize(); ++i) j.Unsigned(offsets->GetAt(i));
    j.EndArray();
}

void DataContainer(Json& j, CVemBaseNode* node) {
    CStringList files;
    if (!VemGetContainerFileList(node, &files)) return;
    j.Key("dataContainer");
    j.BeginArray();
    for (POSITION pos = files.GetHeadPosition(); pos;) {
        const CString key = files.GetNext(pos);
        j.BeginObject();
        j.Field("key", key);
        j.Field("type", VemGetContainerFileType(node, key));
        j.Field("checkSum", VemGetContainerFileCheckSum(node, key));
        j.EndObject();
    }
    j.EndArray();
}

void Named(Json& j, const char* key, const char* nameKey, u32 value, const char* name) {
    j.Field(key, static_cast<long long>(value));
    j.Field(nameKey, name);
}

void Statement(Json& j, CEVemBaseNode* s, int depth);

void StatementOrNull(Json& j, const char* key, CEVemBaseNode* s, int depth) {
    j.Key(key);
    if (s)
        Statement(j, s, depth + 1);
    else
        j.Null();
}

void NodeName(Json& j, const char* key, CVemBaseNode* node) {
    j.Key(key);
    if (node)
        j.String(VemGetName(node).GetString());
    else
        j.Null();
}

// One statement with every field the statement model keeps; the nodes of the tree that it points
// to are given by name.
void Statement(Json& j, CEVemBaseNode* s, int depth) {
    j.BeginObject();
    Named(j, "type", "typeName", static_cast<u32>(EVemGetNodeType(s)),
          StatementTypeName(static_cast<u32>(EVemGetNodeType(s))));
    u16 line = 0, column = 0;
    EVemGetAwlPosition(s, line, column);
    j.Field("awlLine", line);
    j.Field("awlColumn", column);
    j.Field("ucodeOffset", EVemGetUcodeOffset(s));
    j.Field("name", EVemGetName(s));
    j.Key("negOperand");
    j.Bool(EVemGetNegOperand(s) != 0);
    j.Field("accuType", EVemGetAccuType(s));
    Named(j, "cbeType", "cbeTypeName", EVemGetCbeType(s), DataTypeName(EVemGetCbeType(s)));
    Named(j, "addressMode", "addressModeName", EVemGetAddressMode(s), AddressModeName(EVemGetAddressMode(s)));
    j.Field("nearOffset", EVemGetOffset(s));
    j.Field("farOffset", EVemGetFarOffset(s));
    j.Field("labelNum", EVemGetLabelNum(s));
    Named(j, "inType", "inTypeName", EVemGetInType(s), DataTypeName(EVemGetInType(s)));
    Named(j, "outType", "outTypeName", EVemGetOutType(s), DataTypeName(EVemGetOutType(s)));
    j.Field("declaredType", EVemGetTypeName(s));
    Bytes(j, "value", EVemGetValue(s));
    NodeName(j, "vemNode", EVemGetVemNode(s));
    NodeName(j, "instanceNode", EVemGetInstanceNode(s));
    NodeName(j, "elementNode", EVemGetElementNode(s));
    j.Key("indexNodes");
    j.BeginArray();
    const int count = depth < 16 ? EVemGetIndexCount(s) : 0;
    for (int i = 0; i < count; ++i) {
        if (CEVemBaseNode* index = EVemGetIndexNode(s, i))
            Statement(j, index, depth + 1);
        else
            j.Null();
    }
    j.EndArray();
    StatementOrNull(j, "stringLParam", depth < 16 ? EVemGetStdStringLParamStmtNode(s) : nullptr, depth);
    StatementOrNull(j, "stringPParam", depth < 16 ? EVemGetStdStringPParamStmtNode(s) : nullptr, depth);
    StatementOrNull(j, "stringIn2Param", depth < 16 ? EVemGetStdStringIn2ParamStmtNode(s) : nullptr, depth);
    j.EndObject();
}

void CodeNodes(Json& j, CVemBaseNode* node) {
    CObList* list = VemGetEvemRootNodeListPtr(node);
    if (!list) return;
    j.Key("codeNodes");
    j.BeginArray();
    for (POSITION pos = list->GetHeadPosition(); pos;) {
        auto* code = static_cast<CEVemBaseNode*>(list->GetNext(pos));
        j.BeginObject();
        j.Field("pathName", EVemGetPathName(code));
        Named(j, "pouType", "pouTypeName", EVemGetPouType(code), PouTypeName(EVemGetPouType(code)));
        j.Field("dataSegSize", EVemGetDataSegSize(code));
        j.Key("statements");
        j.BeginArray();
        for (CEVemBaseNode* s = EVemGetStatementNode(code); s; s = EVemGetNext(s)) Statement(j, s, 0);
        j.EndArray();
        j.EndObject();
    }
    j.EndArray();
}

void DeviceSettings(Json& j, const tVemDeviceSettings& d) {
    j.Key("deviceSettings");
    j.BeginObject();
    j.Field("deviceWord1", d.DeviceWord1);
    j.Field("deviceWord2", d.DeviceWord2);
    j.Field("motorolaFormat", d.MotorolaFormat);
    j.Field("resourceGlobalSegTable", d.ResourceGlobalSegTable);
    j.Field("onlineLinking", d.OnlineLinking);
    j.Field("incrementalDownload", d.IncrementalDownload);
    j.Field("oneSegTableAtOnlineLinking", d.OneSegTableAtOnlineLinking);
    j.Field("onlineEditor", d.OnlineEditor);
    j.Field("taskDownload", d.TaskDownload);
    j.Field("taskStart", d.TaskStart);
    j.Field("maxWatchEntries", d.MaxWatchEntries);
    const u8 bytes[] = {d.DeviceByte1, d.DeviceByte2, d.DeviceByte3, d.DeviceByte4, d.DeviceByte5, d.DeviceByte6};
    j.Key("deviceBytes1To6");
    j.BeginArray();
    for (u8 b : bytes) j.Number(b);
    j.EndArray();
    j.Field("ipType", d.IpType);
    j.Field("deviceWord3", d.DeviceWord3);
    j.Field("deviceByte7", d.DeviceByte7);
    j.Field("alignment", d.Alignment);
    j.Field("byteSize", d.ByteSize);
    j.Field("deviceLong1", d.DeviceLong1);
    j.Field("deviceByte9", d.DeviceByte9);
    j.Field("deviceLong2", d.DeviceLong2);
    j.Key("deviceLong3");
    j.BeginArray();
    j.Unsigned(d.DeviceLong3[0]);
    j.Unsigned(d.DeviceLong3[1]);
    j.EndArray();
    j.EndObject();
}

void VariableFields(Json& j, CVemBaseNode* n) {
    j.Field("offset", VemGetOffset(n));
    j.Field("size", VemGetSize(n));
    j.Field("parentSegment", VemGetParentSegment(n));
    Named(j, "variableType", "variableTypeName", VemGetVariableType(n), DataTypeName(VemGetVariableType(n)));
    j.Field("reference", VemIsReference(n));
    j.Field("netVar", VemIsNetVar(n));
    j.Field("programNr", VemGetProgramNr(n));
    j.Field("declaredType", VemGetTypeName(n));
    j.Field("scope", VemGetScope(n));
    j.Field("canBeWatched", VemCanVariableBeWatched(n));
    j.Field("varInOut", VemGetVarInOut(n));
    Named(j, "subSegmentKind", "subSegmentKindName", VemGetSubSegmentKind(n), SegmentKindName(VemGetSubSegmentKind(n)));
    j.Field("piLocation", VemGetPiLocation(n));
    unsigned a = 0, b = 0;
    VemGetDclPosition(n, a, b);
    j.Key("dclPosition");
    j.BeginArray();
    j.Unsigned(a);
    j.Unsigned(b);
    j.EndArray();
    j.Field("qualifier", VemGetVarQualifier(n));
    j.Field("instanceText", VemGetInstanceText(n));
    j.Key("absoluteAddress");  // computed: the task's start of the segment plus the offset
    u32 address = 0;
    if (AbsoluteAddress(n, address))
        j.Unsigned(address);
    else
        j.Null();
}

void Node(Json& j, CVemBaseNode* n);

void ArrayFields(Json& j, CVemBaseNode* n) {
    j.Field("dimensions", VemGetDimensions(n));
    j.Field("headerLength", VemGetHeaderLength(n));
    j.Field("arrayCode", VemGetArrayCode(n));
    j.Field("elementSizeOfType", VemGetArrayElementSizeOfType(n));
    if (CVemDimRange* range = VemGetRange(n)) {
        j.Key("ranges");
        j.BeginArray();
        const u8 count = VemGetDimSize(range);
        for (u8 i = 0; i < count; ++i) {
            try {
                const tVemDimRange r = VemGetDimRange(range, i);
                j.BeginObject();
                j.Field("low", r.LowBound);
                j.Field("high", r.HighBound);
                j.Field("current", r.CurrentIndex);
                j.EndObject();
            } catch (const CInvalidArgException&) {
                break;  // a range without entries for its count
            }
        }
        j.EndArray();
    }
    j.Key("element");
    if (CVemBaseNode* element = VemGetReferenceNode(n)) {
        Node(j, element);
    } else {
        j.Null();
    }
}

void UnitFields(Json& j, CVemBaseNode* n) {
    j.Field("codeSegment", VemGetCodeSegment(n));
    j.Field("dataSegment", VemGetDataSegment(n));
    j.Field("iniSegment", VemGetIniSegment(n));
    j.Field("crSize", VemGetCrSize(n));
    j.Field("crStackSize", VemGetCrStackSize(n));
    j.Field("crStackElements", VemGetCrStackElements(n));
    j.Field("codePathName", VemGetCodePathName(n));
    j.Field("checkSum", VemGetCheckSum(n));
    j.Field("date", VemGetDate(n));
    j.Field("dataSegLength", VemGetDataSegLength(n));
    j.Field("startOffset", n->GetStartOffset());
    j.Field("path", VemGetPathName(n));
    j.Field("programNr", VemGetProgramNr(n));
    if (n->NodeType == kVemProgramNode || n->NodeType == kVemTuiTaskNode) j.Field("global", VemGetGlobal(n));
    Bytes(j, "pflArray", VemGetPflArray(n));
    j.Key("statList");
    j.BeginArray();
    if (CStatList* list = VemGetStatList(n)) {
        u16 key = 0;
        CObject* value = nullptr;
        for (POSITION pos = list->GetStartPosition(); pos;) {
            list->GetNextAssoc(pos, key, value);
            auto* entry = static_cast<CStatListEntry*>(value);
            j.BeginObject();
            j.Field("awlLine", entry->AwlLine);
            j.Field("codeLine", entry->CodeLine);
            j.Field("aeType", entry->AEType);
            j.Field("operandType", entry->OperandType);
            j.EndObject();
        }
    }
    j.EndArray();
}

Progress* gProgress = nullptr;
std::size_t gWritten = 0;

void Node(Json& j, CVemBaseNode* n) {
    if (gProgress) gProgress->Step(++gWritten);
    const u32 type = VemGetNodeType(n);
    j.BeginObject();
    Named(j, "type", "typeName", type, NodeTypeName(type));
    j.Field("class", n->GetRuntimeClass()->m_lpszClassName);
    j.Field("text", VemGetNodeText(n));
    j.Field("name", VemGetName(n));
    j.Field("serial", n->Serial);
    j.Field("expanded", n->Expanded);
    j.Field("extraText", n->ExtraText);
    if (IsVariable(type)) VariableFields(j, n);
    if (type == kVemArrayNode) ArrayFields(j, n);
    if (IsUnit(type)) UnitFields(j, n);
    if (type == kVemResourceNode || type == kVemExeNode) j.Field("configName", VemGetConfigName(n));
    if (const CMapStringToString* tasks = VemGetTaskFileMap(n)) {
        j.Key("tasks");
        j.BeginObject();
        CString key, file;
        for (POSITION pos = tasks->GetStartPosition(); pos;) {
            tasks->GetNextAssoc(pos, key, file);
            j.Field(key, file);
        }
        j.EndObject();
    }
    if (type == kVemTuiTaskNode || type == kVemExeNode) {
        Segments(j, "segmentTable", VemGetSegmentTable(n), n->GetAbsOffsets());
        AbsOffsets(j, n);
        DataContainer(j, n);
        CodeNodes(j, n);
    }
    if (type == kVemTuiTaskNode) Bytes(j, "taskDefEntry", VemGetTaskDefEntry(n));
    if (type == kVemExeNode) {
        Segments(j, "componentList", VemGetComponentList(n));
        Bytes(j, "taskDefSegment", VemGetTaskDefSegment(n));
        if (const tVemDeviceSettings* d = VemGetDeviceSettings(n)) DeviceSettings(j, *d);
        const char* project = VemGetDatacontFilesProjectName(n);
        j.Field("datacontFilesProjectName", project ? project : "");
        j.Field("datacontFilesUserLevel", VemGetDatacontFilesUserLevel(n, 0));
    }
    j.Key("children");
    j.BeginArray();
    for (CVemBaseNode* child : Children(n)) Node(j, child);
    j.EndArray();
    j.EndObject();
}

}  // namespace

int CmdExport(const Options& o) {
    if (!o.Has("--json")) return Usage("export needs --json");
    if (o.Files().size() != 1) return Usage("export takes one node file");
    Tree tree(Load(o, o.Files()[0]));
    if (!tree.get()) return kFailed;
    if (!OpenOutput(o.Value("--output"))) return kFailed;
    Progress progress("export", State().progress ? Subtree(tree.get()).size() : 0);  // a count only for a person
    gProgress = &progress;
    Json j(Out(), o.Has("--compact"));
    j.BeginObject();
    j.Field("schema", "vem32/1");
    j.Field("file", o.Files()[0].c_str());
    j.Key("evem");
    j.Bool(State().evem);
    j.Field("libraryVersion", GetVemDllVersion());
    j.Key("root");
    Node(j, tree.get());
    j.EndObject();
    gProgress = nullptr;
    return kOk;
}

}  // namespace vemtool
