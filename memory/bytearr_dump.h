// Pieces shared by the dumps of the layouts. Internal to the byte arrays.
#pragma once

#include "platform/collections.h"
#include "platform/cstring.h"

class CVemByteArray;
class CVemDumpText;

namespace vem::dump {

// "    %04X : ", the start of a line of bytes.
CString HexLineStart(u32 index);
// One byte as "%02X%s ", with a second blank where a line has its wider gap.
void AppendHexByte(CString& line, u8 value, bool wideGap);
// The records of an instance table or the summary of a download table, by kind.
void DumpTables(CVemByteArray& array, unsigned kind, CStringArray& lines);
// The lines of CVemByteArray::Dump, each behind the prefix and ended by a line end, put straight
// into the text without a string per line. Only for an array whose Dump is that one.
void AppendPlainDump(CVemByteArray& array, const CString& prefix, CVemDumpText& text);

}  // namespace vem::dump
