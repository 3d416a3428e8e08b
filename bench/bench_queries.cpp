// What a debugger asks of a loaded resource: the path map and addresses by path, the line maps and
// the cross reference of every unit; and what a compiler does to nodes: arrays expanded into their
// elements, children added in the order of their texts.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "bench_support.h"

namespace {

using vembench::WrittenResource;

struct LoadedResource {
    explicit LoadedResource(int size) : files(size), root(VemLoadNode(files.NodeFile().c_str())) {
        if (!root) return;
        CVemBaseNode* container = VemFindVemNodeByNameAndType(root, "TASKS", kVemTaskContainerNode);
        for (int t = 0; t < vembench::Shape(size).tasks; ++t) {
            tasks.push_back(VemFindVemNodeByNameAndType(container, vembuild::TaskName(t).c_str(), kVemTuiTaskNode));
        }
    }
    ~LoadedResource() {
        if (root) VemDeleteNode(root);
    }
    LoadedResource(const LoadedResource&) = delete;
    LoadedResource& operator=(const LoadedResource&) = delete;

    WrittenResource files;
    CVemBaseNode* root;
    std::vector<CVemBaseNode*> tasks;
};

// Every path that a task's path map holds, as a debugger names them: "TASK1.V7", "TASK1.A0" (an
// array as a whole), "TASK1.S2.M1", "TASK1.FBI0" and "TASK1.FBI0.X".
void CollectPaths(CVemBaseNode* node, const std::string& prefix, std::vector<CString>& paths) {
    CObList* children = VemGetChildList(node);
    for (POSITION pos = children->GetHeadPosition(); pos;) {
        auto* child = static_cast<CVemBaseNode*>(children->GetNext(pos));
        std::string name = VemGetName(child).str();
        const std::size_t type = name.find(" : ");
        if (type != std::string::npos) name.resize(type);
        const std::string path = prefix + "." + name;
        switch (VemGetNodeType(child)) {
            case kVemStructNode: CollectPaths(child, path, paths); break;
            case kVemFbNode:
                paths.emplace_back(path);
                CollectPaths(child, path, paths);
                break;
            default: paths.emplace_back(path); break;
        }
    }
}

// The path map of every task of the resource.
void BM_PathMap(benchmark::State& state) {
    LoadedResource resource(static_cast<int>(state.range(0)));
    if (!resource.root) {
        state.SkipWithError("the resource did not load");
        return;
    }
    std::size_t paths = 0;
    for (CVemBaseNode* task : resource.tasks) {
        std::vector<CString> taskPaths;
        CollectPaths(task, VemGetName(task).str(), taskPaths);
        paths += taskPaths.size();
    }
    for (auto _ : state) {
        for (CVemBaseNode* task : resource.tasks) VemCreateChildNodePathList(task);
    }
    state.counters["variable_paths"] = static_cast<double>(paths);
}
BENCHMARK(BM_PathMap)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

// One million addresses by path, spread over every variable of every task, in a shuffled order,
// on paths written in the case in which a debugger's user types them.
void BM_AddressQueries(benchmark::State& state) {
    constexpr long kQueries = 1000000;
    LoadedResource resource(static_cast<int>(state.range(0)));
    if (!resource.root) {
        state.SkipWithError("the resource did not load");
        return;
    }
    struct Query {
        CVemBaseNode* task;
        CString path;
    };
    std::vector<Query> all;
    for (CVemBaseNode* task : resource.tasks) {
        VemCreateChildNodePathList(task);
        std::vector<CString> paths;
        CollectPaths(task, VemGetName(task).str(), paths);
        for (CString& path : paths) all.push_back({task, path.MakeLower()});
    }
    u32 seed = 12345;
    for (std::size_t i = all.size(); i > 1; --i) {
        seed = seed * 1103515245u + 12345u;
        std::swap(all[i - 1], all[(seed >> 8) % i]);
    }
    u64 sum = 0;
    long found = 0;
    for (const Query& query : all) found += VemGetAbsoluteVariableOffset(query.task, query.path) != 0;
    if (found < static_cast<long>(all.size()) * 9 / 10) state.SkipWithError("the paths are not in the map");
    for (auto _ : state) {
        std::size_t next = 0;
        for (long q = 0; q < kQueries; ++q) {
            const Query& query = all[next];
            next = next + 1 == all.size() ? 0 : next + 1;
            sum += VemGetAbsoluteVariableOffset(query.task, query.path);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.counters["queries/s"] =
        benchmark::Counter(static_cast<double>(kQueries), benchmark::Counter::kIsIterationInvariantRate);
    state.counters["distinct_paths"] = static_cast<double>(all.size());
}
BENCHMARK(BM_AddressQueries)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// The line map of every unit of the resource, each into a map of its own.
void BM_LineMaps(benchmark::State& state) {
    LoadedResource resource(static_cast<int>(state.range(0)));
    if (!resource.root) {
        state.SkipWithError("the resource did not load");
        return;
    }
    std::vector<CString> units;
    CObList* codes = VemGetEvemRootNodeListPtr(resource.root);
    for (POSITION pos = codes->GetHeadPosition(); pos;)
        units.push_back(EVemGetPathName(static_cast<CEVemBaseNode*>(codes->GetNext(pos))));
    long lines = 0;
    for (auto _ : state) {
        lines = 0;
        for (const CString& unit : units) {
            CMapStringToString map;
            EVemFillAwlLine2UcodeOffsetMap(resource.root, unit, &map);
            lines += map.GetCount();
        }
    }
    state.counters["units"] = static_cast<double>(units.size());
    state.counters["lines"] = static_cast<double>(lines);
}
BENCHMARK(BM_LineMaps)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

CVemBaseNode* ChildNamed(CVemBaseNode* node, const char* name) {
    CObList* children = VemGetChildList(node);
    for (POSITION pos = children->GetHeadPosition(); pos;) {
        auto* child = static_cast<CVemBaseNode*>(children->GetNext(pos));
        if (VemGetName(child) == name) return child;
    }
    return nullptr;
}

// For every unit, the reads and writes of a variable that it holds: V1 of a task's program, X of a
// function block, G1 of the global task; so that every statement of every unit is looked at.
CVemBaseNode* TargetOfUnit(const LoadedResource& resource, const CString& unit) {
    const std::string path = unit.str();
    for (std::size_t t = 0; t < resource.tasks.size(); ++t) {
        if (path == vembuild::TaskPath(static_cast<int>(t))) return ChildNamed(resource.tasks[t], "V1");
    }
    CObList* children = VemGetChildList(resource.tasks.front());
    for (POSITION pos = children->GetHeadPosition(); pos;) {
        auto* child = static_cast<CVemBaseNode*>(children->GetNext(pos));
        CString childPath = VemGetPathName(child);
        if (VemGetNodeType(child) == kVemFbNode && childPath.MakeUpper() == CString(path).MakeUpper()) {
            return ChildNamed(child, "X");
        }
    }
    CVemBaseNode* globals = VemFindVemNodeByNameAndType(resource.root, vembuild::kGlobalName, kVemBaseNode);
    CVemBaseNode* global =
        globals ? VemFindVemNodeByNameAndType(globals, vembuild::kGlobalTaskName, kVemTuiTaskNode) : nullptr;
    return global ? ChildNamed(global, "G1") : nullptr;
}

void BM_CrossReference(benchmark::State& state) {
    LoadedResource resource(static_cast<int>(state.range(0)));
    if (!resource.root) {
        state.SkipWithError("the resource did not load");
        return;
    }
    std::vector<std::pair<CEVemBaseNode*, CVemBaseNode*>> queries;
    CObList* codes = VemGetEvemRootNodeListPtr(resource.root);
    for (POSITION pos = codes->GetHeadPosition(); pos;) {
        auto* unit = static_cast<CEVemBaseNode*>(codes->GetNext(pos));
        CVemBaseNode* target = TargetOfUnit(resource, EVemGetPathName(unit));
        if (!target) {
            state.SkipWithError("a unit has no variable to ask for");
            return;
        }
        queries.emplace_back(unit, target);
    }
    long hits = 0;
    for (auto _ : state) {
        hits = 0;
        for (const auto& [unit, target] : queries) {
            CStringList paths;
            CWordArray lines;
            CWordArray kinds;
            EVemCRExecQueryEx(unit, target, &paths, &lines, &kinds, kEVemCrRead | kEVemCrWrite);
            hits += lines.GetSize();
        }
    }
    state.counters["units"] = static_cast<double>(queries.size());
    state.counters["statements"] = static_cast<double>(vembench::CountStatements(resource.root));
    state.counters["hits"] = static_cast<double>(hits);
}
BENCHMARK(BM_CrossReference)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

// An executable node (alignment 2, ByteSize 1) with a task holding an unexpanded array of BYTE of
// n elements.
CVemBaseNode* NewByteArrayTree(int elements, CVemBaseNode*& array) {
    CVemBaseNode* exe = VemNewNode(kVemExeNode);
    tVemDeviceSettings settings{};
    settings.Alignment = 2;
    settings.ByteSize = 1;
    VemSetDeviceSettings(exe, settings);
    CVemBaseNode* task = VemNewNode(kVemTuiTaskNode);
    VemAddChildTail(exe, task);
    array = VemNewNode(kVemArrayNode);
    VemSetName(array, "BYTES");
    VemSetSize(array, static_cast<u16>(elements));
    VemSetDimRange4Index(VemGetRange(array), 0, tVemDimRange{0, elements - 1, 0});
    VemAddChildTail(array, VemCreateCVemVariableNode("", 0, kCbeTypeByte, 1, 0));
    VemAddChildTail(task, array);
    return exe;
}

// An array of BYTE of n elements in a task below an executable node, expanded; time per element.
// Each expansion goes into memory that nothing freed before: the trees stay until the timing ends,
// as a compiler's do, so that the figure holds the expansion and not the allocator's reuse of the
// blocks of a tree deleted a moment before (tens of megabytes at 65,000 elements against a few
// hundred kilobytes at 1,000).
void BM_ExpandArray(benchmark::State& state) {
    const auto elements = static_cast<int>(state.range(0));
    std::vector<CVemBaseNode*> trees;
    for (auto _ : state) {
        state.PauseTiming();
        CVemBaseNode* array = nullptr;
        CVemBaseNode* exe = NewByteArrayTree(elements, array);
        trees.push_back(exe);
        state.ResumeTiming();
        VemExpandArray(array);
    }
    for (CVemBaseNode* exe : trees) {
        CObList* tasks = VemGetChildList(exe);
        auto* array =
            static_cast<CVemBaseNode*>(VemGetChildList(static_cast<CVemBaseNode*>(tasks->GetHead()))->GetHead());
        if (VemGetChildList(array)->GetCount() != elements) state.SkipWithError("the array did not expand");
        VemDeleteNode(exe);
    }
    state.counters["ns_per_element"] =
        benchmark::Counter(static_cast<double>(elements) * 1e-9,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
// The same number of elements for each size, about 650,000, so that each run takes the same memory.
BENCHMARK(BM_ExpandArray)->Arg(1000)->Iterations(650)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExpandArray)->Arg(8000)->Iterations(81)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExpandArray)->Arg(65000)->Iterations(10)->UseRealTime()->Unit(benchmark::kMillisecond);

// The same with the tree deleted after each expansion, so that the next one takes the blocks that
// it freed: fast while they fit in the caches.
void BM_ExpandArrayReusedMemory(benchmark::State& state) {
    const auto elements = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        CVemBaseNode* array = nullptr;
        CVemBaseNode* exe = NewByteArrayTree(elements, array);
        state.ResumeTiming();
        VemExpandArray(array);
        state.PauseTiming();
        VemDeleteNode(exe);
        state.ResumeTiming();
    }
    state.counters["ns_per_element"] =
        benchmark::Counter(static_cast<double>(elements) * 1e-9,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_ExpandArrayReusedMemory)->Arg(1000)->Arg(8000)->Arg(65000)->UseRealTime()->Unit(benchmark::kMillisecond);

// 10,000 children with names in a shuffled order, each added in the order of the node texts.
void BM_AddChildSorted(benchmark::State& state) {
    constexpr int kChildren = 10000;
    std::vector<std::string> names;
    for (int i = 0; i < kChildren; ++i) names.push_back(vembench::Numbered("VAR", 100000 + i));
    u32 seed = 777;
    for (std::size_t i = names.size(); i > 1; --i) {
        seed = seed * 1103515245u + 12345u;
        std::swap(names[i - 1], names[(seed >> 8) % i]);
    }
    for (auto _ : state) {
        state.PauseTiming();
        CVemBaseNode* parent = VemNewNode(kVemBaseNode);
        std::vector<CVemBaseNode*> children;
        for (const std::string& name : names)
            children.push_back(VemCreateCVemVariableNode(name.c_str(), 0, kCbeTypeInt, 2, 0));
        state.ResumeTiming();
        for (CVemBaseNode* child : children) VemAddChildSorted(parent, child);
        state.PauseTiming();
        VemDeleteNode(parent);
        state.ResumeTiming();
    }
}
BENCHMARK(BM_AddChildSorted)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

namespace {

// The text dump of the whole loaded resource into a file, as a developer asks for it to diagnose.
void BM_Dump(benchmark::State& state) {
    LoadedResource resource(static_cast<int>(state.range(0)));
    if (!resource.root) {
        state.SkipWithError("the resource did not load");
        return;
    }
    const std::string file = resource.files.dir() + "/dump.txt";
    for (auto _ : state) {
        if (!CVemNodeDump(resource.root, CString(file))) state.SkipWithError("the dump failed");
    }
    state.counters["dump_bytes"] = static_cast<double>(vembench::FileSize(file));
}
BENCHMARK(BM_Dump)->DenseRange(0, 1)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
