// Message boxes. The library shows a few fixed texts; a host replaces the handler to show them in
// its own way. The default writes them to standard error.
#pragma once

#include "platform/types.h"
#include "vem_ext.h"  // the handler a host installs

// Style bits, as the host's message box understands them.
enum : unsigned {
    MB_OK = 0x0000,
    MB_ICONHAND = 0x0010,
    MB_ICONEXCLAMATION = 0x0030,
    MB_SYSTEMMODAL = 0x1000,
};

VEM_API int AfxMessageBox(const char* text, unsigned style = MB_OK);
