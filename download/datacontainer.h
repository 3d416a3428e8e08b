// Data container: named file records that travel inside a node's file. The compiled task and the
// executable node each hold one by value and forward the container functions to it.
#pragma once

#include "memory/cbytearr.h"
#include "platform/collections.h"

// One file record: the caller's type number and checksum, the file's name and a contents buffer.
class CVemDataObject : public CObject {
    VEM_DECLARE_SERIAL(CVemDataObject)
public:
    CVemDataObject();
    ~CVemDataObject() override;
    CVemDataObject(const CVemDataObject&) = delete;
    CVemDataObject& operator=(const CVemDataObject&) = delete;

    // type (u32), name, contents (byte array record), checkSum (u32)
    void Serialize(CArchive& ar) override;

    u32 Type = 0;
    CString Name;            // file name without its directories
    CVemByteArray Contents;  // alignment 1, ByteSize 1; nothing fills it
    u32 CheckSum = 0;
};

// Key → CVemDataObject. The container owns its objects.
class CVemDataContainer : public CMapStringToOb {
    VEM_DECLARE_SERIAL(CVemDataContainer)
public:
    CVemDataContainer();
    ~CVemDataContainer() override;
    CVemDataContainer(const CVemDataContainer&) = delete;
    CVemDataContainer& operator=(const CVemDataContainer&) = delete;

    // A record for an existing file under the key; 0 with a message if the file is missing.
    int AddFile(const char* filePath, const char* key, unsigned type);
    // Appends every key, in map order. Always 1.
    int GetFileList(CStringList* list);
    unsigned GetType(const char* key);
    unsigned GetCheckSum(const char* key);
    int SetCheckSum(const char* key, unsigned checkSum);
    // A new empty array (alignment 1, ByteSize 1), whatever the key.
    CVemByteArray GetContents(const char* key);
    // 1 for a known key; the array is left as it is.
    int WriteToByteArray(const char* key, CVemByteArray* array);
    // Makes the directories of directory + key; 1 for a known key. No file is written.
    int WriteToFile(const char* key, const char* directory);

    // count, then per entry: key (string), record (object reference of class CVemDataObject)
    void Serialize(CArchive& ar) override;

    // Deletes every record and empties the map.
    void DeleteAll();

private:
    CVemDataObject* Find(const char* key) const;
    // Takes the record under the key; one that stood there before goes.
    void Put(const CString& key, CVemDataObject* object);
};
