// Bounds of the walks that questions make through a tree after a load, and the path maps that hold
// pointers into a tree.
#pragma once

#include <memory>

#include "platform/types.h"

class CVemBaseNode;
class CMapStringToOb;
class CString;

// One step of a walk. The outermost step starts the walk with its budget, the steps inside join it.
// A step is refused when its node is already on the path (a cycle through references), when the
// path is deeper than kVemMaxNesting, or when the walk has spent its budget; a refused step enters
// nothing. The library is used from one thread at a time, so one walk runs at a time.
class CVemWalkStep {
public:
    CVemWalkStep(const void* node, u64 budget);
    ~CVemWalkStep();
    CVemWalkStep(const CVemWalkStep&) = delete;
    CVemWalkStep& operator=(const CVemWalkStep&) = delete;
    explicit operator bool() const { return m_entered; }
    // Takes `units` from the budget of the running walk; false once it is spent. Without a walk,
    // nothing limits.
    static bool Spend(u64 units);

    struct Walk;

private:
    std::unique_ptr<Walk> m_owned;
    const void* m_node;
    bool m_entered = false;
};

namespace vem {

// Takes a new path of a path map from the running walk's budget: false once the map has its most
// entries or the walk has spent its bytes.
bool SpendOnPath(const CString& path, const CMapStringToOb* map);

// Path maps with entries: the map of `owner` is emptied as soon as a node of the owner's tree goes,
// so that it never holds a pointer that outlives its node.
void PathMapKeep(CVemBaseNode* owner, CMapStringToOb* map);
void PathMapDrop(CVemBaseNode* owner);
// Called by every node as it goes, inside a dying scope that lasts while its children go.
void PathMapsForget(const CVemBaseNode* dying) noexcept;

}  // namespace vem
class CVemDyingScope {
public:
    CVemDyingScope() noexcept;
    ~CVemDyingScope();
    CVemDyingScope(const CVemDyingScope&) = delete;
    CVemDyingScope& operator=(const CVemDyingScope&) = delete;
};
