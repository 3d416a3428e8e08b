// The library's pictures: an icon and a bitmap under every number that the tree view names, the
// bitmap functions, and the fallback of VemLoadBitmap.
#include "treeview_test_util.h"

using vemtest::ShownNode;

namespace {

const unsigned kIconNumbers[] = {102, 113, 115, 116, 117, 118, 119, 121, 122, 123,
                                 124, 125, 129, 130, 132, 133, 134, 135, 137, 138};
const unsigned kBitmapNumbers[] = {111, 112, 113, 114, 115, 116, 125, 126, 127,
                                   128, 133, 149, 150, 152, 153, 156, 157, 158};

const CVemResourceModule& Library() { return *static_cast<const CVemResourceModule*>(GetResourceHandleVemDll()); }

bool SamePixels(const CBitmap& a, const CBitmap& b) {
    if (a.Width() != b.Width() || a.Height() != b.Height()) return false;
    for (int y = 0; y < a.Height(); ++y) {
        for (int x = 0; x < a.Width(); ++x) {
            if (a.GetPixel(x, y) != b.GetPixel(x, y)) return false;
        }
    }
    return true;
}

// A host's own module with a bitmap under one of the library's numbers: 4 x 4, all red.
class HostModule : public CVemResourceModule {
public:
    bool FindPicture(VemResourceKind kind, unsigned id, CSize* size) const override {
        if (kind != VemResourceKind::Bitmap || id != 156) return false;
        *size = CSize(4, 4);
        return true;
    }
    COLORREF GetPixel(VemResourceKind, unsigned, int, int) const override { return 0x0000FF; }
};

// A node whose class names no bitmap.
class NoBitmapNode : public CVemBaseNode {
public:
    NoBitmapNode() : CVemBaseNode(kVemBaseNode, "n", 1) {}
    unsigned GetBitmapID() override { return 0; }
};

}  // namespace

TEST(TreeViewPictures, EveryIconNumberHasADrawingOf32By32) {
    for (unsigned id : kIconNumbers) {
        CSize size;
        ASSERT_TRUE(Library().FindPicture(VemResourceKind::Icon, id, &size)) << id;
        EXPECT_EQ(size.cx, 32);
        EXPECT_EQ(size.cy, 32);
        int drawn = 0;
        for (int y = 0; y < 32; ++y) {
            for (int x = 0; x < 32; ++x) drawn += Library().GetPixel(VemResourceKind::Icon, id, x, y) != kVemNoColor;
        }
        EXPECT_GT(drawn, 10) << id;
        EXPECT_LT(drawn, 32 * 32) << id;  // transparent around the drawing
        EXPECT_EQ(Library().GetPixel(VemResourceKind::Icon, id, 32, 0), kVemNoColor);
    }
}

TEST(TreeViewPictures, EveryBitmapNumberLoads) {
    for (unsigned id : kBitmapNumbers) {
        CBitmap bitmap;
        ASSERT_EQ(VemDllLoadBitmapID(&bitmap, id), 1) << id;
        EXPECT_TRUE(bitmap.IsAttached());
        EXPECT_EQ(bitmap.GetResourceId(), id);
        EXPECT_EQ(bitmap.Width(), 16);
        EXPECT_EQ(bitmap.Height(), 16);
        int drawn = 0;
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 16; ++x) {
                const COLORREF pixel = bitmap.GetPixel(x, y);
                EXPECT_NE(pixel, kVemNoColor);  // a bitmap has a ground
                drawn += pixel != 0xFFFFFF;
            }
        }
        EXPECT_GT(drawn, 10) << id;
        EXPECT_EQ(bitmap.GetPixel(-1, 0), kVemNoColor);
    }
}

TEST(TreeViewPictures, UnknownNumbersDoNotLoadAndKeepWhatWasAttached) {
    CBitmap bitmap;
    for (unsigned id : {0u, 100u, 117u, 151u, 159u}) EXPECT_EQ(VemDllLoadBitmapID(&bitmap, id), 0) << id;
    EXPECT_FALSE(bitmap.IsAttached());
    EXPECT_EQ(bitmap.Width(), 0);
    EXPECT_EQ(bitmap.GetPixel(0, 0), kVemNoColor);
    ASSERT_EQ(VemDllLoadBitmapID(&bitmap, 126), 1);
    EXPECT_EQ(VemDllLoadBitmapID(&bitmap, 999), 0);
    EXPECT_EQ(bitmap.GetResourceId(), 126u);
}

TEST(TreeViewPictures, TheThreeItemsAreDistinctPictures) {
    CBitmap expand, expanded, leaf;
    ASSERT_EQ(VemDllLoadBitmapItemExpand(&expand), 1);
    ASSERT_EQ(VemDllLoadBitmapItemExpanded(&expanded), 1);
    ASSERT_EQ(VemDllLoadBitmapItemLeaf(&leaf), 1);
    EXPECT_EQ(expand.GetResourceId(), 156u);
    EXPECT_EQ(expanded.GetResourceId(), 157u);
    EXPECT_EQ(leaf.GetResourceId(), 158u);
    EXPECT_FALSE(SamePixels(expand, expanded));
    EXPECT_FALSE(SamePixels(expand, leaf));
    EXPECT_FALSE(SamePixels(expanded, leaf));
}

TEST(TreeViewPictures, LoadBitmapTakesTheNodesNumberAndFallsBackToTheLeaf) {
    CVemBaseNode base(kVemBaseNode, "b", 1);
    CBitmap bitmap;
    ASSERT_EQ(VemLoadBitmap(&base, &bitmap), 1);
    EXPECT_EQ(bitmap.GetResourceId(), 149u);

    NoBitmapNode none;
    ASSERT_EQ(VemGetBitmapID(&none), 0u);
    ASSERT_EQ(VemLoadBitmap(&none, &bitmap), 1);
    EXPECT_EQ(bitmap.GetResourceId(), 158u);
    CBitmap leaf;
    VemDllLoadBitmapItemLeaf(&leaf);
    EXPECT_TRUE(SamePixels(bitmap, leaf));

    ShownNode unknown(kVemBaseNode, "u", 117, 999);
    CBitmap fresh;
    EXPECT_EQ(VemLoadBitmap(&unknown, &fresh), 0);
    EXPECT_FALSE(fresh.IsAttached());
}

// A host's module in the chain stands behind the library's, which entered first; once removed,
// it is found no more, not even as the current source.
TEST(TreeViewPictures, HostModulesJoinAndLeaveTheChain) {
    HostModule host;
    VemAddResourceModule(&host);
    struct Leave {
        const CVemResourceModule* module;
        ~Leave() { VemRemoveResourceModule(module); }
    } leave{&host};
    CBitmap bitmap;
    ASSERT_TRUE(bitmap.LoadBitmap(156));
    EXPECT_EQ(bitmap.Width(), 16);
    VemSetResourceModule(&host);
    EXPECT_EQ(VemFindResourceModule(VemResourceKind::Bitmap, 156), &host);
    EXPECT_EQ(VemFindResourceModule(VemResourceKind::Bitmap, 158), &Library());  // the chain after it
    VemRemoveResourceModule(&host);
    EXPECT_EQ(VemGetResourceModule(), nullptr);
    EXPECT_EQ(VemFindResourceModule(VemResourceKind::Bitmap, 156), &Library());
}
