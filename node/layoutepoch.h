// A counter of the changes that can move a variable in any tree of this process: children added or
// removed, offsets, sizes and segments set, segment lengths appended. Indexes built over a tree
// keep the value they were built at and rebuild themselves when it has moved on.
#pragma once

#include "vem32_types.h"

extern u64 gVemLayoutEpoch;

inline void VemTouchLayout() { ++gVemLayoutEpoch; }
