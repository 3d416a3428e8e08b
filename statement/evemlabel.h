// Statements of labels, jumps and calls, of references, and of conversions.
#pragma once

#include "statement/evemstmt.h"

// A label definition or a jump to a label.
class CEVemJumpLabelStmtNode : public CEVemBaseStmtNode {
    VEM_DECLARE_SERIAL(CEVemJumpLabelStmtNode)
public:
    CEVemJumpLabelStmtNode() = default;
    CEVemJumpLabelStmtNode(tEVemNodeType type, const CString& name) : CEVemBaseStmtNode(type), Name(name) {}

    CString GetName() override { return Name; }
    void SetName(CString text) override { Name = text; }
    void SetTypeName(CString text) override { TypeName = text; }
    CString GetTypeName() override { return TypeName; }
    void SetOffset(u16 offset) override { Offset = offset; }
    u16 GetOffset() override { return Offset; }
    void SetLabelNum(u16 labelNum) override { LabelNum = labelNum; }
    u16 GetLabelNum() override { return LabelNum; }
    void DumpNode(CFile* file, CString prefix) override;

    CString Name;
    CString TypeName;
    u16 Offset = 0;
    u16 LabelNum = 0;

protected:
    void SerializeOperand(CArchive& ar) override;
};

// A call of a function block instance or of a function: Name is what is called, TypeName the type
// of a function block, VemNode the node called, which the statement borrows.
class CEVemCalStmtNode : public CEVemJumpLabelStmtNode {
    VEM_DECLARE_SERIAL(CEVemCalStmtNode)
public:
    CEVemCalStmtNode() = default;
    CEVemCalStmtNode(tEVemNodeType type, const CString& name) : CEVemJumpLabelStmtNode(type, name) {}

    void SetVemNode(CVemBaseNode* vemNode) override { VemNode = vemNode; }
    CVemBaseNode* GetVemNode() override { return VemNode; }
    void DumpNode(CFile* file, CString prefix) override;

    CVemBaseNode* VemNode = nullptr;
};

// Making, loading and storing a reference. Only the statement part is stored.
class CEVemReferenceStmtNode : public CEVemBaseStmtNode {
    VEM_DECLARE_SERIAL(CEVemReferenceStmtNode)
public:
    CEVemReferenceStmtNode() = default;
    explicit CEVemReferenceStmtNode(tEVemNodeType type) : CEVemBaseStmtNode(type) {}

    void SetOffset(u16 offset) override { Offset = offset; }
    u16 GetOffset() override { return Offset; }
    void SetFarOffset(u16 offset) override { FarOffset = offset; }
    u16 GetFarOffset() override { return FarOffset; }
    void SetVemNode(CVemBaseNode* vemNode) override { VemNode = vemNode; }
    CVemBaseNode* GetVemNode() override { return VemNode; }
    void SetInstanceNode(CVemBaseNode* instanceNode) override { InstanceNode = instanceNode; }
    CVemBaseNode* GetInstanceNode() override { return InstanceNode; }
    void DumpNode(CFile* file, CString prefix) override;

    u16 Offset = 0;
    u16 FarOffset = 0;
    CVemBaseNode* VemNode = nullptr;
    CVemBaseNode* InstanceNode = nullptr;
};

// A conversion from one type to another. Only the statement part is stored.
class CEVemConvStmtNode : public CEVemBaseStmtNode {
    VEM_DECLARE_SERIAL(CEVemConvStmtNode)
public:
    CEVemConvStmtNode() = default;
    explicit CEVemConvStmtNode(tEVemNodeType type) : CEVemBaseStmtNode(type) {}

    void SetInType(tCbeType type) override { InType = type; }
    tCbeType GetInType() override { return InType; }
    void SetOutType(tCbeType type) override { OutType = type; }
    tCbeType GetOutType() override { return OutType; }
    void DumpNode(CFile* file, CString prefix) override;

    tCbeType InType = kCbeTypeUndef;
    tCbeType OutType = kCbeTypeUndef;
};
