// Line maps: the code offset and the statement of each source line of a unit, and their part in
// the executable's dump.
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "node/basenode.h"
#include "platform/msgbox.h"
#include "statement/evemcode.h"
#include "statement/evemlist.h"
#include "statement/evemstmt.h"
#include "vem_settings.h"

namespace {

constexpr const char* kExeClassName = "CVemExeNode";
// Both line maps show the same text.
constexpr const char* kNotExeMessage = "EVemFillAwlLine2UcodeOffsetMap:: Passed Node is not of type CVemExeNode !";

// The project settings ask for the line maps in the executable's dump with this code.
constexpr int kProjectSettingsSize = 640;
constexpr std::size_t kProjectCodeOffset = 2;
constexpr u16 kLineMapProjectCode = 271;

// Decimal text of a line or an offset; made for every statement of a map.
CString LineKey(u16 line) {
    char digits[8];
    const auto result = std::to_chars(digits, digits + sizeof digits, unsigned{line});
    return CString(std::string_view(digits, static_cast<std::size_t>(result.ptr - digits)));
}

u16 UcodeOffsetOf(CEVemBaseNode* statement) {
    if (!vem::evem::IsStatement(statement)) return CEVemBaseStmtNode::kNoUcodeOffset;
    return static_cast<CEVemBaseStmtNode*>(statement)->UcodeOffset;
}

// Calls enter(statement, key) for each statement of the chain that a line map holds, in chain
// order. The stores into a call's inputs and the loads from its outputs stay out, so that they do
// not hide the user's own operands on that line; only the order of the list markers counts.
// Statements of line 0 stay out too.
template <typename Enter>
void ForEachMappedStatement(CEVemBaseNode* first, Enter enter) {
    bool inInput = false;
    bool inOutput = false;
    for (CEVemBaseNode* statement = first; statement; statement = statement->GetNext()) {
        const u16 line = statement->GetAwlLine();
        switch (statement->NodeType) {
            case kEVemInputInoutParamListStmtNode:
                inInput = true;
                inOutput = false;
                break;
            case kEVemOutputParamListStmtNode:
                inOutput = true;
                inInput = false;
                break;
            case kEVemEndParamListStmtNode:
                inInput = false;
                inOutput = false;
                break;
            case kEVemLdVariableStmtNode:
                if (inOutput) continue;
                break;
            case kEVemStVariableStmtNode:
                if (inInput) continue;
                break;
            default: break;
        }
        if (line != 0) enter(statement, LineKey(line));
    }
}

bool IsExecutable(CVemBaseNode* node) {
    return node && std::strcmp(node->GetRuntimeClass()->m_lpszClassName, kExeClassName) == 0;
}

// The executable's first code node with exactly this path, or null.
CEVemBaseNode* FindUnit(CVemBaseNode* exe, const CString& pathName) {
    CObList* list = exe->GetEvemRootNodeListPtr();
    if (!list) return nullptr;
    for (POSITION pos = list->GetHeadPosition(); pos;) {
        auto* node = static_cast<CEVemBaseNode*>(list->GetNext(pos));
        if (EVemGetPathName(node) == pathName) return node;
    }
    return nullptr;
}

template <typename Map>
int FillLineMap(CVemBaseNode* exe, const CString& pathName, Map* map, int (CEVemBaseNode::*fill)(CString, Map*)) {
    if (!vem::evem::IsEnabled()) return 0;
    if (!IsExecutable(exe)) {
        AfxMessageBox(kNotExeMessage, MB_OK);
        return 0;
    }
    CEVemBaseNode* unit = FindUnit(exe, pathName);
    return unit ? (unit->*fill)(pathName, map) : 0;
}

u16 ProjectCode() {
    const void* record = LurGetGlobalProjectSettings(kProjectSettingsSize);
    if (!record) return 0;
    u16 code = 0;
    std::memcpy(&code, static_cast<const u8*>(record) + kProjectCodeOffset, sizeof code);
    return code;
}

void WriteText(CFile* file, const CString& text) {
    file->Write(text.GetString(), static_cast<unsigned>(text.GetLength()));
}

// One unit's part of the dump. The maps are shared by all units of the dump and never cleared, so
// a unit's part also lists the lines of the units before it that it has not replaced.
void DumpUnitMaps(CFile* file, const CString& prefix, CVemBaseNode* exe, const CString& pathName,
                  CMapStringToString& offsets, CMapStringToOb& statements) {
    CString text = "\n" + prefix;
    text.AppendFormat("\n======== AwlLine2UcodeOffset and EVEM-Node Map for %s  =========", pathName.GetString());
    EVemFillAwlLine2UcodeOffsetMap(exe, pathName, &offsets);
    EVemFillAwlLine2EvemNodeMap(exe, pathName, &statements);
    if (offsets.IsEmpty()) {
        text += "\n" + prefix + "No Entries in AWL-Line->UCODE-Offset/EvemNode MAP !!!";
        WriteText(file, text);
        return;
    }
    const CString statementPrefix = prefix + "\tEVEMNODE>> ";
    for (POSITION pos = offsets.GetStartPosition(); pos;) {
        CString line;
        CString offset;
        offsets.GetNextAssoc(pos, line, offset);
        text += "\n" + prefix;
        text.AppendFormat("AWL-Line: %s \t", line.GetString());
        text.AppendFormat("->  UCODE-Offset: 0X%x ", static_cast<unsigned>(std::strtoul(offset, nullptr, 10)));
        WriteText(file, text);
        text.Empty();
        CObject* statement = nullptr;
        if (statements.Lookup(line, statement) && statement)
            static_cast<CEVemBaseNode*>(statement)->DumpNode(file, statementPrefix);
    }
}

}  // namespace

int CEVemPouCodeNode::FillAwlLine2UcodeOffsetMap(CString, CMapStringToString* map) {
    if (!map) return 0;
    ForEachMappedStatement(FirstStatement, [map](CEVemBaseNode* statement, const CString& key) {
        map->SetAt(key, LineKey(UcodeOffsetOf(statement)));
    });
    return 1;
}

int CEVemPouCodeNode::FillAwlLine2EvemNodeMap(CString, CMapStringToOb* map) {
    if (!map) return 0;
    ForEachMappedStatement(FirstStatement,
                           [map](CEVemBaseNode* statement, const CString& key) { map->SetAt(key, statement); });
    return 1;
}

int EVemFillAwlLine2UcodeOffsetMap(CVemBaseNode* exe, CString pathName, CMapStringToString* map) {
    return FillLineMap(exe, pathName, map, &CEVemBaseNode::FillAwlLine2UcodeOffsetMap);
}

int EVemFillAwlLine2EvemNodeMap(CVemBaseNode* exe, CString pathName, CMapStringToOb* map) {
    return FillLineMap(exe, pathName, map, &CEVemBaseNode::FillAwlLine2EvemNodeMap);
}

void vem::evem::DumpLineMaps(CFile* file, const CString& prefix, CVemBaseNode* exe, const CStringList& pathNames) {
    if (!vem::evem::IsEnabled() || ProjectCode() != kLineMapProjectCode || pathNames.IsEmpty()) return;
    CMapStringToString offsets;
    CMapStringToOb statements;
    for (POSITION pos = pathNames.GetHeadPosition(); pos;)
        DumpUnitMaps(file, prefix, exe, pathNames.GetNext(pos), offsets, statements);
}
