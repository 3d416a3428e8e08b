// The facts of each node type that the node layer answers by itself, from the rows of
// vem_node_types.def: the type rules applied when a node is made, its geometry and its pictures.
// Creation by type needs the classes of the levels above and is made in project/nodetypes.cpp.
#pragma once

#include <cstddef>
#include <iterator>

#include "vem32_types.h"

namespace vem::nodetypes {

struct Row {
    enum Expansion : u8 { Kept, Open };
    enum Geometry : u8 { Normal, Top };

    tVemNodeType Type;
    u8 HasSymbol;
    Expansion Expand;
    Geometry Shape;
    unsigned Bitmap, Icon, GlobalIcon;
};

inline constexpr Row kRows[] = {
#define VEM_NODE_TYPE(Value, Enumerator, Class, Args, Symbol, Expansion, Shape, Bitmap, Icon, GlobalIcon) \
    {Enumerator, Symbol, Row::Expansion, Row::Shape, Bitmap, Icon, GlobalIcon},
#include "vem_node_types.def"
#undef VEM_NODE_TYPE
};

// The row of a type, or null for a value that names no type (a node made with type 0, or a load
// that read another type into its node).
constexpr const Row* Find(u32 type) {
    for (const Row& row : kRows) {
        if (row.Type == type) return &row;
    }
    return nullptr;
}

constexpr const Row& RowOf(tVemNodeType type) { return *Find(type); }

// Each value once, in rising order, so that a row added in the wrong place or twice fails here.
constexpr bool RowsRise() {
    for (std::size_t i = 1; i < std::size(kRows); ++i) {
        if (kRows[i - 1].Type >= kRows[i].Type) return false;
    }
    return true;
}
static_assert(RowsRise(), "the rows of vem_node_types.def go by rising value");

// The icon of a node of the class that a type makes; a unit marked global shows its own.
template <class Node>
unsigned Icon(const Node& node, tVemNodeType type) {
    if constexpr (requires { node.GlobalFlag; }) {
        if (node.GlobalFlag) return RowOf(type).GlobalIcon;
    }
    return RowOf(type).Icon;
}

}  // namespace vem::nodetypes

// The picture answers of the class that a type makes, in the body of that class.
#define VEM_NODE_TYPE_PICTURES(type)                                               \
    unsigned GetBitmapID() override { return vem::nodetypes::RowOf(type).Bitmap; } \
    unsigned GetIconID() override { return vem::nodetypes::Icon(*this, type); }
