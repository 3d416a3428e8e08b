// query: what a debugger asks of a loaded resource, and the paths that lead to variables.
#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "json.h"
#include "tool.h"

namespace vemtool {

namespace {

std::string Upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

std::string Trim(const std::string& s) {
    const std::size_t a = s.find_first_not_of(' ');
    const std::size_t b = s.find_last_not_of(' ');
    return a == std::string::npos ? std::string() : s.substr(a, b - a + 1);
}

// A node's name as a path names it: a function block's name without " : TYPE", an array
// element's without blanks.
std::string PathName(CVemBaseNode* node) {
    std::string name = VemGetName(node).str();
    const std::size_t colon = name.find(" : ");
    if (colon != std::string::npos) name.erase(colon);
    std::string out;
    for (char c : name) {
        if (c != ' ') out += c;
    }
    return Upper(out);
}

struct Step {
    std::string name;           // upper case
    std::vector<long> indices;  // of an array element
};

bool Split(const std::string& path, std::vector<Step>& steps, std::string& why) {
    std::string part;
    int depth = 0;
    auto finish = [&]() {
        Step step;
        const std::size_t open = part.find('[');
        step.name = Upper(Trim(part.substr(0, open)));
        if (open != std::string::npos) {
            const std::size_t close = part.find(']', open);
            if (close == std::string::npos || !Trim(part.substr(close + 1)).empty()) return false;
            std::string list = part.substr(open + 1, close - open - 1);
            std::size_t at = 0;
            while (at <= list.size()) {
                const std::size_t comma = std::min(list.find(',', at), list.size());
                const std::string number = Trim(list.substr(at, comma - at));
                char* end = nullptr;
                const long value = std::strtol(number.c_str(), &end, 10);
                if (number.empty() || *end) return false;
                step.indices.push_back(value);
                at = comma + 1;
            }
        }
        if (step.name.empty()) return false;
        steps.push_back(step);
        part.clear();
        return true;
    };
    for (char c : path) {
        if (c == '[') ++depth;
        if (c == ']') --depth;
        if (c == '.' && depth == 0) {
            if (!finish()) break;
            continue;
        }
        part += c;
    }
    if (steps.empty() || !part.empty() || path.back() == '.') {
        if (part.empty() || !finish()) {
            why = "not a path: " + path;
            return false;
        }
    }
    return true;
}

struct Target {
    u16 alignment = 1;
    u16 byteSize = 1;
};

Target TargetOf(CVemBaseNode* node) {
    Target t;
    for (CVemBaseNode* at = node; at; at = VemGetParentNode(at)) {
        if (VemGetNodeType(at) != kVemExeNode) continue;
        if (const tVemDeviceSettings* d = VemGetDeviceSettings(at)) {
            t.alignment = d->Alignment ? d->Alignment : 1;
            t.byteSize = d->ByteSize ? d->ByteSize : 1;
        }
        break;
    }
    return t;
}

u16 RoundUp(u16 value, u16 to) { return to > 1 && value % to ? static_cast<u16>(value + to - value % to) : value; }

// The place of element k of an array that was not expanded, by the rules of the expansion.
bool ElementPlace(CVemBaseNode* array, CVemBaseNode* element, u16 arrayOffset, long k, u16& offset, u16& size) {
    const Target t = TargetOf(array);
    u16 cursor = static_cast<u16>(arrayOffset + RoundUp(VemGetHeaderLength(array), t.alignment));
    const u32 type = VemGetVariableType(element);
    const bool text = type == kCbeTypeString || type == kCbeTypeWString;
    size = VemGetSize(element);
    if (type == kCbeTypeString) size = static_cast<u16>(VemGetArrayElementSizeOfType(array) * t.byteSize);
    for (long i = 0; i < k; ++i) {
        cursor = static_cast<u16>(cursor + size);
        if (size > t.alignment) cursor = RoundUp(cursor, text && t.alignment == 4 ? 2 : t.alignment);
        if ((t.byteSize == 2 || t.byteSize == 4) && t.byteSize > size)
            cursor = static_cast<u16>(cursor + t.byteSize - size);
    }
    offset = cursor;
    return true;
}

CVemBaseNode* ChildNamed(CVemBaseNode* node, const std::string& name, bool last) {
    CVemBaseNode* instance = nullptr;
    CVemBaseNode* other = nullptr;
    for (CVemBaseNode* child : Children(node)) {
        if (PathName(child) != name) continue;
        CVemBaseNode*& slot = VemGetNodeType(child) == kVemFbInstanceNode ? instance : other;
        if (!slot) slot = child;
    }
    // The instance is the variable; its function block node holds the members.
    if (last) return instance ? instance : other;
    return other ? other : instance;
}

std::string IndexText(const std::vector<long>& indices) {
    std::string text = "[";
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (i) text.push_back(',');
        text.append(std::to_string(indices[i]));
    }
    return text + "]";
}

}  // namespace

std::vector<CVemBaseNode*> CompiledTasks(CVemBaseNode* root) {
    std::vector<CVemBaseNode*> tasks;
    Walk(root, [&](CVemBaseNode* node) {
        if (VemGetNodeType(node) == kVemTuiTaskNode) tasks.push_back(node);
    });
    return tasks;
}

PathHit FindPath(CVemBaseNode* root, const std::string& path) {
    for (CVemBaseNode* task : CompiledTasks(root)) {
        if (!VemGetNodePath2NodeList(task)) VemCreateChildNodePathList(task);
        CMapStringToOb* map = VemGetNodePath2NodeList(task);
        // A function block's own key keeps the blank in front of " : " of its name.
        for (const std::string& key : {Upper(path), Upper(path + " ")}) {
            if (const auto* node = map->PLookup(CString(key)))
                return {task, static_cast<CVemBaseNode*>(*node), CString(key)};
        }
    }
    return {};
}

bool Resolve(CVemBaseNode* root, const std::string& path, Place& place, std::string& why) {
    std::vector<Step> steps;
    if (!Split(path, steps, why)) return false;
    place = Place{};
    for (CVemBaseNode* task : CompiledTasks(root)) {
        if (Upper(VemGetName(task).str()) == steps[0].name) {
            place.task = task;
            break;
        }
    }
    if (!place.task) {
        why = "no compiled task " + steps[0].name;
        return false;
    }
    CVemBaseNode* node = place.task;
    long delta = 0;          // added to the stored offsets below an element that was not expanded
    bool atElement = false;  // the last step was such an element: its size is the layout's
    long members = 0;        // the delta for the members of an expanded structure element
    bool inElement = false;  // the node is such an element
    std::string label = steps[0].name;
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step& step = steps[i];
        if (i > 0) {
            if (VemGetNodeType(node) == kVemFbInstanceNode) {
                CVemBaseNode* fb = VemGetReferenceNode(node);
                if (!fb) {
                    why = label + " is an instance whose function block is not in the tree";
                    return false;
                }
                node = fb;
            }
            CVemBaseNode* child = ChildNamed(node, step.name, i + 1 == steps.size() && step.indices.empty());
            if (!child) {
                why = "no " + step.name + " in " + label;
                return false;
            }
            node = child;
            atElement = false;
            if (inElement) delta = members;
            inElement = false;
            label += "." + step.name;
        } else if (!step.indices.empty()) {
            why = "a task is no array";
            return false;
        }
        if (step.indices.empty()) continue;
        if (VemGetNodeType(node) != kVemArrayNode) {
            why = label + " is no array";
            return false;
        }
        CVemDimRange* range = VemGetRange(node);
        const u8 dims = range ? VemGetDimSize(range) : 0;
        if (step.indices.size() != dims) {
            why = label + " has " + std::to_string(dims) + " dimensions, not " + std::to_string(step.indices.size());
            return false;
        }
        long k = 0;
        for (u8 d = 0; d < dims; ++d) {
            const tVemDimRange r = VemGetDimRange(range, d);
            const long high = std::max(r.LowBound, r.HighBound);
            if (step.indices[d] < r.LowBound || step.indices[d] > high) {
                why = "index " + std::to_string(step.indices[d]) + " of " + label + " outside " +
                      std::to_string(r.LowBound) + ".." + std::to_string(r.HighBound);
                return false;
            }
            k = k * (high - r.LowBound + 1) + (step.indices[d] - r.LowBound);
        }
        const std::string elementName = PathName(node) + IndexText(step.indices);
        label += IndexText(step.indices);
        CVemBaseNode* expanded = nullptr;
        for (CVemBaseNode* child : Children(node)) {
            if (PathName(child) == elementName) expanded = child;
        }
        if (expanded) {
            // The expansion places a structure element but leaves its members where the element
            // type had them: they count from the element.
            inElement = VemGetNodeType(expanded) == kVemStructNode;
            members = delta + VemGetOffset(expanded);
            node = expanded;
            atElement = false;
            continue;
        }
        CVemBaseNode* element = VemGetReferenceNode(node);
        if (!element) {
            why = label + ": the array has neither elements nor an element type";
            return false;
        }
        u16 offset = 0, size = 0;
        ElementPlace(node, element, static_cast<u16>(VemGetOffset(node) + delta), k, offset, size);
        delta = static_cast<long>(offset) - static_cast<long>(VemGetOffset(element));
        place.computed = true;
        place.size = size;
        place.segment = VemGetParentSegment(node);
        node = element;
        atElement = true;
    }
    place.node = node;
    place.label = label;
    place.nodeType = VemGetNodeType(node);
    place.dataType = VemGetVariableType(node);
    place.typeName = VemGetTypeName(node).str();
    const bool unit = place.nodeType == kVemProgramNode || place.nodeType == kVemFbNode ||
                      place.nodeType == kVemFunctionNode || place.nodeType == kVemTuiTaskNode;
    if (unit) {
        place.segment = VemGetDataSegment(node);
        place.offset = 0;
        place.size = VemGetDataSegLength(node);
    } else {
        place.offset = static_cast<u16>(VemGetOffset(node) + delta);
        if (!place.computed) place.segment = VemGetParentSegment(node);  // members keep their array's
        if (!atElement) place.size = VemGetSize(node);
    }
    place.hasAddress = AbsoluteAddress(place.task, place.segment, place.offset, place.address);
    return true;
}

CVemBaseNode* FindNode(CVemBaseNode* root, const std::string& path) {
    Place place;
    std::string why;
    return Resolve(root, path, place, why) && !place.computed ? place.node : nullptr;
}

std::vector<std::string> NearestPaths(CVemBaseNode* root, const std::string& path) {
    std::vector<std::string> keys;
    for (CVemBaseNode* task : CompiledTasks(root)) {
        if (!VemGetNodePath2NodeList(task)) VemCreateChildNodePathList(task);
        CString key;
        CObject* node = nullptr;
        CMapStringToOb* map = VemGetNodePath2NodeList(task);
        for (POSITION pos = map->GetStartPosition(); pos;) {
            map->GetNextAssoc(pos, key, node);
            keys.push_back(Trim(key.str()));
        }
    }
    const std::string wanted = Upper(path);
    auto distance = [](const std::string& a, const std::string& b) {
        std::vector<std::size_t> row(b.size() + 1);
        for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
        for (std::size_t i = 1; i <= a.size(); ++i) {
            std::size_t diagonal = row[0];
            row[0] = i;
            for (std::size_t j = 1; j <= b.size(); ++j) {
                const std::size_t up = row[j];
                row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
                diagonal = up;
            }
        }
        return row[b.size()];
    };
    std::vector<std::pair<std::size_t, std::string>> scored;
    for (const std::string& key : keys) scored.emplace_back(distance(wanted, key), key);
    std::sort(scored.begin(), scored.end());
    scored.erase(std::unique(scored.begin(), scored.end()), scored.end());
    std::vector<std::string> nearest;
    const std::size_t limit = std::max<std::size_t>(3, wanted.size() / 3);
    for (const auto& [d, key] : scored) {
        if (nearest.size() == 3 || d > limit) break;
        nearest.push_back(key);
    }
    return nearest;
}

int NotFound(CVemBaseNode* root, const std::string& path, const std::string& why) {
    std::string text = path + " not found" + (why.empty() ? "" : ": " + why);
    const std::vector<std::string> nearest = NearestPaths(root, path);
    if (!nearest.empty()) {
        text += "\n  nearest known paths:";
        for (const std::string& n : nearest) text += " " + n;
    }
    Error("%s", text.c_str());
    return kFailed;
}

void PrintLineMap(CVemBaseNode* exe, const std::string& unitPath, const CMapStringToString& map, bool dec, bool json) {
    std::vector<std::pair<long, long>> lines;
    CString line, offset;
    for (POSITION pos = map.GetStartPosition(); pos;) {
        map.GetNextAssoc(pos, line, offset);
        lines.emplace_back(std::atol(line), std::atol(offset));
    }
    std::sort(lines.begin(), lines.end());
    CMapStringToOb statements;
    EVemFillAwlLine2EvemNodeMap(exe, unitPath.c_str(), &statements);
    auto typeOf = [&](long number) {
        CString key;
        key.Format("%ld", number);
        const auto* statement = statements.PLookup(key);
        return statement ? static_cast<u32>(EVemGetNodeType(static_cast<CEVemBaseNode*>(*statement))) : 0u;
    };
    if (json) {
        Json j(Out());
        j.BeginObject();
        j.Field("unit", unitPath.c_str());
        j.Key("lines");
        j.BeginArray();
        for (const auto& [number, code] : lines) {
            j.BeginObject();
            j.Field("line", number);
            j.Field("codeOffset", code);
            j.Field("statementType", typeOf(number));
            j.Field("statementTypeName", StatementTypeName(typeOf(number)));
            j.EndObject();
        }
        j.EndArray();
        j.EndObject();
        return;
    }
    std::fprintf(Out(), "line map of %s (%zu lines)\n", unitPath.c_str(), lines.size());
    for (const auto& [number, code] : lines) {
        std::fprintf(Out(),
                     dec ? "  line %4ld -> code offset %6ld  (%s)\n" : "  line %4ld -> code offset 0x%04lX  (%s)\n",
                     number, code, StatementTypeName(typeOf(number)));
    }
}

int CrossReference(CVemBaseNode* exe, CVemBaseNode* target, const char* label, int mask, bool json) {
    CMapStringToOb table;
    if (!EVemCRBuildPouTableEx(exe, &table)) {
        Error("the resource has no statement model to search (written with --evem off?)");
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
    auto kindName = [](u16 kind) { return kind == kEVemCrRead ? "read" : kind == kEVemCrWrite ? "write" : "call"; };
    if (json) {
        Json j(Out());
        j.BeginObject();
        j.Field("target", label);
        j.Key("places");
        j.BeginArray();
        int i = 0;
        for (POSITION pos = paths.GetHeadPosition(); pos; ++i) {
            j.BeginObject();
            j.Field("unit", paths.GetNext(pos));
            j.Field("line", lines.GetAt(i));
            j.Field("kind", kindName(kinds.GetAt(i)));
            j.EndObject();
        }
        j.EndArray();
        j.EndObject();
        return kOk;
    }
    std::fprintf(Out(), "cross reference of %s (%d places)\n", label, paths.GetCount());
    int i = 0;
    for (POSITION pos = paths.GetHeadPosition(); pos; ++i) {
        const CString& unit = paths.GetNext(pos);
        std::fprintf(Out(), "  %-28s line %4u  %s\n", unit.GetString(), lines.GetAt(i), kindName(kinds.GetAt(i)));
    }
    return kOk;
}

namespace {

std::string UnitKey(std::string s) {
    std::replace(s.begin(), s.end(), '/', '\\');
    return Upper(s);
}

// The stored path of the unit that a name or path means: the path itself in any case and with
// either slash, its file name, or its file name without the extension.
bool FindUnit(CVemBaseNode* exe, const std::string& wanted, std::string& path, std::vector<std::string>& known) {
    const std::string key = UnitKey(wanted);
    std::vector<std::string> hits;
    for (CEVemBaseNode* code : CodeNodes(exe)) {
        const std::string stored = EVemGetPathName(code).str();
        if (std::find(known.begin(), known.end(), stored) != known.end()) continue;
        known.push_back(stored);
        const std::string full = UnitKey(stored);
        const std::string file = full.substr(full.find_last_of('\\') + 1);
        const std::string stem = file.substr(0, file.find_last_of('.'));
        if (full == key) {
            path = stored;
            return true;
        }
        if (file == key || stem == key || Upper(EVemGetName(code).str()) == key) hits.push_back(stored);
    }
    if (hits.size() == 1) path = hits[0];
    return hits.size() == 1;
}

void AddressJson(Json& j, const std::string& path, const Place& p) {
    j.BeginObject();
    j.Field("path", path.c_str());
    j.Key("found");
    j.Bool(true);
    j.Key("address");
    if (p.hasAddress)
        j.Unsigned(p.address);
    else
        j.Null();
    j.Field("segment", p.segment);
    j.Field("offset", p.offset);
    j.Field("size", p.size);
    j.Field("nodeType", p.nodeType);
    j.Field("nodeTypeName", NodeTypeName(p.nodeType));
    j.Field("dataType", p.dataType);
    j.Field("dataTypeName", DataTypeName(p.dataType));
    j.Field("typeName", p.typeName.c_str());
    j.Key("computed");
    j.Bool(p.computed);
    j.EndObject();
}

}  // namespace

int CmdQuery(const Options& o) {
    const std::vector<std::string>& addrs = o.Values("--addr");
    const bool lines = o.Has("--lines"), cross = o.Has("--xref"), dec = o.Has("--dec"), json = o.Has("--json");
    if (o.Files().size() != 1) return Usage("query takes one node file");
    const bool at = o.Has("--at"), pc = o.Has("--pc");
    if ((!addrs.empty()) + lines + cross + at + pc != 1)
        return Usage("query takes one of --addr, --lines, --xref, --at, --pc");
    if (o.Has("--mask") && !cross) return Usage("--mask goes with --xref");
    if (o.Has("--task") && !at && !pc) return Usage("--task goes with --at or --pc");
    if (json && (at || pc)) return Usage("--json goes with --addr, --lines or --xref");
    int maskBits = 0;
    for (char c : o.Value("--mask", "rwc")) {
        if (c == 'r')
            maskBits |= kEVemCrRead;
        else if (c == 'w')
            maskBits |= kEVemCrWrite;
        else if (c == 'c')
            maskBits |= kEVemCrCall;
        else
            return Usage("--mask takes the letters r, w and c");
    }
    Tree tree(Load(o, o.Files()[0]));
    if (!tree.get()) return kFailed;
    if (at || pc) return QueryLookup(o, tree.get());
    if (!addrs.empty()) {
        int result = kOk;
        Json j(Out());
        if (json) j.BeginArray();
        for (const std::string& path : addrs) {
            Place p;
            std::string why;
            if (!Resolve(tree.get(), path, p, why)) {
                result = NotFound(tree.get(), path, why);
                if (json) {
                    j.BeginObject();
                    j.Field("path", path.c_str());
                    j.Key("found");
                    j.Bool(false);
                    j.Field("error", why.c_str());
                    j.EndObject();
                }
                continue;
            }
            if (json) {
                AddressJson(j, path, p);
                continue;
            }
            char address[24] = "-";
            if (p.hasAddress) std::snprintf(address, sizeof address, dec ? "%u" : "0x%06X", p.address);
            std::fprintf(Out(),
                         dec ? "%-28s address %-8s (segment %u, offset %u, size %u, %s %s%s)\n"
                             : "%-28s address %-8s (segment %u, offset 0x%04X, size %u, %s %s%s)\n",
                         path.c_str(), address, p.segment, p.offset, p.size, NodeTypeName(p.nodeType),
                         p.computed ? "element by the layout rules" : VemGetNodeText(p.node).GetString(),
                         p.computed && !p.typeName.empty() ? (" : " + p.typeName).c_str() : "");
        }
        if (json) j.EndArray();
        return result;
    }
    if (VemGetNodeType(tree.get()) != kVemExeNode) {
        Error("%s is not a compiled resource: its root is of type %s", o.Files()[0].c_str(),
              NodeTypeName(VemGetNodeType(tree.get())));
        return kFailed;
    }
    if (lines) {
        std::string path;
        std::vector<std::string> known;
        if (CodeNodes(tree.get()).empty()) {
            Error("the resource has no statement model (written with --evem off?)");
            return kFailed;
        }
        if (!FindUnit(tree.get(), o.Value("--lines"), path, known)) {
            std::string text = "no unit " + o.Value("--lines") + "\n  units:";
            for (const std::string& k : known) text += " " + k;
            Error("%s", text.c_str());
            return kFailed;
        }
        CMapStringToString map;
        EVemFillAwlLine2UcodeOffsetMap(tree.get(), path.c_str(), &map);
        PrintLineMap(tree.get(), path, map, dec, json);
        return kOk;
    }
    Place p;
    std::string why;
    const std::string target = o.Value("--xref");
    if (!Resolve(tree.get(), target, p, why)) return NotFound(tree.get(), target, why);
    if (p.computed) {
        Error("%s is an element without a node of its own: ask for the array", target.c_str());
        return kFailed;
    }
    return CrossReference(tree.get(), p.node, target.c_str(), maskBits, json);
}

}  // namespace vemtool
