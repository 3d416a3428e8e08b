// A program outside the project, built against the installed package.
#include <cstdio>

#include "vem32_classes.h"

int main(int argc, char** argv) {
    const char* file = argc > 1 ? argv[1] : "consumer.vem";
    CVemBaseNode* root = VemNewNode(kVemBaseNode);
    VemSetName(root, "Consumer");
    VemAddChildTail(root, VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 0));
    if (!VemWriteNode(root, file)) return 1;
    VemDeleteNode(root);
    CVemBaseNode* loaded = VemLoadNode(file);
    if (!loaded) return 1;
    CVemBaseNode* v = static_cast<CVemBaseNode*>(VemGetChildList(loaded)->GetHead());
    const bool ok = VemGetName(loaded) == "Consumer" && VemGetOffset(v) == 4 && GetVemDllVersion() == 9;
    VemDeleteNode(loaded);
    std::printf("%s\n", ok ? "consumer ok" : "consumer failed");
    return ok ? 0 : 1;
}
