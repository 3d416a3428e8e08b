// Process-wide switches of the library.
#pragma once

// The debug flag: while it is not 0, node texts carry layout data.
int VemDebugFlagValue();
