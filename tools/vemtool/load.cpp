// Loading the file a command names, and saying what it is when it does not load: the stamp that
// is missing or differs, a task file in place of a node file, a file of the other statement-model
// setting, the record and byte where a load stopped.
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>

#include "host.h"
#include "taskfiles.h"
#include "tool.h"

namespace vemtool {

namespace {

constexpr char kStamp[] = "Norvadis_VEM_Version:003";  // 24 characters and a zero byte at byte 2
constexpr std::size_t kStampAt = 2;
constexpr std::size_t kStampLength = 25;
constexpr std::size_t kStampPrefix = 21;  // "Norvadis_VEM_Version:" is the same in every version

std::string Hex(const std::string& bytes) {
    std::string out;
    char digits[4];
    for (unsigned char c : bytes) {
        std::snprintf(digits, sizeof digits, "%s%02X", out.empty() ? "" : " ", c);
        out += digits;
    }
    return out;
}

// Bytes as text where they read as text, otherwise as hexadecimal.
std::string Shown(const std::string& bytes) {
    std::size_t printable = 0;
    for (unsigned char c : bytes) printable += c >= 0x20 && c < 0x7F;
    if (bytes.empty() || printable * 10 < bytes.size() * 9) return "bytes " + Hex(bytes);
    std::string text = "text \"";
    for (unsigned char c : bytes) {
        if (c >= 0x20 && c < 0x7F)
            text += static_cast<char>(c);
        else if (c == '\n')
            text += "\\n";
        else if (c == '\r')
            text += "\\r";
        else
            text += '.';
    }
    return text + "\"";
}

std::string Head(const std::string& file, std::size_t count) {
    std::ifstream in(file, std::ios::binary);
    std::string bytes(count, '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(count));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    return bytes;
}

bool HasStamp(const std::string& head) {
    return head.size() >= kStampAt + kStampLength && std::memcmp(head.data() + kStampAt, kStamp, kStampLength) == 0;
}

// The class named by an object reference of a new class at the start of the file (a task file),
// or "".
std::string ObjectClass(const std::string& head) {
    if (head.size() < 6 || static_cast<unsigned char>(head[0]) != 0xFF || static_cast<unsigned char>(head[1]) != 0xFF)
        return "";
    const std::size_t length = static_cast<unsigned char>(head[4]) | static_cast<unsigned char>(head[5]) << 8;
    if (length == 0 || length >= 64 || head.size() < 6 + length) return "";
    const std::string name = head.substr(6, length);
    for (char c : name) {
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') return "";
    }
    return name;
}

std::string FileSize(const std::string& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return error ? std::string("?") : std::to_string(size);
}

// A copy of standard input in a file of its own, removed when the tool ends.
class StdinCopy {
public:
    ~StdinCopy() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove(path_, ignored);
    }
    const std::string& Path() {
        if (!path_.empty()) return path_;
        std::random_device random;
        const auto dir = std::filesystem::temp_directory_path();
        std::ofstream out;
        for (int attempt = 0; attempt < 100 && !out.is_open(); ++attempt) {
            const std::string candidate = (dir / ("vemtool-stdin-" + std::to_string(random()))).string();
            if (std::filesystem::exists(candidate)) continue;
            out.open(candidate, std::ios::binary);
            if (out.is_open()) path_ = candidate;
        }
        std::cin >> std::noskipws;
        out << std::cin.rdbuf();
        return path_;
    }

private:
    std::string path_;
};

StdinCopy& Stdin() {
    static StdinCopy copy;
    return copy;
}

CVemBaseNode* ReadObject(const std::string& path, std::string& recordClass, u64& offset) {
    CFile file;
    if (!file.Open(path.c_str(), CFile::modeRead | CFile::typeBinary)) return nullptr;
    CArchive ar(&file, CArchive::load);
    CVemBaseNode* node = VemReadObject(ar);
    recordClass = ar.GetRecordClass() ? ar.GetRecordClass() : "";
    offset = ar.GetPosition();
    return node;
}

std::string SettingHint(bool nowOn, const std::string& file) {
    const char* other = nowOn ? "off" : "on";
    return std::string("it was written with the statement model switched ") + other + " and reads with --evem " +
           other + "\n  try: vemtool --evem " + other + " " + State().command + " " + file;
}

// Does the file load with the other statement-model setting? The setting is put back after.
bool LoadsWithOtherSetting(const std::string& path, bool asObject) {
    LurSetEvemEnabled(State().evem ? 0 : 1);
    std::string recordClass;
    u64 offset = 0;
    tVemLoadReport report;
    CVemBaseNode* node = asObject ? ReadObject(path, recordClass, offset) : VemLoadNodeReport(path.c_str(), &report);
    const bool loaded = node != nullptr;
    VemDeleteNode(node);
    LurSetEvemEnabled(State().evem ? 1 : 0);
    return loaded;
}

std::string Where(const std::string& file, u64 offset, const char* recordClass) {
    std::string text = "at byte offset " + std::to_string(offset) + " of " + FileSize(file);
    if (recordClass && *recordClass) text += std::string(", reading a record of class ") + recordClass;
    return text;
}

}  // namespace

const char* ArchiveCauseName(int cause) {
    static const char* const kNames[] = {"none",      "generic",   "read only",  "end of file", "write only",
                                         "bad index", "bad class", "bad schema", "buffer full"};
    return cause >= 0 && cause <= 8 ? kNames[cause] : "unknown";
}

const char* FileCauseName(int cause) {
    static const char* const kNames[] = {
        "none",          "generic",           "file not found",           "bad path",       "too many open files",
        "access denied", "invalid file",      "remove current directory", "directory full", "bad seek",
        "hard I/O",      "sharing violation", "lock violation",           "disk full",      "end of file"};
    return cause >= 0 && cause <= 14 ? kNames[cause] : "unknown";
}

std::string Diagnose(const std::string& file, const tVemLoadReport& report, bool asObject) {
    const std::string& cmd = State().command;
    if (!asObject && report.Failure == tVemLoadReport::kCannotOpen) {
        return "cannot open " + file + ": " + FileCauseName(report.Cause) + " (" + report.Message + ")";
    }
    const std::string path = file == "-" ? Stdin().Path() : file;
    const std::string head = Head(path, 96);
    if (head.empty()) {
        return file + ": the file is empty: not a " + (asObject ? "task file" : "node file");
    }
    const std::string objectClass = ObjectClass(head);
    if (!asObject && !objectClass.empty()) {
        return file + ": a task file (an object of class " + objectClass +
               " with no version stamp), not a node file\n  try: vemtool " + cmd + " --object " + file +
               ", or give the node file that names it";
    }
    if (asObject && HasStamp(head)) {
        const unsigned type = static_cast<unsigned char>(head[0]) | static_cast<unsigned char>(head[1]) << 8;
        return file + ": a node file (root of type " + std::to_string(type) + " " + NodeTypeName(type) +
               ", version stamp at byte 2), not a task file\n  try: vemtool " + cmd + " " + file +
               " (without --object)";
    }
    if (asObject && objectClass.empty()) {
        return file + ": not a task file: no object of a new class at byte 0; found instead " +
               Shown(head.substr(0, 24));
    }
    if (!asObject && !HasStamp(head)) {
        const std::string found = head.size() > kStampAt ? head.substr(kStampAt, kStampLength) : std::string();
        if (found.compare(0, kStampPrefix, kStamp, kStampPrefix) == 0) {
            return file + ": another version stamp: \"" + found.substr(0, found.find('\0')) +
                   "\" at byte 2, this library reads \"" + kStamp +
                   "\"\n  the file comes from another compiler version: rebuild the project";
        }
        return file + ": not a node file: no version stamp \"" + kStamp + "\" at byte 2; found instead " +
               Shown(found.empty() ? head : found);
    }
    // The frame is right: the records are not, or they were written with the other setting.
    if (LoadsWithOtherSetting(path, asObject)) return file + ": " + SettingHint(State().evem, file);
    if (asObject) {
        std::string recordClass;
        u64 offset = 0;
        Tree ignored(ReadObject(path, recordClass, offset));
        return file + ": truncated or corrupt task file: the load stopped " + Where(path, offset, recordClass.c_str());
    }
    std::string text = file + ": ";
    const bool endOfFile = report.Failure == tVemLoadReport::kArchiveException && report.Cause == 3;
    text += endOfFile ? "truncated node file: it ends " : "corrupt node file: the load stopped ";
    text += Where(path, report.Offset, report.RecordClass);
    if (report.Failure == tVemLoadReport::kArchiveException) {
        text += "\n  cause: archive exception, " + std::string(ArchiveCauseName(report.Cause)) + " (" +
                std::to_string(report.Cause) + ")";
    } else if (report.Failure == tVemLoadReport::kFileException) {
        text += "\n  cause: file exception, " + std::string(FileCauseName(report.Cause)) + " (" +
                std::to_string(report.Cause) + ")";
    } else if (report.Failure == tVemLoadReport::kMemory) {
        text += "\n  cause: memory exception";
    } else {
        text += "\n  cause: exception of the platform";
    }
    if (report.Message[0]) text += std::string("\n  library: ") + report.Message;
    return text;
}

std::string InputPath(const std::string& file) { return file == "-" ? Stdin().Path() : file; }

namespace {

// --task-dir and --no-search go to the library once, however many files a command loads.
void ApplyTaskFileOptions(const Options& options) {
    static bool applied = false;
    if (applied) return;
    applied = true;
    for (const std::string& dir : options.Values("--task-dir")) VemAddTaskFileDirectory(dir.c_str());
    if (options.Has("--no-search")) VemSetTaskFileSearch(0);
}

}  // namespace

CVemBaseNode* Load(const Options& options, const std::string& file, int* missingTasks) {
    ApplyTaskFileOptions(options);
    const LoadHeap heap;
    const bool asObject = options.Has("--object");
    const bool partial = options.Has("--partial");
    int missing = 0;
    const std::string path = file == "-" ? Stdin().Path() : file;
    tVemLoadReport report{};
    CVemBaseNode* root = nullptr;
    if (asObject) {
        std::string recordClass;
        u64 offset = 0;
        root = ReadObject(path, recordClass, offset);
        if (!root && !std::filesystem::exists(path)) {
            Error("cannot open %s: file not found", file.c_str());
            return nullptr;
        }
    } else {
        root = LoadReportingTasks(path, file, report, missing, partial);
    }
    if (!root) Error("%s", Diagnose(file, report, asObject).c_str());
    if (missingTasks) {
        *missingTasks = missing;
    } else if (root && missing > 0 && !partial) {
        VemDeleteNode(root);  // not a whole result
        root = nullptr;
    }
    return root;
}

}  // namespace vemtool
