// A whole compiled resource in three sizes: built through the exported functions as a compiler
// builds it, written to its node file and task files, and loaded as a debugger loads it. Beside
// them the floors that the machine sets: reading and writing the same bytes with nothing else, and
// building the same tree in memory with no file and no computation.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "bench_support.h"
#include "memory/segtbl.h"
#include "node/basenode.h"

namespace {

using vembench::WrittenResource;

void ReportResource(benchmark::State& state, CVemBaseNode* exe, u64 bytes) {
    state.counters["nodes"] = static_cast<double>(vembuild::CountNodes(exe));
    state.counters["statements"] = static_cast<double>(vembench::CountStatements(exe));
    state.counters["file_bytes"] = static_cast<double>(bytes);
}

// ---- build, write, load ------------------------------------------------------------------------------

void BM_Build(benchmark::State& state) {
    const vembuild::ResourceShape shape = vembench::Shape(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        CVemBaseNode* exe = vembuild::BuildResource(shape);
        state.PauseTiming();
        VemDeleteNode(exe);
        state.ResumeTiming();
    }
    CVemBaseNode* exe = vembuild::BuildResource(shape);
    ReportResource(state, exe, 0);
    state.counters["variables"] = static_cast<double>(vembuild::VariableCount(shape));
    VemDeleteNode(exe);
}
BENCHMARK(BM_Build)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Write(benchmark::State& state) {
    const vembuild::ResourceShape shape = vembench::Shape(static_cast<int>(state.range(0)));
    const std::string dir = vembench::MakeTempDir("write");
    const std::string nodeFile = dir + "/res1.vem";
    for (auto _ : state) {
        state.PauseTiming();
        CVemBaseNode* exe = vembuild::BuildResource(shape);
        state.ResumeTiming();
        if (vembuild::WriteResource(exe, dir, nodeFile) != 1) state.SkipWithError("the resource could not be written");
        state.PauseTiming();
        VemDeleteNode(exe);
        state.ResumeTiming();
    }
    vembench::RemoveTree(dir);
}
BENCHMARK(BM_Write)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Load(benchmark::State& state) {
    WrittenResource resource(static_cast<int>(state.range(0)));
    if (!resource.written()) {
        state.SkipWithError("the resource could not be written");
        return;
    }
    for (auto _ : state) {
        CVemBaseNode* root = VemLoadNode(resource.NodeFile().c_str());
        if (!root) {
            state.SkipWithError("the resource did not load");
            return;
        }
        state.PauseTiming();
        VemDeleteNode(root);
        state.ResumeTiming();
    }
    CVemBaseNode* root = VemLoadNode(resource.NodeFile().c_str());
    ReportResource(state, root, resource.bytes());
    state.counters["file_bytes/s"] =
        benchmark::Counter(static_cast<double>(resource.bytes()), benchmark::Counter::kIsIterationInvariantRate);
    VemDeleteNode(root);
}
BENCHMARK(BM_Load)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

// ---- floors ------------------------------------------------------------------------------------------

std::vector<u8> ReadWhole(const std::string& path) {
    std::vector<u8> bytes(vembench::FileSize(path));
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return {};
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::read(fd, bytes.data() + done, bytes.size() - done);
        if (n <= 0) break;
        done += static_cast<std::size_t>(n);
    }
    ::close(fd);
    bytes.resize(done);
    return bytes;
}

// The resource's files, each read whole into memory with one read.
void BM_FloorReadBytes(benchmark::State& state) {
    WrittenResource resource(static_cast<int>(state.range(0)));
    u64 total = 0;
    for (auto _ : state) {
        total = 0;
        for (const std::string& file : resource.files()) {
            const std::vector<u8> bytes = ReadWhole(file);
            total += bytes.size();
            benchmark::DoNotOptimize(bytes.data());
        }
    }
    state.counters["file_bytes"] = static_cast<double>(total);
}
BENCHMARK(BM_FloorReadBytes)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same bytes written to files, each with one write. The node file goes as the library writes
// it safely: to a file beside it, made durable, and renamed over it.
void BM_FloorWriteBytes(benchmark::State& state) {
    WrittenResource resource(static_cast<int>(state.range(0)));
    std::vector<std::vector<u8>> contents;
    for (const std::string& file : resource.files()) contents.push_back(ReadWhole(file));
    const std::string dir = vembench::MakeTempDir("rawwrite");
    std::vector<std::string> names;
    for (std::size_t i = 0; i < contents.size(); ++i)
        names.push_back(dir + vembench::Numbered("/f", static_cast<long>(i)));
    const std::string temporary = dir + "/f0.tmp";
    for (auto _ : state) {
        for (std::size_t i = 0; i < contents.size(); ++i) {
            const bool nodeFile = i == 0;
            const std::string& name = nodeFile ? temporary : names[i];
            const int fd = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
            if (fd < 0 ||
                ::write(fd, contents[i].data(), contents[i].size()) != static_cast<ssize_t>(contents[i].size()) ||
                (nodeFile && ::fsync(fd) != 0)) {
                state.SkipWithError("cannot write");
            }
            if (fd >= 0) ::close(fd);
            if (nodeFile) std::rename(temporary.c_str(), names[i].c_str());
        }
    }
    vembench::RemoveTree(dir);
}
BENCHMARK(BM_FloorWriteBytes)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

// What a loaded resource holds, taken from it once: every node with its name and place, every
// segment's bytes and every statement. Building from it is the work that any load must do, with
// nothing to parse and nothing to compute.
struct TreeRecipe {
    struct Node {
        tVemNodeType type;
        CString name;
        int parent;
        u16 offset;
        u16 size;
        tCbeType variableType;
        std::vector<std::vector<u8>> segments;  // empty for nodes without a segment table
    };
    struct Statement {
        tEVemNodeType type;
        CString name;
        u16 line;
        u16 offset;
    };
    struct Code {
        CString name;
        CString path;
        tEVemPouType pouType;
        std::vector<Statement> statements;
    };
    std::vector<Node> nodes;
    std::vector<Code> codes;
};

void Collect(CVemBaseNode* node, int parent, TreeRecipe& recipe) {
    TreeRecipe::Node entry{VemGetNodeType(node), VemGetName(node),         parent, VemGetOffset(node),
                           VemGetSize(node),     VemGetVariableType(node), {}};
    if (CSegmentTable* table = VemGetSegmentTable(node)) {
        for (int s = 0; s < table->GetSize(); ++s) {
            CVemByteArray* array = VemSegTblGetSegment(table, static_cast<u16>(s));
            const u8* bytes = array ? GetSegmentBytePointer(table, static_cast<u16>(s)) : nullptr;
            entry.segments.emplace_back(bytes, bytes + (array ? VemBaGetLength(array) : 0));
        }
    }
    const int self = static_cast<int>(recipe.nodes.size());
    recipe.nodes.push_back(std::move(entry));
    CObList* children = VemGetChildList(node);
    for (POSITION pos = children->GetHeadPosition(); pos;)
        Collect(static_cast<CVemBaseNode*>(children->GetNext(pos)), self, recipe);
}

TreeRecipe CollectRecipe(CVemBaseNode* exe) {
    TreeRecipe recipe;
    Collect(exe, -1, recipe);
    CObList* codes = VemGetEvemRootNodeListPtr(exe);
    for (POSITION pos = codes->GetHeadPosition(); pos;) {
        auto* code = static_cast<CEVemBaseNode*>(codes->GetNext(pos));
        TreeRecipe::Code entry{EVemGetName(code), EVemGetPathName(code), EVemGetPouType(code), {}};
        for (CEVemBaseNode* s = EVemGetStatementNode(code); s; s = EVemGetNext(s)) {
            entry.statements.push_back({EVemGetNodeType(s), EVemGetName(s), EVemGetAwlLine(s), EVemGetOffset(s)});
        }
        recipe.codes.push_back(std::move(entry));
    }
    return recipe;
}

CVemBaseNode* BuildFromRecipe(const TreeRecipe& recipe) {
    std::vector<CVemBaseNode*> made;
    made.reserve(recipe.nodes.size());
    for (const TreeRecipe::Node& entry : recipe.nodes) {
        CVemBaseNode* node = VemNewNode(entry.type);
        VemSetName(node, entry.name);
        if (entry.type == kVemVariableNode) {
            VemSetOffset(node, entry.offset);
            VemSetSize(node, entry.size);
            VemSetVariableType(node, entry.variableType);
        }
        if (!entry.segments.empty()) {
            CSegmentTable* table = VemGetSegmentTable(node);
            for (const std::vector<u8>& bytes : entry.segments) {
                CVemByteArray* array = nullptr;
                if (!bytes.empty()) {
                    array = VemBaNewByteArray(0, 2, 1, 0);
                    VemBaAppend(array, bytes.data(), static_cast<unsigned>(bytes.size()));
                }
                VemSegTblAddNewSegment(table, array);
            }
        }
        if (entry.parent >= 0) {
            // An array takes what is added through the flat function as its element type; its
            // elements are its children as a load makes them.
            CVemBaseNode* parent = made[static_cast<std::size_t>(entry.parent)];
            if (VemGetNodeType(parent) == kVemArrayNode) {
                parent->CVemBaseNode::AddChildTail(node);
            } else {
                VemAddChildTail(parent, node);
            }
        }
        made.push_back(node);
    }
    CObList* list = VemGetEvemRootNodeListPtr(made.front());
    for (const TreeRecipe::Code& entry : recipe.codes) {
        CEVemBaseNode* code = EVemCreateNode(kEVemPouCodeNode, entry.name);
        EVemSetPathName(code, entry.path);
        EVemSetPouType(code, entry.pouType);
        for (const TreeRecipe::Statement& s : entry.statements) {
            CEVemBaseNode* statement = EVemAddNewStmtNode(code, s.type);
            EVemSetName(statement, s.name);
            EVemSetAwlLine(statement, s.line);
            EVemSetUcodeOffset(statement, s.offset);
        }
        list->AddTail(code);
    }
    return made.front();
}

void BM_FloorBuildInMemory(benchmark::State& state) {
    WrittenResource resource(static_cast<int>(state.range(0)));
    CVemBaseNode* loaded = VemLoadNode(resource.NodeFile().c_str());
    if (!loaded) {
        state.SkipWithError("the resource did not load");
        return;
    }
    const TreeRecipe recipe = CollectRecipe(loaded);
    VemDeleteNode(loaded);
    CVemBaseNode* sample = BuildFromRecipe(recipe);
    ReportResource(state, sample, resource.bytes());
    VemDeleteNode(sample);
    for (auto _ : state) {
        CVemBaseNode* exe = BuildFromRecipe(recipe);
        state.PauseTiming();
        VemDeleteNode(exe);
        state.ResumeTiming();
    }
}
BENCHMARK(BM_FloorBuildInMemory)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

// ---- memory --------------------------------------------------------------------------------------------

// The heap that a loaded resource holds and the most that its load held at once, per node.
void BM_LoadHeap(benchmark::State& state) {
    WrittenResource resource(static_cast<int>(state.range(0)));
    vembench::HeapFigures figures;
    long nodes = 0;
    for (auto _ : state) {
        vembench::HeapMeterStart();
        CVemBaseNode* root = VemLoadNode(resource.NodeFile().c_str());
        figures = vembench::HeapMeterRead();
        vembench::HeapMeterStop();
        state.PauseTiming();
        nodes = vembuild::CountNodes(root);
        VemDeleteNode(root);
        state.ResumeTiming();
    }
    state.counters["nodes"] = static_cast<double>(nodes);
    state.counters["heap_bytes"] = static_cast<double>(figures.liveUsable);
    state.counters["peak_heap_bytes"] = static_cast<double>(figures.peakUsable);
    state.counters["heap_bytes_per_node"] = static_cast<double>(figures.liveUsable) / static_cast<double>(nodes);
    state.counters["peak_heap_bytes_per_node"] = static_cast<double>(figures.peakUsable) / static_cast<double>(nodes);
}
BENCHMARK(BM_LoadHeap)->Arg(2)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

// One plain variable node in a task, as VemCreateCVemVariableNode makes it and a load rebuilds it:
// its object, its name and its link in the parent's list of children.
void BM_PlainVariableHeap(benchmark::State& state) {
    constexpr int kCount = 100000;
    std::vector<std::string> names;
    for (int i = 0; i < kCount; ++i) names.push_back(vembench::Numbered("V", i));
    vembench::HeapFigures figures;
    for (auto _ : state) {
        CVemBaseNode* task = VemNewNode(kVemTuiTaskNode);
        vembench::HeapMeterStart();
        for (int i = 0; i < kCount; ++i) {
            VemAddChildTail(task, VemCreateCVemVariableNode(names[static_cast<std::size_t>(i)].c_str(),
                                                            static_cast<u16>(2 * i), kCbeTypeInt, 2, 0));
        }
        figures = vembench::HeapMeterRead();
        vembench::HeapMeterStop();
        state.PauseTiming();
        VemDeleteNode(task);
        state.ResumeTiming();
    }
    state.counters["bytes_per_node"] = static_cast<double>(figures.liveUsable) / kCount;
    state.counters["asked_bytes_per_node"] = static_cast<double>(figures.liveAsked) / kCount;
    state.counters["allocations_per_node"] = static_cast<double>(figures.allocations) / kCount;
}
BENCHMARK(BM_PlainVariableHeap)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
