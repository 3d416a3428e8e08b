// Compiled task: its record, old records, the code nodes that hang on the switch.

#include "alloc_hook.h"
#include "compiled_test_util.h"

using compiledtest::Concat;
using compiledtest::LoadRecord;
using compiledtest::MakeNode;
using compiledtest::NodePtr;
using compiledtest::StoreRecord;
using compiledtest::Stored;
using vemtest::Bytes;

namespace {

using TuiTaskRecord = compiledtest::SettingsTest;

// The record behind the program's, for a task with no segments, no entry, no files and the
// offsets 0, 0, 100, with the switch off.
const std::vector<u8> kTail = Bytes()
                                  .u16_(1)  // schema word
                                  .raw(compiledtest::kEmptyTable)
                                  .u16_(1)  // task definition entry: null tag
                                  .u16_(0)  // data container: no files
                                  .u16_(3)  // absolute offsets: three words
                                  .u32_(0)
                                  .u32_(0)
                                  .u32_(100)
                                  .v;

NodePtr SmallTask() {
    NodePtr task = MakeNode(kVemTuiTaskNode, "TASK1");
    VemAddNewSegmentLength(task.get(), 100);
    return task;
}

}  // namespace

// With the switch on, the count of code nodes follows.
TEST_F(TuiTaskRecord, TailBehindTheProgramRecord) {
    NodePtr task = SmallTask();
    const std::vector<u8> on = StoreRecord(task.get());
    LurSetEvemEnabled(0);
    const std::vector<u8> record = StoreRecord(task.get());
    ASSERT_GT(record.size(), kTail.size());
    EXPECT_EQ(std::vector<u8>(record.end() - kTail.size(), record.end()), kTail);
    EXPECT_EQ(on, Concat({record, {0, 0}}));
}

// Written with the switch on and read with it off, the code nodes stay unread behind the record;
// written with it off and read with it on, the load fails and leaves nothing.
TEST_F(TuiTaskRecord, TheSwitchWhenWrittenAndWhenRead) {
    vemtest::TempDir dir;
    NodePtr task(compiledtest::FullTask(dir));
    const std::vector<u8> on = StoreRecord(task.get());
    LurSetEvemEnabled(0);
    const std::vector<u8> off =
        StoreRecord(NodePtr(compiledtest::FullTask(dir)).get());  // made with the switch off as well
    EXPECT_EQ(StoreRecord(task.get()), off);
    NodePtr loaded = MakeNode(kVemTuiTaskNode);
    EXPECT_EQ(LoadRecord(loaded.get(), on), on.size() - off.size());
    EXPECT_TRUE(VemGetEvemRootNodeListPtr(loaded.get())->IsEmpty());
    LurSetEvemEnabled(1);
    vemtest::AllocationWatch watch;
    {
        NodePtr again = MakeNode(kVemTuiTaskNode);
        EXPECT_THROW(LoadRecord(again.get(), off), CArchiveException);
    }
    EXPECT_EQ(watch.Live(), 0);
}

// Version 0 held a download list behind the table and a byte buffer behind the offsets.
TEST_F(TuiTaskRecord, VersionZeroLoadsWithTheOldRowsDropped) {
    LurSetEvemEnabled(0);
    NodePtr task = SmallTask();
    const std::vector<u8> current = StoreRecord(task.get());
    const std::vector<u8> program(current.begin(), current.end() - kTail.size());
    const std::vector<u8> table(kTail.begin() + 2, kTail.begin() + 19);
    const std::vector<u8> downloadList = Stored([](CArchive& ar) {
        CVemDownloadList list;
        list.Add(nullptr);
        auto* entry = new CVemDownloadListEntry;
        entry->Name = "UNIT";
        list.Add(entry);
        list.Serialize(ar);
    });
    const auto storedArray = [](u32 value, bool dword) {
        return Stored([&](CArchive& ar) {
            CVemByteArray* array = VemBaNewByteArray(0, 1, 1, 0);
            dword ? VemBaAppendDword(array, value) : VemBaAppendByte(array, static_cast<u8>(value));
            VemBaSerialize(array, ar);
            VemBaDeleteByteArray(array);
        });
    };
    const std::vector<u8> buffer = storedArray(0xDEADBEEF, true);
    const std::vector<u8> entry = storedArray(0x5A, false);
    const std::vector<u8> old = Concat({program, Bytes().u16_(0).v, table, downloadList, entry, Bytes().u16_(0).v,
                                        Bytes().u16_(2).u32_(0).u32_(0).v, buffer});
    NodePtr loaded = MakeNode(kVemTuiTaskNode);
    EXPECT_EQ(LoadRecord(loaded.get(), old), 0u);
    ASSERT_NE(VemGetTaskDefEntry(loaded.get()), nullptr);
    EXPECT_EQ(VemBaGetLength(VemGetTaskDefEntry(loaded.get())), 1u);
    EXPECT_EQ(VemGetAbsOffset(loaded.get(), 1), 0u);
    EXPECT_THROW(VemGetAbsOffset(loaded.get(), 2), CInvalidArgException);
    // Stored again it is a record of the current version.
    EXPECT_EQ(StoreRecord(loaded.get())[program.size()], 1);
}
