// Refusing hostile node files: 100 bytes that claim a string of 2^40 bytes or a map of 2^32
// entries, and a file of 100,000 nested children. Each load gives null; the time is what a host
// waits for that answer.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "vem32_classes.h"
#include "vem_ext.h"

namespace {

struct Bytes {
    std::vector<u8> v;
    Bytes& u8_(unsigned x) {
        v.push_back(static_cast<u8>(x));
        return *this;
    }
    Bytes& u16_(unsigned x) { return u8_(x & 0xFF).u8_(x >> 8); }
    Bytes& u32_(u32 x) { return u16_(x & 0xFFFF).u16_(x >> 16); }
};

Bytes Frame(unsigned type) {
    Bytes b;
    b.u16_(type);
    for (char c : std::string("Norvadis_VEM_Version:003")) b.u8_(static_cast<u8>(c));
    return b.u8_(0);
}

// Schema, type, expanded, an empty name, serial, empty extra text.
Bytes& BaseHead(Bytes& b, unsigned type) { return b.u16_(0).u8_(type).u8_(1).u8_(0).u32_(0).u8_(0); }

std::vector<u8> HostileFile(int which) {
    Bytes b;
    switch (which) {
        case 0:  // a name of 2^40 bytes
            b = Frame(kVemBaseNode);
            b.u16_(0).u8_(1).u8_(1).u8_(0xFF).u16_(0xFFFF).u32_(0xFFFFFFFF).u32_(0).u32_(1u << 8);
            break;
        case 1:  // a task map of 2^32 - 1 entries
            b = Frame(kVemTaskContainerNode);
            BaseHead(b, kVemTaskContainerNode).u16_(0).u16_(0).u16_(0xFFFF).u32_(0xFFFFFFFF);
            break;
        default:  // 100,000 nested children
            b = Frame(kVemBaseNode);
            for (int i = 0; i < 100000; ++i) BaseHead(b, kVemBaseNode).u16_(1).u8_(kVemBaseNode);
            BaseHead(b, kVemBaseNode).u16_(0);
            return b.v;
    }
    b.v.resize(100);
    return b.v;
}

void BM_LoadHostileFile(benchmark::State& state) {
    const char* tmp = std::getenv("TMPDIR");
    const std::string path =
        std::string(tmp && *tmp ? tmp : "/tmp") + "/vem32-bench-hostile-" + std::to_string(::getpid()) + ".vem";
    const std::vector<u8> bytes = HostileFile(static_cast<int>(state.range(0)));
    std::FILE* f = std::fopen(path.c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
    for (auto _ : state) {
        tVemLoadReport report;
        CVemBaseNode* node = VemLoadNodeReport(path.c_str(), &report);
        if (node) state.SkipWithError("a hostile file loaded");
        benchmark::DoNotOptimize(report);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
    std::remove(path.c_str());
}
// file:0 the long string, file:1 the large map, file:2 the nested children.
BENCHMARK(BM_LoadHostileFile)->ArgName("file")->DenseRange(0, 2);

}  // namespace
