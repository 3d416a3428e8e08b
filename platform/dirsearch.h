// Looking a file up by name in a directory, for names written on another host.
#pragma once

#include "platform/cstring.h"

// Looks in `directory` for the entry `name`: the exact name first, and where no entry has it, one
// whose name is equal without regard to ASCII case (of several, the first in byte order). Gives
// the directory joined with the entry's name as it stands on disk, or the empty string. An empty
// directory means the current one. A directory that does not exist or cannot be read gives the
// empty string. Both are names in the library's form (see VemHostPath).
CString VemFindInDirectory(const char* directory, const char* name);
