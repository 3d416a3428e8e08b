// Finding the task files that a task container names, on a host other than the one that wrote
// them, and the list of tasks that a load leaves out.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/cstring.h"

namespace vem {

// Where a stored task file name leads on this host.
struct TaskFileLookup {
    CString path;                // the name that opens as a plain file; empty if there is none
    int reason = 0;              // tVemMissingTask::kNotFound or kNotReadable while `path` is empty
    std::vector<CString> tried;  // host names looked at, in order
};

// Looks up the task files of one container. It keeps the directories it has listed, so that the
// tasks of a container cost one listing of each directory, however many of them there are.
class TaskFileFinder {
public:
    // `holder` is the file that holds the container; empty if unknown.
    explicit TaskFileFinder(const CString& holder);
    // The stored name as it stands, and then, with the search on, its last part in the directory of
    // the holder and in the directories of the search path.
    TaskFileLookup Find(const CString& stored);

private:
    // The entry of `directory` named `name` without regard to case (of several, the first in byte
    // order); empty if none.
    std::string AnyCase(const CString& directory, const std::string& name);

    std::vector<CString> m_directories;
    std::map<std::string, std::map<std::string, std::string>> m_listed;  // directory → lower case → entry
};

// A task that the load going on leaves out. Noted only while VemLoadNodeTaskReport asks for them.
void NoteMissingTask(int reason, const CString& task, const CString& file, const std::vector<CString>& tried);

}  // namespace vem
