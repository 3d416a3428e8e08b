// CHFile: the scans. Each one works on a duplicate handle, so the file's own position stays.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "units/hfile.h"
#include "units/hfile_io.h"

namespace {

constexpr std::size_t kBlockSize = 2048;
// Bytes kept in front of a block for deciding whether a match stands at a line start.
constexpr std::size_t kLookBehind = 60;

bool IsBlank(u8 c) { return c == ' ' || c == '\t'; }

// Plain ASCII upper case: bytes above 127 stay, whatever the host's locale.
u8 Upper(u8 c) { return (c >= 'a' && c <= 'z') ? static_cast<u8>(c - ('a' - 'A')) : c; }

// Whether offset `at` of the buffer stands at a line start: only blanks and tabs between it and a
// line end. Reaching the buffer's start gives what is known about the buffer's first byte.
bool AtLineStart(const u8* buf, std::size_t at, bool bufferStartsLine) {
    while (at > 0 && IsBlank(buf[at - 1])) --at;
    if (at == 0) return bufferStartsLine;
    return buf[at - 1] == '\r' || buf[at - 1] == '\n';
}

struct Hit {
    std::size_t offset = std::string_view::npos;
    int index = -1;
};

// The earliest match of any needle from the cursor on; on a tie the earlier needle.
Hit Earliest(std::string_view text, std::size_t cursor, const std::vector<std::string>& needles) {
    Hit hit;
    for (std::size_t i = 0; i < needles.size(); ++i) {
        std::size_t at = text.find(needles[i], cursor);
        if (at < hit.offset) hit = {at, static_cast<int>(i)};
    }
    return hit;
}

std::unique_ptr<CFile> DuplicateAt(const CFile& file, i64 position) {
    std::unique_ptr<CFile> dup(file.Duplicate());
    if (!dup) VemThrowFile(CFileException::genericException);
    dup->CFile::Seek(position, CFile::begin);
    return dup;
}

}  // namespace

std::size_t vem::HFileReadUpTo(CFile& file, void* to, std::size_t count) {
    std::size_t got = 0;
    while (got < count) {
        std::size_t want = std::min<std::size_t>(count - got, 0x40000000u);
        unsigned n = file.CFile::Read(static_cast<u8*>(to) + got, static_cast<unsigned>(want));
        if (n == 0) break;
        got += n;
    }
    return got;
}

// The block scanner. Blocks of at least 2048 bytes are read behind the last bytes of the block
// before, so that a needle may cross the border; the text of a block ends at a zero byte.
int CHFile::FindFirst(i64 start, std::span<const std::string_view> needles, bool atLineStart, i64 limit,
                      CHFileMatch& match) const {
    match = {};
    if (start < 0) return 1;
    std::vector<std::string> upper;
    std::size_t longest = 0;
    for (std::string_view n : needles) {
        std::string u(n);
        for (char& c : u) c = static_cast<char>(Upper(static_cast<u8>(c)));
        longest = std::max(longest, u.size());
        upper.push_back(std::move(u));
    }
    const std::size_t work = longest + (atLineStart ? kLookBehind : 0);
    const std::size_t size = std::max(work + 10, kBlockSize);
    std::vector<u8> buf(size + 1);
    try {
        std::unique_ptr<CFile> dup = DuplicateAt(*this, start);
        i64 base = start;
        std::size_t kept = 0;
        bool bufferStartsLine = true;  // the scan's start counts as a line start
        for (;;) {
            const std::size_t want = size - kept;
            const std::size_t got = vem::HFileReadUpTo(*dup, buf.data() + kept, want);
            const std::size_t filled = kept + got;
            for (std::size_t i = kept; i < filled; ++i) buf[i] = Upper(buf[i]);
            buf[filled] = 0;
            const char* text = reinterpret_cast<const char*>(buf.data());
            const std::string_view view(text, ::strnlen(text, filled));
            for (std::size_t cursor = 0;;) {
                const Hit hit = Earliest(view, cursor, upper);
                if (hit.index < 0) break;
                const i64 position = base + static_cast<i64>(hit.offset);
                if (position > limit) return 1;
                if (!atLineStart || AtLineStart(buf.data(), hit.offset, bufferStartsLine)) {
                    match = {1, position, hit.index};
                    return 1;
                }
                cursor = hit.offset + 1;
            }
            if (got < want) break;
            kept = std::min(work, filled);
            const std::size_t advance = filled - kept;
            // What the look-behind cannot see any more is carried as one flag.
            bufferStartsLine = AtLineStart(buf.data(), advance, bufferStartsLine);
            std::memmove(buf.data(), buf.data() + advance, kept);
            base += static_cast<i64>(advance);
            if (base >= limit) break;
        }
    } catch (const CFileException&) {
        match = {};  // a read that fails is no "not found": an edit must not act on it
        throw;
    }
    return 1;
}

// A byte-exact search for line ends and " = ". It does not stop at zero bytes, so that a zero
// inside a line cannot hide the line's end from an edit.
i64 CHFile::ScanPlain(i64 start, std::string_view needle, i64 limit) const {
    if (start < 0 || needle.empty()) return -1;
    const std::size_t size = kBlockSize + needle.size();
    std::vector<char> buf(size);
    try {
        std::unique_ptr<CFile> dup = DuplicateAt(*this, start);
        i64 base = start;
        std::size_t kept = 0;
        for (;;) {
            const std::size_t want = size - kept;
            const std::size_t got = vem::HFileReadUpTo(*dup, buf.data() + kept, want);
            const std::size_t filled = kept + got;
            const std::size_t at = std::string_view(buf.data(), filled).find(needle);
            if (at != std::string_view::npos) {
                const i64 position = base + static_cast<i64>(at);
                return position > limit ? -1 : position;
            }
            if (got < want) return -1;
            kept = std::min(needle.size() - 1, filled);
            const std::size_t advance = filled - kept;
            std::memmove(buf.data(), buf.data() + advance, kept);
            base += static_cast<i64>(advance);
            if (base >= limit) return -1;
        }
    } catch (const CFileException&) {
        throw;  // a read that fails is no "not found"
    }
}

namespace {
i64 FoundAt(const CHFile& file, i64 start, std::span<const std::string_view> needles, bool atLineStart, i64 limit) {
    CHFileMatch match;
    file.FindFirst(start, needles, atLineStart, limit, match);
    return match.found ? match.position : -1;
}
}  // namespace

i64 CHFile::FindBegin() const {
    const std::string_view needles[] = {kBeginMarker};
    return FoundAt(*this, 0, needles, true, kNoLimit);
}

i64 CHFile::FindEnd() const {
    const std::string_view needles[] = {kEndMarker};
    return FoundAt(*this, 0, needles, true, kNoLimit);
}

i64 CHFile::FindKeyword() const {
    const std::string_view needles[] = {"PROGRAM", "FUNCTION", "FUNCTION_BLOCK"};
    return FoundAt(*this, 0, needles, false, kNoLimit);
}

i64 CHFile::FindSection() const {
    const i64 end = FindEnd();
    if (end < 0) return -1;
    const std::string_view needles[] = {"["};
    return FoundAt(*this, end, needles, false, kNoLimit);
}

i64 CHFile::FindBody() const { return m_isTypeFile ? FindSection() : FindKeyword(); }

i64 CHFile::FindValue(const char* key) const {
    const i64 begin = FindBegin();
    if (begin < 0) return -1;
    const i64 end = FindEnd();
    const std::string needle = std::string(key ? key : "") + std::string(kEquals);
    const std::string_view needles[] = {needle};
    const i64 at = FoundAt(*this, begin, needles, true, end < 0 ? kNoLimit : end);
    return at < 0 ? -1 : at + static_cast<i64>(needle.size());
}

i64 CHFile::LineLength(i64 position) const {
    const i64 at = ScanPlain(position, kLineEnd, kNoLimit);
    return at < 0 ? -1 : at - position;
}

i64 CHFile::DistanceToEquals(i64 position, i64 limit) const {
    const i64 at = ScanPlain(position, kEquals, limit);
    return at < 0 ? -1 : at - position;
}

CString CHFile::ReadText(i64 position, i64 count) const {
    if (position < 0 || count < 0) Fail(CFileException::badSeek);
    std::string text(static_cast<std::size_t>(count), '\0');
    std::unique_ptr<CFile> dup = DuplicateAt(*this, position);
    if (vem::HFileReadUpTo(*dup, text.data(), text.size()) < text.size()) Fail(CFileException::genericException);
    return CString(std::move(text));
}

i64 CHFile::RawLength() const { return static_cast<i64>(CFile::GetLength()); }

bool CHFile::LineEndAt(i64 position) const {
    char two[2] = {};
    std::unique_ptr<CFile> dup = DuplicateAt(*this, position);
    return vem::HFileReadUpTo(*dup, two, 2) == 2 && std::string_view(two, 2) == kLineEnd;
}
