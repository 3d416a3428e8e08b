// The record of a segment table; a table that loads is summed and must store, load and store again
// to the same bytes. The dumps of its arrays are the byte array harness's: an instance table that
// claims 65535 records dumps that many lines, which would slow this harness twentyfold.
#include "fuzz_common.h"
#include "memory/segtbl.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CMemFile file(data, size);
    CSegmentTable* table = VemSegTblNew();
    try {
        CArchive ar(&file, CArchive::load);
        table->Serialize(ar);
    } catch (const CException&) {
        VemSegTblDelete(table);
        return 0;
    }
    VemSegTblComputeCheckSum(table, 0);
    vemfuzz::CheckStable([&](CArchive& ar) { table->Serialize(ar); },
                         [](CArchive& ar) {
                             CSegmentTable* again = VemSegTblNew();
                             again->Serialize(ar);
                             std::vector<u8> bytes = vemfuzz::Stored([&](CArchive& out) { again->Serialize(out); });
                             VemSegTblDelete(again);
                             return bytes;
                         });
    VemSegTblDelete(table);
    return 0;
}
