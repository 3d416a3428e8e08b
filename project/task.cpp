// Task node: a resource name that is not stored, and a text without the system directory.
#include "project/tasks.h"

VEM_IMPLEMENT_SERIAL(CVemTaskNode, CVemBaseNode, 5)

namespace {

constexpr char kSystemDirectory[] = "KOMPO.SYS\\";
constexpr int kSystemDirectoryLength = sizeof(kSystemDirectory) - 1;

}  // namespace

CVemTaskNode::CVemTaskNode(const CString& name) : CVemBaseNode(kVemTaskNode, name, 1) {}

CVemTaskNode::~CVemTaskNode() = default;

//  width   field
//  .       base record with the children
//  2       schema word (0)
void CVemTaskNode::Serialize(CArchive& ar) {
    CVemBaseNode::Serialize(ar);
    VemSerializeSchema(ar, kSchema);
}

CString CVemTaskNode::GetNodeText() {
    CString text = Name;
    if (!text.IsEmpty() && text[0] == '\\') text = text.Mid(1);
    if (text.Left(kSystemDirectoryLength) == kSystemDirectory) text = text.Mid(kSystemDirectoryLength);
    return text;
}

int CVemTaskNode::SetResourceName(CString resourceName) {
    ResourceName = resourceName;
    return 1;
}

void CVemTaskNode::NodeDump(CFile* file, CString indent) {
    CString text;
    text.Format("%s*TASKNODE: %s\n%sResName: %s \n\n", indent.GetString(), Name.GetString(), indent.GetString(),
                ResourceName.GetString());
    WriteText(file, text);
    DumpChildren(file, indent);
}
