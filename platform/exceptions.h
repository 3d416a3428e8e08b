// The platform's exceptions. They are thrown by value and caught by reference.
#pragma once

#include <exception>

#include "platform/cstring.h"

class VEM_API CException : public std::exception {
public:
    ~CException() override;
    const char* what() const noexcept override;
    // The platform's own report of the exception, as a message box shows it.
    virtual CString GetErrorMessage() const;
};

class VEM_API CMemoryException : public CException {
public:
    CString GetErrorMessage() const override;
};

class VEM_API CInvalidArgException : public CException {
public:
    CString GetErrorMessage() const override;
};

class VEM_API CNotSupportedException : public CException {
public:
    CString GetErrorMessage() const override;
};

// Raised where the library refuses a record it cannot make sense of (an unknown statement type).
class VEM_API CUserException : public CException {
public:
    CString GetErrorMessage() const override;
};

class VEM_API CFileException : public CException {
public:
    enum {
        none = 0,
        genericException = 1,
        fileNotFound = 2,
        badPath = 3,
        tooManyOpenFiles = 4,
        accessDenied = 5,
        invalidFile = 6,
        removeCurrentDir = 7,
        directoryFull = 8,
        badSeek = 9,
        hardIO = 10,
        sharingViolation = 11,
        lockViolation = 12,
        diskFull = 13,
        endOfFile = 14,
    };
    explicit CFileException(int cause = none, int osError = -1, const char* fileName = nullptr)
        : m_cause(cause), m_lOsError(osError), m_strFileName(fileName) {}
    CString GetErrorMessage() const override;
    // Cause from an errno value of the host.
    static int OsErrorToCause(int err);

    int m_cause;
    int m_lOsError;
    CString m_strFileName;
};

class VEM_API CArchiveException : public CException {
public:
    enum {
        none = 0,
        genericException = 1,
        readOnly = 2,  // writing to a loading archive
        endOfFile = 3,
        writeOnly = 4,  // reading from a storing archive
        badIndex = 5,   // bad object number, wrong version stamp, schema word too new
        badClass = 6,
        badSchema = 7,
        bufferFull = 8,
    };
    explicit CArchiveException(int cause = none, const char* fileName = nullptr)
        : m_cause(cause), m_strFileName(fileName) {}
    CString GetErrorMessage() const override;

    int m_cause;
    CString m_strFileName;
};

// Short forms used throughout the library.
[[noreturn]] VEM_API void VemThrowMemory();
[[noreturn]] VEM_API void VemThrowInvalidArg();
[[noreturn]] VEM_API void VemThrowUser();
[[noreturn]] VEM_API void VemThrowArchive(int cause, const char* fileName = nullptr);
[[noreturn]] VEM_API void VemThrowFile(int cause, const char* fileName = nullptr, int osError = -1);
