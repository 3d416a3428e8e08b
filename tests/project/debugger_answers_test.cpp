// Debugger answers beyond the path map and the line map: the variable at an address, the statement
// at a code offset, and what changed between two compile results.
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "evem_xref_test_util.h"
#include "resource_builder.h"
#include "test_util.h"
#include "vem32_classes.h"

namespace {

constexpr u16 kCodeLength = 16;
constexpr u16 kDataLength = 128;
constexpr u32 kDataStart = kCodeLength;  // segment 2 stands behind segment 1 in the task's block

struct Target {
    int motorola;
    u8 byteSize;
    u8 alignment;
    // Segment offsets of the elements, worked out by hand from the expansion's rules.
    std::array<u16, 3> ints;   // ARRAY [1..3] OF INT (2) at 8
    std::array<u16, 3> bools;  // ARRAY [0..2] OF BOOL (1) at 30
    std::array<u16, 3> dints;  // ARRAY [-1..1] OF DINT (4) at 41
    u16 secondString;          // ARRAY [0..1] OF STRING(5) at 80: element 1
};

const Target kTargets[] = {
    {0, 1, 1, {8, 10, 12}, {30, 31, 32}, {41, 45, 49}, 85},  {1, 1, 2, {8, 10, 12}, {30, 31, 32}, {41, 46, 50}, 86},
    {0, 1, 4, {8, 10, 12}, {30, 31, 32}, {41, 45, 49}, 86},  {1, 2, 2, {8, 10, 12}, {30, 32, 34}, {41, 46, 50}, 90},
    {0, 2, 4, {8, 10, 12}, {30, 32, 34}, {41, 45, 49}, 90},  {1, 4, 1, {8, 12, 16}, {30, 34, 38}, {41, 45, 49}, 100},
    {0, 4, 2, {8, 12, 16}, {30, 34, 38}, {41, 46, 50}, 100}, {1, 4, 4, {8, 12, 16}, {30, 34, 38}, {41, 45, 49}, 100},
};

CVemBaseNode* Var(const char* name, u16 offset, tCbeType type, u16 size) {
    return VemCreateCVemVariableNode(name, offset, type, size, 0);
}

CVemBaseNode* Array(const char* name, u16 offset, i32 low, i32 high, CVemBaseNode* element) {
    CVemBaseNode* a = vemtest::NewNode(kVemArrayNode, name);
    VemSetOffset(a, offset);
    VemSetDimRange4Index(VemGetRange(a), 0, tVemDimRange{low, high, 0});
    VemAddChildTail(a, element);
    return a;
}

CVemBaseNode* Struct(const char* name, u16 offset, u16 size, std::initializer_list<CVemBaseNode*> members) {
    CVemBaseNode* s = vemtest::NewNode(kVemStructNode, name);
    VemSetOffset(s, offset);
    VemSetSize(s, size);
    for (CVemBaseNode* m : members) VemAddChildTail(s, m);
    return s;
}

CVemByteArray* Segment(const Target& t, u16 length) {
    CVemByteArray* array = VemBaNewByteArray(t.motorola, t.alignment, 1, 0);
    for (u16 i = 0; i < length; ++i) VemBaAppendByte(array, static_cast<u8>(i));
    return array;
}

// RES1 with one task TASK1: segment 1 its code, segment 2 its data with the variables at the
// segment offsets of the comments, ALIAS lying over V.
CVemBaseNode* KnownLayout(const Target& t, bool expand) {
    CVemBaseNode* exe = vemtest::NewNode(kVemExeNode, "RES1");
    tVemDeviceSettings settings{};
    settings.MotorolaFormat = t.motorola;
    settings.ByteSize = t.byteSize;
    settings.Alignment = t.alignment;
    VemSetDeviceSettings(exe, settings);
    CVemBaseNode* container = vemtest::Add(exe, VemNewNode(kVemTaskContainerNode));
    CVemBaseNode* task = vemtest::NewNode(kVemTuiTaskNode, "TASK1");
    VemSetPathName(task, "C:\\PRJ\\TASK1.st");
    VemAddChildTail(container, task);
    VemAddChildTail(task, Var("V", 4, kCbeTypeInt, 2));
    VemAddChildTail(task, Var("ALIAS", 4, kCbeTypeInt, 2));
    VemAddChildTail(task, Array("INTS", 8, 1, 3, Var("", 0, kCbeTypeInt, 2)));
    VemAddChildTail(task, Array("BOOLS", 30, 0, 2, Var("", 0, kCbeTypeBool, 1)));
    VemAddChildTail(task, Array("DINTS", 41, -1, 1, Var("", 0, kCbeTypeDint, 4)));
    VemAddChildTail(task, Struct("S", 60, 6, {Var("M0", 0, kCbeTypeInt, 2), Var("M1", 2, kCbeTypeDint, 4)}));
    VemAddChildTail(
        task, Array("SA", 70, 0, 1, Struct("", 0, 4, {Var("M0", 0, kCbeTypeInt, 2), Var("M1", 2, kCbeTypeInt, 2)})));
    CVemBaseNode* strings = Array("STRS", 80, 0, 1, Var("", 0, kCbeTypeString, 5));
    VemSetArrayElementSizeOfType(strings, 5);
    VemAddChildTail(task, strings);
    CSegmentTable* table = VemGetSegmentTable(task);
    VemSegTblAddNewSegment(table, nullptr);
    VemSegTblAddNewSegment(table, Segment(t, kCodeLength));
    VemSegTblAddNewSegment(table, Segment(t, kDataLength));
    VemSetSegmentNumbers(task, 2, 1, 0xFFFF, 0xFFFF);
    const std::array<u16, 136> starts{};
    VemComputeOffsets(task, starts.data());
    if (expand) VemExpandArray(task);
    VemAddNewSegmentLength(task, kCodeLength);
    VemAddNewSegmentLength(task, kDataLength);
    return exe;
}

// What a flat function made, freed at the end of the scope by its own function.
template <auto Free>
struct FreedBy {
    template <class T>
    void operator()(T* p) const {
        Free(p);
    }
};
using Index = std::unique_ptr<tVemAddressIndex, FreedBy<VemAddrIndexDelete>>;
using CodeIndex = std::unique_ptr<tVemCodeIndex, FreedBy<VemCodeIndexDelete>>;
using Diff = std::unique_ptr<tVemLayoutDiff, FreedBy<VemDiffDelete>>;

using Tree = xreftest::TreePtr;

CVemBaseNode* Child(CVemBaseNode* parent, const char* name) {
    for (POSITION pos = VemGetChildList(parent)->GetHeadPosition(); pos;) {
        auto* child = static_cast<CVemBaseNode*>(VemGetChildList(parent)->GetNext(pos));
        if (VemGetName(child) == name) return child;
    }
    return nullptr;
}

tVemAddressHit At(tVemAddressIndex* index, u32 address, int expected = kVemAddrFound) {
    tVemAddressHit hit{};
    EXPECT_EQ(VemAddrLookup(index, 0, address, &hit), expected) << "address " << address;
    return hit;
}

// Every key of every compiled task's path map whose node is a variable, with its address.
struct Keyed {
    int task;
    std::string key;
    CVemBaseNode* node;
    u32 address;
};
std::vector<Keyed> PathMapVariables(tVemAddressIndex* index) {
    std::vector<Keyed> all;
    for (int t = 0; t < VemAddrIndexTaskCount(index); ++t) {
        CVemBaseNode* task = VemAddrIndexGetTask(index, t);
        VemCreateChildNodePathList(task);
        CMapStringToOb* map = VemGetNodePath2NodeList(task);
        CString key;
        CObject* object = nullptr;
        for (POSITION pos = map->GetStartPosition(); pos;) {
            map->GetNextAssoc(pos, key, object);
            auto* node = static_cast<CVemBaseNode*>(object);
            const u32 type = VemGetNodeType(node);
            if (type == kVemFbNode || type == kVemFunctionNode || type == kVemProgramNode) continue;
            all.push_back({t, key.str(), node, VemGetAbsoluteVariableOffset(task, key)});
        }
    }
    return all;
}

// The address of every path maps back to that path, but for the paths named as lying under another.
void ExpectPathsMapBack(tVemAddressIndex* index, const std::map<std::string, std::string>& overlapped) {
    const std::vector<Keyed> all = PathMapVariables(index);
    ASSERT_FALSE(all.empty());
    for (const Keyed& k : all) {
        tVemAddressHit hit{};
        ASSERT_EQ(VemAddrLookup(index, k.task, k.address, &hit), kVemAddrFound) << k.key;
        const auto named = overlapped.find(k.key);
        if (named != overlapped.end()) {
            EXPECT_EQ(std::string(hit.Path), named->second);
            EXPECT_GE(hit.Covering, 2u) << k.key;
            continue;
        }
        EXPECT_EQ(std::string(hit.Path), k.key);
        EXPECT_EQ(hit.ByteOffset, 0u) << k.key;
        if (VemGetNodeType(k.node) != kVemArrayNode) {
            EXPECT_EQ(hit.Node, k.node) << k.key;
        }
    }
}

class KnownLayoutTest : public ::testing::TestWithParam<Target> {};

TEST_P(KnownLayoutTest, ElementsMembersAndGapsAnswerExactly) {
    const Target& t = GetParam();
    Tree tree(KnownLayout(t, false));
    Index index(VemAddrIndexNew(tree.get()));
    ASSERT_NE(index.get(), nullptr);
    struct Row {
        const char* name;
        const std::array<u16, 3>& starts;
        u32 size;
        i32 low;
    };
    const Row rows[] = {{"TASK1.INTS", t.ints, 2, 1}, {"TASK1.BOOLS", t.bools, 1, 0}, {"TASK1.DINTS", t.dints, 4, -1}};
    for (const Row& row : rows) {
        for (int k = 0; k < 3; ++k) {
            const u32 start = kDataStart + row.starts[k];
            for (u32 byte = 0; byte < row.size; ++byte) {
                const tVemAddressHit hit = At(index.get(), start + byte);
                EXPECT_EQ(std::string(hit.Path), row.name);
                EXPECT_EQ(std::string(hit.Name), std::string(row.name) + "[" + std::to_string(row.low + k) + "]");
                EXPECT_EQ(hit.Element, k);
                EXPECT_EQ(hit.Start, start);
                EXPECT_EQ(hit.Size, row.size);
                EXPECT_EQ(hit.ByteOffset, byte);
                EXPECT_EQ(hit.Segment, 2);
                EXPECT_EQ(hit.SegmentOffset, row.starts[k] + byte);
            }
        }
    }
    // Members of a structure, and of the structure elements of an array.
    const tVemAddressHit member = At(index.get(), kDataStart + 63);
    EXPECT_STREQ(member.Name, "TASK1.S.M1");
    EXPECT_EQ(member.Start, kDataStart + 62);
    EXPECT_EQ(member.ByteOffset, 1u);
    const tVemAddressHit inElement = At(index.get(), kDataStart + 77);
    EXPECT_STREQ(inElement.Name, "TASK1.SA[1].M1");
    EXPECT_STREQ(inElement.Path, "TASK1.SA");
    EXPECT_EQ(inElement.Start, kDataStart + 76);
    EXPECT_EQ(inElement.Covering, 3u);
    const tVemAddressHit string = At(index.get(), kDataStart + t.secondString);
    EXPECT_STREQ(string.Name, "TASK1.STRS[1]");
    EXPECT_EQ(string.Size, 5u * t.byteSize);
    // The same place by segment and offset.
    tVemAddressHit bySegment{};
    ASSERT_EQ(VemAddrLookupSegment(index.get(), 0, 2, t.dints[2], &bySegment), kVemAddrFound);
    EXPECT_STREQ(bySegment.Name, "TASK1.DINTS[1]");
    // The expanded form of the same resource answers the same for every address.
    Tree expanded(KnownLayout(t, true));
    Index other(VemAddrIndexNew(expanded.get()));
    for (u32 address = 0; address < kDataStart + kDataLength + 4; ++address) {
        tVemAddressHit a{}, b{};
        const int ra = VemAddrLookup(index.get(), 0, address, &a);
        const std::string nameA = a.Name;
        ASSERT_EQ(VemAddrLookup(other.get(), 0, address, &b), ra) << address;
        EXPECT_EQ(nameA, b.Name) << address;
        EXPECT_EQ(a.Start, b.Start) << address;
        EXPECT_EQ(a.Size, b.Size) << address;
        EXPECT_EQ(a.Element, b.Element) << address;
        EXPECT_EQ(a.Covering, b.Covering) << address;
    }
    ExpectPathsMapBack(index.get(), {{"TASK1.V", "TASK1.ALIAS"}});
    ExpectPathsMapBack(other.get(), {{"TASK1.V", "TASK1.ALIAS"}});
}

INSTANTIATE_TEST_SUITE_P(Targets, KnownLayoutTest, ::testing::ValuesIn(kTargets));

TEST(AddressIndex, EveryPathOfABuiltResourceMapsBack) {
    for (const auto& [byteSize, alignment] : {std::pair<u8, u8>{1, 2}, {2, 4}, {4, 1}}) {
        vembuild::ResourceShape shape;
        shape.tasks = 3;
        shape.byteSize = byteSize;
        shape.alignment = alignment;
        vemtest::TempDir dir;
        {
            Tree built(vembuild::BuildResource(shape));
            ASSERT_EQ(vembuild::WriteResource(built.get(), dir.path(), dir.file("res1.vem")), 1);
        }
        Tree loaded(VemLoadNode(dir.file("res1.vem").c_str()));
        ASSERT_NE(loaded.get(), nullptr);
        Index index(VemAddrIndexNew(loaded.get()));
        EXPECT_EQ(VemAddrIndexTaskCount(index.get()), 4);          // GLOBAL and three tasks
        EXPECT_EQ(VemAddrIndexFindTask(index.get(), "task2"), 1);  // the tasks of "TASKS" come first
        ExpectPathsMapBack(index.get(), {});
    }
}

TEST(AddressIndex, NoVariableAndBadQueries) {
    Tree tree(KnownLayout(kTargets[0], false));
    Index index(VemAddrIndexNew(tree.get()));
    tVemAddressHit hit{};
    // The header of the data segment holds no variable; the code segment belongs to the task.
    hit = At(index.get(), kDataStart + 1, kVemAddrNoVariable);
    EXPECT_EQ(hit.Node, nullptr);
    EXPECT_EQ(hit.Segment, 2);
    EXPECT_EQ(hit.UnitSegment, 1);
    hit = At(index.get(), 3, kVemAddrNoVariable);
    EXPECT_EQ(hit.UnitSegment, 2);
    EXPECT_EQ(VemGetNodeType(hit.Unit), static_cast<u32>(kVemTuiTaskNode));
    hit = At(index.get(), 5000, kVemAddrNoVariable);  // outside every segment
    EXPECT_EQ(hit.Segment, 0xFFFF);
    EXPECT_STREQ(hit.Name, "");
    EXPECT_EQ(VemAddrLookupSegment(index.get(), 0, 9, 0, &hit), kVemAddrNoVariable);
    EXPECT_EQ(VemAddrLookup(index.get(), 1, 20, &hit), kVemAddrBadTask);
    EXPECT_EQ(VemAddrLookup(index.get(), -1, 20, &hit), kVemAddrBadTask);
    EXPECT_EQ(VemAddrIndexFindTask(index.get(), "NONE"), -1);
    CVemBaseNode* variable = Var("X", 0, kCbeTypeInt, 2);
    EXPECT_EQ(VemAddrIndexNew(variable), nullptr);
    EXPECT_EQ(VemAddrIndexNew(nullptr), nullptr);
    VemDeleteNode(variable);
}

// Every change that can move an answer makes the index stale; the next question rebuilds it.
TEST(AddressIndex, EveryLayoutChangeMakesItStale) {
    struct Where {
        CVemBaseNode *exe, *t, *v;
    };
    using Change = void (*)(const Where&);
    const std::pair<const char*, Change> kChanges[] = {
        {"rename", [](const Where& a) { VemSetName(a.v, "W"); }},
        {"offset", [](const Where& a) { VemSetOffset(a.v, 6); }},
        {"size", [](const Where& a) { VemSetSize(a.v, 4); }},
        {"type", [](const Where& a) { VemSetVariableType(a.v, kCbeTypeWord); }},
        {"segment", [](const Where& a) { VemSetParentSegment(a.v, 1); }},
        {"unit segments", [](const Where& a) { VemSetSegmentNumbers(a.t, 1, 2, 0, 0); }},
        {"child added", [](const Where& a) { VemAddChildTail(a.t, Var("N", 0, kCbeTypeInt, 2)); }},
        {"child deleted", [](const Where& a) { VemDeleteChildNode(a.t, a.v); }},
        {"expanded", [](const Where& a) { VemExpandArray(a.t); }},
        {"bounds",
         [](const Where& a) {
             VemSetDimRange4Index(VemGetRange(Child(a.t, "INTS")), 0, tVemDimRange{1, 9, 0});
         }},
        {"string length", [](const Where& a) { VemSetArrayElementSizeOfType(Child(a.t, "STRS"), 7); }},
        {"segment added",
         [](const Where& a) { VemSegTblAddNewSegment(VemGetSegmentTable(a.t), Segment(kTargets[0], 8)); }},
        {"segment deleted", [](const Where& a) { VemSegTblDeleteSegment(VemGetSegmentTable(a.t), 2); }},
        {"segment grown", [](const Where& a) { VemBaAppendByte(VemSegTblGetSegment(VemGetSegmentTable(a.t), 2), 0); }},
        {"segment start", [](const Where& a) { VemAddNewSegmentLength(a.t, 4); }},
        {"device settings", [](const Where& a) { VemSetDeviceSettings(a.exe, *VemGetDeviceSettings(a.exe)); }},
    };
    for (const auto& [what, change] : kChanges) {
        Tree tree(KnownLayout(kTargets[0], false));
        Index index(VemAddrIndexNew(tree.get()));
        CVemBaseNode* task = VemAddrIndexGetTask(index.get(), 0);
        ASSERT_EQ(VemAddrIndexIsCurrent(index.get()), 1) << what;
        change({tree.get(), task, Child(task, "V")});
        EXPECT_EQ(VemAddrIndexIsCurrent(index.get()), 0) << what;
        tVemAddressHit hit{};
        VemAddrLookup(index.get(), 0, kDataStart + 4, &hit);
        EXPECT_EQ(VemAddrIndexIsCurrent(index.get()), 1) << what;
    }
}

TEST(AddressIndex, LargestArrayAndDeepInstances) {
    // 65,535 BOOL elements without nodes, from offset 0 of a segment that holds them all.
    Tree tree(KnownLayout(kTargets[0], false));
    CVemBaseNode* task = VemAddrIndexGetTask(Index(VemAddrIndexNew(tree.get())).get(), 0);
    CVemBaseNode* big = vemtest::Add(task, Array("BIG", 0, 1, 65535, Var("", 0, kCbeTypeBool, 1)));
    VemSetParentSegment(big, 3);
    VemSegTblAddNewSegment(VemGetSegmentTable(task), Segment(kTargets[0], 0));
    VemAddNewSegmentLength(task, 65535);
    // Instances nested 50 deep: each block holds X and an instance of the next.
    constexpr int kDepth = 50;
    for (int k = 0; k < kDepth; ++k) {
        const std::string n = std::to_string(k);
        CVemBaseNode* fb = VemCreateCVemFbNode(("I" + n + " : F" + n).c_str(), ("C:\\PRJ\\F" + n + ".st").c_str());
        VemAddChildTail(fb, Var("X", static_cast<u16>(2 * k), kCbeTypeInt, 2));
        if (k + 1 < kDepth) {
            CVemBaseNode* inner = vemtest::NewNode(kVemFbInstanceNode, ("I" + std::to_string(k + 1)).c_str());
            VemSetTypeName(inner, ("F" + std::to_string(k + 1)).c_str());
            VemSetReference(inner, 1);
            VemAddChildTail(fb, inner);
        }
        VemSetSegmentNumbers(fb, 2, 0xFFFF, 0xFFFF, 0xFFFF);
        VemAddChildTail(task, fb);
    }
    Index index(VemAddrIndexNew(tree.get()));
    const u32 bigStart = kDataStart + kDataLength;
    const tVemAddressHit last = At(index.get(), bigStart + 65534);
    EXPECT_STREQ(last.Name, "TASK1.BIG[65535]");
    EXPECT_EQ(last.Element, 65534);
    std::string deepest = "TASK1";
    for (int k = 0; k < kDepth; ++k) deepest += ".I" + std::to_string(k);
    const tVemAddressHit deep = At(index.get(), kDataStart + 2 * (kDepth - 1));
    EXPECT_EQ(std::string(deep.Name), deepest + ".X");
    VemCreateChildNodePathList(task);
    EXPECT_EQ(VemGetAbsoluteVariableOffset(task, (deepest + ".X").c_str()), kDataStart + 2 * (kDepth - 1));
}

TEST(AddressIndex, HostileShapesAreAnsweredWithoutHarm) {
    Tree tree(KnownLayout(kTargets[0], false));
    CVemBaseNode* task = VemAddrIndexGetTask(Index(VemAddrIndexNew(tree.get())).get(), 0);
    // A block whose instance refers to the block itself, an array without bounds, one of more
    // elements than a node holds, one of elements of size 0, and a variable of no segment.
    CVemBaseNode* fb = VemCreateCVemFbNode("SELF : LOOP", "C:\\PRJ\\LOOP.st");
    CVemBaseNode* self = vemtest::NewNode(kVemFbInstanceNode, "SELF");
    VemSetTypeName(self, "LOOP");
    VemSetReference(self, 1);
    VemAddChildTail(fb, self);
    VemAddChildTail(fb, Var("Y", 100, kCbeTypeInt, 2));
    VemSetSegmentNumbers(fb, 2, 0xFFFF, 0xFFFF, 0xFFFF);
    VemAddChildTail(task, fb);
    CVemBaseNode* unbounded = Array("NOBOUNDS", 90, 0, 0, Var("", 0, kCbeTypeInt, 2));
    VemSetDimRange4Index(VemGetRange(unbounded), 3, tVemDimRange{0, 1, 0});  // dimensions 1 and 2 have no bounds
    CVemBaseNode* huge = Array("HUGE", 104, 0, 70000, Var("", 0, kCbeTypeBool, 1));
    VemSetSize(huge, 4);
    CVemBaseNode* empty = Array("EMPTY", 108, 0, 9, Var("", 0, kCbeTypeBool, 0));
    CVemBaseNode* lost = Var("LOST", 110, kCbeTypeInt, 2);
    for (CVemBaseNode* v : {unbounded, huge, empty, lost}) VemAddChildTail(task, v);
    for (CVemBaseNode* v : {unbounded, huge, empty}) VemSetParentSegment(v, 2);
    VemSetParentSegment(lost, 0x1FFF);
    Index index(VemAddrIndexNew(tree.get()));
    EXPECT_STREQ(At(index.get(), kDataStart + 100).Name, "TASK1.SELF.Y");
    EXPECT_STREQ(At(index.get(), kDataStart + 92).Name, "TASK1.NOBOUNDS[0,0,0,1]");
    EXPECT_STREQ(At(index.get(), kDataStart + 105).Name, "TASK1.HUGE");  // the array, no element
    EXPECT_EQ(At(index.get(), kDataStart + 110, kVemAddrNoVariable).Node, nullptr);
    for (u32 address = 0; address < 0x200; ++address) {
        tVemAddressHit hit{};
        EXPECT_GE(VemAddrLookup(index.get(), 0, address, &hit), 0);
    }
}

// ---- code offset to statement ----------------------------------------------------------------------

TEST(CodeIndex, OffsetToStatement) {
    vembuild::ResourceShape shape;  // statements at 0, 4, 8 on lines 10, 11, 12; 20 bytes of code
    Tree tree(vembuild::BuildResource(shape));
    CodeIndex index(VemCodeIndexNew(tree.get()));
    ASSERT_NE(index.get(), nullptr);
    struct Row {
        const char* unit;
        u32 offset;
        int found;
        int failure;
        u16 line;
        const char* operand;
    };
    const Row rows[] = {
        {"C:\\PRJ\\FB0.st", 0, 1, kVemCodeFound, 10, "V0"},
        {"c:\\prj\\fb0.ST", 3, 1, kVemCodeFound, 10, "V0"},
        {"FB0", 4, 1, kVemCodeFound, 11, "V1"},
        {"fb0", 9, 1, kVemCodeFound, 12, "V2"},
        {"task1", 19, 1, kVemCodeFound, 12, "V2"},
        {"GFUN", 8, 1, kVemCodeFound, 12, "V2"},
        {"TASK1", 20, 0, kVemCodeBeyond, 0, ""},
        {"NOSUCH", 0, 0, kVemCodeNoUnit, 0, ""},
    };
    for (const Row& row : rows) {
        tVemCodeHit hit{};
        EXPECT_EQ(VemCodeLookup(index.get(), row.unit, row.offset, &hit), row.found) << row.unit << " " << row.offset;
        EXPECT_EQ(hit.Failure, row.failure) << row.unit << " " << row.offset;
        EXPECT_EQ(hit.AwlLine, row.line) << row.unit << " " << row.offset;
        EXPECT_STREQ(hit.Operand, row.operand);
    }
    tVemCodeHit hit{};
    ASSERT_EQ(VemCodeLookup(index.get(), "FB0", 5, &hit), 1);
    EXPECT_EQ(hit.Type, kEVemStVariableStmtNode);
    EXPECT_EQ(hit.UcodeOffset, 4);
    EXPECT_EQ(hit.CodeLength, vembuild::CodeLength(shape));
    ASSERT_EQ(VemCodeLookupSegment(index.get(), nullptr, 3, 4, &hit), 1);  // GFUN by its code segment
    EXPECT_STREQ(hit.UnitPath, vembuild::kGlobalFunctionPath);
    EXPECT_EQ(VemCodeLookupSegment(index.get(), nullptr, 9, 0, &hit), 0);
    EXPECT_EQ(hit.Failure, kVemCodeNoUnit);
    EXPECT_EQ(VemCodeIndexNew(nullptr), nullptr);
}

TEST(CodeIndex, LastInChainOrderAndUnitsWithoutCode) {
    // A chain whose offsets fall back: the last statement in chain order not above the offset wins.
    Tree tree(VemNewNode(kVemExeNode));
    CEVemBaseNode* code = EVemCreateNode(kEVemPouCodeNode, "P");
    EVemSetPathName(code, "C:\\P.st");
    const u16 offsets[] = {2, 8, 4};
    for (int i = 0; i < 3; ++i) {
        CEVemBaseNode* s = EVemAddNewStmtNode(code, kEVemLdVariableStmtNode);
        EVemSetAwlLine(s, static_cast<u16>(i + 1));
        EVemSetUcodeOffset(s, offsets[i]);
    }
    EVemAddNewStmtNode(code, kEVemLdVariableStmtNode);  // no code offset: takes no part
    VemGetEvemRootNodeListPtr(tree.get())->AddTail(code);
    CodeIndex index(VemCodeIndexNew(tree.get()));
    const std::pair<u32, u16> expected[] = {{2, 1}, {5, 3}, {8, 3}, {100, 3}};
    for (const auto& [offset, line] : expected) {
        tVemCodeHit hit{};
        EXPECT_EQ(VemCodeLookup(index.get(), "p", offset, &hit), 1);
        EXPECT_EQ(hit.AwlLine, line) << offset;
    }
    tVemCodeHit hit{};
    EXPECT_EQ(VemCodeLookup(index.get(), "P", 1, &hit), 0);
    EXPECT_EQ(hit.Failure, kVemCodeBefore);
    // Built with the statement model off: the units are there, their code nodes not.
    vembuild::ResourceShape shape;
    {
        xreftest::SwitchOff off;
        Tree bare(vembuild::BuildResource(shape));
        CodeIndex none(VemCodeIndexNew(bare.get()));
        EXPECT_EQ(VemCodeLookup(none.get(), "FB0", 0, &hit), 0);
        EXPECT_EQ(hit.Failure, kVemCodeNoModel);
        LurSetEvemEnabled(1);
        CodeIndex noCode(VemCodeIndexNew(bare.get()));
        EXPECT_EQ(VemCodeLookup(noCode.get(), "C:\\PRJ\\FB0.st", 0, &hit), 0);
        EXPECT_EQ(hit.Failure, kVemCodeNoCodeNode);
        LurSetEvemEnabled(0);
    }
}

// ---- layout diff -----------------------------------------------------------------------------------

// "kind task path changes old>new" of each entry.
std::vector<std::string> Lines(tVemLayoutDiff* diff) {
    std::vector<std::string> lines;
    for (int i = 0; i < VemDiffCount(diff); ++i) {
        tVemDiffEntry e{};
        EXPECT_EQ(VemDiffGetEntry(diff, i, &e), 1);
        lines.push_back(std::to_string(e.Kind) + " " + e.Task + " " + e.Path + " " + std::to_string(e.Changes) + " " +
                        e.OldText + ">" + e.NewText);
    }
    return lines;
}

CVemBaseNode* TaskOf(CVemBaseNode* root, const char* task) {
    Index index(VemAddrIndexNew(root));
    return VemAddrIndexGetTask(index.get(), VemAddrIndexFindTask(index.get(), task));
}

CVemBaseNode* Find(CVemBaseNode* root, const char* task, const char* path) {
    CVemBaseNode* node = TaskOf(root, task);
    VemCreateChildNodePathList(node);
    CObject* found = nullptr;
    VemGetNodePath2NodeList(node)->Lookup(path, found);
    return static_cast<CVemBaseNode*>(found);
}

TEST(LayoutDiff, WhatChangedAndTheVerdict) {
    vembuild::ResourceShape shape;
    Tree a(vembuild::BuildResource(shape));
    {
        Tree same(vembuild::BuildResource(shape));
        Diff equal(VemDiffNew(a.get(), same.get()));
        EXPECT_EQ(VemDiffCount(equal.get()), 0);
        EXPECT_EQ(VemDiffVerdict(equal.get()), kVemDiffEqual);
    }
    Tree b(vembuild::BuildResource(shape));
    VemSetOffset(Find(b.get(), "TASK1", "TASK1.V1"), 40);
    VemSetSize(Find(b.get(), "TASK1", "TASK1.V2"), 4);
    VemSetVariableType(Find(b.get(), "TASK2", "TASK2.S0.M1"), kCbeTypeUint);
    CVemBaseNode* v7 = Find(b.get(), "TASK2", "TASK2.V7");
    VemDeleteChildNode(b.get(), v7);
    CVemBaseNode* added = Var("NEW", 60, kCbeTypeInt, 2);
    VemAddChildTail(TaskOf(b.get(), "TASK1"), added);
    VemSetParentSegment(added, 2);
    CSegmentTable* table = VemGetSegmentTable(TaskOf(b.get(), "TASK1"));
    VemBaPatchByte(VemSegTblGetSegment(table, 3), 0, 0xEE);  // code of FBI0 in TASK1
    tVemDeviceSettings settings = *VemGetDeviceSettings(b.get());
    settings.MaxWatchEntries = 65;
    VemSetDeviceSettings(b.get(), settings);
    Diff diff(VemDiffNew(a.get(), b.get()));
    CVemByteArray* oldCode = VemSegTblGetSegment(VemGetSegmentTable(TaskOf(a.get(), "TASK1")), 3);
    const std::vector<std::string> expected = {
        "8  MaxWatchEntries 0 64>65",
        "3 TASK1 TASK1.V1 1 >",
        "3 TASK1 TASK1.V2 2 >",
        "1 TASK1 TASK1.NEW 0 >",
        "6 TASK1 C:\\PRJ\\FB0.st 0 20:" + std::to_string(VemBaComputeCheckSum(oldCode, 0)) +
            ">20:" + std::to_string(VemBaComputeCheckSum(VemSegTblGetSegment(table, 3), 0)),
        "3 TASK2 TASK2.S0.M1 4 >",
        "2 TASK2 TASK2.V7 0 >",
    };
    EXPECT_EQ(Lines(diff.get()), expected);
    EXPECT_EQ(VemDiffVerdict(diff.get()), kVemDiffReinit);
    EXPECT_STREQ(VemDiffReason(diff.get()), "3 variables moved, resized or retyped");
    tVemDiffEntry moved{};
    ASSERT_EQ(VemDiffGetEntry(diff.get(), 1, &moved), 1);
    EXPECT_EQ(moved.OldOffset, vembuild::kDataHeader + vembuild::VariableOffset(1));
    EXPECT_EQ(moved.NewOffset, 40);
    EXPECT_EQ(moved.OldSegment, 2);
    EXPECT_EQ(VemDiffGetEntry(diff.get(), 7, &moved), 0);
}

TEST(LayoutDiff, IncompatibleAndFiles) {
    vembuild::ResourceShape shape;
    Tree a(vembuild::BuildResource(shape));
    shape.alignment = 4;
    shape.tasks = 3;
    Tree b(vembuild::BuildResource(shape));
    Diff diff(VemDiffNew(a.get(), b.get()));
    EXPECT_EQ(VemDiffVerdict(diff.get()), kVemDiffIncompatible);
    EXPECT_STREQ(VemDiffReason(diff.get()), "the target's Alignment differs; task TASK3 is new");
    VemSetName(b.get(), "RES2");
    Diff other(VemDiffNew(a.get(), b.get()));
    EXPECT_EQ(VemDiffVerdict(other.get()), kVemDiffIncompatible);
    EXPECT_STREQ(VemDiffReason(other.get()),
                 "different resources RES1 and RES2; compared: the device settings and the tasks TASK1, TASK2, GLOBAL");
    EXPECT_EQ(Lines(other.get()).front(), "9   0 RES1>RES2");
    EXPECT_EQ(VemDiffNew(a.get(), nullptr), nullptr);
    EXPECT_EQ(VemDiffNew(VemGetFirstNodeOfType(a.get(), kVemTuiTaskNode), a.get()), nullptr);
    // Files: the same resource written twice is equal; a file that does not load gives null.
    vemtest::TempDir dir1, dir2;
    ASSERT_EQ(vembuild::WriteResource(a.get(), dir1.path(), dir1.file("a.vem")), 1);
    Tree again(vembuild::BuildResource(vembuild::ResourceShape{}));
    ASSERT_EQ(vembuild::WriteResource(again.get(), dir2.path(), dir2.file("b.vem")), 1);
    Diff files(VemDiffFiles(dir1.file("a.vem").c_str(), dir2.file("b.vem").c_str()));
    ASSERT_NE(files.get(), nullptr);
    EXPECT_EQ(VemDiffVerdict(files.get()), kVemDiffEqual);
    vemtest::WriteFileText(dir2.file("bad.vem"), "Norvadis_VEM_Version:003 but nothing behind");
    EXPECT_EQ(VemDiffFiles(dir1.file("a.vem").c_str(), dir2.file("bad.vem").c_str()), nullptr);
    EXPECT_EQ(VemDiffFiles(dir1.file("missing.vem").c_str(), dir1.file("a.vem").c_str()), nullptr);
}

}  // namespace
