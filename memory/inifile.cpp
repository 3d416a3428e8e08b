#include "memory/inifile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "platform/file.h"

namespace vem::ini {

namespace {

constexpr int kLineBuffer = 2048;  // 2047 characters and the terminator

bool SameNoCase(const std::string& a, const std::string& b) { return Lower(a) == Lower(b); }

// The name between the first "[" and the last "]" if the line is a section head.
bool SectionHead(const std::string& line, std::string& name) {
    const std::size_t open = line.find('['), equals = line.find('='), close = line.rfind(']');
    if (open == std::string::npos || (equals != std::string::npos && equals < open)) return false;
    if (close == std::string::npos || close < open) return false;
    name = line.substr(open + 1, close - open - 1);
    return true;
}

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};

}  // namespace

std::string Lower(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

bool IniSection::Load(const char* fileName, const char* section) {
    m_values.clear();
    if (!fileName || !section) return false;
    std::unique_ptr<std::FILE, FileCloser> file(std::fopen(VemHostPath(fileName).GetString(), "rb"));
    if (!file) return false;
    char buffer[kLineBuffer];
    bool inSection = false;
    while (std::fgets(buffer, kLineBuffer, file.get())) {
        std::string line(buffer);
        const std::size_t comment = line.find(';');
        if (comment != std::string::npos) line.erase(comment);
        std::string name;
        if (SectionHead(line, name)) {
            if (inSection) break;  // the next head ends the section sought
            inSection = SameNoCase(name, section);
            continue;
        }
        if (inSection) TakeLine(line);
    }
    return true;
}

// key = value: the key runs from the first non-blank to the next blank or "="; the value starts
// behind the "=" and any blanks and "=" that follow, and ends at a line end.
void IniSection::TakeLine(const std::string& line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) return;
    const std::size_t keyStart = line.find_first_not_of(' ');
    const std::size_t keyEnd = line.find_first_of(" =", keyStart);
    std::string key = Lower(line.substr(keyStart, keyEnd - keyStart));
    std::size_t valueStart = line.find_first_not_of(" =", equals);
    if (valueStart == std::string::npos) valueStart = line.size();
    const std::size_t valueEnd = line.find_first_of("\r\n", valueStart);
    m_values.try_emplace(
        std::move(key),
        line.substr(valueStart, valueEnd == std::string::npos ? std::string::npos : valueEnd - valueStart));
}

const std::string* IniSection::Find(const std::string& key) const {
    auto it = m_values.find(Lower(key));
    return it == m_values.end() ? nullptr : &it->second;
}

std::vector<long long> IniSection::NumberedKeys(const std::string& stem) const {
    const std::string lower = Lower(stem);
    std::vector<long long> numbers;
    for (const auto& entry : m_values) {
        const std::string& key = entry.first;
        if (key.size() <= lower.size() || key.compare(0, lower.size(), lower) != 0) continue;
        const std::string digits = key.substr(lower.size());
        // "%u" writes no leading zeros and no more than ten digits.
        if (digits.size() > 10 || (digits.size() > 1 && digits[0] == '0')) continue;
        if (digits.find_first_not_of("0123456789") != std::string::npos) continue;
        numbers.push_back(std::stoll(digits));
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

}  // namespace vem::ini
