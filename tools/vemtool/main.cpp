// The command line: one table of commands, each with its table of options. A new command or
// option is one entry here; parsing, help and usage errors follow from the tables.
#include <csignal>
#include <cstdio>
#include <cstring>

#include "host.h"
#include "tool.h"

namespace vemtool {

const std::vector<OptionSpec> kGlobalOptions = {
    {"--evem", nullptr, "on|off", "the statement-model setting the files are read and written with (default on)"},
    {"--quiet", "-q", nullptr, "no progress on standard error"},
    {"--help", "-h", nullptr, "this help"},
    {"--version", nullptr, nullptr, "the versions of the tool, the library and the node file stamp"},
};

const std::vector<OptionSpec> kLoadOptions = {
    {"--object", nullptr, nullptr, "FILE is a task file (one compiled task stored as an object), not a node file"},
    {"--task-dir", nullptr, "DIR",
     "look for task files that do not open by their stored names also in DIR (repeatable)"},
    {"--no-search", nullptr, nullptr, "open task files by their stored names only, not beside the node file"},
    {"--partial", nullptr, nullptr, "go on with a tree whose tasks did not all come back from their files"},
};

namespace {

const std::vector<Command> kCommands = {
    {"demo",
     "[DIR] [--tasks N] [--units N] [--vars N]",
     "build a sample resource, write it, load it back, check and ask it",
     "Builds the resource LINE1 of a packaging line as the compiler would (tasks FAST, SLOW, TASK3,\n"
     "...; a global task with a function; debounce function blocks with instances; structures,\n"
     "arrays of scalars, structures and strings; segments; the statement model), writes the node\n"
     "file and one file per task into DIR (default vem-demo), loads them back in a fresh tree,\n"
     "compares every name with what was built, and prints the tree, addresses by path, a line map\n"
     "and cross references. The tree is painted into DIR/tree.svg (up to 20000 nodes).",
     {{"--tasks", nullptr, "N", "tasks, 1 to 100 (default 2)"},
      {"--units", nullptr, "N", "function block instances per task, 0 to 100 (default 1)"},
      {"--vars", nullptr, "N", "extra INT variables per task, 0 to 5000 (default 4)"}},
     false,
     CmdDemo},
    {"dump",
     "FILE [-o OUT]",
     "the library's node dump of a node file",
     "Writes the library's diagnostic dump of the tree of FILE.",
     {{"--output", "-o", "OUT", "write into OUT (- is standard output)"}},
     true,
     CmdDump},
    {"tree",
     "FILE [--depth N] [--path PREFIX] | FILE -o OUT.svg [--expand-all]",
     "the tree as indented text, or as a picture",
     "Prints the tree of FILE, one node a line, indented by level: node text, node type, data type,\n"
     "segment:offset and absolute address in hex, size. With -o paints the tree view into an SVG\n"
     "picture instead.",
     {{"--depth", nullptr, "N", "only N levels below the root (or below the node of --path)"},
      {"--path", nullptr, "PREFIX", "only the subtree of the node with that path (TASK.VAR, any case)"},
      {"--output", "-o", "OUT.svg", "paint the tree view into OUT.svg"},
      {"--expand-all", nullptr, nullptr, "with -o: paint every node expanded"}},
     true,
     CmdTree},
    {"segments",
     "FILE [--task NAME] [--hex N]",
     "the segment tables, and a segment's bytes",
     "Lists the segment table of the executable node and of every compiled task: number, kind,\n"
     "length, ByteSize, byte order, layout, checksum. --hex shows the bytes of one segment in the\n"
     "target's order.",
     {{"--task", nullptr, "NAME", "only the table of that compiled task (RESOURCE for the executable node)"},
      {"--hex", nullptr, "N", "the bytes of segment N of that table"}},
     true,
     CmdSegments},
    {"query",
     "FILE --addr PATH... | --lines UNIT | --xref PATH [--mask rwc] | --at ADDR... | --pc UNIT:OFFSET",
     "addresses, line maps, cross references; the variable at an address, the line of a code offset",
     "--addr PATH: the absolute address of a variable: TASK.VAR, TASK.FB.VAR, array elements\n"
     "TASK.A[2] or TASK.M[1,3], structure and instance members TASK.S.M, in any case.\n"
     "--lines UNIT: source line to code offset of a unit, by its name or its source path in any\n"
     "case, with either slash. --xref PATH: where a variable is read (r) or written (w), or a unit\n"
     "called (c). An unknown path gets the nearest known paths as a hint.\n"
     "--at ADDR: the innermost variable at an absolute address of a task's segments (0x6C or 108),\n"
     "or at SEG:OFFSET of a segment; in every compiled task, or in the one of --task.\n"
     "--pc UNIT:OFFSET: the statement whose code covers the offset of a unit, the unit by name,\n"
     "source path or code segment number (a unit of \"Global - Resource\", or of the task of --task).",
     {{"--addr", nullptr, "PATH", "address of a variable (repeatable)"},
      {"--lines", nullptr, "UNIT", "line map of a unit"},
      {"--xref", nullptr, "PATH", "cross reference of a variable or unit"},
      {"--mask", nullptr, "rwc", "with --xref: the kinds of access, default rwc"},
      {"--at", nullptr, "ADDR|SEG:OFF", "the variable at an address or segment offset (repeatable)"},
      {"--pc", nullptr, "UNIT:OFFSET", "the source line of a code offset of a unit"},
      {"--task", nullptr, "NAME", "with --at or --pc: only that compiled task"},
      {"--dec", nullptr, nullptr, "addresses and offsets in decimal (default hex)"},
      {"--json", nullptr, nullptr, "the answer as JSON"}},
     true,
     CmdQuery},
    {"export",
     "FILE --json [--compact] [-o OUT]",
     "the whole tree with every stored field as JSON",
     "Writes the tree of FILE with every field its records store, the statement model included, as\n"
     "JSON of the schema \"vem32/1\" (docs/vemtool-json.schema.json): numbers of enumerations\n"
     "with their names beside, absolute addresses beside stored offsets, byte arrays in hex.",
     {{"--json", nullptr, nullptr, "JSON output (the only form so far)"},
      {"--compact", nullptr, nullptr, "no indentation, one line"},
      {"--output", "-o", "OUT", "write into OUT (- is standard output)"}},
     true,
     CmdExport},
    {"html",
     "FILE -o OUT.html",
     "the tree, search and details as one page for a browser",
     "Writes one self-contained page that shows the tree of FILE with the library's node texts\n"
     "and pictures, a search by path (TASK.VAR) or by address (123, 0x7B, TASK:123), and the\n"
     "details of the selected node: a variable's layout, a unit's segments as hexadecimal,\n"
     "its line map and the cross reference of its variables. The page needs no network. A file\n"
     "that does not load gives what check gives.",
     {{"--output", "-o", "OUT.html", "write the page into OUT.html"}},
     true,
     CmdHtml},
    {"diff",
     "OLD NEW [--json]",
     "what changed between two compile results; exit 1 if anything did",
     "Compares two node files of a resource, each with its task files: per task the variables\n"
     "added, removed, moved, resized or retyped, the units whose code changed, the segment\n"
     "tables and the device settings, and says whether a controller running OLD keeps its data\n"
     "when NEW replaces it. Exit 0 when equal, 1 when they differ, 2 on bad usage or a failed load.",
     {{"--json", nullptr, nullptr, "the answer as JSON"}},
     true,
     CmdDiff},
    {"check",
     "FILE",
     "load a node file and its task files; say what failed and where",
     "Loads FILE and the task files it names. On failure says on standard error what the file is,\n"
     "which record and at which byte offset the load stopped, and why; exit code 1. Task files\n"
     "whose stored names do not open here are looked for by name beside the node file and in each\n"
     "--task-dir DIR; a tree with tasks left out fails unless --partial is given.",
     {},
     true,
     CmdCheck},
    {"header",
     "SRCFILE [--get KEY | --set KEY=VALUE | --unit]",
     "the key block of a source file",
     "Reads or changes one key of the block at the top of a source file, or names its unit.",
     {{"--get", nullptr, "KEY", "print the value of KEY"},
      {"--set", nullptr, "KEY=VALUE", "change the value of KEY"},
      {"--unit", nullptr, nullptr, "print the kind and name of the unit"}},
     false,
     CmdHeader},
};

const Command* Find(const std::string& name) {
    for (const Command& c : kCommands) {
        if (name == c.name) return &c;
    }
    return nullptr;
}

void PrintOptions(std::FILE* f, const std::vector<OptionSpec>& entries) {
    for (const OptionSpec& o : entries) {
        std::string left = std::string(o.shortName ? o.shortName : "") + (o.shortName ? ", " : "    ") + o.name;
        if (o.value) left += std::string(" ") + o.value;
        std::fprintf(f, "  %-22s %s\n", left.c_str(), o.help);
    }
}

void GlobalHelp(std::FILE* f) {
    std::fputs("usage: vemtool [OPTIONS] COMMAND [ARGS]\n\ncommands:\n", f);
    for (const Command& c : kCommands) std::fprintf(f, "  %-9s %s\n", c.name, c.summary);
    std::fputs("  help CMD  the help of a command (also: vemtool CMD --help)\n\noptions (anywhere on the line):\n", f);
    PrintOptions(f, kGlobalOptions);
    std::fputs("\noptions of the commands that read a node file:\n", f);
    PrintOptions(f, kLoadOptions);
    std::fputs(
        "\nFILE may be - for standard input, OUT - for standard output. --opt=value and --opt value\n"
        "are the same; -- ends the options. Results go to standard output, diagnostics to standard\n"
        "error. Exit codes: 0 done, 1 failed (load, query, write), 2 bad usage.\n",
        f);
}

void CommandHelp(const Command& c) {
    std::printf("usage: vemtool %s %s\n\n%s\n", c.name, c.synopsis, c.details);
    if (!c.options.empty()) {
        std::puts("\noptions:");
        PrintOptions(stdout, c.options);
    }
    if (c.loadsNodeFile) PrintOptions(stdout, kLoadOptions);
    std::puts("\nand the options of every command: --evem on|off, -q, --help, --version");
}

int Version() {
    std::printf("vemtool %s\nlibrary %d\nnode file stamp Norvadis_VEM_Version:003\n", kToolVersion, GetVemDllVersion());
    return kOk;
}

const OptionSpec* Lookup(const std::vector<const std::vector<OptionSpec>*>& tables, const std::string& name) {
    for (const auto* table : tables) {
        for (const OptionSpec& o : *table) {
            if (name == o.name || (o.shortName && name == o.shortName)) return &o;
        }
    }
    return nullptr;
}

// Splits the arguments by the tables. "--name=value", "--name value", "-n value"; "--" ends the
// options; "-" is an operand. Gives "" or the usage error.
std::string Parse(const std::vector<std::string>& args, const std::vector<const std::vector<OptionSpec>*>& tables,
                  Options& out) {
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--") {
            out.files_.insert(out.files_.end(), args.begin() + static_cast<long>(i) + 1, args.end());
            break;
        }
        if (a.size() < 2 || a[0] != '-') {
            out.files_.push_back(a);
            continue;
        }
        const std::size_t eq = a.rfind("--", 0) == 0 ? a.find('=') : std::string::npos;
        const std::string name = a.substr(0, eq);
        const OptionSpec* entry = Lookup(tables, name);
        if (!entry) return "unknown option " + name;
        std::vector<std::string>& values = out.values_[entry->name];
        if (!entry->value) {
            if (eq != std::string::npos) return name + " takes no value";
            values.emplace_back();
        } else if (eq != std::string::npos) {
            values.push_back(a.substr(eq + 1));
        } else if (i + 1 < args.size()) {
            values.push_back(args[++i]);
        } else {
            return name + " needs a value " + entry->value;
        }
    }
    return "";
}

// Message boxes of the library go to standard error with a mark.
int PrintMessage(const char* text, unsigned, void*) {
    std::fprintf(stderr, "vemtool: message: %s\n", text ? text : "");
    return 1;
}

int Main(std::vector<std::string> args) {
    // Global options may stand before the command.
    std::size_t at = 0;
    std::vector<std::string> leading;
    while (at < args.size() && args[at].size() > 1 && args[at][0] == '-' && args[at] != "--") {
        leading.push_back(args[at]);
        const OptionSpec* entry = Lookup({&kGlobalOptions, &kLoadOptions}, args[at].substr(0, args[at].find('=')));
        if (entry && entry->value && args[at].find('=') == std::string::npos && at + 1 < args.size())
            leading.push_back(args[++at]);
        ++at;
    }
    Options global;
    State().command = "";
    if (std::string error = Parse(leading, {&kGlobalOptions, &kLoadOptions}, global); !error.empty()) {
        Error("%s (see vemtool --help)", error.c_str());
        return kUsage;
    }
    if (at == args.size()) {
        if (global.Has("--version")) return Version();
        GlobalHelp(global.Has("--help") ? stdout : stderr);
        return global.Has("--help") ? kOk : kUsage;
    }
    std::string name = args[at];
    std::vector<std::string> rest(args.begin() + static_cast<long>(at) + 1, args.end());
    if (name == "help") {
        if (rest.empty()) {
            GlobalHelp(stdout);
            return kOk;
        }
        name = rest[0];
        rest = {"--help"};
    }
    const Command* command = Find(name);
    if (!command) {
        Error("unknown command '%s' (see vemtool --help)", name.c_str());
        return kUsage;
    }
    State().command = command->name;
    for (const OptionSpec& o : kLoadOptions) {
        if (!command->loadsNodeFile && global.Has(o.name))
            return Usage(std::string(o.name) + " is for a command that loads a node file");
    }
    Options options = global;
    const std::vector<OptionSpec> none;
    if (std::string error =
            Parse(rest, {&kGlobalOptions, command->loadsNodeFile ? &kLoadOptions : &none, &command->options}, options);
        !error.empty()) {
        return Usage(error);
    }
    if (options.Has("--help")) {
        CommandHelp(*command);
        return kOk;
    }
    if (options.Has("--version")) return Version();
    if (options.Has("--evem")) {
        const std::string evem = options.Value("--evem");
        if (evem != "on" && evem != "off") return Usage("--evem takes on or off");
        State().evem = evem == "on";
        LurSetEvemEnabled(State().evem ? 1 : 0);
    }
    State().quiet = options.Has("--quiet");
    State().progress = !State().quiet && StderrIsTerminal();
    return command->run(options);
}

}  // namespace
}  // namespace vemtool

int main(int argc, char** argv) {
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is a write error that the tool reports
#endif
    vemtool::PrepareHeap();
    vemtool::BufferStandardOutput();
    VemSetMessageBoxHandler(&vemtool::PrintMessage, nullptr);
    const int result = vemtool::FinishOutput(vemtool::Main(std::vector<std::string>(argv + 1, argv + argc)));
    vemtool::DiscardAll();
    return result;
}
