// CEVemBaseStmtNode: one statement of a unit's instruction list, linked to its neighbours, with its
// place in the source text and the offset of its code.
#pragma once

#include <memory>

#include <string_view>

#include "statement/evembase.h"

class CVemDumpText;

class CEVemBaseStmtNode : public CEVemBaseNode {
    VEM_DECLARE_SERIAL(CEVemBaseStmtNode)
public:
    // Offset of a statement whose code was never placed.
    static constexpr u16 kNoUcodeOffset = 0xCDCD;

    CEVemBaseStmtNode();  // made by name: the kind comes from the record
    explicit CEVemBaseStmtNode(tEVemNodeType type);
    ~CEVemBaseStmtNode() override;

    // Every statement's record: the base record, the statement part, then the operand part of the
    // class. Final, since records of older versions interleave these parts down a whole chain.
    void Serialize(CArchive& ar) final;

    int AddNewStmtNode(CEVemBaseNode* statement) override;
    int SetNext(CEVemBaseNode* statement) override;
    int SetPrevious(CEVemBaseNode* previous) override;
    CEVemBaseNode* GetPrevious() override { return Previous; }
    CEVemBaseNode* GetNext() override { return Next; }
    void SetAwlLine(u16 line) override { AwlLine = line; }
    u16 GetAwlLine() override { return AwlLine; }
    void SetAwlPosition(u16 line, u16 column) override;
    void GetAwlPosition(u16& line, u16& column) override;
    void DumpNode(CFile* file, CString prefix) override;

    u16 AwlLine = 0;
    u16 AwlColumn = 0;
    CEVemBaseNode* Next = nullptr;      // belongs to the code node
    CEVemBaseNode* Previous = nullptr;  // a statement, or the code node ahead of the first
    u16 UcodeOffset = kNoUcodeOffset;

protected:
    // The part of the record behind the statement part; none in this class.
    virtual void SerializeOperand(CArchive& ar);
    // The lines of this class's dump and those of its bases, into one block: `p` is the prefix up
    // to its first null character, as "%s" takes it. Each class with a dump of its own adds its
    // lines behind its base's.
    void AppendDump(CVemDumpText& text, const CString& prefix, std::string_view p);

private:
    void Load(CArchive& ar);
    // Reads the schema word and AwlLine; gives the kind of the next statement that a record of
    // version 2 or below holds inside it, or 0.
    u16 LoadHead(CArchive& ar);
    // UcodeOffset and the operand part: what follows the head and the statements nested in it.
    void LoadTail(CArchive& ar);
    // Reads the chain nested in an older record, starting with a statement of the given kind.
    void LoadNestedChain(CArchive& ar, u16 type);
};

namespace vem::evem {

// Makes a statement of the kind for a chain being loaded; raises the user exception for a kind
// that makes no statement.
CEVemBaseStmtNode* MakeChainStatement(u16 type);
// Deletes a chain from its first node on, one node after the other.
void DeleteChain(CEVemBaseNode* first);
// Takes over an owned statement in place of the one held before, which is deleted.
void ReplaceOwned(std::unique_ptr<CEVemBaseNode>& slot, CEVemBaseNode* node);

}  // namespace vem::evem
