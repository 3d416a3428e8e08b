// Bytes from a text file of sections and keys, written as two hexadecimal digits each.
#include <climits>
#include <cstdlib>
#include <string>

#include "memory/cbytearr.h"
#include "memory/inifile.h"
#include "platform/msgbox.h"
#include "vem_bytearray.h"

namespace {

constexpr std::size_t kMaxValue = 998;  // characters of a value that are kept

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool EndsToken(const std::string& v, std::size_t i) {
    return i == v.size() || v[i] == ' ' || v[i] == '\r' || v[i] == '\n';
}

// Adds the tokens of one value as raw bytes; a token of another form ends the value. Gives the
// number of bytes added.
u32 AddHexTokens(CVemByteArray& array, const std::string& value) {
    if (value.size() < 2) return 0;
    u32 added = 0;
    for (std::size_t i = 0; i < value.size();) {
        if (value[i] == ' ') {
            ++i;
            continue;
        }
        const int high = HexDigit(value[i]);
        const int low = i + 1 < value.size() ? HexDigit(value[i + 1]) : -1;
        if (high < 0 || low < 0 || !EndsToken(value, i + 2)) break;
        array.Add(static_cast<u8>(high * 16 + low));
        ++added;
        i += 2;
    }
    return added;
}

// The count as the usual text-to-integer conversion reads it, held within the range of an int.
long long CountOf(const std::string& text) {
    long long n = std::strtoll(text.c_str(), nullptr, 10);
    if (n > INT_MAX) return INT_MAX;
    if (n < INT_MIN) return INT_MIN;
    return n;
}

std::string ValueOf(const vem::ini::IniSection& section, const std::string& key) {
    const std::string* value = section.Find(key);
    if (!value) return std::string();
    return value->size() > kMaxValue ? value->substr(0, kMaxValue) : *value;
}

}  // namespace

// The first line is the key itself, then key0, key1, ... until the count is reached; more than
// twice the count of numbered lines gives up.
int VemBaReadIniFile(CVemByteArray* array, const char* fileName, const char* section, const char* key) {
    vem::ini::IniSection ini;
    if (!array || !key || !ini.Load(fileName, section)) return 0;
    const std::string stem = key;
    const std::string countText = ValueOf(ini, stem + "Bytes");
    if (countText.empty()) return 0;
    const long long count = CountOf(countText);
    if (count < 0) return 0;
    if (count > 0) {
        // A numbered line that the file lacks adds nothing, so the search steps from one line the
        // file holds to the next: a number in a key name costs no time. Past the highest one no
        // line can add a byte any more.
        u64 added = AddHexTokens(*array, ValueOf(ini, stem));
        for (const long long n : ini.NumberedKeys(stem)) {
            if (static_cast<long long>(added) >= count) break;
            if (n > 2 * count) return 0;
            added += AddHexTokens(*array, ValueOf(ini, stem + std::to_string(n)));
            if (n >= 2 * count) return 0;
        }
        if (static_cast<long long>(added) < count) return 0;
    }
    return array->GetLength() == static_cast<u64>(count) ? 1 : 0;
}

int VemBaWriteIniFile(CVemByteArray*, const char*, const char*, const char*) {
    AfxMessageBox(" CVemByteArray :: WriteIniFile - Not implemented yet");
    return 0;
}
