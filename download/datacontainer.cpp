// Data container: file records by key, owned by the container, stored as a map of objects.
#include "download/datacontainer.h"

#include <memory>

#include "platform/file.h"
#include "platform/msgbox.h"

VEM_IMPLEMENT_SERIAL(CVemDataObject, CObject, 5)
VEM_IMPLEMENT_SERIAL(CVemDataContainer, CMapStringToOb, 5)

namespace {

constexpr int kBlockSize = 10;

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

bool IsDirectory(const CString& name) {
    CFileStatus status;
    return CFile::GetStatus(name, status) && status.m_isDirectory;
}

// Makes the directories of a directory part from the root of the drive down, as the system does
// when it changes to the root and then into each level: the part counts from the root even without
// a leading separator. A level that exists or cannot be made is no fault; one that is no directory
// afterwards is passed over, and the next level is made beside it. The drive goes in front of every
// level (a POSIX host drops it again).
void MakeDirectoryLevels(const CString& drive, const CString& directory) {
    const CString rooted = !directory.IsEmpty() && IsSeparator(directory[0]) ? directory : "\\" + directory;
    if (IsDirectory(drive + rooted)) return;
    CString base = drive + "\\";
    const std::string& path = rooted.str();
    std::size_t start = 0;
    while (start < path.size()) {
        std::size_t end = start;
        while (end < path.size() && !IsSeparator(path[end])) ++end;
        if (end > start) {
            const CString level = base + CString(path.substr(start, end - start));
            VemMakeDirectory(level);
            if (IsDirectory(level)) base = level + "\\";
        }
        start = end + 1;
    }
}

}  // namespace

// ---- CVemDataObject --------------------------------------------------------------------------------

CVemDataObject::CVemDataObject() : Contents(1, 1) {}

CVemDataObject::~CVemDataObject() = default;

//  width   field
//  4       type
//  string  name
//  .       contents: version (u16, 1), count (u16), bytes, motorola (u8), ByteSize (u8)
//  4       checkSum
void CVemDataObject::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        ar << Type << Name;
        Contents.Serialize(ar);
        ar << CheckSum;
    } else {
        ar >> Type >> Name;
        Contents.Serialize(ar);
        ar >> CheckSum;
    }
}

// ---- CVemDataContainer -----------------------------------------------------------------------------

CVemDataContainer::CVemDataContainer() : CMapStringToOb(kBlockSize) {}

CVemDataContainer::~CVemDataContainer() { DeleteAll(); }

void CVemDataContainer::DeleteAll() {
    CString key;
    CObject* object = nullptr;
    for (POSITION pos = GetStartPosition(); pos;) {
        GetNextAssoc(pos, key, object);
        delete object;
    }
    RemoveAll();
}

CVemDataObject* CVemDataContainer::Find(const char* key) const {
    CObject* object = nullptr;
    return Lookup(CString(key), object) ? static_cast<CVemDataObject*>(object) : nullptr;
}

void CVemDataContainer::Put(const CString& key, CVemDataObject* object) {
    std::unique_ptr<CVemDataObject> owned(object);
    CObject* before = nullptr;
    const bool replaced = Lookup(key, before);
    SetAt(key, owned.get());
    owned.release();
    if (replaced && before != object) delete before;
}

int CVemDataContainer::AddFile(const char* filePath, const char* key, unsigned type) {
    CFileStatus status;
    if (!CFile::GetStatus(filePath, status)) {
        const CString text = CString("Can not find the File:") + "\r\n" + filePath;
        AfxMessageBox(text);
        return 0;
    }
    const CString path(filePath);
    auto object = std::make_unique<CVemDataObject>();
    object->Name = path.Mid(path.ReverseFind('\\') + 1);
    object->Type = type;
    Put(CString(key), object.release());
    return 1;
}

int CVemDataContainer::GetFileList(CStringList* list) {
    CString key;
    CObject* object = nullptr;
    for (POSITION pos = GetStartPosition(); pos;) {
        GetNextAssoc(pos, key, object);
        list->AddTail(key);
    }
    return 1;
}

unsigned CVemDataContainer::GetType(const char* key) {
    const CVemDataObject* object = Find(key);
    return object ? object->Type : 0;
}

unsigned CVemDataContainer::GetCheckSum(const char* key) {
    const CVemDataObject* object = Find(key);
    return object ? object->CheckSum : 0;
}

int CVemDataContainer::SetCheckSum(const char* key, unsigned checkSum) {
    CVemDataObject* object = Find(key);
    if (!object) return 0;
    object->CheckSum = checkSum;
    return 1;
}

CVemByteArray CVemDataContainer::GetContents(const char*) { return CVemByteArray(1, 1); }

int CVemDataContainer::WriteToByteArray(const char* key, CVemByteArray*) { return Find(key) ? 1 : 0; }

int CVemDataContainer::WriteToFile(const char* key, const char* directory) {
    const VemPathParts parts = VemSplitPath(CString(directory) + key);
    MakeDirectoryLevels(parts.drive, parts.directory);
    return Find(key) ? 1 : 0;
}

//  width   field
//  count   number of records, then per record:
//  string    key
//  object    the record as an object reference, class CVemDataObject
void CVemDataContainer::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        CMapStringToOb::Serialize(ar);
        return;
    }
    DeleteAll();
    const u32 count = ar.ReadCount(3);  // empty key and a null reference at the least
    for (u32 i = 0; i < count; ++i) {
        const CString key = ar.ReadString();
        Put(key, static_cast<CVemDataObject*>(ar.ReadOwnedObject(RUNTIME_CLASS(CVemDataObject))));
    }
}
