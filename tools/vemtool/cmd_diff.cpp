// diff: what changed between two compile results of a resource, and whether a controller running
// the old one keeps its data when the new one replaces it.
#include <cstdio>
#include <string>

#include "json.h"
#include "tool.h"

namespace vemtool {

namespace {

const char* KindName(int kind) {
    switch (kind) {
        case kVemDiffVarAdded: return "added";
        case kVemDiffVarRemoved: return "removed";
        case kVemDiffVarChanged: return "changed";
        case kVemDiffTaskAdded: return "task added";
        case kVemDiffTaskRemoved: return "task removed";
        case kVemDiffCodeChanged: return "code";
        case kVemDiffSegmentChanged: return "segment";
        case kVemDiffSettingChanged: return "setting";
        default: return "resource";
    }
}

const char* VerdictName(int verdict) {
    switch (verdict) {
        case kVemDiffEqual: return "equal";
        case kVemDiffCompatible: return "compatible";
        case kVemDiffReinit: return "compatible with reinitialised variables";
        default: return "incompatible";
    }
}

std::string Changes(int changes) {
    std::string text;
    for (const auto& [bit, name] : {std::pair<int, const char*>{kVemDiffMoved, "moved"},
                                    {kVemDiffResized, "resized"},
                                    {kVemDiffRetyped, "retyped"}}) {
        if (changes & bit) text += text.empty() ? name : std::string(",") + name;
    }
    return text;
}

void Place(char* text, std::size_t size, u16 segment, u16 offset, u16 length, const char* type) {
    std::snprintf(text, size, "seg %u+0x%04X size %u%s%s", segment, offset, length, *type ? " " : "", type);
}

void PrintText(tVemLayoutDiff* diff) {
    std::printf("verdict: %s (%s)\n", VerdictName(VemDiffVerdict(diff)), VemDiffReason(diff));
    for (int i = 0; i < VemDiffCount(diff); ++i) {
        tVemDiffEntry e{};
        VemDiffGetEntry(diff, i, &e);
        char before[96], after[96];
        Place(before, sizeof before, e.OldSegment, e.OldOffset, e.OldSize, e.OldText);
        Place(after, sizeof after, e.NewSegment, e.NewOffset, e.NewSize, e.NewText);
        switch (e.Kind) {
            case kVemDiffVarAdded: std::printf("  %-8s %-8s %s  %s\n", e.Task, KindName(e.Kind), e.Path, after); break;
            case kVemDiffVarRemoved:
                std::printf("  %-8s %-8s %s  %s\n", e.Task, KindName(e.Kind), e.Path, before);
                break;
            case kVemDiffVarChanged:
                std::printf("  %-8s %-8s %s  %s -> %s\n", e.Task, Changes(e.Changes).c_str(), e.Path, before, after);
                break;
            case kVemDiffTaskAdded:
            case kVemDiffTaskRemoved: std::printf("  %-8s %s\n", e.Task, KindName(e.Kind)); break;
            case kVemDiffCodeChanged:
                std::printf("  %-8s %-8s %s (segment %u)  length:checksum %s -> %s\n", e.Task, KindName(e.Kind), e.Path,
                            e.NewSegment, e.OldText, e.NewText);
                break;
            case kVemDiffSegmentChanged:
                std::printf("  %-8s %-8s %s  length %s -> %s\n", e.Task, KindName(e.Kind), e.Path, e.OldText,
                            e.NewText);
                break;
            default:
                std::printf("  %-8s %-8s %s  %s -> %s\n", "", KindName(e.Kind), e.Path, e.OldText, e.NewText);
                break;
        }
    }
}

void Side(Json& json, const char* key, u16 segment, u16 offset, u16 size, u32 type, const char* text) {
    json.Key(key);
    json.BeginObject();
    json.Field("segment", segment);
    json.Field("offset", offset);
    json.Field("size", size);
    json.Field("type", type);
    json.Field("text", text);
    json.EndObject();
}

void PrintJson(tVemLayoutDiff* diff) {
    Json json(stdout);
    json.BeginObject();
    json.Field("verdict", VerdictName(VemDiffVerdict(diff)));
    json.Field("reason", VemDiffReason(diff));
    json.Key("entries");
    json.BeginArray();
    for (int i = 0; i < VemDiffCount(diff); ++i) {
        tVemDiffEntry e{};
        VemDiffGetEntry(diff, i, &e);
        json.BeginObject();
        json.Field("kind", KindName(e.Kind));
        json.Field("task", e.Task);
        json.Field("path", e.Path);
        if (e.Kind == kVemDiffVarChanged) json.Field("changes", Changes(e.Changes).c_str());
        if (e.Kind != kVemDiffVarAdded && e.Kind != kVemDiffTaskAdded && e.Kind != kVemDiffTaskRemoved) {
            Side(json, "old", e.OldSegment, e.OldOffset, e.OldSize, e.OldType, e.OldText);
        }
        if (e.Kind != kVemDiffVarRemoved && e.Kind != kVemDiffTaskAdded && e.Kind != kVemDiffTaskRemoved) {
            Side(json, "new", e.NewSegment, e.NewOffset, e.NewSize, e.NewType, e.NewText);
        }
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    std::printf("\n");
}

}  // namespace

// Exit 0 when equal, 1 when they differ, 2 on bad usage or a file that does not load.
int CmdDiff(const Options& o) {
    if (o.Files().size() != 2) return Usage("diff takes two node files");
    const bool json = o.Has("--json");
    Tree a(Load(o, o.Files()[0]));
    if (!a.get()) return kUsage;
    Tree b(Load(o, o.Files()[1]));
    if (!b.get()) return kUsage;
    tVemLayoutDiff* diff = VemDiffNew(a.get(), b.get());
    if (!diff) {
        Error("diff compares two compiled resources");
        return kUsage;
    }
    if (json) {
        PrintJson(diff);
    } else {
        PrintText(diff);
    }
    const int result = VemDiffCount(diff) ? kFailed : kOk;
    VemDiffDelete(diff);
    return result;
}

}  // namespace vemtool
