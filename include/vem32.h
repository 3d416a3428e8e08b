// Vem32: the compile-result store. This header declares every exported flat function with the
// types, records and enumerations it takes; the platform's classes and the exported classes stand
// in it as declarations only. A host that calls their members, or keeps a CString that a function
// gives back, includes vem32_classes.h as well.
#pragma once

#include "vem32_types.h"
#include "vem_bytearray.h"
#include "vem_evem.h"
#include "vem_ext.h"
#include "vem_limits.h"
#include "vem_node.h"
#include "vem_plain.h"
#include "vem_segtbl.h"
#include "vem_settings.h"
