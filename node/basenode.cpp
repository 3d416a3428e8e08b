#include "node/basenode.h"
#include "node/layoutepoch.h"

#include "node/nodefile.h"
#include "node/walk.h"
#include "vem_limits.h"
#include "vem_node.h"

VEM_IMPLEMENT_SERIAL(CVemBaseNode, CObject, 5)

namespace {

u32 g_nextSerial = 0;

}  // namespace

u32 vem::TakeNextSerial() { return g_nextSerial++; }

CVemBaseNode::CVemBaseNode() : CVemBaseNode(kVemBaseNode, CString(), 1) {}

CVemBaseNode::CVemBaseNode(u32 nodeType, const CString& name, int expanded)
    : Name(name), Expanded(expanded), NodeType(static_cast<u16>(nodeType)) {
    ApplyTypeRules();
}

CVemBaseNode::CVemBaseNode(const CVemBaseNode& other)
    : CObject(),
      Name(other.Name),
      ExtraText(other.ExtraText),
      Serial(vem::TakeNextSerial()),
      Expanded(other.Expanded),
      NodeType(other.NodeType),
      KlikedSymbol(other.KlikedSymbol),
      HasSymbol(other.HasSymbol),
      m_topGeometry(&GeometryOf(other.NodeType) != &GeometryOf(kVemBaseNode)) {
    try {
        for (POSITION pos = other.Children.GetHeadPosition(); pos;) {
            CVemBaseNode* copy = other.ChildAt(pos)->Clone();
            try {
                CVemBaseNode::AddChildTail(copy);
            } catch (...) {
                delete copy;
                throw;
            }
        }
    } catch (...) {
        DeleteAllChildren();
        throw;
    }
}

CVemBaseNode::~CVemBaseNode() {
    const CVemDyingScope dying;
    vem::PathMapsForget(this);
    DeleteAllChildren();
    if (m_drawn) ForgetDrawn();
    vem::StepForget(this);
}

void CVemBaseNode::ApplyTypeRules() {
    const vem::nodetypes::Row* row = vem::nodetypes::Find(NodeType);
    m_topGeometry = row && row->Shape == vem::nodetypes::Row::Top;
    HasSymbol = row ? row->HasSymbol : 1;
    if (row && row->Expand == vem::nodetypes::Row::Open) Expanded = 1;
}

// Children are destroyed without recursion through the tree and without allocating: each
// node's own children move to the front of this list before it goes, so its destructor finds an
// empty list. The moved children still name the node that went as their parent, so no destructor
// below may walk up: the path maps are forgotten once here, from this node, which is whole.
void CVemBaseNode::DeleteAllChildren() {
    vem::TouchLayout();
    if (Children.IsEmpty()) return;
    vem::PathMapsForget(this);
    const CVemDyingScope dying;
    while (!Children.IsEmpty()) {
        auto* child = static_cast<CVemBaseNode*>(Children.RemoveHead());
        Children.SpliceFront(child->Children);
        delete child;
    }
}

//  offset  width   field
//  0       2       schema word (0)
//  2       1       node type, low 8 bits
//  3       1       expanded, low 8 bits
//  4       string  name
//  .       4       serial, written as 0
//  .       string  extra text
//  .       2       child count
//  .       .       per child: node type (1 byte), then the child's record
void CVemBaseNode::Serialize(CArchive& ar) {
    Serial = 0;
    if (ar.IsStoring()) {
        VemSerializeSchema(ar, kSchema);
        ar << static_cast<u8>(NodeType) << static_cast<u8>(Expanded) << Name << Serial << ExtraText;
    } else {
        ar.LoadSchema(kSchema);
        u8 type, expanded;
        ar >> type >> expanded >> Name >> Serial;
        ar.ReadText(ExtraText);
        NodeType = type;
        Expanded = expanded;
    }
    SerializeChildren(ar);
}

void CVemBaseNode::SerializeChildren(CArchive& ar) {
    if (ar.IsStoring()) {
        VemStoreCount16(ar, static_cast<u64>(Children.GetCount()));
        for (POSITION pos = Children.GetHeadPosition(); pos;) {
            CVemBaseNode* child = ChildAt(pos);
            ar << static_cast<u8>(child->GetNodeType());
            child->Serialize(ar);
        }
        return;
    }
    const u16 count = ar.ReadCount16(kMinNodeRecordBytes);
    CArchive::DepthGuard depth(ar);
    for (u16 i = 0; i < count; ++i) {
        u8 type;
        ar >> type;
        CVemBaseNode* child = vem::nodetypes::NewForLoad(type);
        child->Parent = this;
        try {
            CArchive::RecordScope record(ar, child->GetRuntimeClass()->m_lpszClassName);
            child->Serialize(ar);
            vem::nodetypes::CheckStoredType(child);
            record.Leave();
            Children.AddTail(child);
        } catch (...) {
            delete child;
            throw;
        }
    }
}

CVemBaseNode* CVemBaseNode::Clone() { return new CVemBaseNode(*this); }

CVemBaseNode* CVemBaseNode::DeleteNode(CVemBaseNode* target) {
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        POSITION here = pos;
        CVemBaseNode* child = ChildAt(pos);
        if (child == target) {
            vem::TouchLayout();
            Children.RemoveAt(here);
            delete child;
            return this;
        }
        if (CVemBaseNode* found = child->DeleteNode(target)) return found;
    }
    return nullptr;
}

// A function block reached again through references on one path is not entered again.
void CVemBaseNode::BuildNodePath2NodeList(CString path, CMapStringToOb* map) {
    const CVemWalkStep step(this, kVemMaxPathMapBytes);
    if (!step) return;
    const int blank = path.Find(' ');
    if (blank > 0) path = path.Left(blank);
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        CVemBaseNode* look = ChildAt(pos);
        if (look->GetNodeType() == kVemFbInstanceNode && look->IsReference()) {
            look = look->GetReferenceNode();
            if (!look) continue;  // an instance whose function block is not found has no path
        }
        CString work = path;
        switch (look->GetNodeType()) {
            case kVemFbNode:
            case kVemFunctionNode: {
                CString name = look->Name;
                const int colon = name.Find(':');
                if (colon > 0) name = name.Left(colon);
                work += ".";
                work += name;
                work.MakeUpper();
                if (!vem::SpendOnPath(work, map)) return;
                map->SetAt(work, look);
                look->BuildNodePath2NodeList(work, map);
                break;
            }
            case kVemStructNode:
                work += ".";
                work += look->Name;
                work.MakeUpper();
                look->BuildNodePath2NodeList(work, map);
                break;
            case kVemTuiTaskNode:
                work += look->Name;
                work.MakeUpper();
                look->BuildNodePath2NodeList(work, map);
                break;
            case kVemFbInstanceNode: break;
            default:
                work += ".";
                work += look->Name;
                work.MakeUpper();
                if (!vem::SpendOnPath(work, map)) return;
                map->SetAt(work, look);
                break;
        }
    }
}

int CVemBaseNode::AddChildTail(CVemBaseNode* child) {
    vem::TouchLayout();
    Children.AddTail(child);
    child->Parent = this;
    LastChild = child;
    return 1;
}

int CVemBaseNode::AddChildHead(CVemBaseNode* child) {
    vem::TouchLayout();
    Children.AddHead(child);
    child->Parent = this;
    LastChild = child;
    return 1;
}

int CVemBaseNode::AddChildSorted(CVemBaseNode* child) {
    vem::TouchLayout();
    child->Parent = this;
    const CString text = child->GetNodeText();
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        POSITION here = pos;
        if (ChildAt(pos)->GetNodeText().Compare(text) > 0) {
            Children.InsertBefore(here, child);
            return 1;
        }
    }
    Children.AddTail(child);
    return 1;
}

CVemByteArray CVemBaseNode::GetContainerFileContents(const char*) { return CVemByteArray(); }

void CVemBaseNode::ExpandArray() {
    const CVemWalkStep step(this, kVemMaxExpandedNodes);
    for (POSITION pos = Children.GetHeadPosition(); pos;) ChildAt(pos)->ExpandArray();
}

void CVemBaseNode::SetProgramNrOfChildren(u16 programNr) {
    for (POSITION pos = Children.GetHeadPosition(); pos;) ChildAt(pos)->SetProgramNr(programNr);
}

void CVemBaseNode::NodeDump(CFile* file, CString indent) {
    CString line;
    line.Format("%sBaseNodeType: %i\n", indent.GetString(), static_cast<int>(NodeType));
    WriteText(file, line);
    DumpChildren(file, indent);
}

void CVemBaseNode::DumpChildren(CFile* file, const CString& indent) {
    if (Children.IsEmpty()) return;  // most nodes are leaves: no indent of theirs to make
    const CString childIndent = indent + "  - ";
    for (POSITION pos = Children.GetHeadPosition(); pos;) ChildAt(pos)->NodeDump(file, childIndent);
}

void CVemBaseNode::WriteText(CFile* file, const CString& text) {
    file->Write(text.GetString(), static_cast<unsigned>(text.GetLength()));
}
