#include "platform/filefault.h"

#include <cerrno>

namespace {

constexpr int kOps = static_cast<int>(VemFileOp::count);
long g_calls[kOps] = {};
VemFileOp g_failing = VemFileOp::count;
long g_failAt = -1;

}  // namespace

void VemFailFileOp(VemFileOp op, long k) {
    for (long& calls : g_calls) calls = 0;
    g_failing = k < 0 ? VemFileOp::count : op;
    g_failAt = k;
}

long VemFileOpCalls(VemFileOp op) { return g_calls[static_cast<int>(op)]; }

bool VemFileFaultStrikes(VemFileOp op) {
    const long call = g_calls[static_cast<int>(op)]++;
    if (op != g_failing || call != g_failAt) return false;
    errno = EIO;
    return true;
}
