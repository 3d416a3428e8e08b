// The resource from which the seeds of node and task files are made, and which the node file
// harness writes into its scratch directory, so that the task files that a seed names are there.
#pragma once

#include "resource_builder.h"

namespace vemfuzz {

inline vembuild::ResourceShape SeedShape() {
    vembuild::ResourceShape shape;
    shape.tasks = 2;
    shape.variablesPerTask = 3;
    shape.arraysPerTask = 1;
    shape.arrayLength = 2;
    shape.structsPerTask = 1;
    shape.membersPerStruct = 2;
    shape.unitsPerTask = 1;
    shape.globalVariables = 2;
    shape.statementsPerUnit = 3;
    return shape;
}

// Task files are named relative to the working directory, e.g. "./TASK1.tsk".
inline constexpr char kTaskDirectory[] = ".";

}  // namespace vemfuzz
