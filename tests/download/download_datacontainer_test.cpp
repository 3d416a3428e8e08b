// Data container: file records by key, directories, the stored form and what a loaded one answers.
#include <algorithm>
#include <filesystem>

#include "download/datacontainer.h"
#include "memory_test_util.h"

using memtest::Load;
using memtest::Stored;
using vemtest::Bytes;
using vemtest::MessageCapture;
using vemtest::TempDir;

namespace {

// The host's temporary directory written with backslashes, as callers name files.
std::string WindowsForm(std::string path) {
    for (char& c : path) {
        if (c == '/') c = '\\';
    }
    return path;
}

std::vector<std::string> Keys(CVemDataContainer& container) {
    CStringList list;
    EXPECT_EQ(container.GetFileList(&list), 1);
    std::vector<std::string> keys;
    for (POSITION pos = list.GetHeadPosition(); pos;) keys.push_back(list.GetNext(pos).str());
    return keys;
}

// The record of a new object of a new class CVemDataObject, with empty contents.
Bytes& DataObjectRecord(Bytes& b, u32 type, const std::string& name, u32 checkSum) {
    b.newClass(5, "CVemDataObject");
    b.u32_(type);
    b.str(name);
    b.u16_(1).u16_(0).u8_(0).u8_(1);  // contents: version 1, no bytes, little-endian, ByteSize 1
    b.u32_(checkSum);
    return b;
}

}  // namespace

TEST(DataContainer, AddFileOfAMissingFileShowsTheMessageAndAddsNothing) {
    TempDir dir;
    MessageCapture messages;
    CVemDataContainer container;
    const std::string path = WindowsForm(dir.path()) + "\\none.bin";
    EXPECT_EQ(container.AddFile(path.c_str(), "K", 3), 0);
    ASSERT_EQ(messages.texts().size(), 1u);
    EXPECT_EQ(messages.texts()[0], "Can not find the File:\r\n" + path);
    EXPECT_TRUE(Keys(container).empty());
    EXPECT_EQ(container.GetType("K"), 0u);
}

TEST(DataContainer, RecordsAreNamedAfterTheLastPartOfThePath) {
    TempDir dir;
    vemtest::WriteFileText(dir.file("a.txt"), "a");
    CVemDataContainer container;
    // Backslashes reach the host file through the one path rule; the name is behind the last one.
    EXPECT_EQ(container.AddFile((WindowsForm(dir.path()) + "\\a.txt").c_str(), "first", 7), 1);
    // A path without a backslash is the name as a whole (also where the temporary directory has some).
    std::string slashed = dir.file("a.txt");
    std::replace(slashed.begin(), slashed.end(), '\\', '/');
    EXPECT_EQ(container.AddFile(slashed.c_str(), "second", 8), 1);
    EXPECT_EQ(Keys(container), (std::vector<std::string>{"first", "second"}));
    auto* first = static_cast<CVemDataObject*>(container["first"]);
    auto* second = static_cast<CVemDataObject*>(container["second"]);
    EXPECT_EQ(first->Name, "a.txt");
    EXPECT_EQ(second->Name, slashed.c_str());
    EXPECT_EQ(container.GetType("first"), 7u);
    EXPECT_EQ(container.GetType("second"), 8u);
    EXPECT_EQ(first->Contents.GetLength(), 0u);
    EXPECT_EQ(container.GetCheckSum("first"), 0u);

    // A second record under a key replaces the first, which does not outlive it.
    EXPECT_EQ(container.AddFile(dir.file("a.txt").c_str(), "first", 9), 1);
    EXPECT_EQ(container.GetType("first"), 9u);
    EXPECT_EQ(Keys(container), (std::vector<std::string>{"first", "second"}));
}

TEST(DataContainer, WriteToFileMakesTheDirectoriesOfTheTargetOnly) {
    TempDir dir;
    vemtest::WriteFileText(dir.file("a.txt"), "a");
    CVemDataContainer container;
    ASSERT_EQ(container.AddFile(dir.file("a.txt").c_str(), "sub\\deep\\f.bin", 1), 1);
    const std::filesystem::path before = std::filesystem::current_path();
    const std::string target = WindowsForm(dir.path()) + "\\out\\";
    EXPECT_EQ(container.WriteToFile("sub\\deep\\f.bin", target.c_str()), 1);
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("out/sub/deep")));
    EXPECT_FALSE(vemtest::FileExists(dir.file("out/sub/deep/f.bin")));
    EXPECT_EQ(std::filesystem::current_path(), before);

    // An unknown key still gets its directories, and the result says that the key is unknown.
    EXPECT_EQ(container.WriteToFile("x/y\\z.bin", (WindowsForm(dir.path()) + "\\out2\\").c_str()), 0);
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("out2/x/y")));

    // A level that is a file is passed over; the next one is made beside it.
    vemtest::WriteFileText(dir.file("plain"), "");
    EXPECT_EQ(container.WriteToFile("plain\\next\\f", (dir.path() + "/").c_str()), 0);
    EXPECT_TRUE(std::filesystem::is_directory(dir.file("next")));
}

TEST(DataContainer, StoreAndLoadKeepKeysTypesNamesAndCheckSums) {
    TempDir dir;
    vemtest::WriteFileText(dir.file("a.txt"), "a");
    vemtest::WriteFileText(dir.file("b.txt"), "b");
    CVemDataContainer container;
    ASSERT_EQ(container.AddFile((WindowsForm(dir.path()) + "\\a.txt").c_str(), "A", 1), 1);
    ASSERT_EQ(container.AddFile((WindowsForm(dir.path()) + "\\b.txt").c_str(), "B", 0x11223344), 1);
    container.SetCheckSum("B", 0xA1B2C3D4);
    const std::vector<u8> bytes = Stored(container);
    // A map of objects: the count, then each key and its record; the second names the class by number.
    Bytes want;
    DataObjectRecord(want.u16_(2).str("A"), 1, "a.txt", 0).str("B").u16_(0x8001).u32_(0x11223344).str("b.txt");
    want.u16_(1).u16_(0).u8_(0).u8_(1).u32_(0xA1B2C3D4);  // contents as in the first record, CheckSum
    EXPECT_EQ(bytes, want.v);

    CVemDataContainer loaded;
    Load(loaded, bytes);
    EXPECT_EQ(Keys(loaded), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(loaded.GetType("A"), 1u);
    EXPECT_EQ(loaded.GetType("B"), 0x11223344u);
    EXPECT_EQ(loaded.GetCheckSum("B"), 0xA1B2C3D4u);
    EXPECT_EQ(static_cast<CVemDataObject*>(loaded["A"])->Name, "a.txt");
    EXPECT_EQ(Stored(loaded), bytes);
    // Keys keep their case; a missing key answers 0 and an empty array. The contents of a file
    // record are not kept: its array stays empty, and appending it adds nothing.
    EXPECT_EQ(loaded.SetCheckSum("b", 5), 0);
    EXPECT_EQ(loaded.GetCheckSum("b"), 0u);
    EXPECT_EQ(loaded.GetType("missing"), 0u);
    CVemByteArray array(2, 1);
    array.AppendByte(0x55);
    EXPECT_EQ(loaded.WriteToByteArray("A", &array), 1);
    EXPECT_EQ(loaded.WriteToByteArray("missing", &array), 0);
    EXPECT_EQ(array.GetLength(), 1u);
    for (const char* key : {"A", "missing"}) {
        const CVemByteArray contents = loaded.GetContents(key);
        EXPECT_EQ(contents.GetLength(), 0u);
        EXPECT_EQ(contents.GetAlignment(), 1);
        EXPECT_EQ(contents.GetByteSize(), 1);
    }
}

TEST(DataContainer, ADamagedStoredFormFailsWithoutLeaks) {
    // The second record refers back to the first object: one object for two keys.
    Bytes shared;
    shared.u16_(2).str("A");
    DataObjectRecord(shared, 1, "a", 0);
    shared.str("B").u16_(2);  // object number 2: the first record (number 1 is its class)
    // A record of a class that is no file record.
    Bytes other;
    other.u16_(1).str("A").newClass(0, "CStringList");
    other.u16_(0);
    // A count that the file cannot hold.
    Bytes huge;
    huge.u16_(0xFFFF).u32_(0x10000000);
    Bytes good;
    good.u16_(1).str("A");
    DataObjectRecord(good, 1, "a", 0);

    memtest::ExpectDamagedLoadsFail<CVemDataContainer>({shared.v, other.v, huge.v}, good.v);
}
