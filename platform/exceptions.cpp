#include "platform/exceptions.h"

#include <cerrno>

CException::~CException() = default;

const char* CException::what() const noexcept { return "platform exception"; }

CString CException::GetErrorMessage() const { return "An unknown error has occurred."; }

CString CMemoryException::GetErrorMessage() const { return "Out of memory."; }

CString CInvalidArgException::GetErrorMessage() const { return "Encountered an improper argument."; }

CString CNotSupportedException::GetErrorMessage() const { return "Unsupported operation was attempted."; }

CString CUserException::GetErrorMessage() const { return "The operation was stopped."; }

CString CFileException::GetErrorMessage() const {
    const char* name = m_strFileName.IsEmpty() ? "an unnamed file" : m_strFileName.GetString();
    CString text;
    switch (m_cause) {
        case fileNotFound: text.Format("%s was not found.", name); break;
        case badPath: text.Format("%s contains an invalid path.", name); break;
        case tooManyOpenFiles:
            text.Format("%s could not be opened because there are too many open files.", name);
            break;
        case accessDenied: text.Format("Access to %s was denied.", name); break;
        case invalidFile: text.Format("An invalid file handle was associated with %s.", name); break;
        case directoryFull: text.Format("%s could not be created because the directory is full.", name); break;
        case badSeek: text.Format("Seek failed on %s", name); break;
        case hardIO: text.Format("A hardware I/O error was reported while accessing %s.", name); break;
        case sharingViolation: text.Format("A sharing violation occurred while accessing %s.", name); break;
        case lockViolation: text.Format("A locking violation occurred while accessing %s.", name); break;
        case diskFull: text.Format("Disk full while accessing %s.", name); break;
        case endOfFile: text.Format("An attempt was made to access %s past its end.", name); break;
        default: text.Format("An unexpected error occurred while accessing %s.", name); break;
    }
    return text;
}

int CFileException::OsErrorToCause(int err) {
    switch (err) {
        case 0: return none;
        case ENOENT: return fileNotFound;
        case ENOTDIR:
        case ENAMETOOLONG:
        case ELOOP: return badPath;
        case EMFILE:
        case ENFILE: return tooManyOpenFiles;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR: return accessDenied;
        case EBADF: return invalidFile;
        case ENOSPC:
#ifdef EDQUOT
        case EDQUOT:
#endif
        case EFBIG: return diskFull;
        case ESPIPE:
        case EINVAL: return badSeek;
        case EIO: return hardIO;
        case ETXTBSY:
        case EBUSY: return sharingViolation;
        default: return genericException;
    }
}

CString CArchiveException::GetErrorMessage() const {
    const char* name = m_strFileName.IsEmpty() ? "an unnamed file" : m_strFileName.GetString();
    CString text;
    switch (m_cause) {
        case readOnly: text.Format("Tried to write to an archive opened for loading: %s.", name); break;
        case endOfFile: text.Format("Unexpected end of file while reading %s.", name); break;
        case writeOnly: text.Format("Tried to read from an archive opened for storing: %s.", name); break;
        case badIndex: text.Format("%s has a bad format.", name); break;
        case badClass: text.Format("%s contains an unexpected object.", name); break;
        case badSchema: text.Format("%s contains an incorrect schema.", name); break;
        default: text.Format("An unexpected error occurred while reading %s.", name); break;
    }
    return text;
}

void VemThrowMemory() { throw CMemoryException(); }

void VemThrowInvalidArg() { throw CInvalidArgException(); }

void VemThrowUser() { throw CUserException(); }

void VemThrowArchive(int cause, const char* fileName) { throw CArchiveException(cause, fileName); }

void VemThrowFile(int cause, const char* fileName, int osError) { throw CFileException(cause, osError, fileName); }
