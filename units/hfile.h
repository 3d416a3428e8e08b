// Source files with a block of keys in front of the unit's text.
//
// A source file may hold, anywhere in it but normally at offset 0, a block of lines:
//
//   $BEGIN_ZQ_HEADER<CR><LF>
//   KEY = value<CR><LF>          one line per key, " = " between key and value
//   more of the value<CR><LF>    a line without " = " continues the value above it
//   $END_ZQ_HEADER<CR><LF>
//
// The unit's text (the body) begins with the first PROGRAM, FUNCTION_BLOCK or FUNCTION, and in a
// type file (".typ") with the first "[" behind the block. CHFile finds the block, reads and changes
// single keys in place, and shows the body to Read, Write and GetLength as if the block were not
// there. Every edit moves the bytes behind it and keeps all other bytes of the file as they were.
#pragma once

#include <span>
#include <string_view>

#include "platform/file.h"

// Outcome of a scan: found 0 or 1, the byte position and the index of the needle that matched.
struct CHFileMatch {
    int found = 0;
    i64 position = -1;
    int index = -1;
};

class CHFile : public CFile {
    VEM_DECLARE_SERIAL(CHFile)
public:
    // Scans stop at this position when given no other limit.
    static constexpr i64 kNoLimit = 0x80000000LL;
    // GetLength when there is no body.
    static constexpr u64 kNoBody = ~u64{0};

    static constexpr std::string_view kBeginMarker = "$BEGIN_ZQ_HEADER";
    static constexpr std::string_view kEndMarker = "$END_ZQ_HEADER";
    static constexpr std::string_view kLineEnd = "\r\n";
    static constexpr std::string_view kEquals = " = ";
    static constexpr const char* kClosedName = "--no-file-currently-open--";

    CHFile();

    // A non-zero noRaiseException turns a file error into the failure result; with 0 the
    // CFileException reaches the caller.
    int OpenRead(const char* fileName, int noRaiseException);
    int OpenCreate(const char* fileName, int noRaiseException);
    int OpenUpdate(const char* fileName, int noRaiseException);
    void Close() override;
    int CloseChecked(int noRaiseException);

    // Keys of the block. A missing key and an empty value both read as "".
    CString GetValue(const char* key);
    int SetValue(const char* key, const char* value);
    int ReplaceText(const char* oldText, const char* newText);

    // The unit in the body's first line.
    CString GetUnitKind(int noRaiseException);
    CString GetUnitName(int noRaiseException);
    int SetUnitName(const char* name);

    // The body as a file of its own.
    u64 GetLength() const override;
    unsigned Read(void* buffer, unsigned count) override;
    int ReadChecked(void* buffer, unsigned count);
    void Write(const void* buffer, unsigned count) override;
    int WriteChecked(const void* buffer, unsigned count);

    // The scans the operations rest on. Positions are bytes from the start of the file, -1 when
    // there is nothing. FindFirst gives 0 on a file error (and no match), else 1.
    int FindFirst(i64 start, std::span<const std::string_view> needles, bool atLineStart, i64 limit,
                  CHFileMatch& match) const;
    i64 FindBegin() const;
    i64 FindEnd() const;
    i64 FindKeyword() const;
    i64 FindSection() const;
    i64 FindBody() const;
    i64 FindValue(const char* key) const;
    i64 LineLength(i64 position) const;
    i64 DistanceToEquals(i64 position, i64 limit = kNoLimit) const;
    // Move the tail of the file; 1 on success, 0 on a file error.
    int InsertGap(i64 position, i64 count);
    int RemoveBytes(i64 position, i64 count);
    // count bytes at position, through a duplicate handle; a short read raises cause 1.
    CString ReadText(i64 position, i64 count) const;

    int HasHeader() const { return m_hasHeader; }
    int HeaderDisplaced() const { return m_headerDisplaced; }
    int CanRead() const { return m_canRead; }
    int CanWrite() const { return m_canWrite; }
    int IsTypeFile() const { return m_isTypeFile; }
    i64 BodyPosition() const { return m_bodyPosition; }
    const CString& FileName() const { return m_fileName; }
    int BodyWritten() const { return m_bodyWritten; }

private:
    int OpenWith(const char* fileName, unsigned flags, int noRaiseException, int canRead, int canWrite);
    void ResetState();
    int ComputeDisplaced() const;
    [[noreturn]] void Fail(int cause) const;

    i64 ScanPlain(i64 start, std::string_view needle, i64 limit) const;
    i64 RawLength() const;
    bool LineEndAt(i64 position) const;
    CString ReadUnitLine(i64 position) const;
    CString UnitNameOrThrow() const;

    void WriteAt(i64 position, std::string_view bytes);
    int ResizeRange(i64 position, i64 oldLength, i64 newLength);
    void AddBlock(std::string_view key, std::string_view value);
    void AddKey(std::string_view key, std::string_view value);
    void ReplaceValueLine(i64 position, std::string_view value);
    void MoveBlockToStart();
    void SeekBehindBlock();

    int m_hasHeader = 0;
    int m_headerDisplaced = 0;
    int m_canRead = 0;
    int m_canWrite = 0;
    int m_isTypeFile = 0;
    i64 m_bodyPosition = 0;
    CString m_fileName;
    int m_bodyWritten = 0;
};

// Goes through the keys of a file's block, in file order.
class CHFileKeyIterator {
public:
    explicit CHFileKeyIterator(CHFile* file);
    int IsValid() const { return m_valid; }
    const CString& GetKey() const { return m_key; }
    void Next();

private:
    CHFile* m_file;
    i64 m_endPosition = -1;
    i64 m_position = -1;
    CString m_key;
    int m_valid = 0;
};

namespace vem {

// The number that a source file's block holds under "CHECK": false when the file cannot be opened
// (value is then left alone); a file without the key or without a block gives 0.
bool ReadCheckKey(const char* sourceFile, u32& value);
// The leading signed decimal number of a text: blanks skipped, optional sign, digits up to the
// first other character; 0 when there is none. Wraps modulo 2^32.
u32 ParseCheckValue(const char* text);

}  // namespace vem
