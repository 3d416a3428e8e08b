// segments: the segment tables of the executable node and of the compiled tasks, and the bytes of
// one segment as the target holds them.
#include <array>
#include <cctype>
#include <cstdlib>

#include "tool.h"

namespace vemtool {

namespace {

struct Table {
    std::string owner;  // "RESOURCE" for the executable node, else the task's name
    CSegmentTable* table;
};

std::string Upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

bool IsFract(CVemByteArray* a) { return std::string(a->GetRuntimeClass()->m_lpszClassName) == "CFractLayoutByteArray"; }

// The kind byte of the common header: behind the size word, at raw index 2 in a fract layout.
u8 Kind(CVemByteArray* a) {
    u8 kind = 0xFF;
    const u16 byteSize = VemBaGetByteSize(a);
    const u16 at = IsFract(a) ? 2 : static_cast<u16>(byteSize > 2 ? byteSize : 2);
    if (IsFract(a)) {
        if (VemBaGetLength(a) > 2) kind = VemBaGetBytePointer(a)[2];
    } else if (VemBaGetLength(a) > at) {
        VemBaGetByte(a, at, &kind);
    }
    return kind;
}

// A table's checksum runs the CRC of each segment on from the register that the segment before
// left: that is the segment's own CRC from 0, listed beside it anyway, and the register before it
// carried through as many zero bytes. Carrying a register through bytes of zero is a linear map of
// its 16 bits, so the table's checksum needs no second pass over the bytes of the segments.
class ZeroRun {
public:
    // The map of one zero byte, by the images of the 16 bits.
    ZeroRun() {
        CVemByteArray zero;
        VemBaAppendByte(&zero, 0);
        for (int bit = 0; bit < 16; ++bit) byte_[bit] = static_cast<u16>(VemBaComputeCheckSum(&zero, 1u << bit));
    }
    // The register carried through `count` zero bytes.
    u16 Carry(u16 reg, u32 count) const {
        Map power = byte_;
        for (; count; count >>= 1) {
            if (count & 1) reg = Apply(power, reg);
            power = Compose(power, power);
        }
        return reg;
    }

private:
    using Map = std::array<u16, 16>;
    static u16 Apply(const Map& m, u16 v) {
        u16 out = 0;
        for (int bit = 0; bit < 16; ++bit)
            if (v >> bit & 1) out ^= m[static_cast<std::size_t>(bit)];
        return out;
    }
    static Map Compose(const Map& a, const Map& b) {
        Map out{};
        for (std::size_t bit = 0; bit < 16; ++bit) out[bit] = Apply(a, b[bit]);
        return out;
    }
    Map byte_{};
};

void ListTable(const Table& t, const ZeroRun& zeros) {
    struct Row {
        int number;
        CVemByteArray* array;
        u32 checkSum;
    };
    std::vector<Row> rows;
    u32 tableSum = 0;  // as VemSegTblComputeCheckSum(table, 0)
    for (int n = 0; n < t.table->GetSize(); ++n) {
        CVemByteArray* a = VemSegTblGetSegment(t.table, static_cast<u16>(n));
        if (!a) continue;
        const u32 sum = VemBaComputeCheckSum(a, 0);
        const u16 reg = static_cast<u16>(sum ^ zeros.Carry(static_cast<u16>(tableSum), VemBaGetLength(a)));
        tableSum = (sum & 0xFFFF0000u) + reg;
        rows.push_back({n, a, sum});
    }
    const u16 count = VemSegTblGetNoOfSegments(t.table);
    std::fprintf(Out(), "segment table of %s: pou name \"%s\", start number %u, %u segments, checksum 0x%08X\n",
                 t.owner.c_str(), VemSegTblGetPouName(t.table).GetString(), VemSegTblGetStartSegmentNo(t.table), count,
                 tableSum);
    std::fprintf(Out(), "  %4s  %-22s %7s  %-8s %-6s  %-21s %s\n", "no", "kind", "length", "ByteSize", "order",
                 "layout", "checksum");
    for (const Row& row : rows) {
        CVemByteArray* a = row.array;
        const u8 kind = Kind(a);
        char kindText[40];
        std::snprintf(kindText, sizeof kindText, "%u %s", kind, SegmentKindName(kind));
        std::fprintf(Out(), "  %4d  %-22s %7u  %-8u %-6s  %-21s 0x%08X\n", row.number, kindText, VemBaGetLength(a),
                     VemBaGetByteSize(a), VemBaIsMotorolaFormat(a) ? "big" : "little",
                     a->GetRuntimeClass()->m_lpszClassName, row.checkSum);
    }
}

// The bytes as they go to the target, one unit of ByteSize bytes a group, 16 bytes a line.
void HexView(CVemByteArray* a, u16 number, const std::string& owner) {
    const u32 length = VemBaGetLength(a);
    const u16 unit = VemBaGetByteSize(a) ? VemBaGetByteSize(a) : 1;
    const u8* bytes = VemBaGetBytePointer(a);
    std::fprintf(Out(), "segment %u of %s: %s, %u bytes, ByteSize %u, %s-endian\n", number, owner.c_str(),
                 SegmentKindName(Kind(a)), length, unit, VemBaIsMotorolaFormat(a) ? "big" : "little");
    const u32 perLine = unit == 3 || unit > 4 ? unit * 4u : 16u;
    for (u32 at = 0; at < length; at += perLine) {
        std::fprintf(Out(), "  %06X ", at);
        for (u32 i = at; i < at + perLine && i < length; ++i) {
            std::fprintf(Out(), "%s%02X", (i - at) % unit == 0 ? " " : "", bytes[i]);
        }
        std::fputc('\n', Out());
    }
}

}  // namespace

int CmdSegments(const Options& o) {
    if (o.Files().size() != 1) return Usage("segments takes one node file");
    long number = -1;
    if (o.Has("--hex")) {
        char* end = nullptr;
        const std::string text = o.Value("--hex");
        number = std::strtol(text.c_str(), &end, 0);
        if (text.empty() || *end || number < 0 || number > 0xFFFF) return Usage("--hex takes a segment number");
    }
    Tree tree(Load(o, o.Files()[0]));
    if (!tree.get()) return kFailed;
    std::vector<Table> tables;
    if (VemGetNodeType(tree.get()) == kVemExeNode && VemGetSegmentTable(tree.get())) {
        tables.push_back({"RESOURCE", VemGetSegmentTable(tree.get())});
    }
    for (CVemBaseNode* task : CompiledTasks(tree.get())) {
        if (CSegmentTable* t = VemGetSegmentTable(task)) tables.push_back({VemGetName(task).str(), t});
    }
    if (o.Has("--task")) {
        const std::string wanted = Upper(o.Value("--task"));
        std::vector<Table> kept;
        for (const Table& t : tables) {
            if (Upper(t.owner) == wanted) kept.push_back(t);
        }
        if (kept.empty()) {
            std::string names;
            for (const Table& t : tables) names += " " + t.owner;
            Error("no segment table of %s; there are:%s", o.Value("--task").c_str(), names.c_str());
            return kFailed;
        }
        tables = kept;
    }
    if (tables.empty()) {
        Error("%s has no segment tables", o.Files()[0].c_str());
        return kFailed;
    }
    if (number >= 0) {
        if (tables.size() != 1) return Usage("--hex needs --task NAME (or RESOURCE) to pick the table");
        CVemByteArray* a = number < tables[0].table->GetSize()
                               ? VemSegTblGetSegment(tables[0].table, static_cast<u16>(number))
                               : nullptr;
        if (!a) {
            Error("%s has no segment %ld", tables[0].owner.c_str(), number);
            return kFailed;
        }
        HexView(a, static_cast<u16>(number), tables[0].owner);
        return kOk;
    }
    const ZeroRun zeros;
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (i) std::fputc('\n', Out());
        ListTable(tables[i], zeros);
    }
    return kOk;
}

}  // namespace vemtool
