// CVemExeNode: the compiled form of a resource, and the root of the node file that the compiler
// writes last. A resource node that also holds the resource's segment table, the component list,
// the task definition segment, the files that go with the resource, the target's device settings,
// and one code node for each unit of the resource.
#pragma once

#include <memory>

#include "download/datacontainer.h"
#include "memory/segtbl.h"
#include "node/layoutepoch.h"
#include "project/project.h"

class CVemExeNode : public CVemResourceNode {
    VEM_DECLARE_SERIAL(CVemExeNode)
public:
    static constexpr u16 kSchema = 1;
    // What stands in front of the device settings in a record; a load does not look at it.
    static constexpr u32 kDeviceSettingsMarker = 0xCDCDCDCDu;
    // Bytes of the device settings in a record, the marker and the reserved bytes included.
    static constexpr unsigned kDeviceSettingsBytes = 129;
    static constexpr unsigned kReservedBytes = 74;

    // The settings of a new node: all zero but Alignment and ByteSize, which are 1, a target that
    // addresses single bytes with no alignment.
    static tVemDeviceSettings DefaultDeviceSettings();

    explicit CVemExeNode(const CString& name = CString());
    CVemExeNode(const CVemExeNode&) = delete;
    CVemExeNode& operator=(const CVemExeNode&) = delete;
    ~CVemExeNode() override;

    void Serialize(CArchive& ar) override;
    VEM_NODE_TYPE_PICTURES(kVemExeNode)
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
    void SetDatacontFilesProjectName(const char* projectName) override { DatacontFilesProjectName = projectName; }
    void SetDatacontFilesUserLevel(u16 userLevel) override { DatacontFilesUserLevel = userLevel; }
    const char* GetDatacontFilesProjectName() override { return DatacontFilesProjectName.GetString(); }
    u16 GetDatacontFilesUserLevel() override { return DatacontFilesUserLevel; }
    CObList* GetEvemRootNodeListPtr() override { return &EvemRootNodeList; }
    int AddFilteredEvemNodes(CVemBaseNode* taskNode) override;
    const u8* GetTaskDefSegmentBytePointer() override;
    CSegmentTable* GetSegmentTable() override { return SegmentTable.get(); }
    void SetSegmentTable(CSegmentTable*& table) override;
    CSegmentTable* GetComponentList() override { return ComponentList.get(); }
    void SetComponentList(CSegmentTable*& table) override;
    CVemByteArray* GetTaskDefSegment() override { return TaskDefSegment.get(); }
    // Takes the array; one held before is the caller's to have taken away.
    void SetTaskDefSegment(CVemByteArray* array) override {
        static_cast<void>(TaskDefSegment.release());
        TaskDefSegment.reset(array);
    }
    CDWordArray* GetAbsOffsets() override { return &AbsOffsets; }
    u16 AddNewSegmentLength(u16 length) override;
    void NodeDump(CFile* file, CString indent) override;
    int GetMotorolaFormat() override { return DeviceSettings.MotorolaFormat; }
    void SetMotorolaFormat(int motorola) override { DeviceSettings.MotorolaFormat = motorola; }
    tVemDeviceSettings* GetDeviceSettings() override { return &DeviceSettings; }
    // Alignment and ByteSize place the elements of arrays: indexes over the tree are made anew.
    void SetDeviceSettings(const tVemDeviceSettings& settings) override {
        vem::TouchLayout();
        DeviceSettings = settings;
    }
    void ComputeProgramNumbers(int flag) override;
    CString GetPouPathNameFromCodeSegNr(u16 codeSegment) override;

    // Fields, behind those of the resource, in declared order.
    std::unique_ptr<CVemByteArray> TaskDefSegment;
    std::unique_ptr<CSegmentTable> SegmentTable;   // never null on a constructed node
    std::unique_ptr<CSegmentTable> ComponentList;  // never null on a constructed node
    CVemDataContainer DataContainer;
    u16 DatacontFilesUserLevel = 0;
    CString DatacontFilesProjectName;
    CDWordArray AbsOffsets;
    tVemDeviceSettings DeviceSettings = DefaultDeviceSettings();
    CObList EvemRootNodeList{10};       // owns its code nodes
    CStringList FilteredNodeNames{10};  // upper-case paths of the code nodes taken over; not stored

private:
    void SerializeDeviceSettings(CArchive& ar);
    CString DeviceSettingsDumpText(const CString& prefix) const;
    CString TaskDefSegmentDumpText(const CString& prefix) const;
    CString TablesDumpText(CFile* file, const CString& prefix);
    // Writes what the dump has gathered, then the code nodes and their line maps, when the
    // statement model is there.
    void DumpCodeNodes(CFile* file, CString text, const CString& prefix);
};
