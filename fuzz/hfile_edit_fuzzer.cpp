// The in-place edits of CHFile on an arbitrary file. The input is an operation byte, a key and a
// value each ended by a zero byte, and then the file. Bit 2 of the operation byte opens the file
// as a type file, bits 0-1 choose SetValue, Write into the body, ReplaceText or SetUnitName. The
// edited file must open and read again.
#include <cstring>

#include "fuzz_common.h"
#include "units/hfile.h"

namespace {

// The next field up to a zero byte; without one the field is empty and nothing is consumed.
std::string Field(const std::uint8_t*& data, std::size_t& size) {
    const void* zero = std::memchr(data, 0, size);
    if (!zero) return {};
    const std::size_t length = static_cast<std::size_t>(static_cast<const std::uint8_t*>(zero) - data);
    std::string text(reinterpret_cast<const char*>(data), length);
    data += length + 1;
    size -= length + 1;
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vemfuzz::TheScratch();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const unsigned op = data[0];
    ++data;
    --size;
    const std::string key = Field(data, size);
    const std::string value = Field(data, size);
    const char* name = vemfuzz::PutFile((op & 4) ? "unit.typ" : "unit.st", data, size);
    {
        CHFile file;
        if (!file.OpenUpdate(name, 1)) std::abort();
        try {
            switch (op & 3) {
                case 0: file.SetValue(key.c_str(), value.c_str()); break;
                case 1:
                    file.Write(value.data(), static_cast<unsigned>(value.size()));
                    file.Write(key.data(), static_cast<unsigned>(key.size()));
                    break;
                case 2: file.ReplaceText(key.c_str(), value.c_str()); break;
                default: file.SetUnitName(value.c_str()); break;
            }
        } catch (const CException&) {
        }
        file.CloseChecked(1);
    }
    CHFile again;
    if (!again.OpenRead(name, 1)) std::abort();
    try {
        again.GetValue(key.c_str());
        again.GetUnitName(1);
        char buffer[4096];
        while (again.Read(buffer, sizeof buffer)) {
        }
    } catch (const CException&) {
    }
    again.CloseChecked(1);
    return 0;
}
