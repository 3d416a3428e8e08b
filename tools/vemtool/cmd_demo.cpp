// demo: a resource built as the compiler builds it, written, loaded back as a debugger loads it,
// and asked what a debugger asks.
#include <cstdio>
#include <cstdlib>

#include "demo_build.h"
#include "platform/file.h"
#include "tool.h"

namespace vemtool {

namespace {

bool ParseCount(const std::string& text, int low, int high, int& value) {
    char* end = nullptr;
    const long v = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end || v < low || v > high) return false;
    value = static_cast<int>(v);
    return true;
}

void PrintTree(CVemBaseNode* node, const std::string& indent, int& budget) {
    if (budget-- <= 0) {
        if (budget == -1) std::printf("%s...\n", indent.c_str());
        return;
    }
    std::printf("%s%s\n", indent.c_str(), VemGetNodeText(node).GetString());
    for (CVemBaseNode* child : Children(node)) PrintTree(child, indent + "  ", budget);
}

}  // namespace

int CmdDemo(Args args) {
    if (args.Help()) {
        std::puts(
            "usage: vemtool demo [DIR] [--tasks N] [--units N] [--vars N]\n\n"
            "Builds the resource LINE1 of a packaging line as the compiler would (tasks FAST, SLOW,\n"
            "...; a global task with a function; debounce function blocks with instances; structures,\n"
            "arrays of scalars, structures and strings; segments; the statement model), writes the\n"
            "node file and one file per task into DIR (default vem-demo), loads them back in a fresh\n"
            "tree and prints the tree, addresses by path, a line map and cross references. The tree\n"
            "is painted into DIR/tree.svg.\n\n"
            "  --tasks N   tasks (default 2)\n"
            "  --units N   function block instances per task (default 1)\n"
            "  --vars N    extra variables per task (default 4, at most 20000)");
        return kOk;
    }
    DemoShape shape;
    std::string value;
    if (args.TakeValue("--tasks", value) && !ParseCount(value, 1, 200, shape.tasks)) return Usage("--tasks takes 1 to 200");
    if (args.TakeValue("--units", value) && !ParseCount(value, 0, 100, shape.units)) return Usage("--units takes 0 to 100");
    if (args.TakeValue("--vars", value) && !ParseCount(value, 0, 20000, shape.vars)) return Usage("--vars takes 0 to 20000");
    if (!args.UnknownOption().empty()) return Usage(("unknown option or missing value " + args.UnknownOption()).c_str());
    if (args.Rest().size() > 1) return Usage("demo takes at most one directory");
    const std::string dir = args.Rest().empty() ? "vem-demo" : args.Rest()[0];
    CFileStatus status;
    if (!VemMakeDirectory(dir.c_str()) && !(CFile::GetStatus(dir.c_str(), status) && status.m_isDirectory)) {
        std::fprintf(stderr, "vemtool: cannot make %s\n", dir.c_str());
        return kFailed;
    }
    const std::string nodeFile = dir + "/LINE1.vem";

    // The compiler's side.
    {
        Tree built(BuildDemo(shape));
        if (!WriteDemo(built.get(), dir, nodeFile)) {
            std::fprintf(stderr, "vemtool: cannot write the resource into %s\n", dir.c_str());
            return kFailed;
        }
    }
    std::printf("== written: %s and %d task files\n", nodeFile.c_str(), shape.tasks);

    // The debugger's side.
    tVemLoadReport report;
    Tree tree(VemLoadNodeReport(nodeFile.c_str(), &report));
    if (!tree.get()) {
        std::fprintf(stderr, "vemtool: cannot load %s: %s\n", nodeFile.c_str(), report.Message);
        return kFailed;
    }
    const std::vector<CVemBaseNode*> nodes = Subtree(tree.get());
    std::printf("== loaded: %zu nodes, %zu code nodes\n\n== tree\n", nodes.size(), CodeNodes(tree.get()).size());
    int budget = 60;
    PrintTree(tree.get(), "  ", budget);

    std::printf("\n== addresses by path\n");
    for (const char* path : {"FAST.COUNT", "FAST.RUNNING", "FAST.SPEEDS", "FAST.LABELS",
                             "FAST.DEB0.Q", "SLOW.COUNT", "GLOBAL.LINESPEED", "GLOBAL.RECIPE.TARGET"}) {
        const PathHit hit = FindPath(tree.get(), path);
        if (!hit.node) {
            std::printf("  %-28s not found\n", path);
            continue;
        }
        std::printf("  %-28s %5u   (segment %u, offset %u)\n", path, VemGetAbsoluteVariableOffset(hit.task, hit.key),
                    VemGetParentSegment(hit.node), VemGetOffset(hit.node));
    }

    if (CodeNodes(tree.get()).empty()) {
        std::printf("\nThe statement model is switched off: no line maps, no cross reference.\n");
    } else {
        std::printf("\n== ");
        CMapStringToString lines;
        EVemFillAwlLine2UcodeOffsetMap(tree.get(), DemoTaskPath(0).c_str(), &lines);
        PrintLineMap(tree.get(), DemoTaskPath(0), lines);
        std::printf("\n== ");
        CrossReference(tree.get(), FindPath(tree.get(), "FAST.COUNT").node, "FAST.COUNT", 7);
        if (shape.units > 0) {
            std::printf("\n== ");
            CrossReference(tree.get(), FindPath(tree.get(), "FAST.DEB0").node, "the unit FAST.DEB0", 7);
            std::printf("\n== ");
            CrossReference(tree.get(), FindPath(tree.get(), "FAST.DEB0.IN").node, "FAST.DEB0.IN", 7);
        }
    }

    const std::string svg = dir + "/tree.svg";
    if (nodes.size() <= 20000) {
        CVemSvgDC dc;
        VemDraw(tree.get(), &dc, CPoint(0, 0), CPoint(8, 8), tree.get());
        if (dc.WriteFile(svg.c_str(), VemGetBottomOfTree(tree.get()))) std::printf("\n== picture of the tree: %s\n", svg.c_str());
    } else {
        std::printf("\n== the tree is too large for a picture (%zu nodes)\n", nodes.size());
    }
    return kOk;
}

}  // namespace vemtool
