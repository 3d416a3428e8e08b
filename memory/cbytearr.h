// Byte arrays: target memory as a growing buffer of bytes in the target's layout.
#pragma once

#include <memory>

#include "platform/archive.h"
#include "platform/collections.h"
#include "platform/object.h"

// The plain growing buffer. Lengths above maxSize raise the memory exception.
class VEM_API CLargeByteArray : public CObject {
    VEM_DECLARE_SERIAL(CLargeByteArray)
public:
    static constexpr u32 kDefaultMaxSize = 65300;

    CLargeByteArray();
    CLargeByteArray(const CLargeByteArray& other);
    CLargeByteArray& operator=(const CLargeByteArray& other);
    ~CLargeByteArray() override;

    u32 GetLength() const { return m_length; }
    u8* GetBytePointer() { return m_data; }
    const u8* GetBytePointer() const { return m_data; }
    // growBy -1 keeps the present step.
    void SetLength(u32 newLength, int growBy = -1);
    u8 GetAt(u32 index) const { return m_data[index]; }
    void SetAt(u32 index, u8 value) { m_data[index] = value; }
    void SetAtGrow(u32 index, u8 value);
    u32 Add(u8 value);
    u32 GetMaxSize() const { return m_maxSize; }
    void SetMaxSize(u32 maxSize) { m_maxSize = maxSize; }

    // count (u16), then the bytes.
    void Serialize(CArchive& ar) override;

protected:
    u8* m_data = nullptr;
    u32 m_maxSize = kDefaultMaxSize;
    u32 m_length = 0;
    u32 m_allocated = 0;
    u32 m_growBy = 10;
};

// Little-endian layout with alignment and ByteSize. CMotorolaByteArray and CFractLayoutByteArray
// (memory/layouts.h) are the big-endian and the fractional layouts.
class VEM_API CVemByteArray : public CLargeByteArray {
    VEM_DECLARE_SERIAL(CVemByteArray)
public:
    CVemByteArray();  // alignment 1, ByteSize 1
    CVemByteArray(u16 alignment, u8 byteSize);
    CVemByteArray(const CVemByteArray& other);
    CVemByteArray& operator=(const CVemByteArray& other);
    ~CVemByteArray() override;

    // version (u16, 1), count (u16), bytes, motorola (u8), ByteSize (u8, from version 1).
    void Serialize(CArchive& ar) override;

    using CObject::Dump;
    virtual CVemByteArray* Clone() const;
    virtual void Dump(CStringArray& lines);
    virtual int Append(const CVemByteArray* other);
    virtual int Append(const void* bytes, unsigned count);
    virtual int AppendOffset(u16 value);
    virtual int AppendByte(u8 value);
    virtual int AppendWord(u16 value);
    virtual int AppendDword(u32 value);
    virtual int AppendString(const char* text, int count);
    virtual int AppendStringRaw(const char* text, int count);
    virtual int Patch(u16 offset, const void* bytes, unsigned count);
    virtual int PatchOffset(u16 offset, u16 value);
    virtual int PatchByte(u16 offset, u8 value);
    virtual int PatchWord(u16 offset, u16 value);
    virtual int PatchDword(u16 offset, u32 value);
    virtual int PatchString(u16 offset, const void* bytes, unsigned count);
    virtual int GetByte(u16 offset, u8* result);
    virtual int GetWord(u16 offset, u16* result);
    virtual int GetDword(u16 offset, u32* result);
    virtual int GetOffset(u16 offset, u32* result);
    virtual u32 ComputeCheckSum(u32 seed);
    virtual u16 GetAlignedLength(u16 alignment);
    virtual u32 GetSize();
    virtual int IsFractLayout();
    virtual u16 SwapWord(u16 value);
    virtual u32 SwapDword(u32 value);
    virtual void DumpInstanceTable(CStringArray& lines);
    virtual void DumpDownloadTable(int kind, CStringArray& lines);

    int IsMotorolaFormat() const { return m_motorolaFormat; }
    u16 GetAlignment() const { return m_alignment; }
    void SetAlignment(u16 alignment) { m_alignment = alignment; }
    u8 GetByteSize() const { return m_byteSize; }
    void SetByteSize(u8 byteSize) { m_byteSize = byteSize; }

protected:
    i32 m_motorolaFormat = 0;
    u16 m_alignment = 1;
    u8 m_byteSize = 1;
};

namespace vem {

// VemBaSerialize for an array that a member owns: the member holds what the load left, also when it
// throws.
void SerializeOwned(std::unique_ptr<CVemByteArray>& array, CArchive& ar);

}  // namespace vem
