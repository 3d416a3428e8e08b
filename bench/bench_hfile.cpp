// Source header file: key access on a 10 MB source file, with the block of keys at its start, where
// the library writes it, and at its end, where every search runs through the whole file.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "units/hfile.h"

namespace {

constexpr std::size_t kSourceSize = 10 * 1024 * 1024;

// A 10 MB source in the system's temporary directory, removed at the end.
class LargeSource {
public:
    explicit LargeSource(bool blockAtEnd = false) {
        const char* tmp = std::getenv("TMPDIR");
        path_ = std::string(tmp && *tmp ? tmp : "/tmp") + "/vem32-bench-hfile-" + std::to_string(::getpid()) + ".st";
        const std::string block =
            "$BEGIN_ZQ_HEADER\r\nAUTHOR = bench\r\nCHECK = 123\r\nDATE = 2024\r\n$END_ZQ_HEADER\r\n";
        std::string text = blockAtEnd ? std::string() : block;
        text += "PROGRAM main\r\n";
        const std::size_t bodyEnd = blockAtEnd ? kSourceSize - block.size() : kSourceSize;
        for (unsigned i = 0; text.size() < bodyEnd; ++i) {
            text += "  v";
            text += std::to_string(i);
            text += " := v";
            text += std::to_string(i % 977);
            text += " + 1;\r\n";
        }
        if (blockAtEnd) text += block;
        std::ofstream(path_, std::ios::binary) << text;
        size_ = text.size();
    }
    ~LargeSource() { std::remove(path_.c_str()); }
    LargeSource(const LargeSource&) = delete;
    LargeSource& operator=(const LargeSource&) = delete;

    const char* path() const { return path_.c_str(); }
    std::size_t size() const { return size_; }

private:
    std::string path_;
    std::size_t size_ = 0;
};

void SetFileRate(benchmark::State& state, std::size_t fileSize) {
    state.counters["file_bytes/s"] =
        benchmark::Counter(static_cast<double>(fileSize), benchmark::Counter::kIsIterationInvariantRate);
}

void BM_HFileGetValue(benchmark::State& state) {
    LargeSource source;
    CHFile file;
    if (!file.OpenRead(source.path(), 1)) {
        state.SkipWithError("cannot open the source");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(file.GetValue("CHECK"));
    file.Close();
    SetFileRate(state, source.size());
}
BENCHMARK(BM_HFileGetValue)->UseRealTime();

// The block behind the body: finding its markers and the key reads the whole file.
void BM_HFileGetValueScan(benchmark::State& state) {
    LargeSource source(true);
    CHFile file;
    if (!file.OpenRead(source.path(), 1)) {
        state.SkipWithError("cannot open the source");
        return;
    }
    if (file.GetValue("CHECK") != "123") state.SkipWithError("the key was not found");
    for (auto _ : state) benchmark::DoNotOptimize(file.GetValue("CHECK"));
    file.Close();
    SetFileRate(state, source.size());
}
BENCHMARK(BM_HFileGetValueScan)->Unit(benchmark::kMillisecond)->UseRealTime();

// A key that the block at the end does not hold.
void BM_HFileGetValueAbsentKey(benchmark::State& state) {
    LargeSource source(true);
    CHFile file;
    if (!file.OpenRead(source.path(), 1)) {
        state.SkipWithError("cannot open the source");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(file.GetValue("MISSING"));
    file.Close();
    SetFileRate(state, source.size());
}
BENCHMARK(BM_HFileGetValueAbsentKey)->Unit(benchmark::kMillisecond)->UseRealTime();

// Alternating value lengths, so that every call moves the whole body.
void BM_HFileSetValue(benchmark::State& state) {
    LargeSource source;
    CHFile file;
    if (!file.OpenUpdate(source.path(), 1)) {
        state.SkipWithError("cannot open the source");
        return;
    }
    bool longer = false;
    for (auto _ : state) {
        longer = !longer;
        benchmark::DoNotOptimize(file.SetValue("CHECK", longer ? "1234567890" : "1"));
    }
    file.Close();
    SetFileRate(state, source.size());
    state.SetBytesProcessed(static_cast<i64>(state.iterations()) * static_cast<i64>(source.size()));
}
BENCHMARK(BM_HFileSetValue)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same value again: the key is found and written, nothing moves.
void BM_HFileSetValueSameLength(benchmark::State& state) {
    LargeSource source;
    CHFile file;
    if (!file.OpenUpdate(source.path(), 1)) {
        state.SkipWithError("cannot open the source");
        return;
    }
    for (auto _ : state) benchmark::DoNotOptimize(file.SetValue("CHECK", "456"));
    file.Close();
    SetFileRate(state, source.size());
}
BENCHMARK(BM_HFileSetValueSameLength)->UseRealTime();

}  // namespace
