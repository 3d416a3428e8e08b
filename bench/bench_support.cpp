#include "bench_support.h"

#include <dirent.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <new>

namespace vembench {

namespace {

bool g_metering = false;
HeapFigures g_heap;

void* Allocate(std::size_t size) {
    void* p = std::malloc(size ? size : 1);
    if (!p) throw std::bad_alloc();
    if (g_metering) {
        g_heap.liveAsked += static_cast<long long>(size);
        g_heap.liveUsable += static_cast<long long>(malloc_usable_size(p));
        if (g_heap.liveUsable > g_heap.peakUsable) g_heap.peakUsable = g_heap.liveUsable;
        ++g_heap.allocations;
    }
    return p;
}

// Frees of blocks made before the meter started count too; the figures are differences.
void Release(void* p, std::size_t size, bool sized) {
    if (!p) return;
    if (g_metering) {
        g_heap.liveUsable -= static_cast<long long>(malloc_usable_size(p));
        if (sized) g_heap.liveAsked -= static_cast<long long>(size);
    }
    std::free(p);
}

}  // namespace

void HeapMeterStart() {
    g_heap = HeapFigures{};
    g_metering = true;
}

HeapFigures HeapMeterRead() { return g_heap; }

void HeapMeterStop() { g_metering = false; }

}  // namespace vembench

void* operator new(std::size_t size) { return vembench::Allocate(size); }
void* operator new[](std::size_t size) { return vembench::Allocate(size); }
void operator delete(void* p) noexcept { vembench::Release(p, 0, false); }
void operator delete[](void* p) noexcept { vembench::Release(p, 0, false); }
void operator delete(void* p, std::size_t size) noexcept { vembench::Release(p, size, true); }
void operator delete[](void* p, std::size_t size) noexcept { vembench::Release(p, size, true); }

namespace vembench {

vembuild::ResourceShape Shape(int size) {
    vembuild::ResourceShape shape;
    switch (size) {
        case 0:  // 2 tasks, about 2,300 variables, 2,000 statements
            shape.tasks = 2;
            shape.variablesPerTask = 1000;
            shape.arraysPerTask = 2;
            shape.arrayLength = 50;
            shape.structsPerTask = 10;
            shape.membersPerStruct = 4;
            shape.unitsPerTask = 2;
            shape.globalVariables = 20;
            shape.statementsPerUnit = 400;
            break;
        case 1:  // 10 tasks, about 50,000 variables, 60,000 statements
            shape.tasks = 10;
            shape.variablesPerTask = 4000;
            shape.arraysPerTask = 4;
            shape.arrayLength = 200;
            shape.structsPerTask = 50;
            shape.membersPerStruct = 4;
            shape.unitsPerTask = 4;
            shape.globalVariables = 100;
            shape.statementsPerUnit = 4000;
            break;
        default:  // 20 tasks, about 200,000 variables, 330,000 statements
            shape.tasks = 20;
            shape.variablesPerTask = 8000;
            shape.arraysPerTask = 4;
            shape.arrayLength = 400;
            shape.structsPerTask = 100;
            shape.membersPerStruct = 4;
            shape.unitsPerTask = 4;
            shape.globalVariables = 100;
            shape.statementsPerUnit = 15000;
            break;
    }
    return shape;
}

long CountCodeNodes(CVemBaseNode* exe) { return VemGetEvemRootNodeListPtr(exe)->GetCount(); }

long CountStatements(CVemBaseNode* exe) {
    long count = 0;
    CObList* codes = VemGetEvemRootNodeListPtr(exe);
    for (POSITION pos = codes->GetHeadPosition(); pos;) {
        auto* code = static_cast<CEVemBaseNode*>(codes->GetNext(pos));
        for (CEVemBaseNode* s = EVemGetStatementNode(code); s; s = EVemGetNext(s)) ++count;
    }
    return count;
}

const char* SizeName(int size) { return size == 0 ? "small" : size == 1 ? "medium" : "large"; }

std::string Numbered(const char* prefix, long number) {
    std::string text = prefix;
    text += std::to_string(number);
    return text;
}

std::string MakeTempDir(const char* what) {
    static int serial = 0;
    const char* tmp = std::getenv("TMPDIR");
    std::string dir = std::string(tmp && *tmp ? tmp : "/tmp") + "/vem32-bench-" + what + "-" +
                      std::to_string(::getpid()) + "-" + std::to_string(serial++);
    ::mkdir(dir.c_str(), 0700);
    return dir;
}

void RemoveTree(const std::string& dir) {
    if (DIR* d = ::opendir(dir.c_str())) {
        while (dirent* entry = ::readdir(d)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") std::remove((dir + "/" + name).c_str());
        }
        ::closedir(d);
    }
    ::rmdir(dir.c_str());
}

u64 FileSize(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? static_cast<u64>(status.st_size) : 0;
}

WrittenResource::WrittenResource(int size) : dir_(MakeTempDir("resource")) {
    const vembuild::ResourceShape shape = Shape(size);
    CVemBaseNode* exe = vembuild::BuildResource(shape);
    written_ = vembuild::WriteResource(exe, dir_, NodeFile()) == 1;
    VemDeleteNode(exe);
    files_.push_back(NodeFile());
    for (int t = 0; t < shape.tasks; ++t) files_.push_back(dir_ + "/" + vembuild::TaskName(t) + ".tsk");
    for (const std::string& file : files_) bytes_ += FileSize(file);
}

WrittenResource::~WrittenResource() { RemoveTree(dir_); }

}  // namespace vembench
