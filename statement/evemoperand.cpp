// Statements with an operand: type, operator, constant, variable and indexed variable.
#include "statement/evemoperand.h"

#include "node/dumptext.h"
#include "statement/evemdump.h"

VEM_IMPLEMENT_SERIAL(CEVemOpOnTypeStmtNode, CEVemBaseStmtNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemOperatorStmtNode, CEVemOpOnTypeStmtNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemOpOnConstStmtNode, CEVemOperatorStmtNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemOpOnVarStmtNode, CEVemOperatorStmtNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemArrayOperatorStmtNode, CEVemOpOnVarStmtNode, 5)

// Each dump is one block: the lines of the class and of all its bases, the prefix measured once.
void CEVemOpOnTypeStmtNode::DumpNode(CFile* file, CString prefix) {
    CVemDumpText text;
    AppendDump(text, prefix, prefix.GetString());
    text.WriteTo(file);
}

void CEVemOpOnTypeStmtNode::AppendDump(CVemDumpText& text, const CString& prefix, std::string_view p) {
    CEVemBaseStmtNode::AppendDump(text, prefix, p);
    text << p << "CbeType = " << vem::evem::CbeTypeText(Seen().CbeType) << '\n';
}

void CEVemOperatorStmtNode::DumpNode(CFile* file, CString prefix) {
    CVemDumpText text;
    AppendDump(text, prefix, prefix.GetString());
    text.WriteTo(file);
}

void CEVemOperatorStmtNode::AppendDump(CVemDumpText& text, const CString& prefix, std::string_view p) {
    CEVemOpOnTypeStmtNode::AppendDump(text, prefix, p);
    text << p << "NegOperand = " << (Seen().NegOperand == 1 ? "TRUE" : "FALSE") << '\n';
    text << p << "AccuType = " << (Seen().AccuType == 1 ? "normal" : "shadow") << '\n';
}

CEVemOpOnConstStmtNode::~CEVemOpOnConstStmtNode() = default;

int CEVemOpOnConstStmtNode::SetValue(CVemByteArray* value) {
    if (!value) return 0;
    Value.reset(value->Clone());
    return 1;
}

void CEVemOpOnConstStmtNode::DumpNode(CFile* file, CString prefix) {
    CEVemOperatorStmtNode::DumpNode(file, prefix);
    WriteDump(file, prefix + "Value = " + vem::evem::ValueText(Seen().CbeType, Value.get()));
}

// offset width field (behind the statement part)
//   0      2   schema word, version 3
//   2          Name, as a string
//          2   NearOffset
//          2   FarOffset
//          2   AddressMode, low 16 bits
void CEVemOpOnVarStmtNode::SerializeOperand(CArchive& ar) {
    if (ar.IsStoring()) {
        VemSerializeSchema(ar, kSchema);
        ar << Name << NearOffset << FarOffset << AddressModeLow;
    } else {
        ar.LoadSchema(kSchema);
        u16 mode = 0;
        ar >> Name >> NearOffset >> FarOffset >> mode;
        SetAddressMode(static_cast<tEVemAddressMode>(mode));
    }
}

void CEVemOpOnVarStmtNode::DumpNode(CFile* file, CString prefix) {
    CVemDumpText text;
    AppendDump(text, prefix, prefix.GetString());
    text.WriteTo(file);
}

void CEVemOpOnVarStmtNode::AppendDump(CVemDumpText& text, const CString& prefix, std::string_view p) {
    CEVemOperatorStmtNode::AppendDump(text, prefix, p);
    text << prefix << "Name = " << Name << prefix << "AddressMode = " << vem::evem::AddressModeText(GetAddressMode());
    text << p << "NearOffset = ";
    text.Unsigned(unsigned{NearOffset}) << '\n' << p << "FarOffset = ";
    text.Unsigned(unsigned{FarOffset}) << '\n';
    text << prefix << "VemNode = ";
    vem::evem::AppendPointer(text, GetVemNode());
    text << '\n' << prefix << "VemInstanceNode = ";
    vem::evem::AppendPointer(text, GetInstanceNode());
    text << '\n';
}

CEVemArrayOperatorStmtNode::~CEVemArrayOperatorStmtNode() = default;

CEVemBaseNode* CEVemArrayOperatorStmtNode::GetIndexNode(int index) {
    if (index < 0 || index >= GetIndexCount()) VemThrowInvalidArg();
    return IndexNodes[static_cast<std::size_t>(index)].get();
}

void CEVemArrayOperatorStmtNode::AddIndexNode(CEVemBaseNode* indexNode) { IndexNodes.emplace_back(indexNode); }

void CEVemArrayOperatorStmtNode::SetPrevOperandNode(CEVemBaseNode* operand) {
    vem::evem::ReplaceOwned(PrevOperandNode, operand);
}

void CEVemArrayOperatorStmtNode::DumpNode(CFile* file, CString prefix) {
    CEVemOpOnVarStmtNode::DumpNode(file, prefix);
    CString text = prefix + "Element node = " + vem::evem::PointerText(ElementNode) + "\n";
    text.AppendFormat("%sIndex count = %d\n", prefix.GetString(), GetIndexCount());
    WriteDump(file, text);
    for (int i = 0; i < GetIndexCount(); ++i) {
        CEVemBaseNode* index = IndexNodes[static_cast<std::size_t>(i)].get();
        CString line;
        line.Format("%sIndex %d = %s\n", prefix.GetString(), i, vem::evem::PointerText(index).GetString());
        WriteDump(file, line);
        if (index) index->DumpNode(file, prefix);
    }
    if (PrevOperandNode) PrevOperandNode->DumpNode(file, prefix);
}
