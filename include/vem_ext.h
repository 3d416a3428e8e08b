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

// A task that a load left out of the tree: its file was not found or gave no task, or the reading
// of its container stopped at another entry.
struct tVemMissingTask {
    enum : int {
        kNotFound = 1,     // no file under any of the names tried
        kNotReadable = 2,  // a file was there but could not be opened, was no plain file or held no task
        kNotCompiled = 3,  // the entry has no file; the container drops every task it read
        kSkipped = 4,      // the reading stopped at another entry, or that entry dropped this task
    };
    int Reason;
    const char* TaskName;       // the key of the entry
    const char* FileName;       // the file name as stored
    int TriedCount;
    const char* const* Tried;   // the names looked at, in order
};

// The tasks left out by one load, owned by the library until VemFreeTaskReport.
struct tVemTaskReport {
    int Count;
    const tVemMissingTask* Tasks;
    void* Internal;
};

extern "C" {
// Loads like VemLoadNode but shows no message box; on failure fills the report and gives null.
VEM_API CVemBaseNode* VemLoadNodeReport(const char* fileName, tVemLoadReport* report);

// Loads like VemLoadNodeReport and lists in `tasks` every task of every task container of the tree
// that did not come back from its file; no entry means the tree is whole. The list is empty when
// the result is null. Free it with VemFreeTaskReport, also after a failed load.
VEM_API CVemBaseNode* VemLoadNodeTaskReport(const char* fileName, tVemLoadReport* report, tVemTaskReport* tasks);
VEM_API void VemFreeTaskReport(tVemTaskReport* tasks);

// Where a load finds a task file whose stored name does not open here as a file (a resource copied
// to another directory, or written on another machine): by the last part of that name (behind the
// last backslash or slash), first in the directory of the file that holds the task container, then
// in each directory of the search path in turn; in each, the exact name first and then one equal
// without regard to case. A name that opens as stored is used as stored. The stored names stay as
// they are. The search is on by default, with an empty search path; switched off, a load opens the
// stored names only. Directories that do not exist or cannot be read are skipped.
VEM_API void VemSetTaskFileSearch(int enabled);
VEM_API int VemGetTaskFileSearch(void);
// Replaces the search path by `count` directories (null or empty entries are left out).
VEM_API void VemSetTaskFileDirectories(const char* const* directories, int count);
// Adds one directory at the end; 0 for a null or empty name.
VEM_API int VemAddTaskFileDirectory(const char* directory);
VEM_API void VemClearTaskFileDirectories(void);
}

// The key block of a source file. Each gives 0 if the file cannot be opened or the edit fails.
VEM_API int VemSrcGetValue(const char* sourceFile, const char* key, CString& value);
VEM_API int VemSrcSetValue(const char* sourceFile, const char* key, const char* value);
VEM_API int VemSrcGetUnit(const char* sourceFile, CString& kind, CString& name);

// The map from task names to task files of a task container; null on every other node.
VEM_API const CMapStringToString* VemGetTaskFileMap(CVemBaseNode* node);
