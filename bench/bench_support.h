// What the benchmarks share: the three sizes of resource, a resource written to a directory of
// its own, and a meter of the heap.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <vector>

#include "resource_builder.h"

namespace vembench {

// 0 small, 1 medium, 2 large (20 tasks, more than 200,000 variables, 300,000 statements).
vembuild::ResourceShape Shape(int size);
const char* SizeName(int size);
// Code nodes and their statements in the executable node's list.
long CountCodeNodes(CVemBaseNode* exe);
long CountStatements(CVemBaseNode* exe);

// The resource's node file and task files in a directory below the system's temporary directory,
// removed at the end.
class WrittenResource {
public:
    explicit WrittenResource(int size);
    ~WrittenResource();
    WrittenResource(const WrittenResource&) = delete;
    WrittenResource& operator=(const WrittenResource&) = delete;

    bool written() const { return written_; }
    const std::string& dir() const { return dir_; }
    std::string NodeFile() const { return dir_ + "/res1.vem"; }
    const std::vector<std::string>& files() const { return files_; }
    u64 bytes() const { return bytes_; }

private:
    std::string dir_;
    std::vector<std::string> files_;
    bool written_ = false;
    u64 bytes_ = 0;
};

// The prefix followed by the number.
std::string Numbered(const char* prefix, long number);

// A fresh directory below the system's temporary directory.
std::string MakeTempDir(const char* what);
void RemoveTree(const std::string& dir);
u64 FileSize(const std::string& path);

// Bytes that the heap holds, counted by the allocation functions of this program while metering:
// what was asked for, and what the allocator handed out (its rounding included).
struct HeapFigures {
    long long liveAsked = 0;
    long long liveUsable = 0;
    long long peakUsable = 0;
    long long allocations = 0;
};
void HeapMeterStart();
HeapFigures HeapMeterRead();
void HeapMeterStop();

}  // namespace vembench
