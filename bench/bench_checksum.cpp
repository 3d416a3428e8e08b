// Checksum throughput of byte arrays and of a whole segment table, in bytes per second.
#include <benchmark/benchmark.h>

#include <vector>

#include "memory/segtbl.h"
#include "vem32_classes.h"

namespace {

std::vector<u8> Pattern(std::size_t size) {
    std::vector<u8> bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<u8>(i * 131 + 7);
    return bytes;
}

// Shown as "MB=<n>/s": megabytes (10^6 bytes) summed per second.
void SetBytesRate(benchmark::State& state, double bytesPerIteration) {
    const double megabytes = static_cast<double>(state.iterations()) * bytesPerIteration / 1e6;
    state.counters["MB"] = benchmark::Counter(megabytes, benchmark::Counter::kIsRate);
}

void BM_ByteArrayChecksum64K(benchmark::State& state) {
    CVemByteArray* array = VemBaNewByteArray(0, 1, 1, 0);
    VemBaSetMaxSize(array, 65536);
    const std::vector<u8> bytes = Pattern(65536);
    VemBaAppend(array, bytes.data(), static_cast<unsigned>(bytes.size()));
    u32 seed = 0;
    for (auto _ : state) {
        seed = VemBaComputeCheckSum(array, seed);
        benchmark::DoNotOptimize(seed);
    }
    SetBytesRate(state, static_cast<double>(VemBaGetLength(array)));
    VemBaDeleteByteArray(array);
}
BENCHMARK(BM_ByteArrayChecksum64K)->UseRealTime();

// A thousand segments of mixed sizes and layouts, summed as one chain.
void BM_SegmentTableChecksum1000(benchmark::State& state) {
    CSegmentTable* table = VemSegTblNew();
    double total = 0;
    for (int i = 0; i < 1000; ++i) {
        const std::vector<u8> bytes = Pattern(64 + static_cast<std::size_t>(i % 16) * 128);
        CVemByteArray* array = VemBaNewByteArray(i % 3 == 1, 1, 1, 0);
        VemBaAppend(array, bytes.data(), static_cast<unsigned>(bytes.size()));
        total += static_cast<double>(bytes.size());
        VemSegTblAddNewSegment(table, array);
    }
    u32 seed = 0;
    for (auto _ : state) {
        seed = VemSegTblComputeCheckSum(table, seed);
        benchmark::DoNotOptimize(seed);
    }
    SetBytesRate(state, total);
    VemSegTblDelete(table);
}
BENCHMARK(BM_SegmentTableChecksum1000)->UseRealTime();

}  // namespace
