// The three kinds of unit: programs, function blocks and functions.
#include <new>

#include "platform/fieldio.h"
#include "units/pou.h"
#include "vem_node.h"

VEM_IMPLEMENT_SERIAL(CVemProgramNode, CVemPouNode, 5)
VEM_IMPLEMENT_SERIAL(CVemFbNode, CVemPouNode, 5)
VEM_IMPLEMENT_SERIAL(CVemFunctionNode, CVemPouNode, 5)

// ---- program ---------------------------------------------------------------------------------------

CVemProgramNode::CVemProgramNode() : CVemProgramNode(CString(), CString()) {}

CVemProgramNode::CVemProgramNode(const CString& name, const CString& path, const CString&)
    : CVemPouNode(kVemProgramNode, name, path) {}

CVemProgramNode::CVemProgramNode(const CVemProgramNode& other) = default;

CVemProgramNode::~CVemProgramNode() = default;

//  width   field
//  .       unit record
//  1       global flag, low 8 bits
void CVemProgramNode::Serialize(CArchive& ar) {
    CVemPouNode::Serialize(ar);
    vem::SerializeField<u8>(ar, GlobalFlag);
}

CVemBaseNode* CVemProgramNode::Clone() { return new CVemProgramNode(*this); }

void CVemProgramNode::SetGlobal(int global) { GlobalFlag = global; }

int CVemProgramNode::GetGlobal() { return GlobalFlag; }

void CVemProgramNode::NodeDump(CFile* file, CString indent) {
    CString text;
    text.Format("%s*PROGRAMNODE: %s\n%sGlobalFlag: %i \n", indent.GetString(), Name.GetString(), indent.GetString(),
                static_cast<int>(GlobalFlag));
    WriteText(file, text);
    CVemPouNode::NodeDump(file, indent);
}

// ---- function block --------------------------------------------------------------------------------

CVemFbNode::CVemFbNode() : CVemFbNode(CString(), CString()) {}

CVemFbNode::CVemFbNode(const CString& name, const CString& path, const CString&)
    : CVemPouNode(kVemFbNode, name, path) {}

CVemFbNode::CVemFbNode(const CVemFbNode& other) = default;

CVemFbNode::~CVemFbNode() = default;

//  width   field
//  .       unit record
//  2       reserved
//  2       reserved
// The segment kind is not stored.
void CVemFbNode::Serialize(CArchive& ar) {
    CVemPouNode::Serialize(ar);
    vem::SerializeField<u16>(ar, Reserved);
    vem::SerializeField<u16>(ar, Reserved2);
}

CVemBaseNode* CVemFbNode::Clone() { return new CVemFbNode(*this); }

// Which source belongs to a code segment among the units that this block calls: the first match in
// depth-first order. The block's own number is the caller's to compare.
CString CVemFbNode::GetPouPathNameFromCodeSegNr(u16 codeSegment) {
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = ChildAt(pos);
        CString path;
        if (child->GetNodeType() == kVemFbNode) {
            path = child->GetCodeSegment() == codeSegment ? child->GetPathName()
                                                          : child->GetPouPathNameFromCodeSegNr(codeSegment);
        } else if (child->GetNodeType() == kVemFunctionNode && child->GetCodeSegment() == codeSegment) {
            path = child->GetPathName();
        }
        if (!path.IsEmpty()) return path;
    }
    return CString();
}

void CVemFbNode::SetFbSubSegmentKind(tIpSegmentKind kind) { SubSegmentKind = kind; }

tIpSegmentKind CVemFbNode::GetFbSubSegmentKind() { return SubSegmentKind; }

// ---- function --------------------------------------------------------------------------------------

CVemFunctionNode::CVemFunctionNode() : CVemFunctionNode(CString(), CString()) {}

CVemFunctionNode::CVemFunctionNode(const CString& name, const CString& path, const CString&)
    : CVemPouNode(kVemFunctionNode, name, path) {}

CVemFunctionNode::CVemFunctionNode(const CVemFunctionNode& other) = default;

CVemFunctionNode::~CVemFunctionNode() = default;

//  width   field
//  .       unit record
//  2       reserved
// Offset and segment kind are not stored.
void CVemFunctionNode::Serialize(CArchive& ar) {
    CVemPouNode::Serialize(ar);
    vem::SerializeField<u16>(ar, Reserved);
}

CVemBaseNode* CVemFunctionNode::Clone() { return new CVemFunctionNode(*this); }

u16 CVemFunctionNode::GetOffset() { return Offset; }

void CVemFunctionNode::SetOffset(u16 offset) { Offset = offset; }

void CVemFunctionNode::SetSubSegmentKind(tIpSegmentKind kind) { SubSegmentKind = kind; }

tIpSegmentKind CVemFunctionNode::GetSubSegmentKind() { return SubSegmentKind; }

// ---- creators --------------------------------------------------------------------------------------

namespace {

template <typename Unit>
CVemBaseNode* NewUnitOrNull(const CString& name, const CString& path) {
    try {
        return new Unit(name, path);
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const CMemoryException&) {
        return nullptr;
    }
}

}  // namespace

CVemBaseNode* VemCreateCVemFbNode(CString name, CString path) { return NewUnitOrNull<CVemFbNode>(name, path); }

CVemBaseNode* VemCreateCVemFunctionNode(CString name, CString path) {
    return NewUnitOrNull<CVemFunctionNode>(name, path);
}
