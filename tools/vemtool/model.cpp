// The compile result read once from the library, for export and html alike.
#include "model.h"

namespace vemtool {

bool IsVariableType(u32 t) {
    return t == kVemVariableNode || t == kVemArrayNode || t == kVemStructNode || t == kVemFbInstanceNode;
}
bool IsUnitType(u32 t) {
    return t == kVemProgramNode || t == kVemFbNode || t == kVemFunctionNode || t == kVemTuiTaskNode;
}

const SegmentRecord* SegmentTableRecord::Find(u16 number) const {
    for (const SegmentRecord& s : segments) {
        if (s.number == number) return &s;
    }
    return nullptr;
}

namespace {

VariableRecord ReadVariable(CVemBaseNode* n) {
    VariableRecord v{};
    v.offset = VemGetOffset(n);
    v.size = VemGetSize(n);
    v.parentSegment = VemGetParentSegment(n);
    v.variableType = VemGetVariableType(n);
    v.reference = VemIsReference(n);
    v.netVar = VemIsNetVar(n);
    v.programNr = VemGetProgramNr(n);
    v.declaredType = VemGetTypeName(n);
    v.scope = VemGetScope(n);
    v.canBeWatched = VemCanVariableBeWatched(n);
    v.varInOut = VemGetVarInOut(n);
    v.subSegmentKind = VemGetSubSegmentKind(n);
    v.piLocation = VemGetPiLocation(n);
    VemGetDclPosition(n, v.dclLine, v.dclColumn);
    v.qualifier = VemGetVarQualifier(n);
    v.instanceText = VemGetInstanceText(n);
    u32 address = 0;
    if (AbsoluteAddress(n, address)) v.address = address;
    return v;
}

ArrayRecord ReadArray(CVemBaseNode* n) {
    ArrayRecord a{};
    a.dimensions = VemGetDimensions(n);
    a.headerLength = VemGetHeaderLength(n);
    a.arrayCode = VemGetArrayCode(n);
    a.elementSizeOfType = VemGetArrayElementSizeOfType(n);
    if (CVemDimRange* range = VemGetRange(n)) {
        a.hasRanges = true;
        const u8 count = VemGetDimSize(range);
        for (u8 i = 0; i < count; ++i) {
            try {
                a.ranges.push_back(VemGetDimRange(range, i));
            } catch (const CInvalidArgException&) {
                break;  // a range without entries for its count
            }
        }
    }
    if (CVemBaseNode* element = VemGetReferenceNode(n)) a.element = std::make_unique<Model>(element);
    return a;
}

UnitRecord ReadUnit(CVemBaseNode* n) {
    UnitRecord u{};
    u.codeSegment = VemGetCodeSegment(n);
    u.dataSegment = VemGetDataSegment(n);
    u.iniSegment = VemGetIniSegment(n);
    u.crSize = VemGetCrSize(n);
    u.crStackSize = VemGetCrStackSize(n);
    u.crStackElements = VemGetCrStackElements(n);
    u.codePathName = VemGetCodePathName(n);
    u.checkSum = VemGetCheckSum(n);
    u.date = VemGetDate(n);
    u.dataSegLength = VemGetDataSegLength(n);
    u.startOffset = n->GetStartOffset();
    u.path = VemGetPathName(n);
    u.programNr = VemGetProgramNr(n);
    u.global = VemGetGlobal(n);
    u.pflArray = VemGetPflArray(n);
    if (CStatList* list = VemGetStatList(n)) {
        u16 key = 0;
        CObject* value = nullptr;
        for (POSITION pos = list->GetStartPosition(); pos;) {
            list->GetNextAssoc(pos, key, value);
            auto* entry = static_cast<CStatListEntry*>(value);
            u.statList.push_back({entry->AwlLine, entry->CodeLine, entry->AEType, entry->OperandType});
        }
    }
    return u;
}

std::optional<SegmentTableRecord> ReadSegments(CSegmentTable* table, const CDWordArray* absolute = nullptr) {
    if (!table) return std::nullopt;
    SegmentTableRecord r;
    r.pouName = VemSegTblGetPouName(table);
    r.startSegmentNo = VemSegTblGetStartSegmentNo(table);
    r.nextSegmentNo = static_cast<u16>(VemSegTblGetMaxSegmentNo(table) + 1);
    r.noOfSegments = VemSegTblGetNoOfSegments(table);
    for (int n = 0; n < table->GetSize(); ++n) {
        CVemByteArray* segment = VemSegTblGetSegment(table, static_cast<u16>(n));
        if (!segment) continue;
        SegmentRecord s{static_cast<u16>(n), std::nullopt, segment};
        if (absolute && n < absolute->GetSize()) s.absoluteStart = absolute->GetAt(n);
        r.segments.push_back(s);
    }
    return r;
}

std::unique_ptr<CompiledRecord> ReadCompiled(CVemBaseNode* n, u32 type) {
    auto record = std::make_unique<CompiledRecord>();
    CompiledRecord& c = *record;
    c.segmentTable = ReadSegments(VemGetSegmentTable(n), n->GetAbsOffsets());
    if (const CDWordArray* offsets = n->GetAbsOffsets()) {
        c.absOffsets.emplace();
        for (int i = 0; i < offsets->GetSize(); ++i) c.absOffsets->push_back(offsets->GetAt(i));
    }
    CStringList files;
    if (VemGetContainerFileList(n, &files)) {
        c.dataContainer.emplace();
        for (POSITION pos = files.GetHeadPosition(); pos;) {
            const CString key = files.GetNext(pos);
            c.dataContainer->push_back({key, VemGetContainerFileType(n, key), VemGetContainerFileCheckSum(n, key)});
        }
    }
    if (CObList* list = VemGetEvemRootNodeListPtr(n)) {
        c.codeNodes.emplace();
        for (POSITION pos = list->GetHeadPosition(); pos;)
            c.codeNodes->push_back(static_cast<CEVemBaseNode*>(list->GetNext(pos)));
    }
    if (type == kVemTuiTaskNode) c.taskDefEntry = VemGetTaskDefEntry(n);
    if (type == kVemExeNode) {
        c.componentList = ReadSegments(VemGetComponentList(n));
        c.taskDefSegment = VemGetTaskDefSegment(n);
        c.deviceSettings = VemGetDeviceSettings(n);
        const char* project = VemGetDatacontFilesProjectName(n);
        c.datacontFilesProjectName = project ? project : "";
        c.datacontFilesUserLevel = VemGetDatacontFilesUserLevel(n, 0);
    }
    return record;
}

}  // namespace

ModelNode ReadNode(CVemBaseNode* n) {
    const u32 type = VemGetNodeType(n);
    ModelNode m{n,
                type,
                n->GetRuntimeClass()->m_lpszClassName,
                VemGetNodeText(n),
                VemGetName(n),
                n->Serial,
                n->Expanded,
                n->ExtraText,
                n->GetIconID(),
                VemGetBitmapID(n),
                -1,
                0,
                1,
                {},
                {},
                {},
                {},
                {},
                {}};
    if (IsVariableType(type)) m.variable = ReadVariable(n);
    if (type == kVemArrayNode) m.array = std::make_unique<ArrayRecord>(ReadArray(n));
    if (IsUnitType(type)) m.unit = std::make_unique<UnitRecord>(ReadUnit(n));
    if (type == kVemResourceNode || type == kVemExeNode) m.configName = std::make_unique<CString>(VemGetConfigName(n));
    if (const CMapStringToString* tasks = VemGetTaskFileMap(n)) {
        m.tasks = std::make_unique<std::vector<std::pair<CString, CString>>>();
        CString key, file;
        for (POSITION pos = tasks->GetStartPosition(); pos;) {
            tasks->GetNextAssoc(pos, key, file);
            m.tasks->emplace_back(key, file);
        }
    }
    if (type == kVemTuiTaskNode || type == kVemExeNode) m.compiled = ReadCompiled(n, type);
    return m;
}

Model::Model(CVemBaseNode* root, Progress* progress) {
    if (root) Add(root, -1, progress);
}

void Model::Add(CVemBaseNode* n, int parent, Progress* progress) {
    const int at = static_cast<int>(nodes_.size());
    if (progress) progress->Step(nodes_.size() + 1);
    nodes_.push_back(ReadNode(n));
    nodes_.back().parent = parent;
    int children = 0;
    for (CVemBaseNode* child : Children(n)) {
        Add(child, at, progress);
        ++children;
    }
    nodes_[static_cast<std::size_t>(at)].children = children;
    nodes_[static_cast<std::size_t>(at)].size = static_cast<int>(nodes_.size()) - at;
}

int Model::IndexOf(CVemBaseNode* node) const {
    if (index_.empty()) {
        index_.reserve(nodes_.size());
        for (std::size_t i = 0; i < nodes_.size(); ++i) index_.emplace(nodes_[i].node, static_cast<int>(i));
    }
    const auto found = index_.find(node);
    return found == index_.end() ? -1 : found->second;
}

int Model::TableOwner(int index) const {
    for (int i = index; i >= 0; i = nodes_[static_cast<std::size_t>(i)].parent) {
        const ModelNode& m = nodes_[static_cast<std::size_t>(i)];
        if (m.compiled && m.compiled->segmentTable) return i;
    }
    return -1;
}

}  // namespace vemtool
