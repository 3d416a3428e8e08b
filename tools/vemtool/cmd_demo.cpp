// demo: a resource built as the compiler builds it, written, loaded back as a debugger loads it,
// compared with what was built, and asked what a debugger asks.
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "demo_build.h"
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

bool Printable(const CString& text) {
    for (unsigned char c : text.str()) {
        if (c < 0x20 || c == 0x7F) return false;
    }
    return true;
}

// Every node and every statement of the loaded tree against a second build of the same shape:
// type, name, type name, and the statements' operands, lines and code offsets. "" if all agree.
std::string Compare(CVemBaseNode* built, CVemBaseNode* loaded, std::size_t& nodes, std::size_t& statements) {
    const std::vector<CVemBaseNode*> a = Subtree(built), b = Subtree(loaded);
    if (a.size() != b.size())
        return "built " + std::to_string(a.size()) + " nodes, read back " + std::to_string(b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        const CString name = VemGetName(b[i]);
        if (VemGetNodeType(a[i]) != VemGetNodeType(b[i]) || VemGetName(a[i]) != name ||
            VemGetTypeName(a[i]) != VemGetTypeName(b[i]) || !Printable(name) || !Printable(VemGetTypeName(b[i]))) {
            return "node " + std::to_string(i) + " was built as \"" + VemGetName(a[i]).str() + "\", read back as \"" +
                   name.str() + "\"";
        }
    }
    nodes = a.size();
    const std::vector<CEVemBaseNode*> ca = CodeNodes(built), cb = CodeNodes(loaded);
    if (ca.size() != cb.size())
        return "built " + std::to_string(ca.size()) + " code nodes, read back " + std::to_string(cb.size());
    statements = 0;
    for (std::size_t i = 0; i < ca.size(); ++i) {
        if (EVemGetPathName(ca[i]) != EVemGetPathName(cb[i])) {  // a code node's name is not stored
            return "code node " + std::to_string(i) + " differs";
        }
        CEVemBaseNode* s = EVemGetStatementNode(ca[i]);
        CEVemBaseNode* t = EVemGetStatementNode(cb[i]);
        for (; s && t; s = EVemGetNext(s), t = EVemGetNext(t), ++statements) {
            const CString operand = EVemGetName(t);
            if (EVemGetNodeType(s) != EVemGetNodeType(t) || EVemGetName(s) != operand || !Printable(operand) ||
                EVemGetAwlLine(s) != EVemGetAwlLine(t) || EVemGetUcodeOffset(s) != EVemGetUcodeOffset(t)) {
                return "statement of " + EVemGetPathName(cb[i]).str() + " at line " +
                       std::to_string(EVemGetAwlLine(t)) + " was built with \"" + EVemGetName(s).str() +
                       "\", read back with \"" + operand.str() + "\"";
            }
        }
        if (s || t) return "the statements of " + EVemGetPathName(cb[i]).str() + " differ in number";
    }
    return "";
}

}  // namespace

int CmdDemo(const Options& o) {
    DemoShape shape;
    if (o.Has("--tasks") && !ParseCount(o.Value("--tasks"), 1, 100, shape.tasks))
        return Usage("--tasks takes 1 to 100");
    if (o.Has("--units") && !ParseCount(o.Value("--units"), 0, 100, shape.units))
        return Usage("--units takes 0 to 100");
    if (o.Has("--vars") && !ParseCount(o.Value("--vars"), 0, 5000, shape.vars)) return Usage("--vars takes 0 to 5000");
    if (o.Files().size() > 1) return Usage("demo takes at most one directory");
    const std::string dir = o.Files().empty() ? "vem-demo" : o.Files()[0];
    std::error_code error;
    std::filesystem::create_directories(dir, error);
    if (error) {
        Error("cannot make %s: %s", dir.c_str(), error.message().c_str());
        return kFailed;
    }
    const std::string nodeFile = dir + "/LINE1.vem";

    // The compiler's side: build, write; a second build stays in memory to compare with.
    Progress progress("demo", static_cast<std::size_t>(shape.tasks) * 3);
    shape.onTask = [&](int step) { progress.Step(static_cast<std::size_t>(step)); };
    {
        Tree built(BuildDemo(shape));
        if (!WriteDemo(built.get(), dir, nodeFile, shape)) {
            Error("cannot write the resource into %s", dir.c_str());
            return kFailed;
        }
    }
    shape.onTask = [&](int step) {
        progress.Step(static_cast<std::size_t>(shape.tasks) * 2 + static_cast<std::size_t>(step));
    };
    Tree reference(BuildDemo(shape));
    std::printf("== written: %s and %d task files\n", nodeFile.c_str(), shape.tasks);

    // The debugger's side.
    Tree tree(Load(o, nodeFile));
    if (!tree.get()) return kFailed;
    std::size_t nodes = 0, statements = 0;
    const std::string difference = Compare(reference.get(), tree.get(), nodes, statements);
    if (!difference.empty()) {
        Error("%s does not read back as built: %s", nodeFile.c_str(), difference.c_str());
        return kFailed;
    }
    std::printf("== read back as built: %zu nodes, %zu code nodes, %zu statements\n\n== tree\n", nodes,
                CodeNodes(tree.get()).size(), statements);
    int budget = 60;
    PrintTree(tree.get(), "  ", budget);

    std::printf("\n== addresses by path\n");
    for (const char* path : {"FAST.COUNT", "FAST.RUNNING", "FAST.SPEEDS[2]", "FAST.STATIONS[1].BUSY", "FAST.LABELS",
                             "FAST.DEB0.Q", "SLOW.COUNT", "GLOBAL.LINESPEED", "GLOBAL.RECIPE", "GLOBAL.RECIPE.TARGET",
                             "GLOBAL.MATRIX[1,3]", "GLOBAL.SHELVES[2].BUSY"}) {
        Place p;
        std::string why;
        if (!Resolve(tree.get(), path, p, why) || !p.hasAddress) {
            std::printf("  %-28s not found\n", path);
            continue;
        }
        std::printf("  %-28s 0x%06X   (segment %u, offset 0x%04X, size %u)\n", path, p.address, p.segment, p.offset,
                    p.size);
    }

    if (CodeNodes(tree.get()).empty()) {
        std::printf("\nThe statement model is switched off: no line maps, no cross reference.\n");
    } else {
        std::printf("\n== ");
        CMapStringToString lines;
        EVemFillAwlLine2UcodeOffsetMap(tree.get(), DemoTaskPath(0).c_str(), &lines);
        PrintLineMap(tree.get(), DemoTaskPath(0), lines);
        std::printf("\n== ");
        CrossReference(tree.get(), FindNode(tree.get(), "FAST.COUNT"), "FAST.COUNT", 7);
        if (shape.units > 0) {
            std::printf("\n== ");
            CrossReference(tree.get(), FindPath(tree.get(), "FAST.DEB0").node, "the unit FAST.DEB0", 7);
            std::printf("\n== ");
            CrossReference(tree.get(), FindNode(tree.get(), "FAST.DEB0.IN"), "FAST.DEB0.IN", 7);
        }
    }

    const std::string svg = dir + "/tree.svg";
    if (nodes <= 20000) {
        CVemSvgDC dc;
        VemDraw(tree.get(), &dc, CPoint(0, 0), CPoint(8, 8), tree.get());
        if (dc.WriteFile(svg.c_str(), VemGetBottomOfTree(tree.get())))
            std::printf("\n== picture of the tree: %s\n", svg.c_str());
    } else {
        std::printf("\n== the tree is too large for a picture (%zu nodes)\n", nodes);
    }
    return kOk;
}

}  // namespace vemtool
