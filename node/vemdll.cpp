// The flat functions of the node family: the forwarders generated from the table of operations,
// and those that do more than forward.
#include <cstring>

#include "node/basenode.h"
#include "node/layoutepoch.h"
#include "vem_node.h"
#include "vem_plain.h"

#define VEM_NODE_ARGS(...) (__VA_ARGS__)
#define VEM_FLAT_DEF_FWD(Ret, Name, Params, Args) \
    Ret Vem##Name VEM_NODE_PARAMS Params { return node->Name Args; }
#define VEM_FLAT_DEF_VOID(Ret, Name, Params, Args) \
    void Vem##Name VEM_NODE_PARAMS Params { node->Name Args; }
#define VEM_FLAT_DEF_PLAIN(Ret, Name, Params, Args) \
    extern "C" Ret Vem##Name VEM_NODE_PARAMS Params { return node->Name Args; }
#define VEM_FLAT_DEF_NONE(Ret, Name, Params, Args)
#define VEM_OP(Ret, Name, Params, Args, Default, Flat) VEM_FLAT_DEF_##Flat(Ret, Name, Params, Args)
#include "vem_node_ops.def"
#undef VEM_OP

namespace {

void CopyText(const CString& text, char* buffer) { std::memcpy(buffer, text.GetString(), text.GetLength() + 1u); }

}  // namespace

// ---- tree ------------------------------------------------------------------------------------------

CVemBaseNode* VemGetParentNode(CVemBaseNode* node) { return node->Parent; }

CObList* VemGetChildList(CVemBaseNode* node) { return &node->Children; }

CVemBaseNode* VemGetLastChild(CVemBaseNode* node) { return node->LastChild; }

void VemSetName(CVemBaseNode* node, CString name) {
    vem::TouchLayout();  // names are the answers of an address index
    node->Name = name;
}

// The bare name whatever the class: the base's text, not the virtual one.
CString VemGetName(CVemBaseNode* node) { return node->CVemBaseNode::GetNodeText(); }

void VemGetNameEx(CVemBaseNode* node, char* buffer) { CopyText(VemGetName(node), buffer); }

CString VemGetNodeText(CVemBaseNode* node) { return node ? node->GetNodeText() : CString(); }

void VemGetNodeTextEx(CVemBaseNode* node, char* buffer) { CopyText(VemGetNodeText(node), buffer); }

void VemGetPathNameEx(CVemBaseNode* node, char* buffer) { CopyText(node->GetPathName(), buffer); }

CString VemGetObjFileName(CVemBaseNode* node) { return node->GetPathName(); }

int VemDeleteChildNode(CVemBaseNode* root, CVemBaseNode* target) {
    if (!root) return 0;
    return root->DeleteNode(target) ? 1 : 0;
}

void VemDeleteNode(CVemBaseNode*& node) {
    delete node;
    node = nullptr;
}

void VemDeleteNodeEx(CVemBaseNode*& node) { VemDeleteNode(node); }

CVemBaseNode* VemGetFirstNodeOfType(CVemBaseNode* parent, tVemNodeType type) {
    for (POSITION pos = parent->Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = parent->ChildAt(pos);
        if (child->GetNodeType() == type) return child;
    }
    return nullptr;
}

CVemBaseNode* VemGetFirstNodeOfTypeEx(CVemBaseNode* parent, tVemNodeType type) {
    return VemGetFirstNodeOfType(parent, type);
}

int VemIsReferenceEx(CVemBaseNode* node) { return node->IsReference(); }

CVemBaseNode* VemFindVemNodeByNameAndType(CVemBaseNode* parent, const char* name, tVemNodeType type) {
    for (POSITION pos = parent->Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = parent->ChildAt(pos);
        if (child->NodeType == type && child->Name == name) return child;
    }
    return nullptr;
}

// Names of the form instance " : " type are found by their type part.
CVemBaseNode* VemFindVemNodeByTypeNameAndType(CVemBaseNode* parent, const char* name, tVemNodeType type) {
    for (POSITION pos = parent->Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = parent->ChildAt(pos);
        if (child->NodeType != type) continue;
        CString part = child->Name;
        const int separator = part.Find(" : ");
        if (separator > 0) part = part.Mid(separator + 3);
        if (part == name) return child;
    }
    return nullptr;
}

CVemBaseNode* VemGetChildNodeByName(CVemBaseNode* node, const char* name) {
    return node->GetChildNodeByName(CString(name));
}

void CVemNodeDump(CVemBaseNode* node, CFile* file) { node->NodeDump(file, CString()); }

int CVemNodeDump(CVemBaseNode* node, const CString& fileName) {
    CVemReplaceFile file;
    if (!file.OpenReplace(fileName)) return 0;
    try {
        {
            // A dump is many short texts; they reach the file in large pieces.
            CVemWriteBuffer buffer(file);
            node->NodeDump(&buffer, CString());
            buffer.Drain();
        }
        file.Commit();
    } catch (const CFileException&) {
        return 0;  // the dump could not take the target's place
    }
    return 1;
}

// ---- units, tasks, executable ----------------------------------------------------------------------

int VemSetSegmentNumbers(CVemBaseNode* node, u16 data, u16 code, u16 ini, u16 ncc) {
    if (!node) return 0;
    node->SetDataSegment(data);
    node->SetCodeSegment(code);
    node->SetIniSegment(ini);
    node->SetNccSegment(ncc);
    node->SetChildSegments();
    return 1;
}

u32 VemGetAbsOffset(CVemBaseNode* node, int index) {
    const CDWordArray* offsets = node->GetAbsOffsets();
    if (!offsets) VemThrowInvalidArg();  // only tasks and executables have the table
    return offsets->GetAt(index);
}

u16 VemGetDatacontFilesUserLevel(CVemBaseNode* node, u16) { return node->GetDatacontFilesUserLevel(); }

const char* VemGetSegTableFileName(CVemBaseNode* node) {
    static CString text;
    text = node->GetSegTableFileName();
    return text.GetString();
}

CString VemGetPouPathNameFromCodeSegNr(CVemBaseNode* node, u16 codeSegment) {
    return node ? node->GetPouPathNameFromCodeSegNr(codeSegment) : CString();
}

// ---- tree view -------------------------------------------------------------------------------------

CVemBaseNode* VemGetSelectedPrevNode(CVemBaseNode* root, CVemBaseNode* target) {
    root->InitPrevNextStaticVar();
    return root->GetSelectedPrevNode(target);
}

CVemBaseNode* VemGetSelectedNextNode(CVemBaseNode* root, CVemBaseNode* target) {
    root->InitPrevNextStaticVar();
    return root->GetSelectedNextNode(target);
}
