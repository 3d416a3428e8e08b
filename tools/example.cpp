// A small host of the library: builds a tree, writes its node file, loads it back and dumps it.
#include <cstdio>
#include <string>
#include <sys/stat.h>

#include "vem32.h"

int main(int argc, char** argv) {
    const std::string dir = argc > 1 ? argv[1] : "vem-demo";
    ::mkdir(dir.c_str(), 0777);
    const std::string nodeFile = dir + "/example.vem";
    const std::string dumpFile = dir + "/example.txt";

    CVemBaseNode* root = VemNewNode(kVemBaseNode);
    VemSetName(root, "Example");
    for (const char* name : {"Gamma", "Alpha", "Beta"}) {
        CVemBaseNode* child = VemNewNode(kVemBaseNode);
        VemSetName(child, name);
        VemAddChildSorted(root, child);
    }
    if (!VemWriteNode(root, nodeFile.c_str())) {
        std::fprintf(stderr, "cannot write %s\n", nodeFile.c_str());
        return 1;
    }
    VemDeleteNode(root);

    CVemBaseNode* loaded = VemLoadNode(nodeFile.c_str());
    if (!loaded) {
        std::fprintf(stderr, "cannot load %s\n", nodeFile.c_str());
        return 1;
    }
    std::printf("Loaded %s: root %s\n", nodeFile.c_str(), VemGetName(loaded).GetString());
    CObList* children = VemGetChildList(loaded);
    for (POSITION pos = children->GetHeadPosition(); pos;) {
        auto* child = static_cast<CVemBaseNode*>(children->GetNext(pos));
        std::printf("  child %s\n", VemGetNodeText(child).GetString());
    }
    CVemNodeDump(loaded, dumpFile.c_str());
    std::printf("Dump written to %s\n", dumpFile.c_str());
    VemDeleteNode(loaded);
    return 0;
}
