#include "platform/dirsearch.h"

#include <filesystem>
#include <system_error>

#include "platform/file.h"

bool vem::ListDirectory(const char* directory, std::vector<std::string>& names) {
    namespace fs = std::filesystem;
    names.clear();
    const std::string host = directory && *directory ? std::string(VemHostPath(directory)) : std::string(".");
    std::error_code ec;
    fs::directory_iterator it(host, fs::directory_options::skip_permission_denied, ec);
    for (; !ec && it != fs::directory_iterator(); it.increment(ec)) names.push_back(it->path().filename().string());
    if (ec) names.clear();
    return !ec;
}
