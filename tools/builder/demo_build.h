// The demo resource: a small packaging line, built the way a compiler builds a resource, through
// the exported functions only.
#pragma once

#include <functional>
#include <string>

#include "vem32_classes.h"

namespace vemtool {

struct DemoShape {
    int tasks = 2;                         // FAST, SLOW, then TASK3, TASK4, ...
    int units = 1;                         // debounce blocks that every task calls
    int vars = 4;                          // extra INT variables of every task
    std::function<void(int task)> onTask;  // called as each task is built and as each is written
};

// Builds the executable node "LINE1" with "TASKS" and "Global - Resource", everything numbered,
// laid out and with its statement model moved to the executable node. Nothing is written yet.
CVemBaseNode* BuildDemo(const DemoShape& shape);

// Writes every task to dir/<task>.tsk, reports it to the container, then the node file. The tasks
// leave the tree in memory with the store. 1 on success.
int WriteDemo(CVemBaseNode* exe, const std::string& dir, const std::string& nodeFile, const DemoShape& shape);

std::string DemoTaskName(int index);
std::string DemoTaskPath(int index);
inline constexpr char kDemoDebouncePath[] = "C:\\PLANT\\DEBOUNCE.st";
inline constexpr char kDemoScalePath[] = "C:\\PLANT\\SCALE.st";

}  // namespace vemtool
