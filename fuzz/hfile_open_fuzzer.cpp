// CHFile opening an arbitrary file, as a source file and as a type file, and everything that reads:
// keys, the unit's kind and name, the length and the bytes of the body.
#include "fuzz_common.h"
#include "units/hfile.h"

namespace {

const char* const kKeys[] = {"NAME", "TYPE", "VERSION", "DATE", "", "NO SUCH KEY"};

void ReadAll(const char* name) {
    CHFile file;
    if (!file.OpenRead(name, 1)) return;
    try {
        for (const char* key : kKeys) file.GetValue(key);
        file.GetUnitKind(1);
        file.GetUnitName(1);
        const u64 length = file.GetLength();
        char buffer[4096];
        u64 total = 0;
        while (const unsigned got = file.Read(buffer, sizeof buffer)) total += got;
        if (length != CHFile::kNoBody && total > length) std::abort();  // the body reads as long as it claims
    } catch (const CException&) {
    }
    file.CloseChecked(1);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vemfuzz::TheScratch();
    if (symlink("unit.st", "unit.typ") != 0) std::abort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vemfuzz::PutFile("unit.st", data, size);
    ReadAll("unit.st");
    ReadAll("unit.typ");
    return 0;
}
