// Task files of a loaded node file: where they are looked for, and what the tool does with a tree
// that came back without some of its tasks.
#pragma once

#include <string>
#include <vector>

#include "vem32.h"

namespace vemtool {

// Takes --task-dir DIR (any number), --no-search and --partial out of the arguments, wherever they
// stand, and hands the first two to the library. kOk, or kUsage for a --task-dir without DIR.
int TakeTaskFileOptions(std::vector<std::string>& args);

// Whether --partial was given: a tree with tasks left out is then loaded all the same.
bool PartialAllowed();

// Loads like VemLoadNodeReport and prints each task that the load left out on standard error,
// with the names tried; `missing` is their number.
CVemBaseNode* LoadReportingTasks(const std::string& file, tVemLoadReport& report, int& missing);

}  // namespace vemtool
