#include "platform/filefault.h"

#include <cerrno>

namespace {

constexpr int kOps = static_cast<int>(vem::FileOp::count);
long g_calls[kOps] = {};
vem::FileOp g_failing = vem::FileOp::count;
long g_failAt = -1;

}  // namespace

void vem::FailFileOp(vem::FileOp op, long k) {
    for (long& calls : g_calls) calls = 0;
    g_failing = k < 0 ? vem::FileOp::count : op;
    g_failAt = k;
}

long vem::FileOpCalls(vem::FileOp op) { return g_calls[static_cast<int>(op)]; }

bool vem::FileFaultStrikes(vem::FileOp op) {
    const long call = g_calls[static_cast<int>(op)]++;
    if (op != g_failing || call != g_failAt) return false;
    errno = EIO;
    return true;
}
