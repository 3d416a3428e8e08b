// CVemTuiTaskNode: the compiled form of one task. A program node that also carries the task's
// segments, its entry of the resource's task definition segment, the files that go with it, the
// absolute start of each of its segments, a map from variable paths to nodes, and the code nodes of
// its units. It goes to a task file of its own.
#pragma once

#include <memory>

#include "download/datacontainer.h"
#include "memory/segtbl.h"
#include "units/pou.h"

class CVemTuiTaskNode : public CVemProgramNode {
    VEM_DECLARE_SERIAL(CVemTuiTaskNode)
public:
    static constexpr u16 kSchema = 1;
    // What a path lookup gives for a variable whose segment has no absolute offset.
    static constexpr u32 kNoAbsoluteOffset = 99999999;

    CVemTuiTaskNode();  // two empty names
    CVemTuiTaskNode(const CString& name, const CString& path);
    CVemTuiTaskNode(const CVemTuiTaskNode&) = delete;
    CVemTuiTaskNode& operator=(const CVemTuiTaskNode&) = delete;
    ~CVemTuiTaskNode() override;

    void Serialize(CArchive& ar) override;
    void CreateChildNodePathList() override;
    int GetContainerFileList(CStringList* list) override { return DataContainer.GetFileList(list); }
    int AddContainerFile(const char* filePath, const char* key, unsigned type) override {
        return DataContainer.AddFile(filePath, key, type);
    }
    CVemByteArray GetContainerFileContents(const char* key) override { return DataContainer.GetContents(key); }
    int WriteContainerFileContents2File(const char* key, const char* directory) override {
        return DataContainer.WriteToFile(key, directory);
    }
    int WriteContainerFileContents2VemByteArray(const char* key, CVemByteArray* array) override {
        return DataContainer.WriteToByteArray(key, array);
    }
    unsigned GetContainerFileType(const char* key) override { return DataContainer.GetType(key); }
    unsigned GetContainerFileCheckSum(const char* key) override { return DataContainer.GetCheckSum(key); }
    int SetContainerFileCheckSum(const char* key, unsigned checkSum) override {
        return DataContainer.SetCheckSum(key, checkSum);
    }
    CObList* GetEvemRootNodeListPtr() override { return &EvemRootNodeList; }
    VEM_NODE_TYPE_PICTURES(kVemTuiTaskNode)
    // The bare name, also in debug mode.
    CString GetNodeText() override { return Name; }
    CSegmentTable* GetSegmentTable() override { return SegmentTable.get(); }
    void SetSegmentTable(CSegmentTable*& table) override;
    CVemByteArray* GetTaskDefEntry() override { return TaskDefEntry.get(); }
    // Takes the array; one held before is the caller's to have taken away.
    void SetTaskDefEntry(CVemByteArray* array) override {
        static_cast<void>(TaskDefEntry.release());
        TaskDefEntry.reset(array);
    }
    CDWordArray* GetAbsOffsets() override { return &AbsOffsets; }
    u16 AddNewSegmentLength(u16 length) override;
    u32 GetAbsoluteVariableOffset(CString path) override;
    CMapStringToOb* GetNodePath2NodeList() override { return NodePath2NodeList.get(); }
    void NodeDump(CFile* file, CString indent) override;
    CString GetPouPathNameFromCodeSegNr(u16 codeSegment) override;

    // Fields, behind those of the program node, in declared order.
    CDWordArray AbsOffsets;
    std::unique_ptr<CMapStringToOb> NodePath2NodeList;  // the map, not the nodes; not stored
    std::unique_ptr<CSegmentTable> SegmentTable;        // never null on a constructed node
    std::unique_ptr<CVemByteArray> TaskDefEntry;
    CVemDataContainer DataContainer;
    CObList EvemRootNodeList{10};  // owns its code nodes

private:
    CString SegmentTableDumpText(CFile* file, const CString& prefix);
    CString OffsetsDumpText(const CString& prefix);
    CString PathListDumpText(const CString& prefix);
    // Writes what the dump has gathered, then the code nodes, when the statement model is there.
    void DumpCodeNodes(CFile* file, CString text, const CString& prefix);
};
