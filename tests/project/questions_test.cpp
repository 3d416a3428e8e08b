// The questions after a load stay bounded on trees whose references lead in circles or far; the
// path map never holds a node that has gone; a write refuses a count wider than its field on disk.
#include <functional>
#include <set>

#include "alloc_hook.h"
#include "questions.h"
#include "test_util.h"
#include "units/statlist.h"
#include "vem_settings.h"

using vemtest::ReadFileBytes;
using vemtest::TempDir;

namespace {

constexpr long kMemoryBound = 50L << 20;

std::set<std::string> Keys(CVemBaseNode* task) {
    std::set<std::string> keys;
    CString key;
    CObject* node = nullptr;
    CMapStringToOb* map = VemGetNodePath2NodeList(task);
    for (POSITION pos = map->GetStartPosition(); pos;) {
        map->GetNextAssoc(pos, key, node);
        keys.insert(key.str());
    }
    return keys;
}

// Written and loaded again, so that the tree is one that a load gives.
CVemBaseNode* ThroughFile(const TempDir& dir, CVemBaseNode* built, const char* name) {
    const std::string path = dir.file(name);
    EXPECT_EQ(VemWriteNode(built, path.c_str()), 1);
    VemDeleteNode(built);
    CVemBaseNode* loaded = VemLoadNode(path.c_str());
    EXPECT_NE(loaded, nullptr);
    return loaded;
}

}  // namespace

// A reference that leads back into its own path is followed once: the block reached again gets its
// key, and nothing below it does.
TEST(Questions, ReferencesInACircleEndTheWalk) {
    TempDir dir;
    struct Case {
        const char* name;
        CVemBaseNode* (*build)();
        std::set<std::string> keys;
    };
    const Case cases[] = {
        {"self", &vemquestions::BuildSelfReferringTask, {"TASK.I ", "TASK.I.I "}},
        {"mutual",
         &vemquestions::BuildMutualTask,
         {"TASK.A ", "TASK.A.B ", "TASK.A.B.A ", "TASK.B ", "TASK.B.A ", "TASK.B.A.B "}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        CVemBaseNode* task = ThroughFile(dir, c.build(), "cycle.vem");
        ASSERT_NE(task, nullptr);
        VemCreateChildNodePathList(task);
        EXPECT_EQ(Keys(task), c.keys);
        VemDeleteNode(task);
        // The file of the self-referring task, as it stands among the seeds of the fuzz harness.
        if (c.keys.size() == 2) {
            EXPECT_EQ(ReadFileBytes(dir.file("cycle.vem")).size(), 205u);
        }
    }
}

// Every question, on each of the three trees, within bounded memory; the chain's map stops at its
// bound instead of holding every path of ten thousand references.
TEST(Questions, EveryQuestionOnCircularAndDeepTreesStaysBounded) {
    TempDir dir;
    const std::function<CVemBaseNode*()> builds[] = {&vemquestions::BuildSelfReferringTask,
                                                     &vemquestions::BuildMutualTask,
                                                     [] { return vemquestions::BuildChainTask(10000); }};
    for (const auto& build : builds) {
        CVemBaseNode* task = ThroughFile(dir, build(), "tree.vem");
        ASSERT_NE(task, nullptr);
        long peak = 0;
        const vemquestions::Answers answers = vemquestions::AskEverything(
            task, dir.path(),
            [](void* context, const std::function<void()>& question) {
                vemtest::AllocationWatch watch;
                question();
                long& most = *static_cast<long*>(context);
                most = std::max(most, watch.PeakBytes());
            },
            &peak);
        EXPECT_LT(peak, kMemoryBound);
        EXPECT_GT(answers.paths, 0);
        EXPECT_LE(answers.paths, 2L * kVemMaxPathMapEntries);
        EXPECT_EQ(answers.storedAgain, 1);
        EXPECT_EQ(answers.exceptions, 0);
        VemDeleteNode(task);
    }
}

TEST(Questions, AChainOfReferencesIsFollowedToTheNestingBound) {
    CVemBaseNode* task = vemquestions::BuildChainTask(kVemMaxNesting + 50);
    VemCreateChildNodePathList(task);
    std::size_t deepest = 0;
    for (const std::string& key : Keys(task))
        deepest = std::max<std::size_t>(deepest, std::count(key.begin(), key.end(), '.'));
    EXPECT_EQ(deepest, kVemMaxNesting);
    VemDeleteNode(task);
}

// A segment kind that is no byte, as a file may give it, indexes nothing.
TEST(Questions, ComputeOffsetsLeavesAVariableWhoseKindIsNoSegmentKind) {
    TempDir dir;
    CVemBaseNode* unit = VemCreateCVemFbNode("F : T", "");
    for (const tIpSegmentKind kind : {static_cast<tIpSegmentKind>(0xFFFF), kIpSegData}) {
        CVemBaseNode* variable = VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 0);
        VemSetSubSegmentKind(variable, kind);
        VemAddChildTail(unit, variable);
    }
    unit = ThroughFile(dir, unit, "unit.vem");
    ASSERT_NE(unit, nullptr);
    std::vector<u16> starts(kVemSegmentKindLimit, 100);
    CVemBaseNode* a = static_cast<CVemBaseNode*>(unit->Children.GetHead());
    EXPECT_EQ(VemComputeOffsets(a, starts.data()), 0);
    VemComputeOffsets(unit, starts.data());
    EXPECT_EQ(VemGetOffset(a), 4);
    EXPECT_EQ(VemGetOffset(static_cast<CVemBaseNode*>(unit->Children.GetTail())), 104);
    VemDeleteNode(unit);
}

// ---- the path map and the nodes it points to -------------------------------------------------------

namespace {

struct MappedTask : ::testing::Test {
    void SetUp() override {
        root = VemNewNode(kVemBaseNode);
        task = vemtest::NewNode(kVemTuiTaskNode, "TASK");
        VemAddChildTail(root, task);
        for (const char* name : {"A", "B"})
            VemAddChildTail(task, VemCreateCVemVariableNode(name, 0, kCbeTypeInt, 2, 0));
        VemAddChildTail(task, vemtest::NewNode(kVemArrayNode, "ARR"));
        VemCreateChildNodePathList(task);
        map = VemGetNodePath2NodeList(task);
        ASSERT_EQ(map->GetCount(), 3);
    }
    void TearDown() override { VemDeleteNode(root); }
    CVemBaseNode* root = nullptr;
    CVemBaseNode* task = nullptr;
    CMapStringToOb* map = nullptr;
};

}  // namespace

// The map is emptied when a node of its tree goes, and made again in the same place; under the
// address sanitizer a read through a pointer that outlived its node fails the test.
TEST_F(MappedTask, ADeleteEmptiesTheMapAndANewOneTakesItsPlace) {
    VemDeleteChildNode(task, VemFindVemNodeByNameAndType(task, "A", kVemVariableNode));
    EXPECT_EQ(map->GetCount(), 0);
    EXPECT_EQ(VemGetAbsoluteVariableOffset(task, "TASK.B"), 0u);
    VemCreateChildNodePathList(task);
    EXPECT_EQ(VemGetNodePath2NodeList(task), map);
    EXPECT_EQ(Keys(task), (std::set<std::string>{"TASK.B", "TASK.ARR"}));
    CMemFile dump;
    CVemNodeDump(root, &dump);
}

TEST_F(MappedTask, NodesOfAnotherTreeThatGoLeaveTheMap) {
    CVemBaseNode* other = vemquestions::BuildSelfReferringTask();
    VemDeleteNode(other);
    EXPECT_EQ(map->GetCount(), 3);
}

TEST_F(MappedTask, AfterAnExpansionTheMapHoldsOnlyLiveNodes) {
    CVemBaseNode* array = VemFindVemNodeByNameAndType(task, "ARR", kVemArrayNode);
    VemSetDimRange4Index(VemGetRange(array), 0, {0, 1, 0});
    VemAddChildTail(array, VemCreateCVemVariableNode("E", 0, kCbeTypeInt, 2, 0));
    VemCreateChildNodePathList(task);
    VemExpandArray(task);
    for (POSITION pos = map->GetStartPosition(); pos;) {
        CString key;
        CObject* node = nullptr;
        map->GetNextAssoc(pos, key, node);
        VemGetName(static_cast<CVemBaseNode*>(node));  // each still alive
    }
    VemCreateChildNodePathList(task);
    EXPECT_EQ(map->GetCount(), 3);
}

// A task container lets its tasks go whenever it is stored, and their own children with them,
// below a node that stays: no node walks up through a parent that went before it, and the map of
// another tree stays.
TEST_F(MappedTask, NodesDroppedBelowALiveNodeOfAnotherTreeLeaveTheMap) {
    CVemBaseNode* tasks = VemNewNode(kVemTaskContainerNode);
    CVemBaseNode* other = vemtest::Add(tasks, VemNewNode(kVemTuiTaskNode));
    VemAddChildTail(other, VemCreateCVemVariableNode("C", 0, kCbeTypeInt, 2, 0));
    TempDir dir;
    EXPECT_EQ(VemWriteNode(tasks, dir.file("tasks.vem").c_str()), 1);
    EXPECT_TRUE(tasks->Children.IsEmpty());
    EXPECT_EQ(map->GetCount(), 3);
    VemDeleteNode(tasks);
}

// ---- widths on disk --------------------------------------------------------------------------------

namespace {

struct Width {
    const char* what;
    u32 limit;
    std::function<CVemBaseNode*(u32)> build;  // a tree that stores `count` of the field
};

CVemBaseNode* Unit() { return VemCreateCVemFbNode("F : T", ""); }

const Width kWidths[] = {
    {"children", kVemMaxChildren,
     [](u32 n) {
         CVemBaseNode* node = VemNewNode(kVemBaseNode);
         for (u32 i = 0; i < n; ++i) VemAddChildTail(node, VemNewNode(kVemBaseNode));
         return node;
     }},
    {"statement list", kVemMaxStatListEntries,
     [](u32 n) {
         CVemBaseNode* unit = Unit();
         for (u32 i = 0; i < n; ++i) {
             auto* entry = new CStatListEntry;
             entry->AwlLine = static_cast<u16>(i);
             VemGetStatList(unit)->NewEntry(entry);
         }
         return unit;
     }},
    {"code nodes", kVemMaxCodeNodes,
     [](u32 n) {
         CVemBaseNode* task = VemNewNode(kVemTuiTaskNode);
         for (u32 i = 0; i < n; ++i) VemGetEvemRootNodeListPtr(task)->AddTail(EVemCreateNode(kEVemPouCodeNode, ""));
         return task;
     }},
    {"bytes of a byte array", kVemMaxByteArrayBytes,
     [](u32 n) {
         CVemBaseNode* task = VemNewNode(kVemTuiTaskNode);
         CVemByteArray* bytes = VemBaNewByteArray(0, 1, 1, 0);
         VemBaSetMaxSize(bytes, n);
         for (u32 i = 0; i < n; ++i) VemBaAppendByte(bytes, 7);
         VemSetTaskDefEntry(task, bytes);
         return task;
     }},
};

}  // namespace

// A count at its width stores; one more fails the write, and the file that stood there stays. (A
// segment table cannot hold more numbers than its width: its table of used numbers stops first.)
TEST(Questions, AWriteRefusesACountWiderThanItsFieldAndKeepsTheOldFile) {
    TempDir dir;
    LurSetEvemEnabled(1);
    const std::string path = dir.file("w.vem");
    for (const Width& width : kWidths) {
        SCOPED_TRACE(width.what);
        CVemBaseNode* fits = nullptr;
        ASSERT_NO_THROW(fits = width.build(width.limit));
        ASSERT_EQ(VemWriteNode(fits, path.c_str()), 1);
        VemDeleteNode(fits);
        const std::vector<u8> before = ReadFileBytes(path);
        CVemBaseNode* wide = width.build(width.limit + 1);
        EXPECT_EQ(VemWriteNode(wide, path.c_str()), 0);
        CMemFile file;
        CArchive ar(&file, CArchive::store);
        EXPECT_EQ(VemWriteObject(wide, ar), 0);
        ar.Abort();
        VemDeleteNode(wide);
        EXPECT_EQ(ReadFileBytes(path), before);
    }
}
