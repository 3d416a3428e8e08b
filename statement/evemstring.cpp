// The standard string functions with further parameters.
#include "statement/evemstring.h"

#include "statement/evemdump.h"

VEM_IMPLEMENT_SERIAL(CEVemStdStringOpNode, CEVemBaseStmtNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemStdStringMidDelNode, CEVemStdStringOpNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemStdStringReplaceNode, CEVemStdStringMidDelNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemStdStringInsertNode, CEVemStdStringOpNode, 5)

namespace {

// "<label> = <pointer>", then the parameter's own dump if there is one.
void DumpParam(CFile* file, const CString& prefix, const char* label, CEVemBaseNode* param) {
    const CString text = prefix + label + " = " + vem::evem::PointerText(param) + "\n";
    file->Write(text.GetString(), static_cast<unsigned>(text.GetLength()));
    if (param) param->DumpNode(file, prefix);
}

}  // namespace

CEVemStdStringOpNode::~CEVemStdStringOpNode() = default;

void CEVemStdStringOpNode::SetStdStringPParamStmtNode(CEVemBaseNode* param) {
    vem::evem::ReplaceOwned(PParamStmtNode, param);
}

void CEVemStdStringOpNode::DumpNode(CFile* file, CString prefix) {
    CEVemBaseStmtNode::DumpNode(file, prefix);
    DumpParam(file, prefix, "PParamStmtNode", PParamStmtNode.get());
}

CEVemStdStringMidDelNode::~CEVemStdStringMidDelNode() = default;

void CEVemStdStringMidDelNode::SetStdStringLParamStmtNode(CEVemBaseNode* param) {
    vem::evem::ReplaceOwned(LParamStmtNode, param);
}

void CEVemStdStringMidDelNode::DumpNode(CFile* file, CString prefix) {
    CEVemStdStringOpNode::DumpNode(file, prefix);
    DumpParam(file, prefix, "LParamStmtNode", LParamStmtNode.get());
}

CEVemStdStringReplaceNode::~CEVemStdStringReplaceNode() = default;

void CEVemStdStringReplaceNode::SetStdStringIn2ParamStmtNode(CEVemBaseNode* param) {
    vem::evem::ReplaceOwned(In2ParamStmtNode, param);
}

void CEVemStdStringReplaceNode::DumpNode(CFile* file, CString prefix) {
    CEVemStdStringMidDelNode::DumpNode(file, prefix);
    DumpParam(file, prefix, "In2ParamStmtNode", In2ParamStmtNode.get());
}

CEVemStdStringInsertNode::~CEVemStdStringInsertNode() = default;

void CEVemStdStringInsertNode::SetStdStringIn2ParamStmtNode(CEVemBaseNode* param) {
    vem::evem::ReplaceOwned(In2ParamStmtNode, param);
}

void CEVemStdStringInsertNode::DumpNode(CFile* file, CString prefix) {
    CEVemStdStringOpNode::DumpNode(file, prefix);
    DumpParam(file, prefix, "In2ParamStmtNode", In2ParamStmtNode.get());
}
