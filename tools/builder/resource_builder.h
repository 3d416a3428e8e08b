// Builds a whole compiled resource the way a compiler does, through the exported functions only, so
// that the tests, the benchmarks, the fuzz seeds and `vemtool demo` share one road to a resource:
// the test resource of any size below, and the demo's packaging line (demo_build.h) on the same road.
//
// The resource "RES1": an executable node with "TASKS" (a task container) holding TASK1..TASKn and
// "Global - Resource" holding the compiled task GLOBAL. Every compiled task has this layout:
//
//   segment 0        reserved, no array
//   segment 1        the task's code, CodeLength bytes
//   segment 2        the task's data, TaskDataLength bytes:
//                      kDataHeader bytes, then V0..Vn-1 (INT, 2 bytes each), then the arrays
//                      A0.. (ARRAY [0..len-1] OF INT), then the structures S0.. (members M0.. of
//                      INT); offsets are relative to the sub-segment and kDataHeader is its start
//   segment 3+2k     code of the function block "FBI<k> : FB<k>", CodeLength bytes
//   segment 4+2k     data of that block: kDataHeader bytes and its variable X (INT)
//
// GLOBAL has its variables G0.. in segment 2 behind kDataHeader, and the function GFUN with code
// segment 3. Each task's table of absolute offsets holds the segments one behind the other from
// segment 1 on. With the statement model switched on every unit has a code node of
// statementsPerUnit statements; tasks of even number give the function blocks' paths in lower case.
#pragma once

#include <functional>
#include <string>

#include "vem32_classes.h"

namespace vembuild {

struct ResourceShape {
    int tasks = 2;
    int variablesPerTask = 8;
    int arraysPerTask = 1;
    int arrayLength = 4;
    int structsPerTask = 1;
    int membersPerStruct = 2;
    int unitsPerTask = 1;  // function blocks that every task calls
    int globalVariables = 3;
    int statementsPerUnit = 3;
    u8 alignment = 2;
    u8 byteSize = 1;
    u8 ipType = 7;
};

inline constexpr u16 kDataHeader = 4;
inline constexpr char kResourceName[] = "RES1";
inline constexpr char kGlobalName[] = "Global - Resource";
inline constexpr char kGlobalTaskName[] = "GLOBAL";
inline constexpr char kGlobalFunctionPath[] = "C:\\PRJ\\GFUN.st";

// Bytes of every code segment.
u16 CodeLength(const ResourceShape& shape);
// Bytes of a task's data segment.
u16 TaskDataLength(const ResourceShape& shape);
// Offset of V0 .. in a task's data segment, of A0 .., of S0 ...
u16 VariableOffset(int index);
u16 ArrayOffset(const ResourceShape& shape, int index);
u16 StructOffset(const ResourceShape& shape, int index);
// Leaf variables of the whole resource: plain variables, array elements, structure members,
// function block variables and the global variables.
long VariableCount(const ResourceShape& shape);

std::string TaskName(int index);  // "TASK1" for index 0
std::string TaskPath(int index);  // "C:\PRJ\TASK1.st"
std::string UnitName(int index);  // "FBI0 : FB0"
std::string UnitPath(int index);  // "C:\PRJ\FB0.st"

// Steps 1 to 4 of the road of a resource, in memory: the executable node with its device settings,
// the task container with the tasks registered, compiled and hung below it, "Global - Resource"
// with GLOBAL, the arrays expanded, the program numbers computed and the code nodes moved to the
// executable node. The resource's own tables are filled; nothing is written yet.
CVemBaseNode* BuildResource(const ResourceShape& shape);

// Writes every task below "TASKS" to directory/<task>.tsk and reports it to the container, then
// writes the node file. The tasks are gone from memory afterwards. 1 on success.
int WriteResource(CVemBaseNode* exe, const std::string& directory, const std::string& nodeFile);

// Nodes of the tree below and including the root.
long CountNodes(CVemBaseNode* root);

// ---- the road that every built resource takes ----

std::string Numbered(const char* prefix, long number);  // "V" 3 -> "V3"
CVemBaseNode* Named(tVemNodeType type, const std::string& name);
// Where each sub-segment starts in its segment: the data behind a header of kDataHeader bytes.
const u16* StartOffsets();
// The length of every segment of the task's table from 1 on, one behind the other.
void AddSegmentLengths(CVemBaseNode* task);
// Hangs the code node on the task; null (the statement model is off) adds nothing.
void AddCodeNode(CVemBaseNode* task, CEVemBaseNode* code);

// An executable node and what makes its parts.
struct Road {
    std::string name, configName, pathName;
    tVemDeviceSettings settings{};
    int tasks = 0;
    std::function<std::string(int index)> taskName;
    std::function<CVemBaseNode*(CVemBaseNode* global)> globalTask;           // hangs it below `global`
    std::function<void(CVemBaseNode* container, int index)> compiledTask;    // hangs it below `container`
    std::function<void(CVemBaseNode* exe, CVemBaseNode* container)> tables;  // the resource's own tables
};

// The executable node with "TASKS" (the tasks registered, then compiled) and "Global - Resource",
// the program numbers computed, the code nodes moved to the executable and its tables filled.
CVemBaseNode* BuildExecutable(const Road& road);

// Writes every task below "TASKS" to directory/<task>.tsk (the old file stays until the new one is
// whole) and reports it to the container, calling `written` after each; then the node file.
// 1 on success.
int WriteTasksAndNode(CVemBaseNode* exe, const std::string& directory, const std::string& nodeFile,
                      const std::function<void()>& written = {});

}  // namespace vembuild
