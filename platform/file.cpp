#include "platform/file.h"
#include "platform/filefault.h"

// The host's file system is reached here on POSIX hosts and in file_win.cpp on Windows.
#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

VEM_IMPLEMENT_DYNAMIC(CFile, CObject)
VEM_IMPLEMENT_DYNAMIC(CMemFile, CFile)

namespace {

#ifndef _WIN32
[[noreturn]] void ThrowErrno(const CString& name) {
    const int err = errno;
    VemThrowFile(CFileException::OsErrorToCause(err), name, err);
}
#endif

bool HasDrive(const std::string& s) {
    return s.size() >= 2 && s[1] == ':' && ((s[0] >= 'A' && s[0] <= 'Z') || (s[0] >= 'a' && s[0] <= 'z'));
}

}  // namespace

#ifndef _WIN32
CString VemHostPath(const char* name) {
    std::string s = name ? name : "";
    if (HasDrive(s)) s.erase(0, 2);
    std::replace(s.begin(), s.end(), '\\', '/');
    return CString(std::move(s));
}
#endif

VemPathParts VemSplitPath(const char* path) {
    VemPathParts parts;
    std::string s = path ? path : "";
    std::size_t pos = 0;
    if (HasDrive(s)) {
        parts.drive = CString(s.substr(0, 2));
        pos = 2;
    }
    const std::size_t lastSep = s.find_last_of("\\/");
    std::size_t nameStart = pos;
    if (lastSep != std::string::npos && lastSep >= pos) {
        parts.directory = CString(s.substr(pos, lastSep + 1 - pos));
        nameStart = lastSep + 1;
    }
    const std::string name = s.substr(nameStart);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos) {
        parts.title = CString(name);
    } else {
        parts.title = CString(name.substr(0, dot));
        parts.extension = CString(name.substr(dot));
    }
    return parts;
}

#ifndef _WIN32
bool VemMakeDirectory(const char* name) { return ::mkdir(VemHostPath(name), 0777) == 0; }

bool vem::LocalTime(std::time_t time, std::tm& local) { return localtime_r(&time, &local) != nullptr; }
#endif

// ---- CFile -----------------------------------------------------------------------------------------

CFile::CFile() = default;

CFile::CFile(const char* fileName, unsigned openFlags) {
    CFileException error;
    if (!Open(fileName, openFlags, &error)) throw error;
}

#ifndef _WIN32
CFile::~CFile() {
    if (m_fd >= 0 && m_closeOnDelete) ::close(m_fd);
}

bool CFile::Open(const char* fileName, unsigned openFlags, CFileException* error) {
    if (m_fd >= 0) Abort();
    m_strFileName = fileName;
    int flags = O_CLOEXEC;
    switch (openFlags & 3) {
        case modeWrite: flags |= O_WRONLY; break;
        case modeReadWrite: flags |= O_RDWR; break;
        default: flags |= O_RDONLY; break;
    }
    if (openFlags & modeCreate) {
        flags |= O_CREAT;
        if (!(openFlags & modeNoTruncate)) flags |= O_TRUNC;
    }
    const CString host = VemHostPath(fileName);
    const int fd = vem::FileFaultStrikes(vem::FileOp::open) ? -1 : ::open(host, flags, 0666);
    if (fd < 0) {
        const int err = errno;
        if (error) *error = CFileException(CFileException::OsErrorToCause(err), err, fileName);
        return false;
    }
    struct stat st {};
    if (::fstat(fd, &st) == 0 && S_ISDIR(st.st_mode)) {
        ::close(fd);
        if (error) *error = CFileException(CFileException::accessDenied, EISDIR, fileName);
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
        const ssize_t n = vem::FileFaultStrikes(vem::FileOp::read)
                              ? -1
                              : ::pread(m_fd, out + total, count - total, static_cast<off_t>(m_pos));
        if (n < 0) {
            if (errno == EINTR) continue;
            ThrowErrno(m_strFileName);
        }
        if (n == 0) break;
        total += static_cast<unsigned>(n);
        m_pos += static_cast<u64>(n);
    }
    return total;
}

void CFile::Write(const void* buffer, unsigned count) {
    if (m_fd < 0) VemThrowFile(CFileException::invalidFile, m_strFileName);
    unsigned total = 0;
    const auto* in = static_cast<const char*>(buffer);
    while (total < count) {
        const ssize_t n = vem::FileFaultStrikes(vem::FileOp::write)
                              ? -1
                              : ::pwrite(m_fd, in + total, count - total, static_cast<off_t>(m_pos));
        if (n < 0) {
            if (errno == EINTR) continue;
            ThrowErrno(m_strFileName);
        }
        if (n == 0) VemThrowFile(CFileException::diskFull, m_strFileName);
        total += static_cast<unsigned>(n);
        m_pos += static_cast<u64>(n);
    }
}

u64 CFile::GetLength() const {
    if (m_fd < 0) VemThrowFile(CFileException::invalidFile, m_strFileName);
    struct stat st {};
    if (::fstat(m_fd, &st) != 0) ThrowErrno(m_strFileName);
    return static_cast<u64>(st.st_size);
}

void CFile::SetLength(u64 newLength) {
    if (m_fd < 0) VemThrowFile(CFileException::invalidFile, m_strFileName);
    if (::ftruncate(m_fd, static_cast<off_t>(newLength)) != 0) ThrowErrno(m_strFileName);
}

void CFile::Flush() {
    if (m_fd >= 0 && (vem::FileFaultStrikes(vem::FileOp::flush) || ::fsync(m_fd) != 0) && errno != EINVAL)
        ThrowErrno(m_strFileName);
}

void CFile::Close() {
    if (m_fd < 0) return;
    const int fd = m_fd;
    m_fd = -1;
    m_pos = 0;
    if (m_closeOnDelete && (::close(fd) != 0 || vem::FileFaultStrikes(vem::FileOp::close))) ThrowErrno(m_strFileName);
}

void CFile::Abort() {
    if (m_fd >= 0 && m_closeOnDelete) ::close(m_fd);
    m_fd = -1;
    m_pos = 0;
}

CFile* CFile::Duplicate() const {
    if (m_fd < 0) VemThrowFile(CFileException::invalidFile, m_strFileName);
    const int fd = ::fcntl(m_fd, F_DUPFD_CLOEXEC, 0);
    if (fd < 0) ThrowErrno(m_strFileName);
    std::unique_ptr<CFile> copy;
    try {
        copy.reset(new CFile());
    } catch (...) {
        ::close(fd);
        throw;
    }
    copy->m_fd = fd;
    copy->m_pos = m_pos;
    copy->m_closeOnDelete = true;
    copy->m_strFileName = m_strFileName;  // may run out of memory: the handle then closes itself
    return copy.release();
}

bool CFile::GetStatus(const char* fileName, CFileStatus& status) {
    struct stat st {};
    if (::stat(VemHostPath(fileName), &st) != 0) return false;
    status.m_mtime = st.st_mtime;
    status.m_size = static_cast<u64>(st.st_size);
    status.m_isDirectory = S_ISDIR(st.st_mode);
    status.m_isRegular = S_ISREG(st.st_mode);
    return true;
}

bool vem::FileIdentity(const char* fileName, vem::FileId& id) {
    struct stat st {};
    if (::stat(VemHostPath(fileName), &st) != 0) return false;
    id.device = static_cast<u64>(st.st_dev);
    id.inode = static_cast<u64>(st.st_ino);
    return true;
}

void CFile::Remove(const char* fileName) {
    if (::unlink(VemHostPath(fileName)) != 0) ThrowErrno(fileName);
}

void CFile::Rename(const char* oldName, const char* newName) {
    if (vem::FileFaultStrikes(vem::FileOp::rename) || ::rename(VemHostPath(oldName), VemHostPath(newName)) != 0)
        ThrowErrno(oldName);
}
#endif

// The position is the file object's own on every host: reads and writes go to it explicitly.
u64 CFile::Seek(i64 offset, unsigned from) {
    if (m_fd < 0) VemThrowFile(CFileException::invalidFile, m_strFileName);
    i64 base = 0;
    if (from == current) base = static_cast<i64>(m_pos);
    if (from == end) base = static_cast<i64>(CFile::GetLength());  // the raw length, whatever a subclass reports
    const i64 target = base + offset;
    if (target < 0) VemThrowFile(CFileException::badSeek, m_strFileName);
    m_pos = static_cast<u64>(target);
    return m_pos;
}

u64 CFile::GetPosition() const { return m_pos; }

// ---- CMemFile --------------------------------------------------------------------------------------

CMemFile::CMemFile(const void* bytes, std::size_t count)
    : m_data(static_cast<const u8*>(bytes), static_cast<const u8*>(bytes) + count) {}

bool CMemFile::Open(const char*, unsigned, CFileException* error) {
    if (error) *error = CFileException(CFileException::genericException);
    return false;
}

unsigned CMemFile::Read(void* buffer, unsigned count) {
    if (m_pos >= m_data.size()) return 0;
    const u64 n = std::min<u64>(count, m_data.size() - m_pos);
    std::memcpy(buffer, m_data.data() + m_pos, static_cast<std::size_t>(n));
    m_pos += n;
    return static_cast<unsigned>(n);
}

void CMemFile::Write(const void* buffer, unsigned count) {
    if (count == 0) return;
    if (m_pos + count > m_data.size()) m_data.resize(static_cast<std::size_t>(m_pos + count));
    std::memcpy(m_data.data() + m_pos, buffer, count);
    m_pos += count;
}

u64 CMemFile::Seek(i64 offset, unsigned from) {
    i64 base = 0;
    if (from == current) base = static_cast<i64>(m_pos);
    if (from == end) base = static_cast<i64>(m_data.size());
    if (base + offset < 0) VemThrowFile(CFileException::badSeek);
    m_pos = static_cast<u64>(base + offset);
    return m_pos;
}

void CMemFile::SetLength(u64 newLength) { m_data.resize(static_cast<std::size_t>(newLength)); }

CFile* CMemFile::Duplicate() const {
    auto* copy = new CMemFile(m_data);
    copy->m_pos = m_pos;
    return copy;
}

// ---- CVemWriteBuffer -------------------------------------------------------------------------------

CVemWriteBuffer::~CVemWriteBuffer() {
    try {
        Drain();
    } catch (const CException&) {
        // A destructor cannot report; a caller who needs to know calls Drain.
    }
}

void CVemWriteBuffer::Drain() {
    if (m_bytes.empty()) return;
    std::vector<u8> bytes;
    bytes.swap(m_bytes);  // gone from the buffer even if the write fails
    m_target.Write(bytes.data(), static_cast<unsigned>(bytes.size()));
}

void CVemWriteBuffer::Write(const void* buffer, unsigned count) {
    if (m_bytes.size() + count > kPiece) Drain();
    if (count >= kPiece) {
        m_target.Write(buffer, count);
        return;
    }
    if (m_bytes.capacity() < kPiece) m_bytes.reserve(kPiece);
    const auto* bytes = static_cast<const u8*>(buffer);
    m_bytes.insert(m_bytes.end(), bytes, bytes + count);
}

unsigned CVemWriteBuffer::Read(void* buffer, unsigned count) {
    Drain();
    return m_target.Read(buffer, count);
}

u64 CVemWriteBuffer::Seek(i64 offset, unsigned from) {
    Drain();
    return m_target.Seek(offset, from);
}

u64 CVemWriteBuffer::GetPosition() const { return m_target.GetPosition() + m_bytes.size(); }

u64 CVemWriteBuffer::GetLength() const {
    return std::max<u64>(m_target.GetLength(), m_target.GetPosition() + m_bytes.size());
}

void CVemWriteBuffer::SetLength(u64 newLength) {
    Drain();
    m_target.SetLength(newLength);
}

void CVemWriteBuffer::Flush() {
    Drain();
    m_target.Flush();
}

CFile* CVemWriteBuffer::Duplicate() const { return m_target.Duplicate(); }

// ---- CVemReplaceFile -------------------------------------------------------------------------------

CVemReplaceFile::~CVemReplaceFile() { Discard(); }

#ifndef _WIN32
// A target that is a symbolic link is written through the link, and a file that is replaced keeps
// its permissions, as an edit in place would.
bool CVemReplaceFile::OpenReplace(const char* targetName) {
    static std::atomic<unsigned> counter{0};
    m_target = targetName;
    const CString host = VemHostPath(targetName);
    struct stat st {};
    if (::lstat(host, &st) == 0 && S_ISLNK(st.st_mode)) {
        std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(host, nullptr), &std::free);
        if (resolved) m_target = resolved.get();
    }
    m_temporary.Format("%s.tmp-%ld-%u", m_target.GetString(), static_cast<long>(::getpid()), counter++);
    if (!Open(m_temporary, modeCreate | modeWrite | typeBinary)) {
        m_temporary.Empty();
        return false;
    }
    if (::stat(VemHostPath(m_target), &st) == 0 && S_ISREG(st.st_mode)) ::fchmod(m_fd, st.st_mode & 07777);
    return true;
}
#endif

void CVemReplaceFile::Commit() {
    Flush();
    Close();
    CFile::Rename(m_temporary, m_target);
    m_temporary.Empty();
}

#ifndef _WIN32
void CVemReplaceFile::Discard() {
    Abort();
    if (!m_temporary.IsEmpty()) ::unlink(VemHostPath(m_temporary));
    m_temporary.Empty();
}
#endif
