// Vem32: the compile-result store. Include this header to reach every exported function and class.
#pragma once

#include "vem32_types.h"
#include "vem_bytearray.h"
#include "vem_dc.h"
#include "vem_evem.h"
#include "vem_ext.h"
#include "vem_limits.h"
#include "vem_node.h"
#include "vem_plain.h"
#include "vem_segtbl.h"
#include "vem_settings.h"

// Class definitions that callers reach: the node base (so that the elements of a child list can
// be cast), the statement base, and the exported classes.
#include "download/download.h"
#include "memory/layouts.h"
#include "memory/segtbl.h"
#include "node/basenode.h"
#include "statement/evembase.h"
#include "units/statlist.h"
