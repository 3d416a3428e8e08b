// Vem32: the classes that hosts reach through the flat functions. The platform's classes (CString,
// the collections, files and archives, the device context), the node base (so that the elements
// of a child list can be cast), the statement base, the byte arrays, the memory device contexts and
// the exported classes (CSegmentTable, CStatList, CStatListEntry, CVemDownloadList,
// CVemDownloadListEntry). Includes vem32.h.
#pragma once

#include "vem32.h"
#include "vem_dc.h"
#include "vem_evem_fields.h"

#include "download/download.h"
#include "memory/layouts.h"
#include "memory/segtbl.h"
#include "node/basenode.h"
#include "platform/archive.h"
#include "platform/collections.h"
#include "platform/cstring.h"
#include "platform/exceptions.h"
#include "platform/file.h"
#include "platform/gdi.h"
#include "platform/msgbox.h"
#include "statement/evembase.h"
#include "units/statlist.h"
