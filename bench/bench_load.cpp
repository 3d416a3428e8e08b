// Loading a whole compiled resource: the node file and its task files, with more than 100,000
// variables, as a debugger loads it before it asks for addresses.
#include <benchmark/benchmark.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "resource_builder.h"

namespace {

// Ten tasks of 10,000 plain variables, an array, a structure and a function block each.
vembuild::ResourceShape LargeShape() {
    vembuild::ResourceShape shape;
    shape.tasks = 10;
    shape.variablesPerTask = 10000;
    shape.arraysPerTask = 1;
    shape.arrayLength = 4;
    shape.structsPerTask = 1;
    shape.membersPerStruct = 2;
    shape.unitsPerTask = 1;
    shape.globalVariables = 100;
    return shape;
}

u64 FileSize(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? static_cast<u64>(status.st_size) : 0;
}

// The resource's files in a directory of their own below the system's temporary directory,
// removed at the end.
class WrittenResource {
public:
    explicit WrittenResource(const vembuild::ResourceShape& shape) : shape_(shape) {
        const char* tmp = std::getenv("TMPDIR");
        dir_ = std::string(tmp && *tmp ? tmp : "/tmp") + "/vem32-bench-load-" + std::to_string(::getpid());
        ::mkdir(dir_.c_str(), 0700);
        CVemBaseNode* exe = vembuild::BuildResource(shape);
        written_ = vembuild::WriteResource(exe, dir_, NodeFile()) == 1;
        VemDeleteNode(exe);
        files_.push_back(NodeFile());
        for (int t = 0; t < shape.tasks; ++t) files_.push_back(dir_ + "/" + vembuild::TaskName(t) + ".tsk");
        for (const std::string& file : files_) bytes_ += FileSize(file);
    }
    ~WrittenResource() {
        for (const std::string& file : files_) std::remove(file.c_str());
        ::rmdir(dir_.c_str());
    }
    WrittenResource(const WrittenResource&) = delete;
    WrittenResource& operator=(const WrittenResource&) = delete;

    bool written() const { return written_; }
    std::string NodeFile() const { return dir_ + "/res1.vem"; }
    u64 bytes() const { return bytes_; }
    long variables() const { return vembuild::VariableCount(shape_); }

private:
    vembuild::ResourceShape shape_;
    std::string dir_;
    std::vector<std::string> files_;
    bool written_ = false;
    u64 bytes_ = 0;
};

void ReportSizes(benchmark::State& state, const WrittenResource& resource, long nodes) {
    state.counters["file_bytes"] = static_cast<double>(resource.bytes());
    state.counters["variables"] = static_cast<double>(resource.variables());
    state.counters["nodes"] = static_cast<double>(nodes);
    state.counters["nodes/s"] = benchmark::Counter(static_cast<double>(nodes), benchmark::Counter::kIsIterationInvariantRate);
    state.counters["file_bytes/s"] =
        benchmark::Counter(static_cast<double>(resource.bytes()), benchmark::Counter::kIsIterationInvariantRate);
}

void BM_LoadResource(benchmark::State& state) {
    WrittenResource resource(LargeShape());
    if (!resource.written()) {
        state.SkipWithError("the resource could not be written");
        return;
    }
    long nodes = 0;
    for (auto _ : state) {
        CVemBaseNode* root = VemLoadNode(resource.NodeFile().c_str());
        if (!root) {
            state.SkipWithError("the resource did not load");
            return;
        }
        state.PauseTiming();
        nodes = vembuild::CountNodes(root);
        state.ResumeTiming();
        VemDeleteNode(root);
    }
    ReportSizes(state, resource, nodes);
}
BENCHMARK(BM_LoadResource)->Unit(benchmark::kMillisecond);

// The load, then for every task the map of paths and one address per variable.
void BM_LoadAndAskEveryAddress(benchmark::State& state) {
    const vembuild::ResourceShape shape = LargeShape();
    WrittenResource resource(shape);
    if (!resource.written()) {
        state.SkipWithError("the resource could not be written");
        return;
    }
    std::vector<std::vector<CString>> paths(static_cast<std::size_t>(shape.tasks));
    for (int t = 0; t < shape.tasks; ++t) {
        for (int i = 0; i < shape.variablesPerTask; ++i) {
            paths[static_cast<std::size_t>(t)].push_back((vembuild::TaskName(t) + ".V" + std::to_string(i)).c_str());
        }
    }
    long nodes = 0;
    for (auto _ : state) {
        CVemBaseNode* root = VemLoadNode(resource.NodeFile().c_str());
        CVemBaseNode* tasks = VemFindVemNodeByNameAndType(root, "TASKS", kVemTaskContainerNode);
        u64 sum = 0;
        for (int t = 0; t < shape.tasks; ++t) {
            CVemBaseNode* task = VemFindVemNodeByNameAndType(tasks, vembuild::TaskName(t).c_str(), kVemTuiTaskNode);
            VemCreateChildNodePathList(task);
            for (const CString& path : paths[static_cast<std::size_t>(t)]) sum += VemGetAbsoluteVariableOffset(task, path);
        }
        benchmark::DoNotOptimize(sum);
        state.PauseTiming();
        nodes = vembuild::CountNodes(root);
        state.ResumeTiming();
        VemDeleteNode(root);
    }
    ReportSizes(state, resource, nodes);
}
BENCHMARK(BM_LoadAndAskEveryAddress)->Unit(benchmark::kMillisecond);

}  // namespace
