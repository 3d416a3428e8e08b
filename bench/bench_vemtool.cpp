// The command-line tool on the resources of the benchmarks: each command as a user runs it, from
// the start of the process to its last byte of output, beside the library's load of the same files
// (BM_Load) and the bytes the command writes. The machine may be shared: the counter child_cpu_ms
// is the CPU time (user and system) of the tool itself, which other work on the machine does not
// stretch as it stretches the real time.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstdlib>
#include <string>

#include "bench_support.h"

#ifdef VEMTOOL_PATH
namespace {

using vembench::FileSize;
using vembench::WrittenResource;

struct ToolCommand {
    const char* name;
    const char* arguments;  // behind the node file
};

const ToolCommand kCommands[] = {
    {"check", ""},
    {"dump", ""},
    {"tree", ""},
    {"segments", ""},
    {"query", "--addr TASK1.V1 --json"},
    {"export", "--json --compact"},
};

// User and system time of every child that has ended and been waited for.
double ChildrenCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void BM_Vemtool(benchmark::State& state) {
    const ToolCommand& command = kCommands[state.range(1)];
    state.SetLabel(command.name);
    WrittenResource resource(static_cast<int>(state.range(0)));
    if (!resource.written()) {
        state.SkipWithError("the resource could not be written");
        return;
    }
    const std::string output = resource.dir() + "/out.txt";
    const std::string line = std::string(VEMTOOL_PATH) + " -q " + command.name + " " + resource.NodeFile() + " " +
                             command.arguments + " > " + output + " 2> /dev/null";
    const double before = ChildrenCpuSeconds();
    for (auto _ : state) {
        if (std::system(line.c_str()) != 0) {
            state.SkipWithError("the command failed");
            return;
        }
    }
    // The shell that runs the command counts too; its share is a millisecond or so.
    state.counters["child_cpu_ms"] = 1000.0 * (ChildrenCpuSeconds() - before) / static_cast<double>(state.iterations());
    state.counters["output_bytes"] = static_cast<double>(FileSize(output));
}
BENCHMARK(BM_Vemtool)
    ->ArgsProduct({{2}, {0, 1, 2, 3, 4, 5}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

}  // namespace
#endif
