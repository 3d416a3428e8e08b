// Statements with an operand: of a type, with an operator's sign and accumulator, a constant, a
// variable, or an indexed variable.
#pragma once

#include <memory>
#include <vector>

#include "statement/evemstmt.h"

// Abs, and the base of the operators: the type of the operand.
class CEVemOpOnTypeStmtNode : public CEVemBaseStmtNode {
    VEM_DECLARE_SERIAL(CEVemOpOnTypeStmtNode)
public:
    CEVemOpOnTypeStmtNode() = default;
    explicit CEVemOpOnTypeStmtNode(tEVemNodeType type) : CEVemBaseStmtNode(type) {}

    void SetCbeType(tCbeType type) override { CbeType = type; }
    tCbeType GetCbeType() override { return CbeType; }
    void DumpNode(CFile* file, CString prefix) override;

    tCbeType CbeType = kCbeTypeUndef;
};

// Base of the statements with an operand: whether it is negated and which accumulator is used.
class CEVemOperatorStmtNode : public CEVemOpOnTypeStmtNode {
    VEM_DECLARE_SERIAL(CEVemOperatorStmtNode)
public:
    CEVemOperatorStmtNode() = default;
    explicit CEVemOperatorStmtNode(tEVemNodeType type) : CEVemOpOnTypeStmtNode(type) {}

    void SetNegOperand(int negOperand) override { NegOperand = negOperand; }
    int GetNegOperand() override { return NegOperand; }
    void SetAccuType(tEVemAccuType accuType) override { AccuType = accuType; }
    tEVemAccuType GetAccuType() override { return AccuType; }
    void DumpNode(CFile* file, CString prefix) override;

    int NegOperand = 0;
    tEVemAccuType AccuType = 0;
};

// A constant operand, kept as the target's bytes. The value is not stored.
class CEVemOpOnConstStmtNode : public CEVemOperatorStmtNode {
    VEM_DECLARE_SERIAL(CEVemOpOnConstStmtNode)
public:
    CEVemOpOnConstStmtNode() = default;
    explicit CEVemOpOnConstStmtNode(tEVemNodeType type) : CEVemOperatorStmtNode(type) {}
    ~CEVemOpOnConstStmtNode() override;

    // Keeps a clone of the array; the caller keeps its own.
    int SetValue(CVemByteArray* value) override;
    CVemByteArray* GetValue() override { return Value.get(); }
    void DumpNode(CFile* file, CString prefix) override;

    std::unique_ptr<CVemByteArray> Value;
};

// A variable operand: its text, its two addresses and the nodes of the node tree behind it, which
// the statement borrows.
class CEVemOpOnVarStmtNode : public CEVemOperatorStmtNode {
    VEM_DECLARE_SERIAL(CEVemOpOnVarStmtNode)
public:
    CEVemOpOnVarStmtNode() = default;
    explicit CEVemOpOnVarStmtNode(tEVemNodeType type) : CEVemOperatorStmtNode(type) {}

    CString GetName() override { return Name; }
    void SetName(CString text) override { Name = text; }
    void SetOffset(u16 offset) override { NearOffset = offset; }
    u16 GetOffset() override { return NearOffset; }
    void SetFarOffset(u16 offset) override { FarOffset = offset; }
    u16 GetFarOffset() override { return FarOffset; }
    void SetAddressMode(tEVemAddressMode mode) override { AddressMode = mode; }
    tEVemAddressMode GetAddressMode() override { return AddressMode; }
    void SetVemNode(CVemBaseNode* vemNode) override {
        if (vemNode || Borrowed) Borrow().VemNode = vemNode;
    }
    CVemBaseNode* GetVemNode() override { return Borrowed ? Borrowed->VemNode : nullptr; }
    void SetInstanceNode(CVemBaseNode* instanceNode) override {
        if (instanceNode || Borrowed) Borrow().InstanceNode = instanceNode;
    }
    CVemBaseNode* GetInstanceNode() override { return Borrowed ? Borrowed->InstanceNode : nullptr; }
    void DumpNode(CFile* file, CString prefix) override;

    CString Name;
    u16 NearOffset = 0;
    u16 FarOffset = 0;
    tEVemAddressMode AddressMode = kEVemNoAddressMode;
    // The compiler sets them and a load never does: they take room only in statements that have
    // them, so that a loaded statement fits the allocator's next smaller block.
    struct BorrowedNodes {
        CVemBaseNode* VemNode = nullptr;
        CVemBaseNode* InstanceNode = nullptr;
    };
    std::unique_ptr<BorrowedNodes> Borrowed;

protected:
    void SerializeOperand(CArchive& ar) override;

private:
    BorrowedNodes& Borrow() {
        if (!Borrowed) Borrowed = std::make_unique<BorrowedNodes>();
        return *Borrowed;
    }
};

// An indexed variable: it owns the statements of its index expressions and of a preceding operand.
class CEVemArrayOperatorStmtNode : public CEVemOpOnVarStmtNode {
    VEM_DECLARE_SERIAL(CEVemArrayOperatorStmtNode)
public:
    CEVemArrayOperatorStmtNode() = default;
    explicit CEVemArrayOperatorStmtNode(tEVemNodeType type) : CEVemOpOnVarStmtNode(type) {}
    ~CEVemArrayOperatorStmtNode() override;

    int GetIndexCount() override { return static_cast<int>(IndexNodes.size()); }
    // Raises the invalid-argument exception for an index outside the array.
    CEVemBaseNode* GetIndexNode(int index) override;
    void AddIndexNode(CEVemBaseNode* indexNode) override;
    void SetElementNode(CVemBaseNode* elementNode) override { ElementNode = elementNode; }
    CVemBaseNode* GetElementNode() override { return ElementNode; }
    void SetPrevOperandNode(CEVemBaseNode* operand) override;
    CEVemBaseNode* GetPrevOperandNode() override { return PrevOperandNode.get(); }
    void DumpNode(CFile* file, CString prefix) override;

    std::vector<std::unique_ptr<CEVemBaseNode>> IndexNodes;
    CVemBaseNode* ElementNode = nullptr;
    std::unique_ptr<CEVemBaseNode> PrevOperandNode;
};
