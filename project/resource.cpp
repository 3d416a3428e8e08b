// Resource node: counts what is added to it and deleted from it, and names itself after its own
// file title and that of its configuration.
#include "project/project.h"

VEM_IMPLEMENT_SERIAL(CVemResourceNode, CVemBaseNode, 5)

namespace {

constexpr char kTitleSeparator[] = "  -  ";

}  // namespace

CVemResourceNode::CVemResourceNode(const CString& name) : CVemResourceNode(kVemResourceNode, name, 1) {}

CVemResourceNode::CVemResourceNode(u32 nodeType, const CString& name, int expanded)
    : CVemBaseNode(nodeType, name, expanded) {}

CVemResourceNode::~CVemResourceNode() = default;

//  width   field
//  .       base record with the children
//  2       schema word (0)
//  string  ConfigName
void CVemResourceNode::Serialize(CArchive& ar) {
    CVemBaseNode::Serialize(ar);
    VemSerializeSchema(ar, kSchema);
    if (ar.IsStoring()) {
        ar << ConfigName;
    } else {
        ar >> ConfigName;
    }
}

CVemBaseNode* CVemResourceNode::DeleteNode(CVemBaseNode* target) {
    CVemBaseNode* holder = CVemBaseNode::DeleteNode(target);
    if (holder == this) --NoOfTask;
    return holder;
}

int CVemResourceNode::AddChildTail(CVemBaseNode* child) {
    ++NoOfTask;
    return CVemBaseNode::AddChildTail(child);
}

int CVemResourceNode::AddChildHead(CVemBaseNode* child) { return CVemResourceNode::AddChildSorted(child); }

int CVemResourceNode::AddChildSorted(CVemBaseNode* child) {
    ++NoOfTask;
    return CVemBaseNode::AddChildSorted(child);
}

CString CVemResourceNode::GetNodeText() {
    const CString configTitle = VemSplitPath(GetConfigName()).title;
    const CString nameTitle = VemSplitPath(CVemBaseNode::GetNodeText()).title;
    CString text = nameTitle + kTitleSeparator + configTitle;
    text.MakeUpper();
    return text;
}
