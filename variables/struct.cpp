#include "variables/struct.h"

#include "vem_node.h"

VEM_IMPLEMENT_SERIAL(CVemStructNode, CVemVariableNode, 5)
VEM_IMPLEMENT_SERIAL(CVemFbInstanceNode, CVemVariableNode, 5)

namespace {

const char kGlobalResourceName[] = "Global - Resource";

}  // namespace

// ---- structure -------------------------------------------------------------------------------------

CVemStructNode::CVemStructNode() : CVemStructNode(CString(), 0, 0) {}

CVemStructNode::CVemStructNode(const CString& name, u16 offset, u16 size, int)
    : CVemVariableNode(name, offset, kCbeTypeStruct, size, 0) {}

CVemStructNode::CVemStructNode(const CVemStructNode& other) = default;

CVemStructNode::~CVemStructNode() = default;

// Members stand in the base record as children, in front of the structure's own variable fields.
void CVemStructNode::Serialize(CArchive& ar) { CVemVariableNode::Serialize(ar); }

CVemBaseNode* CVemStructNode::Clone() { return new CVemStructNode(*this); }

// The members take the structure's segment, whether or not the structure's own rule let it change.
void CVemStructNode::SetParentSegment(u16 segment) {
    CVemVariableNode::SetParentSegment(segment);
    for (POSITION pos = Children.GetHeadPosition(); pos;) ChildAt(pos)->SetParentSegment(ParentSegment);
}

// A nested structure adds its new offset to its own members, so members end up with the sum of the
// offsets of all structures above them.
int CVemStructNode::ShiftOffsets(u32 amount) {
    CVemVariableNode::ShiftOffsets(amount);
    ShiftMembers();
    return 1;
}

// Only the structure's own offset depends on its sub segment; the members follow it.
int CVemStructNode::ComputeOffsets(const u16* startOffsets) {
    CVemVariableNode::ComputeOffsets(startOffsets);
    ShiftMembers();
    return 1;
}

void CVemStructNode::ShiftMembers() {
    for (POSITION pos = Children.GetHeadPosition(); pos;) ChildAt(pos)->ShiftOffsets(GetOffset());
}

void CVemStructNode::SetProgramNr(u16 programNr) {
    ProgramNr = programNr;
    SetProgramNrOfChildren(programNr);
}

// By the bare name of a direct member, with case counting.
CVemBaseNode* CVemStructNode::GetChildNodeByName(CString name) {
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = ChildAt(pos);
        if (child->Name == name) return child;
    }
    return nullptr;
}

// ---- function block instance ------------------------------------------------------------------------

CVemFbInstanceNode::CVemFbInstanceNode() : CVemFbInstanceNode(CString(), 0, CString()) {}

CVemFbInstanceNode::CVemFbInstanceNode(const CString& name, u16 offset, const CString& instanceText)
    : CVemVariableNode(name, offset, kCbeTypeFbInstance, 0xFFFF, 0) {
    InstanceText = instanceText;
    Size = kInstanceSize;
}

// A clone stands for the same function block, so it keeps the source's Predefined flag.
CVemFbInstanceNode::CVemFbInstanceNode(const CVemFbInstanceNode& other) = default;

CVemFbInstanceNode::~CVemFbInstanceNode() = default;

CVemBaseNode* CVemFbInstanceNode::Clone() { return new CVemFbInstanceNode(*this); }

// Looked up anew at each call: nothing is cached, so a tree may change between calls.
CVemBaseNode* CVemFbInstanceNode::GetReferenceNode() {
    const CString key = Name + " : " + GetTypeName();
    CVemBaseNode* task = Parent;
    while (task && task->GetNodeType() != kVemTuiTaskNode) task = task->Parent;
    if (!task) return nullptr;
    CVemBaseNode* found = VemFindVemNodeByNameAndType(task, key, kVemFbNode);
    if (found && found != this) return found;
    // What is global to the resource hangs two levels above the task (resource, task container,
    // task); a task that stands higher has no such level and finds nothing there.
    CVemBaseNode* above = task->Parent ? task->Parent->Parent : nullptr;
    if (!above) return nullptr;
    CVemBaseNode* global = VemFindVemNodeByNameAndType(above, kGlobalResourceName, kVemBaseNode);
    if (!global) return nullptr;
    for (POSITION pos = global->Children.GetHeadPosition(); pos;) {
        if (CVemBaseNode* fb = VemFindVemNodeByNameAndType(global->ChildAt(pos), key, kVemFbNode)) return fb;
    }
    return nullptr;
}

void CVemFbInstanceNode::SetPredefinedFlag(int predefined) { Predefined = predefined; }

int CVemFbInstanceNode::IsPredefined() { return Predefined; }
