// Code nodes: the statement model's image of one compiled unit, which owns the chain of its
// statements.
#pragma once

#include "statement/evembase.h"

class CEVemBaseCodeNode : public CEVemBaseNode {
    VEM_DECLARE_SERIAL(CEVemBaseCodeNode)
public:
    CEVemBaseCodeNode();  // kEVemBaseCodeNode, no name
    explicit CEVemBaseCodeNode(const CString& pouName);
    ~CEVemBaseCodeNode() override;

    CString GetName() override { return PouName; }
    virtual void SetPouName(const CString& pouName) { PouName = pouName; }

    CString PouName;  // not stored

protected:
    CEVemBaseCodeNode(tEVemNodeType type, const CString& pouName);
};

class CEVemPouCodeNode : public CEVemBaseCodeNode {
    VEM_DECLARE_SERIAL(CEVemPouCodeNode)
public:
    CEVemPouCodeNode();  // kEVemPouCodeNode, no name, no kind
    CEVemPouCodeNode(const CString& pouName, tEVemPouType pouType);
    ~CEVemPouCodeNode() override;

    void Serialize(CArchive& ar) override;
    int AddNewStmtNode(CEVemBaseNode* statement) override;
    int SetStatementNode(CEVemBaseNode* statement) override;
    CEVemBaseNode* GetStatementNode() override { return FirstStatement; }
    void SetDataSegSize(u16 size) override { LocalDataSegSize = size; }
    u16 GetDataSegSize() override { return LocalDataSegSize; }
    void SetPathName(CString text) override { PouPathName = text; }
    CString GetPathName() override { return PouPathName; }
    void SetPouType(tEVemPouType pouType) override { PouType = pouType; }
    tEVemPouType GetPouType() override { return PouType; }
    void SetName(CString text) override { PouName = text; }
    void DumpNode(CFile* file, CString prefix) override;
    void NodeDump(CString fileName) override;
    // The unit's line maps, by source line: the code offset as decimal text, or the statement.
    // Lines already in the map are replaced, others stay. Always 1.
    int FillAwlLine2UcodeOffsetMap(CString pathName, CMapStringToString* map) override;
    int FillAwlLine2EvemNodeMap(CString pathName, CMapStringToOb* map) override;

    tEVemPouType PouType = kEVemPouUndef;
    u16 LocalDataSegSize = 0;
    CEVemBaseNode* FirstStatement = nullptr;  // owns the chain
    CEVemBaseNode* LastStatement = nullptr;   // kept by appending alone
    CString PouPathName;

private:
    void StoreChain(CArchive& ar);
    void LoadChain(CArchive& ar);
    void DeleteChain();
};
