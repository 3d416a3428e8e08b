// export: the whole tree with its stored fields as JSON, for other tools.
#include <cstdio>

#include "json.h"
#include "tool.h"

namespace vemtool {
namespace {

bool IsVariable(u32 t) { return t == kVemVariableNode || t == kVemArrayNode || t == kVemStructNode || t == kVemFbInstanceNode; }
bool IsUnit(u32 t) { return t == kVemProgramNode || t == kVemFbNode || t == kVemFunctionNode || t == kVemTuiTaskNode; }

void Bytes(Json& j, const char* key, CVemByteArray* array) {
    j.Key(key);
    if (!array) {
        j.Null();
        return;
    }
    j.BeginObject();
    j.Field("byteSize", VemBaGetByteSize(array));
    j.Field("motorola", VemBaIsMotorolaFormat(array));
    j.Key("bytes");
    j.Hex(VemBaGetBytePointer(array), VemBaGetLength(array));
    j.EndObject();
}

void Segments(Json& j, const char* key, CSegmentTable* table) {
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

void Statement(Json& j, CEVemBaseNode* s) {
    j.BeginObject();
    j.Field("type", EVemGetNodeType(s));
    j.Field("awlLine", EVemGetAwlLine(s));
    const CString name = EVemGetName(s);
    if (!name.IsEmpty()) j.Field("name", name);
    if (EVemGetAddressMode(s) != kEVemNoAddressMode) {
        j.Field("nearOffset", EVemGetOffset(s));
        j.Field("farOffset", EVemGetFarOffset(s));
        j.Field("addressMode", EVemGetAddressMode(s));
    }
    const CString typeName = EVemGetTypeName(s);
    if (!typeName.IsEmpty()) j.Field("typeName", typeName);
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
        j.Field("pouType", EVemGetPouType(code));
        j.Field("dataSegSize", EVemGetDataSegSize(code));
        j.Key("statements");
        j.BeginArray();
        for (CEVemBaseNode* s = EVemGetStatementNode(code); s; s = EVemGetNext(s)) Statement(j, s);
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
    j.Field("variableType", VemGetVariableType(n));
    j.Field("reference", VemIsReference(n));
    j.Field("netVar", VemIsNetVar(n));
    j.Field("programNr", VemGetProgramNr(n));
    j.Field("typeName", VemGetTypeName(n));
    j.Field("scope", VemGetScope(n));
    j.Field("canBeWatched", VemCanVariableBeWatched(n));
    j.Field("varInOut", VemGetVarInOut(n));
    j.Field("subSegmentKind", VemGetSubSegmentKind(n));
    j.Field("piLocation", VemGetPiLocation(n));
    unsigned a = 0, b = 0;
    VemGetDclPosition(n, a, b);
    j.Key("dclPosition");
    j.BeginArray();
    j.Unsigned(a);
    j.Unsigned(b);
    j.EndArray();
    j.Field("qualifier", VemGetVarQualifier(n));
}

void Node(Json& j, CVemBaseNode* n);

void ArrayFields(Json& j, CVemBaseNode* n) {
    j.Field("dimensions", VemGetDimensions(n));
    j.Field("headerLength", VemGetHeaderLength(n));
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

void Node(Json& j, CVemBaseNode* n) {
    const u32 type = VemGetNodeType(n);
    j.BeginObject();
    j.Field("type", type);
    j.Field("class", n->GetRuntimeClass()->m_lpszClassName);
    j.Field("name", VemGetName(n));
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
        Segments(j, "segmentTable", VemGetSegmentTable(n));
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
    Json j(Out(), o.Has("--compact"));
    Node(j, tree.get());
    return kOk;
}

}  // namespace vemtool
