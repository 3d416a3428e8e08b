// vemtool: a host of the library for looking into node files, asking what a debugger asks, and
// building a demo resource.
#pragma once

#include <string>
#include <vector>

#include "vem32.h"

namespace vemtool {

enum Exit : int { kOk = 0, kFailed = 1, kUsage = 2 };

// The arguments of one subcommand, with simple option parsing.
class Args {
public:
    explicit Args(std::vector<std::string> args) : args_(std::move(args)) {}
    bool Help() const;
    // Takes "--name value" (or "-n value"); false if absent. A missing value is a usage error.
    bool TakeValue(const std::string& name, std::string& value, const std::string& shortName = "");
    bool TakeFlag(const std::string& name);
    // Every "--name value" pair, in order.
    std::vector<std::string> TakeAll(const std::string& name);
    // What is left once the options are taken; an unknown option left is a usage error.
    const std::vector<std::string>& Rest() const { return args_; }
    std::string UnknownOption() const;

private:
    std::vector<std::string> args_;
};

// A loaded tree, deleted at the end of the scope.
class Tree {
public:
    Tree() = default;
    explicit Tree(CVemBaseNode* root) : root_(root) {}
    ~Tree() { VemDeleteNode(root_); }
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

// Loads a node file; on failure prints why and gives null.
CVemBaseNode* LoadOrReport(const std::string& file);
// Loads a node file; on failure prints the report of `check` to standard output and gives null.
CVemBaseNode* LoadChecked(const std::string& file, int* missingTasks = nullptr);

std::vector<CVemBaseNode*> Children(CVemBaseNode* node);
// Every node of the subtree in pre-order, the node first.
std::vector<CVemBaseNode*> Subtree(CVemBaseNode* node);
// The code nodes of the executable, or an empty list.
std::vector<CEVemBaseNode*> CodeNodes(CVemBaseNode* exe);

// A variable or unit found by its path in the path maps of the compiled tasks.
struct PathHit {
    CVemBaseNode* task = nullptr;
    CVemBaseNode* node = nullptr;
    CString key;
};
std::vector<CVemBaseNode*> CompiledTasks(CVemBaseNode* root);
PathHit FindPath(CVemBaseNode* root, const std::string& path);
void PrintLineMap(CVemBaseNode* exe, const std::string& unitPath, const CMapStringToString& map);
int CrossReference(CVemBaseNode* exe, CVemBaseNode* target, const char* label, int mask);

int Usage(const char* text);  // prints to stderr, gives kUsage

int CmdDump(Args args);
int CmdTree(Args args);
int CmdQuery(Args args);
int CmdExport(Args args);
int CmdCheck(Args args);
int CmdHeader(Args args);
int CmdDemo(Args args);
int CmdHtml(Args args);

// query --at and --pc (cmd_lookup.cpp): -1 if the arguments ask for neither.
int QueryLookup(Args& args);
extern const char kQueryLookupHelp[];
int CmdDiff(Args args);

}  // namespace vemtool
