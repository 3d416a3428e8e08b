// Task files of a loaded node file: where they are looked for, and what the tool does with a tree
// that came back without some of its tasks.
#pragma once

#include <string>
#include <vector>

#include "vem32_classes.h"

namespace vemtool {

// Loads like VemLoadNodeReport and prints each task that the load left out on standard error,
// with the names tried, under the name `shown`; `missing` is their number. `goingOn` says whether
// the caller keeps such a tree.
CVemBaseNode* LoadReportingTasks(const std::string& path, const std::string& shown, tVemLoadReport& report,
                                 int& missing, bool goingOn);

}  // namespace vemtool
