// export: the whole tree with its stored fields as JSON, for other tools.
#include <cstdio>
#include <cstring>

#include "json.h"
#include "model.h"

namespace vemtool {
namespace {

void Bytes(Json& j, Json::Name key, CVemByteArray* array) {
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

void Segments(Json& j, Json::Name key, const std::optional<SegmentTableRecord>& table) {
    j.Key(key);
    if (!table) {
        j.Null();
        return;
    }
    j.BeginObject();
    j.Field("pouName", table->pouName);
    j.Field("startSegmentNo", table->startSegmentNo);
    j.Field("nextSegmentNo", table->nextSegmentNo);
    j.Field("noOfSegments", table->noOfSegments);
    j.Key("segments");
    j.BeginArray();
    for (const SegmentRecord& segment : table->segments) {
        j.BeginObject();
        j.Field("number", segment.number);
        j.Key("absoluteStart");
        if (segment.absoluteStart)
            j.Unsigned(*segment.absoluteStart);
        else
            j.Null();
        Bytes(j, "array", segment.array);
        j.EndObject();
    }
    j.EndArray();
    j.EndObject();
}

// Keys of known length: the copies of hundreds of thousands of them are inlined.
template <std::size_t K, std::size_t N>
void Named(Json& j, const char (&key)[K], const char (&nameKey)[N], u32 value, const char* name) {
    j.Field(key, static_cast<long long>(value));
    j.Key(nameKey);
    j.PlainString(name);
}

void Statement(Json& j, CEVemBaseNode* s, int depth);

template <std::size_t K>
void StatementOrNull(Json& j, const char (&key)[K], CEVemBaseNode* s, int depth) {
    j.Key(key);
    if (s)
        Statement(j, s, depth + 1);
    else
        j.Null();
}

template <std::size_t K>
void NodeName(Json& j, const char (&key)[K], CVemBaseNode* node) {
    j.Key(key);
    if (node)
        j.String(VemGetName(node).GetString());
    else
        j.Null();
}

// One statement with every field the statement model keeps; the nodes of the tree that it points
// to are given by name. A large resource has hundreds of thousands of statements: their fields
// come from the library in one call and go into the text in a row.
void Statement(Json& j, CEVemBaseNode* s, int depth) {
    tEVemStatementFields f;
    EVemGetStatementFields(s, &f);
    const char* const names[] = {StatementTypeName(static_cast<u32>(f.Type)), DataTypeName(f.CbeType),
                                 AddressModeName(f.AddressMode), DataTypeName(f.InType), DataTypeName(f.OutType)};
    std::size_t lengths[5];
    std::size_t chars = 0;
    for (int i = 0; i < 5; ++i) chars += lengths[i] = std::strlen(names[i]);
    const std::size_t nameLength = f.Name.view().size();
    const std::size_t typeLength = f.TypeName.view().size();
    // The keys of the 28 fields have 277 characters; a literal value ("false", "null", "[]") at
    // most 5, a number at most 24 (see Json::Row).
    constexpr std::size_t kFields = 28, kKeys = 277 + 9 * 5, kNumbers = 12 * 24, kQuotes = 7 * 2;
    const std::size_t room = chars + 6 * (nameLength + typeLength) + kKeys + kNumbers + kQuotes;
    j.BeginObject();
    Json::Row row(j, kFields, room);
    row.Number("type", static_cast<long long>(static_cast<u32>(f.Type)));
    row.Plain("typeName", names[0], lengths[0]);
    row.Number("awlLine", f.AwlLine);
    row.Number("awlColumn", f.AwlColumn);
    row.Number("ucodeOffset", f.UcodeOffset);
    row.String("name", f.Name.GetString(), nameLength);
    row.Bool("negOperand", f.NegOperand != 0);
    row.Number("accuType", f.AccuType);
    row.Number("cbeType", f.CbeType);
    row.Plain("cbeTypeName", names[1], lengths[1]);
    row.Number("addressMode", f.AddressMode);
    row.Plain("addressModeName", names[2], lengths[2]);
    row.Number("nearOffset", f.Offset);
    row.Number("farOffset", f.FarOffset);
    row.Number("labelNum", f.LabelNum);
    row.Number("inType", f.InType);
    row.Plain("inTypeName", names[3], lengths[3]);
    row.Number("outType", f.OutType);
    row.Plain("outTypeName", names[4], lengths[4]);
    row.String("declaredType", f.TypeName.GetString(), typeLength);
    // Most statements point to nothing more: those fields go on in the row, the rest the long way.
    if (f.Value) {
        row.Hand();
        Bytes(j, "value", f.Value);
        row.Take(kFields, room);
    } else {
        row.Null("value");
    }
    const auto node = [&](const auto& key, CVemBaseNode* n) {
        if (n) {
            row.Hand();
            NodeName(j, key, n);
            row.Take(kFields, room);
        } else {
            row.Null(key);
        }
    };
    node("vemNode", f.VemNode);
    node("instanceNode", f.InstanceNode);
    node("elementNode", f.ElementNode);
    const int count = depth < 16 ? f.IndexCount : 0;
    if (count <= 0) {
        row.Literal("indexNodes", "[]", 2);
    } else {
        row.Hand();
        j.Key("indexNodes");
        j.BeginArray();
        for (int i = 0; i < count; ++i) {
            if (CEVemBaseNode* index = EVemGetIndexNode(s, i))
                Statement(j, index, depth + 1);
            else
                j.Null();
        }
        j.EndArray();
        row.Take(kFields, room);
    }
    const auto param = [&](const auto& key, CEVemBaseNode* p) {
        if (depth < 16 && p) {
            row.Hand();
            StatementOrNull(j, key, p, depth);
            row.Take(kFields, room);
        } else {
            row.Null(key);
        }
    };
    param("stringLParam", f.StdStringLParam);
    param("stringPParam", f.StdStringPParam);
    param("stringIn2Param", f.StdStringIn2Param);
    row.Hand();
    j.EndObject();
}

void CodeNodes(Json& j, const std::vector<CEVemBaseNode*>& codes) {
    j.Key("codeNodes");
    j.BeginArray();
    for (CEVemBaseNode* code : codes) {
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

// A large resource has hundreds of thousands of variables: their fields go into the text in rows.
void VariableFields(Json& j, const VariableRecord& v) {
    const char* const typeName = DataTypeName(v.variableType);
    const char* const kindName = SegmentKindName(v.subSegmentKind);
    const std::size_t typeNameLength = std::strlen(typeName), kindNameLength = std::strlen(kindName);
    const std::size_t declaredLength = v.declaredType.view().size();
    const std::size_t piLength = v.piLocation.view().size();
    const std::size_t instanceLength = v.instanceText.view().size();
    // Keys of the first 15 fields: 154 characters; of the last 3: 36. A number: at most 24
    // characters, a text 6 for each of its own and its quotes, "null" 4.
    Json::Row row(j, 15, 154 + 11 * 24 + typeNameLength + kindNameLength + 6 * (declaredLength + piLength) + 4 * 2);
    row.Number("offset", static_cast<long long>(v.offset));
    row.Number("size", static_cast<long long>(v.size));
    row.Number("parentSegment", static_cast<long long>(v.parentSegment));
    row.Number("variableType", static_cast<long long>(static_cast<u32>(v.variableType)));
    row.Plain("variableTypeName", typeName, typeNameLength);
    row.Number("reference", static_cast<long long>(v.reference));
    row.Number("netVar", static_cast<long long>(v.netVar));
    row.Number("programNr", static_cast<long long>(v.programNr));
    row.String("declaredType", v.declaredType.GetString(), declaredLength);
    row.Number("scope", static_cast<long long>(v.scope));
    row.Number("canBeWatched", static_cast<long long>(v.canBeWatched));
    row.Number("varInOut", static_cast<long long>(v.varInOut));
    row.Number("subSegmentKind", static_cast<long long>(static_cast<u32>(v.subSegmentKind)));
    row.Plain("subSegmentKindName", kindName, kindNameLength);
    row.String("piLocation", v.piLocation.GetString(), piLength);
    row.Hand();
    j.Key("dclPosition");
    j.BeginArray();
    j.Unsigned(v.dclLine);
    j.Unsigned(v.dclColumn);
    j.EndArray();
    row.Take(3, 36 + 2 * 24 + 6 * instanceLength + 2 + 4);
    row.Number("qualifier", static_cast<long long>(v.qualifier));
    row.String("instanceText", v.instanceText.GetString(), instanceLength);
    if (v.address)  // computed: the task's start of the segment plus the offset
        row.Number("absoluteAddress", static_cast<long long>(*v.address));
    else
        row.Null("absoluteAddress");
    row.Hand();
}

Progress* gProgress = nullptr;
std::size_t gWritten = 0;

int Node(Json& j, const std::vector<ModelNode>& nodes, int at);

void ArrayFields(Json& j, const ArrayRecord& a) {
    j.Field("dimensions", a.dimensions);
    j.Field("headerLength", a.headerLength);
    j.Field("arrayCode", a.arrayCode);
    j.Field("elementSizeOfType", a.elementSizeOfType);
    if (a.hasRanges) {
        j.Key("ranges");
        j.BeginArray();
        for (const tVemDimRange& r : a.ranges) {
            j.BeginObject();
            j.Field("low", r.LowBound);
            j.Field("high", r.HighBound);
            j.Field("current", r.CurrentIndex);
            j.EndObject();
        }
        j.EndArray();
    }
    j.Key("element");
    if (a.element && !a.element->Nodes().empty()) {
        Node(j, a.element->Nodes(), 0);
    } else {
        j.Null();
    }
}

void UnitFields(Json& j, const ModelNode& m) {
    const UnitRecord& u = *m.unit;
    j.Field("codeSegment", u.codeSegment);
    j.Field("dataSegment", u.dataSegment);
    j.Field("iniSegment", u.iniSegment);
    j.Field("crSize", u.crSize);
    j.Field("crStackSize", u.crStackSize);
    j.Field("crStackElements", u.crStackElements);
    j.Field("codePathName", u.codePathName);
    j.Field("checkSum", u.checkSum);
    j.Field("date", u.date);
    j.Field("dataSegLength", u.dataSegLength);
    j.Field("startOffset", u.startOffset);
    j.Field("path", u.path);
    j.Field("programNr", u.programNr);
    if (m.type == kVemProgramNode || m.type == kVemTuiTaskNode) j.Field("global", u.global);
    Bytes(j, "pflArray", u.pflArray);
    j.Key("statList");
    j.BeginArray();
    for (const StatEntry& entry : u.statList) {
        j.BeginObject();
        j.Field("awlLine", entry.awlLine);
        j.Field("codeLine", entry.codeLine);
        j.Field("aeType", entry.aeType);
        j.Field("operandType", entry.operandType);
        j.EndObject();
    }
    j.EndArray();
}

// A node's own fields, all but its children.
void Fields(Json& j, const ModelNode& m) {
    const char* const typeName = NodeTypeName(m.type);
    const char* const className = m.className ? m.className : "";
    const std::size_t typeLength = std::strlen(typeName), classLength = std::strlen(className);
    const std::size_t textLength = m.text.view().size(), nameLength = m.name.view().size();
    const std::size_t extraLength = m.extraText.view().size();
    // Keys: 48 characters; 3 numbers; 5 texts in quotes.
    Json::Row row(j, 8, 48 + 3 * 24 + typeLength + 6 * (classLength + textLength + nameLength + extraLength) + 5 * 2);
    row.Number("type", static_cast<long long>(m.type));
    row.Plain("typeName", typeName, typeLength);
    row.String("class", className, classLength);
    row.String("text", m.text.GetString(), textLength);
    row.String("name", m.name.GetString(), nameLength);
    row.Number("serial", static_cast<long long>(m.serial));
    row.Number("expanded", static_cast<long long>(m.expanded));
    row.String("extraText", m.extraText.GetString(), extraLength);
    row.Hand();
    if (m.variable) VariableFields(j, *m.variable);
    if (m.array) ArrayFields(j, *m.array);
    if (m.unit) UnitFields(j, m);
    if (m.configName) j.Field("configName", *m.configName);
    if (m.tasks) {
        j.Key("tasks");
        j.BeginObject();
        for (const auto& [key, file] : *m.tasks) {
            j.Key(key.GetString());
            j.String(file.GetString());
        }
        j.EndObject();
    }
    if (const CompiledRecord* c = m.compiled ? &*m.compiled : nullptr) {
        Segments(j, "segmentTable", c->segmentTable);
        if (c->absOffsets) {
            j.Key("absOffsets");
            j.BeginArray();
            for (u32 offset : *c->absOffsets) j.Unsigned(offset);
            j.EndArray();
        }
        if (c->dataContainer) {
            j.Key("dataContainer");
            j.BeginArray();
            for (const ContainerFile& f : *c->dataContainer) {
                j.BeginObject();
                j.Field("key", f.key);
                j.Field("type", f.type);
                j.Field("checkSum", f.checkSum);
                j.EndObject();
            }
            j.EndArray();
        }
        if (c->codeNodes) CodeNodes(j, *c->codeNodes);
        if (m.type == kVemTuiTaskNode) Bytes(j, "taskDefEntry", c->taskDefEntry);
        if (m.type == kVemExeNode) {
            Segments(j, "componentList", c->componentList);
            Bytes(j, "taskDefSegment", c->taskDefSegment);
            if (c->deviceSettings) DeviceSettings(j, *c->deviceSettings);
            j.Field("datacontFilesProjectName", c->datacontFilesProjectName.c_str());
            j.Field("datacontFilesUserLevel", c->datacontFilesUserLevel);
        }
    }
}

// The node at `at` of a model with its subtree; gives the index behind the subtree.
int Node(Json& j, const std::vector<ModelNode>& nodes, int at) {
    const ModelNode& m = nodes[static_cast<std::size_t>(at)];
    j.BeginObject();
    Fields(j, m);
    j.Key("children");
    j.BeginArray();
    int next = at + 1;
    for (int c = 0; c < m.children; ++c) next = Node(j, nodes, next);
    j.EndArray();
    j.EndObject();
    return next;
}

// The tree below `node` read and written node by node: a model of the whole of a large tree would
// take about as much memory as the tree itself.
void Node(Json& j, CVemBaseNode* node) {
    if (gProgress) gProgress->Step(++gWritten);
    j.BeginObject();
    Fields(j, ReadNode(node));
    j.Key("children");
    j.BeginArray();
    CObList* children = VemGetChildList(node);
    for (POSITION pos = children->GetHeadPosition(); pos;) Node(j, static_cast<CVemBaseNode*>(children->GetNext(pos)));
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
    Progress progress("export", State().progress ? Subtree(tree.get()).size() : 0);
    gProgress = &progress;
    gWritten = 0;
    StartBulkOutput();
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
