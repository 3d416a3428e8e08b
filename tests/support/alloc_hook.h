// A counting allocator for the tests: counts what is live, and can make the k-th allocation fail.
#pragma once

namespace vemtest {

class AllocationWatch {
public:
    AllocationWatch();
    ~AllocationWatch();
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;
    // Allocations made while watching and not yet freed.
    long Live() const;
    // The one allocation after `count` more throws std::bad_alloc; -1 switches it off.
    void FailAfter(long count);
    long Made() const;
    // Most bytes held at once by allocations made while watching.
    long PeakBytes() const;
};

// Allocations made while it lives are not watched (the tests' own bookkeeping).
class AllocationPause {
public:
    AllocationPause();
    ~AllocationPause();
    AllocationPause(const AllocationPause&) = delete;
    AllocationPause& operator=(const AllocationPause&) = delete;

private:
    bool was_;
};

}  // namespace vemtest
