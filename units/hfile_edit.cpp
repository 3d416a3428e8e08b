// CHFile: edits in place. Each edit changes one range of the file and moves what stands behind it;
// every other byte stays as it was.
#include <algorithm>
#include <string>

#include "units/hfile.h"
#include "units/hfile_io.h"

namespace {

// Longest unit name that SetUnitName writes.
constexpr int kMaxUnitName = 64;

std::string_view OrEmpty(const char* text) { return text ? std::string_view(text) : std::string_view(); }

// The first line of a unit with a new name: the word and the character behind it, the name, and for
// a FUNCTION its return type from the last ":" on.
CString NewUnitLine(const CString& line, std::string_view word, const CString& name) {
    const int wordLength = static_cast<int>(word.size());
    CString head = line.Left(wordLength);
    head += line.GetLength() > wordLength ? line[wordLength] : ' ';
    CString tail;
    if (word == "FUNCTION") {
        const int colon = line.ReverseFind(':');
        if (colon >= 0) tail = " " + line.Mid(colon);
    }
    return head + name + tail;
}

}  // namespace

void CHFile::WriteAt(i64 position, std::string_view bytes) {
    CFile::Seek(position, begin);
    CFile::Write(bytes.data(), static_cast<unsigned>(bytes.size()));
}

// Opens count bytes of undefined content at position; the tail moves behind them.
int CHFile::InsertGap(i64 position, i64 count) {
    if (count == 0) return 1;
    if (position < 0 || count < 0) return 0;
    try {
        const u64 saved = CFile::GetPosition();
        const i64 length = RawLength();
        if (position < length) {
            const CString tail = ReadText(position, length - position);
            const i64 moved = position + count;
            // What lands behind the old end goes first: when the disk is full the file is cut
            // back and nothing of its old content has changed.
            std::string grow(static_cast<std::size_t>(count), ' ');
            for (i64 at = std::max(moved, length); at < length + count; ++at)
                grow[static_cast<std::size_t>(at - length)] = tail[static_cast<int>(at - moved)];
            try {
                WriteAt(length, grow);
            } catch (const CFileException&) {
                CFile::SetLength(static_cast<u64>(length));
                throw;
            }
            if (moved < length) {
                try {
                    WriteAt(moved, tail.view().substr(0, static_cast<std::size_t>(length - moved)));
                } catch (const CFileException&) {
                    WriteAt(position, tail.view());  // put the old tail back where it was
                    CFile::SetLength(static_cast<u64>(length));
                    throw;
                }
            }
        }
        CFile::Seek(static_cast<i64>(saved), begin);
        return 1;
    } catch (const CFileException&) {
        return 0;
    }
}

int CHFile::RemoveBytes(i64 position, i64 count) {
    if (count == 0) return 1;
    if (position < 0 || count < 0) return 0;
    try {
        const u64 saved = CFile::GetPosition();
        const i64 length = RawLength();
        if (position + count > length) return 0;
        const CString tail = ReadText(position + count, length - position - count);
        WriteAt(position, tail.view());
        CFile::SetLength(static_cast<u64>(length - count));
        CFile::Seek(static_cast<i64>(saved), begin);
        return 1;
    } catch (const CFileException&) {
        return 0;
    }
}

// Makes the range at position, oldLength bytes long, newLength bytes long.
int CHFile::ResizeRange(i64 position, i64 oldLength, i64 newLength) {
    if (newLength > oldLength) return InsertGap(position + oldLength, newLength - oldLength);
    if (newLength < oldLength) return RemoveBytes(position + newLength, oldLength - newLength);
    return 1;
}

int CHFile::SetValue(const char* key, const char* value) {
    if (!m_canWrite) return 0;
    if (!m_hasHeader) {
        AddBlock(OrEmpty(key), OrEmpty(value));
        return 1;
    }
    const i64 at = FindValue(key);
    if (at > 0)
        ReplaceValueLine(at, OrEmpty(value));
    else
        AddKey(OrEmpty(key), OrEmpty(value));
    return 1;
}

// A new block with one key at offset 0. Room is made for it when the body starts within the
// block's length; text in front of a body that starts further in is written over.
void CHFile::AddBlock(std::string_view key, std::string_view value) {
    std::string block(kBeginMarker);
    block.append(kLineEnd).append(key).append(kEquals).append(value).append(kLineEnd);
    block.append(kEndMarker).append(kLineEnd);
    const i64 body = FindBody();
    if (body < 0) Fail(CFileException::badSeek);
    const auto length = static_cast<i64>(block.size());
    if (RawLength() > 0 && body <= length && !InsertGap(0, length)) Fail(CFileException::genericException);
    WriteAt(0, block);
    m_hasHeader = 1;
}

// A new key goes directly in front of the end marker.
void CHFile::AddKey(std::string_view key, std::string_view value) {
    const i64 end = FindEnd();
    if (end < 0) Fail(CFileException::genericException);
    std::string line(key);
    line.append(kEquals).append(value).append(kLineEnd);
    if (!InsertGap(end, static_cast<i64>(line.size()))) Fail(CFileException::genericException);
    WriteAt(end, line);
}

// Only the first line of a value of several lines is replaced.
void CHFile::ReplaceValueLine(i64 position, std::string_view value) {
    const i64 oldLength = LineLength(position);
    if (oldLength < 0) Fail(CFileException::genericException);
    if (!ResizeRange(position, oldLength, static_cast<i64>(value.size()))) Fail(CFileException::genericException);
    WriteAt(position, value);
}

int CHFile::ReplaceText(const char* oldText, const char* newText) {
    if (!m_canWrite) return 0;
    const std::string_view from = OrEmpty(oldText);
    const std::string_view to = OrEmpty(newText);
    const std::string_view needles[] = {from};
    CHFileMatch match;
    FindFirst(0, needles, false, kNoLimit, match);
    if (!match.found) {
        CFile::Seek(0, begin);
        return 0;
    }
    if (!ResizeRange(match.position, static_cast<i64>(from.size()), static_cast<i64>(to.size()))) return 0;
    try {
        WriteAt(match.position, to);
    } catch (const CFileException&) {
        return 0;
    }
    return 1;
}

int CHFile::SetUnitName(const char* name) {
    if (!m_canWrite) return 0;
    const i64 keyword = FindKeyword();
    if (keyword < 0) return 0;
    CString line;
    try {
        line = ReadUnitLine(keyword);
    } catch (const CFileException&) {
        return 0;
    }
    const std::string_view word = vem::HFileUnitWord(line);
    if (word.empty()) return 0;
    CString newLine = NewUnitLine(line, word, CString(name).Left(kMaxUnitName));
    newLine.MakeUpper();
    if (!ResizeRange(keyword, line.GetLength(), newLine.GetLength())) return 0;
    try {
        WriteAt(keyword, newLine.view());
    } catch (const CFileException&) {
        return 0;
    }
    return 1;
}

// The body is written once per opening, behind a block that stands at the file's start.
void CHFile::Write(const void* buffer, unsigned count) {
    if (m_bodyWritten || !m_canWrite) Fail(CFileException::accessDenied);
    const i64 end = m_hasHeader ? FindEnd() : -1;
    if (!m_hasHeader) {
        std::string block(kBeginMarker);
        block.append(kLineEnd).append(kLineEnd).append(kEndMarker).append(kLineEnd);
        WriteAt(0, block);
        m_hasHeader = 1;
    } else if (m_headerDisplaced || end < 0 || end < FindBegin()) {
        MoveBlockToStart();
        m_headerDisplaced = 0;
    } else {
        SeekBehindBlock();
    }
    CFile::Write(buffer, count);
    CFile::SetLength(CFile::GetPosition());
    m_bodyWritten = 1;
}

int CHFile::WriteChecked(const void* buffer, unsigned count) {
    try {
        Write(buffer, count);
        return 1;
    } catch (const CFileException&) {
        return 0;
    }
}

// Copies the block to offset 0 and leaves the position behind it. Without an end marker the block
// runs to the body (or the file's end) and gets one.
void CHFile::MoveBlockToStart() {
    const i64 first = FindBegin();
    if (first < 0) Fail(CFileException::genericException);
    const i64 end = FindEnd();
    std::string block;
    if (end > first) {
        block = ReadText(first, end + static_cast<i64>(kEndMarker.size()) - first).str();
    } else {
        const i64 body = FindBody();
        const i64 stop = body > first ? body : RawLength();
        block = ReadText(first, stop - first).str();
        if (!block.ends_with(kLineEnd)) block.append(kLineEnd);
        block.append(kEndMarker);
    }
    block.append(kLineEnd);
    WriteAt(0, block);
}

// Positions the file behind the end marker's line, giving the marker a line end if it has none.
void CHFile::SeekBehindBlock() {
    const i64 behind = FindEnd() + static_cast<i64>(kEndMarker.size());
    if (LineEndAt(behind))
        CFile::Seek(behind + static_cast<i64>(kLineEnd.size()), begin);
    else
        WriteAt(behind, kLineEnd);
}
