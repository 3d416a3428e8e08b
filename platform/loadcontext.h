// What one load carries from its first record to its last, across the task files that it reads on
// the way: the bounds it keeps to, the nesting reached so far and the task files already read. The
// archive of the load holds it; the archive of a file read in the middle of a load joins the
// context of that load's archive.
#pragma once

#include <vector>

#include "platform/file.h"
#include "vem_limits.h"

namespace vem::load {

// The bounds of a load; vem_limits.h states their defaults.
struct Limits {
    int MaxNesting = static_cast<int>(kVemMaxNesting);
    int MaxTaskFileNesting = static_cast<int>(kVemMaxTaskFileNesting);
};

struct Context {
    Limits Bounds;
    int Depth = 0;            // records and object references open, over all files of the load
    int TaskFileNesting = 0;  // task files open inside one another
    int TaskFileScopes = 0;   // TaskFileScope objects alive
    std::vector<vem::FileId> TaskFilesRead;
};

// While one lives, each task file is read at most once in the load: a file named again raises a
// corrupt file (archive exception). A load of a node file holds one over the whole tree, and each
// container holds one while it reads its tasks.
class TaskFileScope {
public:
    explicit TaskFileScope(Context& context) : m_context(context) {
        if (m_context.TaskFileScopes++ == 0) m_context.TaskFilesRead.clear();
    }
    ~TaskFileScope() {
        if (--m_context.TaskFileScopes == 0) std::vector<vem::FileId>().swap(m_context.TaskFilesRead);
    }
    TaskFileScope(const TaskFileScope&) = delete;
    TaskFileScope& operator=(const TaskFileScope&) = delete;

private:
    Context& m_context;
};

}  // namespace vem::load
