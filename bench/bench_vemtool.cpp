// The command-line tool on the resources of the benchmarks: each command as a user runs it, from
// the start of the process to its last byte of output, beside the library's load of the same files
// (BM_Load) and the bytes the command writes.
#include <benchmark/benchmark.h>

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
    for (auto _ : state) {
        if (std::system(line.c_str()) != 0) {
            state.SkipWithError("the command failed");
            return;
        }
    }
    state.counters["output_bytes"] = static_cast<double>(FileSize(output));
}
BENCHMARK(BM_Vemtool)
    ->ArgsProduct({{2}, {0, 1, 2, 3, 4, 5}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

}  // namespace
#endif
