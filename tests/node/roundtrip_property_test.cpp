// Round trip of random trees: nodes of every class with random fields, segment tables, files in the
// data container and chains of statements of every kind are written, loaded and written again. The
// two files are the same bytes, and the loaded tree dumps as the first one did.
//
// The seed is fixed, so a failure repeats; VEM_PROPERTY_SEED=<number> runs another seed, and
// VEM_PROPERTY_SEED=random a fresh one, which a failure reports.
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "random_tree.h"
#include "test_util.h"
#include "vem_settings.h"

using vemtest::Random;
using vemtest::RandomTree;
using vemtest::ReadFileBytes;
using vemtest::TempDir;

namespace {

constexpr unsigned kDefaultSeed = 20261123;
constexpr int kTrees = 40;

unsigned PropertySeed() {
    const char* text = std::getenv("VEM_PROPERTY_SEED");
    if (!text || !*text) return kDefaultSeed;
    if (std::string(text) == "random") return std::random_device{}();
    return static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

std::string Dump(CVemBaseNode* node) {
    CMemFile file;
    CVemNodeDump(node, &file);
    const std::vector<u8>& bytes = file.Data();
    return std::string(bytes.begin(), bytes.end());
}

}  // namespace

TEST(RoundTripProperty, RandomTreesOfEveryClassWriteLoadAndWriteAgainTheSame) {
    LurResetSettings();  // with the statement model
    const unsigned seed = PropertySeed();
    SCOPED_TRACE("VEM_PROPERTY_SEED=" + std::to_string(seed));
    Random r(seed);
    TempDir dir;
    for (int i = 0; i < kTrees; ++i) {
        SCOPED_TRACE(i);
        CVemBaseNode* tree = RandomTree(r, dir.path());
        const std::string first = dir.file("first.vem"), second = dir.file("second.vem");
        ASSERT_EQ(VemWriteNode(tree, first.c_str()), 1);
        CVemBaseNode* loaded = VemLoadNode(first.c_str());
        ASSERT_NE(loaded, nullptr);
        ASSERT_EQ(VemWriteNode(loaded, second.c_str()), 1);
        EXPECT_EQ(ReadFileBytes(first), ReadFileBytes(second));
        EXPECT_EQ(Dump(loaded), Dump(tree));
        VemDeleteNode(loaded);
        VemDeleteNode(tree);
        if (HasFailure()) break;
    }
}
