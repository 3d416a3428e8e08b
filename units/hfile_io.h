// Reading helper shared by the parts of CHFile.
#pragma once

#include <cstddef>
#include <string_view>

#include "platform/file.h"

namespace vem {

// Reads through the platform's own Read (never an override) until count bytes or the file's end.
std::size_t HFileReadUpTo(CFile& file, void* to, std::size_t count);

// The word of PROGRAM, FUNCTION_BLOCK, FUNCTION (as written, in upper case) that a line begins
// with, or an empty view.
std::string_view HFileUnitWord(const CString& line);

}  // namespace vem
