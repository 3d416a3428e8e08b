#include <cstdio>
#include <cstring>

#include "taskfiles.h"
#include "tool.h"

namespace {

const char kUsage[] =
    "usage: vemtool [--evem on|off] COMMAND [ARGS]\n"
    "\n"
    "commands:\n"
    "  demo [DIR]                     build a sample resource, write it, load it back, ask it\n"
    "  dump FILE                      the library's node dump of a node file\n"
    "  tree FILE -o OUT.svg           the tree view as a picture [--expand-all]\n"
    "  query FILE --addr PATH...      absolute addresses of variables by path\n"
    "  query FILE --lines UNITPATH    source line to code offset of a unit\n"
    "  query FILE --xref PATH         where a variable is read or written, a unit called [--mask rwc]\n"
    "  query FILE --at ADDR|SEG:OFF   the variable at an address [--task NAME]\n"
    "  query FILE --pc UNIT:OFFSET    the source line of a code offset (unit by name, path or code segment)\n"
    "  diff OLD NEW                   what changed between two compile results [--json]; exit 1 if any\n"
    "  export FILE --json             the whole tree with its stored fields as JSON\n"
    "  html FILE -o OUT.html          the tree, search and details as one page for a browser\n"
    "  check FILE                     load a node file and its task files; say what failed\n"
    "  header SRCFILE                 the key block of a source file [--get KEY | --set KEY=VALUE | --unit]\n"
    "\n"
    "--evem on|off sets the statement model switch of the settings library (default: on).\n"
    "Task files whose stored names do not open here are looked for by name beside the node file\n"
    "and in each --task-dir DIR (repeatable); --no-search opens the stored names only. A tree\n"
    "with tasks left out is not loaded (exit 1) unless --partial is given.\n"
    "Each command has --help. Exit codes: 0 done, 1 failed load or query, 2 bad usage.\n";

// Message boxes of the library go to standard error with a mark.
int PrintMessage(const char* text, unsigned, void*) {
    std::fprintf(stderr, "vemtool: message: %s\n", text ? text : "");
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    VemSetMessageBoxHandler(&PrintMessage, nullptr);
    std::vector<std::string> args(argv + 1, argv + argc);
    if (vemtool::TakeTaskFileOptions(args) != vemtool::kOk) return vemtool::kUsage;
    if (args.size() >= 2 && args[0] == "--evem") {
        if (args[1] != "on" && args[1] != "off") return vemtool::Usage("--evem takes on or off");
        LurSetEvemEnabled(args[1] == "on" ? 1 : 0);
        args.erase(args.begin(), args.begin() + 2);
    }
    if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        std::fputs(kUsage, args.empty() ? stderr : stdout);
        return args.empty() ? vemtool::kUsage : vemtool::kOk;
    }
    const std::string command = args[0];
    vemtool::Args rest(std::vector<std::string>(args.begin() + 1, args.end()));
    if (command == "demo") return vemtool::CmdDemo(rest);
    if (command == "dump") return vemtool::CmdDump(rest);
    if (command == "tree") return vemtool::CmdTree(rest);
    if (command == "query") return vemtool::CmdQuery(rest);
    if (command == "export") return vemtool::CmdExport(rest);
    if (command == "html") return vemtool::CmdHtml(rest);
    if (command == "check") return vemtool::CmdCheck(rest);
    if (command == "header") return vemtool::CmdHeader(rest);
    if (command == "diff") return vemtool::CmdDiff(rest);
    std::fprintf(stderr, "vemtool: unknown command '%s'\n\n%s", command.c_str(), kUsage);
    return vemtool::kUsage;
}
