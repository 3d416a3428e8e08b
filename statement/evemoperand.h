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

    void SetCbeType(tCbeType type) override {
        if (type != kCbeTypeUndef || More) Extra().CbeType = type;
    }
    tCbeType GetCbeType() override { return Seen().CbeType; }
    void DumpNode(CFile* file, CString prefix) override;

    // A variable operand's near and far offsets and the low 16 bits of its address mode, in the room
    // that the alignment leaves behind the code offset.
    u16 NearOffset = 0;
    u16 FarOffset = 0;
    u16 AddressModeLow = kEVemNoAddressMode;

protected:
    void AppendDump(CVemDumpText& text, const CString& prefix, std::string_view p);
    // What a record does not hold and a load thus never sets, in a block made when a caller sets
    // one of them: a loaded variable operand fits the allocator's block of 56 bytes.
    struct Extras {
        tCbeType CbeType = kCbeTypeUndef;
        int NegOperand = 0;
        tEVemAccuType AccuType = 0;
        u16 AddressModeHigh = 0;
        CVemBaseNode* VemNode = nullptr;
        CVemBaseNode* InstanceNode = nullptr;
    };
    Extras& Extra() {
        if (!More) More = std::make_unique<Extras>();
        return *More;
    }
    const Extras& Seen() const {
        static constexpr Extras kNone{};
        return More ? *More : kNone;
    }
    std::unique_ptr<Extras> More;
};

// Base of the statements with an operand: whether it is negated and which accumulator is used.
class CEVemOperatorStmtNode : public CEVemOpOnTypeStmtNode {
    VEM_DECLARE_SERIAL(CEVemOperatorStmtNode)
public:
    CEVemOperatorStmtNode() = default;
    explicit CEVemOperatorStmtNode(tEVemNodeType type) : CEVemOpOnTypeStmtNode(type) {}

    void SetNegOperand(int negOperand) override {
        if (negOperand != 0 || More) Extra().NegOperand = negOperand;
    }
    int GetNegOperand() override { return Seen().NegOperand; }
    void SetAccuType(tEVemAccuType accuType) override {
        if (accuType != 0 || More) Extra().AccuType = accuType;
    }
    tEVemAccuType GetAccuType() override { return Seen().AccuType; }
    void DumpNode(CFile* file, CString prefix) override;

protected:
    void AppendDump(CVemDumpText& text, const CString& prefix, std::string_view p);
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
    void SetAddressMode(tEVemAddressMode mode) override {
        AddressModeLow = static_cast<u16>(mode);
        if ((mode >> 16) != 0 || More) Extra().AddressModeHigh = static_cast<u16>(mode >> 16);
    }
    tEVemAddressMode GetAddressMode() override {
        return static_cast<tEVemAddressMode>(AddressModeLow | (u32{Seen().AddressModeHigh} << 16));
    }
    void SetVemNode(CVemBaseNode* vemNode) override {
        if (vemNode || More) Extra().VemNode = vemNode;
    }
    CVemBaseNode* GetVemNode() override { return Seen().VemNode; }
    void SetInstanceNode(CVemBaseNode* instanceNode) override {
        if (instanceNode || More) Extra().InstanceNode = instanceNode;
    }
    CVemBaseNode* GetInstanceNode() override { return Seen().InstanceNode; }
    void DumpNode(CFile* file, CString prefix) override;

    CString Name;

protected:
    void SerializeOperand(CArchive& ar) override;
    void AppendDump(CVemDumpText& text, const CString& prefix, std::string_view p);
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
