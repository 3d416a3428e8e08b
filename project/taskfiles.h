// Finding the task files that a task container names, on a host other than the one that wrote
// them, and the list of tasks that a load leaves out.
#pragma once

#include <vector>

#include "platform/cstring.h"

// Where a stored task file name leads on this host.
struct VemTaskFileLookup {
    CString path;               // the name that opens as a plain file; empty if there is none
    int reason = 0;             // tVemMissingTask::kNotFound or kNotReadable while `path` is empty
    std::vector<CString> tried; // host names looked at, in order
};

// The stored name as it stands, and then, with the search on, its last part in the directory of
// `holder` (the file that holds the container; empty if unknown) and in the directories of the
// search path.
VemTaskFileLookup VemFindTaskFile(const CString& stored, const CString& holder);

// A task that the load going on leaves out. Noted only while VemLoadNodeTaskReport asks for them.
void VemNoteMissingTask(int reason, const CString& task, const CString& file, const std::vector<CString>& tried);
