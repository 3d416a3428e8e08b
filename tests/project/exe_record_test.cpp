// Executable node: its record with the device settings, old records, the code nodes that hang on
// the switch, and damaged node files.
#include <cstring>

#include "alloc_hook.h"
#include "compiled_test_util.h"

using compiledtest::Concat;
using compiledtest::kEmptyTable;
using compiledtest::LoadRecord;
using compiledtest::MakeNode;
using compiledtest::NodePtr;
using compiledtest::StoreRecord;
using compiledtest::Stored;
using vemtest::Bytes;

namespace {

using ExeRecord = compiledtest::SettingsTest;

tVemDeviceSettings DistinctSettings() {
    tVemDeviceSettings s{};
    s.DeviceWord1 = 0x0102;
    s.DeviceWord2 = 0x0304;
    s.MotorolaFormat = 1;
    s.ResourceGlobalSegTable = 0x10002;
    s.OnlineLinking = 3;
    s.IncrementalDownload = 0;
    s.OneSegTableAtOnlineLinking = 1;
    s.OnlineEditor = 0xFFFF;
    s.TaskDownload = 1;
    s.TaskStart = 0;
    s.MaxWatchEntries = 0x0506;
    s.DeviceByte1 = 0x11;
    s.DeviceByte2 = 0x12;
    s.DeviceByte3 = 0x13;
    s.DeviceByte4 = 0x14;
    s.DeviceByte5 = 0x15;
    s.DeviceByte6 = 0x16;
    s.IpType = 0x17;
    s.DeviceWord3 = 0x0809;
    s.DeviceByte7 = 0x18;
    s.Alignment = 4;
    s.ByteSize = 2;
    s.DeviceLong1 = 0x0A0B0C0D;
    s.DeviceByte9 = 0x19;
    s.DeviceLong2 = 0x1A1B1C1D;
    s.DeviceLong3[0] = 0x21222324;
    s.DeviceLong3[1] = 0x31323334;
    std::memset(s.ReservedBytes, 0xEE, sizeof s.ReservedBytes);
    return s;
}

const std::vector<u8> kDistinctSettingsBytes = Bytes()
                                                   .u32_(0xCDCDCDCD)             // marker
                                                   .u16_(0x0102)                 // DeviceWord1
                                                   .u16_(0x0304)                 // DeviceWord2
                                                   .u16_(1)                      // MotorolaFormat
                                                   .u16_(2)                      // ResourceGlobalSegTable, low 16 bits
                                                   .u16_(3)                      // OnlineLinking
                                                   .u16_(0)                      // IncrementalDownload
                                                   .u16_(1)                      // OneSegTableAtOnlineLinking
                                                   .u16_(0xFFFF)                 // OnlineEditor
                                                   .u16_(1)                      // TaskDownload
                                                   .u16_(0)                      // TaskStart
                                                   .u16_(0x0506)                 // MaxWatchEntries
                                                   .u8_(0x11)                    // DeviceByte1
                                                   .u8_(0x12)                    // DeviceByte2
                                                   .u8_(0x13)                    // DeviceByte3
                                                   .u8_(0x14)                    // DeviceByte4
                                                   .u8_(0x15)                    // DeviceByte5
                                                   .u8_(0x16)                    // DeviceByte6
                                                   .u8_(0x17)                    // IpType
                                                   .u16_(0x0809)                 // DeviceWord3
                                                   .u8_(0x18)                    // DeviceByte7
                                                   .u8_(4)                       // Alignment
                                                   .u8_(2)                       // ByteSize
                                                   .u32_(0x0A0B0C0D)             // DeviceLong1
                                                   .u8_(0x19)                    // DeviceByte9
                                                   .u32_(0x1A1B1C1D)             // DeviceLong2
                                                   .u32_(0x21222324)             // DeviceLong3, first word
                                                   .u32_(0x31323334)             // DeviceLong3, second word
                                                   .raw(std::vector<u8>(74, 0))  // reserved, written as zeros
                                                   .v;

// Behind the settings: user level 0x0203 and the project name AB.
const std::vector<u8> kFilesTail = Bytes().u16_(0x0203).str("AB").v;

NodePtr ExeWithSettings() {
    NodePtr exe = MakeNode(kVemExeNode, "R");
    VemSetDeviceSettings(exe.get(), DistinctSettings());
    VemSetDatacontFilesUserLevel(exe.get(), 0x0203);
    VemSetDatacontFilesProjectName(exe.get(), "AB");
    return exe;
}

// The record of the executable node behind the resource's, with nothing in its tables.
std::vector<u8> EmptyTail(const std::vector<u8>& settings) {
    return Concat({Bytes().u16_(1).v, kEmptyTable, kEmptyTable,
                   Bytes()
                       .u16_(0)  // absolute offsets: none
                       .u16_(1)  // task definition segment: null tag
                       .u16_(0)  // data container: no files
                       .v,
                   settings, kFilesTail});
}

// A node loaded from a copy of the record in which the bytes at `at` are replaced.
NodePtr LoadPatched(std::vector<u8> record, std::size_t at, const std::vector<u8>& bytes) {
    std::copy(bytes.begin(), bytes.end(), record.begin() + static_cast<long>(at));
    NodePtr loaded = MakeNode(kVemExeNode);
    EXPECT_EQ(LoadRecord(loaded.get(), record), 0u);
    return loaded;
}

std::size_t SettingsOffset(const std::vector<u8>& record) {
    return record.size() - kFilesTail.size() - kDistinctSettingsBytes.size();
}

}  // namespace

// The settings take their 129 bytes; they load widened, without the reserved bytes.
TEST_F(ExeRecord, DeviceSettingsTakeTheir129BytesAndLoadWidened) {
    LurSetEvemEnabled(0);
    NodePtr exe = ExeWithSettings();
    VemAddChildTail(exe.get(), VemNewNode(kVemTaskContainerNode));  // its tasks sought without a file
    const std::vector<u8> record = StoreRecord(exe.get());
    ASSERT_EQ(kDistinctSettingsBytes.size(), 129u);
    const std::vector<u8> tail = EmptyTail(kDistinctSettingsBytes);
    ASSERT_GT(record.size(), tail.size());
    EXPECT_EQ(std::vector<u8>(record.end() - static_cast<long>(tail.size()), record.end()), tail);
    NodePtr loaded = MakeNode(kVemExeNode);
    EXPECT_EQ(LoadRecord(loaded.get(), record), 0u);
    const tVemDeviceSettings* s = VemGetDeviceSettings(loaded.get());
    EXPECT_EQ(s->ResourceGlobalSegTable, 2);
    EXPECT_EQ(s->OnlineEditor, 0xFFFF);
    EXPECT_EQ(s->DeviceLong3[1], 0x31323334u);
    EXPECT_EQ(s->IpType, 0x17);
    EXPECT_EQ(s->Alignment, 4);
    for (u8 b : s->ReservedBytes) ASSERT_EQ(b, 0);
    EXPECT_STREQ(VemGetDatacontFilesProjectName(loaded.get()), "AB");
    EXPECT_EQ(VemGetDatacontFilesUserLevel(loaded.get(), 0), 0x0203);
    EXPECT_EQ(StoreRecord(loaded.get()), record);
    VemSetMotorolaFormat(exe.get(), 65536);  // sixteen bits on disk, like ResourceGlobalSegTable
    EXPECT_EQ(VemGetMotorolaFormat(exe.get()), 65536);
    LoadRecord(loaded.get(), StoreRecord(exe.get()));
    EXPECT_EQ(VemGetMotorolaFormat(loaded.get()), 0);
}

// The marker and the reserved bytes are not looked at; an alignment of 0 is stored as it is.
TEST_F(ExeRecord, MarkerAndReservedBytesAreSkippedAndAlignmentZeroLoadsAsOne) {
    LurSetEvemEnabled(0);
    NodePtr exe = ExeWithSettings();
    const std::vector<u8> record = StoreRecord(exe.get());
    const std::size_t at = SettingsOffset(record);
    NodePtr marked = LoadPatched(record, at, {1, 2, 3, 4});
    NodePtr reserved = LoadPatched(record, at + 55, std::vector<u8>(74, 0x99));
    EXPECT_EQ(StoreRecord(marked.get()), record);
    EXPECT_EQ(StoreRecord(reserved.get()), record);
    for (u8 b : VemGetDeviceSettings(reserved.get())->ReservedBytes) ASSERT_EQ(b, 0);

    tVemDeviceSettings settings = *VemGetDeviceSettings(exe.get());
    settings.Alignment = 0;
    VemSetDeviceSettings(exe.get(), settings);
    const std::vector<u8> zero = StoreRecord(exe.get());
    EXPECT_EQ(VemGetDeviceSettings(exe.get())->Alignment, 0);
    EXPECT_EQ(zero[at + 36], 0);
    EXPECT_EQ(VemGetDeviceSettings(LoadPatched(zero, at, {}).get())->Alignment, 1);
}

// Version 0 held a download list and a byte buffer behind the tables and one more buffer behind
// the task definition segment.
TEST_F(ExeRecord, VersionZeroLoadsWithTheOldRowsDropped) {
    LurSetEvemEnabled(0);
    NodePtr exe = ExeWithSettings();
    const std::vector<u8> current = StoreRecord(exe.get());
    const std::vector<u8> tail = EmptyTail(kDistinctSettingsBytes);
    const std::vector<u8> resource(current.begin(), current.end() - static_cast<long>(tail.size()));
    const std::vector<u8> downloadList = Stored([](CArchive& ar) {
        CVemDownloadList list;
        list.Add(nullptr);
        list.Serialize(ar);
    });
    const std::vector<u8> buffer = Stored([](CArchive& ar) {
        CVemByteArray* array = VemBaNewByteArray(1, 1, 1, 0);
        VemBaAppendWord(array, 0xBEEF);
        VemBaSerialize(array, ar);
        VemBaDeleteByteArray(array);
    });
    const std::vector<u8> old =
        Concat({resource, Bytes().u16_(0).v, kEmptyTable, kEmptyTable, downloadList, buffer, Bytes().u16_(0).u16_(1).v,
                buffer, Bytes().u16_(0).v, kDistinctSettingsBytes, kFilesTail});
    NodePtr loaded = MakeNode(kVemExeNode);
    EXPECT_EQ(LoadRecord(loaded.get(), old), 0u);
    EXPECT_EQ(VemGetTaskDefSegment(loaded.get()), nullptr);
    EXPECT_EQ(VemGetDeviceSettings(loaded.get())->IpType, 0x17);
    EXPECT_STREQ(VemGetDatacontFilesProjectName(loaded.get()), "AB");
    EXPECT_EQ(StoreRecord(loaded.get()), current);
}
