// Stand-in for the dump of the line maps, until the line maps themselves are part of the model:
// the executable node's dump calls it and nothing is printed yet.
#include "statement/evemlist.h"

void EVemDumpLineMaps(CFile*, const CString&, CVemBaseNode*, const CStringList&) {}
