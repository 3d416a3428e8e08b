// A seam of the file layer for tests: the k-th call of one operation fails as the system would fail
// it (EIO), so that every failure path of a write or a read can be walked through.
#pragma once

namespace vem {

enum class FileOp { open, read, write, flush, rename, close, count };

// From now on the call of `op` after `k` more fails, once; -1 switches the seam off for all
// operations. The counts of all operations start again from 0.
void FailFileOp(FileOp op, long k);
// Calls of `op` since the last FailFileOp.
long FileOpCalls(FileOp op);
// Counts the call; true (with errno set) if it is the one to fail.
bool FileFaultStrikes(FileOp op);

}  // namespace vem
