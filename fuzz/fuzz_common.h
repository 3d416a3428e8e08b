// Shared parts of the fuzz harnesses: a private scratch directory on a memory file system (the
// process works there, so relative names in node files land in it), inputs put there as files, and
// the store and load of one record in memory that the in-memory harnesses compare.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/archive.h"
#include "platform/file.h"
#include "platform/msgbox.h"
#include "vem32_classes.h"

namespace vemfuzz {

inline int NoMessageBox(const char*, unsigned, void*) { return 1; }

class Scratch {
public:
    Scratch() {
        const char* base = std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
        std::string pattern = std::string(base) + "/vemfuzz-XXXXXX";
        if (!mkdtemp(pattern.data())) std::abort();
        path_ = pattern;
        if (chdir(path_.c_str()) != 0) std::abort();
        VemSetMessageBoxHandler(&NoMessageBox, nullptr);
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

// Made on first use; the working directory moves into it.
inline Scratch& TheScratch() {
    static Scratch scratch;
    return scratch;
}

// The input as a file of that name in the scratch directory; gives its relative name.
inline const char* PutFile(const char* name, const std::uint8_t* data, std::size_t size) {
    TheScratch();
    std::FILE* f = std::fopen(name, "wb");
    if (!f) std::abort();
    if (size && std::fwrite(data, 1, size, f) != size) std::abort();
    std::fclose(f);
    return name;
}

// Stores through `store` into memory and gives the bytes.
template <class Store>
std::vector<u8> Stored(Store store) {
    CMemFile file;
    CArchive ar(&file, CArchive::store);
    store(ar);
    ar.Close();
    return file.Detach();
}

// What a load accepted must come back the same after a store: store, load that, store again,
// and the two stores are the same bytes.
template <class Store, class Reload>
void CheckStable(Store store, Reload reload) {
    const std::vector<u8> first = Stored(store);
    CMemFile file(first);
    CArchive ar(&file, CArchive::load);
    const std::vector<u8> second = reload(ar);
    if (first != second) {
        std::fprintf(stderr, "store, load and store again differ: %zu and %zu bytes\n", first.size(), second.size());
        std::abort();
    }
}

}  // namespace vemfuzz
