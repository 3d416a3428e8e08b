// Cross reference: which statements of a unit read or write a variable or call a unit.
#include <algorithm>
#include <array>

#include "node/basenode.h"
#include "statement/evemlabel.h"
#include "statement/evemoperand.h"

namespace {

// Kinds of statements that read their operand: loads, the variable and indexed rows of the
// operators, the conversions, the calls, the standard functions with a variable operand. The
// indexed forms of Shl to Expt are no reads.
constexpr std::array<i32, 108> kReadAccess = {
    6,   8,   9,   15,  16,  18,  19,  21,  22,  24,  25,  27,  28,  30,  31,  33,  34,  36,  37,  38,  40,  41,
    43,  44,  46,  47,  49,  50,  52,  53,  55,  56,  58,  59,  61,  62,  64,  65,  67,  68,  69,  71,  72,  74,
    75,  77,  78,  80,  81,  83,  84,  86,  87,  89,  90,  92,  93,  95,  96,  98,  99,  101, 102, 104, 105, 107,
    108, 110, 111, 112, 113, 114, 115, 120, 121, 122, 123, 129, 132, 133, 134, 135, 136, 137, 138, 139, 140, 141,
    142, 147, 148, 149, 150, 155, 156, 157, 158, 159, 160, 162, 164, 165, 167, 168, 169, 170, 176, 177,
};

// Kinds of statements that write their operand: stores, set and reset, the calls, the store of a
// reference.
constexpr std::array<i32, 11> kWriteAccess = {10, 11, 12, 13, 120, 121, 122, 123, 130, 176, 177};

static_assert(std::is_sorted(kReadAccess.begin(), kReadAccess.end()), "kinds in ascending order");
static_assert(std::is_sorted(kWriteAccess.begin(), kWriteAccess.end()), "kinds in ascending order");

template <std::size_t N>
int InTable(const std::array<i32, N>& table, i32 type) {
    return std::binary_search(table.begin(), table.end(), type) ? 1 : 0;
}

bool IsCallKind(i32 type) {
    return (type >= kEVemCalFbStmtNode && type <= kEVemCalFunStmtNode) || type == kEVemCalcenFbStmtNode ||
           type == kEVemCalcenFunStmtNode;
}

// The name under which statements know a node: its text up to the " : " in front of a type.
CString CallName(CVemBaseNode* node) {
    const CString text = node->GetNodeText();
    const int colon = text.ReverseFind(':');
    return colon > 0 ? text.Left(colon - 1) : text;
}

bool IsCallOf(CEVemBaseNode* statement, const CString& callName) {
    return statement->IsKindOf(RUNTIME_CLASS(CEVemCalStmtNode)) && statement->GetName() == callName &&
           IsCallKind(statement->NodeType);
}

// The unit's name from its path: the file name without its last extension. A name that begins
// with its only point keeps it.
CString UnitName(const CString& pathName) {
    CString name = pathName;
    const int slash = name.ReverseFind('\\');
    if (slash >= 0) name = name.Mid(slash + 1);
    const int point = name.ReverseFind('.');
    if (point > 0) name = name.Left(point);
    return name;
}

// The unit that holds a variable, and the instance through which a function block's variables
// are reached. A function block below a compiled task bears the name "instance : type".
struct Owner {
    CString Name;
    CString Instance;
};

Owner FindOwner(CVemBaseNode* target) {
    Owner owner;
    for (CVemBaseNode* node = target->Parent; node; node = node->Parent) {
        const u32 type = node->GetNodeType();
        if (type == kVemFunctionNode) {
            owner.Name = node->Name;
            break;
        }
        if (type != kVemFbNode && type != kVemTuiTaskNode && type != kVemFbInstanceNode) continue;
        const int colon = node->Name.Find(':');
        if (colon > 0) {
            owner.Instance = node->Name.Left(colon - 1);
            owner.Name = node->Name.Mid(colon + 2);
            break;
        }
        owner.Name = node->Name;
    }
    return owner;
}

// Whether a variable of its owner can stand in this unit. Its kind of sub segment says how the
// names compare: exactly for the kinds 3 to 12, not at all for the kinds whose variables may be
// used in any unit, and blind to case for all others.
constexpr u32 kExactKindFirst = 3;
constexpr u32 kExactKindLast = 12;
constexpr std::array<u32, 6> kAnyUnitKinds = {14, 17, 18, 21, 22, 25};

bool OwnerFitsUnit(u32 kind, const CString& ownerName, const CString& unitName) {
    if (std::find(kAnyUnitKinds.begin(), kAnyUnitKinds.end(), kind) != kAnyUnitKinds.end()) return true;
    if (kind >= kExactKindFirst && kind <= kExactKindLast) return ownerName == unitName;
    CString owner = ownerName;
    CString unit = unitName;
    return owner.MakeUpper() == unit.MakeUpper();
}

// The operand's text as statements of its unit bear it: the names of its owners from the unit
// down, joined by points. The names above a function block instance of the owner stay out.
CString OperandName(CVemBaseNode* target, const CString& instanceName) {
    CString operand = CallName(target);
    for (CVemBaseNode* node = target->Parent; node; node = node->Parent) {
        const u32 type = node->GetNodeType();
        if (type == kVemTuiTaskNode || type == kVemFunctionNode) break;
        const CString name = CallName(node);
        if (type == kVemFbNode && !instanceName.IsEmpty() && instanceName == name) break;
        operand = name + "." + operand;
    }
    return operand;
}

bool IsVariable(CVemBaseNode* node) {
    const u32 type = node->GetNodeType();
    return type == kVemVariableNode || type == kVemArrayNode;
}

struct Hits {
    CStringList* Paths;
    CWordArray* Lines;
    CWordArray* Kinds;

    void Add(const CString& pathName, CEVemBaseNode* statement, u16 kind) const {
        Paths->AddTail(pathName);
        Lines->Add(statement->GetAwlLine());
        Kinds->Add(kind);
    }
};

void FindHits(CEVemBaseNode* codeNode, CVemBaseNode* target, const CString& operand, u16 mask, const Hits& hits) {
    const CString pathName = codeNode->GetPathName();
    const CString callName = CallName(target);
    const bool reads = (mask & kEVemCrRead) != 0;
    const bool writes = (mask & kEVemCrWrite) != 0;
    for (CEVemBaseNode* statement = codeNode->GetStatementNode(); statement; statement = statement->GetNext()) {
        // EVemCheckOpOnVar for both kinds of access, with the operand's text compared once.
        if ((reads || writes) && statement->IsKindOf(RUNTIME_CLASS(CEVemOpOnVarStmtNode)) &&
            statement->GetName() == operand) {
            if (reads && EVemCheckAccess(statement, kEVemCrRead)) hits.Add(pathName, statement, kEVemCrRead);
            if (writes && EVemCheckAccess(statement, kEVemCrWrite)) hits.Add(pathName, statement, kEVemCrWrite);
        }
        if ((mask & kEVemCrCall) && IsCallOf(statement, callName)) hits.Add(pathName, statement, kEVemCrCall);
    }
}

}  // namespace

int EVemIsReadAccess(tEVemNodeType type) { return InTable(kReadAccess, type); }

int EVemIsWriteAccess(tEVemNodeType type) { return InTable(kWriteAccess, type); }

int EVemCheckAccess(CEVemBaseNode* statement, u16 kind) {
    if (!statement) return 0;
    const auto type = static_cast<tEVemNodeType>(statement->NodeType);
    if (kind == kEVemCrRead) return EVemIsReadAccess(type);
    if (kind == kEVemCrWrite) return EVemIsWriteAccess(type);
    return 0;
}

int EVemCheckOpOnVar(CEVemBaseNode* statement, CVemBaseNode*, CString operandName, u16 kind) {
    if (!statement || !statement->IsKindOf(RUNTIME_CLASS(CEVemOpOnVarStmtNode))) return 0;
    if (statement->GetName() != operandName) return 0;
    return EVemCheckAccess(statement, kind);
}

int EVemCheckForCall(CEVemBaseNode* statement, CVemBaseNode* node, u16) {
    if (!statement || !node) return 0;
    return IsCallOf(statement, CallName(node)) ? 1 : 0;
}

int EVemCRBuildPouTableEx(CVemBaseNode* exe, CMapStringToOb* table) {
    if (!vem::evem::IsEnabled()) return 1;
    if (!exe || !table || exe->GetNodeType() != kVemExeNode) return 0;
    CObList* list = exe->GetEvemRootNodeListPtr();
    if (!list) return 0;
    for (POSITION pos = list->GetHeadPosition(); pos;) {
        CObject* object = list->GetNext(pos);
        if (!object || !object->IsKindOf(RUNTIME_CLASS(CEVemBaseNode))) return 0;
        auto* node = static_cast<CEVemBaseNode*>(object);
        if (node->NodeType != kEVemPouCodeNode) return 0;
        table->SetAt(node->GetPathName(), node);
    }
    return 1;
}

int EVemCRExecQueryEx(CEVemBaseNode* codeNode, CVemBaseNode* target, CStringList* paths, CWordArray* lines,
                      CWordArray* kinds, u16 mask) {
    if (!vem::evem::IsEnabled()) return 1;
    if (!codeNode || codeNode->NodeType != kEVemPouCodeNode) return 0;
    if (!target || !paths || !lines || !kinds) return 0;
    Owner owner;
    if (IsVariable(target)) {
        owner = FindOwner(target);
        if (!OwnerFitsUnit(target->GetSubSegmentKind(), owner.Name, UnitName(codeNode->GetPathName()))) return 1;
    }
    FindHits(codeNode, target, OperandName(target, owner.Instance), mask, Hits{paths, lines, kinds});
    return 1;
}
