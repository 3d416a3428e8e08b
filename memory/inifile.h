// A small reader of text files of sections and keys, as the byte arrays read bytes from them.
// Internal to the byte arrays.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

namespace vem::ini {

// The keys of one section of a file. Lines are read up to 2047 characters at a time; everything
// from the first ";" on is a comment. A section head is a line with a "[" that no "=" stands ahead
// of and a later "]"; its name lies between the first "[" and the last "]". Only the first section
// of the name counts, and in it the first line of a key. Names compare without regard to case.
class IniSection {
public:
    // False if the file cannot be opened.
    bool Load(const char* fileName, const char* section);
    // The value of a key, or null if the section does not have it.
    const std::string* Find(const std::string& key) const;
    // Every n for which the section holds the key `stem` followed by n in decimal, ascending.
    std::vector<long long> NumberedKeys(const std::string& stem) const;

private:
    void TakeLine(const std::string& line);

    std::unordered_map<std::string, std::string> m_values;  // by key in lower case
};

// The key in lower case, as the section keeps it.
std::string Lower(std::string text);

}  // namespace vem::ini
