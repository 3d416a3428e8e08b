// Array variables: one prototype of the element and the index range of each dimension, turned by
// ExpandArray into one child node per element, laid out as the target lays out its memory.
#pragma once

#include <memory>

#include "variables/variable.h"

// The index ranges of all dimensions of one array.
class VEM_API CVemDimRange : public CObject {
    VEM_DECLARE_DYNAMIC(CVemDimRange)
public:
    explicit CVemDimRange(u8 dimSize = 1);
    // Takes DimSize entries of each array; a missing one is the invalid-argument exception.
    CVemDimRange(const CVemDimRange& other);
    CVemDimRange& operator=(const CVemDimRange&) = delete;
    ~CVemDimRange() override;

    // low bounds, high bounds, current indices (word arrays), DimSize (u8)
    void Serialize(CArchive& ar) override;

    // An index at or above DimSize raises DimSize to the index plus one.
    void SetDimRange(u8 index, const tVemDimRange& range);
    // An index without entries is the invalid-argument exception.
    tVemDimRange GetDimRange(u8 index) const;

    CDWordArray LowBounds;       // signed
    CDWordArray HighBounds;      // signed
    CDWordArray CurrentIndices;  // signed, the element that an expansion stands at
    u8 DimSize = 1;
};

class VEM_API CVemArrayNode : public CVemVariableNode {
    VEM_DECLARE_SERIAL(CVemArrayNode)
public:
    // What GetParamVarOffset adds to the offset.
    static constexpr u16 kParamVarOffset = 12;
    // Elements of one array: a node holds at most this many children.
    static constexpr u32 kMaxElements = 0xFFFF;

    CVemArrayNode();  // all empty or 0
    CVemArrayNode(const CString& name, u32 arrayCode, u16 elementSizeOfType, u16 offset, u8 dimensions);
    // The variable, the four array fields, the range and a clone of the prototype.
    CVemArrayNode(const CVemArrayNode& other);
    CVemArrayNode& operator=(const CVemArrayNode&) = delete;
    ~CVemArrayNode() override;

    void Serialize(CArchive& ar) override;
    CVemBaseNode* Clone() override;
    // Replaces the prototype; the node gets no child.
    int AddChildTail(CVemBaseNode* child) override;
    CVemBaseNode* GetReferenceNode() override { return ElementNode.get(); }
    void SetReferenceNode(CVemBaseNode* node) override;
    u8 GetDimensions() override { return Dimensions; }
    void SetDimensions(u8 dimensions) override { Dimensions = dimensions; }
    VEM_NODE_TYPE_PICTURES(kVemArrayNode)
    void ExpandArray() override;
    CVemDimRange* GetRange() override { return &Range; }
    u16 GetHeaderLength() override { return HeaderLength; }
    void SetHeaderLength(u16 length) override { HeaderLength = length; }
    void SetParentSegment(u16 segment) override;
    u16 GetParamVarOffset() override { return static_cast<u16>(Offset + kParamVarOffset); }
    int ShiftOffsets(u32 amount) override;
    int ComputeOffsets(const u16* startOffsets) override;
    void SetReference(int reference) override;
    void SetProgramNr(u16 programNr) override;

    // Fields, behind those of the variable, in declared order.
    u32 ArrayCode = 0;          // one byte in a file
    u16 ElementSizeOfType = 0;  // size of a string element in units of ByteSize
    u8 Dimensions = 0;          // not tied to Range.DimSize
    u16 HeaderLength = 0;       // bytes in front of the first element
    CVemDimRange Range{1};
    std::unique_ptr<CVemBaseNode> ElementNode;  // the prototype; null after an expansion

private:
    // The target's alignment and ByteSize, from the executable node above; 1 and 1 without one.
    void TargetLayout(u8& alignment, u8& byteSize) const;
    // Number of elements of all dimensions; the invalid-argument exception above kMaxElements.
    u32 ElementCount() const;
    // " [ i , j ] " behind the array's name, for the present indices.
    CString ElementName() const;
    // Steps to the next combination of indices, the last dimension fastest; false after the last.
    bool StepIndices();
    // The element's size, and how far the cursor moves past it.
    u16 PlaceElement(CVemBaseNode* element, u16 cursor, u16 size, u8 alignment, u8 byteSize);
};
