// Node functions: the flat functions of the node tree. Each takes the node first and, unless said
// otherwise, forwards to the operation of the same name without the prefix; a node that does not
// serve an operation answers its default (vem_node_ops.def).
#pragma once

#include "vem32_types.h"

#define VEM_NODE_PARAMS(...) (CVemBaseNode * node __VA_OPT__(, ) __VA_ARGS__)
#define VEM_FLAT_DECL_FWD(Ret, Name, Params) VEM_API Ret Vem##Name VEM_NODE_PARAMS Params;
#define VEM_FLAT_DECL_VOID(Ret, Name, Params) VEM_API void Vem##Name VEM_NODE_PARAMS Params;
#define VEM_FLAT_DECL_PLAIN(Ret, Name, Params) extern "C" VEM_API Ret Vem##Name VEM_NODE_PARAMS Params;
#define VEM_FLAT_DECL_NONE(Ret, Name, Params)
#define VEM_OP(Ret, Name, Params, Args, Default, Flat) VEM_FLAT_DECL_##Flat(Ret, Name, Params)
#include "vem_node_ops.def"
#undef VEM_OP

// Making, loading and writing nodes.
VEM_API CVemBaseNode* VemNewNode(tVemNodeType type);
VEM_API CVemBaseNode* VemCreateCVemVariableNode(CString name, u16 offset, tCbeType type, u16 size, tCbeVarScope scope);
VEM_API CVemBaseNode* VemCreateCVemFbNode(CString name, CString path);
VEM_API CVemBaseNode* VemCreateCVemFunctionNode(CString name, CString path);
VEM_API CVemBaseNode* VemLoadNode(const CString& fileName);
VEM_API CVemBaseNode* VemLoadNode(tVemNodeType type, const CString& fileName);
VEM_API int VemWriteNode(CVemBaseNode* node, const CString& fileName);
// The node's record, then the version stamp, in the caller's archive, in both directions.
VEM_API void VemSerialize(CVemBaseNode* node, CArchive& ar);
VEM_API int VemWriteObject(CVemBaseNode* node, CArchive& ar);
VEM_API CVemBaseNode* VemReadObject(CArchive& ar);

// Tree.
VEM_API CVemBaseNode* VemGetLastChild(CVemBaseNode* node);
VEM_API void VemSetName(CVemBaseNode* node, CString name);
VEM_API CString VemGetName(CVemBaseNode* node);
VEM_API CString VemGetNodeText(CVemBaseNode* node);  // empty for a null node
// Deletes the target wherever it stands below the root; gives its parent, or null.
VEM_API int VemDeleteChildNode(CVemBaseNode* root, CVemBaseNode* target);  // 0 for a null root
// Deletes a root with its subtree and sets the pointer to null.
VEM_API void VemDeleteNode(CVemBaseNode*& node);
VEM_API CVemBaseNode* VemGetFirstNodeOfType(CVemBaseNode* parent, tVemNodeType type);
VEM_API CVemBaseNode* VemFindVemNodeByNameAndType(CVemBaseNode* parent, const char* name, tVemNodeType type);
VEM_API CVemBaseNode* VemFindVemNodeByTypeNameAndType(CVemBaseNode* parent, const char* name, tVemNodeType type);
VEM_API CVemBaseNode* VemGetChildNodeByName(CVemBaseNode* node, const char* name);
VEM_API void CVemNodeDump(CVemBaseNode* node, CFile* file);
VEM_API int CVemNodeDump(CVemBaseNode* node, const CString& fileName);

// Units, tasks and the executable.
VEM_API int VemSetSegmentNumbers(CVemBaseNode* node, u16 data, u16 code, u16 ini, u16 ncc);  // 0 for null
VEM_API u32 VemGetAbsOffset(CVemBaseNode* node, int index);
VEM_API CString VemGetObjFileName(CVemBaseNode* node);
VEM_API u16 VemGetDatacontFilesUserLevel(CVemBaseNode* node, u16 unused);
VEM_API const char* VemGetSegTableFileName(CVemBaseNode* node);
VEM_API CString VemGetPouPathNameFromCodeSegNr(CVemBaseNode* node, u16 codeSegment);  // empty for null
VEM_API int VemGetIpType(const CString& fileName, u8* ipType);

// Arrays.
VEM_API void VemSetDimRange4Index(CVemDimRange* range, u8 index, tVemDimRange dimRange);

// Tree view.
VEM_API CVemBaseNode* VemGetSelectedPrevNode(CVemBaseNode* root, CVemBaseNode* target);
VEM_API CVemBaseNode* VemGetSelectedNextNode(CVemBaseNode* root, CVemBaseNode* target);
VEM_API int VemDllLoadBitmapID(CBitmap* bitmap, unsigned id);
VEM_API int VemDllLoadBitmapItemExpand(CBitmap* bitmap);
VEM_API int VemDllLoadBitmapItemExpanded(CBitmap* bitmap);
VEM_API int VemDllLoadBitmapItemLeaf(CBitmap* bitmap);

// Library frame.
VEM_API int VemComputeChecksum(const CString& fileName, u16 seed);
VEM_API u16 VemComputeChecksumForBuffer(const u8* buffer, u32 length, u16 seed);
VEM_API void VemSetDebugFlag(int flag);
VEM_API int VemGetDebugFlag();
VEM_API void VemXDelay(u32 delay);
VEM_API int GetVemDllVersion();
