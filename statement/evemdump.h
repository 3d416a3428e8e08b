// Texts of the statement model's dumps.
#pragma once

#include <string_view>

#include "statement/evembase.h"

class CVemDumpText;

namespace vem::evem {

// Name of the type's enumerator, "kCbeTypeCount" for 40, else "unknown Cbe type".
const char* CbeTypeText(u32 type);
// A pointer as the dumps show it: the address in upper-case hexadecimal, zero-padded to the width
// of a pointer.
CString PointerText(const void* pointer);
// The same, put into a dump's block without a string of its own for the null pointer.
void AppendPointer(CVemDumpText& text, const void* pointer);
// The lines that every node of the model begins its dump with: a blank line, "Version", "NodeType".
void AppendBaseDump(CVemDumpText& text, std::string_view prefix, i32 nodeType);
// A constant read from the target's bytes by its type, with its line end; bytes that the array
// lacks read as zeros.
CString ValueText(u32 type, const CVemByteArray* value);
// Name of an address mode with its line end, else "unknown address mode\n".
const char* AddressModeText(u32 mode);
// Name of a unit's kind; empty for a value that has none.
const char* PouTypeText(u32 pouType);

}  // namespace vem::evem
