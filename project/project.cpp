// Project and configuration nodes: a node type, a symbol, and an empty record of their own.
#include "project/project.h"

VEM_IMPLEMENT_SERIAL(CVemProjectNode, CVemBaseNode, 5)
VEM_IMPLEMENT_SERIAL(CVemConfigNode, CVemBaseNode, 5)

CVemProjectNode::CVemProjectNode(const CString& name) : CVemBaseNode(kVemProjectNode, name, 1) {}

//  width   field
//  .       base record with the children
//  2       schema word (0)
void CVemProjectNode::Serialize(CArchive& ar) {
    CVemBaseNode::Serialize(ar);
    VemSerializeSchema(ar, kSchema);
}

CVemConfigNode::CVemConfigNode(const CString& name) : CVemBaseNode(kVemConfigNode, name, 0) {}

//  width   field
//  .       base record with the children
//  2       schema word (0)
void CVemConfigNode::Serialize(CArchive& ar) {
    CVemBaseNode::Serialize(ar);
    VemSerializeSchema(ar, kSchema);
}
