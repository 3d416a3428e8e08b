// query --at and --pc: the variable at an address, and the statement at a code offset of a unit.
#include <cstdio>
#include <cstdlib>

#include "tool.h"

namespace vemtool {

namespace {

// 0x hexadecimal or decimal, the whole text.
bool ParseNumber(const std::string& text, u32& value) {
    if (text.empty()) return false;
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    char* end = nullptr;
    const unsigned long long v = std::strtoull(text.c_str() + (hex ? 2 : 0), &end, hex ? 16 : 10);
    if (*end != '\0' || end == text.c_str() + (hex ? 2 : 0) || v > 0xFFFFFFFFull || text[0] == '-') return false;
    value = static_cast<u32>(v);
    return true;
}

const char* SegmentRole(int kind) { return kind == 1 ? "data" : kind == 2 ? "code" : "segment"; }

void PrintHit(const tVemAddressHit& hit, bool dec) {
    std::printf(dec ? "%-10s %6u  seg %u+%u  %s" : "%-10s 0x%04X  seg %u+0x%04X  %s", VemGetName(hit.Task).GetString(),
                hit.Address, hit.Segment, hit.SegmentOffset, hit.Name);
    if (hit.Size) std::printf("  byte %u of %u", hit.ByteOffset, hit.Size);
    if (std::string(hit.Path) != hit.Name) std::printf("  (path %s)", hit.Path);
    if (hit.Covering > 1) std::printf("  [%u variables cover it]", hit.Covering);
    std::printf("\n");
}

// The variable at each place, in every task of the index or in the one of --task.
int At(CVemBaseNode* root, const std::vector<std::string>& places, const std::string& taskName, bool dec) {
    tVemAddressIndex* index = VemAddrIndexNew(root);
    if (!index) {
        Error("the file holds no compiled task");
        return kFailed;
    }
    int first = 0;
    int last = VemAddrIndexTaskCount(index);
    if (!taskName.empty()) {
        first = VemAddrIndexFindTask(index, taskName.c_str());
        if (first < 0) {
            Error("no compiled task %s", taskName.c_str());
            VemAddrIndexDelete(index);
            return kFailed;
        }
        last = first + 1;
    }
    for (const std::string& place : places) {
        const auto colon = place.find(':');
        u32 address = 0, segment = 0, offset = 0;
        const bool bySegment = colon != std::string::npos;
        if (bySegment ? !ParseNumber(place.substr(0, colon), segment) ||
                            !ParseNumber(place.substr(colon + 1), offset) || segment > 0xFFFF || offset > 0xFFFF
                      : !ParseNumber(place, address)) {
            VemAddrIndexDelete(index);
            return Usage("--at takes an address or SEG:OFFSET, not " + place);
        }
        bool any = false;
        std::string where;
        for (int t = first; t < last; ++t) {
            tVemAddressHit hit{};
            const int found =
                bySegment ? VemAddrLookupSegment(index, t, static_cast<u16>(segment), static_cast<u16>(offset), &hit)
                          : VemAddrLookup(index, t, address, &hit);
            if (found == kVemAddrFound) {
                PrintHit(hit, dec);
                any = true;
            } else if (hit.Segment != 0xFFFF && where.empty()) {
                char text[160];
                std::snprintf(text, sizeof text, dec ? " (%s, seg %u+%u, %s of %s)" : " (%s, seg %u+0x%04X, %s of %s)",
                              VemGetName(hit.Task).GetString(), hit.Segment, hit.SegmentOffset,
                              SegmentRole(hit.UnitSegment), hit.Unit ? VemGetName(hit.Unit).GetString() : "no unit");
                where = text;
            }
        }
        if (!any)
            std::printf("%s: no variable%s\n", place.c_str(),
                        where.empty() ? " (outside every segment)" : where.c_str());
    }
    VemAddrIndexDelete(index);
    return kOk;
}

const char* CodeFailure(int failure) {
    switch (failure) {
        case kVemCodeNoModel: return "the statement model is switched off";
        case kVemCodeNoUnit: return "no unit of that name, path or code segment";
        case kVemCodeNoCodeNode: return "the unit has no code node";
        case kVemCodeBeyond: return "the offset lies beyond the unit's code";
        default: return "the offset lies before the unit's first statement";
    }
}

// The statement at UNIT:OFFSET, the unit by name, path or code segment number.
int Pc(CVemBaseNode* root, const std::string& place, const std::string& taskName, bool dec) {
    const auto colon = place.rfind(':');
    u32 offset = 0;
    if (colon == std::string::npos || colon == 0 || !ParseNumber(place.substr(colon + 1), offset)) {
        return Usage("--pc takes UNIT:OFFSET, not " + place);
    }
    if (VemGetNodeType(root) != kVemExeNode) {
        Error("the file is not a compiled resource");
        return kFailed;
    }
    const std::string unit = place.substr(0, colon);
    CVemBaseNode* task = nullptr;
    if (!taskName.empty()) {
        for (CVemBaseNode* t : CompiledTasks(root)) {
            if (VemGetName(t).CompareNoCase(taskName.c_str()) == 0) task = t;
        }
        if (!task) {
            Error("no compiled task %s", taskName.c_str());
            return kFailed;
        }
    }
    tVemCodeIndex* index = VemCodeIndexNew(root);
    tVemCodeHit hit{};
    u32 segment = 0;
    const int found = ParseNumber(unit, segment) && segment <= 0xFFFF
                          ? VemCodeLookupSegment(index, task, static_cast<u16>(segment), offset, &hit)
                          : VemCodeLookup(index, unit.c_str(), offset, &hit);
    int result = kOk;
    if (found) {
        std::printf(dec ? "%s+%u  line %u  %s %s  (statement at %u" : "%s+0x%04X  line %u  %s %s  (statement at 0x%04X",
                    hit.UnitPath, offset, hit.AwlLine, hit.TypeText, hit.Operand, hit.UcodeOffset);
        if (hit.CodeLength) std::printf(dec ? ", code %u bytes" : ", code 0x%04X bytes", hit.CodeLength);
        std::printf(")\n");
    } else {
        std::fprintf(stderr, "vemtool: %s: %s", place.c_str(), CodeFailure(hit.Failure));
        if (hit.Failure == kVemCodeBeyond)
            std::fprintf(stderr, dec ? " (%u bytes)" : " (0x%04X bytes)", hit.CodeLength);
        std::fprintf(stderr, "\n");
        result = kFailed;
    }
    VemCodeIndexDelete(index);
    return result;
}

}  // namespace

int QueryLookup(const Options& o, CVemBaseNode* root) {
    const std::string task = o.Value("--task");
    const bool dec = o.Has("--dec");
    return o.Has("--pc") ? Pc(root, o.Value("--pc"), task, dec) : At(root, o.Values("--at"), task, dec);
}

}  // namespace vemtool
