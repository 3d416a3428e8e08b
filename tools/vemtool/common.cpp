#include <cstdio>

#include "taskfiles.h"
#include "tool.h"

namespace vemtool {

bool Args::Help() const {
    for (const std::string& a : args_) {
        if (a == "--help" || a == "-h") return true;
    }
    return false;
}

bool Args::TakeValue(const std::string& name, std::string& value, const std::string& shortName) {
    for (std::size_t i = 0; i < args_.size(); ++i) {
        if (args_[i] != name && (shortName.empty() || args_[i] != shortName)) continue;
        if (i + 1 >= args_.size()) {
            value.clear();
            args_.erase(args_.begin() + static_cast<long>(i));
            return false;
        }
        value = args_[i + 1];
        args_.erase(args_.begin() + static_cast<long>(i), args_.begin() + static_cast<long>(i) + 2);
        return true;
    }
    return false;
}

bool Args::TakeFlag(const std::string& name) {
    for (std::size_t i = 0; i < args_.size(); ++i) {
        if (args_[i] == name) {
            args_.erase(args_.begin() + static_cast<long>(i));
            return true;
        }
    }
    return false;
}

std::vector<std::string> Args::TakeAll(const std::string& name) {
    std::vector<std::string> values;
    std::string v;
    while (TakeValue(name, v)) values.push_back(v);
    return values;
}

std::string Args::UnknownOption() const {
    for (const std::string& a : args_) {
        if (a.size() > 1 && a[0] == '-') return a;
    }
    return std::string();
}

int Usage(const char* text) {
    std::fprintf(stderr, "vemtool: %s (see --help)\n", text);
    return kUsage;
}

CVemBaseNode* LoadOrReport(const std::string& file) {
    tVemLoadReport report;
    int missing = 0;
    CVemBaseNode* root = LoadReportingTasks(file, report, missing);
    if (!root) std::fprintf(stderr, "vemtool: cannot load %s: %s\n", file.c_str(), report.Message);
    if (root && missing > 0 && !PartialAllowed()) VemDeleteNode(root);  // not a whole result; sets null
    return root;
}

std::vector<CVemBaseNode*> Children(CVemBaseNode* node) {
    std::vector<CVemBaseNode*> out;
    CObList* list = VemGetChildList(node);
    for (POSITION pos = list->GetHeadPosition(); pos;) out.push_back(static_cast<CVemBaseNode*>(list->GetNext(pos)));
    return out;
}

std::vector<CVemBaseNode*> Subtree(CVemBaseNode* node) {
    std::vector<CVemBaseNode*> out;
    std::vector<CVemBaseNode*> stack{node};
    while (!stack.empty()) {
        CVemBaseNode* at = stack.back();
        stack.pop_back();
        out.push_back(at);
        CObList* list = VemGetChildList(at);
        for (POSITION pos = list->GetTailPosition(); pos;) stack.push_back(static_cast<CVemBaseNode*>(list->GetPrev(pos)));
    }
    return out;
}

std::vector<CEVemBaseNode*> CodeNodes(CVemBaseNode* exe) {
    std::vector<CEVemBaseNode*> out;
    CObList* list = VemGetEvemRootNodeListPtr(exe);
    if (!list) return out;
    for (POSITION pos = list->GetHeadPosition(); pos;) out.push_back(static_cast<CEVemBaseNode*>(list->GetNext(pos)));
    return out;
}

}  // namespace vemtool
