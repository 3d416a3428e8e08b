// Program organisation units: the common node of a compiled unit (segments, run-time needs of its
// instruction list code, identification of its source, statement list) and its three kinds.
#pragma once

#include <memory>

#include "node/basenode.h"
#include "units/statlist.h"

class VEM_API CVemPouNode : public CVemBaseNode {
    VEM_DECLARE_SERIAL(CVemPouNode)
public:
    static constexpr u16 kNoSegment = 0xFFFF;

    CVemPouNode();  // node type 0, empty name and path
    CVemPouNode(u32 nodeType, const CString& name, const CString& path);
    CVemPouNode(const CVemPouNode& other);
    ~CVemPouNode() override;

    void Serialize(CArchive& ar) override;
    CVemBaseNode* Clone() override;
    void SetCheckSum(u32 checkSum) override;
    void SetCheckSum(const char* sourceFileName) override;
    u32 GetCheckSum() override;
    void SetDate(const char* fileName) override;
    u32 GetDate() override;
    unsigned GetBitmapID() override;
    CString GetNodeText() override;
    void SetCodeSegment(u16 segment) override;
    void SetDataSegment(u16 segment) override;
    void SetIniSegment(u16 segment) override;
    void SetNccSegment(u16 segment) override;
    u16 GetCodeSegment() override;
    u16 GetDataSegment() override;
    u16 GetIniSegment() override;
    u16 GetNccSegment() override;
    u16 GetParentSegment() override;
    void SetChildSegments() override;
    void SetDataSegmentPtr(CVemByteArray* array) override;
    CVemByteArray* GetDataSegmentPtr() override;
    int ComputeOffsets(const u16* startOffsets) override;
    CStatList* GetStatList() override;
    CVemByteArray* GetPflArray() override;
    void SetPflArray(CVemByteArray* array) override;
    void DeleteAllChildPous() override;
    void SetCrSize(u16 size) override;
    u16 GetCrSize() override;
    void SetCrStackSize(u16 size) override;
    u16 GetCrStackSize() override;
    void SetCrStackElements(u16 elements) override;
    u16 GetCrStackElements() override;
    void SetPathName(CString pathName) override;
    CString GetPathName() override;
    void SetCodePathName(CString pathName) override;
    CString GetCodePathName() override;
    void SetDataSegLength(u16 length) override;
    u16 GetDataSegLength() override;
    u32 GetStartOffset() override;
    void SetStartOffset(u32 offset) override;
    void NodeDump(CFile* file, CString indent) override;
    void SetProgramNr(u16 programNr) override;
    u16 GetProgramNr() override;

    // The packed date and time of the FAT file system: year - 1980 in bits 31-25, month 24-21,
    // day 20-16, hour 15-11, minute 10-5, seconds / 2 in 4-0.
    static u32 PackDate(int year, int month, int day, int hour, int minute, int second);

    // Fields, behind those of the base node, in declared order.
    u32 StartOffset = 0;
    u16 CodeSegNr = kNoSegment;
    u16 DataSegNr = kNoSegment;
    u16 IniDataSegNr = kNoSegment;
    // Kept for callers that give it, but neither copied nor stored; GetNccSegment answers with the
    // ini segment, as callers have always been given.
    u16 NccSegNr = kNoSegment;
    u16 CrSize = 0;
    u16 SizeCrStack = 0;
    u16 ElemCrStack = 0;
    std::unique_ptr<CStatList> StatList;  // never null on a constructed node
    std::unique_ptr<CVemByteArray> PflArray;
    u32 Checksum = 0;
    u32 Date = 0;
    u16 DataSegLength = 0;
    CString Path;
    CString CodeFileName;
    u16 ProgramNr = 0;
    CVemByteArray* DataSegmentPtr = nullptr;  // not owned, never stored

private:
    // The copy of the source's data segment that a clone was given: the clone owns it.
    std::unique_ptr<CVemByteArray> ClonedDataSegment;

    CString HeadDumpText(const CString& indent) const;
    CString StatListDumpText(const CString& indent) const;
};

// A top-level unit; it may be global to its resource.
class VEM_API CVemProgramNode : public CVemPouNode {
    VEM_DECLARE_SERIAL(CVemProgramNode)
public:
    CVemProgramNode();
    // The third argument is kept for callers and not used.
    CVemProgramNode(const CString& name, const CString& path, const CString& unused = CString());
    CVemProgramNode(const CVemProgramNode& other);
    ~CVemProgramNode() override;

    void Serialize(CArchive& ar) override;
    CVemBaseNode* Clone() override;
    VEM_NODE_TYPE_PICTURES(kVemProgramNode)
    void SetGlobal(int global) override;
    int GetGlobal() override;
    void NodeDump(CFile* file, CString indent) override;

    i32 GlobalFlag = 0;  // its low 8 bits in a file
};

class VEM_API CVemFbNode : public CVemPouNode {
    VEM_DECLARE_SERIAL(CVemFbNode)
public:
    CVemFbNode();
    // The third argument is kept for callers and not used.
    CVemFbNode(const CString& name, const CString& path, const CString& unused = CString());
    CVemFbNode(const CVemFbNode& other);
    ~CVemFbNode() override;

    void Serialize(CArchive& ar) override;
    CVemBaseNode* Clone() override;
    VEM_NODE_TYPE_PICTURES(kVemFbNode)
    CString GetPouPathNameFromCodeSegNr(u16 codeSegment) override;

    // The function block's own segment kind, apart from the operations that variables answer.
    virtual void SetFbSubSegmentKind(tIpSegmentKind kind);
    virtual tIpSegmentKind GetFbSubSegmentKind();

    u16 Reserved = 0;
    u16 Reserved2 = 0;
    tIpSegmentKind SubSegmentKind = kIpSegCode;  // not stored
};

// A function carries an offset and a segment kind like a variable; neither is stored.
class VEM_API CVemFunctionNode : public CVemPouNode {
    VEM_DECLARE_SERIAL(CVemFunctionNode)
public:
    CVemFunctionNode();
    // The third argument is kept for callers and not used.
    CVemFunctionNode(const CString& name, const CString& path, const CString& unused = CString());
    CVemFunctionNode(const CVemFunctionNode& other);
    ~CVemFunctionNode() override;

    void Serialize(CArchive& ar) override;
    CVemBaseNode* Clone() override;
    VEM_NODE_TYPE_PICTURES(kVemFunctionNode)
    u16 GetOffset() override;
    void SetOffset(u16 offset) override;
    void SetSubSegmentKind(tIpSegmentKind kind) override;
    tIpSegmentKind GetSubSegmentKind() override;

    u16 Reserved = 0;
    u16 Offset = 0;                            // not stored
    tIpSegmentKind SubSegmentKind = kIpSegIo;  // not stored
};
