// A counter of the changes that can move an answer about a variable in any tree of this process:
// children added or removed (arrays expanded among them), names, offsets, sizes, types and
// segments set, array bounds and string lengths, segments added to or removed from a segment
// table, bytes added to a segment, segment starts appended, device settings. Indexes built over a
// tree keep the value they were built at and rebuild themselves when it has moved on.
#pragma once

#include "vem32_types.h"

extern u64 gVemLayoutEpoch;

namespace vem {

inline void TouchLayout() { ++gVemLayoutEpoch; }

}  // namespace vem
