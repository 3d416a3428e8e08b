// VemBaSerialize loading a byte array record; an array that loads is dumped, summed and must
// store, load and store again to the same bytes.
#include "fuzz_common.h"
#include "memory/units.h"

namespace {

// The dump of an instance table writes a line for each record that its header claims, up to 65535
// from a few bytes; such dumps would slow the harness twentyfold, and shorter claims take the same
// path.
bool ClaimsMoreRecordsThanBytes(CVemByteArray* array) {
    const unsigned b = VemBaGetByteSize(array), w = vem::units::WordWidth(b);
    u16 records = 0;
    try {
        VemBaGetWord(array, static_cast<u16>(2 * w + 2 * b), &records);
    } catch (const CException&) {
        return true;
    }
    return records > VemBaGetLength(array);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CMemFile file(data, size);
    CVemByteArray* array = nullptr;
    try {
        CArchive ar(&file, CArchive::load);
        VemBaSerialize(array, ar);
    } catch (const CException&) {
        if (array) std::abort();  // a failed load hands out nothing
        return 0;
    }
    if (!array) return 0;
    if (!ClaimsMoreRecordsThanBytes(array)) {
        CStringArray lines;
        VemBaDump(array, lines);
    }
    VemBaComputeCheckSum(array, 0);
    vemfuzz::CheckStable([&](CArchive& ar) { VemBaSerialize(array, ar); },
                         [](CArchive& ar) {
                             CVemByteArray* again = nullptr;
                             VemBaSerialize(again, ar);
                             std::vector<u8> bytes =
                                 vemfuzz::Stored([&](CArchive& out) { VemBaSerialize(again, out); });
                             VemBaDeleteByteArray(again);
                             return bytes;
                         });
    VemBaDeleteByteArray(array);
    return 0;
}
