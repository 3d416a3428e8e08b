// query: what a debugger asks of a loaded resource.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "tool.h"

namespace vemtool {

namespace {

CString Upper(const std::string& text) {
    CString s(text);
    s.MakeUpper();
    return s;
}

}  // namespace

std::vector<CVemBaseNode*> CompiledTasks(CVemBaseNode* root) {
    std::vector<CVemBaseNode*> tasks;
    for (CVemBaseNode* node : Subtree(root)) {
        if (VemGetNodeType(node) == kVemTuiTaskNode) tasks.push_back(node);
    }
    return tasks;
}

PathHit FindPath(CVemBaseNode* root, const std::string& path) {
    for (CVemBaseNode* task : CompiledTasks(root)) {
        if (!VemGetNodePath2NodeList(task)) VemCreateChildNodePathList(task);
        CMapStringToOb* map = VemGetNodePath2NodeList(task);
        // A function block's own key keeps the blank in front of " : " of its name.
        for (const CString& key : {Upper(path), Upper(path + " ")}) {
            if (const auto* node = map->PLookup(key)) return {task, static_cast<CVemBaseNode*>(*node), key};
        }
    }
    return {};
}

void PrintLineMap(CVemBaseNode* exe, const std::string& unitPath, const CMapStringToString& map) {
    std::vector<std::pair<long, std::string>> lines;
    CString line, offset;
    for (POSITION pos = map.GetStartPosition(); pos;) {
        map.GetNextAssoc(pos, line, offset);
        lines.emplace_back(std::atol(line), offset.str());
    }
    std::sort(lines.begin(), lines.end());
    std::printf("line map of %s (%zu lines)\n", unitPath.c_str(), lines.size());
    CMapStringToOb statements;
    EVemFillAwlLine2EvemNodeMap(exe, unitPath.c_str(), &statements);
    for (const auto& [number, code] : lines) {
        CString key;
        key.Format("%ld", number);
        const auto* statement = statements.PLookup(key);
        const int type = statement ? EVemGetNodeType(static_cast<CEVemBaseNode*>(*statement)) : 0;
        std::printf("  line %4ld -> code offset 0x%04lX  (statement type %d)\n", number, std::atol(code.c_str()), type);
    }
}

int CrossReference(CVemBaseNode* exe, CVemBaseNode* target, const char* label, int mask) {
    CMapStringToOb table;
    if (!EVemCRBuildPouTableEx(exe, &table)) {
        std::fprintf(stderr, "vemtool: the resource has no statement model to search\n");
        return kFailed;
    }
    CStringList paths;
    CWordArray lines, kinds;
    CString key;
    CObject* code = nullptr;
    for (POSITION pos = table.GetStartPosition(); pos;) {
        table.GetNextAssoc(pos, key, code);
        EVemCRExecQueryEx(static_cast<CEVemBaseNode*>(code), target, &paths, &lines, &kinds, mask);
    }
    std::printf("cross reference of %s (%d places)\n", label, paths.GetCount());
    int i = 0;
    for (POSITION pos = paths.GetHeadPosition(); pos; ++i) {
        const CString& unit = paths.GetNext(pos);
        const u16 kind = kinds.GetAt(i);
        std::printf("  %-28s line %4u  %s\n", unit.GetString(), lines.GetAt(i),
                    kind == 1 ? "read" : kind == 2 ? "write" : "call");
    }
    return kOk;
}

int CmdQuery(Args args) {
    if (args.Help()) {
        std::puts(
            "usage: vemtool query FILE --addr PATH [--addr PATH...]\n"
            "       vemtool query FILE --lines UNITPATH\n"
            "       vemtool query FILE --xref PATH [--mask rwc]\n\n"
            "--addr   the absolute address of a variable, by its path (TASK.VAR, TASK.FB.VAR, ...)\n"
            "--lines  source line to code offset of the unit with that source path\n"
            "--xref   where the variable of that path is read (r) or written (w), or the unit\n"
            "         of that path called (c); --mask picks the kinds, default rwc");
        std::puts(kQueryLookupHelp);
        return kOk;
    }
    if (const int lookup = QueryLookup(args); lookup >= 0) return lookup;
    const std::vector<std::string> addrs = args.TakeAll("--addr");
    std::string unit, xref, mask = "rwc";
    const bool lines = args.TakeValue("--lines", unit);
    const bool cross = args.TakeValue("--xref", xref);
    args.TakeValue("--mask", mask);
    if (!args.UnknownOption().empty()) return Usage(("unknown option or missing value " + args.UnknownOption()).c_str());
    if (args.Rest().size() != 1) return Usage("query takes one node file");
    if ((!addrs.empty()) + lines + cross != 1) return Usage("query takes one of --addr, --lines, --xref");
    int maskBits = 0;
    for (char c : mask) {
        if (c == 'r') maskBits |= 1;
        else if (c == 'w') maskBits |= 2;
        else if (c == 'c') maskBits |= 4;
        else return Usage("--mask takes the letters r, w and c");
    }

    Tree tree(LoadOrReport(args.Rest()[0]));
    if (!tree.get()) return kFailed;
    if (!addrs.empty()) {
        int result = kOk;
        for (const std::string& path : addrs) {
            const PathHit hit = FindPath(tree.get(), path);
            if (!hit.node) {
                std::printf("%-28s not found\n", path.c_str());
                result = kFailed;
                continue;
            }
            const u32 address = VemGetAbsoluteVariableOffset(hit.task, hit.key);
            std::printf("%-28s address %u  (segment %u, offset %u, %s)\n", path.c_str(), address,
                        VemGetParentSegment(hit.node), VemGetOffset(hit.node), VemGetNodeText(hit.node).GetString());
        }
        return result;
    }
    if (VemGetNodeType(tree.get()) != kVemExeNode) {
        std::fprintf(stderr, "vemtool: %s is not a compiled resource\n", args.Rest()[0].c_str());
        return kFailed;
    }
    if (lines) {
        CMapStringToString map;
        if (!EVemFillAwlLine2UcodeOffsetMap(tree.get(), unit.c_str(), &map)) {
            std::fprintf(stderr, "vemtool: no unit with the path %s\n", unit.c_str());
            return kFailed;
        }
        PrintLineMap(tree.get(), unit, map);
        return kOk;
    }
    const PathHit hit = FindPath(tree.get(), xref);
    if (!hit.node) {
        std::fprintf(stderr, "vemtool: %s not found\n", xref.c_str());
        return kFailed;
    }
    return CrossReference(tree.get(), hit.node, xref.c_str(), maskBits);
}

}  // namespace vemtool
