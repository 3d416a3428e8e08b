// The layout of a compiled task's variables: the walk of the path map, the placement of array
// elements that have no nodes, and the pieces of innermost variables.
#include "project/varlayout.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

#include "variables/array.h"
#include "variables/struct.h"
#include "vem_bytearray.h"
#include "vem_segtbl.h"

namespace vem::layout {

namespace {

std::string Upper(std::string text) {
    for (char& c : text) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    return text;
}

// The path map cuts a prefix before its first blank past the first character.
void CutAtBlank(std::string& path) {
    const auto blank = path.find(' ');
    if (blank != std::string::npos && blank > 0) path.resize(blank);
}

u32 RoundUp(u32 value, u32 to) { return to > 1 && value % to ? value + to - value % to : value; }

bool IsString(u32 type) { return type == kCbeTypeString || type == kCbeTypeWString; }

// The cursor behind an element, as an expansion moves it (16 bits are left to the caller).
u32 NextCursor(u32 cursor, u32 size, u32 alignment, u32 byteSize, bool string) {
    cursor += size;
    if (size > alignment) cursor = RoundUp(cursor, string && alignment == 4 ? 2 : alignment);
    if ((byteSize == 2 || byteSize == 4) && byteSize > size) cursor += byteSize - size;
    return cursor;
}

void AppendUpper(std::string& to, const char* text, std::size_t length) {
    const std::size_t at = to.size();
    to.append(text, length);
    for (std::size_t i = at; i < to.size(); ++i) {
        char& c = to[i];
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
}

// " [ 1 , 2 ] " behind the array's name turns into "[1,2]".
void AppendElementSuffix(std::string& to, const CString& arrayName, const CString& elementName, long ordinal) {
    const std::size_t prefix = static_cast<std::size_t>(arrayName.GetLength());
    const std::size_t length = static_cast<std::size_t>(elementName.GetLength());
    const char* text = elementName.GetString();
    std::size_t i = prefix;
    if (length > prefix && std::memcmp(text, arrayName.GetString(), prefix) == 0) {
        while (i < length && text[i] == ' ') ++i;
        if (i < length && text[i] == '[') {
            for (; i < length; ++i) {
                if (text[i] != ' ') to.push_back(text[i]);
            }
            return;
        }
    }
    to.push_back('[');
    to.append(std::to_string(ordinal));
    to.push_back(']');
}

// A key that is the item's own name.
constexpr u32 kSelf = kNone - 1;

struct Frame {
    bool relative = false;  // inside an array element: offsets from delta, not from the segment
    i64 delta = 0;
};

class Builder {
public:
    Builder(Layout& layout, const std::vector<u32>& abs, u8 alignment, u8 byteSize, bool elements = true)
        : L(layout), m_abs(abs), m_alignment(alignment ? alignment : 1), m_byteSize(byteSize), m_elements(elements) {}

    std::unordered_map<u16, std::pair<CVemBaseNode*, int>> owners;  // segment -> unit, kind

    void NoteUnit(CVemBaseNode* unit) {
        owners.emplace(unit->GetDataSegment(), std::make_pair(unit, 1));
        owners.emplace(unit->GetCodeSegment(), std::make_pair(unit, 2));
    }

    // A new text: the prefix, a dot and the name in upper case. Gives its offset and length.
    std::pair<u32, u32> Text(const std::string& prefix, const CString& name) {
        const auto at = static_cast<u32>(L.arena.size());
        L.arena += prefix;
        L.arena.push_back('.');
        AppendUpper(L.arena, name.GetString(), static_cast<std::size_t>(name.GetLength()));
        const auto length = static_cast<u32>(L.arena.size() - at);
        L.arena.push_back('\0');
        return {at, length};
    }
    // A new text that continues an earlier one.
    std::pair<u32, u32> Continue(std::pair<u32, u32> base) {
        const auto at = static_cast<u32>(L.arena.size());
        L.arena.append(L.arena, base.first, base.second);
        return {at, base.second};
    }
    std::pair<u32, u32> Close(std::pair<u32, u32> text) {
        text.second = static_cast<u32>(L.arena.size() - text.first);
        L.arena.push_back('\0');
        return text;
    }

    // The children of a node by the rules of the path map.
    void Walk(CVemBaseNode* parent, std::string prefix, int depth) {
        if (depth > kMaxDepth) return;
        CutAtBlank(prefix);
        for (POSITION pos = parent->Children.GetHeadPosition(); pos;) {
            CVemBaseNode* look = parent->ChildAt(pos);
            if (look->GetNodeType() == kVemFbInstanceNode && look->IsReference()) {
                look = look->GetReferenceNode();
                if (!look) continue;
            }
            switch (look->GetNodeType()) {
                case kVemFbNode:
                case kVemFunctionNode: {
                    if (!m_units.insert(look).second) break;  // reached before, through another instance
                    std::string name = look->Name.str();
                    const auto colon = name.find(':');
                    if (colon != std::string::npos && colon > 0) name.resize(colon);
                    NoteUnit(look);
                    std::string full;
                    full.reserve(prefix.size() + 1 + name.size());
                    full.append(prefix).append(1, '.').append(name);
                    Walk(look, Upper(std::move(full)), depth + 1);
                    break;
                }
                case kVemStructNode: {
                    const auto text = Text(prefix, look->Name);
                    const u32 item = Add(look, text.first, kSelf, Frame{}, true, -1);
                    if (item != kNone) Walk(look, std::string(L.Str(text.first), text.second), depth + 1);
                    break;
                }
                case kVemTuiTaskNode: Walk(look, Upper(prefix + look->Name.str()), depth + 1); break;
                case kVemFbInstanceNode:  // an instance that holds its data itself: only its own place
                    Add(look, Text(prefix, look->Name).first, kSelf, Frame{}, true, -1);
                    break;
                default: AddVariable(look, Text(prefix, look->Name), kSelf, Frame{}, false, 0, -1, depth); break;
            }
        }
    }

    // A variable with what lies inside it. key is the text of the path map's form.
    void AddVariable(CVemBaseNode* node, std::pair<u32, u32> name, u32 key, Frame frame, bool element, i64 elementBase,
                     i32 index, int depth) {
        if (depth > kMaxDepth) return;
        const u32 item = Add(node, name.first, key, frame, !element && !frame.relative, index);
        if (item == kNone) return;
        const u32 start = L.items[item].start;
        key = L.items[item].key;
        if (node->NodeType == kVemArrayNode && node->IsKindOf(RUNTIME_CLASS(CVemArrayNode))) {
            auto* array = static_cast<CVemArrayNode*>(node);
            if (!m_elements) return;  // the array as one variable, its size as the compiler gave it
            if (array->ElementNode) {
                Unexpanded(array, item, depth);
            } else {
                long ordinal = 0;
                u32 end = L.items[item].end;
                for (POSITION pos = array->Children.GetHeadPosition(); pos; ++ordinal) {
                    CVemBaseNode* child = array->ChildAt(pos);
                    const u32 before = static_cast<u32>(L.items.size());
                    auto text = Continue(name);
                    AppendElementSuffix(L.arena, array->Name, child->Name, ordinal);
                    AddVariable(child, Close(text), key, frame, true, 0, static_cast<i32>(ordinal), depth + 1);
                    if (L.items.size() > before) end = std::max(end, L.items[before].end);
                }
                L.items[item].end = end;
            }
            return;
        }
        if (node->Children.IsEmpty() || node->GetNodeType() != kVemStructNode) return;
        // The members of a structure that is an element were not moved with it: they count from it.
        const Frame inner = element ? Frame{true, static_cast<i64>(start) - elementBase} : frame;
        for (POSITION pos = node->Children.GetHeadPosition(); pos;) {
            CVemBaseNode* member = node->ChildAt(pos);
            auto text = Continue(name);
            L.arena.push_back('.');
            AppendUpper(L.arena, member->Name.GetString(), static_cast<std::size_t>(member->Name.GetLength()));
            AddVariable(member, Close(text), inner.relative ? key : kSelf, inner, false, 0, -1, depth + 1);
        }
    }

private:
    Layout& L;
    const std::vector<u32>& m_abs;
    u8 m_alignment;
    u8 m_byteSize;
    bool m_elements;
    std::unordered_set<CVemBaseNode*> m_units;
    u32 m_order = 0;

    // The item of a node at its place; kNone for a node outside every segment.
    u32 Add(CVemBaseNode* node, u32 name, u32 key, Frame frame, bool top, i32 index) {
        i64 start = 0;
        const u16 offset = node->GetOffset();
        const u16 segment = node->GetParentSegment();
        if (frame.relative) {
            start = frame.delta + offset;
        } else {
            if (segment >= m_abs.size()) return kNone;
            start = static_cast<i64>(m_abs[segment]) + offset;
        }
        if (start < 0 || start > 0xFFFFFFFFll) return kNone;
        u32 size = node->GetSize();
        if (size == 0xFFFF && node->NodeType == kVemArrayNode && node->IsKindOf(RUNTIME_CLASS(CVemArrayNode))) {
            size = 0;  // from its elements
        }
        if (static_cast<u64>(start) + size > 0xFFFFFFFFull) return kNone;  // beyond the block: no place
        Item item;
        item.node = node;
        item.start = static_cast<u32>(start);
        item.end = static_cast<u32>(start) + size;
        item.order = m_order++;
        item.name = name;
        item.key = key == kSelf ? item.name : key;
        item.element = index;
        item.segment = segment;
        item.offset = offset;
        item.top = top;
        L.items.push_back(item);
        return static_cast<u32>(L.items.size() - 1);
    }

    void Unexpanded(CVemArrayNode* array, u32 item, int depth) {
        const CVemDimRange& range = array->Range;
        ArrayLayout layout;
        u64 count = range.DimSize ? 1 : 0;
        for (int d = 0; d < range.DimSize; ++d) {
            if (d >= range.LowBounds.GetSize() || d >= range.HighBounds.GetSize()) return;  // no bounds: no elements
            const auto low = static_cast<i32>(range.LowBounds.GetAt(d));
            const auto high = static_cast<i32>(range.HighBounds.GetAt(d));
            layout.dims.emplace_back(low, high);
            count *= static_cast<u64>(high >= low ? static_cast<i64>(high) - low + 1 : 1);
            if (count > CVemArrayNode::kMaxElements) return;  // more than an expansion makes
        }
        if (count == 0) return;
        CVemBaseNode* proto = array->ElementNode.get();
        const bool string = IsString(proto->GetVariableType());
        layout.size = string ? static_cast<u16>(array->ElementSizeOfType * m_byteSize) : proto->GetSize();
        // Places in the segment's 16 bits, as the expansion counts; the elements past 65535 wrap
        // there and are left out here.
        const i64 base = static_cast<i64>(L.items[item].start) - array->Offset;
        const u32 c0 = array->Offset + RoundUp(array->HeaderLength, m_alignment);
        const u32 c1 = NextCursor(c0, layout.size, m_alignment, m_byteSize, string);
        const u32 c2 = NextCursor(c1, layout.size, m_alignment, m_byteSize, string);
        layout.stride = c2 - c1;
        u64 fit = 0;
        if (c0 + layout.size <= 0x10000) fit = 1;
        if (fit && layout.stride && c1 + layout.size <= 0x10000)
            fit += 1 + (0x10000 - c1 - layout.size) / layout.stride;
        layout.count = static_cast<u32>(std::min<u64>(count, fit));
        if (layout.count == 0 || base < 0 || base + 0x10000 > 0xFFFFFFFFll) return;
        layout.first = static_cast<u32>(base + c0);
        layout.second = static_cast<u32>(base + c1);
        const u32 lastStart = layout.count == 1 ? layout.first : layout.second + (layout.count - 2) * layout.stride;
        Item& own = L.items[item];
        own.end = std::max(own.end, lastStart + layout.size);
        if (!proto->Children.IsEmpty() || proto->IsKindOf(RUNTIME_CLASS(CVemArrayNode))) {
            layout.element = std::make_unique<Layout>();
            Builder inner(*layout.element, m_abs, m_alignment, m_byteSize);
            const i64 p = proto->GetOffset();
            inner.L.arena.push_back('\0');
            inner.AddVariable(proto, {0, 0}, kNone, Frame{true, -p}, true, p, -1, depth + 1);
            layout.element->Finish();
        }
        L.arrays.push_back(std::move(layout));
        L.items[item].array = static_cast<u32>(L.arrays.size() - 1);
    }
};

// Heap order: the innermost on top, the smallest, and of equal size the later.
struct Outer {
    const std::vector<Item>* items;
    bool operator()(u32 a, u32 b) const {
        const Item& x = (*items)[a];
        const Item& y = (*items)[b];
        const u32 sx = x.end - x.start;
        const u32 sy = y.end - y.start;
        if (sx != sy) return sx > sy;
        return x.order < y.order;
    }
};

void TargetLayout(CVemBaseNode* task, u8& alignment, u8& byteSize) {
    alignment = 1;
    byteSize = 1;
    for (CVemBaseNode* node = task; node; node = node->Parent) {
        if (node->GetNodeType() != kVemExeNode) continue;
        if (const tVemDeviceSettings* settings = node->GetDeviceSettings()) {
            alignment = settings->Alignment ? settings->Alignment : 1;
            byteSize = settings->ByteSize;
        }
        return;
    }
}

}  // namespace

void Pieces::Push(u32 start, u32 item, u32 count) {
    if (!starts.empty() && starts.back() == start) {  // nothing lies between: the later answer holds
        starts.pop_back();
        items.pop_back();
        covering.pop_back();
    }
    if (!starts.empty() && items.back() == item && covering.back() == count) return;
    starts.push_back(start);
    items.push_back(item);
    covering.push_back(count);
}

void Layout::Finish() {
    pieces = Pieces();
    const u32 n = static_cast<u32>(items.size());
    // Outer before inner: by start, the longer first, of equal ones the earlier first. The walk
    // nearly always gives this order already.
    std::vector<u32> order(n);
    for (u32 i = 0; i < n; ++i) order[i] = i;
    const auto before = [&](u32 a, u32 b) {
        const Item& x = items[a];
        const Item& y = items[b];
        if (x.start != y.start) return x.start < y.start;
        if (x.end != y.end) return x.end > y.end;
        return x.order < y.order;
    };
    // A merge sort: quick on a list that is sorted but for a few runs.
    if (!std::is_sorted(order.begin(), order.end(), before)) std::stable_sort(order.begin(), order.end(), before);
    // Nested or apart, the innermost is the top of a stack of the open intervals.
    std::vector<u32> open;
    bool nested = true;
    const auto closeUpTo = [&](u32 x) {
        while (!open.empty() && items[open.back()].end <= x) {
            const u32 end = items[open.back()].end;
            open.pop_back();
            pieces.Push(end, open.empty() ? kNone : open.back(), static_cast<u32>(open.size()));
        }
    };
    for (u32 i : order) {
        const Item& item = items[i];
        closeUpTo(item.start);
        if (!open.empty() && item.end > items[open.back()].end) {
            nested = false;
            break;
        }
        open.push_back(i);
        pieces.Push(item.start, i, static_cast<u32>(open.size()));
    }
    if (nested) {
        closeUpTo(kNone);
        return;
    }
    // Variables that overlap in part: the innermost of a heap of the open ones.
    pieces = Pieces();
    std::vector<u32> ends(order);
    std::stable_sort(ends.begin(), ends.end(), [&](u32 a, u32 b) { return items[a].end < items[b].end; });
    std::vector<u32> heap;
    const Outer outer{&items};
    u32 covering = 0;
    std::size_t i = 0, j = 0;
    while (i < n || j < n) {
        u32 x = j < n ? items[ends[j]].end : kNone;
        if (i < n) x = std::min(x, items[order[i]].start);
        for (; i < n && items[order[i]].start == x; ++i) {
            heap.push_back(order[i]);
            std::push_heap(heap.begin(), heap.end(), outer);
            ++covering;
        }
        for (; j < n && items[ends[j]].end == x; ++j) --covering;
        while (!heap.empty() && items[heap.front()].end <= x) {
            std::pop_heap(heap.begin(), heap.end(), outer);
            heap.pop_back();
        }
        pieces.Push(x, heap.empty() ? kNone : heap.front(), covering);
    }
}

bool Layout::At(u32 position, Piece& piece) const {
    auto it = std::upper_bound(pieces.starts.begin(), pieces.starts.end(), position);
    if (it == pieces.starts.begin()) return false;
    const auto at = static_cast<std::size_t>(it - pieces.starts.begin()) - 1;
    piece = Piece{pieces.starts[at], pieces.items[at], pieces.covering[at]};
    return true;
}

bool ArrayLayout::ElementAt(u32 position, u32& index, u32& start) const {
    if (position >= first && position - first < size) {
        index = 0;
        start = first;
        return true;
    }
    if (count < 2 || position < second || stride == 0) return false;
    const u32 k = (position - second) / stride;
    if (k + 1 >= count) return false;
    start = second + k * stride;
    if (position - start >= size) return false;
    index = k + 1;
    return true;
}

std::string ArrayLayout::IndexText(u32 index) const {
    std::vector<i64> parts(dims.size());
    for (std::size_t d = dims.size(); d-- > 0;) {
        const i64 extent = dims[d].second >= dims[d].first ? static_cast<i64>(dims[d].second) - dims[d].first + 1 : 1;
        parts[d] = dims[d].first + static_cast<i64>(index % extent);
        index = static_cast<u32>(index / extent);
    }
    std::string text = "[";
    for (std::size_t d = 0; d < parts.size(); ++d) {
        if (d) text += ",";
        text += std::to_string(parts[d]);
    }
    return text + "]";
}

const SegmentSpan* TaskLayout::Segment(u16 number) const {
    for (const SegmentSpan& span : segments) {
        if (span.segment == number) return &span;
    }
    return nullptr;
}

const SegmentSpan* TaskLayout::SegmentAt(u32 address) const {
    auto it = std::upper_bound(segments.begin(), segments.end(), address,
                               [](u32 a, const SegmentSpan& s) { return a < s.start; });
    while (it != segments.begin()) {
        --it;
        if (address < it->end) return &*it;
        if (it->end <= it->start) continue;  // an empty segment at the same place
        break;
    }
    return nullptr;
}

void BuildTaskLayout(CVemBaseNode* task, TaskLayout& out, bool pieces) {
    out.task = task;
    out.name = Upper(task->Name.str());
    out.vars = Layout();
    out.segments.clear();
    out.abs.clear();
    if (CDWordArray* offsets = task->GetAbsOffsets()) {
        for (int i = 0; i < offsets->GetSize(); ++i) out.abs.push_back(offsets->GetAt(i));
    }
    u8 alignment = 1;
    u8 byteSize = 1;
    TargetLayout(task, alignment, byteSize);
    Builder builder(out.vars, out.abs, alignment, byteSize, pieces);
    builder.NoteUnit(task);
    builder.Walk(task, task->Name.str(), 0);
    if (pieces) out.vars.Finish();
    if (CSegmentTable* table = task->GetSegmentTable()) {
        const u16 last = VemSegTblGetMaxSegmentNo(table);
        for (u32 s = 1; s <= last && s < out.abs.size(); ++s) {
            CVemByteArray* array = VemSegTblGetSegment(table, static_cast<u16>(s));
            if (!array) continue;
            if (static_cast<u64>(out.abs[s]) + VemBaGetLength(array) > 0xFFFFFFFFull) continue;
            SegmentSpan span{out.abs[s], out.abs[s] + VemBaGetLength(array), static_cast<u16>(s), nullptr, 0};
            if (auto it = builder.owners.find(static_cast<u16>(s)); it != builder.owners.end()) {
                span.unit = it->second.first;
                span.kind = it->second.second;
            }
            out.segments.push_back(span);
        }
    }
    std::stable_sort(out.segments.begin(), out.segments.end(),
                     [](const SegmentSpan& a, const SegmentSpan& b) { return a.start < b.start; });
}

std::vector<CVemBaseNode*> CompiledTasks(CVemBaseNode* root) {
    std::vector<CVemBaseNode*> tasks;
    std::vector<std::pair<CVemBaseNode*, int>> stack{{root, 0}};
    while (!stack.empty()) {
        auto [node, depth] = stack.back();
        stack.pop_back();
        if (node->GetNodeType() == kVemTuiTaskNode) {
            tasks.push_back(node);
            continue;
        }
        if (depth >= kMaxDepth) continue;
        std::vector<CVemBaseNode*> children;
        for (POSITION pos = node->Children.GetHeadPosition(); pos;) children.push_back(node->ChildAt(pos));
        for (auto it = children.rbegin(); it != children.rend(); ++it) stack.emplace_back(*it, depth + 1);
    }
    return tasks;
}

}  // namespace vem::layout
