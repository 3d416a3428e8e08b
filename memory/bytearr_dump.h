// Pieces shared by the dumps of the layouts. Internal to the byte arrays.
#pragma once

#include "platform/collections.h"
#include "platform/cstring.h"

class CVemByteArray;

namespace vem_dump {

// "    %04X : ", the start of a line of bytes.
CString HexLineStart(u32 index);
// One byte as "%02X%s ", with a second blank where a line has its wider gap.
void AppendHexByte(CString& line, u8 value, bool wideGap);
// The records of an instance table or the summary of a download table, by kind.
void DumpTables(CVemByteArray& array, unsigned kind, CStringArray& lines);

}  // namespace vem_dump
