// CEVemBaseStmtNode: links, place, record and dump common to all statements.
#include "statement/evemstmt.h"

#include <array>

#include "node/dumptext.h"
#include "statement/evemdump.h"

VEM_IMPLEMENT_SERIAL(CEVemBaseStmtNode, CEVemBaseNode, 5)

namespace {

// Kinds below this one are code nodes and the bases above the statements: no chain takes them.
constexpr i32 kFirstStatementType = 6;

}  // namespace

bool vem::evem::IsStatement(const CEVemBaseNode* node) {
    return node && node->IsKindOf(RUNTIME_CLASS(CEVemBaseStmtNode));
}

CEVemBaseStmtNode* vem::evem::MakeChainStatement(u16 type) {
    // Whether a kind makes a statement, asked of each kind once.
    static const std::array<bool, kEVemNodeTypeCount> statementKinds = [] {
        std::array<bool, kEVemNodeTypeCount> kinds{};
        for (int t = 0; t < kEVemNodeTypeCount; ++t) {
            const std::unique_ptr<CEVemBaseNode> node(vem::evem::MakeNode(t, CString()));
            kinds[static_cast<std::size_t>(t)] = vem::evem::IsStatement(node.get());
        }
        return kinds;
    }();
    if (type >= kEVemNodeTypeCount || !statementKinds[type]) VemThrowUser();
    return static_cast<CEVemBaseStmtNode*>(vem::evem::MakeNode(type, CString()));
}

void vem::evem::DeleteChain(CEVemBaseNode* first) {
    while (first) {
        CEVemBaseNode* next = first->GetNext();
        delete first;
        first = next;
    }
}

// The statement takes the new node; the one it held before goes back to whoever made it.
void vem::evem::ReplaceOwned(std::unique_ptr<CEVemBaseNode>& slot, CEVemBaseNode* node) {
    if (slot.get() == node) return;
    (void)slot.release();
    slot.reset(node);
}

CEVemBaseStmtNode::CEVemBaseStmtNode() : CEVemBaseStmtNode(kEVemBaseStmtNode) {}

CEVemBaseStmtNode::CEVemBaseStmtNode(tEVemNodeType type) : CEVemBaseNode(type) {}

CEVemBaseStmtNode::~CEVemBaseStmtNode() {
    Next = nullptr;
    Previous = nullptr;
}

// Nothing in the system appends to a statement; a statement given one takes it in right behind
// itself, so that the chain behind stays whole.
int CEVemBaseStmtNode::AddNewStmtNode(CEVemBaseNode* statement) {
    if (!vem::evem::IsStatement(statement) || statement == this) return 0;
    auto* added = static_cast<CEVemBaseStmtNode*>(statement);
    added->Next = Next;
    if (Next) Next->SetPrevious(added);
    Next = added;
    added->Previous = this;
    return 1;
}

int CEVemBaseStmtNode::SetNext(CEVemBaseNode* statement) {
    if (!statement || statement->NodeType < kFirstStatementType) return 0;
    Next = statement;
    return 1;
}

int CEVemBaseStmtNode::SetPrevious(CEVemBaseNode* previous) {
    if (!previous) return 0;
    Previous = previous;
    return 1;
}

void CEVemBaseStmtNode::SetAwlPosition(u16 line, u16 column) {
    AwlLine = line;
    AwlColumn = column;
}

void CEVemBaseStmtNode::GetAwlPosition(u16& line, u16& column) {
    line = AwlLine;
    column = AwlColumn;
}

// offset width field
//   0      4   base record: schema word, NodeType
//   4      2   schema word, version 3
//   6      2   AwlLine
//          2   version 2 and below: kind of the next statement, and if not 0 that statement's
//              whole record, which nests the rest of the chain the same way
//   8      2   UcodeOffset
//  10          operand part of the class
void CEVemBaseStmtNode::Serialize(CArchive& ar) {
    CEVemBaseNode::Serialize(ar);
    if (ar.IsLoading()) {
        Load(ar);
        return;
    }
    VemSerializeSchema(ar, kSchema);
    ar << AwlLine;
    ar << UcodeOffset;
    SerializeOperand(ar);
}

void CEVemBaseStmtNode::SerializeOperand(CArchive&) {}

// The statements that an older record nests belong to no one until the whole record is read: a
// failure anywhere in it takes them away again.
void CEVemBaseStmtNode::Load(CArchive& ar) {
    const u16 nextType = LoadHead(ar);
    if (nextType == 0) {
        LoadTail(ar);
        return;
    }
    try {
        LoadNestedChain(ar, nextType);
        LoadTail(ar);
    } catch (...) {
        vem::evem::DeleteChain(Next);
        Next = nullptr;
        throw;
    }
}

u16 CEVemBaseStmtNode::LoadHead(CArchive& ar) {
    const u16 version = ar.LoadSchema(kSchema);
    ar >> AwlLine;
    u16 nextType = 0;
    if (version <= 2) ar >> nextType;
    return nextType;
}

void CEVemBaseStmtNode::LoadTail(CArchive& ar) {
    ar >> UcodeOffset;
    SerializeOperand(ar);
}

// An older record nests the chain: each statement's head, then the next statement's whole record,
// then its own tail. Reading the heads on the way down and the tails on the way back up keeps the
// stack flat however long the chain is.
void CEVemBaseStmtNode::LoadNestedChain(CArchive& ar, u16 type) {
    CEVemBaseStmtNode* last = this;
    while (type != 0) {
        CEVemBaseStmtNode* next = vem::evem::MakeChainStatement(type);
        last->Next = next;
        next->Previous = last;
        last = next;
        last->CEVemBaseNode::Serialize(ar);
        if (!vem::evem::KindFitsClass(last->NodeType, last->GetRuntimeClass()))
            VemThrowArchive(CArchiveException::badClass);
        type = last->LoadHead(ar);
    }
    for (CEVemBaseStmtNode* node = last; node != this; node = static_cast<CEVemBaseStmtNode*>(node->Previous))
        node->LoadTail(ar);
}

void CEVemBaseStmtNode::DumpNode(CFile* file, CString prefix) {
    CVemDumpText text;
    AppendDump(text, prefix, prefix.GetString());
    text.WriteTo(file);
}

void CEVemBaseStmtNode::AppendDump(CVemDumpText& text, const CString&, std::string_view p) {
    vem::evem::AppendBaseDump(text, p, NodeType);
    text << p << "AWL Position = ";
    text.Unsigned(unsigned{AwlLine}) << ' ';
    text.Unsigned(unsigned{AwlColumn}) << '\n' << p << "UCODE Offset = ";
    text.Unsigned(unsigned{UcodeOffset}) << '\n';
}
