// Layout diff of two compile results of a resource, and the verdict on keeping a running
// controller's data when the new one replaces the old.
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "project/varlayout.h"
#include "variables/variable.h"
#include "vem32.h"
#include "vem_ext.h"

using vem::layout::kNone;

namespace {

struct Entry {
    int kind = 0;
    int changes = 0;
    std::string task;
    std::string path;
    u16 oldSegment = 0, oldOffset = 0, oldSize = 0;
    u16 newSegment = 0, newOffset = 0, newSize = 0;
    u32 oldType = 0, newType = 0;
    std::string oldText;
    std::string newText;
};

// The device settings by name, as numbers.
struct Setting {
    const char* name;
    u64 (*get)(const tVemDeviceSettings&);
    bool layout;  // a difference changes how the target lays out its memory
};

#define VEM_SETTING(field, layout)                                                 \
    {                                                                              \
#field, [](const tVemDeviceSettings& s) -> u64 { return s.field; }, layout \
    }
const Setting kSettings[] = {
    VEM_SETTING(DeviceWord1, false),
    VEM_SETTING(DeviceWord2, false),
    {"MotorolaFormat", [](const tVemDeviceSettings& s) -> u64 { return s.MotorolaFormat != 0; }, true},
    VEM_SETTING(ResourceGlobalSegTable, false),
    VEM_SETTING(OnlineLinking, false),
    VEM_SETTING(IncrementalDownload, false),
    VEM_SETTING(OneSegTableAtOnlineLinking, false),
    VEM_SETTING(OnlineEditor, false),
    VEM_SETTING(TaskDownload, false),
    VEM_SETTING(TaskStart, false),
    VEM_SETTING(MaxWatchEntries, false),
    VEM_SETTING(DeviceByte1, false),
    VEM_SETTING(DeviceByte2, false),
    VEM_SETTING(DeviceByte3, false),
    VEM_SETTING(DeviceByte4, false),
    VEM_SETTING(DeviceByte5, false),
    VEM_SETTING(DeviceByte6, false),
    VEM_SETTING(IpType, true),
    VEM_SETTING(DeviceWord3, false),
    VEM_SETTING(DeviceByte7, false),
    VEM_SETTING(Alignment, true),
    VEM_SETTING(ByteSize, true),
    VEM_SETTING(DeviceLong1, false),
    VEM_SETTING(DeviceByte9, false),
    VEM_SETTING(DeviceLong2, false),
    {"DeviceLong3[0]", [](const tVemDeviceSettings& s) -> u64 { return s.DeviceLong3[0]; }, false},
    {"DeviceLong3[1]", [](const tVemDeviceSettings& s) -> u64 { return s.DeviceLong3[1]; }, false},
};
#undef VEM_SETTING

// The type name of a variable, read in place.
const CString& TypeName(CVemBaseNode* node) {
    static const CString kEmpty;
    return node->IsKindOf(RUNTIME_CLASS(CVemVariableNode)) ? static_cast<CVemVariableNode*>(node)->TypeName : kEmpty;
}

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    return text;
}

// Length and checksum of a segment, "length:checksum".
std::string CodeText(CVemByteArray* array) {
    if (!array) return "none";
    return std::to_string(VemBaGetLength(array)) + ":" + std::to_string(VemBaComputeCheckSum(array, 0));
}

}  // namespace

struct tVemLayoutDiff {
    std::vector<Entry> entries;
    int verdict = kVemDiffEqual;
    std::string reason;

    void Compare(CVemBaseNode* a, CVemBaseNode* b);

private:
    std::vector<std::string> incompatible;
    int reinit = 0;

    Entry& Add(int kind, const std::string& task, std::string path) {
        entries.emplace_back();
        entries.back().kind = kind;
        entries.back().task = task;
        entries.back().path = std::move(path);
        return entries.back();
    }
    void CompareSettings(CVemBaseNode* a, CVemBaseNode* b);
    void CompareVariables(const vem::layout::TaskLayout& a, const vem::layout::TaskLayout& b);
    void CompareSegments(const vem::layout::TaskLayout& a, const vem::layout::TaskLayout& b);
};

void tVemLayoutDiff::CompareSettings(CVemBaseNode* a, CVemBaseNode* b) {
    const tVemDeviceSettings* sa = a->GetDeviceSettings();
    const tVemDeviceSettings* sb = b->GetDeviceSettings();
    if (!sa || !sb) return;
    for (const Setting& setting : kSettings) {
        const u64 va = setting.get(*sa);
        const u64 vb = setting.get(*sb);
        if (va == vb) continue;
        Entry& e = Add(kVemDiffSettingChanged, std::string(), setting.name);
        e.oldText = std::to_string(va);
        e.newText = std::to_string(vb);
        if (setting.layout) incompatible.push_back(std::string("the target's ") + setting.name + " differs");
    }
}

void tVemLayoutDiff::CompareVariables(const vem::layout::TaskLayout& a, const vem::layout::TaskLayout& b) {
    std::vector<u32> olds;  // the variables of A in walk order
    for (u32 i = 0; i < a.vars.items.size(); ++i) {
        if (a.vars.items[i].top) olds.push_back(i);
    }
    // Two compile results list their variables mostly in the same order: each is first looked for
    // behind the last one found, and only then by name.
    std::unordered_map<std::string_view, u32> byName;
    std::vector<char> seen(a.vars.items.size(), 0);
    std::size_t next = 0;
    for (const vem::layout::Item& nb : b.vars.items) {
        if (!nb.top) continue;
        const std::string_view name = b.vars.Str(nb.name);
        u32 match = kNone;
        if (next < olds.size() && name == a.vars.Str(a.vars.items[olds[next]].name)) {
            match = olds[next++];
        } else {
            if (byName.empty()) {
                byName.reserve(olds.size());
                for (u32 i : olds) byName.emplace(a.vars.Str(a.vars.items[i].name), i);
            }
            if (auto it = byName.find(name); it != byName.end()) match = it->second;
        }
        if (match == kNone || seen[match]) {
            Entry& e = Add(kVemDiffVarAdded, b.name, std::string(name));
            e.newSegment = nb.segment;
            e.newOffset = nb.offset;
            e.newSize = static_cast<u16>(nb.end - nb.start);
            e.newType = nb.node->GetVariableType();
            e.newText = TypeName(nb.node).str();
            continue;
        }
        seen[match] = 1;
        const vem::layout::Item& na = a.vars.items[match];
        int changes = 0;
        if (na.segment != nb.segment || na.offset != nb.offset) changes |= kVemDiffMoved;
        if (na.end - na.start != nb.end - nb.start) changes |= kVemDiffResized;
        const u32 ta = na.node->GetVariableType();
        const u32 tb = nb.node->GetVariableType();
        const CString& namea = TypeName(na.node);
        const CString& nameb = TypeName(nb.node);
        if (ta != tb || namea != nameb) changes |= kVemDiffRetyped;
        if (!changes) continue;
        Entry& e = Add(kVemDiffVarChanged, b.name, std::string(name));
        e.changes = changes;
        e.oldSegment = na.segment;
        e.oldOffset = na.offset;
        e.oldSize = static_cast<u16>(na.end - na.start);
        e.newSegment = nb.segment;
        e.newOffset = nb.offset;
        e.newSize = static_cast<u16>(nb.end - nb.start);
        e.oldType = ta;
        e.newType = tb;
        e.oldText = namea.str();
        e.newText = nameb.str();
        ++reinit;
    }
    for (u32 i : olds) {
        if (seen[i]) continue;
        const vem::layout::Item& na = a.vars.items[i];
        Entry& e = Add(kVemDiffVarRemoved, a.name, a.vars.Str(na.name));
        e.oldSegment = na.segment;
        e.oldOffset = na.offset;
        e.oldSize = static_cast<u16>(na.end - na.start);
        e.oldType = na.node->GetVariableType();
        e.oldText = TypeName(na.node).str();
    }
}

// The segment tables number by number, and the code of each unit by its checksum.
void tVemLayoutDiff::CompareSegments(const vem::layout::TaskLayout& a, const vem::layout::TaskLayout& b) {
    CSegmentTable* ta = a.task->GetSegmentTable();
    CSegmentTable* tb = b.task->GetSegmentTable();
    const u16 last = std::max(ta ? VemSegTblGetMaxSegmentNo(ta) : u16{0}, tb ? VemSegTblGetMaxSegmentNo(tb) : u16{0});
    for (u32 s = 1; s <= last; ++s) {
        CVemByteArray* sa = ta ? VemSegTblGetSegment(ta, static_cast<u16>(s)) : nullptr;
        CVemByteArray* sb = tb ? VemSegTblGetSegment(tb, static_cast<u16>(s)) : nullptr;
        const vem::layout::SegmentSpan* spanA = a.Segment(static_cast<u16>(s));
        const vem::layout::SegmentSpan* spanB = b.Segment(static_cast<u16>(s));
        const bool code = (spanA && spanA->kind == 2) || (spanB && spanB->kind == 2);
        if (code) {
            if (CodeText(sa) == CodeText(sb)) continue;
            CVemBaseNode* unit = spanB && spanB->unit ? spanB->unit : spanA ? spanA->unit : nullptr;
            CString path = unit ? unit->GetPathName() : CString();
            if (path.IsEmpty() && unit) path = unit->Name;
            Entry& e = Add(kVemDiffCodeChanged, b.name, path.IsEmpty() ? std::to_string(s) : path.str());
            e.oldSegment = e.newSegment = static_cast<u16>(s);
            e.oldText = CodeText(sa);
            e.newText = CodeText(sb);
            continue;
        }
        const u32 la = sa ? VemBaGetLength(sa) : 0;
        const u32 lb = sb ? VemBaGetLength(sb) : 0;
        if ((sa != nullptr) == (sb != nullptr) && la == lb) continue;
        Entry& e = Add(kVemDiffSegmentChanged, b.name, std::to_string(s));
        e.oldSegment = e.newSegment = static_cast<u16>(s);
        e.oldText = sa ? std::to_string(la) : "none";
        e.newText = sb ? std::to_string(lb) : "none";
    }
}

void tVemLayoutDiff::Compare(CVemBaseNode* a, CVemBaseNode* b) {
    const bool sameResource = Upper(a->Name.str()) == Upper(b->Name.str());
    if (!sameResource) {
        Entry& e = Add(kVemDiffResource, std::string(), std::string());
        e.oldText = a->Name.str();
        e.newText = b->Name.str();
    }
    CompareSettings(a, b);
    std::vector<std::unique_ptr<vem::layout::TaskLayout>> la, lb;
    for (CVemBaseNode* task : vem::layout::CompiledTasks(a)) {
        la.push_back(std::make_unique<vem::layout::TaskLayout>());
        vem::layout::BuildTaskLayout(task, *la.back(), false);
    }
    std::unordered_map<std::string, vem::layout::TaskLayout*> byName;
    for (CVemBaseNode* task : vem::layout::CompiledTasks(b)) {
        lb.push_back(std::make_unique<vem::layout::TaskLayout>());
        vem::layout::BuildTaskLayout(task, *lb.back(), false);
        byName.emplace(lb.back()->name, lb.back().get());
    }
    std::string compared;
    std::unordered_map<std::string, bool> matched;
    for (auto& ta : la) {
        auto it = byName.find(ta->name);
        if (it == byName.end()) {
            Add(kVemDiffTaskRemoved, ta->name, std::string());
            incompatible.push_back("task " + ta->name + " is gone");
            continue;
        }
        matched[ta->name] = true;
        compared += (compared.empty() ? "" : ", ") + ta->name;
        CompareVariables(*ta, *it->second);
        CompareSegments(*ta, *it->second);
    }
    for (auto& tb : lb) {
        if (matched.count(tb->name)) continue;
        Add(kVemDiffTaskAdded, tb->name, std::string());
        incompatible.push_back("task " + tb->name + " is new");
    }
    if (!sameResource) {
        incompatible.insert(incompatible.begin(), "different resources " + a->Name.str() + " and " + b->Name.str());
        reason = "different resources " + a->Name.str() + " and " + b->Name.str() + "; compared: the device settings" +
                 (compared.empty() ? "" : " and the tasks " + compared);
        verdict = kVemDiffIncompatible;
        return;
    }
    if (!incompatible.empty()) {
        verdict = kVemDiffIncompatible;
        for (std::size_t i = 0; i < incompatible.size(); ++i) reason += (i ? "; " : "") + incompatible[i];
    } else if (reinit) {
        verdict = kVemDiffReinit;
        reason = std::to_string(reinit) +
                 (reinit == 1 ? " variable moved, resized or retyped" : " variables moved, resized or retyped");
    } else if (!entries.empty()) {
        verdict = kVemDiffCompatible;
        reason = "every surviving variable keeps its place";
    } else {
        reason = "equal";
    }
}

extern "C" {

tVemLayoutDiff* VemDiffNew(CVemBaseNode* oldExe, CVemBaseNode* newExe) {
    if (!oldExe || !newExe || oldExe->GetNodeType() != kVemExeNode || newExe->GetNodeType() != kVemExeNode)
        return nullptr;
    auto diff = std::make_unique<tVemLayoutDiff>();
    diff->Compare(oldExe, newExe);
    return diff.release();
}

tVemLayoutDiff* VemDiffFiles(const char* oldFile, const char* newFile) {
    if (!oldFile || !newFile) return nullptr;
    tVemLoadReport report{};
    CVemBaseNode* a = VemLoadNodeReport(oldFile, &report);
    if (!a) return nullptr;
    CVemBaseNode* b = VemLoadNodeReport(newFile, &report);
    tVemLayoutDiff* diff = b ? VemDiffNew(a, b) : nullptr;
    VemDeleteNode(a);
    VemDeleteNode(b);
    return diff;
}

void VemDiffDelete(tVemLayoutDiff* diff) { delete diff; }

int VemDiffCount(tVemLayoutDiff* diff) { return diff ? static_cast<int>(diff->entries.size()) : 0; }

int VemDiffGetEntry(tVemLayoutDiff* diff, int index, tVemDiffEntry* entry) {
    if (!diff || !entry || index < 0 || static_cast<std::size_t>(index) >= diff->entries.size()) return 0;
    const Entry& e = diff->entries[static_cast<std::size_t>(index)];
    *entry = tVemDiffEntry{e.kind,      e.changes, e.task.c_str(),    e.path.c_str(),   e.oldSegment,
                           e.oldOffset, e.oldSize, e.newSegment,      e.newOffset,      e.newSize,
                           e.oldType,   e.newType, e.oldText.c_str(), e.newText.c_str()};
    return 1;
}

int VemDiffVerdict(tVemLayoutDiff* diff) { return diff ? diff->verdict : kVemDiffIncompatible; }

const char* VemDiffReason(tVemLayoutDiff* diff) { return diff ? diff->reason.c_str() : ""; }

}  // extern "C"
