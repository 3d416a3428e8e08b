// Compiled task: segments, absolute offsets, the path map, the record and the dump.
#include "project/tuitask.h"

#include <memory>

#include "node/layoutepoch.h"
#include "node/walk.h"
#include "project/compiled.h"
#include "statement/evembase.h"
#include "statement/evemlist.h"
#include "vem_bytearray.h"
#include "vem_node.h"

VEM_IMPLEMENT_SERIAL(CVemTuiTaskNode, CVemProgramNode, 5)

CVemTuiTaskNode::CVemTuiTaskNode() : CVemTuiTaskNode(CString(), CString()) {}

CVemTuiTaskNode::CVemTuiTaskNode(const CString& name, const CString& path) : CVemProgramNode(name, path, CString()) {
    NodeType = kVemTuiTaskNode;
    SegmentTable = std::make_unique<CSegmentTable>(0);
}

CVemTuiTaskNode::~CVemTuiTaskNode() {
    vem::PathMapDrop(this);
    vem::evem::DeleteRootList(EvemRootNodeList);
}

// A null table leaves the node with a new empty one, so that it can always store itself.
void CVemTuiTaskNode::SetSegmentTable(CSegmentTable*& table) {
    vem::TouchLayout();
    CSegmentTable* taken = table ? table : new CSegmentTable(0);
    if (taken != SegmentTable.get()) SegmentTable.reset(taken);
    table = nullptr;
}

u16 CVemTuiTaskNode::AddNewSegmentLength(u16 length) { return vem::AppendSegmentLength(AbsOffsets, length); }

//  width   field                                  condition
//  .       program record, children inline
//  2       schema word (1)
//  .       segment table
//  .       download list, dropped                 version 0 only
//  .       task definition entry, tagged buffer
//  .       data container
//  .       absolute offsets, word array
//  .       byte buffer, tagged, dropped           version 0 only
//  2+      code nodes: count, then each record    only with the statement model
// The path map is not stored.
void CVemTuiTaskNode::Serialize(CArchive& ar) {
    CVemProgramNode::Serialize(ar);
    const u16 schema = VemSerializeSchema(ar, kSchema);
    if (ar.IsLoading()) {
        SegmentTable = std::make_unique<CSegmentTable>(0);
    }
    SegmentTable->Serialize(ar);
    if (schema == 0) vem::SkipDownloadList(ar);
    vem::SerializeOwned(TaskDefEntry, ar);
    DataContainer.Serialize(ar);
    AbsOffsets.Serialize(ar);
    if (schema == 0) vem::SkipByteBuffer(ar);
    if (vem::evem::IsEnabled()) vem::evem::SerializeRootList(ar, EvemRootNodeList);
}

// ---- paths and offsets -----------------------------------------------------------------------------

// The map is emptied and filled again in place, so that a pointer that a host took from
// VemGetNodePath2NodeList stays a map. It is emptied too when any node of the tree goes (walk.h).
void CVemTuiTaskNode::CreateChildNodePathList() {
    if (NodePath2NodeList) {
        NodePath2NodeList->RemoveAll();
    } else {
        NodePath2NodeList = std::make_unique<CMapStringToOb>(10);
    }
    vem::PathMapKeep(this, NodePath2NodeList.get());
    BuildNodePath2NodeList(Name, NodePath2NodeList.get());
}

// A unit stands for its data segment from its start; any other node for its own place.
u32 CVemTuiTaskNode::GetAbsoluteVariableOffset(CString path) {
    if (!NodePath2NodeList) return 0;
    path.MakeUpper();
    CObject* found = nullptr;
    if (!NodePath2NodeList->Lookup(path, found)) return 0;
    auto* node = static_cast<CVemBaseNode*>(found);
    u16 segment = 0;
    u16 offset = 0;
    switch (node->GetNodeType()) {
        case kVemProgramNode:
        case kVemFbNode:
        case kVemFunctionNode:
        case kVemTuiTaskNode: segment = node->GetDataSegment(); break;
        default:
            offset = node->GetOffset();
            segment = node->GetParentSegment();
            break;
    }
    if (segment >= AbsOffsets.GetSize()) return kNoAbsoluteOffset;
    return AbsOffsets.GetAt(segment) + offset;
}

CString CVemTuiTaskNode::GetPouPathNameFromCodeSegNr(u16 codeSegment) {
    if (codeSegment == GetCodeSegment()) return GetPathName();
    return vem::UnitPathInChildren(this, codeSegment);
}

// ---- dump ------------------------------------------------------------------------------------------

// The table's own dump goes straight to the file, ahead of what the text has gathered.
CString CVemTuiTaskNode::SegmentTableDumpText(CFile* file, const CString& prefix) {
    if (SegmentTable->GetSize() > 0) {
        SegmentTable->Dump(prefix, file);
        return CString();
    }
    return vem::DumpNewLine(prefix) + "No Segmenttable found !! \n";
}

CString CVemTuiTaskNode::OffsetsDumpText(const CString& prefix) {
    const CString nl = vem::DumpNewLine(prefix);
    CString text;
    for (int i = 1; i < AbsOffsets.GetSize(); ++i) {
        text += nl;
        text.AppendFormat("SegmentNr: %i ->Offset:%lli", i, static_cast<long long>(AbsOffsets.GetAt(i)));
    }
    text += nl + kVemDumpRule;
    CString key;
    CObject* node = nullptr;
    for (POSITION pos = NodePath2NodeList->GetStartPosition(); pos;) {
        NodePath2NodeList->GetNextAssoc(pos, key, node);
        text += nl;
        text.AppendFormat("Variable: %s ->Offset:%lli", key.GetString(),
                          static_cast<long long>(GetAbsoluteVariableOffset(key)));
    }
    text += nl + kVemDumpRule;
    return text;
}

CString CVemTuiTaskNode::PathListDumpText(const CString& prefix) {
    const CString nl = vem::DumpNewLine(prefix);
    CString text = nl + "No AbsoluteOffsetTable  found !! " + "\n";
    if (!NodePath2NodeList) return text;
    text += nl + "Dump of Childnodepathlist ";
    CString key;
    CObject* object = nullptr;
    for (POSITION pos = NodePath2NodeList->GetStartPosition(); pos;) {
        NodePath2NodeList->GetNextAssoc(pos, key, object);
        auto* node = static_cast<CVemBaseNode*>(object);
        text += nl;
        text.AppendFormat("Variable: %s ->NodeName:%s , SegmentNummer:%u", key.GetString(),
                          VemGetName(node).GetString(), static_cast<unsigned>(VemGetParentSegment(node)));
    }
    text += nl + kVemDumpRule;
    return text;
}

void CVemTuiTaskNode::DumpCodeNodes(CFile* file, CString text, const CString& prefix) {
    const CString nl = vem::DumpNewLine(prefix);
    if (!vem::evem::IsEnabled()) {
        text += nl + "No EVEM Information for this OEM !! \n";
        WriteText(file, text);
        return;
    }
    WriteText(file, text);
    for (POSITION pos = EvemRootNodeList.GetHeadPosition(); pos;) {
        auto* node = static_cast<CEVemBaseNode*>(EvemRootNodeList.GetNext(pos));
        WriteText(file, nl + EVemGetPathName(node) + "\n");
        vem::evem::DumpNode(node, file, prefix + "->>");
    }
}

void CVemTuiTaskNode::NodeDump(CFile* file, CString indent) {
    const CString& prefix = indent;
    const CString nl = vem::DumpNewLine(prefix);
    CString text = prefix + "*TUITASKNODE: " + Name + "\n" + prefix;
    text.AppendFormat("GlobalFlag: %i \n", static_cast<int>(GlobalFlag));
    text += nl + kVemDumpRule + prefix + "======== Dump of SegmentTable in TuiTaskNode =========\n ";
    text += SegmentTableDumpText(file, prefix);
    text += prefix + "======== AbsoluteOffsetTable and ChildNodePathList ========= ";
    const bool haveMap = NodePath2NodeList && !NodePath2NodeList->IsEmpty();
    text += haveMap && !AbsOffsets.IsEmpty() ? OffsetsDumpText(prefix) : PathListDumpText(prefix);
    text += vem::DataContainerDumpText(DataContainer, prefix);
    text += prefix + "======== TuiTaskNode has EVEM Information for following Pou's   ========= ";
    DumpCodeNodes(file, text, prefix);
    WriteText(file, nl + kVemDumpRule);
    CVemProgramNode::NodeDump(file, indent);
}
