// VemBaReadIniFile on an arbitrary text file, into a little-endian and a fract layout array.
#include "fuzz_common.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    vemfuzz::TheScratch();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const char* name = vemfuzz::PutFile("segment.ini", data, size);
    for (const int fract : {0, 1}) {
        CVemByteArray* array = VemBaNewByteArray(0, 2, fract ? 6 : 1, fract);
        try {
            VemBaReadIniFile(array, name, "Segment", "Data");
        } catch (const CException&) {
        }
        VemBaDeleteByteArray(array);
    }
    return 0;
}
