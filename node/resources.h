// The library's own pictures, found by number through its resource module: icons of 32 x 32
// pixels, transparent around the drawing, and bitmaps of 16 x 16 pixels on white.
#pragma once

#include "platform/gdi.h"

// Numbers that the library itself uses.
enum : unsigned {
    kVemIconExpanded = 102,   // expand symbol of an expanded node
    kVemIconCollapsed = 113,  // expand symbol of a collapsed node
    kVemBitmapItemExpand = 156,
    kVemBitmapItemExpanded = 157,
    kVemBitmapItemLeaf = 158,
};

namespace vem {

// The library's resource module. It enters the chain of resource modules when the library is
// loaded, so that a host finds the pictures by number; GetResourceHandleVemDll hands it out.
CVemResourceModule& LibraryModule();

}  // namespace vem
