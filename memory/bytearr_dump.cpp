// CVemByteArray: text dumps of a segment, one element of the string array per line.
#include <cstdio>
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

void vem::dump::AppendPlainDump(CVemByteArray& array, const CString& prefix, CVemDumpText& text) {
    static const char kDigits[] = "0123456789ABCDEF";
    const u8 byteSize = array.GetByteSize();
    u8 kind = 0xFF;
    array.GetByte(static_cast<u16>(WordWidth(byteSize)), &kind);
    text << prefix << vem::SegmentKindName(kind) << '\n';
    text << prefix << ByteSizeLine(byteSize) << '\n';
    const unsigned perLine = BytesPerLine(byteSize);
    const u8* bytes = array.GetBytePointer();
    const u32 length = array.GetLength();
    // A line starts as "    %04X : " behind the prefix.
    const auto start = [&](u32 index) {
        char head[16] = {' ', ' ', ' ', ' '};
        std::size_t at = 4;
        int shift = 28;
        while (shift > 12 && (index >> shift) == 0) shift -= 4;
        for (; shift >= 0; shift -= 4) head[at++] = kDigits[(index >> shift) & 15];
        head[at++] = ' ';
        head[at++] = ':';
        head[at++] = ' ';
        text << prefix;
        text.Append(head, at);
    };
    start(0);
    for (u32 i = 0; i < length; ++i) {
        if (i != 0 && i % perLine == 0) {
            text << '\n';
            start(i);
        }
        const char hex[] = {kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15], ' ', ' '};
        text.Append(hex, i % perLine == 3 ? 4 : 3);
    }
    text << '\n';
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
