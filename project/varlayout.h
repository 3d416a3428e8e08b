// Where the variables of a compiled task lie: every variable the path map knows, the structures,
// instances and array elements around and inside them, as intervals of the task's block of
// segments (the absolute addresses of the path map), cut into pieces that each know the innermost
// variable covering them. The address index answers from it; the layout diff compares two of them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "node/basenode.h"

namespace vem::layout {

inline constexpr u32 kNone = 0xFFFFFFFFu;

struct Item {
    CVemBaseNode* node = nullptr;
    u32 start = 0;      // absolute in the task's block; relative to the element in an element layout
    u32 end = 0;        // one past the last unit
    u32 order = 0;      // walk order: a part comes behind what encloses it
    u32 name = kNone;   // text (offset in the arena): the path down to this part
    u32 key = kNone;    // text: the path map's form; an array for its elements
    u32 array = kNone;  // an array whose elements have no nodes: its layout
    i32 element = -1;   // index of an expanded element in its array
    u16 segment = 0xFFFF;
    u16 offset = 0;
    bool top = false;  // a variable of its own, not a part of an array element
};

// A stretch of addresses with the same innermost variable.
struct Piece {
    u32 start;
    u32 item;  // kNone: no variable
    u32 covering;
};

// The pieces of a layout, their starts apart for the search.
struct Pieces {
    std::vector<u32> starts;
    std::vector<u32> items;
    std::vector<u32> covering;
    void Push(u32 start, u32 item, u32 count);
};

struct ArrayLayout;

struct Layout {
    std::vector<Item> items;
    Pieces pieces;
    std::string arena;  // every text, each ended by a zero
    std::vector<ArrayLayout> arrays;

    const char* Str(u32 text) const { return arena.data() + text; }
    // Cuts the intervals into pieces; each knows its innermost variable, the smallest that covers
    // it (of two of the same size, the one that comes later in the walk).
    void Finish();
    // The piece holding the position; false before the first.
    bool At(u32 position, Piece& piece) const;
};

// The elements of an array that has no node for each, placed as an expansion would place them.
struct ArrayLayout {
    u32 first = 0;   // start of element 0
    u32 second = 0;  // start of element 1; the others follow at stride
    u32 stride = 0;
    u32 size = 0;
    u32 count = 0;
    std::vector<std::pair<i32, i32>> dims;  // bounds of each dimension
    std::unique_ptr<Layout> element;        // the prototype's parts, relative to an element, or null

    // Index of the element holding the position and its start, or false in a gap.
    bool ElementAt(u32 position, u32& index, u32& start) const;
    // "[i,j]" of an element.
    std::string IndexText(u32 index) const;
};

// The data or code segment of a unit (or of the task) in the task's block.
struct SegmentSpan {
    u32 start;
    u32 end;
    u16 segment;
    CVemBaseNode* unit;  // or null
    int kind;            // 1 data, 2 code, 0 neither
};

struct TaskLayout {
    CVemBaseNode* task = nullptr;
    std::string name;  // upper case
    Layout vars;
    std::vector<SegmentSpan> segments;  // by start
    std::vector<u32> abs;               // the task's table of absolute offsets
    // Segment by number, or null.
    const SegmentSpan* Segment(u16 number) const;
    const SegmentSpan* SegmentAt(u32 address) const;
};

// The layout of a task; without pieces it only lists the variables (arrays without their
// elements) and segments.
void BuildTaskLayout(CVemBaseNode* task, TaskLayout& out, bool pieces = true);
// The compiled tasks of the subtree in pre-order (the node itself if it is one).
std::vector<CVemBaseNode*> CompiledTasks(CVemBaseNode* root);
// Nesting deeper than this is not followed.
inline constexpr int kMaxDepth = 256;

}  // namespace vem::layout
