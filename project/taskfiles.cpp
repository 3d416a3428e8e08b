// Task files found after a copy: a resource made on one machine names its task files as that
// machine saw them, and is read on others.
#include "project/taskfiles.h"

#include <algorithm>
#include <memory>

#include "platform/dirsearch.h"
#include "platform/file.h"
#include "vem_ext.h"

namespace {

bool g_search = true;

std::vector<CString>& SearchPath() {
    static std::vector<CString> directories;
    return directories;
}

struct MissingTask {
    int reason;
    CString task;
    CString file;
    std::vector<CString> tried;
};

std::vector<MissingTask>* g_missing = nullptr;  // set while VemLoadNodeTaskReport loads

enum class Probe { kAbsent, kUnusable, kUsable };

// A pipe or a device is looked at but not opened: opening a pipe waits for a writer.
Probe ProbeFile(const CString& name) {
    CFileStatus status;
    if (!CFile::GetStatus(name, status)) return Probe::kAbsent;
    if (!status.m_isRegular) return Probe::kUnusable;
    CFile file;
    return file.Open(name, CFile::modeRead | CFile::typeBinary) ? Probe::kUsable : Probe::kUnusable;
}

CString Join(const CString& directory, const CString& name) {
    if (directory.IsEmpty()) return name;
    const char end = directory.str().back();
    return end == '/' || end == '\\' ? directory + name : directory + "/" + name;
}

// The report's strings stay where they are once built: the pointers of the C view point into them.
struct TaskReport {
    std::vector<MissingTask> missing;
    std::vector<std::vector<const char*>> tried;
    std::vector<tVemMissingTask> view;
};

}  // namespace

vem::TaskFileFinder::TaskFileFinder(const CString& holder) {
    if (!holder.IsEmpty()) {
        const VemPathParts place = VemSplitPath(holder);
        m_directories.push_back(place.drive + place.directory);
    }
    m_directories.insert(m_directories.end(), SearchPath().begin(), SearchPath().end());
}

std::string vem::TaskFileFinder::AnyCase(const CString& directory, const std::string& name) {
    const auto lower = [](std::string s) {
        for (char& c : s) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        return s;
    };
    auto [at, fresh] = m_listed.try_emplace(directory.str());
    if (fresh) {
        std::vector<std::string> entries;
        vem::ListDirectory(directory, entries);
        for (std::string& entry : entries) {
            auto [slot, added] = at->second.try_emplace(lower(entry), entry);
            if (!added && entry < slot->second) slot->second = std::move(entry);
        }
    }
    const auto found = at->second.find(lower(name));
    return found == at->second.end() ? std::string() : found->second;
}

vem::TaskFileLookup vem::TaskFileFinder::Find(const CString& stored) {
    vem::TaskFileLookup found;
    bool unusable = false;
    const auto attempt = [&](const CString& name) {
        const CString host = VemHostPath(name);
        if (std::find(found.tried.begin(), found.tried.end(), host) != found.tried.end()) return false;
        found.tried.push_back(host);
        const Probe probe = ProbeFile(name);
        if (probe == Probe::kUsable) found.path = name;
        unusable = unusable || probe == Probe::kUnusable;
        return probe == Probe::kUsable;
    };
    if (attempt(stored)) return found;
    const VemPathParts parts = VemSplitPath(stored);
    const CString last = parts.title + parts.extension;
    if (g_search && !last.IsEmpty() && last != "." && last != "..") {
        for (const CString& directory : m_directories) {
            const CString exact = Join(directory, last);
            CFileStatus status;
            if (CFile::GetStatus(exact, status)) {
                if (attempt(exact)) return found;
                continue;
            }
            const std::string entry = AnyCase(directory, last.str());
            if (attempt(entry.empty() ? exact : Join(directory, CString(entry)))) return found;
        }
    }
    found.reason = unusable ? tVemMissingTask::kNotReadable : tVemMissingTask::kNotFound;
    return found;
}

void vem::NoteMissingTask(int reason, const CString& task, const CString& file, const std::vector<CString>& tried) {
    if (g_missing) g_missing->push_back(MissingTask{reason, task, file, tried});
}

void VemSetTaskFileSearch(int enabled) { g_search = enabled != 0; }

int VemGetTaskFileSearch() { return g_search ? 1 : 0; }

void VemSetTaskFileDirectories(const char* const* directories, int count) {
    std::vector<CString> path;
    for (int i = 0; directories && i < count; ++i) {
        if (directories[i] && *directories[i]) path.emplace_back(directories[i]);
    }
    SearchPath().swap(path);
}

int VemAddTaskFileDirectory(const char* directory) {
    if (!directory || !*directory) return 0;
    SearchPath().emplace_back(directory);
    return 1;
}

void VemClearTaskFileDirectories() { SearchPath().clear(); }

CVemBaseNode* VemLoadNodeTaskReport(const char* fileName, tVemLoadReport* report, tVemTaskReport* tasks) {
    if (tasks) *tasks = tVemTaskReport{0, nullptr, nullptr};
    auto owned = std::make_unique<TaskReport>();
    CVemBaseNode* root = nullptr;
    {
        struct Collect {
            explicit Collect(std::vector<MissingTask>* to) { g_missing = to; }
            ~Collect() { g_missing = nullptr; }
        } collect(&owned->missing);
        root = VemLoadNodeReport(fileName, report);
    }
    if (!tasks) return root;
    if (!root) owned->missing.clear();
    for (const MissingTask& m : owned->missing) {
        std::vector<const char*>& names = owned->tried.emplace_back();
        for (const CString& name : m.tried) names.push_back(name.GetString());
    }
    for (std::size_t i = 0; i < owned->missing.size(); ++i) {
        const MissingTask& m = owned->missing[i];
        owned->view.push_back(tVemMissingTask{m.reason, m.task.GetString(), m.file.GetString(),
                                              static_cast<int>(owned->tried[i].size()), owned->tried[i].data()});
    }
    tasks->Count = static_cast<int>(owned->view.size());
    tasks->Tasks = owned->view.data();
    tasks->Internal = owned.release();
    return root;
}

void VemFreeTaskReport(tVemTaskReport* tasks) {
    if (!tasks) return;
    delete static_cast<TaskReport*>(tasks->Internal);
    *tasks = tVemTaskReport{0, nullptr, nullptr};
}
