// Node files: the frame, the base record, the object form, writes through links, dumps.
#include <filesystem>
#include "node/basenode.h"
#include "node/nodefile.h"

#include "memory_test_util.h"

using vemtest::Bytes;
using vemtest::ReadFileBytes;
using vemtest::TempDir;

namespace {

// Root of type 1 named R, expanded, no children: the first 40 bytes of the frame.
std::vector<u8> EmptyRootFile() {
    Bytes b = vemtest::Frame(1);  // node type word of the root, the stamp and its end
    b.u16_(0);                    // schema word of the base record
    b.u8_(1);                     // node type
    b.u8_(1);                     // expanded
    b.str("R");                   // name
    b.u32_(0);                    // serial
    b.u8_(0);                     // extra text, empty
    b.u16_(0);                    // child count
    return b.v;
}

}  // namespace

TEST(NodeFile, EmptyRootWritesTheFrameByteForByte) {
    TempDir dir;
    CVemBaseNode* root = vemtest::NewNode(kVemBaseNode, "R");
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

TEST(NodeFile, ChildWrittenAloneIsARootOfItsOwn) {
    TempDir dir;
    CVemBaseNode* root = vemtest::NewNode(kVemBaseNode, "Root");
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

TEST(NodeFile, ObjectFormInACallersArchive) {
    CVemBaseNode* root = vemtest::NewNode(kVemBaseNode, "R");
    root->AddChildTail(new CVemBaseNode(kVemBaseNode, "kid", 1));
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        ASSERT_EQ(VemWriteObject(root, ar), 1);
        VemSerialize(root, ar);
        ar.Close();
    }
    const std::vector<u8>& bytes = file.Data();
    // The object's head is that of every class (NodeClasses); the stamp stands behind the record in
    // the serialized form.
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
    CVemBaseNode* root = vemtest::NewNode(kVemBaseNode, "Old");
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
    CVemBaseNode* root = vemtest::NewNode(kVemBaseNode, "R");
    EXPECT_EQ(CVemNodeDump(root, CString(dir.path().c_str())), 0);  // a directory stands there
    EXPECT_EQ(CVemNodeDump(root, CString(dir.file("no/such/dir/d.txt").c_str())), 0);
    EXPECT_EQ(CVemNodeDump(root, CString(dir.file("d.txt").c_str())), 1);
    VemDeleteNode(root);
}
