// Hostile node files: a registry of well-formed files, each cut at every byte, each with every
// 16-bit word raised by one, and each loaded while every allocation in turn fails. A load never
// crashes, gives null for what it cannot read and leaves nothing allocated behind. What loads
// clones to the same bytes, and a clone that runs short of memory leaves nothing either.
#include <filesystem>
#include <functional>

#include "alloc_hook.h"
#include "compiled_test_util.h"
#include "resource_builder.h"
#include "units/pou.h"
#include "variables/variable.h"

using vemtest::AllocationWatch;
using vemtest::TempDir;

namespace {

// A small resource: the executable, its settings and tables, the task container, compiled tasks
// with variables, arrays, structures, function blocks and functions, and the code nodes.
CVemBaseNode* SmallResource() {
    vembuild::ResourceShape shape;
    shape.tasks = 1;
    shape.variablesPerTask = 2;
    shape.arrayLength = 2;
    shape.globalVariables = 1;
    shape.statementsPerUnit = 2;
    return vembuild::BuildResource(shape);
}

// A program with children of every kind of unit and variable, a statement list and an array.
CVemBaseNode* Units() {
    CVemBaseNode* program = vemtest::NewNode(kVemProgramNode, "MAIN");
    VemSetGlobal(program, 1);
    CVemBaseNode* fb = VemCreateCVemFbNode("I : T", "t.poe");
    auto* entry = new CStatListEntry;
    entry->AwlLine = 4;
    VemGetStatList(fb)->NewEntry(entry);
    CVemByteArray* pfl = VemBaNewByteArray(0, 1, 1, 0);
    VemBaAppendByte(pfl, 0xAA);
    VemSetPflArray(fb, pfl);
    VemAddChildTail(fb, VemCreateCVemVariableNode("X", 0, kCbeTypeInt, 2, 0));
    CVemBaseNode* structure = VemNewNode(kVemStructNode);
    VemAddChildTail(structure, VemCreateCVemVariableNode("M", 2, kCbeTypeBool, 1, 0));
    CVemBaseNode* instance = VemNewNode(kVemFbInstanceNode);
    VemSetTypeName(instance, "T");
    for (CVemBaseNode* child : {fb, VemCreateCVemFunctionNode("G", "g.poe"), structure, instance})
        VemAddChildTail(program, child);
    return program;
}

// The levels above a resource: project, configuration, resource and task.
CVemBaseNode* UpperLevels() {
    CVemBaseNode* project = vemtest::NewNode(kVemProjectNode, "PRJ");
    CVemBaseNode* config = vemtest::NewNode(kVemConfigNode, "CFG");
    CVemBaseNode* resource = vemtest::NewNode(kVemResourceNode, "RES");
    CVemBaseNode* task = vemtest::NewNode(kVemTaskNode, "T");
    VemAddChildTail(project, config);
    VemAddChildTail(config, resource);
    VemAddChildTail(resource, task);
    VemAddChildTail(task, VemCreateCVemVariableNode("V", 2, kCbeTypeInt, 2, 0));
    return project;
}

// A variable with every field of its record set, and a member.
CVemBaseNode* RichVariable() {
    auto* v = static_cast<CVemVariableNode*>(VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 5));
    v->Reference = v->NetVar = v->VarInOut = 1;
    v->ParentSegment = 3;
    v->SubSegmentKind = kIpSegInit;
    v->TypeName = "T";
    v->ProgramNr = 6;
    v->CanBeWatched = 0;
    v->VarQualifier = 7;
    v->InstanceText = "I";
    v->PiLocation = "%QX0.1";
    v->DclPositionA = 8;
    v->DclPositionB = 9;
    VemAddChildTail(v, VemCreateCVemVariableNode("C", 0, kCbeTypeBool, 1, 0));
    return v;
}

// A compiled task with everything its record holds.
CVemBaseNode* CompiledTask() {
    TempDir dir;
    return compiledtest::FullTask(dir);
}

struct GoldenRecord {
    const char* name;
    std::function<CVemBaseNode*()> make;
    bool clonesToItsClass;  // upper levels and compiled tasks clone to other classes
};

const GoldenRecord kRecords[] = {
    {"resource", SmallResource, false},     {"units", Units, true},
    {"upper levels", UpperLevels, false},   {"variable", RichVariable, true},
    {"compiled task", CompiledTask, false},
};

class HostileRecords : public ::testing::TestWithParam<GoldenRecord> {
protected:
    void SetUp() override {
        LurResetSettings();
        CVemBaseNode* node = GetParam().make();
        ASSERT_EQ(VemWriteNode(node, path("good.vem").c_str()), 1);
        VemDeleteNode(node);
        bytes = vemtest::ReadFileBytes(path("good.vem"));
    }
    void TearDown() override { LurResetSettings(); }

    std::string path(const char* name) const { return dir.file(name); }

    // Loads the bytes; frees what loads. 1 when it loaded. Each try is a new file: rewriting one
    // file in place makes the file system flush it every time.
    int Load(const std::vector<u8>& file) {
        std::filesystem::remove(path("try.vem"));
        vemtest::WriteFileBytes(path("try.vem"), file);
        CVemBaseNode* loaded = VemLoadNode(path("try.vem").c_str());
        if (!loaded) return 0;
        VemDeleteNode(loaded);
        return 1;
    }

    TempDir dir;
    std::vector<u8> bytes;
};

}  // namespace

TEST_P(HostileRecords, TheGoodFileComesBackByteForByte) {
    CVemBaseNode* loaded = VemLoadNode(path("good.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    ASSERT_EQ(VemWriteNode(loaded, path("again.vem").c_str()), 1);
    EXPECT_EQ(vemtest::ReadFileBytes(path("again.vem")), bytes);
    VemDeleteNode(loaded);
}

TEST_P(HostileRecords, EveryCutGivesNullAndLeavesNothing) {
    vemtest::MessageCapture messages;
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        AllocationWatch watch;
        EXPECT_EQ(Load(std::vector<u8>(bytes.begin(), bytes.begin() + static_cast<long>(length))), 0) << length;
        ASSERT_EQ(watch.Live(), 0) << length;
    }
    EXPECT_TRUE(messages.texts().empty());
}

// A raised schema word is a newer record and fails the load; other words may load or not.
TEST_P(HostileRecords, EveryRaisedWordLeavesNothing) {
    vemtest::MessageCapture messages;
    int failed = 0;
    for (std::size_t at = 0; at + 1 < bytes.size(); ++at) {
        std::vector<u8> file = bytes;
        const u16 word = static_cast<u16>(file[at] | file[at + 1] << 8);
        file[at] = static_cast<u8>(word + 1);
        file[at + 1] = static_cast<u8>((word + 1) >> 8);
        AllocationWatch watch;
        failed += 1 - Load(file);
        ASSERT_EQ(watch.Live(), 0) << at;
    }
    EXPECT_GT(failed, 0);
}

// Opening the file is not guarded: a shortage there passes to the caller. A shortage inside the
// load asks for a rebuild.
TEST_P(HostileRecords, EveryFailedAllocationLeavesNothing) {
    vemtest::MessageCapture messages;
    for (long k = 0;; ++k) {
        AllocationWatch watch;
        watch.FailAfter(k);
        CVemBaseNode* loaded = nullptr;
        try {
            loaded = VemLoadNode(path("good.vem").c_str());
        } catch (const std::bad_alloc&) {
        }
        watch.FailAfter(-1);
        if (loaded) {
            VemDeleteNode(loaded);
            EXPECT_EQ(watch.Live(), 0) << k;
            EXPECT_GT(k, 1);  // the loads before failed inside, not only at the first allocation
            break;
        }
        ASSERT_EQ(watch.Live(), 0) << k;
    }
    ASSERT_FALSE(messages.texts().empty());
    EXPECT_EQ(messages.texts().back(),
              "\nError while loading the current project. Please rebuild it."
              "\r\nFehler beim Laden des aktuellen Projekts. Bitte \xFC"
              "bersetzen sie es neu.");
}

TEST_P(HostileRecords, EveryShortageOfACloneLeavesNothingAndTheCloneWritesTheSameBytes) {
    CVemBaseNode* source = VemLoadNode(path("good.vem").c_str());
    ASSERT_NE(source, nullptr);
    for (long k = 0;; ++k) {
        AllocationWatch watch;
        watch.FailAfter(k);
        CVemBaseNode* clone = nullptr;
        try {
            clone = VemClone(source);
        } catch (const std::bad_alloc&) {
        } catch (const CMemoryException&) {
        }
        watch.FailAfter(-1);
        if (clone) {
            ASSERT_EQ(VemWriteNode(clone, path("clone.vem").c_str()), 1);
            if (GetParam().clonesToItsClass) {
                EXPECT_EQ(vemtest::ReadFileBytes(path("clone.vem")), bytes);
            }
            VemDeleteNode(clone);
            EXPECT_EQ(watch.Live(), 0) << k;
            break;
        }
        ASSERT_EQ(watch.Live(), 0) << k;
    }
    VemDeleteNode(source);
}

INSTANTIATE_TEST_SUITE_P(Golden, HostileRecords, ::testing::ValuesIn(kRecords), [](const auto& info) {
    std::string name = info.param.name;
    for (char& c : name)
        if (c == ' ') c = '_';
    return name;
});
