// Debugger answers beyond the path map and the line map: the variable at an address (the index
// and its queries), the statement at a code offset, and the layout diff of two compile results
// against loading both.
#include <string>
#include <vector>

#include "bench_support.h"

namespace {

using vembench::WrittenResource;

constexpr long kQueries = 1000000;

struct Loaded {
    explicit Loaded(int size) : files(size), root(files.written() ? VemLoadNode(files.NodeFile().c_str()) : nullptr) {}
    ~Loaded() {
        if (root) VemDeleteNode(root);
    }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;
    WrittenResource files;
    CVemBaseNode* root;
};

// A shuffled order that the caches do not follow.
template <typename T>
void Shuffle(std::vector<T>& all) {
    u32 seed = 12345;
    for (std::size_t i = all.size(); i > 1; --i) {
        seed = seed * 1103515245u + 12345u;
        std::swap(all[i - 1], all[(seed >> 8) % i]);
    }
}

// The index over every compiled task of the resource; compare with BM_PathMap of the same size.
void BM_AddressIndexBuild(benchmark::State& state) {
    Loaded resource(static_cast<int>(state.range(0)));
    if (!resource.root) {
        state.SkipWithError("the resource did not load");
        return;
    }
    for (auto _ : state) {
        tVemAddressIndex* index = VemAddrIndexNew(resource.root);
        benchmark::DoNotOptimize(index);
        VemAddrIndexDelete(index);
    }
}
BENCHMARK(BM_AddressIndexBuild)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

// One million addresses, each somewhere inside a variable of some task, in shuffled order.
void BM_ReverseAddressQueries(benchmark::State& state) {
    Loaded resource(static_cast<int>(state.range(0)));
    tVemAddressIndex* index = resource.root ? VemAddrIndexNew(resource.root) : nullptr;
    if (!index) {
        state.SkipWithError("the resource did not load");
        return;
    }
    struct Query {
        int task;
        u32 address;
    };
    std::vector<Query> all;
    for (int t = 0; t < VemAddrIndexTaskCount(index); ++t) {
        CVemBaseNode* task = VemAddrIndexGetTask(index, t);
        VemCreateChildNodePathList(task);
        CMapStringToOb* map = VemGetNodePath2NodeList(task);
        CString key;
        CObject* node = nullptr;
        for (POSITION pos = map->GetStartPosition(); pos;) {
            map->GetNextAssoc(pos, key, node);
            all.push_back({t, VemGetAbsoluteVariableOffset(task, key) + 1});
        }
    }
    Shuffle(all);
    long found = 0;
    tVemAddressHit hit{};
    for (auto _ : state) {
        std::size_t next = 0;
        for (long q = 0; q < kQueries; ++q) {
            const Query& query = all[next];
            next = next + 1 == all.size() ? 0 : next + 1;
            found += VemAddrLookup(index, query.task, query.address, &hit);
        }
        benchmark::DoNotOptimize(found);
    }
    state.counters["queries/s"] =
        benchmark::Counter(static_cast<double>(kQueries), benchmark::Counter::kIsIterationInvariantRate);
    state.counters["distinct_addresses"] = static_cast<double>(all.size());
    VemAddrIndexDelete(index);
}
BENCHMARK(BM_ReverseAddressQueries)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// One million code offsets, each in some unit of the resource named by its path, shuffled.
void BM_CodeOffsetQueries(benchmark::State& state) {
    Loaded resource(static_cast<int>(state.range(0)));
    tVemCodeIndex* index = resource.root ? VemCodeIndexNew(resource.root) : nullptr;
    if (!index) {
        state.SkipWithError("the resource did not load");
        return;
    }
    struct Query {
        std::string unit;
        u32 offset;
    };
    std::vector<Query> all;
    const u32 codeLength = vembuild::CodeLength(vembench::Shape(static_cast<int>(state.range(0))));
    CObList* codes = VemGetEvemRootNodeListPtr(resource.root);
    for (POSITION pos = codes->GetHeadPosition(); pos;) {
        const std::string unit = EVemGetPathName(static_cast<CEVemBaseNode*>(codes->GetNext(pos))).str();
        for (u32 offset = 0; offset < codeLength; offset += 37) all.push_back({unit, offset});
    }
    Shuffle(all);
    long found = 0;
    tVemCodeHit hit{};
    for (auto _ : state) {
        std::size_t next = 0;
        for (long q = 0; q < kQueries; ++q) {
            const Query& query = all[next];
            next = next + 1 == all.size() ? 0 : next + 1;
            found += VemCodeLookup(index, query.unit.c_str(), query.offset, &hit);
        }
        benchmark::DoNotOptimize(found);
    }
    if (found < kQueries / 2) state.SkipWithError("the offsets were not found");
    state.counters["queries/s"] =
        benchmark::Counter(static_cast<double>(kQueries), benchmark::Counter::kIsIterationInvariantRate);
    VemCodeIndexDelete(index);
}
BENCHMARK(BM_CodeOffsetQueries)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// Loading both compile results and deleting them again: what the diff is measured against.
void BM_LoadBoth(benchmark::State& state) {
    WrittenResource a(static_cast<int>(state.range(0)));
    WrittenResource b(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        CVemBaseNode* x = VemLoadNode(a.NodeFile().c_str());
        CVemBaseNode* y = VemLoadNode(b.NodeFile().c_str());
        if (!x || !y) state.SkipWithError("the resource did not load");
        VemDeleteNode(x);
        VemDeleteNode(y);
    }
}
BENCHMARK(BM_LoadBoth)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// The diff of the two files, loading included.
void BM_DiffFiles(benchmark::State& state) {
    WrittenResource a(static_cast<int>(state.range(0)));
    WrittenResource b(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        tVemLayoutDiff* diff = VemDiffFiles(a.NodeFile().c_str(), b.NodeFile().c_str());
        if (!diff || VemDiffVerdict(diff) != kVemDiffEqual) state.SkipWithError("the diff failed");
        VemDiffDelete(diff);
    }
}
BENCHMARK(BM_DiffFiles)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
