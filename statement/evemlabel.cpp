// Labels, jumps, calls, references and conversions.
#include "statement/evemlabel.h"

#include "statement/evemdump.h"

VEM_IMPLEMENT_SERIAL(CEVemJumpLabelStmtNode, CEVemBaseStmtNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemCalStmtNode, CEVemJumpLabelStmtNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemReferenceStmtNode, CEVemBaseStmtNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemConvStmtNode, CEVemBaseStmtNode, 5)

// offset width field (behind the statement part)
//   0      2   schema word, version 3
//   2          Name, as a string
//              TypeName, as a string
//          2   Offset
//          2   LabelNum
void CEVemJumpLabelStmtNode::SerializeOperand(CArchive& ar) {
    VemSerializeSchema(ar, kSchema);
    if (ar.IsStoring())
        ar << Name << TypeName << Offset << LabelNum;
    else
        ar >> Name >> TypeName >> Offset >> LabelNum;
}

void CEVemJumpLabelStmtNode::DumpNode(CFile* file, CString prefix) {
    CEVemBaseStmtNode::DumpNode(file, prefix);
    CString text = prefix + "Name = " + Name + prefix + "Type name = " + TypeName;
    text.AppendFormat("%sLabel Number = %u\n", prefix.GetString(), unsigned{LabelNum});
    text.AppendFormat("%sOffset = %u\n", prefix.GetString(), unsigned{Offset});
    WriteDump(file, text);
}

void CEVemCalStmtNode::DumpNode(CFile* file, CString prefix) {
    CEVemJumpLabelStmtNode::DumpNode(file, prefix);
    WriteDump(file, prefix + "VemNode = " + vem::evem::PointerText(VemNode) + "\n");
}

void CEVemReferenceStmtNode::DumpNode(CFile* file, CString prefix) {
    CEVemBaseStmtNode::DumpNode(file, prefix);
    CString text;
    text.Format("%sOffset = %u\n%sFarOffset = %u\n", prefix.GetString(), unsigned{Offset}, prefix.GetString(),
                unsigned{FarOffset});
    text += prefix + "VemNode = " + vem::evem::PointerText(VemNode) + "\n";
    WriteDump(file, text);
}

void CEVemConvStmtNode::DumpNode(CFile* file, CString prefix) {
    CEVemBaseStmtNode::DumpNode(file, prefix);
    CString text;
    text.Format("%sInType = %s\n%sOutType = %s\n", prefix.GetString(), vem::evem::CbeTypeText(InType),
                prefix.GetString(), vem::evem::CbeTypeText(OutType));
    WriteDump(file, text);
}
