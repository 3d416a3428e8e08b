// The big-endian and the fractional layouts of target memory.
#pragma once

#include "memory/cbytearr.h"

// Big-endian: every value at the right-hand end of its unit, most significant byte first. The
// reads make no alignment check.
class VEM_API CMotorolaByteArray : public CVemByteArray {
    VEM_DECLARE_SERIAL(CMotorolaByteArray)
public:
    CMotorolaByteArray();  // alignment 1, ByteSize 1
    CMotorolaByteArray(u16 alignment, u8 byteSize);

    CVemByteArray* Clone() const override;
    int AppendByte(u8 value) override;
    int AppendWord(u16 value) override;
    int AppendDword(u32 value) override;
    int PatchByte(u16 offset, u8 value) override;
    int PatchWord(u16 offset, u16 value) override;
    int PatchDword(u16 offset, u32 value) override;
    int GetByte(u16 offset, u8* result) override;
    int GetWord(u16 offset, u16* result) override;
    int GetDword(u16 offset, u32* result) override;
};

// Units of six bytes, two halves of three: one unit holds a byte, a word or a double word, offsets
// count units, and text is packed into the halves in reverse order. Six is the only layout the
// target knows; any other value is announced and kept.
class VEM_API CFractLayoutByteArray : public CVemByteArray {
    VEM_DECLARE_SERIAL(CFractLayoutByteArray)
public:
    static constexpr u8 kLayout = 6;

    CFractLayoutByteArray();  // layout 0, which is announced as not allowed
    CFractLayoutByteArray(u16 alignment, u8 fractLayout);
    CFractLayoutByteArray(const CFractLayoutByteArray& other);
    CFractLayoutByteArray& operator=(const CFractLayoutByteArray& other) = default;

    u8 GetFractLayout() const { return m_fractLayout; }

    using CVemByteArray::Dump;
    CVemByteArray* Clone() const override;
    void Dump(CStringArray& lines) override;
    int Append(const CVemByteArray* other) override;
    int Append(const void* bytes, unsigned count) override;
    int AppendByte(u8 value) override;
    int AppendWord(u16 value) override;
    int AppendDword(u32 value) override;
    int AppendString(const char* text, int count) override;
    int AppendStringRaw(const char* text, int count) override;
    int Patch(u16 unit, const void* bytes, unsigned count) override;
    int PatchOffset(u16 unit, u16 value) override;
    int PatchByte(u16 unit, u8 value) override;
    int PatchWord(u16 unit, u16 value) override;
    int PatchDword(u16 unit, u32 value) override;
    int GetByte(u16 unit, u8* result) override;
    int GetWord(u16 unit, u16* result) override;
    int GetDword(u16 unit, u32* result) override;
    u16 GetAlignedLength(u16 alignment) override;
    u32 GetSize() override;
    int IsFractLayout() override;

private:
    // The six bytes of unit u, or null if the unit does not lie wholly within the array.
    const u8* UnitAt(u16 unit) const;

    u8 m_fractLayout = 0;
};
