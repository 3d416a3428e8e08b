// Node files: the frame, the base record, load failures.
#include "node/basenode.h"
#include "node/nodefile.h"
#include "test_util.h"

using vemtest::Bytes;
using vemtest::MessageCapture;
using vemtest::ReadFileBytes;
using vemtest::TempDir;
using vemtest::WriteFileBytes;

namespace {

// Root of type 1 named R, expanded, no children: the first 40 bytes of the frame.
std::vector<u8> EmptyRootFile() {
    Bytes b;
    b.u16_(1);                                          // node type word of the root
    for (char c : std::string("Norvadis_VEM_Version:003")) b.u8_(static_cast<u8>(c));
    b.u8_(0);                                           // end of the stamp
    b.u16_(0);                                          // schema word of the base record
    b.u8_(1);                                           // node type
    b.u8_(1);                                           // expanded
    b.str("R");                                         // name
    b.u32_(0);                                          // serial
    b.u8_(0);                                           // extra text, empty
    b.u16_(0);                                          // child count
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
