#include "alloc_hook.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace {

#ifdef _WIN32
std::size_t malloc_usable_size(void* p) { return _msize(p); }
#endif

bool g_watching = false;
long g_live = 0;
long g_made = 0;
long g_failAt = -1;
long g_liveBytes = 0;
long g_peakBytes = 0;

void* Allocate(std::size_t size) {
    if (g_watching) {
        if (g_failAt >= 0 && g_made == g_failAt) {
            ++g_made;  // only this one fails; later ones succeed again
            throw std::bad_alloc();
        }
        ++g_made;
        ++g_live;
    }
    void* p = std::malloc(size ? size : 1);
    if (!p) throw std::bad_alloc();
    if (g_watching) {
        g_liveBytes += static_cast<long>(malloc_usable_size(p));
        if (g_liveBytes > g_peakBytes) g_peakBytes = g_liveBytes;
    }
    return p;
}

void Release(void* p) {
    if (!p) return;
    if (g_watching) {
        --g_live;
        g_liveBytes -= static_cast<long>(malloc_usable_size(p));
    }
    std::free(p);
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
// The standard library's temporary buffers come from the nothrow form and go back through delete.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept { return operator new(size, tag); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }

namespace vemtest {

AllocationWatch::AllocationWatch() {
    g_live = 0;
    g_made = 0;
    g_failAt = -1;
    g_liveBytes = 0;
    g_peakBytes = 0;
    g_watching = true;
}

AllocationWatch::~AllocationWatch() {
    g_watching = false;
    g_failAt = -1;
}

long AllocationWatch::Live() const { return g_live; }

long AllocationWatch::Made() const { return g_made; }

long AllocationWatch::PeakBytes() const { return g_peakBytes; }

void AllocationWatch::FailAfter(long count) { g_failAt = count < 0 ? -1 : g_made + count; }

}  // namespace vemtest

namespace vemtest {

AllocationPause::AllocationPause() : was_(g_watching) { g_watching = false; }

AllocationPause::~AllocationPause() { g_watching = was_; }

}  // namespace vemtest
