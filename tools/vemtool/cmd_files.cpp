// dump, tree, check, header: looking into node files and source files.
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "tool.h"

namespace vemtool {

namespace {

bool OneFile(const Options& o, const char* what, std::string& file, int& result) {
    if (o.Files().size() == 1) {
        file = o.Files()[0];
        return true;
    }
    result = Usage(std::string(State().command) + " takes one " + what);
    return false;
}

bool IsVariable(u32 t) {
    return t == kVemVariableNode || t == kVemArrayNode || t == kVemStructNode || t == kVemFbInstanceNode;
}
bool IsUnit(u32 t) { return t == kVemProgramNode || t == kVemFbNode || t == kVemFunctionNode || t == kVemTuiTaskNode; }

// A tree of a large resource has hundreds of thousands of lines: each is put together here in a
// buffer that is only ever grown, not formatted field by field, and the buffer goes out in pieces.
char* Pad(char* out, const char* text, std::size_t length, std::size_t width) {
    std::memcpy(out, text, length);
    out += length;
    for (; length < width; ++length) *out++ = ' ';
    return out;
}

char* Number(char* out, unsigned value, int base, std::size_t width, char fill) {
    static const char kDigits[] = "0123456789ABCDEF";
    char digits[16];
    std::size_t length = 0;
    if (base == 16) {
        do {
            digits[sizeof digits - ++length] = kDigits[value & 15];
            value >>= 4;
        } while (value);
    } else {
        do {
            digits[sizeof digits - ++length] = kDigits[value % 10];
            value /= 10;
        } while (value);
    }
    for (std::size_t n = length; n < width; ++n) *out++ = fill;
    std::memcpy(out, digits + sizeof digits - length, length);
    return out + length;
}

// What a node's absolute address needs from above it, handed down the walk instead of looked up
// again for every node (see AbsoluteAddress): the nearest compiled task, and the offsets of the
// expanded structure elements above.
struct Above {
    CVemBaseNode* task = nullptr;
    u32 elementOffsets = 0;
};

Above Context(CVemBaseNode* node) {
    Above above;
    above.task = node;
    while (above.task && VemGetNodeType(above.task) != kVemTuiTaskNode) above.task = VemGetParentNode(above.task);
    for (CVemBaseNode* at = VemGetParentNode(node); at && VemGetParentNode(at); at = VemGetParentNode(at)) {
        if (VemGetNodeType(at) == kVemStructNode && VemGetNodeType(VemGetParentNode(at)) == kVemArrayNode)
            above.elementOffsets += VemGetOffset(at);
    }
    return above;
}

bool Placed(CVemBaseNode* node, bool variable, const Above& above, u32& address) {
    if (!above.task) return false;
    if (!variable) return AbsoluteAddress(above.task, VemGetDataSegment(node), 0, address);
    return AbsoluteAddress(above.task, VemGetParentSegment(node),
                           static_cast<u16>(VemGetOffset(node) + above.elementOffsets), address);
}

// The lines of a tree, handed on to the output in pieces of 128 KiB.
struct TreeText {
    std::vector<char> text;
    std::size_t used = 0;
    void Flush() {
        WritePiece(Out(), text, used);
        used = 0;
    }
};

// "%-44s %-13s", then for variables and units " %-8s %4u:0x%04X  @0x%06X  size %u".
void TreeLine(TreeText& lines, CVemBaseNode* node, u32 type, int depth, const Above& above) {
    const CString text = VemGetNodeText(node);
    const std::string_view view = text.view();
    const char* const typeName = NodeTypeName(type);
    const std::size_t typeLength = std::strlen(typeName);
    const bool variable = IsVariable(type);
    const char* const dataName = variable ? DataTypeName(VemGetVariableType(node)) : "data";
    const std::size_t dataLength = std::strlen(dataName);
    // Four numbers of at most 10 digits each and 44 characters between them.
    const std::size_t most = static_cast<std::size_t>(depth) * 2 + view.size() + typeLength + dataLength + 128;
    if (lines.text.size() < lines.used + most) lines.text.resize(lines.used + most);
    char* const start = lines.text.data() + lines.used;
    char* out = start;
    for (int i = 0; i < depth; ++i, out += 2) std::memcpy(out, "  ", 2);
    std::memcpy(out, view.data(), view.size());
    out += view.size();
    while (out - start < 44) *out++ = ' ';
    *out++ = ' ';
    out = Pad(out, typeName, typeLength, 13);
    if (variable || IsUnit(type)) {
        u32 address = 0;
        const bool placed = Placed(node, variable, above, address);
        *out++ = ' ';
        out = Pad(out, dataName, dataLength, 8);
        *out++ = ' ';
        out = Number(out, variable ? VemGetParentSegment(node) : VemGetDataSegment(node), 10, 4, ' ');
        std::memcpy(out, ":0x", 3);
        out = Number(out + 3, variable ? static_cast<unsigned>(VemGetOffset(node)) : 0u, 16, 4, '0');
        if (placed) {
            std::memcpy(out, "  @0x", 5);
            out = Number(out + 5, address, 16, 6, '0');
        } else {
            std::memcpy(out, "  @-       ", 11);
            out += 11;
        }
        std::memcpy(out, "  size ", 7);
        out = Number(
            out + 7,
            variable ? static_cast<unsigned>(VemGetSize(node)) : static_cast<unsigned>(VemGetDataSegLength(node)), 10,
            0, ' ');
    }
    *out++ = '\n';
    lines.used += static_cast<std::size_t>(out - start);
    if (lines.used >= kBulkPiece) lines.Flush();
}

void PrintTree(TreeText& line, CVemBaseNode* node, int depth, int maxDepth, const Above& above) {
    const u32 type = VemGetNodeType(node);
    Above here = above;
    if (type == kVemTuiTaskNode) here.task = node;
    TreeLine(line, node, type, depth, here);
    if (maxDepth >= 0 && depth >= maxDepth) return;
    CVemBaseNode* parent = VemGetParentNode(node);
    if (type == kVemStructNode && parent && VemGetNodeType(parent) == kVemArrayNode)
        here.elementOffsets += VemGetOffset(node);
    CObList* list = VemGetChildList(node);
    for (POSITION pos = list->GetHeadPosition(); pos;)
        PrintTree(line, static_cast<CVemBaseNode*>(list->GetNext(pos)), depth + 1, maxDepth, here);
}

// The library's texts go into pieces of the output as they come, not into one copy of the whole.
class OutFile : public CFile {
public:
    ~OutFile() override { WritePiece(Out(), piece_, used_); }
    void Write(const void* buffer, unsigned count) override {
        const char* from = static_cast<const char*>(buffer);
        while (count) {
            if (used_ == piece_.size()) {
                WritePiece(Out(), piece_, used_);
                used_ = 0;
            }
            const std::size_t n = std::min<std::size_t>(count, piece_.size() - used_);
            std::memcpy(piece_.data() + used_, from, n);
            used_ += n;
            from += n;
            count -= static_cast<unsigned>(n);
        }
    }

private:
    std::vector<char> piece_ = std::vector<char>(kBulkPiece);
    std::size_t used_ = 0;
};

bool Count(const std::string& text, long& value) {
    char* end = nullptr;
    value = std::strtol(text.c_str(), &end, 10);
    return !text.empty() && !*end && value >= 0;
}

}  // namespace

int CmdDump(const Options& o) {
    std::string file;
    int result = kOk;
    if (!OneFile(o, "node file", file, result)) return result;
    Tree tree(Load(o, file));
    if (!tree.get()) return kFailed;
    if (!OpenOutput(o.Value("--output"))) return kFailed;
    StartBulkOutput();
    OutFile text;
    CVemNodeDump(tree.get(), &text);
    return kOk;
}

int CmdTree(const Options& o) {
    std::string file;
    int result = kOk;
    if (!OneFile(o, "node file", file, result)) return result;
    long depth = -1;
    if (o.Has("--depth") && !Count(o.Value("--depth"), depth)) return Usage("--depth takes a number of levels");
    const bool picture = o.Has("--output");
    if (picture && (o.Has("--depth") || o.Has("--path")))
        return Usage("--depth and --path are for the text tree, not -o");
    if (!picture && o.Has("--expand-all")) return Usage("--expand-all is for the picture: give -o OUT.svg");
    if (picture && o.Value("--output").empty()) return Usage("-o needs a file name");
    Tree tree(Load(o, file));
    if (!tree.get()) return kFailed;
    if (!picture) {
        CVemBaseNode* top = tree.get();
        if (o.Has("--path")) {
            top = FindNode(tree.get(), o.Value("--path"));
            if (!top) return NotFound(tree.get(), o.Value("--path"), "no node of that path");
        }
        StartBulkOutput();
        TreeText lines;
        PrintTree(lines, top, 0, static_cast<int>(depth), Context(top));
        lines.Flush();
        return kOk;
    }
    const std::string out = o.Value("--output");
    if (o.Has("--expand-all")) {
        for (CVemBaseNode* node : Subtree(tree.get())) VemSetExpanded(node, 1);
    }
    CVemSvgDC dc;
    VemDraw(tree.get(), &dc, CPoint(0, 0), CPoint(8, 8), tree.get());
    if (!dc.WriteFile(out.c_str(), VemGetBottomOfTree(tree.get()))) {
        Error("cannot write %s", out.c_str());
        return kFailed;
    }
    std::printf("%s: %zu nodes painted\n", out.c_str(), Subtree(tree.get()).size());
    return kOk;
}

int CmdCheck(const Options& o) {
    std::string file;
    int result = kOk;
    if (!OneFile(o, "node file", file, result)) return result;
    int missing = 0;
    Tree tree(Load(o, file, &missing));
    if (!tree.get()) return kFailed;
    std::size_t count = 0;
    std::vector<CVemBaseNode*> containers;
    Walk(tree.get(), [&](CVemBaseNode* node) {
        ++count;
        if (VemGetNodeType(node) == kVemTaskContainerNode) containers.push_back(node);
    });
    std::printf("%s: OK, root %s of type %u %s, %zu nodes\n", file.c_str(), VemGetName(tree.get()).GetString(),
                static_cast<unsigned>(VemGetNodeType(tree.get())), NodeTypeName(VemGetNodeType(tree.get())), count);
    for (CVemBaseNode* node : containers) {
        const tCompiledTasks tasks = VemAllTaskCompiledSuccesfully(node);
        const int loaded = static_cast<int>(Children(node).size());
        std::printf("  %s: %d tasks, %d compiled, %d loaded\n", VemGetName(node).GetString(), tasks.NoOfTasks,
                    tasks.NoOfCompiledTasks, loaded);
        if (loaded != tasks.NoOfTasks) {
            std::printf("  not every task came back from its file\n");
            if (!o.Has("--partial")) {
                Error("%s: %d of the %d tasks of %s did not come back from their files", file.c_str(),
                      tasks.NoOfTasks - loaded, tasks.NoOfTasks, VemGetName(node).GetString());
                result = kFailed;
            }
        }
    }
    return missing > 0 && !o.Has("--partial") ? kFailed : result;
}

namespace {

// Whether the key block of a source file names the key: the library answers a missing key and an
// empty value alike.
bool HeaderHasKey(const std::string& file, const std::string& key) {
    std::ifstream in(file, std::ios::binary);
    std::string line;
    bool inBlock = false;
    auto upper = [](std::string s) {
        for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return s;
    };
    const std::string wanted = upper(key);
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.rfind("$BEGIN_ZQ_HEADER", 0) == 0)
            inBlock = true;
        else if (line.rfind("$END_ZQ_HEADER", 0) == 0)
            return false;
        else if (inBlock) {
            const std::size_t eq = line.find('=');
            std::string name = upper(line.substr(0, eq));
            while (!name.empty() && std::isspace(static_cast<unsigned char>(name.back()))) name.pop_back();
            while (!name.empty() && std::isspace(static_cast<unsigned char>(name.front()))) name.erase(0, 1);
            if (name == wanted) return true;
        }
    }
    return false;
}

std::string FirstLine(const CString& text) {
    std::string s = text.str();
    return s.substr(0, s.find_first_of("\r\n"));
}

}  // namespace

int CmdHeader(const Options& o) {
    std::string file;
    int result = kOk;
    if (!OneFile(o, "source file", file, result)) return result;
    const bool get = o.Has("--get"), set = o.Has("--set"), unit = o.Has("--unit");
    if (get + set + unit != 1) return Usage("header takes one of --get, --set, --unit");
    if (file == "-" && set) return Usage("--set changes a file: give its name, not -");
    if (get) {
        const std::string key = o.Value("--get");
        CString value;
        file = InputPath(file);
        if (!VemSrcGetValue(file.c_str(), key.c_str(), value)) {
            Error("cannot read %s", file.c_str());
            return kFailed;
        }
        if (value.IsEmpty() && !HeaderHasKey(file, key)) {
            Error("%s: no key %s in the header block", file.c_str(), key.c_str());
            return kFailed;
        }
        std::fprintf(Out(), "%s\n", value.GetString());
        return kOk;
    }
    if (set) {
        const std::string assignment = o.Value("--set");
        const std::size_t eq = assignment.find('=');
        if (eq == std::string::npos || eq == 0) return Usage("--set takes KEY=VALUE");
        if (!VemSrcSetValue(file.c_str(), assignment.substr(0, eq).c_str(), assignment.substr(eq + 1).c_str())) {
            Error("cannot change %s", file.c_str());
            return kFailed;
        }
        return kOk;
    }
    CString kind, name;
    file = InputPath(file);
    if (!VemSrcGetUnit(file.c_str(), kind, name)) {
        Error("%s: no unit found", file.c_str());
        return kFailed;
    }
    // A file with bare line feeds reads as one line: the name ends at the first line end.
    std::fprintf(Out(), "%s %s\n", FirstLine(kind).c_str(), FirstLine(name).c_str());
    return kOk;
}

}  // namespace vemtool
