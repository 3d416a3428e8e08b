// What the tool asks of the host system beyond the standard library: whether progress would reach
// a person, and a heap that a large tree fills quickly.
#include "host.h"

#include <unistd.h>

#if defined(__GLIBC__)
#include <malloc.h>
#include <sys/mman.h>
#endif

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace vemtool {

bool StderrIsTerminal() { return ::isatty(2) == 1; }
bool StdoutIsTerminal() { return ::isatty(1) == 1; }

// A load of a large resource fills tens of megabytes of heap in small blocks. A fresh process
// takes each new page of it as a fault of its own; that costs about as much as the load itself.
// The heap is grown once by a large pad instead, kept when blocks are freed, and asked to come in
// pages of 2 MiB where the system gives them: a few hundred faults instead of tens of thousands.
// The pad is address space only until it is used.
void PrepareHeap() {
#if defined(__GLIBC__) && defined(MADV_HUGEPAGE) && !defined(VEMTOOL_SANITIZED)
    constexpr std::size_t kPad = std::size_t{256} << 20;
    constexpr std::uintptr_t kHuge = std::uintptr_t{2} << 20;
    if (mallopt(M_TOP_PAD, static_cast<int>(kPad)) != 1 || mallopt(M_TRIM_THRESHOLD, static_cast<int>(kPad)) != 1)
        return;
    // Blocks below the threshold of mapping come from the top of the heap: allocating them until
    // the break moves grows the heap by the pad.
    void* const before = ::sbrk(0);
    std::vector<void*> blocks;
    blocks.reserve(64);
    while (blocks.size() < 64 && ::sbrk(0) == before) {
        void* block = std::malloc(64 * 1024);
        if (!block) break;
        blocks.push_back(block);
    }
    for (void* block : blocks) std::free(block);
    const auto start = (reinterpret_cast<std::uintptr_t>(before) + kHuge - 1) & ~(kHuge - 1);
    const auto end = reinterpret_cast<std::uintptr_t>(::sbrk(0)) & ~(kHuge - 1);
    if (end > start) ::madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
#endif
}

}  // namespace vemtool
