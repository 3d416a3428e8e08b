#include "node/flags.h"

#include "vem_node.h"

namespace {
int g_debugFlag = 0;
}  // namespace

int vem::DebugFlagValue() { return g_debugFlag; }

void VemSetDebugFlag(int flag) { g_debugFlag = flag; }

int VemGetDebugFlag() { return g_debugFlag; }
