// Extensions: exported functions beyond the system's original set, for tools built on the library.
#pragma once

#include "vem32_types.h"

// Why a load failed, for a caller that wants to tell the user.
struct tVemLoadReport {
    enum : int { kNone = 0, kCannotOpen = 1, kFileException = 2, kArchiveException = 3, kMemory = 4, kOther = 5 };
    int Failure;
    int Cause;             // cause code of the file or archive exception
    u64 Offset;            // bytes of the node file consumed when the load stopped
    char RecordClass[64];  // class of the record being read, if known
    char Message[256];     // the platform's text of the exception
};

extern "C" {
// Loads like VemLoadNode but shows no message box; on failure fills the report and gives null.
VEM_API CVemBaseNode* VemLoadNodeReport(const char* fileName, tVemLoadReport* report);
}

// The key block of a source file. Each gives 0 if the file cannot be opened or the edit fails.
VEM_API int VemSrcGetValue(const char* sourceFile, const char* key, CString& value);
VEM_API int VemSrcSetValue(const char* sourceFile, const char* key, const char* value);
VEM_API int VemSrcGetUnit(const char* sourceFile, CString& kind, CString& name);

// The instance text that a variable node stores; empty on every other node.
VEM_API CString VemGetInstanceText(CVemBaseNode* node);

// The map from task names to task files of a task container; null on every other node.
VEM_API const CMapStringToString* VemGetTaskFileMap(CVemBaseNode* node);
