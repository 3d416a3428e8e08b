// CVemVariableNode: one variable of a compiled unit, with where it lies in target memory (segment,
// offset, size), what it is (data type, type name, scope, qualifiers) and what may be done with it.
#pragma once

#include "node/basenode.h"

class VEM_API CVemVariableNode : public CVemBaseNode {
    VEM_DECLARE_SERIAL(CVemVariableNode)
public:
    // Current version of the variable record.
    static constexpr u16 kSchema = 3;
    // Scope of a variable that holds its data itself and stays out of its unit's segment numbering.
    static constexpr tCbeVarScope kOwnDataScope = 8;

    CVemVariableNode();  // empty name, offset 0, type 0, size 0, scope 0
    CVemVariableNode(const CString& name, u16 offset, tCbeType type, u16 size, tCbeVarScope scope);
    CVemVariableNode(const CVemVariableNode& other);
    ~CVemVariableNode() override;

    // The node type that a variable of this data type bears: array, structure, instance or plain.
    static u32 NodeTypeOfDataType(tCbeType type);

    void Serialize(CArchive& ar) override;
    CVemBaseNode* Clone() override;
    void SetScope(tCbeVarScope scope) override;
    tCbeVarScope GetScope() override;
    void SetPiLocation(CString location) override;
    CString GetPiLocation() override;
    void SetDclPosition(unsigned positionA, unsigned positionB) override;
    void GetDclPosition(unsigned& positionA, unsigned& positionB) override;
    VEM_NODE_TYPE_PICTURES(kVemVariableNode)
    CString GetNodeText() override;
    u16 GetParentSegment() override;
    void SetParentSegment(u16 segment) override;
    void SetVariableType(tCbeType type) override;
    tCbeType GetVariableType() override;
    void VariableCanBeWatched(int canBeWatched) override;
    int CanVariableBeWatched() override;
    void SetVarInOut(int inOut) override;
    int GetVarInOut() override;
    u16 GetSize() override;
    void SetSize(u16 size) override;
    u16 GetOffset() override;
    u16 GetParamVarOffset() override;
    void SetOffset(u16 offset) override;
    void SetSubSegmentKind(tIpSegmentKind kind) override;
    tIpSegmentKind GetSubSegmentKind() override;
    int ShiftOffsets(u32 amount) override;
    int ComputeOffsets(const u16* startOffsets) override;
    int SetNetVar(int netVar) override;
    int IsNetVar() override;
    int IsReference() override;
    void SetReference(int reference) override;
    void NodeDump(CFile* file, CString indent) override;
    void SetProgramNr(u16 programNr) override;
    u16 GetProgramNr() override;
    void SetTypeName(CString typeName) override;
    CString GetTypeName() override;
    void SetVarQualifier(tVemVarQualifiers qualifier) override;
    tVemVarQualifiers GetVarQualifier() override;

    // Fields, behind those of the base node, ordered by width so that none is padding.
    u16 Offset = 0;
    u16 Size = 0;
    u16 ParentSegment = 0xFFFF;  // 0xFFFF: not yet given
    u16 ProgramNr = 0;
    int Reference = 0;
    tIpSegmentKind SubSegmentKind = kIpSegCode;
    tCbeType VariableType = kCbeTypeUndef;
    tCbeVarScope Scope = 0;
    int NetVar = 0;
    int CanBeWatched = 1;
    int VarInOut = 0;
    tVemVarQualifiers VarQualifier = 0;
    unsigned DclPositionA = 0;  // 16 bits in a file
    unsigned DclPositionB = 0;
    CString TypeName;
    CString InstanceText;
    CString PiLocation;
};

namespace vem {

// Plain name of a data type ("INT", "TIME_OF_DAY"); empty for values without one.
const char* CbeTypeName(tCbeType type);

}  // namespace vem
