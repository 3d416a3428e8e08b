// Structure and function block instance variables: how offsets, segments and program numbers
// reach a structure's members, and how an instance finds its compiled function block by name.
#pragma once

#include "variables/variable.h"

// A variable of a structure type; its members are its children, with offsets relative to the
// structure until the offsets are computed.
class VEM_API CVemStructNode : public CVemVariableNode {
    VEM_DECLARE_SERIAL(CVemStructNode)
public:
    CVemStructNode();  // empty name, offset 0, size 0
    // The fourth argument is kept for callers and not used.
    CVemStructNode(const CString& name, u16 offset, u16 size, int unused = 10);
    CVemStructNode(const CVemStructNode& other);
    ~CVemStructNode() override;

    // The variable record and nothing more.
    void Serialize(CArchive& ar) override;
    CVemBaseNode* Clone() override;
    VEM_NODE_TYPE_PICTURES(kVemStructNode)
    void SetParentSegment(u16 segment) override;
    int ShiftOffsets(u32 amount) override;
    int ComputeOffsets(const u16* startOffsets) override;
    void SetProgramNr(u16 programNr) override;
    CVemBaseNode* GetChildNodeByName(CString name) override;

private:
    // Moves every member by the structure's present offset.
    void ShiftMembers();
};

// A variable that stands for an instance of a function block.
class VEM_API CVemFbInstanceNode : public CVemVariableNode {
    VEM_DECLARE_SERIAL(CVemFbInstanceNode)
public:
    // What every instance holds in the target: a reference of four units.
    static constexpr u16 kInstanceSize = 4;

    CVemFbInstanceNode();  // empty name, offset 0, empty text
    CVemFbInstanceNode(const CString& name, u16 offset, const CString& instanceText);
    CVemFbInstanceNode(const CVemFbInstanceNode& other);
    ~CVemFbInstanceNode() override;

    CVemBaseNode* Clone() override;
    // The function block named "<instance> : <type>" below the compiled task that holds the
    // instance, or below a child of "Global - Resource" two levels above that task.
    CVemBaseNode* GetReferenceNode() override;
    VEM_NODE_TYPE_PICTURES(kVemFbInstanceNode)
    void SetPredefinedFlag(int predefined) override;
    int IsPredefined() override;

    int Predefined = 0;  // not stored
};
