// Texts of the statement model's dumps: types, pointers, constants, address modes.
#include "statement/evemdump.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "node/dumptext.h"

namespace {

constexpr const char* kCbeTypeNames[] = {
    "kCbeTypeUndef",
    "kCbeTypeBool",
    "kCbeTypeByte",
    "kCbeTypeWord",
    "kCbeTypeDword",
    "kCbeTypeUsint",
    "kCbeTypeUint",
    "kCbeTypeUdint",
    "kCbeTypeSint",
    "kCbeTypeInt",
    "kCbeTypeDint",
    "kCbeTypeReal",
    "kCbeTypeTime",
    "kCbeTypeDate",
    "kCbeTypeTod",
    "kCbeTypeDt",
    "kCbeTypeLword",
    "kCbeTypeUlint",
    "kCbeTypeLint",
    "kCbeTypeLreal",
    "kCbeTypeString",
    "kCbeTypeEnum",
    "kCbeTypeArray",
    "kCbeTypeStruct",
    "kCbeTypeBit",
    "kCbeTypeBcdReal",
    "kCbeTypeReferenz",
    "kCbeTypeUser",
    "kCbeTypeArrayOfArray",
    "kCbeTypeArrayOfStruct",
    "kCbeTypeStructOfStruct",
    "kCbeTypeStructOfArray",
    "kCbeTypeInitvalues",
    "kCbeTypeFbInstance",
    "kCbeTypeInt24",
    "kCbeTypeReal48",
    "kCbeTypeAddress",
    "kCbeTypeWString",
};
static_assert(sizeof kCbeTypeNames / sizeof kCbeTypeNames[0] == kCbeTypeWString + 1);

// The bytes of a constant read as a little-endian machine holds them, on every host, so that a
// dump says the same everywhere; what lies beyond the array reads as zero.
class ValueBytes {
public:
    explicit ValueBytes(const CVemByteArray* value)
        : m_data(value ? value->GetBytePointer() : nullptr), m_length(value ? value->GetLength() : 0) {}

    template <typename T>
    T Read(u32 offset = 0) const {
        u8 raw[sizeof(T)] = {};
        for (u32 i = 0; i < sizeof(T); ++i)
            if (offset + i < m_length) raw[i] = m_data[offset + i];
        if constexpr (std::endian::native == std::endian::big) std::reverse(raw, raw + sizeof(T));
        T result;
        std::memcpy(&result, raw, sizeof(T));
        return result;
    }

    // The text that stands behind two bytes of head, up to its zero or the end of the array.
    CString Text() const {
        CString text;
        for (u32 i = 2; i < m_length && m_data[i] != 0; ++i) text += static_cast<char>(m_data[i]);
        return text;
    }

private:
    const u8* m_data;
    u32 m_length;
};

}  // namespace

const char* vem::evem::CbeTypeText(u32 type) {
    if (type >= kCbeTypeBool && type <= kCbeTypeWString) return kCbeTypeNames[type];
    if (type == kCbeTypeCount) return "kCbeTypeCount";
    return "unknown Cbe type";
}

namespace {

const CString& NullPointerText() {
    static const CString kNull = [] {
        CString null;
        null.Format("%p", static_cast<const void*>(nullptr));  // the C library's own form, written once
        return null;
    }();
    return kNull;
}

}  // namespace

CString vem::evem::PointerText(const void* pointer) {
    if (!pointer) return NullPointerText();
    CString text;
    text.Format("%p", pointer);
    return text;
}

void vem::evem::AppendPointer(CVemDumpText& text, const void* pointer) {
    if (pointer)
        text << PointerText(pointer);
    else
        text << NullPointerText();
}

void vem::evem::AppendBaseDump(CVemDumpText& text, std::string_view p, i32 nodeType) {
    text << '\n' << p << "Version = ";
    text.Unsigned(unsigned{CEVemBaseNode::kSchema}) << '\n' << p << "NodeType = " << NodeTypeText(nodeType) << '\n';
}

CString vem::evem::ValueText(u32 type, const CVemByteArray* value) {
    const ValueBytes bytes(value);
    CString text;
    switch (type) {
        case kCbeTypeBool:
        case kCbeTypeBit: text.Format("%x\n", unsigned{bytes.Read<u8>()}); break;
        case kCbeTypeByte:
        case kCbeTypeUsint: text.Format("%hu\n", static_cast<unsigned short>(bytes.Read<u8>())); break;
        case kCbeTypeWord:
        case kCbeTypeUint:
        case kCbeTypeEnum: text.Format("%u\n", unsigned{bytes.Read<u16>()}); break;
        case kCbeTypeDword:
        case kCbeTypeUdint:
        case kCbeTypeTime: text.Format("%lu\n", static_cast<unsigned long>(bytes.Read<u32>())); break;
        case kCbeTypeSint: text.Format("%d\n", int{bytes.Read<i8>()}); break;
        case kCbeTypeInt: text.Format("%d\n", int{bytes.Read<i16>()}); break;
        case kCbeTypeDint: text.Format("%ld\n", static_cast<long>(bytes.Read<i32>())); break;
        case kCbeTypeReal: text.Format("%f\n", static_cast<double>(bytes.Read<float>())); break;
        case kCbeTypeDate:
            text.Format("%04u-%02u-%02u\n", unsigned{bytes.Read<u16>()}, unsigned{bytes.Read<u8>(2)},
                        unsigned{bytes.Read<u8>(3)});
            break;
        case kCbeTypeTod:
            text.Format("%02u:%02u:%02u\n", unsigned{bytes.Read<u8>(0)}, unsigned{bytes.Read<u8>(1)},
                        unsigned{bytes.Read<u8>(2)});
            break;
        case kCbeTypeLreal: text.Format("%lf\n", bytes.Read<double>()); break;
        case kCbeTypeString: text = bytes.Text() + "\n"; break;
        default: text = "unknown or complex type; no dump possible\n"; break;
    }
    return text;
}

const char* vem::evem::AddressModeText(u32 mode) {
    switch (mode) {
        case kEVemFarAddress: return "kEVemFarAddress\n";
        case kEVemNearAddress: return "kEVemNearAddress\n";
        case kEVemRefAddress: return "kEVemRefAddress\n";
        case kEVemIndAddress: return "kEVemIndAddress\n";
        default: return "unknown address mode\n";
    }
}

const char* vem::evem::PouTypeText(u32 pouType) {
    switch (pouType) {
        case kEVemPouProg: return "kEVemPouProg";
        case kEVemPouFunction: return "kEVemPouFunction";
        case kEVemPouFunctionBlock: return "kEVemPouFunctionBlock";
        default: return "";
    }
}
