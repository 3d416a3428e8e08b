#include "test_util.h"

#include "alloc_hook.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace vemtest {

#ifdef _WIN32
// Windows has no mkdtemp: a name of the process and a counter, tried until one is new.
TempDir::TempDir() {
    static unsigned serial = 0;
    const auto base = std::filesystem::temp_directory_path();
    const auto self = std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
    for (int attempt = 0; attempt < 100; ++attempt) {
        const auto candidate = base / ("vem32-test-" + self + "-" + std::to_string(serial++));
        if (std::filesystem::create_directory(candidate)) {
            path_ = candidate.string();
            return;
        }
    }
    throw std::runtime_error("no temporary directory");
}
#else
TempDir::TempDir() {
    std::string tmpl = (std::filesystem::temp_directory_path() / "vem32-test-XXXXXX").string();
    std::vector<char> buf(tmpl.begin(), tmpl.end());
    buf.push_back('\0');
    char* made = mkdtemp(buf.data());
    if (!made) throw std::runtime_error("mkdtemp failed");
    path_ = made;
}
#endif

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
}

MessageCapture::MessageCapture() { previous_ = VemSetMessageBoxHandler(&MessageCapture::Handler, this); }

MessageCapture::~MessageCapture() { VemSetMessageBoxHandler(previous_, nullptr); }

int MessageCapture::Handler(const char* text, unsigned style, void* context) {
    AllocationPause pause;
    auto* self = static_cast<MessageCapture*>(context);
    self->texts_.emplace_back(text ? text : "");
    self->styles_.push_back(style);
    return 1;
}

std::vector<u8> ReadFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<u8>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFileBytes(const std::string& path, const std::vector<u8>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void WriteObjectFile(const std::string& path, const CObject* object) {
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    CArchive ar(&file, CArchive::store);
    ar.WriteObject(object);
    ar.Close();
}

void WriteContainerFile(const std::string& path, const std::vector<std::pair<std::string, std::string>>& tasks) {
    CVemBaseNode* root = NewNode(kVemResourceNode, "R");
    CVemBaseNode* container = vemtest::Add(root, VemNewNode(kVemTaskContainerNode));
    for (const auto& [name, file] : tasks) VemTaskCompiled(container, name.c_str(), file.c_str());
    EXPECT_EQ(VemWriteNode(root, path.c_str()), 1);
    VemDeleteNode(root);
}

std::string ReadFileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFileText(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

bool FileExists(const std::string& path) { return std::filesystem::exists(path); }

std::vector<u8> Written(CVemBaseNode* node) {
    TempDir dir;
    EXPECT_EQ(VemWriteNode(node, dir.file("n.vem").c_str()), 1);
    return ReadFileBytes(dir.file("n.vem"));
}

}  // namespace vemtest
