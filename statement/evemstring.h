// Statements of the standard string functions with more than one parameter. Each owns the
// statements that load its further parameters: P for all, L for MID, DELETE and REPLACE, a second
// input for INSERT and REPLACE. Only the statement part is stored.
#pragma once

#include <memory>

#include "statement/evemstmt.h"

class CEVemStdStringOpNode : public CEVemBaseStmtNode {
    VEM_DECLARE_SERIAL(CEVemStdStringOpNode)
public:
    CEVemStdStringOpNode() = default;
    explicit CEVemStdStringOpNode(tEVemNodeType type) : CEVemBaseStmtNode(type) {}
    ~CEVemStdStringOpNode() override;

    void SetStdStringPParamStmtNode(CEVemBaseNode* param) override;
    CEVemBaseNode* GetStdStringPParamStmtNode() override { return PParamStmtNode.get(); }
    void DumpNode(CFile* file, CString prefix) override;

    std::unique_ptr<CEVemBaseNode> PParamStmtNode;
};

// MID and DELETE.
class CEVemStdStringMidDelNode : public CEVemStdStringOpNode {
    VEM_DECLARE_SERIAL(CEVemStdStringMidDelNode)
public:
    CEVemStdStringMidDelNode() = default;
    explicit CEVemStdStringMidDelNode(tEVemNodeType type) : CEVemStdStringOpNode(type) {}
    ~CEVemStdStringMidDelNode() override;

    void SetStdStringLParamStmtNode(CEVemBaseNode* param) override;
    CEVemBaseNode* GetStdStringLParamStmtNode() override { return LParamStmtNode.get(); }
    void DumpNode(CFile* file, CString prefix) override;

    std::unique_ptr<CEVemBaseNode> LParamStmtNode;
};

// REPLACE.
class CEVemStdStringReplaceNode : public CEVemStdStringMidDelNode {
    VEM_DECLARE_SERIAL(CEVemStdStringReplaceNode)
public:
    CEVemStdStringReplaceNode() = default;
    explicit CEVemStdStringReplaceNode(tEVemNodeType type) : CEVemStdStringMidDelNode(type) {}
    ~CEVemStdStringReplaceNode() override;

    void SetStdStringIn2ParamStmtNode(CEVemBaseNode* param) override;
    CEVemBaseNode* GetStdStringIn2ParamStmtNode() override { return In2ParamStmtNode.get(); }
    void DumpNode(CFile* file, CString prefix) override;

    std::unique_ptr<CEVemBaseNode> In2ParamStmtNode;
};

// INSERT.
class CEVemStdStringInsertNode : public CEVemStdStringOpNode {
    VEM_DECLARE_SERIAL(CEVemStdStringInsertNode)
public:
    CEVemStdStringInsertNode() = default;
    explicit CEVemStdStringInsertNode(tEVemNodeType type) : CEVemStdStringOpNode(type) {}
    ~CEVemStdStringInsertNode() override;

    void SetStdStringIn2ParamStmtNode(CEVemBaseNode* param) override;
    CEVemBaseNode* GetStdStringIn2ParamStmtNode() override { return In2ParamStmtNode.get(); }
    void DumpNode(CFile* file, CString prefix) override;

    std::unique_ptr<CEVemBaseNode> In2ParamStmtNode;
};
