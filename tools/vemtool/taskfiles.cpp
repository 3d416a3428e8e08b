#include "taskfiles.h"

#include <cstdio>

#include "tool.h"

namespace vemtool {

namespace {

const char* ReasonText(int reason) {
    switch (reason) {
        case tVemMissingTask::kNotFound: return "file not found";
        case tVemMissingTask::kNotReadable: return "file not readable or holds no task";
        case tVemMissingTask::kNotCompiled: return "not compiled (no file), the container drops every task";
        default: return "not read, the reading stopped at another task";
    }
}

}  // namespace

CVemBaseNode* LoadReportingTasks(const std::string& path, const std::string& file, tVemLoadReport& report, int& missing,
                                 bool goingOn) {
    tVemTaskReport tasks{};
    CVemBaseNode* root = VemLoadNodeTaskReport(path.c_str(), &report, &tasks);
    missing = tasks.Count;
    for (int i = 0; i < tasks.Count; ++i) {
        const tVemMissingTask& task = tasks.Tasks[i];
        std::fprintf(stderr, "vemtool: %s: task %s left out: %s", file.c_str(), task.TaskName, ReasonText(task.Reason));
        if (*task.FileName) std::fprintf(stderr, ": \"%s\"", task.FileName);
        std::fputc('\n', stderr);
        for (int j = 0; j < task.TriedCount; ++j) std::fprintf(stderr, "vemtool:   tried %s\n", task.Tried[j]);
    }
    if (missing > 0) {
        std::fprintf(
            stderr, "vemtool: %s: %d task(s) left out, the tree is not whole%s\n", file.c_str(), missing,
            goingOn ? " (going on)" : "; --task-dir DIR says where the files are, --partial goes on without them");
    }
    VemFreeTaskReport(&tasks);
    return root;
}

}  // namespace vemtool
