#include "node/walk.h"

#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

#include "node/basenode.h"
#include "vem_limits.h"

static_assert(CArchive::kMaxDepth == kVemMaxNesting, "walks are bounded like loads");

struct CVemWalkStep::Walk {
    std::unordered_set<const void*> onPath;
    u64 left = 0;
};

namespace {

CVemWalkStep::Walk* g_walk = nullptr;

std::vector<std::pair<CVemBaseNode*, CMapStringToOb*>> g_maps;

int g_dying = 0;  // nodes whose destruction has begun and not ended

const CVemBaseNode* RootOf(const CVemBaseNode* node) {
    while (node->Parent) node = node->Parent;
    return node;
}

}  // namespace

CVemWalkStep::CVemWalkStep(const void* node, u64 budget) : m_node(node) {
    if (!g_walk) {
        m_owned = std::make_unique<Walk>();
        m_owned->left = budget;
        g_walk = m_owned.get();
    }
    if (g_walk->onPath.size() >= kVemMaxNesting || g_walk->left == 0) return;
    try {
        m_entered = g_walk->onPath.insert(node).second;
    } catch (...) {
        if (m_owned) g_walk = nullptr;
        throw;
    }
}

CVemWalkStep::~CVemWalkStep() {
    if (m_entered) g_walk->onPath.erase(m_node);
    if (m_owned) g_walk = nullptr;
}

bool CVemWalkStep::Spend(u64 units) {
    if (!g_walk) return true;
    if (g_walk->left < units) {
        g_walk->left = 0;
        return false;
    }
    g_walk->left -= units;
    return true;
}

bool vem::SpendOnPath(const CString& path, const CMapStringToOb* map) {
    if (static_cast<u32>(map->GetCount()) >= kVemMaxPathMapEntries) return false;
    return CVemWalkStep::Spend(static_cast<u64>(path.GetLength()) + kVemPathMapEntryCost);
}

void vem::PathMapKeep(CVemBaseNode* owner, CMapStringToOb* map) {
    for (auto& kept : g_maps) {
        if (kept.first == owner) {
            kept.second = map;
            return;
        }
    }
    g_maps.emplace_back(owner, map);
}

namespace {

// The list gives its storage back with its last map, so that nothing of a tree outlives it.
void ReleaseIfEmpty() noexcept {
    if (g_maps.empty()) decltype(g_maps)().swap(g_maps);
}

}  // namespace

void vem::PathMapDrop(CVemBaseNode* owner) {
    std::erase_if(g_maps, [owner](const auto& kept) { return kept.first == owner; });
    ReleaseIfEmpty();
}

// A map holds nodes of its owner's task and of what is global to the resource above it: all of
// them below the same root.
// Only the node that goes first looks: the nodes below it go with it, below the same root, and
// their parents are already on their way out.
void vem::PathMapsForget(const CVemBaseNode* dying) noexcept {
    if (g_maps.empty() || g_dying > 1) return;
    const CVemBaseNode* root = RootOf(dying);
    std::erase_if(g_maps, [root](const auto& kept) {
        if (RootOf(kept.first) != root) return false;
        kept.second->RemoveAll();
        return true;
    });
    ReleaseIfEmpty();
}

CVemDyingScope::CVemDyingScope() noexcept { ++g_dying; }

CVemDyingScope::~CVemDyingScope() { --g_dying; }
