// Limits of the library: the widths in which records keep their counts and lengths on disk, and the
// bounds that loads and the questions asked after a load keep to. A write refuses a count or length
// above its width (0 from VemWriteNode and VemWriteObject, the archive exception elsewhere) instead
// of cutting it; a question that would walk past a bound stops there.
#pragma once

#include "vem_base.h"

// ---- widths on disk --------------------------------------------------------------------------------

// Children of one node (u16 in the base record).
constexpr u32 kVemMaxChildren = 0xFFFF;
// Entries of a statement list (u16).
constexpr u32 kVemMaxStatListEntries = 0xFFFF;
// Code nodes of a compiled task or an executable node (u16).
constexpr u32 kVemMaxCodeNodes = 0xFFFF;
// Entries of a segment table (u16).
constexpr u32 kVemMaxSegments = 0xFFFF;
// Bytes of a byte array (u16); its default upper limit, 65300, lies below.
constexpr u32 kVemMaxByteArrayBytes = 0xFFFF;
// Counts of collections and lengths of strings take 32 bits and more on disk and need no limit here.

// ---- bounds of loads and walks ---------------------------------------------------------------------

// Nesting of records that a load accepts, and depth of a walk through children and references.
constexpr u32 kVemMaxNesting = 400;
// Task files that a load reads inside one another (a container inside a task file naming another
// task file); real trees have one level.
constexpr u32 kVemMaxTaskFileNesting = 16;
// One path map holds at most this many paths, and its paths at most this many bytes of text
// (each path counted with kVemPathMapEntryCost bytes for its entry). A map that reaches either
// bound keeps what it has; a compiled tree has far fewer.
constexpr u32 kVemMaxPathMapEntries = 1u << 18;
constexpr u32 kVemMaxPathMapBytes = 8u << 20;
constexpr u32 kVemPathMapEntryCost = 64;
// Nodes that one VemExpandArray may make, nested arrays included; beyond it the invalid-argument
// exception passes and the array that reached it stays unexpanded.
constexpr u32 kVemMaxExpandedNodes = 1u << 20;
// A segment kind is a byte: a table of start offsets for VemComputeOffsets with this many entries
// serves every variable, and a variable whose kind lies above is left as it is (result 0).
constexpr u32 kVemSegmentKindLimit = 256;
