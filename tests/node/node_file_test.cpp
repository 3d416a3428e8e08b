// Node files: the frame, the base record, load failures.
#include <filesystem>
#include "node/basenode.h"
#include "node/nodefile.h"

#include "alloc_hook.h"
#include "memory_test_util.h"

using vemtest::Bytes;
using vemtest::MessageCapture;
using vemtest::ReadFileBytes;
using vemtest::TempDir;
using vemtest::WriteFileBytes;

namespace {

// Root of type 1 named R, expanded, no children: the first 40 bytes of the frame.
std::vector<u8> EmptyRootFile() {
    Bytes b;
    b.u16_(1);  // node type word of the root
    for (char c : std::string("Norvadis_VEM_Version:003")) b.u8_(static_cast<u8>(c));
    b.u8_(0);    // end of the stamp
    b.u16_(0);   // schema word of the base record
    b.u8_(1);    // node type
    b.u8_(1);    // expanded
    b.str("R");  // name
    b.u32_(0);   // serial
    b.u8_(0);    // extra text, empty
    b.u16_(0);   // child count
    return b.v;
}

CVemBaseNode* NewRoot(const char* name) {
    CVemBaseNode* root = VemNewNode(kVemBaseNode);
    VemSetName(root, name);
    return root;
}

}  // namespace

TEST(NodeFile, EmptyRootWritesTheFrameByteForByte) {
    TempDir dir;
    CVemBaseNode* root = NewRoot("R");
    ASSERT_EQ(VemWriteNode(root, dir.file("r.vem").c_str()), 1);
    EXPECT_EQ(ReadFileBytes(dir.file("r.vem")), EmptyRootFile());
    VemDeleteNode(root);
    EXPECT_EQ(root, nullptr);

    CVemBaseNode* loaded = VemLoadNode(dir.file("r.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->Serial, 0u);
    EXPECT_EQ(VemGetParentNode(loaded), nullptr);
    EXPECT_EQ(VemGetName(loaded), "R");
    EXPECT_EQ(VemGetNodeType(loaded), kVemBaseNode);
    VemDeleteNode(loaded);
}

namespace {

std::vector<u8> TreeFile(const TempDir& dir) {
    CVemBaseNode* root = NewRoot("Root");
    CVemBaseNode* a = new CVemBaseNode(kVemBaseNode, "A", 0);
    a->ExtraText = "a's extra";
    CVemBaseNode* b = new CVemBaseNode(kVemBaseNode, "B", 1);
    root->AddChildTail(a);
    root->AddChildTail(b);
    a->AddChildTail(new CVemBaseNode(kVemBaseNode, std::string(300, 'n'), 0));
    EXPECT_EQ(VemWriteNode(root, dir.file("tree.vem").c_str()), 1);
    VemDeleteNode(root);
    return ReadFileBytes(dir.file("tree.vem"));
}

// Loads bytes from a file; checks that nothing is left allocated when the load fails.
CVemBaseNode* LoadBytes(const TempDir& dir, const std::vector<u8>& bytes) {
    WriteFileBytes(dir.file("in.vem"), bytes);
    return VemLoadNode(dir.file("in.vem").c_str());
}

}  // namespace

TEST(NodeFile, ChildWrittenAloneIsARootOfItsOwn) {
    TempDir dir;
    CVemBaseNode* root = NewRoot("Root");
    CVemBaseNode* child = new CVemBaseNode(kVemBaseNode, "child", 1);
    root->AddChildTail(child);
    ASSERT_EQ(VemWriteNode(child, dir.file("child.vem").c_str()), 1);
    CVemBaseNode* loaded = VemLoadNodeEx(kVemExeNode, dir.file("child.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(VemGetParentNode(loaded), nullptr);
    EXPECT_EQ(VemGetName(loaded), "child");
    VemDeleteNode(loaded);
    VemDeleteNode(root);
}

TEST(NodeFile, BrokenFilesGiveNullWithoutMessageOrLeak) {
    TempDir dir;
    const std::vector<u8> good = TreeFile(dir);
    MessageCapture messages;

    const auto patched = [&good](std::size_t at, u8 value) {
        std::vector<u8> bytes = good;
        bytes[at] = value;
        return bytes;
    };
    const std::vector<std::vector<u8>> broken = {
        {},                                                // empty
        std::vector<u8>(good.begin(), good.begin() + 10),  // stamp cut short
        patched(2 + 23, '4'),                              // last stamp digit
        patched(2 + 24, 'x'),                              // 25th byte not zero
        patched(27, 1),                                    // schema word one too high
        patched(0, 7),                                     // a type without a class
        patched(27 + 2 + 1 + 1 + 5 + 4 + 1 + 2, 0),        // first child's type byte
    };
    for (std::size_t i = 0; i < broken.size(); ++i) {
        vemtest::AllocationWatch watch;
        EXPECT_EQ(LoadBytes(dir, broken[i]), nullptr) << i;
        EXPECT_EQ(watch.Live(), 0) << i;
    }
    for (std::size_t cut = 0; cut < good.size(); ++cut) {
        vemtest::AllocationWatch watch;
        EXPECT_EQ(LoadBytes(dir, std::vector<u8>(good.begin(), good.begin() + static_cast<long>(cut))), nullptr) << cut;
        EXPECT_EQ(watch.Live(), 0) << cut;
    }
    EXPECT_EQ(VemLoadNode(dir.file("does-not-exist.vem").c_str()), nullptr);
    EXPECT_TRUE(messages.texts().empty());
}

TEST(NodeFile, ObjectFormInACallersArchive) {
    CVemBaseNode* root = NewRoot("R");
    root->AddChildTail(new CVemBaseNode(kVemBaseNode, "kid", 1));
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ASSERT_EQ(VemWriteObject(root, ar), 1);
        VemSerialize(root, ar);
        ar.Close();
    }
    const std::vector<u8>& bytes = file.Data();
    Bytes head;
    head.u16_(0xFFFF).u16_(5).u16_(12);
    for (char c : std::string("CVemBaseNode")) head.u8_(static_cast<u8>(c));
    EXPECT_EQ(std::vector<u8>(bytes.begin(), bytes.begin() + static_cast<long>(head.v.size())), head.v);
    // The stamp stands behind the record in the serialized form.
    EXPECT_EQ(std::string(bytes.end() - 25, bytes.end() - 1), "Norvadis_VEM_Version:003");

    CMemFile input(bytes);
    CArchive ar(&input, CArchive::load);
    CVemBaseNode* read = VemReadObject(ar);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(VemGetName(read), "R");
    CVemBaseNode plain;
    VemSerialize(&plain, ar);
    EXPECT_EQ(VemGetName(&plain), "R");
    EXPECT_EQ(VemGetChildList(&plain)->GetCount(), 1);
    EXPECT_EQ(VemReadObject(ar), nullptr);  // end of the file
    VemDeleteNode(read);
    VemDeleteNode(root);
}

TEST(NodeFile, WriteGoesThroughALinkAndKeepsThePermissions) {
#ifdef _WIN32
    GTEST_SKIP() << "symbolic links on Windows need a privilege that a test cannot assume, and "
                    "files there have no POSIX permissions";
#else
    namespace fs = std::filesystem;
    TempDir dir;
    const std::string real = dir.file("real.vem");
    const std::string link = dir.file("link.vem");
    CVemBaseNode* root = NewRoot("Old");
    ASSERT_EQ(VemWriteNode(root, real.c_str()), 1);
    fs::permissions(real, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    fs::create_symlink(real, link);
    VemSetName(root, "New");
    ASSERT_EQ(VemWriteNode(root, link.c_str()), 1);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(fs::status(real).permissions(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    CVemBaseNode* loaded = VemLoadNode(real.c_str());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(VemGetName(loaded), "New");
    VemDeleteNode(loaded);
    VemDeleteNode(root);
#endif
}

TEST(NodeFile, DumpToAPlaceThatCannotBeAFileGivesZero) {
    TempDir dir;
    CVemBaseNode* root = NewRoot("R");
    EXPECT_EQ(CVemNodeDump(root, CString(dir.path().c_str())), 0);  // a directory stands there
    EXPECT_EQ(CVemNodeDump(root, CString(dir.file("no/such/dir/d.txt").c_str())), 0);
    EXPECT_EQ(CVemNodeDump(root, CString(dir.file("d.txt").c_str())), 1);
    VemDeleteNode(root);
}
