// The upper levels of the tree: project, configuration and resource. A resource counts the
// children added through it and shows its own name and its configuration's as its text.
#pragma once

#include "node/basenode.h"

class CVemProjectNode : public CVemBaseNode {
    VEM_DECLARE_SERIAL(CVemProjectNode)
public:
    static constexpr u16 kSchema = 0;

    explicit CVemProjectNode(const CString& name = CString());

    // base record, schema word (u16)
    void Serialize(CArchive& ar) override;
    VEM_NODE_TYPE_PICTURES(kVemProjectNode)
};

class CVemConfigNode : public CVemBaseNode {
    VEM_DECLARE_SERIAL(CVemConfigNode)
public:
    static constexpr u16 kSchema = 0;

    explicit CVemConfigNode(const CString& name = CString());

    // base record, schema word (u16)
    void Serialize(CArchive& ar) override;
    VEM_NODE_TYPE_PICTURES(kVemConfigNode)
};

class CVemResourceNode : public CVemBaseNode {
    VEM_DECLARE_SERIAL(CVemResourceNode)
public:
    static constexpr u16 kSchema = 0;

    explicit CVemResourceNode(const CString& name = CString());
    ~CVemResourceNode() override;

    // base record, schema word (u16), ConfigName
    void Serialize(CArchive& ar) override;
    // The base's search; a child of this node itself takes one off the count.
    CVemBaseNode* DeleteNode(CVemBaseNode* target) override;
    int AddChildTail(CVemBaseNode* child) override;
    // Head and sorted are one operation here: counted, and inserted by node text.
    int AddChildHead(CVemBaseNode* child) override;
    int AddChildSorted(CVemBaseNode* child) override;
    VEM_NODE_TYPE_PICTURES(kVemResourceNode)
    // "NAME  -  CONFIG": the file titles of the name and of ConfigName, in upper case.
    CString GetNodeText() override;
    int GetNoOfTask() override { return NoOfTask; }
    void SetConfigName(CString configName) override { ConfigName = configName; }
    CString GetConfigName() override { return ConfigName; }
    void SetPathName(CString pathName) override { PathName = pathName; }
    CString GetPathName() override { return PathName; }

    // Children added through this node's add operations, less those deleted through it; 16 bits,
    // wrapping both ways. Not stored, so 0 after a load.
    u16 NoOfTask = 0;
    CString ConfigName;  // path of the configuration; stored
    CString PathName;    // path of the resource's object file; not stored

protected:
    // For the executable node, which is a resource of another node type.
    CVemResourceNode(u32 nodeType, const CString& name, int expanded);
};
