// Address to variable: the index over the layouts of compiled tasks, and its flat functions.
#include <cstring>
#include <memory>

#include "node/layoutepoch.h"
#include "project/varlayout.h"
#include "vem_ext.h"

using vem::layout::kNone;

struct tVemAddressIndex {
    CVemBaseNode* root = nullptr;
    u64 epoch = 0;
    std::vector<std::unique_ptr<vem::layout::TaskLayout>> tasks;
    std::string name;  // of the last hit, where it was made

    void Build() {
        tasks.clear();
        for (CVemBaseNode* task : vem::layout::CompiledTasks(root)) {
            auto layout = std::make_unique<vem::layout::TaskLayout>();
            vem::layout::BuildTaskLayout(task, *layout);
            tasks.push_back(std::move(layout));
        }
        epoch = gVemLayoutEpoch;
    }
    void Refresh() {
        if (epoch != gVemLayoutEpoch) Build();
    }

    int Lookup(int task, u32 address, tVemAddressHit* hit);
};

namespace {

// The innermost part inside an element of an array without element nodes. origin is the absolute
// address of the layout's position 0.
void Descend(const vem::layout::Layout& layout, u32 item, u32 origin, u32 address, std::string& name,
             tVemAddressHit& hit, int depth) {
    const vem::layout::Item& it = layout.items[item];
    if (it.array == kNone || depth > vem::layout::kMaxDepth) return;
    const vem::layout::ArrayLayout& array = layout.arrays[it.array];
    u32 index = 0;
    u32 start = 0;
    if (!array.ElementAt(address - origin, index, start)) return;
    name += array.IndexText(index);
    hit.Element = static_cast<i32>(index);
    hit.Start = origin + start;
    hit.Size = array.size;
    ++hit.Covering;
    if (!array.element) return;
    const vem::layout::Layout& inner = *array.element;
    const u32 elementOrigin = origin + start;
    vem::layout::Piece piece{};
    if (!inner.At(address - elementOrigin, piece) || piece.item == kNone) return;
    const vem::layout::Item& part = inner.items[piece.item];
    hit.Covering += piece.covering - 1;  // the element itself is counted
    if (part.order != 0) {               // a part of the prototype, not the prototype itself
        name += inner.Str(part.name);
        hit.Node = part.node;
        hit.Start = elementOrigin + part.start;
        hit.Size = part.end - part.start;
        hit.Element = -1;
    }
    Descend(inner, piece.item, elementOrigin, address, name, hit, depth + 1);
}

}  // namespace

int tVemAddressIndex::Lookup(int task, u32 address, tVemAddressHit* hit) {
    std::memset(hit, 0, sizeof *hit);
    hit->Segment = 0xFFFF;
    hit->Element = -1;
    hit->Address = address;
    hit->Path = "";
    hit->Name = "";
    if (task < 0 || static_cast<std::size_t>(task) >= tasks.size()) return kVemAddrBadTask;
    const vem::layout::TaskLayout& t = *tasks[static_cast<std::size_t>(task)];
    hit->Task = t.task;
    if (const vem::layout::SegmentSpan* span = t.SegmentAt(address)) {
        hit->Segment = span->segment;
        hit->SegmentOffset = static_cast<u16>(address - span->start);
        hit->Unit = span->unit;
        hit->UnitSegment = span->kind;
    }
    vem::layout::Piece piece{};
    if (!t.vars.At(address, piece) || piece.item == kNone) return kVemAddrNoVariable;
    const vem::layout::Item& item = t.vars.items[piece.item];
    hit->Node = item.node;
    hit->Start = item.start;
    hit->Size = item.end - item.start;
    hit->Element = item.element;
    hit->Covering = piece.covering;
    hit->Path = t.vars.Str(item.key != kNone ? item.key : item.name);
    hit->Name = t.vars.Str(item.name);
    if (item.array != kNone) {  // an element without a node: its name is made here
        name = hit->Name;
        Descend(t.vars, piece.item, 0, address, name, *hit, 0);
        hit->Name = name.c_str();
    }
    hit->ByteOffset = address - hit->Start;
    return kVemAddrFound;
}

extern "C" {

tVemAddressIndex* VemAddrIndexNew(CVemBaseNode* node) {
    if (!node || (node->GetNodeType() != kVemTuiTaskNode && node->GetNodeType() != kVemExeNode)) return nullptr;
    auto index = std::make_unique<tVemAddressIndex>();
    index->root = node;
    index->Build();
    return index.release();
}

void VemAddrIndexDelete(tVemAddressIndex* index) { delete index; }

int VemAddrIndexTaskCount(tVemAddressIndex* index) {
    if (!index) return 0;
    index->Refresh();
    return static_cast<int>(index->tasks.size());
}

CVemBaseNode* VemAddrIndexGetTask(tVemAddressIndex* index, int task) {
    if (!index) return nullptr;
    index->Refresh();
    if (task < 0 || static_cast<std::size_t>(task) >= index->tasks.size()) return nullptr;
    return index->tasks[static_cast<std::size_t>(task)]->task;
}

int VemAddrIndexFindTask(tVemAddressIndex* index, const char* name) {
    if (!index || !name) return -1;
    index->Refresh();
    std::string upper(name);
    for (char& c : upper) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    for (std::size_t i = 0; i < index->tasks.size(); ++i) {
        if (index->tasks[i]->name == upper) return static_cast<int>(i);
    }
    return -1;
}

int VemAddrIndexIsCurrent(tVemAddressIndex* index) { return index && index->epoch == gVemLayoutEpoch ? 1 : 0; }

int VemAddrLookup(tVemAddressIndex* index, int task, u32 address, tVemAddressHit* hit) {
    if (!index || !hit) return kVemAddrBadTask;
    index->Refresh();
    return index->Lookup(task, address, hit);
}

int VemAddrLookupSegment(tVemAddressIndex* index, int task, u16 segment, u16 offset, tVemAddressHit* hit) {
    if (!index || !hit) return kVemAddrBadTask;
    index->Refresh();
    if (task < 0 || static_cast<std::size_t>(task) >= index->tasks.size()) return index->Lookup(task, 0, hit);
    const vem::layout::TaskLayout& t = *index->tasks[static_cast<std::size_t>(task)];
    if (segment >= t.abs.size()) {  // a segment the task has no place for
        index->Lookup(task, 0, hit);
        std::memset(hit, 0, sizeof *hit);
        hit->Task = t.task;
        hit->Segment = 0xFFFF;
        hit->Element = -1;
        hit->Path = "";
        hit->Name = "";
        return kVemAddrNoVariable;
    }
    return index->Lookup(task, t.abs[segment] + offset, hit);
}

}  // extern "C"
