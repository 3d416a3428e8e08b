// Helpers of the line map and cross reference tests: an executable with code nodes, and chains of
// statements written one line each.
#pragma once

#include <string>
#include <vector>

#include "evem_test_util.h"
#include "node/basenode.h"

namespace xreftest {

// A node tree owned by the test, deleted through the flat function.
using TreePtr = compiledtest::NodePtr;

// An executable node, which owns the code nodes of its list.
inline TreePtr MakeExe() {
    CVemBaseNode* exe = vemtest::NewNode(kVemExeNode, "RES");
    return TreePtr(exe);
}

// The switch off for the rest of a scope; declared behind the nodes of the model, so that they are
// deleted with the switch on again.
struct SwitchOff {
    SwitchOff() { LurSetEvemEnabled(0); }
    ~SwitchOff() { LurSetEvemEnabled(1); }
    SwitchOff(const SwitchOff&) = delete;
    SwitchOff& operator=(const SwitchOff&) = delete;
};

// A new code node with the path, appended to the executable's list, which owns it.
inline CEVemBaseNode* AddUnit(CVemBaseNode* exe, const char* pathName) {
    CEVemBaseNode* unit = EVemCreateNode(kEVemPouCodeNode, "");
    EVemSetPathName(unit, pathName);
    VemGetEvemRootNodeListPtr(exe)->AddTail(unit);
    return unit;
}

// One statement of a chain: kind, source line, code offset (none if negative), operand name.
struct Stmt {
    tEVemNodeType Type;
    u16 Line;
    int Offset = -1;
    const char* Name = "";
};

// Appends the statements to the code node in order and gives them back.
inline std::vector<CEVemBaseNode*> Append(CEVemBaseNode* unit, const std::vector<Stmt>& statements) {
    std::vector<CEVemBaseNode*> made;
    for (const Stmt& s : statements) {
        CEVemBaseNode* node = EVemAddNewStmtNode(unit, s.Type);
        EVemSetAwlLine(node, s.Line);
        if (s.Offset >= 0) EVemSetUcodeOffset(node, static_cast<u16>(s.Offset));
        if (*s.Name) EVemSetName(node, s.Name);
        made.push_back(node);
    }
    return made;
}

// The entries of a map of lines to offsets, in its order, as "line=offset".
inline std::vector<std::string> Entries(const CMapStringToString& map) {
    std::vector<std::string> entries;
    for (POSITION pos = map.GetStartPosition(); pos;) {
        CString key;
        CString value;
        map.GetNextAssoc(pos, key, value);
        entries.push_back(key.str() + "=" + value.str());
    }
    return entries;
}

inline CEVemBaseNode* StatementAt(const CMapStringToOb& map, const char* line) {
    CObject* node = nullptr;
    return map.Lookup(line, node) ? static_cast<CEVemBaseNode*>(node) : nullptr;
}

}  // namespace xreftest
