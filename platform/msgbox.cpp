#include "platform/msgbox.h"

#include <cstdio>

namespace {

int DefaultHandler(const char* text, unsigned, void*) {
    std::fprintf(stderr, "%s\n", text ? text : "");
    return 1;
}

VemMessageBoxHandler g_handler = &DefaultHandler;
void* g_context = nullptr;

}  // namespace

extern "C" VemMessageBoxHandler VemSetMessageBoxHandler(VemMessageBoxHandler handler, void* context) {
    VemMessageBoxHandler previous = g_handler == &DefaultHandler ? nullptr : g_handler;
    g_handler = handler ? handler : &DefaultHandler;
    g_context = handler ? context : nullptr;
    return previous;
}

int AfxMessageBox(const char* text, unsigned style) { return g_handler(text, style, g_context); }
