// A harness without libFuzzer: runs every input named (a file, or every file of a directory) once,
// in name order, so that any compiler's coverage build counts what the kept corpora reach. Names
// must be absolute: a harness works in a scratch directory of its own.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        if (!fs::is_directory(argv[i], error)) {
            inputs.emplace_back(argv[i]);
            continue;
        }
        for (const fs::directory_entry& entry : fs::directory_iterator(argv[i])) {
            if (entry.is_regular_file()) inputs.push_back(entry.path());
        }
    }
    std::sort(inputs.begin(), inputs.end());
    if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argc, &argv);
    for (const fs::path& path : inputs) {
        std::ifstream in(path, std::ios::binary);
        if (!in) {
            std::fprintf(stderr, "cannot read %s\n", path.c_str());
            return 1;
        }
        std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        bytes.reserve(1);  // libFuzzer never passes a null pointer, not even for an empty input
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::printf("%zu inputs\n", inputs.size());
    return 0;
}
