// CVemPouNode: construction, copy, and what a unit gives its children.
#include "units/pou.h"

#include "node/flags.h"
#include "node/layoutepoch.h"

VEM_IMPLEMENT_SERIAL(CVemPouNode, CVemBaseNode, 5)

CVemPouNode::CVemPouNode() : CVemPouNode(0, CString(), CString()) {}

// A unit starts expanded, showing its variables.
CVemPouNode::CVemPouNode(u32 nodeType, const CString& name, const CString& path)
    : CVemBaseNode(nodeType, name, 1), StatList(new CStatList), Path(path) {}

// NccSegNr is not copied: the clone has none, as a new node.
CVemPouNode::CVemPouNode(const CVemPouNode& other)
    : CVemBaseNode(other),
      StartOffset(other.StartOffset),
      CodeSegNr(other.CodeSegNr),
      DataSegNr(other.DataSegNr),
      IniDataSegNr(other.IniDataSegNr),
      CrSize(other.CrSize),
      SizeCrStack(other.SizeCrStack),
      ElemCrStack(other.ElemCrStack),
      Checksum(other.Checksum),
      Date(other.Date),
      DataSegLength(other.DataSegLength),
      Path(other.Path),
      CodeFileName(other.CodeFileName),
      ProgramNr(other.ProgramNr) {
    std::unique_ptr<CStatList> list(other.StatList->Clone());
    if (!list) VemThrowMemory();
    std::unique_ptr<CVemByteArray> pfl(other.PflArray ? other.PflArray->Clone() : nullptr);
    if (other.DataSegmentPtr) ClonedDataSegment.reset(other.DataSegmentPtr->Clone());
    StatList = std::move(list);
    PflArray = std::move(pfl);
    DataSegmentPtr = ClonedDataSegment.get();
}

CVemPouNode::~CVemPouNode() = default;

CVemBaseNode* CVemPouNode::Clone() { return new CVemPouNode(*this); }

void CVemPouNode::SetCheckSum(u32 checkSum) { Checksum = checkSum; }

u32 CVemPouNode::GetCheckSum() { return Checksum; }

u32 CVemPouNode::GetDate() { return Date; }

unsigned CVemPouNode::GetBitmapID() { return 116; }

// With the debug flag the data segment stands in front of the name.
CString CVemPouNode::GetNodeText() {
    if (!vem::DebugFlagValue()) return Name;
    CString text;
    text.Format("%u   %s", static_cast<unsigned>(GetDataSegment()), Name.GetString());
    return text;
}

void CVemPouNode::SetCodeSegment(u16 segment) {
    vem::TouchLayout();
    CodeSegNr = segment;
}

void CVemPouNode::SetDataSegment(u16 segment) {
    vem::TouchLayout();
    DataSegNr = segment;
}

void CVemPouNode::SetIniSegment(u16 segment) { IniDataSegNr = segment; }

void CVemPouNode::SetNccSegment(u16 segment) { NccSegNr = segment; }

u16 CVemPouNode::GetCodeSegment() { return CodeSegNr; }

u16 CVemPouNode::GetDataSegment() { return DataSegNr; }

u16 CVemPouNode::GetIniSegment() { return IniDataSegNr; }

u16 CVemPouNode::GetNccSegment() { return IniDataSegNr; }

u16 CVemPouNode::GetParentSegment() { return GetDataSegment(); }

// Variables at a process image address and references stay out of the unit's data segment. Only
// plain variables are tested: structures and arrays pass the number on to their members.
void CVemPouNode::SetChildSegments() {
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = ChildAt(pos);
        if (child->GetNodeType() == kVemVariableNode) {
            if (!child->GetPiLocation().IsEmpty() || child->IsReference()) continue;
        }
        child->SetParentSegment(DataSegNr);
    }
}

void CVemPouNode::SetDataSegmentPtr(CVemByteArray* array) { DataSegmentPtr = array; }

CVemByteArray* CVemPouNode::GetDataSegmentPtr() { return DataSegmentPtr; }

// Offsets change in place: a second call adds the start offsets again.
int CVemPouNode::ComputeOffsets(const u16* startOffsets) {
    for (POSITION pos = Children.GetHeadPosition(); pos;) ChildAt(pos)->ComputeOffsets(startOffsets);
    return 1;
}

CStatList* CVemPouNode::GetStatList() { return StatList.get(); }

CVemByteArray* CVemPouNode::GetPflArray() { return PflArray.get(); }

// Takes the array; one held before is the caller's to have taken away.
void CVemPouNode::SetPflArray(CVemByteArray* array) {
    static_cast<void>(PflArray.release());
    PflArray.reset(array);
}

// Units and instances below a unit go; variables, arrays and structures stay.
void CVemPouNode::DeleteAllChildPous() {
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        POSITION here = pos;
        CVemBaseNode* child = ChildAt(pos);
        switch (child->GetNodeType()) {
            case kVemProgramNode:
            case kVemFbNode:
            case kVemFunctionNode:
            case kVemFbInstanceNode:
                vem::TouchLayout();
                Children.RemoveAt(here);
                delete child;
                break;
            default: break;
        }
    }
}

void CVemPouNode::SetCrSize(u16 size) { CrSize = size; }

u16 CVemPouNode::GetCrSize() { return CrSize; }

void CVemPouNode::SetCrStackSize(u16 size) { SizeCrStack = size; }

u16 CVemPouNode::GetCrStackSize() { return SizeCrStack; }

void CVemPouNode::SetCrStackElements(u16 elements) { ElemCrStack = elements; }

u16 CVemPouNode::GetCrStackElements() { return ElemCrStack; }

void CVemPouNode::SetPathName(CString pathName) { Path = pathName; }

CString CVemPouNode::GetPathName() { return Path; }

void CVemPouNode::SetCodePathName(CString pathName) { CodeFileName = pathName; }

CString CVemPouNode::GetCodePathName() { return CodeFileName; }

void CVemPouNode::SetDataSegLength(u16 length) { DataSegLength = length; }

u16 CVemPouNode::GetDataSegLength() { return DataSegLength; }

u32 CVemPouNode::GetStartOffset() { return StartOffset; }

void CVemPouNode::SetStartOffset(u32 offset) { StartOffset = offset; }

// The number reaches the whole subtree through the children's own SetProgramNr.
void CVemPouNode::SetProgramNr(u16 programNr) {
    ProgramNr = programNr;
    SetProgramNrOfChildren(programNr);
}

u16 CVemPouNode::GetProgramNr() { return ProgramNr; }
