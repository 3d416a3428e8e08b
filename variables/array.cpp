// Array variables: dimension ranges, the element prototype, the expansion into elements, the record.
#include "variables/array.h"

#include <charconv>
#include <cstring>
#include <memory>
#include <string>

#include "node/layoutepoch.h"
#include "node/walk.h"
#include "platform/fieldio.h"
#include "vem_limits.h"
#include "vem_node.h"
#include "vem_plain.h"

VEM_IMPLEMENT_DYNAMIC(CVemDimRange, CObject)
VEM_IMPLEMENT_SERIAL(CVemArrayNode, CVemVariableNode, 5)

namespace {

i32 Signed(u32 word) { return static_cast<i32>(word); }

// The next multiple of step, in 16 bits.
u16 RoundUp(u16 value, u16 step) {
    const u16 rest = static_cast<u16>(value % step);
    return rest ? static_cast<u16>(value + step - rest) : value;
}

bool IsStringType(tCbeType type) { return type == kCbeTypeString || type == kCbeTypeWString; }

}  // namespace

// ---- dimension ranges ------------------------------------------------------------------------------

CVemDimRange::CVemDimRange(u8 dimSize) : DimSize(dimSize) {}

CVemDimRange::CVemDimRange(const CVemDimRange& other) : CObject(), DimSize(other.DimSize) {
    for (int i = 0; i < DimSize; ++i) {
        LowBounds.Add(other.LowBounds.GetAt(i));
        HighBounds.Add(other.HighBounds.GetAt(i));
        CurrentIndices.Add(other.CurrentIndices.GetAt(i));
    }
}

CVemDimRange::~CVemDimRange() = default;

//  width   field
//  .       low bounds, word array
//  .       high bounds, word array
//  .       current indices, word array
//  1       DimSize
void CVemDimRange::Serialize(CArchive& ar) {
    LowBounds.Serialize(ar);
    HighBounds.Serialize(ar);
    CurrentIndices.Serialize(ar);
    vem::SerializeField<u8>(ar, DimSize);
}

void CVemDimRange::SetDimRange(u8 index, const tVemDimRange& range) {
    LowBounds.SetAtGrow(index, static_cast<u32>(range.LowBound));
    HighBounds.SetAtGrow(index, static_cast<u32>(range.HighBound));
    CurrentIndices.SetAtGrow(index, static_cast<u32>(range.CurrentIndex));
    if (index >= DimSize) DimSize = static_cast<u8>(index + 1);
}

tVemDimRange CVemDimRange::GetDimRange(u8 index) const {
    return {Signed(LowBounds.GetAt(index)), Signed(HighBounds.GetAt(index)), Signed(CurrentIndices.GetAt(index))};
}

// ---- array node ------------------------------------------------------------------------------------

CVemArrayNode::CVemArrayNode() : CVemArrayNode(CString(), 0, 0, 0, 0) {}

CVemArrayNode::CVemArrayNode(const CString& name, u32 arrayCode, u16 elementSizeOfType, u16 offset, u8 dimensions)
    : CVemVariableNode(name, offset, kCbeTypeArray, 0xFFFF, 0),
      ArrayCode(arrayCode),
      ElementSizeOfType(elementSizeOfType),
      Dimensions(dimensions) {}

CVemArrayNode::CVemArrayNode(const CVemArrayNode& other)
    : CVemVariableNode(other),
      ArrayCode(other.ArrayCode),
      ElementSizeOfType(other.ElementSizeOfType),
      Dimensions(other.Dimensions),
      HeaderLength(other.HeaderLength),
      Range(other.Range) {
    if (other.ElementNode) ElementNode.reset(other.ElementNode->Clone());
}

CVemArrayNode::~CVemArrayNode() = default;

//  width   field
//  .       variable record, children inline
//  .       range: low bounds, high bounds, current indices (word arrays), DimSize (1)
//  1       ArrayCode, low 8 bits
//  2       ElementSizeOfType
//  1       Dimensions
//  2       HeaderLength
//  .       element prototype, object reference; null after an expansion
void CVemArrayNode::Serialize(CArchive& ar) {
    CVemVariableNode::Serialize(ar);
    Range.Serialize(ar);
    vem::SerializeField<u8>(ar, ArrayCode);
    vem::SerializeField<u16>(ar, ElementSizeOfType);
    vem::SerializeField<u8>(ar, Dimensions);
    vem::SerializeField<u16>(ar, HeaderLength);
    if (ar.IsStoring()) {
        ar.WriteObject(ElementNode.get());
        return;
    }
    ElementNode.reset();
    ElementNode.reset(static_cast<CVemBaseNode*>(ar.ReadOwnedObject(RUNTIME_CLASS(CVemBaseNode))));
}

CVemBaseNode* CVemArrayNode::Clone() { return new CVemArrayNode(*this); }

int CVemArrayNode::AddChildTail(CVemBaseNode* child) {
    SetReferenceNode(child);
    return 1;
}

void CVemArrayNode::SetReferenceNode(CVemBaseNode* node) {
    if (node == ElementNode.get()) return;
    vem::TouchLayout();
    ElementNode.reset(node);
}

// The prototype gets the number it is given; the elements the array's own.
void CVemArrayNode::SetParentSegment(u16 segment) {
    CVemVariableNode::SetParentSegment(segment);
    if (ElementNode) ElementNode->SetParentSegment(segment);
    for (POSITION pos = Children.GetHeadPosition(); pos;) ChildAt(pos)->SetParentSegment(ParentSegment);
}

// The prototype keeps its own offset; a structure prototype moves its members by it. Expanded
// elements are not touched: offsets are computed before an expansion.
int CVemArrayNode::ShiftOffsets(u32 amount) {
    CVemVariableNode::ShiftOffsets(amount);
    if (ElementNode) ElementNode->ShiftOffsets(0);
    return 1;
}

int CVemArrayNode::ComputeOffsets(const u16* startOffsets) {
    CVemVariableNode::ComputeOffsets(startOffsets);
    if (ElementNode) ElementNode->ShiftOffsets(0);
    return 1;
}

void CVemArrayNode::SetReference(int reference) {
    CVemVariableNode::SetReference(reference);
    if (ElementNode) ElementNode->SetReference(Reference);
}

void CVemArrayNode::SetProgramNr(u16 programNr) {
    ProgramNr = programNr;
    if (ElementNode) ElementNode->SetProgramNr(programNr);
}

// ---- expansion -------------------------------------------------------------------------------------

// An alignment of 0 would leave nothing to round to; it counts as 1.
void CVemArrayNode::TargetLayout(u8& alignment, u8& byteSize) const {
    alignment = 1;
    byteSize = 1;
    for (CVemBaseNode* node = Parent; node; node = node->Parent) {
        if (node->GetNodeType() != kVemExeNode) continue;
        if (const tVemDeviceSettings* settings = node->GetDeviceSettings()) {
            alignment = settings->Alignment ? settings->Alignment : 1;
            byteSize = settings->ByteSize;
        }
        return;
    }
}

// A lower bound above the upper bound stands for one element.
u32 CVemArrayNode::ElementCount() const {
    u64 count = 1;
    for (int d = 0; d < Range.DimSize; ++d) {
        const i64 low = Signed(Range.LowBounds.GetAt(d));
        const i64 high = Signed(Range.HighBounds.GetAt(d));
        count *= static_cast<u64>(high >= low ? high - low + 1 : 1);
        if (count > kMaxElements) VemThrowInvalidArg();
    }
    return static_cast<u32>(count);
}

// Made once for every element of an expansion: the digits go straight into the text, and the
// name is made at its final length in one step.
CString CVemArrayNode::ElementName() const {
    std::string suffix;
    for (int d = 0; d < Range.DimSize; ++d) {
        char part[3 + 12];
        std::memcpy(part, d == 0 ? " [ " : " , ", 3);
        const auto result =
            std::to_chars(part + 3, part + sizeof part, static_cast<int>(Signed(Range.CurrentIndices.GetAt(d))));
        suffix.append(part, static_cast<std::size_t>(result.ptr - part));
    }
    suffix.append(" ] ", 3);
    const int length = Name.GetLength() + static_cast<int>(suffix.size());
    CString name;
    char* out = name.GetBuffer(length);
    std::memcpy(out, Name.GetString(), static_cast<std::size_t>(Name.GetLength()));
    std::memcpy(out + Name.GetLength(), suffix.data(), suffix.size());
    name.ReleaseBuffer(length);
    return name;
}

bool CVemArrayNode::StepIndices() {
    for (int d = Range.DimSize - 1; d >= 0; --d) {
        const i64 next = static_cast<i64>(Signed(Range.CurrentIndices.GetAt(d))) + 1;
        if (next <= Signed(Range.HighBounds.GetAt(d))) {
            Range.CurrentIndices.SetAt(d, static_cast<u32>(next));
            return true;
        }
        Range.CurrentIndices.SetAt(d, Range.LowBounds.GetAt(d));
    }
    return false;
}

// Gives the cursor behind the element: past its size, raised to the alignment if the element is
// bigger than that (strings only to 2 where the alignment is 4), and padded to one whole unit of a
// target whose ByteSize is 2 or 4.
u16 CVemArrayNode::PlaceElement(CVemBaseNode* element, u16 cursor, u16 size, u8 alignment, u8 byteSize) {
    element->SetSize(size);
    cursor = static_cast<u16>(cursor + size);
    if (size > alignment) {
        const bool string = IsStringType(ElementNode->GetVariableType());
        cursor = RoundUp(cursor, string && alignment == 4 ? 2 : alignment);
    }
    if ((byteSize == 2 || byteSize == 4) && byteSize > size) cursor = static_cast<u16>(cursor + byteSize - size);
    return cursor;
}

// Elements that were added before a failure go again, so that the array stays as it was.
void CVemArrayNode::ExpandArray() {
    if (!ElementNode) return;
    const CVemWalkStep step(this, kVemMaxExpandedNodes);
    if (!step) VemThrowInvalidArg();
    u8 alignment = 1;
    u8 byteSize = 1;
    TargetLayout(alignment, byteSize);
    ElementCount();  // every dimension has its bounds, and the elements fit in a node
    for (int d = 0; d < Range.DimSize; ++d) Range.CurrentIndices.SetAtGrow(d, Range.LowBounds.GetAt(d));
    u16 cursor = static_cast<u16>(GetOffset() + RoundUp(HeaderLength, alignment));
    if (Range.DimSize == 0) return;
    u16 size = ElementNode->GetSize();
    const int before = Children.GetCount();
    CVemBaseNode* const lastBefore = LastChild;
    try {
        do {
            if (!CVemWalkStep::Spend(1)) VemThrowInvalidArg();
            std::unique_ptr<CVemBaseNode> element(ElementNode->Clone());
            CVemBaseNode::AddChildTail(element.get());
            CVemBaseNode* added = element.release();
            added->Name = ElementName();
            added->SetOffset(cursor);
            added->SetParentSegment(ParentSegment);
            added->ExpandArray();
            if (ElementNode->GetVariableType() == kCbeTypeString) size = static_cast<u16>(ElementSizeOfType * byteSize);
            cursor = PlaceElement(added, cursor, size, alignment, byteSize);
        } while (StepIndices());
    } catch (...) {
        while (Children.GetCount() > before) delete static_cast<CVemBaseNode*>(Children.RemoveTail());
        LastChild = lastBefore;
        throw;
    }
    ElementNode.reset();
}

// ---- flat functions --------------------------------------------------------------------------------

void VemSetDimRange4Index(CVemDimRange* range, u8 index, tVemDimRange dimRange) {
    vem::TouchLayout();
    range->SetDimRange(index, dimRange);
}

extern "C" tVemDimRange VemGetDimRange(CVemDimRange* range, u8 index) { return range->GetDimRange(index); }

extern "C" u8 VemGetDimSize(CVemDimRange* range) { return range->DimSize; }

// Types 7 to 9 count as arrays too, although no class bears them.
extern "C" void VemSetArrayElementSizeOfType(CVemBaseNode* node, u16 size) {
    if (!node) return;
    const u32 type = node->GetNodeType();
    if (type < kVemArrayNode || type > 9) return;
    if (!node->IsKindOf(RUNTIME_CLASS(CVemArrayNode))) return;
    vem::TouchLayout();
    static_cast<CVemArrayNode*>(node)->ElementSizeOfType = size;
}

extern "C" u16 VemGetArrayElementSizeOfType(CVemBaseNode* node) {
    return node && node->IsKindOf(RUNTIME_CLASS(CVemArrayNode)) ? static_cast<CVemArrayNode*>(node)->ElementSizeOfType
                                                                : 0;
}

extern "C" u32 VemGetArrayCode(CVemBaseNode* node) {
    return node && node->IsKindOf(RUNTIME_CLASS(CVemArrayNode)) ? static_cast<CVemArrayNode*>(node)->ArrayCode : 0;
}
