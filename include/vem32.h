// Vem32: the compile-result store. Include this header to reach every exported function and class.
#pragma once

#include "vem32_types.h"
#include "vem_node.h"
#include "vem_plain.h"
#include "vem_settings.h"

// The node base, so that callers may cast the elements of a child list.
#include "node/basenode.h"
// The statement list of a unit, whose members callers call directly.
#include "units/statlist.h"
