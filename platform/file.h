// Files: an unbuffered binary file over a host file descriptor, and a file in memory.
#pragma once

#include <ctime>
#include <vector>

#include "platform/cstring.h"
#include "platform/exceptions.h"
#include "platform/object.h"

struct CFileStatus {
    std::time_t m_mtime = 0;  // last modification, seconds since the epoch
    u64 m_size = 0;
    bool m_isDirectory = false;
    bool m_isRegular = false;  // a plain file: no directory, device or pipe
};

class VEM_API CFile : public CObject {
    VEM_DECLARE_DYNAMIC(CFile)
public:
    enum OpenFlags : unsigned {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        shareCompat = 0x0000,
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        modeNoInherit = 0x0080,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        typeText = 0x4000,
        typeBinary = 0x8000,
    };
    enum SeekPosition : unsigned { begin = 0, current = 1, end = 2 };

    CFile();
    // Opens or throws CFileException.
    CFile(const char* fileName, unsigned openFlags);
    ~CFile() override;
    CFile(const CFile&) = delete;
    CFile& operator=(const CFile&) = delete;

    // Returns false and fills *error (if given) when the file cannot be opened.
    virtual bool Open(const char* fileName, unsigned openFlags, CFileException* error = nullptr);
    virtual unsigned Read(void* buffer, unsigned count);
    virtual void Write(const void* buffer, unsigned count);
    virtual u64 Seek(i64 offset, unsigned from);
    virtual u64 GetPosition() const;
    virtual u64 GetLength() const;
    virtual void SetLength(u64 newLength);
    virtual void Flush();
    virtual void Close();
    virtual void Abort();  // closes without raising
    // A second handle on the same open file, with a position of its own.
    virtual CFile* Duplicate() const;

    void SeekToBegin() { Seek(0, begin); }
    u64 SeekToEnd() { return Seek(0, end); }
    bool IsOpen() const { return m_fd >= 0; }
    const CString& GetFilePath() const { return m_strFileName; }

    static bool GetStatus(const char* fileName, CFileStatus& status);
    static void Remove(const char* fileName);                      // throws CFileException
    static void Rename(const char* oldName, const char* newName);  // throws CFileException

protected:
    int m_fd = -1;
    u64 m_pos = 0;
    bool m_closeOnDelete = false;
    CString m_strFileName;
};

// A file held in memory; it grows as it is written.
class VEM_API CMemFile : public CFile {
    VEM_DECLARE_DYNAMIC(CMemFile)
public:
    CMemFile() = default;
    explicit CMemFile(std::vector<u8> bytes) : m_data(std::move(bytes)) {}
    CMemFile(const void* bytes, std::size_t count);

    bool Open(const char* fileName, unsigned openFlags, CFileException* error = nullptr) override;
    unsigned Read(void* buffer, unsigned count) override;
    void Write(const void* buffer, unsigned count) override;
    u64 Seek(i64 offset, unsigned from) override;
    u64 GetPosition() const override { return m_pos; }
    u64 GetLength() const override { return m_data.size(); }
    void SetLength(u64 newLength) override;
    void Flush() override {}
    void Close() override {}
    void Abort() override {}
    CFile* Duplicate() const override;

    const std::vector<u8>& Data() const { return m_data; }
    std::vector<u8> Detach() { return std::move(m_data); }

private:
    std::vector<u8> m_data;
};

// A whole file written safely: the bytes go to a temporary file beside the target, and Commit
// flushes it and renames it over the target. A write that fails or is never committed leaves the
// previous target whole; the temporary file is removed.
class VEM_API CVemReplaceFile : public CFile {
public:
    CVemReplaceFile() = default;
    ~CVemReplaceFile() override;
    // Opens the temporary file for writing; false if it cannot be made.
    bool OpenReplace(const char* targetName);
    // Raises CFileException if the bytes cannot be made durable or the rename fails.
    void Commit();
    // Drops the temporary file; the target stays as it was.
    void Discard();

private:
    CString m_target;
    CString m_temporary;
};

// Collects the many small writes of a text dump and hands them to the target file in large
// pieces. The other operations first hand over what is collected and then act on the target.
// Drain (or the destructor, which cannot report) hands over the rest.
class CVemWriteBuffer : public CFile {
public:
    explicit CVemWriteBuffer(CFile& target) : m_target(target) {}
    ~CVemWriteBuffer() override;
    CVemWriteBuffer(const CVemWriteBuffer&) = delete;
    CVemWriteBuffer& operator=(const CVemWriteBuffer&) = delete;

    void Drain();
    void Write(const void* buffer, unsigned count) override;
    unsigned Read(void* buffer, unsigned count) override;
    u64 Seek(i64 offset, unsigned from) override;
    u64 GetPosition() const override;
    u64 GetLength() const override;
    void SetLength(u64 newLength) override;
    void Flush() override;
    void Close() override { Drain(); }
    void Abort() override { m_bytes.clear(); }
    CFile* Duplicate() const override;

private:
    static constexpr std::size_t kPiece = std::size_t{64} * 1024;
    CFile& m_target;
    std::vector<u8> m_bytes;
};

// Paths. Names that the library stores keep the Windows form in which callers give them (drive
// letter, backslashes), in node files and in memory alike. Only where the library touches the host's
// file system (open, status, remove, rename, make a directory) does it turn such a name into a host
// path, through VemHostPath and nowhere else: every backslash becomes a slash, and a drive prefix
// (a letter and a colon) is dropped, so that "C:\PRJ\a.obj" is "/PRJ/a.obj" and "D\FILE12" is
// "D/FILE12". A relative name stays relative to the process's working directory.
VEM_API CString VemHostPath(const char* name);

// Splits a path by the Windows rules on every host: a drive is a letter and a colon at the start,
// both slashes separate directories, and the last dot of the last part starts the extension. A path
// without a file part ("C:\PRJ\") gives an empty title.
struct VemPathParts {
    CString drive;      // "C:" or empty
    CString directory;  // with its trailing separator, "\PRJ\"
    CString title;      // file name without extension
    CString extension;  // with its dot, ".obj"
};
VEM_API VemPathParts VemSplitPath(const char* path);

namespace vem {

// The identity of the file behind a name (device and inode), so that two names of one file compare
// equal. False if there is no such file.
struct FileId {
    u64 device = 0;
    u64 inode = 0;
    bool operator==(const FileId&) const = default;
};
bool FileIdentity(const char* fileName, FileId& id);

// The calendar time of `time` in the host's time zone; false if it has none.
bool LocalTime(std::time_t time, std::tm& local);

}  // namespace vem

// Makes one directory level (the host path of `name`). False if it could not be made, also when it
// exists already.
VEM_API bool VemMakeDirectory(const char* name);
