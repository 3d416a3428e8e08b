// The bitmap functions of the tree view, for a host that draws a tree control of its own. Each
// makes the library's module the current source of resources for the time of the call, so that
// a host's own bitmaps of the same numbers do not stand in for the library's.
#include "node/basenode.h"
#include "node/resources.h"
#include "vem_node.h"
#include "vem_plain.h"

namespace {

int LoadFromLibrary(CBitmap* bitmap, unsigned id) {
    CVemResourceScope scope(&vem::LibraryModule());
    return bitmap->LoadBitmap(id) ? 1 : 0;
}

}  // namespace

// No class answers 0; a node that would still gets the leaf item.
int VemLoadBitmap(CVemBaseNode* node, CBitmap* bitmap) {
    unsigned id = node->GetBitmapID();
    if (id == 0) id = kVemBitmapItemLeaf;
    return LoadFromLibrary(bitmap, id);
}

int VemDllLoadBitmapID(CBitmap* bitmap, unsigned id) { return LoadFromLibrary(bitmap, id); }

int VemDllLoadBitmapItemExpand(CBitmap* bitmap) { return LoadFromLibrary(bitmap, kVemBitmapItemExpand); }

int VemDllLoadBitmapItemExpanded(CBitmap* bitmap) { return LoadFromLibrary(bitmap, kVemBitmapItemExpanded); }

int VemDllLoadBitmapItemLeaf(CBitmap* bitmap) { return LoadFromLibrary(bitmap, kVemBitmapItemLeaf); }
