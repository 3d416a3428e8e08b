// Segment kinds as the dumps name them.
#pragma once

#include "platform/types.h"

namespace vem {

// The name of a segment kind as a dump prints it, with the system's own blanks and line feeds;
// "### unknown segment ###" for a value that names no kind.
const char* SegmentKindName(unsigned kind);

// Kinds whose dump goes on with the records of their table.
inline bool IsInstanceTableKind(unsigned kind) { return kind == 20 || kind == 21; }
inline bool IsDownloadTableKind(unsigned kind) { return kind == 22 || kind == 23; }

}  // namespace vem
