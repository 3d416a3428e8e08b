// Vem32: the compile-result store. Include this header to reach every exported function and class.
#pragma once

#include "vem32_types.h"
#include "vem_node.h"
#include "vem_plain.h"
#include "units/statlist.h"
