// The records of global settings, kept for the life of the process.
#include <cstddef>
#include <cstring>

#include "vem_settings.h"

static_assert(offsetof(tLurTobSettings, EvemEnabled) == 68, "EvemEnabled at byte 68");
static_assert(offsetof(tLurProjectSettings, ProjectCode) == 2, "ProjectCode at byte 2");

namespace {

// The statement model is on unless a host turns it off: it is what the debugger's line maps and
// cross reference are made of.
constexpr std::int32_t kDefaultEvemEnabled = 1;

tLurTobSettings g_tob = [] {
    tLurTobSettings s{};
    s.EvemEnabled = kDefaultEvemEnabled;
    return s;
}();
tLurProjectSettings g_project{};

}  // namespace

extern "C" {

void* LurGetGlobalTobSettings(int size) {
    if (size < 0 || static_cast<std::size_t>(size) > sizeof(g_tob)) return nullptr;
    return &g_tob;
}

void* LurGetGlobalProjectSettings(int size) {
    if (size < 0 || static_cast<std::size_t>(size) > sizeof(g_project)) return nullptr;
    return &g_project;
}

void LurSetEvemEnabled(std::int32_t enabled) { g_tob.EvemEnabled = enabled; }

void LurSetProjectCode(std::uint16_t projectCode) { g_project.ProjectCode = projectCode; }

void LurResetSettings(void) {
    std::memset(&g_tob, 0, sizeof g_tob);
    std::memset(&g_project, 0, sizeof g_project);
    g_tob.EvemEnabled = kDefaultEvemEnabled;
}
}
