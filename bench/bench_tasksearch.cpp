// Loading a resource whose task files are not where their stored names say: the same 200 small
// task files in a directory of 2000 other files, named as stored (the floor), found beside the node
// file by their exact last name part, and found only without regard to case.
#include <string>
#include <vector>

#include "bench_support.h"

namespace {

constexpr int kTasks = 200;
constexpr int kOtherFiles = 2000;

void BM_LoadMovedTasks(benchmark::State& state) {
    const int mode = static_cast<int>(state.range(0));  // 0 stored names, 1 exact, 2 any case
    const std::string dir = vembench::MakeTempDir("tasksearch");
    for (int i = 0; i < kOtherFiles; ++i) {
        CFile other((dir + "/" + vembench::Numbered("other", i) + ".dat").c_str(),
                    CFile::modeCreate | CFile::modeWrite);
    }
    CVemBaseNode* root = VemNewNode(kVemResourceNode);
    CVemBaseNode* container = VemNewNode(kVemTaskContainerNode);
    VemAddChildTail(root, container);
    for (int i = 0; i < kTasks; ++i) {
        const std::string name = vembench::Numbered("T", i);
        CVemBaseNode* task = VemNewNode(kVemTuiTaskNode);
        VemSetName(task, name.c_str());
        {
            CFile file((dir + "/" + name + ".tsk").c_str(), CFile::modeCreate | CFile::modeWrite);
            CArchive ar(&file, CArchive::store);
            VemWriteObject(task, ar);
            ar.Close();
        }
        VemDeleteNode(task);
        const std::string stored = mode == 0   ? dir + "/" + name + ".tsk"
                                   : mode == 1 ? "C:\\NOWHERE\\" + name + ".tsk"
                                               : "C:\\NOWHERE\\" + name + ".TSK";
        VemTaskCompiled(container, name.c_str(), stored.c_str());
    }
    const std::string nodeFile = dir + "/r.vem";
    VemWriteNode(root, nodeFile.c_str());
    VemDeleteNode(root);
    for (auto _ : state) {
        CVemBaseNode* loaded = VemLoadNode(nodeFile.c_str());
        if (!loaded || VemGetChildList(VemGetFirstNodeOfType(loaded, kVemTaskContainerNode))->GetCount() != kTasks) {
            state.SkipWithError("the tasks did not all load");
            VemDeleteNode(loaded);
            break;
        }
        state.PauseTiming();
        VemDeleteNode(loaded);
        state.ResumeTiming();
    }
    state.counters["tasks/s"] = benchmark::Counter(kTasks, benchmark::Counter::kIsIterationInvariantRate);
    vembench::RemoveTree(dir);
}
BENCHMARK(BM_LoadMovedTasks)->DenseRange(0, 2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
