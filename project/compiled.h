// What the compiled task and the executable node share: the table of absolute segment offsets, the
// dump of their data container, the records that older files hold and a load drops, and the
// project code of the settings library.
#pragma once

#include "download/datacontainer.h"
#include "node/basenode.h"

namespace vem {

// Appends the start of the next segment to a table of absolute offsets: an empty table gets 0 and
// 0 (entry 0 and segment 1) and the length; otherwise the low 16 bits of the last entry plus the
// length, again in 16 bits. Gives the new entry.
u16 AppendSegmentLength(CDWordArray& offsets, u16 length);

// The container's part of a dump: its head line, one line per file (or the note that there are
// none), and the closing rule.
CString DataContainerDumpText(CVemDataContainer& container, const CString& prefix);

// Reads a download list of an older record and throws it away.
void SkipDownloadList(CArchive& ar);
// Reads a byte buffer in the tagged form of an older record and throws it away.
void SkipByteBuffer(CArchive& ar);

// The path name of the unit with the code segment among the direct children: a function block
// answers for itself or for the units it calls, a function for itself. The first text that is not
// empty wins.
CString UnitPathInChildren(CVemBaseNode* parent, u16 codeSegment);

// Line end and the prefix, and the rule that closes a block of a dump.
inline CString DumpNewLine(const CString& prefix) { return "\n" + prefix; }

}  // namespace vem
inline constexpr char kVemDumpRule[] = "========================================  \n";
