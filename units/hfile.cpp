// CHFile: opening and closing, reading keys, the unit's name and the body.
#include "units/hfile.h"

#include <string>

#include "platform/msgbox.h"
#include "units/hfile_io.h"

VEM_IMPLEMENT_SERIAL(CHFile, CFile, 5)

namespace {

constexpr std::string_view kProgram = "PROGRAM";
constexpr std::string_view kFunctionBlock = "FUNCTION_BLOCK";
constexpr std::string_view kFunction = "FUNCTION";
// Longest first line of a body that the unit's name is taken from.
constexpr i64 kMaxUnitLine = 255;
// Close's report: system modal, stop icon, second button the default.
constexpr unsigned kCloseErrorStyle = 0x1110;

bool IsTypeFileName(const char* name) {
    const CString text(name);
    const int dot = text.ReverseFind('.');
    return dot >= 0 && text.Mid(dot).CompareNoCase(".typ") == 0;
}

CString TrimBlanks(const CString& text) {
    const std::string& s = text.str();
    const std::size_t first = s.find_first_not_of(" \t");
    if (first == std::string::npos) return {};
    return CString(s.substr(first, s.find_last_not_of(" \t") - first + 1));
}

}  // namespace

std::string_view vem::HFileUnitWord(const CString& line) {
    for (std::string_view word : {kProgram, kFunctionBlock, kFunction})
        if (line.view().starts_with(word)) return word;
    return {};
}

CHFile::CHFile() { ResetState(); }

void CHFile::ResetState() {
    m_hasHeader = 0;
    m_headerDisplaced = 0;
    m_canRead = 0;
    m_canWrite = 0;
    m_isTypeFile = 0;
    m_bodyPosition = 0;
    m_fileName = kClosedName;
    m_bodyWritten = 0;
}

void CHFile::Fail(int cause) const { VemThrowFile(cause, m_fileName); }

int CHFile::OpenRead(const char* fileName, int noRaiseException) {
    return OpenWith(fileName, modeRead, noRaiseException, 1, 0);
}

int CHFile::OpenCreate(const char* fileName, int noRaiseException) {
    return OpenWith(fileName, modeCreate | modeReadWrite, noRaiseException, 0, 1);
}

int CHFile::OpenUpdate(const char* fileName, int noRaiseException) {
    return OpenWith(fileName, modeReadWrite, noRaiseException, 1, 1);
}

int CHFile::OpenWith(const char* fileName, unsigned flags, int noRaiseException, int canRead, int canWrite) {
    if (!fileName) fileName = "";
    CFileException error(CFileException::none, -1, fileName);
    if (!CFile::Open(fileName, flags | typeBinary | shareDenyWrite, &error)) {
        if (noRaiseException) return 0;
        if (error.m_strFileName.IsEmpty()) error.m_strFileName = fileName;
        throw error;
    }
    ResetState();
    m_fileName = fileName;
    m_isTypeFile = IsTypeFileName(fileName);
    if (!(flags & modeCreate)) {
        m_hasHeader = FindBegin() >= 0;
        m_headerDisplaced = m_hasHeader ? ComputeDisplaced() : 0;
    }
    m_canRead = canRead;
    m_canWrite = canWrite;
    return 1;
}

// The block does not stand directly in front of the body when the file holds more than the two.
int CHFile::ComputeDisplaced() const {
    const i64 endLine = static_cast<i64>(kEndMarker.size() + kLineEnd.size());
    const i64 body = static_cast<i64>(GetLength());
    return RawLength() > endLine + FindEnd() + body - FindBegin();
}

void CHFile::Close() {
    const CString name = m_fileName;
    try {
        CloseChecked(0);
    } catch (const CFileException&) {
        CString text;
        text.Format("Error during file-close.\nFile: %s\n", name.GetString());
        AfxMessageBox(text, kCloseErrorStyle);
    }
}

int CHFile::CloseChecked(int noRaiseException) {
    try {
        if (IsOpen()) CFile::Close();
    } catch (const CFileException&) {
        ResetState();
        if (noRaiseException) return 0;
        throw;
    }
    ResetState();
    return 1;
}

CString CHFile::GetValue(const char* key) {
    if (!m_canRead || !m_hasHeader) return {};
    const i64 end = FindEnd();
    const i64 value = FindValue(key);
    if (end < 0 || value < 0) return {};
    const i64 length = LineLength(value);
    if (length <= 0) return {};
    CString result = ReadText(value, length);
    // Lines without " = " in front of the end marker continue the value.
    for (i64 next = value + length + 2; next < end;) {
        const i64 lineLength = LineLength(next);
        if (lineLength < 0) return {};
        if (next + lineLength >= end || DistanceToEquals(next, next + lineLength) >= 0) break;
        result += kLineEnd;
        result += ReadText(next, lineLength);
        next += lineLength + 2;
    }
    return result;
}

CString CHFile::GetUnitKind(int noRaiseException) {
    static constexpr std::string_view kWords[] = {kProgram, kFunctionBlock, kFunction};
    CHFileMatch match;
    const i64 keyword = FindKeyword();
    if (keyword >= 0) FindFirst(keyword, kWords, false, kNoLimit, match);
    if (match.found) return CString(kWords[match.index]);
    if (noRaiseException) return {};
    Fail(CFileException::genericException);
}

// The body's first line, or the rest of the file when it has no line end.
CString CHFile::ReadUnitLine(i64 position) const {
    i64 length = LineLength(position);
    if (length < 0) length = RawLength() - position;
    if (length > kMaxUnitLine) Fail(CFileException::badSeek);
    return ReadText(position, length);
}

CString CHFile::UnitNameOrThrow() const {
    const i64 keyword = FindKeyword();
    if (keyword < 0) Fail(CFileException::badSeek);
    const CString line = ReadUnitLine(keyword);
    const std::string_view word = vem::HFileUnitWord(line);
    if (word.empty()) Fail(CFileException::genericException);
    const int from = static_cast<int>(word.size());
    CString name;
    if (word == kFunction) {
        const int colon = line.Find(':', from);
        if (colon < 0) Fail(CFileException::genericException);
        name = line.Mid(from, colon - from);
    } else {
        name = line.Mid(from);
    }
    name = TrimBlanks(name);
    if (name.IsEmpty()) Fail(CFileException::genericException);
    return name;
}

CString CHFile::GetUnitName(int noRaiseException) {
    try {
        return UnitNameOrThrow();
    } catch (const CFileException&) {
        if (noRaiseException) return {};
        throw;
    }
}

u64 CHFile::GetLength() const {
    try {
        const i64 raw = RawLength();
        const i64 body = raw > 0 ? FindBody() : -1;
        return body < 0 ? kNoBody : static_cast<u64>(raw - body);
    } catch (const CFileException&) {
        return kNoBody;
    }
}

unsigned CHFile::Read(void* buffer, unsigned count) {
    if (!m_canRead) Fail(CFileException::badSeek);
    if (m_bodyPosition == 0) {
        const i64 body = FindBody();
        if (body < 0) Fail(CFileException::badSeek);
        m_bodyPosition = body;
    }
    CFile::Seek(m_bodyPosition, begin);
    const unsigned got = CFile::Read(buffer, count);
    m_bodyPosition += got;
    CFile::Seek(0, begin);
    return got;
}

int CHFile::ReadChecked(void* buffer, unsigned count) {
    try {
        return static_cast<int>(Read(buffer, count));
    } catch (const CFileException&) {
        return -1;
    }
}

CHFileKeyIterator::CHFileKeyIterator(CHFile* file) : m_file(file) {
    if (!m_file) return;
    m_position = m_file->FindBegin();
    m_endPosition = m_file->FindEnd();
    if (m_position < 0 || m_endPosition < 0) return;
    Next();
}

// Skips the line at Position and any line without " = " (continuations, blank lines).
void CHFileKeyIterator::Next() {
    m_valid = 0;
    m_key.Empty();
    if (!m_file || m_position < 0) return;
    i64 length = m_file->LineLength(m_position);
    for (;;) {
        if (length < 0) return;
        m_position += length + 2;
        if (m_position >= m_endPosition) return;
        length = m_file->LineLength(m_position);
        if (length < 0) return;
        const i64 equals = m_file->DistanceToEquals(m_position, m_position + length);
        if (equals >= 0) {
            m_key = TrimBlanks(CString(m_file->ReadText(m_position, equals)));
            m_valid = 1;
            return;
        }
    }
}

u32 vem::ParseCheckValue(const char* text) {
    if (!text) return 0;
    const auto isSpace = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    while (isSpace(*text)) ++text;
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+') ++text;
    u32 value = 0;
    for (; *text >= '0' && *text <= '9'; ++text) value = value * 10u + static_cast<u32>(*text - '0');
    return negative ? 0u - value : value;
}

bool vem::ReadCheckKey(const char* sourceFile, u32& value) {
    CHFile file;
    const bool opened = file.OpenRead(sourceFile, 1) != 0;
    try {
        if (opened) value = vem::ParseCheckValue(file.GetValue("CHECK"));
    } catch (...) {
        file.Close();
        throw;
    }
    file.Close();
    return opened;
}
