// Nodes for the tree-view tests: a base node that answers chosen icon and bitmap numbers, as the
// node classes of the other subsystems do.
#pragma once

#include "test_util.h"

namespace vemtest {

class ShownNode : public CVemBaseNode {
public:
    ShownNode(u32 type, const char* name, unsigned icon = 117, unsigned bitmap = 149, int expanded = 1)
        : CVemBaseNode(type, name, expanded), m_icon(icon), m_bitmap(bitmap) {}
    unsigned GetIconID() override { return m_icon; }
    unsigned GetBitmapID() override { return m_bitmap; }

private:
    unsigned m_icon;
    unsigned m_bitmap;
};

}  // namespace vemtest
