#include "platform/collections.h"

#include "platform/archive.h"

VEM_IMPLEMENT_SERIAL(CObArray, CObject, 0)
VEM_IMPLEMENT_SERIAL(CDWordArray, CObject, 0)
VEM_IMPLEMENT_SERIAL(CWordArray, CObject, 0)
VEM_IMPLEMENT_SERIAL(CStringArray, CObject, 0)
VEM_IMPLEMENT_SERIAL(CObList, CObject, 0)
VEM_IMPLEMENT_SERIAL(CStringList, CObject, 0)
VEM_IMPLEMENT_SERIAL(CMapStringToOb, CObject, 0)
VEM_IMPLEMENT_SERIAL(CMapStringToString, CObject, 0)
VEM_IMPLEMENT_SERIAL(CMapWordToOb, CObject, 0)

// Arrays are read element by element, so a hostile count fails at the end of the file instead of
// allocating; each element takes at least the bytes given to ReadCount.
void CObArray::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar.WriteCount(static_cast<u32>(GetSize()));
        for (CObject* o : m_v) ar.WriteObject(o);
        return;
    }
    const u32 n = ar.ReadCount(2);
    RemoveAll();
    m_v.reserve(n);
    for (u32 i = 0; i < n; ++i) m_v.push_back(ar.ReadObject(nullptr));
}

void CDWordArray::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar.WriteCount(static_cast<u32>(GetSize()));
        for (u32 d : m_v) ar << d;
        return;
    }
    const u32 n = ar.ReadCount(4);
    m_v.assign(n, 0);
    for (u32& d : m_v) ar >> d;
}

void CWordArray::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar.WriteCount(static_cast<u32>(GetSize()));
        for (u16 w : m_v) ar << w;
        return;
    }
    const u32 n = ar.ReadCount(2);
    m_v.assign(n, 0);
    for (u16& w : m_v) ar >> w;
}

void CStringArray::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar.WriteCount(static_cast<u32>(GetSize()));
        for (const CString& s : m_v) ar << s;
        return;
    }
    const u32 n = ar.ReadCount(1);
    m_v.assign(n, CString());
    for (CString& s : m_v) ar >> s;
}

POSITION CObList::Find(const CObject* value, POSITION startAfter) const {
    POSITION pos = startAfter ? startAfter : GetHeadPosition();
    if (startAfter) GetNext(pos);
    while (pos) {
        POSITION here = pos;
        if (GetNext(pos) == value) return here;
    }
    return nullptr;
}

void CObList::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar.WriteCount(static_cast<u32>(GetCount()));
        for (POSITION pos = GetHeadPosition(); pos;) ar.WriteObject(GetNext(pos));
        return;
    }
    const u32 n = ar.ReadCount(2);
    for (u32 i = 0; i < n; ++i) AddTail(ar.ReadObject(nullptr));
}

POSITION CStringList::Find(const char* value, POSITION startAfter) const {
    POSITION pos = startAfter ? startAfter : GetHeadPosition();
    if (startAfter) GetNext(pos);
    while (pos) {
        POSITION here = pos;
        if (GetNext(pos) == value) return here;
    }
    return nullptr;
}

void CStringList::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar.WriteCount(static_cast<u32>(GetCount()));
        for (POSITION pos = GetHeadPosition(); pos;) ar << GetNext(pos);
        return;
    }
    const u32 n = ar.ReadCount(1);
    for (u32 i = 0; i < n; ++i) AddTail(ar.ReadString());
}

void CMapStringToOb::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar.WriteCount(static_cast<u32>(GetCount()));
        CString key;
        CObject* value = nullptr;
        for (POSITION pos = GetStartPosition(); pos;) {
            GetNextAssoc(pos, key, value);
            ar << key;
            ar.WriteObject(value);
        }
        return;
    }
    const u32 n = ar.ReadCount(3);
    for (u32 i = 0; i < n; ++i) {
        CString key = ar.ReadString();
        CObject* value = ar.ReadObject(nullptr);
        SetAt(key, value);
    }
}

void CMapStringToString::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar.WriteCount(static_cast<u32>(GetCount()));
        CString key, value;
        for (POSITION pos = GetStartPosition(); pos;) {
            GetNextAssoc(pos, key, value);
            ar << key << value;
        }
        return;
    }
    const u32 n = ar.ReadCount(2);
    for (u32 i = 0; i < n; ++i) {
        CString key = ar.ReadString();
        CString value = ar.ReadString();
        SetAt(key, value);
    }
}

void CMapWordToOb::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar.WriteCount(static_cast<u32>(GetCount()));
        u16 key = 0;
        CObject* value = nullptr;
        for (POSITION pos = GetStartPosition(); pos;) {
            GetNextAssoc(pos, key, value);
            ar << key;
            ar.WriteObject(value);
        }
        return;
    }
    const u32 n = ar.ReadCount(4);
    for (u32 i = 0; i < n; ++i) {
        u16 key;
        ar >> key;
        CObject* value = ar.ReadObject(nullptr);
        SetAt(key, value);
    }
}
