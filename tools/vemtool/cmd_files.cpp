// dump, tree, check, header: looking into node files and source files.
#include <cstdio>

#include "taskfiles.h"
#include "tool.h"

namespace vemtool {

int CmdDump(Args args) {
    if (args.Help()) {
        std::puts(
            "usage: vemtool dump FILE [-o OUT]\n\n"
            "Writes the library's node dump of FILE to standard output, or into OUT.");
        return kOk;
    }
    std::string out;
    const bool toFile = args.TakeValue("--output", out, "-o");
    if (!args.UnknownOption().empty()) return Usage(("unknown option " + args.UnknownOption()).c_str());
    if (args.Rest().size() != 1) return Usage("dump takes one node file");
    Tree tree(LoadOrReport(args.Rest()[0]));
    if (!tree.get()) return kFailed;
    if (toFile) {
        if (CVemNodeDump(tree.get(), out.c_str())) return kOk;
        std::fprintf(stderr, "vemtool: cannot write %s\n", out.c_str());
        return kFailed;
    }
    CMemFile text;
    CVemNodeDump(tree.get(), &text);
    std::fwrite(text.Data().data(), 1, text.Data().size(), stdout);
    return kOk;
}

int CmdTree(Args args) {
    if (args.Help()) {
        std::puts(
            "usage: vemtool tree FILE -o OUT.svg [--expand-all]\n\n"
            "Paints the tree view of FILE into an SVG picture. Nodes are shown as they were stored,\n"
            "or all expanded with --expand-all.");
        return kOk;
    }
    std::string out;
    const bool hasOut = args.TakeValue("--output", out, "-o");
    const bool expandAll = args.TakeFlag("--expand-all");
    if (!args.UnknownOption().empty()) return Usage(("unknown option " + args.UnknownOption()).c_str());
    if (!hasOut || out.empty()) return Usage("tree needs -o OUT.svg");
    if (args.Rest().size() != 1) return Usage("tree takes one node file");
    Tree tree(LoadOrReport(args.Rest()[0]));
    if (!tree.get()) return kFailed;
    if (expandAll) {
        for (CVemBaseNode* node : Subtree(tree.get())) VemSetExpanded(node, 1);
    }
    CVemSvgDC dc;
    VemDraw(tree.get(), &dc, CPoint(0, 0), CPoint(8, 8), tree.get());
    if (!dc.WriteFile(out.c_str(), VemGetBottomOfTree(tree.get()))) {
        std::fprintf(stderr, "vemtool: cannot write %s\n", out.c_str());
        return kFailed;
    }
    std::printf("%s: %zu nodes painted\n", out.c_str(), Subtree(tree.get()).size());
    return kOk;
}

CVemBaseNode* LoadChecked(const std::string& file, int* missingTasks) {
    tVemLoadReport report;
    int missing = 0;
    CVemBaseNode* root = LoadReportingTasks(file, report, missing);
    if (missingTasks) *missingTasks = missing;
    if (!root) {
        static const char* const kinds[] = {"none", "cannot open", "file exception", "archive exception",
                                            "memory exception", "platform exception"};
        const int k = report.Failure >= 0 && report.Failure <= 5 ? report.Failure : 5;
        std::printf("%s: FAILED\n  failure: %s\n  cause:   %d\n", file.c_str(), kinds[k], report.Cause);
        if (report.RecordClass[0]) std::printf("  record:  %s\n", report.RecordClass);
        std::printf("  offset:  %llu\n  message: %s\n", static_cast<unsigned long long>(report.Offset), report.Message);
    }
    return root;
}

int CmdCheck(Args args) {
    if (args.Help()) {
        std::puts(
            "usage: vemtool check FILE\n\n"
            "Loads FILE and the task files it names. On failure says which exception, which cause,\n"
            "which class record and at which byte offset of FILE the load stopped.");
        return kOk;
    }
    if (!args.UnknownOption().empty()) return Usage(("unknown option " + args.UnknownOption()).c_str());
    if (args.Rest().size() != 1) return Usage("check takes one node file");
    const std::string& file = args.Rest()[0];
    Tree tree(LoadChecked(file));
    if (!tree.get()) return kFailed;
    const std::vector<CVemBaseNode*> nodes = Subtree(tree.get());
    std::printf("%s: OK, root %s of type %u, %zu nodes\n", file.c_str(), VemGetName(tree.get()).GetString(),
                static_cast<unsigned>(VemGetNodeType(tree.get())), nodes.size());
    for (CVemBaseNode* node : nodes) {
        const tCompiledTasks tasks = VemAllTaskCompiledSuccesfully(node);
        if (VemGetNodeType(node) != kVemTaskContainerNode) continue;
        const int loaded = static_cast<int>(Children(node).size());
        std::printf("  %s: %d tasks, %d compiled, %d loaded\n", VemGetName(node).GetString(), tasks.NoOfTasks,
                    tasks.NoOfCompiledTasks, loaded);
        if (loaded != tasks.NoOfTasks) {
            std::printf("  not every task came back from its file\n");
            if (!PartialAllowed()) return kFailed;
        }
    }
    return kOk;
}

int CmdHeader(Args args) {
    if (args.Help()) {
        std::puts(
            "usage: vemtool header SRCFILE [--get KEY | --set KEY=VALUE | --unit]\n\n"
            "Reads or changes one key of the block at the top of a source file, or names its unit.");
        return kOk;
    }
    std::string key, assignment;
    const bool get = args.TakeValue("--get", key);
    const bool set = args.TakeValue("--set", assignment);
    const bool unit = args.TakeFlag("--unit");
    if (!args.UnknownOption().empty()) return Usage(("unknown option " + args.UnknownOption()).c_str());
    if (args.Rest().size() != 1 || get + set + unit != 1) return Usage("header takes SRCFILE and one of --get, --set, --unit");
    const std::string& file = args.Rest()[0];
    if (get) {
        CString value;
        if (!VemSrcGetValue(file.c_str(), key.c_str(), value)) {
            std::fprintf(stderr, "vemtool: cannot read %s\n", file.c_str());
            return kFailed;
        }
        std::printf("%s\n", value.GetString());
        return kOk;
    }
    if (set) {
        const std::size_t eq = assignment.find('=');
        if (eq == std::string::npos || eq == 0) return Usage("--set takes KEY=VALUE");
        if (!VemSrcSetValue(file.c_str(), assignment.substr(0, eq).c_str(), assignment.substr(eq + 1).c_str())) {
            std::fprintf(stderr, "vemtool: cannot change %s\n", file.c_str());
            return kFailed;
        }
        return kOk;
    }
    CString kind, name;
    if (!VemSrcGetUnit(file.c_str(), kind, name)) {
        std::fprintf(stderr, "vemtool: no unit found in %s\n", file.c_str());
        return kFailed;
    }
    std::printf("%s %s\n", kind.GetString(), name.GetString());
    return kOk;
}

}  // namespace vemtool
