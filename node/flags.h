// Process-wide switches of the library.
#pragma once

namespace vem {

// The debug flag: while it is not 0, node texts carry layout data.
int DebugFlagValue();

}  // namespace vem
