// Message boxes. The library shows a few fixed texts; a host replaces the handler to show them in
// its own way. The default writes them to standard error.
#pragma once

#include "platform/types.h"

// Style bits, as the host's message box understands them.
enum : unsigned {
    MB_OK = 0x0000,
    MB_ICONHAND = 0x0010,
    MB_ICONEXCLAMATION = 0x0030,
    MB_SYSTEMMODAL = 0x1000,
};

// Returns the button that was pressed (1 for OK).
using VemMessageBoxHandler = int (*)(const char* text, unsigned style, void* context);

extern "C" {
// Extension: installs a handler (null restores the default) and gives back the one before.
VEM_API VemMessageBoxHandler VemSetMessageBoxHandler(VemMessageBoxHandler handler, void* context);
}

VEM_API int AfxMessageBox(const char* text, unsigned style = MB_OK);
