// Code nodes: append, record of the chain, dump.
#include "statement/evemcode.h"

#include <memory>

#include "statement/evemdump.h"
#include "statement/evemstmt.h"

VEM_IMPLEMENT_SERIAL(CEVemBaseCodeNode, CEVemBaseNode, 5)
VEM_IMPLEMENT_SERIAL(CEVemPouCodeNode, CEVemBaseCodeNode, 5)

namespace {

constexpr u16 kChainEnd = 0;

// Prefix of a code node's file dump, and what each level of statements adds to it.
constexpr const char* kFileDumpPrefix = "->>";
constexpr const char* kStatementPrefix = "- ";

CEVemBaseNode* LastOfChain(CEVemBaseNode* node) {
    while (CEVemBaseNode* next = node->GetNext()) node = next;
    return node;
}

}  // namespace

CEVemBaseCodeNode::CEVemBaseCodeNode() : CEVemBaseCodeNode(CString()) {}

CEVemBaseCodeNode::CEVemBaseCodeNode(const CString& pouName) : CEVemBaseCodeNode(kEVemBaseCodeNode, pouName) {}

CEVemBaseCodeNode::CEVemBaseCodeNode(tEVemNodeType type, const CString& pouName)
    : CEVemBaseNode(type), PouName(pouName) {}

CEVemBaseCodeNode::~CEVemBaseCodeNode() = default;

CEVemPouCodeNode::CEVemPouCodeNode() : CEVemPouCodeNode(CString(), kEVemPouUndef) {}

CEVemPouCodeNode::CEVemPouCodeNode(const CString& pouName, tEVemPouType pouType)
    : CEVemBaseCodeNode(kEVemPouCodeNode, pouName), PouType(pouType) {}

CEVemPouCodeNode::~CEVemPouCodeNode() { DeleteChain(); }

void CEVemPouCodeNode::DeleteChain() {
    vem::evem::DeleteChain(FirstStatement);
    FirstStatement = nullptr;
    LastStatement = nullptr;
}

// The first statement's previous node is the code node; the others follow the last one appended.
// A chain that was loaded or set has no last statement, and takes nothing more.
int CEVemPouCodeNode::AddNewStmtNode(CEVemBaseNode* statement) {
    if (!statement) return 0;
    if (!FirstStatement) {
        FirstStatement = statement;
        statement->SetPrevious(this);
    } else {
        if (!LastStatement) return 0;
        if (!LastStatement->SetNext(statement)) return 0;
        statement->SetPrevious(LastStatement);
    }
    LastStatement = statement;
    return 1;
}

// Only the head changes: the end that appending knew stays where it was.
int CEVemPouCodeNode::SetStatementNode(CEVemBaseNode* statement) {
    if (!statement || statement->NodeType < kEVemLdStmtNode) return 0;
    FirstStatement = statement;
    return 1;
}

// offset width field
//   0      4   base record: schema word, NodeType
//   4      2   schema word, version 3
//   6      2   PouType, low 16 bits
//   8      2   LocalDataSegSize
//  10          PouPathName, as a string
//              per statement in chain order: its kind (u16), then its whole record
//          2   0, the end of the chain
void CEVemPouCodeNode::Serialize(CArchive& ar) {
    CEVemBaseNode::Serialize(ar);
    VemSerializeSchema(ar, kSchema);
    if (ar.IsStoring()) {
        ar << static_cast<u16>(PouType) << LocalDataSegSize << PouPathName;
        StoreChain(ar);
    } else {
        u16 pouType = 0;
        ar >> pouType >> LocalDataSegSize >> PouPathName;
        PouType = static_cast<tEVemPouType>(pouType);
        DeleteChain();
        LoadChain(ar);
    }
}

void CEVemPouCodeNode::StoreChain(CArchive& ar) {
    for (CEVemBaseNode* node = FirstStatement; node; node = node->GetNext()) {
        ar << static_cast<u16>(node->NodeType);
        node->Serialize(ar);
    }
    ar << kChainEnd;
}

// Each statement comes behind the end of what was read before it: a record of an older version
// brings the rest of its chain along inside it.
void CEVemPouCodeNode::LoadChain(CArchive& ar) {
    CEVemBaseNode* last = nullptr;
    for (;;) {
        u16 type = kChainEnd;
        ar >> type;
        if (type == kChainEnd) return;
        std::unique_ptr<CEVemBaseStmtNode> statement(vem::evem::MakeChainStatement(type));
        statement->Serialize(ar);
        // A record that keeps the kind it was made by fits its class.
        if (statement->NodeType != type &&
            !vem::evem::KindFitsClass(statement->NodeType, statement->GetRuntimeClass())) {
            vem::evem::DeleteChain(statement.release());  // with the statements that an older record nested
            VemThrowArchive(CArchiveException::badClass);
        }
        CEVemBaseStmtNode* node = statement.release();
        if (last) {
            static_cast<CEVemBaseStmtNode*>(last)->Next = node;
            node->Previous = last;
        } else {
            FirstStatement = node;
        }
        last = LastOfChain(node);
    }
}

void CEVemPouCodeNode::DumpNode(CFile* file, CString prefix) {
    CEVemBaseNode::DumpNode(file, prefix);
    CString text = prefix + "PouName = " + PouName + prefix + "PouPathName = " + PouPathName + prefix +
                   "PouType = " + vem::evem::PouTypeText(PouType);
    text.AppendFormat("%sLocalDataSegSize: %d\n", prefix.GetString(), int{LocalDataSegSize});
    text += prefix + "STATEMENTNODES:\r\n";
    WriteDump(file, text);
    const CString statementPrefix = prefix + kStatementPrefix;
    for (CEVemBaseNode* node = FirstStatement; node; node = node->GetNext()) node->DumpNode(file, statementPrefix);
}

// The dump goes to a file beside the target first, which then replaces the target whole.
void CEVemPouCodeNode::NodeDump(CString fileName) {
    CVemReplaceFile file;
    if (!file.OpenReplace(fileName)) return;
    try {
        CVemWriteBuffer buffer(file);  // a dump is many short texts; they reach the file in large pieces
        DumpNode(&buffer, kFileDumpPrefix);
        buffer.Drain();
        file.Commit();
    } catch (const CFileException&) {
        // the previous file stays; the dump has no way to report
    }
}
