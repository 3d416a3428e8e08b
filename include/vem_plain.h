// The functions with plain linkage, for callers that bind by name. The forwarders among them
// (VemGetNodeType, VemGetBitmapID, VemExpandArray, VemGetRange, VemGetCodeSegment,
// VemGetDataSegment, VemGetIniSegment, VemGetNccSegment, VemGetStatList, VemGetProgramNr,
// VemGetDeviceSettings) are declared in vem_node.h with the table of operations.
#pragma once

#include "vem32_types.h"

extern "C" {
VEM_API void VemGetNameEx(CVemBaseNode* node, char* buffer);
VEM_API void VemGetNodeTextEx(CVemBaseNode* node, char* buffer);
VEM_API void VemGetPathNameEx(CVemBaseNode* node, char* buffer);
VEM_API void VemDeleteNodeEx(CVemBaseNode*& node);
VEM_API CVemBaseNode* VemGetFirstNodeOfTypeEx(CVemBaseNode* parent, tVemNodeType type);
VEM_API int VemIsReferenceEx(CVemBaseNode* node);
VEM_API CVemBaseNode* VemLoadNodeEx(tVemNodeType type, const CString& fileName);
VEM_API CObList* VemGetChildList(CVemBaseNode* node);
VEM_API CVemBaseNode* VemGetParentNode(CVemBaseNode* node);
VEM_API tVemDimRange VemGetDimRange(CVemDimRange* range, u8 index);
VEM_API u8 VemGetDimSize(CVemDimRange* range);
VEM_API int VemLoadBitmap(CVemBaseNode* node, CBitmap* bitmap);
VEM_API void VemSetArrayElementSizeOfType(CVemBaseNode* node, u16 size);
// What an array node holds of its element type (0 on every other node), for inspection tools.
VEM_API u16 VemGetArrayElementSizeOfType(CVemBaseNode* node);
VEM_API u32 VemGetArrayCode(CVemBaseNode* node);
VEM_API void* GetResourceHandleVemDll();
VEM_API void InitVem();
VEM_API void* InitVem32();
}
