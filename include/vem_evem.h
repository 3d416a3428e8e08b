// Statement functions: the flat functions of the statement model. A code node stands for a compiled
// unit and owns the chain of its statements; each statement is one instruction of the unit's
// instruction list. Each function takes the node first and forwards to the operation of the same
// name without the prefix; a node that does not serve an operation answers its default
// (vem_evem_ops.def).
//
// All of it hangs on the switch EvemEnabled of the settings library: with the switch off the
// functions build nothing and give fixed answers, and with a null node they give others.
#pragma once

#include "vem32_types.h"

// Kind of a node of the statement model; a signed 32-bit number in memory, 16 bits in a record.
enum tEVemNodeType : i32 {
#define EVEM_NODE_TYPE(Value, Name, Class) Name = Value,
#include "vem_evem_types.def"
#undef EVEM_NODE_TYPE
};

// Number of kinds, and the width of a row of their texts.
inline constexpr int kEVemNodeTypeCount = 187;
inline constexpr int kEVemNodeTypeTextWidth = 40;

#define EVEM_NODE_PARAMS(...) (CEVemBaseNode * node __VA_OPT__(, ) __VA_ARGS__)
#define EVEM_FLAT_DECL_RES(Ret, Name, Params) VEM_API Ret EVem##Name EVEM_NODE_PARAMS Params;
#define EVEM_FLAT_DECL_ONE(Ret, Name, Params) VEM_API int EVem##Name EVEM_NODE_PARAMS Params;
#define EVEM_FLAT_DECL_TEXT(Ret, Name, Params) VEM_API int EVem##Name(CEVemBaseNode* node, const char* text);
#define EVEM_FLAT_DECL_NONE(Ret, Name, Params)
#define EVEM_OP(Ret, Name, Params, Args, Default, Flat, Off, Null) EVEM_FLAT_DECL_##Flat(Ret, Name, Params)
#include "vem_evem_ops.def"
#undef EVEM_OP

// The node's kind, read without a virtual call; 0 with the switch off or a null node.
VEM_API tEVemNodeType EVemGetNodeType(CEVemBaseNode* node);

// A new code node (type 3) or statement of that kind; null with the switch off, for a kind that has
// no class, or when memory runs out. Only code nodes, labels and calls use the name.
VEM_API CEVemBaseNode* EVemCreateNode(tEVemNodeType type, CString name);
// A new statement of kind 7 to 186, handed to the parent's AddNewStmtNode; given back whatever the
// parent answers (a statement that the parent did not take belongs to the caller). Null with the
// switch off, a null parent, or another kind.
VEM_API CEVemBaseNode* EVemAddNewStmtNode(CEVemBaseNode* parent, tEVemNodeType type);
// Deletes only this node: a code node takes its statements with it; a statement leaves its
// neighbours linked to it, so the caller unlinks it first.
VEM_API void EVemDeleteNode(CEVemBaseNode* node);
// Writes the node's dump into a new file of that name (code nodes only).
VEM_API void EVemNodeDump(CEVemBaseNode* node, const char* fileName);
// Code offset of a statement's instruction; nothing for a node that is no statement.
VEM_API void EVemSetUcodeOffset(CEVemBaseNode* statement, u16 offset);
// The code offset of a statement (0xCDCD if it was never set); 0 for a node that is no statement.
VEM_API u16 EVemGetUcodeOffset(CEVemBaseNode* statement);

// One node as an object reference, with its class name and the class schema 5. Both act only when
// the switch holds exactly 1: otherwise EVemWriteObject gives 1 and EVemReadObject null, and
// neither touches the archive. A file or archive exception gives 0 or null.
VEM_API int EVemWriteObject(CEVemBaseNode* node, CArchive& ar);
VEM_API CEVemBaseNode* EVemReadObject(CArchive& ar);

// Line maps of one unit of an executable node, for a debugger: the code offset (as decimal text)
// or the statement of each source line. The unit is the code node whose path name equals the
// given one exactly, case included. The map is not cleared first. 1 if the unit was found and
// mapped; 0 with the switch off, when no unit has the path, or for a node that is no executable,
// which also shows a message box.
VEM_API int EVemFillAwlLine2UcodeOffsetMap(CVemBaseNode* exe, CString pathName, CMapStringToString* map);
VEM_API int EVemFillAwlLine2EvemNodeMap(CVemBaseNode* exe, CString pathName, CMapStringToOb* map);

// Cross reference: kinds of access, as bits of a query's mask and as values of its hits.
enum : u16 {
    kEVemCrRead = 1,
    kEVemCrWrite = 2,
    kEVemCrCall = 4,
};

// 1 if the statement is a call of the node: a call statement whose name is the node's text up to
// its " : ". The third argument is not looked at.
VEM_API int EVemCheckForCall(CEVemBaseNode* statement, CVemBaseNode* node, u16 unused);
// 1 if the statement has a variable operand of exactly that name and accesses it in that way (1
// read, 2 write). The node is not looked at.
VEM_API int EVemCheckOpOnVar(CEVemBaseNode* statement, CVemBaseNode* unused, CString operandName, u16 kind);
// 1 if the statement's kind reads (kind 1) or writes (kind 2) its operand; 0 for other kinds.
VEM_API int EVemCheckAccess(CEVemBaseNode* statement, u16 kind);
// 1 if statements of this kind read, or write, their operand.
VEM_API int EVemIsReadAccess(tEVemNodeType type);
VEM_API int EVemIsWriteAccess(tEVemNodeType type);

extern "C" {
// Enters each code node of the executable under its path name; a later node with the same path
// replaces the earlier one. 0 for a node that is no executable or has no list, and when a node of
// another kind stands in the list (what came before it stays entered); 1 with the switch off.
VEM_API int EVemCRBuildPouTableEx(CVemBaseNode* exe, CMapStringToOb* table);
// Appends one hit for each access to the target within the code node that the mask asks for: the
// unit's path name, the statement's source line and the kind of access, one entry in each of the
// three containers. A target variable that its unit cannot hold gives no hits. 1 if the node is a
// code node (and with the switch off, when nothing is added), else 0.
VEM_API int EVemCRExecQueryEx(CEVemBaseNode* codeNode, CVemBaseNode* target, CStringList* paths, CWordArray* lines,
                              CWordArray* kinds, u16 mask);
}
