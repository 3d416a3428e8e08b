// vemtool: a host of the library for looking into node files, asking what a debugger asks, and
// building a demo resource.
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "vem32_classes.h"

namespace vemtool {

enum Exit : int { kOk = 0, kFailed = 1, kUsage = 2 };

inline constexpr char kToolVersion[] = "1.0";

// One option of a command: "--name", an optional short form, the word for its value (null for a
// flag) and a line of help. Options given more than once keep every value.
struct OptionSpec {
    const char* name;
    const char* shortName;
    const char* value;
    const char* help;
};

// What the command line gave one command.
class Options {
public:
    bool Has(const std::string& name) const { return values_.count(name) != 0; }
    std::string Value(const std::string& name, const std::string& otherwise = "") const;
    const std::vector<std::string>& Values(const std::string& name) const;
    const std::vector<std::string>& Files() const { return files_; }

    std::map<std::string, std::vector<std::string>> values_;
    std::vector<std::string> files_;
};

// One command: its table entry is all that main needs. `fileArgs` is what the operands are
// called in the usage line; `loadsNodeFile` adds the options of a load (kLoadOptions).
struct Command {
    const char* name;
    const char* synopsis;  // operands and options after the command's name
    const char* summary;   // one line for the global help
    const char* details;   // the rest of the command's help
    std::vector<OptionSpec> options;
    bool loadsNodeFile;
    int (*run)(const Options&);
};

// Options that every command takes, and those of every command that loads a node file.
extern const std::vector<OptionSpec> kGlobalOptions;
extern const std::vector<OptionSpec> kLoadOptions;

// The state of one run of the tool.
struct Run {
    bool quiet = false;
    bool evem = true;       // the statement-model setting the files are read with
    bool progress = false;  // standard error is a terminal and -q was not given
    std::string command;    // the command being run, for messages
};
Run& State();

int Usage(const std::string& text);                                         // prints to stderr, gives kUsage
void Error(const char* format, ...) __attribute__((format(printf, 1, 2)));  // "vemtool: ..." on stderr

// Where results go: standard output, or the file of -o. A write error (full disk, closed pipe)
// makes the command fail with a message at the end.
std::FILE* Out();
void BufferStandardOutput();               // before the first result is written
bool OpenOutput(const std::string& path);  // "" or "-" is standard output
int FinishOutput(int result);
// Large results leave from a thread of their own, so that the kernel takes one piece into the file
// while the next is made. Called before anything is written to Out(); FinishOutput waits for the
// last piece.
void StartBulkOutput();
// The size of those pieces: a megabyte. Smaller pieces cost more in handing over than the kernel
// gains from finding them in the cache.
constexpr std::size_t kBulkPiece = std::size_t{1} << 20;
// Writes the first `used` bytes of `piece` to `f`. While bulk output runs on `f`, the piece goes to
// its thread and `piece` comes back as another buffer, at least as large, to fill next.
void WritePiece(std::FILE* f, std::vector<char>& piece, std::size_t used);

// Progress on standard error for long work, shown only on a terminal and without -q.
class Progress {
public:
    Progress(const char* what, std::size_t total);
    ~Progress();
    void Step(std::size_t done);

private:
    const char* what_;
    std::size_t total_;
    double start_;
    double last_ = 0;
    bool shown_ = false;
};

// A tree is deleted at the end of the tool, not of its scope: freeing some hundred thousand nodes
// costs a tenth of a large load, and the end of the process frees them at once, as a compiler does
// with its trees. Builds with sanitizers and VEMTOOL_TEARDOWN=1 delete every tree (at the end too).
void Discard(CVemBaseNode* root);
void DiscardAll();

// A loaded tree, given up at the end of the scope (see Discard).
class Tree {
public:
    Tree() = default;
    explicit Tree(CVemBaseNode* root) : root_(root) {}
    ~Tree() { Discard(root_); }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
    CVemBaseNode* get() const { return root_; }
    CVemBaseNode* release() {
        CVemBaseNode* r = root_;
        root_ = nullptr;
        return r;
    }

private:
    CVemBaseNode* root_ = nullptr;
};

// Loads the node file (or with --object the task file) that a command names; "-" reads standard
// input. On failure says on standard error what the file is and where the load stopped, and
// gives null. Each task the load left out is named on standard error; such a tree is refused
// unless --partial is given, or unless `missingTasks` is given: the caller then decides.
CVemBaseNode* Load(const Options& options, const std::string& file, int* missingTasks = nullptr);
// The failure text for a file that did not load (several lines, no trailing newline).
std::string Diagnose(const std::string& file, const tVemLoadReport& report, bool asObject);
const char* ArchiveCauseName(int cause);
const char* FileCauseName(int cause);

std::vector<CVemBaseNode*> Children(CVemBaseNode* node);
// Every node of the subtree in pre-order, the node first.
std::vector<CVemBaseNode*> Subtree(CVemBaseNode* node);
// The same order without a list: a large tree's nodes do not fit the cache, so a walk that does
// its work on each node as it comes reads every node once, not twice.
template <class Visit>
void Walk(CVemBaseNode* node, Visit&& visit) {
    visit(node);
    CObList* list = VemGetChildList(node);
    for (POSITION pos = list->GetHeadPosition(); pos;) Walk(static_cast<CVemBaseNode*>(list->GetNext(pos)), visit);
}
// The code nodes of the executable, or an empty list.
std::vector<CEVemBaseNode*> CodeNodes(CVemBaseNode* exe);

// Names of the library's numbers.
const char* NodeTypeName(u32 type);  // "Exe", "TuiTask", ...; "?" for a number without a name
const char* DataTypeName(u32 type);
const char* SegmentKindName(u32 kind);
const char* StatementTypeName(u32 type);
const char* PouTypeName(u32 type);
const char* AddressModeName(u32 mode);

// A variable or unit found by its path in the path maps of the compiled tasks.
struct PathHit {
    CVemBaseNode* task = nullptr;
    CVemBaseNode* node = nullptr;
    CString key;
};
std::vector<CVemBaseNode*> CompiledTasks(CVemBaseNode* root);
PathHit FindPath(CVemBaseNode* root, const std::string& path);
void PrintLineMap(CVemBaseNode* exe, const std::string& unitPath, const CMapStringToString& map, bool dec = false,
                  bool json = false);
int CrossReference(CVemBaseNode* exe, CVemBaseNode* target, const char* label, int mask, bool json = false);

// The absolute address of a variable node: its task's segment start plus its offset. False where
// the node is in no compiled task or its segment has no start in the task's table.
bool AbsoluteAddress(CVemBaseNode* node, u32& address);
bool AbsoluteAddress(CVemBaseNode* task, u16 segment, u16 offset, u32& address);

// Where a path leads: a node, or an array element that was not expanded, placed by the layout
// rules of the expansion (its members too).
struct Place {
    CVemBaseNode* task = nullptr;
    CVemBaseNode* node = nullptr;  // the node, or for a computed element its element type's node
    std::string label;             // the path in upper case, indices without blanks
    bool computed = false;
    u32 nodeType = 0, dataType = 0;
    std::string typeName;
    u16 segment = 0;
    u16 offset = 0;
    u32 size = 0;
    bool hasAddress = false;
    u32 address = 0;
};
// TASK.VAR, TASK.FB.VAR, TASK.A[2], TASK.M[1,3], TASK.S.M in any case; false with the reason.
bool Resolve(CVemBaseNode* root, const std::string& path, Place& place, std::string& why);
CVemBaseNode* FindNode(CVemBaseNode* root, const std::string& path);  // a node of its own only
std::vector<std::string> NearestPaths(CVemBaseNode* root, const std::string& path);
int NotFound(CVemBaseNode* root, const std::string& path, const std::string& why = "");  // says so, gives kFailed
// The file to read for a file operand: "-" is a copy of standard input.
std::string InputPath(const std::string& file);

int CmdDump(const Options&);
int CmdTree(const Options&);
int CmdSegments(const Options&);
int CmdQuery(const Options&);
int CmdExport(const Options&);
int CmdCheck(const Options&);
int CmdHeader(const Options&);
int CmdDemo(const Options&);
int CmdHtml(const Options&);
int CmdDiff(const Options&);
// query --at and --pc (cmd_lookup.cpp) on a loaded tree.
int QueryLookup(const Options&, CVemBaseNode* root);

}  // namespace vemtool
