// Code offset to statement: per unit of an executable node the statements sorted by code offset.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "node/basenode.h"
#include "project/varlayout.h"
#include "statement/evembase.h"
#include "statement/evemstmt.h"
#include "vem_bytearray.h"
#include "vem_ext.h"
#include "vem_segtbl.h"

namespace {

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    return text;
}

// "C:\PRJ\FB0.st" gives "FB0".
std::string FileStem(const std::string& path) {
    const auto slash = path.find_last_of("\\/:");
    std::string stem = slash == std::string::npos ? path : path.substr(slash + 1);
    const auto dot = stem.rfind('.');
    if (dot != std::string::npos && dot > 0) stem.resize(dot);
    return stem;
}

char UpperChar(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// Names of units compared and hashed in any case, without making an upper-case copy.
struct NoCaseHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
        std::uint64_t h = 14695981039346656037ull;
        for (char c : text) h = (h ^ static_cast<unsigned char>(UpperChar(c))) * 1099511628211ull;
        return static_cast<std::size_t>(h);
    }
};
struct NoCaseEqual {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const {
        if (a.size() != b.size()) return false;
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (UpperChar(a[i]) != UpperChar(b[i])) return false;
        }
        return true;
    }
};

// The kinds' texts of the dumps without their trailing blanks.
const std::string& TypeText(i32 type) {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> all(kEVemNodeTypeCount);
        for (int t = 0; t < kEVemNodeTypeCount; ++t) {
            all[static_cast<std::size_t>(t)] = vem::evem::NodeTypeText(t);
            while (!all[static_cast<std::size_t>(t)].empty() && all[static_cast<std::size_t>(t)].back() == ' ') {
                all[static_cast<std::size_t>(t)].pop_back();
            }
        }
        return all;
    }();
    static const std::string none;
    return type >= 0 && type < kEVemNodeTypeCount ? texts[static_cast<std::size_t>(type)] : none;
}

// What a query answers of a statement, gathered when the index is built.
struct Answer {
    CEVemBaseNode* statement;
    u32 operand;  // offset of its name in the index's arena
    i32 type;
    u16 line;
    u16 offset;
};

struct Unit {
    CEVemBaseNode* code = nullptr;
    std::string path;
    std::vector<u16> offsets;     // ascending
    std::vector<Answer> answers;  // for each offset, the last statement in chain order not above it
    u32 codeLength = 0;
};

}  // namespace

struct tVemCodeIndex {
    CVemBaseNode* exe = nullptr;
    bool model = false;
    std::vector<Unit> units;
    std::unordered_map<std::string, u32, NoCaseHash, NoCaseEqual> byName;  // path, name and file name
    std::unordered_map<std::string, u32> lengths;  // upper-case path of every unit -> code length, +1
    std::string arena;                             // operand names, each ended by a zero

    void Build();
    int Find(std::string_view unit, u32 offset, tVemCodeHit* hit);
};

void tVemCodeIndex::Build() {
    model = vem::evem::IsEnabled();
    // The code segments of the units, from the segment tables of their tasks.
    for (CVemBaseNode* task : vem::layout::CompiledTasks(exe)) {
        CSegmentTable* table = task->GetSegmentTable();
        std::vector<std::pair<CVemBaseNode*, int>> stack{{task, 0}};
        while (!stack.empty()) {
            auto [node, depth] = stack.back();
            stack.pop_back();
            const u32 type = node->GetNodeType();
            if (type == kVemProgramNode || type == kVemFbNode || type == kVemFunctionNode || type == kVemTuiTaskNode) {
                const std::string path = Upper(node->GetPathName().str());
                CVemByteArray* code = table ? VemSegTblGetSegment(table, node->GetCodeSegment()) : nullptr;
                const u32 length = code ? VemBaGetLength(code) + 1 : 0;
                if (!path.empty()) lengths.emplace(path, length);
                if (depth < vem::layout::kMaxDepth) {
                    for (POSITION pos = node->Children.GetHeadPosition(); pos;)
                        stack.emplace_back(node->ChildAt(pos), depth + 1);
                }
            }
        }
    }
    if (!model) return;
    CObList* list = exe->GetEvemRootNodeListPtr();
    if (!list) return;
    for (POSITION pos = list->GetHeadPosition(); pos;) {
        auto* code = static_cast<CEVemBaseNode*>(list->GetNext(pos));
        Unit unit;
        unit.code = code;
        unit.path = code->GetPathName().str();
        std::vector<std::pair<u16, u32>> placed;  // offset, chain position
        std::vector<CEVemBaseNode*> chain;
        for (CEVemBaseNode* s = code->GetStatementNode(); s; s = s->GetNext()) {
            if (!vem::evem::IsStatement(s)) continue;
            const u16 offset = static_cast<CEVemBaseStmtNode*>(s)->UcodeOffset;
            if (offset == CEVemBaseStmtNode::kNoUcodeOffset) continue;
            placed.emplace_back(offset, static_cast<u32>(chain.size()));
            chain.push_back(s);
        }
        std::sort(placed.begin(), placed.end());
        u32 best = 0;
        for (std::size_t i = 0; i < placed.size(); ++i) {
            best = i == 0 ? placed[i].second : std::max(best, placed[i].second);
            // Of equal offsets only the last entry counts: it has seen them all.
            if (i + 1 < placed.size() && placed[i + 1].first == placed[i].first) continue;
            CEVemBaseNode* statement = chain[best];
            const CString name = statement->GetName();
            unit.offsets.push_back(placed[i].first);
            unit.answers.push_back(Answer{statement, static_cast<u32>(arena.size()), statement->NodeType,
                                          statement->GetAwlLine(),
                                          static_cast<CEVemBaseStmtNode*>(statement)->UcodeOffset});
            arena.append(name.GetString(), static_cast<std::size_t>(name.GetLength()));
            arena.push_back('\0');
        }
        const std::string upperPath = Upper(unit.path);
        if (auto it = lengths.find(upperPath); it != lengths.end() && it->second) unit.codeLength = it->second - 1;
        const u32 number = static_cast<u32>(units.size());
        units.push_back(std::move(unit));
        for (const std::string& key : {units.back().path, code->GetName().str(), FileStem(units.back().path)}) {
            if (!key.empty()) byName.emplace(key, number);
        }
    }
}

int tVemCodeIndex::Find(std::string_view name, u32 offset, tVemCodeHit* hit) {
    std::memset(hit, 0, sizeof *hit);
    hit->UnitPath = "";
    hit->TypeText = "";
    hit->Operand = "";
    if (!model) {
        hit->Failure = kVemCodeNoModel;
        return 0;
    }
    auto it = byName.find(name);
    if (it == byName.end()) {
        const std::string key = Upper(std::string(name));
        bool known = lengths.count(key) != 0;
        for (const auto& [path, length] : lengths) {
            if (known) break;
            known = Upper(FileStem(path)) == key;
        }
        hit->Failure = known ? kVemCodeNoCodeNode : kVemCodeNoUnit;
        return 0;
    }
    const Unit& unit = units[it->second];
    hit->CodeNode = unit.code;
    hit->UnitPath = unit.path.c_str();
    hit->CodeLength = unit.codeLength;
    // Code ends with its segment, or behind the last statement where the segment is shorter.
    const u32 end = std::max<u32>(unit.codeLength, unit.offsets.empty() ? 0u : unit.offsets.back() + 1u);
    if (unit.codeLength && offset >= end) {
        hit->Failure = kVemCodeBeyond;
        return 0;
    }
    auto above = std::upper_bound(unit.offsets.begin(), unit.offsets.end(), offset);
    if (above == unit.offsets.begin()) {
        hit->Failure = kVemCodeBefore;
        return 0;
    }
    const std::size_t at = static_cast<std::size_t>(above - unit.offsets.begin()) - 1;
    const Answer& answer = unit.answers[at];
    hit->Statement = answer.statement;
    hit->UcodeOffset = answer.offset;
    hit->AwlLine = answer.line;
    hit->Type = answer.type;
    hit->TypeText = TypeText(answer.type).c_str();
    hit->Operand = arena.data() + answer.operand;
    hit->Failure = kVemCodeFound;
    return 1;
}

extern "C" {

tVemCodeIndex* VemCodeIndexNew(CVemBaseNode* exe) {
    if (!exe || exe->GetNodeType() != kVemExeNode) return nullptr;
    auto index = std::make_unique<tVemCodeIndex>();
    index->exe = exe;
    index->Build();
    return index.release();
}

void VemCodeIndexDelete(tVemCodeIndex* index) { delete index; }

int VemCodeLookup(tVemCodeIndex* index, const char* unit, u32 offset, tVemCodeHit* hit) {
    if (!index || !hit) return 0;
    return index->Find(unit ? unit : "", offset, hit);
}

int VemCodeLookupSegment(tVemCodeIndex* index, CVemBaseNode* node, u16 codeSegment, u32 offset, tVemCodeHit* hit) {
    if (!index || !hit) return 0;
    const CString path = (node ? node : index->exe)->GetPouPathNameFromCodeSegNr(codeSegment);
    return index->Find(path.str(), offset, hit);
}

}  // extern "C"
