// The entries of a directory, for looking up names written on another host.
#pragma once

#include <string>
#include <vector>

namespace vem {

// The names of the entries of `directory` (a name in the library's form, see VemHostPath; empty
// means the current directory), without "." and "..", in no particular order. False, with no
// names, if it does not exist or cannot be read.
bool ListDirectory(const char* directory, std::vector<std::string>& names);

}  // namespace vem
