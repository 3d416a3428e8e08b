// CArchive: a buffered binary stream over a file, in one direction, with the encodings of node
// files. All numbers are little-endian; fields have no padding.
//
//   string     length < 255: 1 byte; else FF + u16 (< 0xFFFE); else FF FFFF + u32 (< 0xFFFFFFFF);
//              else FF FFFF FFFFFFFF + u64; then the characters. FF FEFF in front of such a
//              prefix marks 16-bit characters (read only).
//   count      u16, or FFFF + u32 for 0xFFFF and more
//   schema     u16 version of a record; a load refuses a version above the class's own
//   object     0000 null | n: object n seen before | 8000+c: new object of class c seen before |
//              FFFF schema(u16) namelen(u16) name: new object of a new class. A number of 0x7FFF
//              or more is 7FFF + u32 (with 0x80000000 added for a class). Classes and objects
//              share one numbering from 1.
#pragma once

#include <cstring>
#include <exception>
#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/cstring.h"
#include "platform/exceptions.h"
#include "platform/loadcontext.h"
#include "platform/object.h"

class CFile;

class VEM_API CArchive {
public:
    enum Mode : unsigned { store = 0, load = 1, bNoFlushOnDelete = 2 };

    // Nesting of records and object references that a load accepts by default; real trees are a few
    // dozen deep.
    static constexpr int kMaxDepth = static_cast<int>(kVemMaxNesting);

    // The buffer takes whole runs of records between two calls of the file; each call costs a trip
    // to the system.
    static constexpr int kDefaultBufferSize = 64 * 1024;

    CArchive(CFile* file, unsigned mode, int bufferSize = kDefaultBufferSize, void* buffer = nullptr);
    ~CArchive();
    CArchive(const CArchive&) = delete;
    CArchive& operator=(const CArchive&) = delete;

    bool IsLoading() const { return m_loading; }
    bool IsStoring() const { return !m_loading; }
    CFile* GetFile() const { return m_file; }

    // Writes what is buffered (store) or gives back what was read ahead (load).
    void Flush();
    void Close();
    void Abort();  // drops the buffer without raising

    // Raw bytes. Read gives what it could get; EnsureRead raises end of file if it gets less.
    unsigned Read(void* buffer, unsigned count);
    void EnsureRead(void* buffer, unsigned count);
    void Write(const void* buffer, unsigned count);

    // Bytes that a load can still read, or UINT64_MAX if the file cannot tell.
    u64 GetRemaining() const;
    // Raises end of file (cause 3) before anything is allocated for a length that cannot be there.
    void CheckRemaining(u64 needed) const;

    CArchive& operator<<(u8 v) { return PutLE(v); }
    CArchive& operator<<(i8 v) { return PutLE(static_cast<u8>(v)); }
    CArchive& operator<<(char v) { return PutLE(static_cast<u8>(v)); }
    CArchive& operator<<(u16 v) { return PutLE(v); }
    CArchive& operator<<(i16 v) { return PutLE(static_cast<u16>(v)); }
    CArchive& operator<<(u32 v) { return PutLE(v); }
    CArchive& operator<<(i32 v) { return PutLE(static_cast<u32>(v)); }
    CArchive& operator<<(u64 v) { return PutLE(v); }
    CArchive& operator<<(i64 v) { return PutLE(static_cast<u64>(v)); }
    CArchive& operator<<(float v);
    CArchive& operator<<(double v);
    CArchive& operator<<(const CString& s);

    CArchive& operator>>(u8& v) { return GetLE(v); }
    CArchive& operator>>(i8& v);
    CArchive& operator>>(char& v);
    CArchive& operator>>(u16& v) { return GetLE(v); }
    CArchive& operator>>(i16& v);
    CArchive& operator>>(u32& v) { return GetLE(v); }
    CArchive& operator>>(i32& v);
    CArchive& operator>>(u64& v) { return GetLE(v); }
    CArchive& operator>>(i64& v);
    CArchive& operator>>(float& v);
    CArchive& operator>>(double& v);
    CArchive& operator>>(CString& s);
    // On load, takes the next text if it is empty, as most texts of a record are, without a call.
    bool TakeEmptyText() {
        if (!m_loading || m_cur == m_end || *m_cur != 0) return false;
        ++m_cur;
        return true;
    }
    // As operator>>, with an empty text taken without a call.
    CArchive& ReadText(CString& s) {
        if (!TakeEmptyText()) return *this >> s;
        if (!s.IsEmpty()) s.Empty();
        return *this;
    }
    // The schema word of a record on load, as VemSerializeSchema reads it, without a call: a load
    // reads one or two for each node and statement.
    u16 LoadSchema(u16 current) {
        u16 version;
        *this >> version;
        if (version > current) VemThrowArchive(CArchiveException::badIndex);
        return version;
    }

    void WriteString(const CString& s) { *this << s; }
    CString ReadString();

    void WriteCount(u32 count);
    u32 ReadCount();
    // The only ways to read a count before anything is made for it: each of the items takes at
    // least `minBytesPerItem` bytes on disk, and a count that the rest of the file cannot hold
    // raises end of file (cause 3). ReadCount16 reads a plain u16 count; one above `limit` raises
    // the memory exception before the file is asked.
    u32 ReadCount(u64 minBytesPerItem);
    u16 ReadCount16(u64 minBytesPerItem, u32 limit = 0xFFFF);

    // Object references with the shared class and object numbering.
    void WriteObject(const CObject* object);
    // Makes the object by its class name; the class must derive from `asked` (null: any class).
    CObject* ReadObject(const CRuntimeClass* asked);
    // As ReadObject, for a record that owns what it reads: only null or a new object is accepted, and
    // a reference back to an object read before is a corrupt file (cause 5). So no object gets two
    // owners, and no reference reaches an object that its owner has deleted during the load.
    CObject* ReadOwnedObject(const CRuntimeClass* asked);

    // Counts nesting during a load; deeper than the load's bound fails as a corrupt file.
    class DepthGuard {
    public:
        explicit DepthGuard(CArchive& ar);
        ~DepthGuard() { --m_ar.m_context->Depth; }
        DepthGuard(const DepthGuard&) = delete;
        DepthGuard& operator=(const DepthGuard&) = delete;

    private:
        CArchive& m_ar;
    };

    // Nesting counted so far. An archive of a file that is read in the middle of another one's load
    // joins that load (JoinLoad), so that the bound holds for the whole tree and its stack.
    int Depth() const { return m_context->Depth; }
    void StartAtDepth(int depth) { m_context->Depth = depth; }

    // The state of the load that this archive reads, shared with the archives that join it.
    vem::load::Context& LoadContext() const { return *m_context; }
    // Reads in the middle of `outer`'s load: its depth, bounds and task files read are this one's.
    void JoinLoad(const CArchive& outer) { m_context = outer.m_context; }

    // Bytes of the file that the archive has consumed (load) or produced (store).
    u64 GetPosition() const;

    // The class whose record is being read or written, for reports of a failed load. A scope
    // names the record until Leave, called when the record is whole; when an exception leaves the
    // record, the name stays for the report.
    const char* GetRecordClass() const { return m_recordClass; }
    class RecordScope {
    public:
        RecordScope(CArchive& ar, const char* className) : m_ar(ar), m_outer(ar.m_recordClass) {
            ar.m_recordClass = className;
        }
        void Leave() { m_ar.m_recordClass = m_outer; }
        RecordScope(const RecordScope&) = delete;
        RecordScope& operator=(const RecordScope&) = delete;

    private:
        CArchive& m_ar;
        const char* m_outer;
    };

    // Name of the file behind the archive, for the exceptions it raises.
    const char* FileName() const;

private:
    template <typename T>
    CArchive& PutLE(T v) {
        if (m_loading) ThrowWrongDirection();
        if (m_cur + sizeof(T) > m_end) FlushBuffer();
        for (std::size_t i = 0; i < sizeof(T); ++i) m_cur[i] = static_cast<u8>(static_cast<u64>(v) >> (8 * i));
        m_cur += sizeof(T);
        return *this;
    }
    template <typename T>
    CArchive& GetLE(T& v) {
        if (!m_loading) ThrowWrongDirection();
        if (m_cur + sizeof(T) > m_end) FillAtLeast(sizeof(T));
        u64 r = 0;
        for (std::size_t i = 0; i < sizeof(T); ++i) r |= static_cast<u64>(m_cur[i]) << (8 * i);
        m_cur += sizeof(T);
        v = static_cast<T>(r);
        return *this;
    }
    [[noreturn]] void ThrowWrongDirection() const;
    void FlushBuffer();
    void FillAtLeast(std::size_t count);  // raises end of file if the file has less
    u64 ReadStringLength(bool& wide);
    void ReadLongText(CString& s, u64 len, bool wide);
    CObject* ReadObjectImpl(const CRuntimeClass* asked, bool allowBackReference);

    CFile* m_file;
    bool m_loading;
    std::unique_ptr<u8[]> m_own;
    u8* m_buf;
    std::size_t m_bufSize;
    u8* m_cur;
    u8* m_end;  // store: end of the buffer; load: end of the bytes read ahead
    vem::load::Context m_ownContext;
    vem::load::Context* m_context = &m_ownContext;
    u64 m_fileLength = 0;  // length of the file when a load began
    const char* m_recordClass = "";

    // Object numbering of this archive (index 0 stands for null).
    struct LoadEntry {
        const CRuntimeClass* cls;
        CObject* object;
    };
    std::vector<LoadEntry> m_loadArray;
    std::unordered_map<const void*, u32> m_storeMap;
    u32 m_storeCount = 0;
};

// Stores a count or length in the 16 bits that its record gives it. One that does not fit fails the
// store with the archive exception (generic cause) instead of going to disk cut.
VEM_API void VemStoreCount16(CArchive& ar, u64 count);

// Schema word of a record: stores `current`; on load reads the word and raises the archive
// exception (cause 5) if it is above `current`. Gives the version that the record holds.
VEM_API u16 VemSerializeSchema(CArchive& ar, u16 current);
