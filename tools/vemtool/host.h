// What the tool asks of the host system beyond the standard library.
#pragma once

// Builds with AddressSanitizer free everything they made, so that its leak check stays meaningful.
#if defined(__SANITIZE_ADDRESS__)
#define VEMTOOL_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEMTOOL_SANITIZED 1
#endif
#endif

namespace vemtool {

bool StderrIsTerminal();
bool StdoutIsTerminal();
// Makes the heap ready for a large tree; does nothing where the host offers no way to.
void PrepareHeap();

// While one lives, new blocks come from a region that is only ever filled from the bottom: a
// load makes hundreds of thousands of small blocks and gives back few, and trees are not freed
// before the end of the process (see Discard). A block given back there is kept, unless it is
// the last one made. Outside it, and where the host has no such region, blocks come from the heap.
class LoadHeap {
public:
    LoadHeap();
    ~LoadHeap();
    LoadHeap(const LoadHeap&) = delete;
    LoadHeap& operator=(const LoadHeap&) = delete;

private:
    bool was_;
};

}  // namespace vemtool
