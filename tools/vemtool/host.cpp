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
#include <new>
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

// The region of LoadHeap: address space only until it is used, in pages of 2 MiB where the
// system gives them. The tool has one thread.
#if defined(__GLIBC__) && defined(MADV_HUGEPAGE) && !defined(VEMTOOL_SANITIZED)
#define VEMTOOL_LOAD_HEAP 1
namespace {

constexpr std::size_t kRegion = std::size_t{4} << 30;
constexpr std::size_t kAlign = 16;  // what malloc gives
char* gBegin = nullptr;
char* gNext = nullptr;
char* gEnd = nullptr;
bool gOn = false;

char* Region() {
    if (gBegin) return gBegin;
    constexpr std::size_t kHuge = std::size_t{2} << 20;
    void* at =
        ::mmap(nullptr, kRegion + kHuge, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (at == MAP_FAILED) return nullptr;
    const auto start = (reinterpret_cast<std::uintptr_t>(at) + kHuge - 1) & ~(kHuge - 1);
    gBegin = gNext = reinterpret_cast<char*>(start);
    gEnd = gBegin + kRegion;
    ::madvise(gBegin, kRegion, MADV_HUGEPAGE);
    return gBegin;
}

std::size_t Rounded(std::size_t size) { return (size + kAlign - 1) & ~(kAlign - 1); }

bool InRegion(void* p) { return p >= static_cast<void*>(gBegin) && p < static_cast<void*>(gEnd); }

void* Allocate(std::size_t size) {
    if (gOn) {
        const std::size_t rounded = Rounded(size ? size : 1);
        if (rounded <= static_cast<std::size_t>(gEnd - gNext)) {
            char* at = gNext;
            gNext += rounded;
            return at;
        }
    }
    for (;;) {
        if (void* p = std::malloc(size ? size : 1)) return p;
        std::new_handler handler = std::get_new_handler();
        if (!handler) throw std::bad_alloc();
        handler();
    }
}

void Release(void* p) noexcept {
    if (!InRegion(p)) std::free(p);
}

void Release(void* p, std::size_t size) noexcept {
    if (!InRegion(p)) {
        std::free(p);
    } else if (static_cast<char*>(p) + Rounded(size ? size : 1) == gNext) {
        gNext = static_cast<char*>(p);  // the last block made: a temporary
    }
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t size) noexcept { Release(p, size); }
void operator delete[](void* p, std::size_t size) noexcept { Release(p, size); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }
#endif

namespace vemtool {

LoadHeap::LoadHeap() : was_(false) {
#ifdef VEMTOOL_LOAD_HEAP
    was_ = gOn;
    gOn = Region() != nullptr;
#endif
}

LoadHeap::~LoadHeap() {
#ifdef VEMTOOL_LOAD_HEAP
    gOn = was_;
#endif
}

}  // namespace vemtool
