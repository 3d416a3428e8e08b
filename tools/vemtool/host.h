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

}  // namespace vemtool
