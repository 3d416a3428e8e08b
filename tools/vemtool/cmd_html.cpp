// html: a compile result as one self-contained page: the tree, a search by path and by address,
// and the details of a node, with the data embedded as compact JSON that the page's script reads.
//
// The data is the model that export writes (model.h), put column-wise (arrays rather than objects)
// with every text once in a string table; see the description of the format at the top of
// html/page.js.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "model.h"

namespace vemtool {

// The page's parts, embedded from tools/vemtool/html at build time.
extern const unsigned char kHtmlPageBody[];
extern const unsigned char kHtmlPageCss[];
extern const unsigned char kHtmlPageJs[];

namespace {

char AsciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
std::string Upper(std::string s) {
    for (char& c : s) c = AsciiUpper(c);
    return s;
}

// The text in front of " : ", as the cross reference names a node.
std::string CallName(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0) return text;
    return text.substr(0, colon - 1);
}

// --- JSON text, written compactly. Texts are 8-bit; everything outside printable ASCII and the
// characters that mean something in HTML are escaped, so the data can stand inside a script element.
class Out {
public:
    std::string text;
    void Raw(const char* s) { text += s; }
    void Raw(char c) { text += c; }
    void Num(long long v) { text += std::to_string(v); }
    void Str(const std::string& s) {
        static const char kHex[] = "0123456789abcdef";
        text += '"';
        for (unsigned char c : s) {
            if (c >= 0x20 && c < 0x7F && c != '"' && c != '\\' && c != '<' && c != '>' && c != '&' && c != '\'') {
                text += static_cast<char>(c);
            } else {
                text += "\\u00";
                text += kHex[c >> 4];
                text += kHex[c & 15];
            }
        }
        text += '"';
    }
    void Nums(const char* key, const std::vector<long long>& values) {
        Str(key);
        text += ":[";
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (i) text += ',';
            Num(values[i]);
        }
        text += ']';
    }
};

// Every text once; index 0 is the empty text.
class Strings {
public:
    Strings() { Id(std::string()); }
    long long Id(const std::string& s) {
        auto [it, added] = ids_.emplace(s, static_cast<long long>(list_.size()));
        if (added) list_.push_back(s);
        return it->second;
    }
    const std::vector<std::string>& List() const { return list_; }

private:
    std::unordered_map<std::string, long long> ids_;
    std::vector<std::string> list_;
};

// --- Pictures: the library's icons and bitmaps as PNG images (stored deflate blocks, no compression).
class Png {
public:
    static std::string DataUri(int width, int height, const std::vector<u32>& rgba) {
        std::string raw;
        for (int y = 0; y < height; ++y) {
            raw += '\0';  // no filter
            for (int x = 0; x < width; ++x) {
                const u32 p = rgba[static_cast<std::size_t>(y * width + x)];
                raw += static_cast<char>(p >> 24);
                raw += static_cast<char>(p >> 16);
                raw += static_cast<char>(p >> 8);
                raw += static_cast<char>(p);
            }
        }
        std::string png = "\x89PNG\r\n\x1a\n";
        std::string ihdr;
        Be32(ihdr, static_cast<u32>(width));
        Be32(ihdr, static_cast<u32>(height));
        ihdr += std::string("\x08\x06\x00\x00\x00", 5);  // 8 bits, RGBA
        Chunk(png, "IHDR", ihdr);
        Chunk(png, "IDAT", Zlib(raw));
        Chunk(png, "IEND", "");
        return "data:image/png;base64," + Base64(png);
    }

private:
    static void Be32(std::string& out, u32 v) {
        for (int s = 24; s >= 0; s -= 8) out += static_cast<char>(v >> s);
    }
    static u32 Crc(const std::string& data) {
        u32 crc = 0xFFFFFFFFu;
        for (unsigned char c : data) {
            crc ^= c;
            for (int k = 0; k < 8; ++k) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
        }
        return crc ^ 0xFFFFFFFFu;
    }
    static void Chunk(std::string& png, const char* type, const std::string& data) {
        Be32(png, static_cast<u32>(data.size()));
        const std::string body = type + data;
        png += body;
        Be32(png, Crc(body));
    }
    static std::string Zlib(const std::string& raw) {
        std::string out = "\x78\x01";
        std::size_t at = 0;
        do {
            const std::size_t n = std::min<std::size_t>(raw.size() - at, 65535);
            out += static_cast<char>(at + n == raw.size() ? 1 : 0);
            out += static_cast<char>(n & 0xFF);
            out += static_cast<char>(n >> 8);
            out += static_cast<char>(~n & 0xFF);
            out += static_cast<char>((~n >> 8) & 0xFF);
            out.append(raw, at, n);
            at += n;
        } while (at < raw.size());
        u32 a = 1, b = 0;
        for (unsigned char c : raw) {
            a = (a + c) % 65521;
            b = (b + a) % 65521;
        }
        Be32(out, (b << 16) | a);
        return out;
    }
    static std::string Base64(const std::string& in) {
        static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string out;
        for (std::size_t i = 0; i < in.size(); i += 3) {
            const u32 b0 = static_cast<unsigned char>(in[i]);
            const u32 b1 = i + 1 < in.size() ? static_cast<unsigned char>(in[i + 1]) : 0;
            const u32 b2 = i + 2 < in.size() ? static_cast<unsigned char>(in[i + 2]) : 0;
            const u32 v = (b0 << 16) | (b1 << 8) | b2;
            out += kDigits[(v >> 18) & 63];
            out += kDigits[(v >> 12) & 63];
            out += i + 1 < in.size() ? kDigits[(v >> 6) & 63] : '=';
            out += i + 2 < in.size() ? kDigits[v & 63] : '=';
        }
        return out;
    }
};

// A picture of the library's module as RGBA; a transparent pixel stays clear.
std::string PictureUri(bool icon, unsigned id) {
    int width = 0, height = 0;
    std::vector<u32> rgba;
    auto take = [&](auto pixel) {
        rgba.resize(static_cast<std::size_t>(width * height));
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const COLORREF c = pixel(x, y);
                rgba[static_cast<std::size_t>(y * width + x)] =
                    c == kVemNoColor
                        ? 0
                        : ((c & 0xFF) << 24) | (((c >> 8) & 0xFF) << 16) | (((c >> 16) & 0xFF) << 8) | 0xFF;
            }
        }
    };
    if (icon) {
        const auto* module = static_cast<const CVemResourceModule*>(GetResourceHandleVemDll());
        CSize size;
        if (!module || !module->FindPicture(VemResourceKind::Icon, id, &size)) return std::string();
        width = size.cx;
        height = size.cy;
        take([&](int x, int y) { return module->GetPixel(VemResourceKind::Icon, id, x, y); });
    } else {
        CBitmap bitmap;
        if (!VemDllLoadBitmapID(&bitmap, id)) return std::string();
        width = bitmap.Width();
        height = bitmap.Height();
        take([&](int x, int y) { return bitmap.GetPixel(x, y); });
    }
    if (width <= 0 || height <= 0) return std::string();
    return Png::DataUri(width, height, rgba);
}

// --- The page's data: the compile result's model written column-wise, and what the page derives from
// the library beside it (path maps, the address index's answers, line maps, cross reference).
class Page {
public:
    Page(CVemBaseNode* root, const std::string& file) : root_(root), file_(file), model_(root) {}
    std::string Data();
    std::string AddressData();
    std::size_t Size() const { return model_.Nodes().size(); }

private:
    void Nodes();
    void Keys();
    void Units();
    void LineMaps();
    void CrossReference();
    void Pictures();

    CVemBaseNode* root_;
    std::string file_;
    Model model_;
    Strings strings_;
    Out out_;
    std::set<unsigned> icons_{102, 113}, bitmaps_{156, 157, 158};
};

void Page::Nodes() {
    std::map<std::vector<long long>, long long> kinds, attrs;
    std::vector<long long> kind, name, text, children, open, attr, offset;
    for (const ModelNode& n : model_.Nodes()) {
        icons_.insert(n.icon);
        bitmaps_.insert(n.bitmap ? n.bitmap : 158);
        const std::vector<long long> k{n.type, n.icon, n.bitmap, strings_.Id(n.className)};
        kind.push_back(kinds.emplace(k, static_cast<long long>(kinds.size())).first->second);
        const std::string bare = n.name.str();
        const std::string shown = n.text.str();
        name.push_back(strings_.Id(bare));
        children.push_back(n.children);
        open.push_back(n.expanded ? 1 : 0);
        std::string derived = bare;
        if (const VariableRecord* v = n.variable ? &*n.variable : nullptr) {
            const std::string typeName = v->declaredType.str();
            if (!typeName.empty()) derived += " : " + typeName;
            const long long flags =
                (v->reference ? 1 : 0) | (v->netVar ? 2 : 0) | (v->varInOut ? 4 : 0) | (v->canBeWatched ? 8 : 0);
            const std::vector<long long> a{strings_.Id(typeName), v->size,          v->variableType,   v->scope,
                                           v->qualifier,          v->parentSegment, v->subSegmentKind, flags,
                                           v->programNr};
            attr.push_back(attrs.emplace(a, static_cast<long long>(attrs.size()) + 1).first->second);
            offset.push_back(v->offset);
        } else {
            attr.push_back(0);
            offset.push_back(0);
        }
        text.push_back(shown == derived ? 0 : strings_.Id(shown) + 1);
    }
    out_.Raw("\"kinds\":[");
    std::vector<std::vector<long long>> kindList(kinds.size());
    for (const auto& [k, id] : kinds) kindList[static_cast<std::size_t>(id)] = k;
    for (std::size_t i = 0; i < kindList.size(); ++i) {
        out_.Raw(i ? ",[" : "[");
        for (std::size_t j = 0; j < kindList[i].size(); ++j) {
            if (j) out_.Raw(',');
            out_.Num(kindList[i][j]);
        }
        out_.Raw(']');
    }
    out_.Raw("],\"attrs\":[");
    std::vector<std::vector<long long>> attrList(attrs.size());
    for (const auto& [a, id] : attrs) attrList[static_cast<std::size_t>(id - 1)] = a;
    for (std::size_t i = 0; i < attrList.size(); ++i) {
        out_.Raw(i ? ",[" : "[");
        for (std::size_t j = 0; j < attrList[i].size(); ++j) {
            if (j) out_.Raw(',');
            out_.Num(attrList[i][j]);
        }
        out_.Raw(']');
    }
    out_.Raw("],");
    out_.Nums("kind", kind);
    out_.Raw(',');
    out_.Nums("name", name);
    out_.Raw(',');
    out_.Nums("text", text);
    out_.Raw(',');
    out_.Nums("children", children);
    out_.Raw(',');
    out_.Nums("open", open);
    out_.Raw(',');
    out_.Nums("attr", attr);
    out_.Raw(',');
    out_.Nums("offset", offset);
}

// The path maps of the compiled tasks, with the address of every key as the library gives it.
// Sorted by address within a task, so that the same entries answer the search by address.
void Page::Keys() {
    struct Entry {
        u32 address;
        long long node, prefix, suffix;
    };
    std::vector<long long> tasks, node, prefix, suffix, address;
    for (CVemBaseNode* task : CompiledTasks(root_)) {
        VemCreateChildNodePathList(task);
        CMapStringToOb* map = VemGetNodePath2NodeList(task);
        if (!map) continue;
        std::vector<Entry> entries;
        CString key;
        CObject* value = nullptr;
        for (POSITION pos = map->GetStartPosition(); pos;) {
            map->GetNextAssoc(pos, key, value);
            const int found = model_.IndexOf(static_cast<CVemBaseNode*>(value));
            if (found < 0) continue;
            const std::string k = key.str();
            const std::size_t dot = k.rfind('.');
            const std::string head = dot == std::string::npos ? std::string() : k.substr(0, dot);
            const std::string tail = dot == std::string::npos ? k : k.substr(dot + 1);
            const bool plain = tail == Upper(VemGetName(static_cast<CVemBaseNode*>(value)).str());
            entries.push_back({VemGetAbsoluteVariableOffset(task, key), found,
                               dot == std::string::npos ? 0 : strings_.Id(head) + 1,
                               plain ? 0 : strings_.Id(tail) + 1});
        }
        std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
            return a.address != b.address ? a.address < b.address : a.node < b.node;
        });
        tasks.push_back(model_.IndexOf(task));
        tasks.push_back(static_cast<long long>(entries.size()));
        u32 last = 0;
        for (const Entry& e : entries) {
            node.push_back(e.node);
            prefix.push_back(e.prefix);
            suffix.push_back(e.suffix);
            address.push_back(static_cast<long long>(e.address) - last);
            last = e.address;
        }
    }
    out_.Raw(',');
    out_.Nums("keyTasks", tasks);
    out_.Raw(',');
    out_.Nums("keyNode", node);
    out_.Raw(',');
    out_.Nums("keyPrefix", prefix);
    out_.Raw(',');
    out_.Nums("keySuffix", suffix);
    out_.Raw(',');
    out_.Nums("keyAddress", address);
}

// Units with their segments; the bytes of a segment only once, and only of segments that a unit names.
void Page::Units() {
    std::map<std::pair<long long, u16>, long long> segments;
    Out segs;
    out_.Raw(",\"units\":[");
    bool first = true;
    const std::vector<ModelNode>& nodes = model_.Nodes();
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const UnitRecord* unit = nodes[i].unit ? &*nodes[i].unit : nullptr;
        if (!unit) continue;
        // The segment numbers count in the table of the nearest compiled task or executable above.
        const int owner = model_.TableOwner(static_cast<int>(i));
        const SegmentTableRecord* table =
            owner < 0 ? nullptr : &*nodes[static_cast<std::size_t>(owner)].compiled->segmentTable;
        out_.Raw(first ? "[" : ",[");
        first = false;
        out_.Num(static_cast<long long>(i));
        for (const u16 number : {unit->codeSegment, unit->dataSegment, unit->iniSegment}) {
            out_.Raw(',');
            const SegmentRecord* segment = table && number != 0xFFFF ? table->Find(number) : nullptr;
            if (!segment) {
                out_.Num(-1);
                continue;
            }
            CVemByteArray* array = segment->array;
            const auto key = std::make_pair(static_cast<long long>(owner), number);
            auto [it, added] = segments.emplace(key, static_cast<long long>(segments.size()));
            if (added) {
                static const char kHex[] = "0123456789abcdef";
                std::string hex;
                const u8* bytes = VemBaGetBytePointer(array);
                for (u32 b = 0; b < VemBaGetLength(array); ++b) {
                    hex += kHex[bytes[b] >> 4];
                    hex += kHex[bytes[b] & 15];
                }
                segs.Raw(segs.text.empty() ? "[" : ",[");
                segs.Num(key.first);
                segs.Raw(',');
                segs.Num(number);
                segs.Raw(',');
                segs.Num(VemBaGetByteSize(array));
                segs.Raw(',');
                segs.Num(VemBaIsMotorolaFormat(array) ? 1 : 0);
                segs.Raw(',');
                segs.Str(hex);
                segs.Raw(']');
            }
            out_.Num(it->second);
        }
        out_.Raw(',');
        out_.Num(strings_.Id(unit->path.str()));
        out_.Raw(',');
        out_.Num(strings_.Id(unit->codePathName.str()));
        out_.Raw(',');
        out_.Num(unit->checkSum);
        out_.Raw(',');
        out_.Num(unit->dataSegLength);
        out_.Raw(',');
        out_.Num(unit->programNr);
        out_.Raw(',');
        out_.Num(unit->global);
        out_.Raw(',');
        out_.Num(unit->date);
        out_.Raw(']');
    }
    out_.Raw("],\"segments\":[");
    out_.Raw(segs.text.c_str());
    out_.Raw(']');
}

void Page::LineMaps() {
    out_.Raw(",\"lineMaps\":[");
    bool first = true;
    if (VemGetNodeType(root_) == kVemExeNode) {
        for (CEVemBaseNode* code : CodeNodes(root_)) {
            const std::string path = EVemGetPathName(code).str();
            CMapStringToString map;
            if (!EVemFillAwlLine2UcodeOffsetMap(root_, path.c_str(), &map)) continue;
            std::vector<std::pair<long long, long long>> lines;
            CString line, offset;
            for (POSITION pos = map.GetStartPosition(); pos;) {
                map.GetNextAssoc(pos, line, offset);
                lines.emplace_back(std::atoll(line), std::atoll(offset));
            }
            std::sort(lines.begin(), lines.end());
            out_.Raw(first ? "[" : ",[");
            first = false;
            out_.Num(strings_.Id(path));
            for (const auto& [l, o] : lines) {
                out_.Raw(',');
                out_.Num(l);
                out_.Raw(',');
                out_.Num(o);
            }
            out_.Raw(']');
        }
    }
    out_.Raw(']');
}

// Reads, writes and calls of every node that a statement can name. A statement names a node only by
// its call name, alone or behind a point, so only nodes with such a name are asked.
void Page::CrossReference() {
    std::vector<long long> hits;
    CMapStringToOb table;
    if (VemGetNodeType(root_) == kVemExeNode && EVemCRBuildPouTableEx(root_, &table)) {
        std::vector<CEVemBaseNode*> codes;
        std::unordered_set<std::string> named;
        CString key;
        CObject* code = nullptr;
        for (POSITION pos = table.GetStartPosition(); pos;) {
            table.GetNextAssoc(pos, key, code);
            codes.push_back(static_cast<CEVemBaseNode*>(code));
            for (CEVemBaseNode* s = EVemGetStatementNode(codes.back()); s; s = EVemGetNext(s)) {
                const std::string operand = EVemGetName(s).str();
                named.insert(operand);
                for (std::size_t dot = operand.find('.'); dot != std::string::npos; dot = operand.find('.', dot + 1)) {
                    named.insert(operand.substr(dot + 1));
                }
            }
        }
        const std::vector<ModelNode>& nodes = model_.Nodes();
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            if (!named.count(CallName(nodes[i].text.str()))) continue;
            CStringList paths;
            CWordArray lines, kinds;
            for (CEVemBaseNode* c : codes) EVemCRExecQueryEx(c, nodes[i].node, &paths, &lines, &kinds, 7);
            int h = 0;
            for (POSITION pos = paths.GetHeadPosition(); pos; ++h) {
                hits.push_back(static_cast<long long>(i));
                hits.push_back(strings_.Id(paths.GetNext(pos).str()));
                hits.push_back(lines.GetAt(h));
                hits.push_back(kinds.GetAt(h));
            }
        }
    }
    out_.Raw(',');
    out_.Nums("xref", hits);
}

void Page::Pictures() {
    out_.Raw(",\"pictures\":{");
    bool first = true;
    for (const auto& [set, icon] : {std::make_pair(&icons_, true), std::make_pair(&bitmaps_, false)}) {
        for (unsigned id : *set) {
            const std::string uri = PictureUri(icon, id);
            if (uri.empty()) continue;
            if (!first) out_.Raw(',');
            first = false;
            std::string key(1, icon ? 'i' : 'b');
            key.append(std::to_string(id));
            out_.Str(key);
            out_.Raw(':');
            out_.Str(uri);
        }
    }
    out_.Raw('}');
}

std::string Page::Data() {
    out_.Raw("{\"format\":1,\"file\":");
    out_.Str(file_);
    out_.Raw(',');
    Nodes();
    Keys();
    Units();
    LineMaps();
    CrossReference();
    Pictures();
    out_.Raw(",\"strings\":[");
    const std::vector<std::string>& list = strings_.List();
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (i) out_.Raw(',');
        out_.Str(list[i]);
    }
    out_.Raw("]}");
    return std::move(out_.text);
}

// Sorted intervals of both lists, overlapping and touching ones joined.
std::vector<std::pair<u64, u64>> Merged(std::vector<std::pair<u64, u64>> a, const std::vector<std::pair<u64, u64>>& b) {
    a.insert(a.end(), b.begin(), b.end());
    std::sort(a.begin(), a.end());
    std::vector<std::pair<u64, u64>> out;
    for (const auto& r : a) {
        if (!out.empty() && r.first <= out.back().second)
            out.back().second = std::max(out.back().second, r.second);
        else if (r.second > r.first)
            out.push_back(r);
    }
    return out;
}

bool Covers(const std::vector<std::pair<u64, u64>>& sorted, u64 a) {
    const auto after = std::upper_bound(sorted.begin(), sorted.end(), std::make_pair(a, ~u64{0}));
    return after != sorted.begin() && a < std::prev(after)->second;
}

// What the library's address index answers for every address that a compiled task's segments or
// variables take, as runs of addresses with the same answer. The page then answers a search by
// address as `query --at` does, without a copy of the index's rules. Addresses outside these
// intervals are outside every segment and every variable.
std::string Page::AddressData() {
    Strings strings;
    Out out;
    tVemAddressIndex* index = VemAddrIndexNew(root_);
    const int taskCount = index ? VemAddrIndexTaskCount(index) : 0;
    std::vector<long long> tasks, spans, runStart, runLength, runNode, runName, runPath, runInto, runSize, runCover;
    const std::vector<ModelNode>& nodes = model_.Nodes();
    for (int t = 0; t < taskCount; ++t) {
        CVemBaseNode* task = VemAddrIndexGetTask(index, t);
        const int at = model_.IndexOf(task);
        // The intervals to ask: the task's segments and its variables. Every address inside a
        // variable is asked; between the ends of segments and variables an address without a
        // variable answers for all up to the next end.
        std::vector<std::pair<u64, u64>> ranges, vars;
        if (at >= 0) {
            const ModelNode& m = nodes[static_cast<std::size_t>(at)];
            if (m.compiled && m.compiled->segmentTable) {
                for (const SegmentRecord& s : m.compiled->segmentTable->segments) {
                    if (s.number >= 1 && s.absoluteStart)
                        ranges.emplace_back(*s.absoluteStart, u64{*s.absoluteStart} + VemBaGetLength(s.array));
                }
            }
            for (int i = at; i < at + m.size; ++i) {
                const ModelNode& n = nodes[static_cast<std::size_t>(i)];
                if (n.variable && n.variable->address)
                    vars.emplace_back(*n.variable->address, u64{*n.variable->address} + n.variable->size);
            }
        }
        std::vector<u64> cuts;
        for (const auto& [from, to] : ranges) cuts.insert(cuts.end(), {from, to});
        for (const auto& [from, to] : vars) cuts.insert(cuts.end(), {from, to});
        std::sort(cuts.begin(), cuts.end());
        ranges = Merged(ranges, vars);
        vars = Merged(vars, {});
        const std::size_t spansBefore = spans.size(), runsBefore = runStart.size();
        u64 last = 0;  // end of the last run, for the differences
        struct Span {
            u32 start = 0, end = 0;
            u16 segment = 0xFFFF;
            CVemBaseNode* unit = nullptr;
            int kind = 0;
        } span;
        struct Run {
            u32 start = 0, end = 0, from = 0, size = 0, cover = 0;
            CVemBaseNode* node = nullptr;
            std::string name, path;
        } run;
        auto flushSpan = [&] {
            if (span.end > span.start && span.segment != 0xFFFF) {
                spans.insert(spans.end(), {span.start, span.end, span.segment,
                                           span.unit ? strings.Id(VemGetName(span.unit).str()) + 1 : 0, span.kind});
            }
            span = Span{};
        };
        auto flushRun = [&] {
            if (run.end > run.start) {
                runStart.push_back(static_cast<long long>(run.start - last));
                runLength.push_back(run.end - run.start);
                const int node = model_.IndexOf(run.node);
                runNode.push_back(node + 1);
                runName.push_back(strings.Id(run.name));
                runPath.push_back(run.path == run.name ? 0 : strings.Id(run.path) + 1);
                runInto.push_back(run.start - run.from);
                runSize.push_back(run.size);
                runCover.push_back(run.cover);
                last = run.end;
            }
            run = Run{};
        };
        for (const auto& [from, to] : ranges) {
            u64 next = 0;
            for (u64 a = from; a < to && a <= 0xFFFFFFFFull; a = next) {
                tVemAddressHit hit{};
                const u32 address = static_cast<u32>(a);
                const bool found = VemAddrLookup(index, t, address, &hit) == kVemAddrFound;
                next = a + 1;
                if (!found && !Covers(vars, a)) next = std::min(to, *std::upper_bound(cuts.begin(), cuts.end(), a));
                const u32 spanStart = address - hit.SegmentOffset;
                if (hit.Segment != span.segment || spanStart != span.start || hit.Unit != span.unit ||
                    hit.UnitSegment != span.kind || span.end != address) {
                    flushSpan();
                    span = Span{spanStart, address, hit.Segment, hit.Unit, hit.UnitSegment};
                }
                span.end = static_cast<u32>(next);
                if (!found) {
                    flushRun();
                    continue;
                }
                if (hit.Node != run.node || hit.Start != run.from || hit.Size != run.size ||
                    hit.Covering != run.cover || run.end != address || run.name != hit.Name || run.path != hit.Path) {
                    flushRun();
                    run = Run{address, address, hit.Start, hit.Size, hit.Covering, hit.Node, hit.Name, hit.Path};
                }
                run.end = address + 1;
            }
        }
        flushSpan();
        flushRun();
        tasks.insert(tasks.end(),
                     {strings.Id(VemGetName(task).str()), static_cast<long long>(spans.size() - spansBefore) / 5,
                      static_cast<long long>(runStart.size() - runsBefore)});
    }
    VemAddrIndexDelete(index);
    out.Raw('{');
    out.Nums("tasks", tasks);
    out.Raw(',');
    out.Nums("spans", spans);
    for (const auto& [key, values] :
         {std::make_pair("start", &runStart), std::make_pair("length", &runLength), std::make_pair("node", &runNode),
          std::make_pair("name", &runName), std::make_pair("path", &runPath), std::make_pair("into", &runInto),
          std::make_pair("size", &runSize), std::make_pair("cover", &runCover)}) {
        out.Raw(',');
        out.Nums(key, *values);
    }
    out.Raw(",\"strings\":[");
    for (std::size_t i = 0; i < strings.List().size(); ++i) {
        if (i) out.Raw(',');
        out.Str(strings.List()[i]);
    }
    out.Raw("]}");
    return std::move(out.text);
}

std::string HtmlEscape(const std::string& text) {
    std::string out;
    for (unsigned char c : text) {
        if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '&')
            out += "&amp;";
        else if (c == '"')
            out += "&quot;";
        else if (c >= 0x80)
            out += "&#" + std::to_string(c) + ";";  // 8-bit texts are Latin-1
        else
            out += static_cast<char>(c);
    }
    return out;
}

}  // namespace

int CmdHtml(const Options& o) {
    const std::string out = o.Value("--output");
    if (out.empty()) return Usage("html needs -o OUT.html");
    if (out == "-") return Usage("html writes a file: -o OUT.html");
    if (o.Files().size() != 1) return Usage("html takes one node file");
    const std::string& file = o.Files()[0];
    Tree tree(Load(o, file));
    if (!tree.get()) return kFailed;

    const std::size_t slash = file.find_last_of("/\\");
    const std::string title = slash == std::string::npos ? file : file.substr(slash + 1);
    std::string page = "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n<title>";
    page += HtmlEscape(title) + " - vemtool</title>\n<style>\n";
    page += reinterpret_cast<const char*>(kHtmlPageCss);
    page += "</style>\n</head>\n<body>\n";
    page += reinterpret_cast<const char*>(kHtmlPageBody);
    page += "<script type=\"application/json\" id=\"vem-data\">";
    Page data(tree.get(), title);
    page += data.Data();
    // Read by the page at its first search by address, so that it costs nothing before.
    page += "</script>\n<script type=\"application/json\" id=\"vem-addr\">";
    page += data.AddressData();
    page += "</script>\n<script>\n";
    page += reinterpret_cast<const char*>(kHtmlPageJs);
    page += "</script>\n</body></html>\n";

    CVemReplaceFile target;
    bool written = target.OpenReplace(out.c_str());
    if (written) {
        try {
            target.Write(page.data(), static_cast<unsigned>(page.size()));
            target.Commit();
        } catch (const CFileException&) {
            written = false;
        }
    }
    if (!written) {
        Error("cannot write %s", out.c_str());
        return kFailed;
    }
    std::printf("%s: %zu nodes, %zu bytes\n", out.c_str(), data.Size(), page.size());
    return kOk;
}

}  // namespace vemtool
