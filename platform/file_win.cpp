// Windows forms of the file operations that reach the host's file system. A CFile keeps a C runtime
// descriptor over its Windows handle, so that the class looks the same on every host. Names are
// used as the caller gives them, drive letter and backslashes included.
#ifdef _WIN32

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <atomic>
#include <cerrno>
#include <memory>
#include <string>

#include "platform/file.h"
#include "platform/filefault.h"

namespace {

// The C library's number for a Windows error, so that one table gives the cause on every host.
int ErrnoOf(DWORD error) {
    switch (error) {
        case ERROR_SUCCESS: return 0;
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_DRIVE: return ENOENT;
        case ERROR_INVALID_NAME:
        case ERROR_BAD_PATHNAME:
        case ERROR_FILENAME_EXCED_RANGE:
        case ERROR_DIRECTORY: return ENAMETOOLONG;
        case ERROR_TOO_MANY_OPEN_FILES: return EMFILE;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION:
        case ERROR_WRITE_PROTECT: return EACCES;
        case ERROR_INVALID_HANDLE: return EBADF;
        case ERROR_DISK_FULL:
        case ERROR_HANDLE_DISK_FULL: return ENOSPC;
        case ERROR_NEGATIVE_SEEK:
        case ERROR_SEEK: return EINVAL;
        case ERROR_FILE_EXISTS:
        case ERROR_ALREADY_EXISTS: return EEXIST;
        default: return EIO;
    }
}

CFileException ErrorOf(DWORD error, const char* name) {
    return CFileException(CFileException::OsErrorToCause(ErrnoOf(error)), static_cast<int>(error), name);
}

[[noreturn]] void ThrowLastError(const CString& name) { throw ErrorOf(GetLastError(), name); }

HANDLE HandleOf(int fd) { return reinterpret_cast<HANDLE>(_get_osfhandle(fd)); }

// Other handles may read, write, rename and remove a file while it is open, as on the other hosts.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

OVERLAPPED At(u64 position) {
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(position);
    at.OffsetHigh = static_cast<DWORD>(position >> 32);
    return at;
}

// What a name leads to, symbolic links followed; false if there is nothing.
bool Query(const char* fileName, BY_HANDLE_FILE_INFORMATION& info) {
    HANDLE h = CreateFileA(VemHostPath(fileName), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                           FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (h == INVALID_HANDLE_VALUE) return false;
    const bool known = GetFileInformationByHandle(h, &info) != 0;
    CloseHandle(h);
    return known;
}

}  // namespace

CString VemHostPath(const char* name) { return CString(name); }

bool VemMakeDirectory(const char* name) { return CreateDirectoryA(VemHostPath(name), nullptr) != 0; }

bool vem::LocalTime(std::time_t time, std::tm& local) { return localtime_s(&local, &time) == 0; }

// ---- CFile -----------------------------------------------------------------------------------------

CFile::~CFile() {
    if (m_fd >= 0 && m_closeOnDelete) _close(m_fd);
}

bool CFile::Open(const char* fileName, unsigned openFlags, CFileException* error) {
    if (m_fd >= 0) Abort();
    m_strFileName = fileName;
    DWORD access = GENERIC_READ;
    int mode = _O_RDONLY;
    switch (openFlags & 3) {
        case modeWrite:
            access = GENERIC_WRITE;
            mode = _O_WRONLY;
            break;
        case modeReadWrite:
            access = GENERIC_READ | GENERIC_WRITE;
            mode = _O_RDWR;
            break;
        default: break;
    }
    DWORD disposition = OPEN_EXISTING;
    if (openFlags & modeCreate) disposition = (openFlags & modeNoTruncate) ? OPEN_ALWAYS : CREATE_ALWAYS;
    SECURITY_ATTRIBUTES notInherited{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
    // A directory cannot be opened this way: it fails with access denied, as a file opened for
    // bytes should.
    if (vem::FileFaultStrikes(vem::FileOp::open)) {
        if (error) *error = ErrorOf(ERROR_WRITE_FAULT, fileName);
        return false;
    }
    HANDLE h = CreateFileA(VemHostPath(fileName), access, kShareAll, &notInherited, disposition, FILE_ATTRIBUTE_NORMAL,
                           nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        if (error) *error = ErrorOf(GetLastError(), fileName);
        return false;
    }
    const int fd = _open_osfhandle(reinterpret_cast<intptr_t>(h), mode | _O_BINARY);
    if (fd < 0) {
        CloseHandle(h);
        if (error) *error = CFileException(CFileException::tooManyOpenFiles, EMFILE, fileName);
        return false;
    }
    m_fd = fd;
    m_pos = 0;
    m_closeOnDelete = true;
    return true;
}

unsigned CFile::Read(void* buffer, unsigned count) {
    if (m_fd < 0) VemThrowFile(CFileException::invalidFile, m_strFileName);
    unsigned total = 0;
    auto* out = static_cast<char*>(buffer);
    while (total < count) {
        OVERLAPPED at = At(m_pos);
        DWORD n = 0;
        if (vem::FileFaultStrikes(vem::FileOp::read)) throw ErrorOf(ERROR_READ_FAULT, m_strFileName);
        if (!ReadFile(HandleOf(m_fd), out + total, count - total, &n, &at)) {
            if (GetLastError() == ERROR_HANDLE_EOF) break;
            ThrowLastError(m_strFileName);
        }
        if (n == 0) break;
        total += n;
        m_pos += n;
    }
    return total;
}

void CFile::Write(const void* buffer, unsigned count) {
    if (m_fd < 0) VemThrowFile(CFileException::invalidFile, m_strFileName);
    unsigned total = 0;
    const auto* in = static_cast<const char*>(buffer);
    while (total < count) {
        OVERLAPPED at = At(m_pos);
        DWORD n = 0;
        if (vem::FileFaultStrikes(vem::FileOp::write)) throw ErrorOf(ERROR_WRITE_FAULT, m_strFileName);
        if (!WriteFile(HandleOf(m_fd), in + total, count - total, &n, &at)) ThrowLastError(m_strFileName);
        if (n == 0) VemThrowFile(CFileException::diskFull, m_strFileName);
        total += n;
        m_pos += n;
    }
}

u64 CFile::GetLength() const {
    if (m_fd < 0) VemThrowFile(CFileException::invalidFile, m_strFileName);
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(HandleOf(m_fd), &size)) ThrowLastError(m_strFileName);
    return static_cast<u64>(size.QuadPart);
}

void CFile::SetLength(u64 newLength) {
    if (m_fd < 0) VemThrowFile(CFileException::invalidFile, m_strFileName);
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(newLength);
    if (!SetFileInformationByHandle(HandleOf(m_fd), FileEndOfFileInfo, &end, sizeof end)) ThrowLastError(m_strFileName);
}

// A handle opened for reading has nothing to flush, and Windows refuses to flush it.
void CFile::Flush() {
    if (m_fd >= 0 && vem::FileFaultStrikes(vem::FileOp::flush)) throw ErrorOf(ERROR_WRITE_FAULT, m_strFileName);
    if (m_fd < 0 || FlushFileBuffers(HandleOf(m_fd))) return;
    const DWORD error = GetLastError();
    if (error != ERROR_ACCESS_DENIED && error != ERROR_INVALID_FUNCTION) throw ErrorOf(error, m_strFileName);
}

void CFile::Close() {
    if (m_fd < 0) return;
    const int fd = m_fd;
    m_fd = -1;
    m_pos = 0;
    if (m_closeOnDelete && (_close(fd) != 0 || vem::FileFaultStrikes(vem::FileOp::close)))
        VemThrowFile(CFileException::OsErrorToCause(errno), m_strFileName, errno);
}

void CFile::Abort() {
    if (m_fd >= 0 && m_closeOnDelete) _close(m_fd);
    m_fd = -1;
    m_pos = 0;
}

CFile* CFile::Duplicate() const {
    if (m_fd < 0) VemThrowFile(CFileException::invalidFile, m_strFileName);
    HANDLE process = GetCurrentProcess();
    HANDLE h = nullptr;
    if (!DuplicateHandle(process, HandleOf(m_fd), process, &h, 0, FALSE, DUPLICATE_SAME_ACCESS))
        ThrowLastError(m_strFileName);
    const int fd = _open_osfhandle(reinterpret_cast<intptr_t>(h), _O_BINARY);
    if (fd < 0) {
        CloseHandle(h);
        VemThrowFile(CFileException::tooManyOpenFiles, m_strFileName, EMFILE);
    }
    std::unique_ptr<CFile> copy;
    try {
        copy.reset(new CFile());
    } catch (...) {
        _close(fd);
        throw;
    }
    copy->m_fd = fd;
    copy->m_pos = m_pos;
    copy->m_closeOnDelete = true;
    copy->m_strFileName = m_strFileName;  // may run out of memory: the handle then closes itself
    return copy.release();
}

bool CFile::GetStatus(const char* fileName, CFileStatus& status) {
    BY_HANDLE_FILE_INFORMATION info{};
    if (!Query(fileName, info)) return false;
    ULARGE_INTEGER written{};
    written.LowPart = info.ftLastWriteTime.dwLowDateTime;
    written.HighPart = info.ftLastWriteTime.dwHighDateTime;
    constexpr u64 kEpoch = 116444736000000000ULL;  // 1970-01-01 in 100 ns steps since 1601
    status.m_mtime = static_cast<std::time_t>((written.QuadPart - kEpoch) / 10000000ULL);
    status.m_size = static_cast<u64>(info.nFileSizeHigh) << 32 | info.nFileSizeLow;
    status.m_isDirectory = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    status.m_isRegular = !status.m_isDirectory && !(info.dwFileAttributes & FILE_ATTRIBUTE_DEVICE);
    return true;
}

bool vem::FileIdentity(const char* fileName, vem::FileId& id) {
    BY_HANDLE_FILE_INFORMATION info{};
    if (!Query(fileName, info)) return false;
    id.device = info.dwVolumeSerialNumber;
    id.inode = static_cast<u64>(info.nFileIndexHigh) << 32 | info.nFileIndexLow;
    return true;
}

void CFile::Remove(const char* fileName) {
    if (!DeleteFileA(VemHostPath(fileName))) ThrowLastError(fileName);
}

// Replaces a file of the new name, and returns only when the move is on the disk.
void CFile::Rename(const char* oldName, const char* newName) {
    if (vem::FileFaultStrikes(vem::FileOp::rename)) throw ErrorOf(ERROR_WRITE_FAULT, oldName);
    if (!MoveFileExA(VemHostPath(oldName), VemHostPath(newName), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        ThrowLastError(oldName);
}

// ---- CVemReplaceFile -------------------------------------------------------------------------------

// A target that is a symbolic link is written through the link.
bool CVemReplaceFile::OpenReplace(const char* targetName) {
    static std::atomic<unsigned> counter{0};
    m_target = targetName;
    const CString host = VemHostPath(targetName);
    const DWORD attributes = GetFileAttributesA(host);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
        HANDLE h = CreateFileA(host, 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        if (h != INVALID_HANDLE_VALUE) {
            char buffer[MAX_PATH * 4];
            const DWORD n = GetFinalPathNameByHandleA(h, buffer, sizeof buffer, FILE_NAME_NORMALIZED);
            CloseHandle(h);
            if (n > 0 && n < sizeof buffer) {
                std::string resolved(buffer, n);
                if (resolved.rfind("\\\\?\\UNC\\", 0) == 0)
                    resolved.replace(0, 8, "\\\\");
                else if (resolved.rfind("\\\\?\\", 0) == 0)
                    resolved.erase(0, 4);
                m_target = CString(resolved);
            }
        }
    }
    m_temporary.Format("%s.tmp-%lu-%u", m_target.GetString(), static_cast<unsigned long>(GetCurrentProcessId()),
                       counter++);
    if (!Open(m_temporary, modeCreate | modeWrite | typeBinary)) {
        m_temporary.Empty();
        return false;
    }
    return true;
}

void CVemReplaceFile::Discard() {
    Abort();
    if (!m_temporary.IsEmpty()) DeleteFileA(VemHostPath(m_temporary));
    m_temporary.Empty();
}

#endif  // _WIN32
