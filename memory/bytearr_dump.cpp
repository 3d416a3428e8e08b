// CVemByteArray: text dumps of a segment, one element of the string array per line.
#include <cstdio>
#include <cstring>
#include <string_view>

#include "memory/bytearr_dump.h"
#include "memory/cbytearr.h"
#include "memory/segkind.h"
#include "memory/units.h"
#include "node/dumptext.h"

using vem::units::WordWidth;

namespace vem::dump {

void AppendHexByte(CString& line, u8 value, bool wideGap) {
    static const char kDigits[] = "0123456789ABCDEF";
    const char text[] = {kDigits[value >> 4], kDigits[value & 15], ' ', ' '};
    line += std::string_view(text, wideGap ? 4 : 3);
}

CString HexLineStart(u32 index) {
    CString line;
    line.Format("    %04X : ", index);
    return line;
}

void DumpTables(CVemByteArray& array, unsigned kind, CStringArray& lines) {
    if (vem::IsInstanceTableKind(kind)) array.DumpInstanceTable(lines);
    if (vem::IsDownloadTableKind(kind)) array.DumpDownloadTable(static_cast<int>(kind), lines);
}

}  // namespace vem::dump

namespace {

CString ByteSizeLine(unsigned byteSize) {
    if (byteSize < 1 || byteSize > 8) return " ByteSize nicht korrekt!! \n";
    CString line;
    line.Format(" ByteSize = %u \n", byteSize);
    return line;
}

// Eight bytes a line where the ByteSize divides eight, otherwise one unit a line.
unsigned BytesPerLine(unsigned byteSize) {
    if (byteSize == 1 || byteSize == 2 || byteSize == 4 || byteSize == 8) return 8;
    return byteSize ? byteSize : 8;
}

}  // namespace

namespace {

// The two hexadecimal digits of every byte value.
struct HexPairs {
    char pair[256][2] = {};
    constexpr HexPairs() {
        constexpr char kDigits[] = "0123456789ABCDEF";
        for (int v = 0; v < 256; ++v) {
            pair[v][0] = kDigits[v >> 4];
            pair[v][1] = kDigits[v & 15];
        }
    }
};
constexpr HexPairs kHexPairs;

// "    %04X : ": four digits at least, more where the index needs them.
char* LineHead(char* out, u32 index) {
    static const char kDigits[] = "0123456789ABCDEF";
    std::memset(out, ' ', 4);
    out += 4;
    int shift = 28;
    while (shift > 12 && (index >> shift) == 0) shift -= 4;
    for (; shift >= 0; shift -= 4) *out++ = kDigits[(index >> shift) & 15];
    std::memcpy(out, " : ", 3);
    return out + 3;
}

}  // namespace

// The lines are written straight into the block, whose room is made once for the whole segment.
void vem::dump::AppendPlainDump(CVemByteArray& array, const CString& prefix, CVemDumpText& text) {
    const u8 byteSize = array.GetByteSize();
    u8 kind = 0xFF;
    array.GetByte(static_cast<u16>(WordWidth(byteSize)), &kind);
    text << prefix << vem::SegmentKindName(kind) << '\n';
    text << prefix << ByteSizeLine(byteSize) << '\n';
    const u32 perLine = BytesPerLine(byteSize);
    const u8* bytes = array.GetBytePointer();
    const u32 length = array.GetLength();
    const std::string_view pre = prefix.view();
    const std::size_t lineCount = length ? (std::size_t{length} + perLine - 1) / perLine : 1;
    // Each line: the prefix, a head of at most 15 characters, three per byte and a gap, the end of
    // line; a byte is written as four characters of which the last may be taken back.
    char* out = text.Room(lineCount * (pre.size() + 15 + 3 * std::size_t{perLine} + 2) + 1);
    u32 i = 0;
    do {
        std::memcpy(out, pre.data(), pre.size());
        out = LineHead(out + pre.size(), i);
        const u32 end = length - i < perLine ? length : i + perLine;
        if (end - i == 8) {
            // A whole line of eight, "XX XX XX XX  XX XX XX XX ", at fixed places.
            static constexpr char kBlanks[] = "                         ";
            static constexpr int kAt[8] = {0, 3, 6, 9, 13, 16, 19, 22};
            std::memcpy(out, kBlanks, 25);
            for (int k = 0; k < 8; ++k) std::memcpy(out + kAt[k], kHexPairs.pair[bytes[i + k]], 2);
            out += 25;
            *out++ = '\n';
            i = end;
            continue;
        }
        for (u32 k = i; k < end; ++k) {
            std::memcpy(out, kHexPairs.pair[bytes[k]], 2);
            out[2] = ' ';
            out[3] = ' ';
            out += k - i == 3 ? 4 : 3;
        }
        *out++ = '\n';
        i = end;
    } while (i < length);
    text.Commit(out);
    CStringArray lines;
    DumpTables(array, kind, lines);
    for (int k = 0; k < lines.GetSize(); ++k) text << prefix << lines[k] << '\n';
}

// Kind, ByteSize, the bytes in hexadecimal, then the records of a table segment.
void CVemByteArray::Dump(CStringArray& lines) {
    u8 kind = 0xFF;  // a segment too short for its header shows as unknown
    GetByte(static_cast<u16>(WordWidth(m_byteSize)), &kind);
    lines.Add(vem::SegmentKindName(kind));
    lines.Add(ByteSizeLine(m_byteSize));
    const unsigned perLine = BytesPerLine(m_byteSize);
    CString line = vem::dump::HexLineStart(0);
    for (u32 i = 0; i < m_length; ++i) {
        if (i != 0 && i % perLine == 0) {
            lines.Add(line);
            line = vem::dump::HexLineStart(i);
        }
        vem::dump::AppendHexByte(line, m_data[i], i % perLine == 3);
    }
    lines.Add(line);
    vem::dump::DumpTables(*this, kind, lines);
}

// Header words, then one line per record: Len, IniSeg, DataSeg and the record's own bytes.
// Records are stored DataSeg before IniSeg.
void CVemByteArray::DumpInstanceTable(CStringArray& lines) {
    const unsigned b = m_byteSize, w = WordWidth(b);
    u16 size = 0, next = 0, num = 0;
    GetWord(0, &size);
    GetWord(static_cast<u16>(w + 2 * b), &next);
    GetWord(static_cast<u16>(2 * w + 2 * b), &num);
    CString line;
    lines.Add("");
    line.Format("Size: %d ", size);
    lines.Add(line);
    line.Format("Next Seg: %d ", next);
    lines.Add(line);
    line.Format("Num: %d ", num);
    lines.Add(line);
    u16 record = static_cast<u16>(3 * w + 2 * b);
    for (unsigned r = 0; r < num; ++r) {
        u16 len = 0, dataSeg = 0, iniSeg = 0;
        GetWord(record, &len);
        GetWord(static_cast<u16>(record + w), &dataSeg);
        GetWord(static_cast<u16>(record + 2 * w), &iniSeg);
        line.Format("Len:%4d, IniSeg:%3d, DataSeg:%3d :  ", len, iniSeg, dataSeg);
        for (u32 i = record + 3 * w; i < static_cast<u32>(record) + len && i < m_length; ++i) {
            char text[4];
            std::snprintf(text, sizeof text, "%02X ", m_data[i]);
            line += text;
        }
        lines.Add(line);
        record = static_cast<u16>(record + len);
    }
}

// The download table is only summed up.
void CVemByteArray::DumpDownloadTable(int /*kind*/, CStringArray& lines) {
    const unsigned b = m_byteSize, w = WordWidth(b);
    u16 size = 0, next = 0;
    GetWord(0, &size);
    GetWord(static_cast<u16>(w + 2 * b), &next);
    CString line;
    lines.Add("");
    line.Format("Size: %d ", size);
    lines.Add(line);
    line.Format("Next Seg: %d ", next);
    lines.Add(line);
    lines.Add("full dump of kPlcSegDownloadTable(2) segments not implemented");
}
