#include "platform/archive.h"

#include <algorithm>
#include <limits>
#include <string>

#include "platform/file.h"

namespace {

constexpr u16 kNullTag = 0x0000;
constexpr u16 kBigObjectTag = 0x7FFF;
constexpr u16 kClassTag = 0x8000;
constexpr u16 kNewClassTag = 0xFFFF;
constexpr u32 kBigClassTag = 0x80000000u;
constexpr u16 kMaxClassNameLength = 64;  // names must be shorter

}  // namespace

CArchive::CArchive(CFile* file, unsigned mode, int bufferSize, void* buffer)
    : m_file(file), m_loading((mode & load) != 0) {
    m_bufSize = bufferSize > 16 ? static_cast<std::size_t>(bufferSize) : kDefaultBufferSize;
    if (buffer) {
        m_buf = static_cast<u8*>(buffer);
    } else {
        m_own.reset(new u8[m_bufSize]);
        m_buf = m_own.get();
    }
    m_cur = m_buf;
    m_end = m_loading ? m_buf : m_buf + m_bufSize;
    if (m_loading && m_file) {
        // A loaded file does not change under its archive; its length bounds every count read.
        try {
            m_fileLength = m_file->GetLength();
        } catch (const CException&) {
            m_fileLength = std::numeric_limits<u64>::max();
        }
    }
}

CArchive::~CArchive() {
    if (m_file && !m_loading) {
        try {
            FlushBuffer();
        } catch (const CException&) {
            // A destructor cannot report; a caller who needs to know calls Close or Flush.
        }
    }
}

const char* CArchive::FileName() const { return m_file ? m_file->GetFilePath().GetString() : ""; }

void CArchive::ThrowWrongDirection() const {
    VemThrowArchive(m_loading ? CArchiveException::readOnly : CArchiveException::writeOnly, FileName());
}

void CArchive::FlushBuffer() {
    if (m_cur > m_buf) {
        const auto n = static_cast<unsigned>(m_cur - m_buf);
        m_cur = m_buf;
        m_file->Write(m_buf, n);
    }
}

void CArchive::Flush() {
    if (!m_file) return;
    if (m_loading) {
        // Give back what was read ahead, so that the file stands behind what the archive consumed.
        const auto ahead = static_cast<i64>(m_end - m_cur);
        if (ahead > 0) m_file->Seek(-ahead, CFile::current);
        m_cur = m_end = m_buf;
    } else {
        FlushBuffer();
    }
}

void CArchive::Close() {
    Flush();
    m_file = nullptr;
}

void CArchive::Abort() {
    m_cur = m_loading ? m_end : m_buf;
    m_file = nullptr;
}

void CArchive::FillAtLeast(std::size_t count) {
    const auto kept = static_cast<std::size_t>(m_end - m_cur);
    if (kept && m_cur != m_buf) std::memmove(m_buf, m_cur, kept);
    m_cur = m_buf;
    m_end = m_buf + kept;
    while (static_cast<std::size_t>(m_end - m_buf) < count) {
        const unsigned got = m_file ? m_file->Read(m_end, static_cast<unsigned>(m_bufSize - (m_end - m_buf))) : 0;
        if (got == 0) VemThrowArchive(CArchiveException::endOfFile, FileName());
        m_end += got;
    }
}

unsigned CArchive::Read(void* buffer, unsigned count) {
    if (!m_loading) ThrowWrongDirection();
    auto* out = static_cast<u8*>(buffer);
    unsigned done = 0;
    const auto buffered = static_cast<unsigned>(std::min<std::size_t>(count, static_cast<std::size_t>(m_end - m_cur)));
    std::memcpy(out, m_cur, buffered);
    m_cur += buffered;
    done += buffered;
    if (done == count || !m_file) return done;
    if (count - done >= m_bufSize) {
        // Large reads go straight to the file.
        done += m_file->Read(out + done, count - done);
        return done;
    }
    m_cur = m_end = m_buf;
    const unsigned got = m_file->Read(m_buf, static_cast<unsigned>(m_bufSize));
    m_end = m_buf + got;
    const unsigned more = std::min(count - done, got);
    std::memcpy(out + done, m_cur, more);
    m_cur += more;
    return done + more;
}

void CArchive::EnsureRead(void* buffer, unsigned count) {
    if (Read(buffer, count) != count) VemThrowArchive(CArchiveException::endOfFile, FileName());
}

void CArchive::Write(const void* buffer, unsigned count) {
    if (m_loading) ThrowWrongDirection();
    const auto* in = static_cast<const u8*>(buffer);
    if (count >= m_bufSize) {
        FlushBuffer();
        m_file->Write(in, count);
        return;
    }
    if (m_cur + count > m_end) FlushBuffer();
    std::memcpy(m_cur, in, count);
    m_cur += count;
}

u64 CArchive::GetRemaining() const {
    if (!m_loading || !m_file || m_fileLength == std::numeric_limits<u64>::max()) {
        return std::numeric_limits<u64>::max();
    }
    const u64 pos = m_file->GetPosition();
    const u64 inFile = m_fileLength > pos ? m_fileLength - pos : 0;
    return inFile + static_cast<u64>(m_end - m_cur);
}

u64 CArchive::GetPosition() const {
    if (!m_file) return 0;
    const u64 pos = m_file->GetPosition();
    return m_loading ? pos - static_cast<u64>(m_end - m_cur) : pos + static_cast<u64>(m_cur - m_buf);
}

void CArchive::CheckRemaining(u64 needed) const {
    // What the buffer holds is there for certain; only a longer run asks the file.
    if (needed <= static_cast<u64>(m_end - m_cur)) return;
    if (needed > GetRemaining()) VemThrowArchive(CArchiveException::endOfFile, FileName());
}

CArchive& CArchive::operator<<(float v) {
    u32 bits;
    std::memcpy(&bits, &v, sizeof bits);
    return *this << bits;
}

CArchive& CArchive::operator<<(double v) {
    u64 bits;
    std::memcpy(&bits, &v, sizeof bits);
    return *this << bits;
}

CArchive& CArchive::operator>>(i8& v) {
    u8 b;
    *this >> b;
    v = static_cast<i8>(b);
    return *this;
}

CArchive& CArchive::operator>>(char& v) {
    u8 b;
    *this >> b;
    v = static_cast<char>(b);
    return *this;
}

CArchive& CArchive::operator>>(i16& v) {
    u16 w;
    *this >> w;
    v = static_cast<i16>(w);
    return *this;
}

CArchive& CArchive::operator>>(i32& v) {
    u32 d;
    *this >> d;
    v = static_cast<i32>(d);
    return *this;
}

CArchive& CArchive::operator>>(i64& v) {
    u64 q;
    *this >> q;
    v = static_cast<i64>(q);
    return *this;
}

CArchive& CArchive::operator>>(float& v) {
    u32 bits;
    *this >> bits;
    std::memcpy(&v, &bits, sizeof v);
    return *this;
}

CArchive& CArchive::operator>>(double& v) {
    u64 bits;
    *this >> bits;
    std::memcpy(&v, &bits, sizeof v);
    return *this;
}

// ---- strings ---------------------------------------------------------------------------------------

CArchive& CArchive::operator<<(const CString& s) {
    const u64 len = static_cast<u64>(s.GetLength());
    if (len < 0xFF) {
        *this << static_cast<u8>(len);
    } else {
        *this << static_cast<u8>(0xFF);
        if (len < 0xFFFE) {
            *this << static_cast<u16>(len);
        } else {
            *this << static_cast<u16>(0xFFFF);
            if (len < 0xFFFFFFFFu) {
                *this << static_cast<u32>(len);
            } else {
                *this << static_cast<u32>(0xFFFFFFFFu) << len;
            }
        }
    }
    Write(s.GetString(), static_cast<unsigned>(len));
    return *this;
}

u64 CArchive::ReadStringLength(bool& wide) {
    u8 b;
    *this >> b;
    if (b < 0xFF) return b;
    u16 w;
    *this >> w;
    if (w == 0xFFFE) {
        // 16-bit characters follow, behind a length prefix of the same kind.
        wide = true;
        *this >> b;
        if (b < 0xFF) return b;
        *this >> w;
    }
    if (w < 0xFFFF) return w;
    u32 d;
    *this >> d;
    if (d < 0xFFFFFFFFu) return d;
    u64 q;
    *this >> q;
    return q;
}

CArchive& CArchive::operator>>(CString& s) {
    bool wide = false;
    // Names are short: their length is one byte below 0xFF.
    const u64 len = m_loading && m_cur < m_end && *m_cur < 0xFF ? *m_cur++ : ReadStringLength(wide);
    if (len == 0) {  // most texts of a variable are empty
        if (!s.IsEmpty()) s.Empty();
        return *this;
    }
    if (!wide && len <= static_cast<u64>(m_end - m_cur)) {
        // Most texts lie whole in the buffer, and thus in the file: taken from there in one step.
        s.SetString(reinterpret_cast<const char*>(m_cur), static_cast<int>(len));
        m_cur += len;
        return *this;
    }
    ReadLongText(s, len, wide);
    return *this;
}

// A text that the buffer does not hold whole, or of 16-bit characters.
void CArchive::ReadLongText(CString& s, u64 len, bool wide) {
    const u64 bytes = wide ? len * 2 : len;
    if (wide && len > std::numeric_limits<u64>::max() / 2) VemThrowArchive(CArchiveException::endOfFile, FileName());
    CheckRemaining(bytes);
    if (bytes > std::numeric_limits<u32>::max()) VemThrowArchive(CArchiveException::endOfFile, FileName());
    if (!wide) {
        char* out = s.GetBuffer(static_cast<int>(len));
        EnsureRead(out, static_cast<unsigned>(len));
        s.ReleaseBuffer(static_cast<int>(len));
        return;
    }
    std::string raw(static_cast<std::size_t>(bytes), '\0');
    EnsureRead(raw.data(), static_cast<unsigned>(bytes));
    char* out = s.GetBuffer(static_cast<int>(len));
    for (std::size_t i = 0; i < len; ++i) {
        const unsigned ch = static_cast<u8>(raw[2 * i]) | (static_cast<unsigned>(static_cast<u8>(raw[2 * i + 1])) << 8);
        out[i] = ch < 0x100 ? static_cast<char>(ch) : '?';
    }
    s.ReleaseBuffer(static_cast<int>(len));
}

CString CArchive::ReadString() {
    CString s;
    *this >> s;
    return s;
}

// ---- counts ----------------------------------------------------------------------------------------

void CArchive::WriteCount(u32 count) {
    if (count < 0xFFFF) {
        *this << static_cast<u16>(count);
    } else {
        *this << static_cast<u16>(0xFFFF) << count;
    }
}

u32 CArchive::ReadCount() {
    u16 w;
    *this >> w;
    if (w != 0xFFFF) return w;
    u32 d;
    *this >> d;
    return d;
}

u32 CArchive::ReadCount(u64 minBytesPerItem) {
    const u32 count = ReadCount();
    CheckRemaining(static_cast<u64>(count) * minBytesPerItem);
    return count;
}

u16 CArchive::ReadCount16(u64 minBytesPerItem, u32 limit) {
    u16 count;
    *this >> count;
    if (count > limit) VemThrowMemory();
    CheckRemaining(static_cast<u64>(count) * minBytesPerItem);
    return count;
}

// ---- object references -----------------------------------------------------------------------------

void CArchive::WriteObject(const CObject* object) {
    if (!object) {
        *this << kNullTag;
        return;
    }
    auto seen = m_storeMap.find(object);
    if (seen != m_storeMap.end()) {
        if (seen->second < kBigObjectTag) {
            *this << static_cast<u16>(seen->second);
        } else {
            *this << kBigObjectTag << seen->second;
        }
        return;
    }
    const CRuntimeClass* cls = object->GetRuntimeClass();
    auto known = m_storeMap.find(cls);
    if (known != m_storeMap.end()) {
        if (known->second < kBigObjectTag) {
            *this << static_cast<u16>(kClassTag | known->second);
        } else {
            *this << kBigObjectTag << static_cast<u32>(kBigClassTag | known->second);
        }
    } else {
        const auto nameLength = static_cast<u16>(std::strlen(cls->m_lpszClassName));
        *this << kNewClassTag << static_cast<u16>(cls->m_wSchema) << nameLength;
        Write(cls->m_lpszClassName, nameLength);
        m_storeMap[cls] = ++m_storeCount;
    }
    m_storeMap[object] = ++m_storeCount;
    const_cast<CObject*>(object)->Serialize(*this);
}

CObject* CArchive::ReadObject(const CRuntimeClass* asked) { return ReadObjectImpl(asked, true); }

CObject* CArchive::ReadOwnedObject(const CRuntimeClass* asked) { return ReadObjectImpl(asked, false); }

CObject* CArchive::ReadObjectImpl(const CRuntimeClass* asked, bool allowBackReference) {
    DepthGuard depth(*this);
    if (m_loadArray.empty()) m_loadArray.push_back({nullptr, nullptr});  // number 0 is null

    u16 tag;
    *this >> tag;
    u32 index = 0;
    bool isClassTag = false;
    if (tag == kBigObjectTag) {
        u32 big;
        *this >> big;
        isClassTag = (big & kBigClassTag) != 0;
        index = big & ~kBigClassTag;
    } else if (tag == kNewClassTag) {
        // handled below
    } else if (tag & kClassTag) {
        isClassTag = true;
        index = tag & ~kClassTag;
    } else {
        index = tag;
    }

    const CRuntimeClass* cls = nullptr;
    if (tag == kNewClassTag) {
        u16 schema, nameLength;
        *this >> schema >> nameLength;
        if (nameLength >= kMaxClassNameLength) VemThrowArchive(CArchiveException::badClass, FileName());
        char name[kMaxClassNameLength] = {};
        EnsureRead(name, nameLength);
        cls = CRuntimeClass::FromName(name);
        if (!cls) VemThrowArchive(CArchiveException::badClass, FileName());
        if (cls->m_wSchema != schema) VemThrowArchive(CArchiveException::badSchema, FileName());
        m_loadArray.push_back({cls, nullptr});
    } else if (isClassTag) {
        if (index == 0 || index >= m_loadArray.size()) VemThrowArchive(CArchiveException::badIndex, FileName());
        cls = m_loadArray[index].cls;
        if (!cls) VemThrowArchive(CArchiveException::badClass, FileName());
    } else {
        if (index >= m_loadArray.size()) VemThrowArchive(CArchiveException::badIndex, FileName());
        if (index != 0 && !allowBackReference) VemThrowArchive(CArchiveException::badIndex, FileName());
        const LoadEntry& e = m_loadArray[index];
        if (index != 0 && e.cls && !e.object) VemThrowArchive(CArchiveException::badIndex, FileName());
        if (e.object && asked && !e.object->IsKindOf(asked)) VemThrowArchive(CArchiveException::badClass, FileName());
        return e.object;
    }

    if ((asked && !cls->IsDerivedFrom(asked)) || !cls->m_pfnCreateObject) {
        VemThrowArchive(CArchiveException::badClass, FileName());
    }
    const std::size_t slot = m_loadArray.size();
    m_loadArray.push_back({nullptr, nullptr});  // numbered before it reads; no allocation after creation
    CObject* object = cls->CreateObject();
    m_loadArray[slot].object = object;
    try {
        RecordScope record(*this, cls->m_lpszClassName);
        object->Serialize(*this);
        record.Leave();
    } catch (...) {
        m_loadArray[slot].object = nullptr;
        delete object;
        throw;
    }
    return object;
}

CArchive::DepthGuard::DepthGuard(CArchive& ar) : m_ar(ar) {
    vem::load::Context& context = *m_ar.m_context;
    if (++context.Depth > context.Bounds.MaxNesting) {
        --context.Depth;
        VemThrowArchive(CArchiveException::genericException, m_ar.FileName());
    }
}

void VemStoreCount16(CArchive& ar, u64 count) {
    if (count > 0xFFFF) VemThrowArchive(CArchiveException::genericException, ar.FileName());
    ar << static_cast<u16>(count);
}

u16 VemSerializeSchema(CArchive& ar, u16 current) {
    if (ar.IsStoring()) {
        ar << current;
        return current;
    }
    u16 version;
    ar >> version;
    if (version > current) VemThrowArchive(CArchiveException::badIndex);
    return version;
}
