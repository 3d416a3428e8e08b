#include "platform/dirsearch.h"

#include <filesystem>
#include <system_error>

#include "platform/file.h"

namespace {

bool EqualNoCase(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
        if (lower(a[i]) != lower(b[i])) return false;
    }
    return true;
}

}  // namespace

CString VemFindInDirectory(const char* directory, const char* name) {
    namespace fs = std::filesystem;
    CString prefix(directory);
    if (!prefix.IsEmpty() && prefix.str().back() != '/' && prefix.str().back() != '\\') prefix += '/';
    const std::string wanted(name ? name : "");
    if (wanted.empty()) return CString();
    std::error_code ec;
    if (fs::exists(fs::symlink_status(std::string(VemHostPath(prefix + wanted.c_str())), ec))) return prefix + wanted.c_str();
    const std::string host = prefix.IsEmpty() ? std::string(".") : std::string(VemHostPath(prefix));
    fs::directory_iterator it(host, fs::directory_options::skip_permission_denied, ec);
    std::string best;
    for (; !ec && it != fs::directory_iterator(); it.increment(ec)) {
        const std::string entry = it->path().filename().string();
        if (EqualNoCase(entry, wanted) && (best.empty() || entry < best)) best = entry;
    }
    return best.empty() ? CString() : prefix + best.c_str();
}
