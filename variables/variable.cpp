#include "variables/variable.h"
#include "vem_ext.h"

#include "node/dumptext.h"
#include "node/flags.h"
#include "node/layoutepoch.h"
#include "platform/fieldio.h"
#include "vem_limits.h"
#include "vem_node.h"

VEM_IMPLEMENT_SERIAL(CVemVariableNode, CVemBaseNode, 5)

CVemVariableNode::CVemVariableNode() : CVemVariableNode(CString(), 0, kCbeTypeUndef, 0, 0) {}

CVemVariableNode::CVemVariableNode(const CString& name, u16 offset, tCbeType type, u16 size, tCbeVarScope scope)
    : CVemBaseNode(NodeTypeOfDataType(type), name, 0), Offset(offset), Size(size), VariableType(type), Scope(scope) {}

CVemVariableNode::CVemVariableNode(const CVemVariableNode& other)
    : CVemBaseNode(other),
      Offset(other.Offset),
      Size(other.Size),
      ParentSegment(other.ParentSegment),
      ProgramNr(other.ProgramNr),
      Reference(other.Reference),
      SubSegmentKind(other.SubSegmentKind),
      VariableType(other.VariableType),
      Scope(other.Scope),
      NetVar(other.NetVar),
      CanBeWatched(other.CanBeWatched),
      VarInOut(other.VarInOut),
      VarQualifier(other.VarQualifier),
      DclPositionA(other.DclPositionA),
      DclPositionB(other.DclPositionB),
      TypeName(other.TypeName),
      InstanceText(other.InstanceText),
      PiLocation(other.PiLocation) {}

CVemVariableNode::~CVemVariableNode() = default;

u32 CVemVariableNode::NodeTypeOfDataType(tCbeType type) {
    switch (type) {
        case kCbeTypeArray: return kVemArrayNode;
        case kCbeTypeStruct: return kVemStructNode;
        case kCbeTypeFbInstance: return kVemFbInstanceNode;
        default: return kVemVariableNode;
    }
}

// Behind the base record (and so behind the children):
//  width   field                     in the file since version
//  2       schema word (3)
//  2       offset                    0
//  2       size                      0
//  2       parent segment            0
//  1       variable type             0
//  1       reference flag            0
//  1       net variable flag         0
//  2       program number            0
//  string  type name                 0
//  1       scope                     0
//  1       can be watched            0
//  1       in/out flag               0
//  string  instance text             0
//  2       sub-segment kind          1
//  string  PI location               2
//  2       declaration position A    2
//  2       declaration position B    2
//  4       qualifier                 3
// A load of an older record leaves the later fields as the constructor made them.
void CVemVariableNode::Serialize(CArchive& ar) {
    CVemBaseNode::Serialize(ar);
    const u16 schema = ar.IsLoading() ? ar.LoadSchema(kSchema) : VemSerializeSchema(ar, kSchema);
    vem::SerializeField<u16>(ar, Offset);
    vem::SerializeField<u16>(ar, Size);
    vem::SerializeField<u16>(ar, ParentSegment);
    vem::SerializeField<u8>(ar, VariableType);
    vem::SerializeField<u8>(ar, Reference);
    vem::SerializeField<u8>(ar, NetVar);
    vem::SerializeField<u16>(ar, ProgramNr);
    vem::SerializeText(ar, TypeName);
    vem::SerializeField<u8>(ar, Scope);
    vem::SerializeField<u8>(ar, CanBeWatched);
    vem::SerializeField<u8>(ar, VarInOut);
    vem::SerializeText(ar, InstanceText);
    if (schema < 1) return;
    vem::SerializeField<u16>(ar, SubSegmentKind);
    if (schema < 2) return;
    vem::SerializeText(ar, PiLocation);
    vem::SerializeField<u16>(ar, DclPositionA);
    vem::SerializeField<u16>(ar, DclPositionB);
    if (schema < 3) return;
    vem::SerializeField<u32>(ar, VarQualifier);
}

CVemBaseNode* CVemVariableNode::Clone() { return new CVemVariableNode(*this); }

void CVemVariableNode::SetScope(tCbeVarScope scope) { Scope = scope; }

tCbeVarScope CVemVariableNode::GetScope() { return Scope; }

void CVemVariableNode::SetPiLocation(CString location) { PiLocation = location; }

CString CVemVariableNode::GetPiLocation() { return PiLocation; }

void CVemVariableNode::SetDclPosition(unsigned positionA, unsigned positionB) {
    DclPositionA = positionA;
    DclPositionB = positionB;
}

void CVemVariableNode::GetDclPosition(unsigned& positionA, unsigned& positionB) {
    positionA = DclPositionA;
    positionB = DclPositionB;
}

// Name, " : " and the type name if there is one; with the debug flag the layout as well, through
// the virtual getters, so that arrays and structures answer for themselves. Segment numbers have
// 13 bits; the bits above them are not part of the number.
CString CVemVariableNode::GetNodeText() {
    CString text = Name;
    if (!TypeName.IsEmpty()) {
        text += " : ";
        text += TypeName;
    }
    if (vem::DebugFlagValue()) {
        text.AppendFormat(" | Offset: %x | Size: %x | Seg: %i  | Ref: %i | Prg: %i", static_cast<unsigned>(GetOffset()),
                          static_cast<unsigned>(GetSize()), GetParentSegment() & 0x1FFF, Reference,
                          static_cast<int>(GetProgramNr()));
    }
    return text;
}

u16 CVemVariableNode::GetParentSegment() { return ParentSegment; }

// A variable of scope 8 that holds its data itself stays out of the segment numbering of its unit;
// a reference of that scope takes part in it.
void CVemVariableNode::SetParentSegment(u16 segment) {
    if (Scope == kOwnDataScope && Reference == 0) return;
    vem::TouchLayout();
    ParentSegment = segment;
}

void CVemVariableNode::SetVariableType(tCbeType type) {
    vem::TouchLayout();  // a string's elements take another size
    VariableType = type;
}

tCbeType CVemVariableNode::GetVariableType() { return VariableType; }

void CVemVariableNode::VariableCanBeWatched(int canBeWatched) {
    CanBeWatched = canBeWatched;
    for (POSITION pos = Children.GetHeadPosition(); pos;) ChildAt(pos)->VariableCanBeWatched(canBeWatched);
}

int CVemVariableNode::CanVariableBeWatched() { return CanBeWatched; }

void CVemVariableNode::SetVarInOut(int inOut) {
    VarInOut = inOut;
    for (POSITION pos = Children.GetHeadPosition(); pos;) ChildAt(pos)->SetVarInOut(inOut);
}

int CVemVariableNode::GetVarInOut() { return VarInOut; }

u16 CVemVariableNode::GetSize() { return Size; }

void CVemVariableNode::SetSize(u16 size) {
    vem::TouchLayout();
    Size = size;
}

u16 CVemVariableNode::GetOffset() { return Offset; }

u16 CVemVariableNode::GetParamVarOffset() { return Offset; }

void CVemVariableNode::SetOffset(u16 offset) {
    vem::TouchLayout();
    Offset = offset;
}

void CVemVariableNode::SetSubSegmentKind(tIpSegmentKind kind) { SubSegmentKind = kind; }

tIpSegmentKind CVemVariableNode::GetSubSegmentKind() { return SubSegmentKind; }

int CVemVariableNode::ShiftOffsets(u32 amount) {
    SetOffset(static_cast<u16>(GetOffset() + amount));
    return 1;
}

// The offset was relative to the variable's sub segment; the sub segment's start makes it relative
// to the segment. The caller's table has an entry for every kind that occurs; a kind that is no
// byte, as a file can give it, indexes nothing.
int CVemVariableNode::ComputeOffsets(const u16* startOffsets) {
    if (GetSubSegmentKind() >= kVemSegmentKindLimit) return 0;
    SetOffset(static_cast<u16>(GetOffset() + startOffsets[GetSubSegmentKind()]));
    return 1;
}

int CVemVariableNode::SetNetVar(int netVar) {
    NetVar = netVar;
    return 1;
}

int CVemVariableNode::IsNetVar() { return NetVar; }

int CVemVariableNode::IsReference() { return Reference; }

// The members of a reference are reached through it: they become in/out, not references.
void CVemVariableNode::SetReference(int reference) {
    vem::TouchLayout();
    Reference = reference;
    for (POSITION pos = Children.GetHeadPosition(); pos;) ChildAt(pos)->SetVarInOut(reference);
}

void CVemVariableNode::NodeDump(CFile* file, CString indent) {
    const std::string_view in = indent.GetString();  // measured once for all its lines
    CVemDumpText text;
    text << in << "*VARIABLE: " << Name.GetString() << '\n';
    text << in << "Offset: ";
    text.Unsigned(Offset) << " \n" << in << "ProgrammNr: ";
    text.Unsigned(ProgramNr) << " \n" << in << "ParentSegment: ";
    text.Unsigned(ParentSegment) << " \n" << in << "Gr\xF6_e: ";
    text.Unsigned(Size) << " \n" << in << "Variablentyp: ";
    text.Unsigned(static_cast<unsigned>(VariableType)) << " \n" << in << "Scope: ";
    text.Unsigned(static_cast<unsigned>(Scope)) << " \n" << in << "Referenz = ";
    text.Unsigned(static_cast<unsigned>(Reference)) << " \n" << in << "VariableCanBeWatched = ";
    text.Unsigned(static_cast<unsigned>(CanBeWatched)) << " \n" << in << "VarInOUt = ";
    text.Unsigned(static_cast<unsigned>(VarInOut)) << " \n\n";
    text.WriteTo(file);
    DumpChildren(file, indent);
}

void CVemVariableNode::SetProgramNr(u16 programNr) { ProgramNr = programNr; }

u16 CVemVariableNode::GetProgramNr() { return ProgramNr; }

void CVemVariableNode::SetTypeName(CString typeName) { TypeName = typeName; }

CString CVemVariableNode::GetTypeName() { return TypeName; }

void CVemVariableNode::SetVarQualifier(tVemVarQualifiers qualifier) { VarQualifier = qualifier; }

tVemVarQualifiers CVemVariableNode::GetVarQualifier() { return VarQualifier; }

CVemBaseNode* VemCreateCVemVariableNode(CString name, u16 offset, tCbeType type, u16 size, tCbeVarScope scope) {
    return new CVemVariableNode(name, offset, type, size, scope);
}

// A plain variable node, its name and its link in the parent's list stay within 200 bytes of heap.
static_assert(sizeof(void*) != 8 || sizeof(CVemVariableNode) == 152, "a field of the node lies in padding");

CString VemGetInstanceText(CVemBaseNode* node) {
    return node && node->IsKindOf(RUNTIME_CLASS(CVemVariableNode)) ? static_cast<CVemVariableNode*>(node)->InstanceText
                                                                   : CString();
}
