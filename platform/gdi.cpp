#include "platform/gdi.h"

#include <algorithm>
#include <vector>

namespace {

std::vector<const CVemResourceModule*>& Chain() {
    static std::vector<const CVemResourceModule*> chain;
    return chain;
}

const CVemResourceModule* g_current = nullptr;

bool Holds(const CVemResourceModule* module, VemResourceKind kind, unsigned id) {
    CSize size;
    return module && module->FindPicture(kind, id, &size);
}

}  // namespace

CDC::~CDC() = default;

CVemResourceModule::~CVemResourceModule() = default;

void VemAddResourceModule(const CVemResourceModule* module) {
    if (module && std::find(Chain().begin(), Chain().end(), module) == Chain().end()) Chain().push_back(module);
}

void VemRemoveResourceModule(const CVemResourceModule* module) {
    std::erase(Chain(), module);
    if (g_current == module) g_current = nullptr;
}

const CVemResourceModule* VemGetResourceModule() { return g_current; }

const CVemResourceModule* VemSetResourceModule(const CVemResourceModule* module) {
    const CVemResourceModule* previous = g_current;
    g_current = module;
    return previous;
}

const CVemResourceModule* VemFindResourceModule(VemResourceKind kind, unsigned id) {
    if (Holds(g_current, kind, id)) return g_current;
    for (const CVemResourceModule* module : Chain()) {
        if (Holds(module, kind, id)) return module;
    }
    return nullptr;
}

bool CBitmap::LoadBitmap(unsigned resourceId) {
    const CVemResourceModule* module = VemFindResourceModule(VemResourceKind::Bitmap, resourceId);
    if (!module) return false;
    m_module = module;
    m_id = resourceId;
    return true;
}

CSize CBitmap::Size() const {
    CSize size;
    if (m_module && !m_module->FindPicture(VemResourceKind::Bitmap, m_id, &size)) size = CSize();
    return size;
}

int CBitmap::Width() const { return Size().cx; }

int CBitmap::Height() const { return Size().cy; }

COLORREF CBitmap::GetPixel(int x, int y) const {
    return m_module ? m_module->GetPixel(VemResourceKind::Bitmap, m_id, x, y) : kVemNoColor;
}
