// Structures and function block instances: member offsets, segments and program numbers, member
// lookup, and an instance's lookup of its function block.
#include "test_util.h"
#include "variables/struct.h"

using vemtest::TempDir;

namespace {

CVemBaseNode* Member(const char* name, u16 offset, tCbeVarScope scope = 0) {
    return VemCreateCVemVariableNode(name, offset, kCbeTypeInt, 2, scope);
}

CVemBaseNode* NewStruct(const char* name, u16 offset, u16 size) {
    CVemBaseNode* s = VemNewNode(kVemStructNode);
    VemSetName(s, name);
    VemSetOffset(s, offset);
    VemSetSize(s, size);
    return s;
}

CVemBaseNode* NewInstance(const char* name, const char* typeName) {
    CVemBaseNode* i = VemNewNode(kVemFbInstanceNode);
    VemSetName(i, name);
    VemSetTypeName(i, typeName);
    return i;
}

// A stand-in for the compiled task: any node of type 16.
CVemBaseNode* NewTask(const char* name) { return new CVemBaseNode(kVemTuiTaskNode, name, 1); }

CVemBaseNode* NewBase(const char* name) {
    CVemBaseNode* n = VemNewNode(kVemBaseNode);
    VemSetName(n, name);
    return n;
}

CVemBaseNode* NewFb(const char* name) { return VemCreateCVemFbNode(name, ""); }

// Appends the children in order and gives back the parent.
CVemBaseNode* With(CVemBaseNode* parent, std::initializer_list<CVemBaseNode*> children) {
    for (CVemBaseNode* child : children) VemAddChildTail(parent, child);
    return parent;
}

CVemBaseNode* ChildAt(CVemBaseNode* parent, int index) {
    return static_cast<CVemBaseNode*>(parent->Children.GetAt(parent->Children.FindIndex(index)));
}

}  // namespace

TEST(VariablesStruct, NewStructure) {
    CVemBaseNode* s = VemNewNode(kVemStructNode);
    ASSERT_EQ(s->GetRuntimeClass(), RUNTIME_CLASS(CVemStructNode));
    EXPECT_EQ(VemGetNodeType(s), kVemStructNode);
    EXPECT_EQ(VemGetVariableType(s), kCbeTypeStruct);
    EXPECT_EQ(VemGetScope(s), 0u);
    VemDeleteNode(s);
    CVemStructNode direct("S", 3, 12);
    EXPECT_EQ(direct.Offset, 3);
    EXPECT_EQ(direct.Size, 12);
}

TEST(VariablesStruct, MembersGetTheSumOfTheOffsetsAbove) {
    CVemBaseNode* inner = With(NewStruct("N", 8, 4), {Member("B", 2)});
    CVemBaseNode* outer = With(NewStruct("S", 100, 12), {Member("A", 4), inner});
    const u16 starts[] = {0};
    EXPECT_EQ(VemComputeOffsets(outer, starts), 1);
    EXPECT_EQ(VemGetOffset(outer), 100);
    EXPECT_EQ(VemGetOffset(ChildAt(outer, 0)), 104);
    EXPECT_EQ(VemGetOffset(inner), 108);
    EXPECT_EQ(VemGetOffset(ChildAt(inner, 0)), 110);
    VemDeleteNode(outer);
}

TEST(VariablesStruct, OnlyTheStructureTakesTheStartOfItsSubSegment) {
    CVemBaseNode* s = NewStruct("S", 10, 4);
    VemSetSubSegmentKind(s, kIpSegData);
    CVemBaseNode* m = Member("A", 2);
    VemSetSubSegmentKind(m, kIpSegInit);  // plays no part in a member
    VemAddChildTail(s, m);
    const u16 starts[] = {0, 50, 1000};
    VemComputeOffsets(s, starts);
    EXPECT_EQ(VemGetOffset(s), 60);
    EXPECT_EQ(VemGetOffset(m), 62);
    VemDeleteNode(s);
}

TEST(VariablesStruct, SegmentReachesTheMembersWhateverTheStructuresOwnRule) {
    CVemBaseNode* s = NewStruct("S", 0, 4);
    CVemBaseNode* m = Member("A", 0);
    CVemBaseNode* own = Member("B", 2, 8);  // a member of scope 8 keeps to its own rule
    With(s, {m, own});
    VemSetParentSegment(s, 7);
    EXPECT_EQ(VemGetParentSegment(s), 7);
    EXPECT_EQ(VemGetParentSegment(m), 7);
    EXPECT_EQ(VemGetParentSegment(own), 0xFFFF);

    // A structure of scope 8 keeps its number, and its members take that number.
    VemSetScope(s, 8);
    VemSetParentSegment(s, 9);
    EXPECT_EQ(VemGetParentSegment(s), 7);
    EXPECT_EQ(VemGetParentSegment(m), 7);
    VemDeleteNode(s);
}

TEST(VariablesStruct, ProgramNumberReachesTheWholeSubtree) {
    CVemBaseNode* inner = With(NewStruct("N", 0, 4), {Member("A", 0)});
    CVemBaseNode* outer = With(NewStruct("S", 0, 8), {inner});
    VemSetProgramNr(outer, 5);
    EXPECT_EQ(VemGetProgramNr(outer), 5);
    EXPECT_EQ(VemGetProgramNr(inner), 5);
    EXPECT_EQ(VemGetProgramNr(ChildAt(inner, 0)), 5);
    VemDeleteNode(outer);
}

TEST(VariablesStruct, MembersAreFoundByTheirBareNameAmongTheDirectChildren) {
    CVemBaseNode* s = NewStruct("S", 0, 8);
    CVemBaseNode* a = Member("A", 0);
    VemSetTypeName(a, "INT");
    CVemBaseNode* inner = With(NewStruct("N", 2, 4), {Member("DEEP", 0)});
    With(s, {a, inner});
    EXPECT_EQ(VemGetChildNodeByName(s, "A"), a);
    EXPECT_EQ(VemGetChildNodeByName(s, "N"), inner);
    EXPECT_EQ(VemGetChildNodeByName(s, "a"), nullptr);
    EXPECT_EQ(VemGetChildNodeByName(s, "A : INT"), nullptr);
    EXPECT_EQ(VemGetChildNodeByName(s, "DEEP"), nullptr);

    CVemBaseNode* plain = With(Member("P", 0), {Member("A", 0)});
    EXPECT_EQ(VemGetChildNodeByName(plain, "A"), nullptr);
    VemDeleteNode(s);
    VemDeleteNode(plain);
}

TEST(VariablesStruct, StructureRecordIsTheVariableRecordAndMembersComeBack) {
    TempDir dir;
    CVemBaseNode* s = NewStruct("S", 6, 4);
    VemSetTypeName(s, "POINT");
    With(s, {Member("X", 0), Member("Y", 2)});
    ASSERT_EQ(VemWriteNode(s, dir.file("s.vem").c_str()), 1);
    CVemBaseNode* loaded = VemLoadNode(dir.file("s.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->GetRuntimeClass(), RUNTIME_CLASS(CVemStructNode));
    EXPECT_EQ(VemGetOffset(loaded), 6);
    EXPECT_EQ(VemGetTypeName(loaded), "POINT");
    ASSERT_EQ(loaded->Children.GetCount(), 2);
    EXPECT_EQ(VemGetName(ChildAt(loaded, 1)), "Y");
    EXPECT_EQ(VemGetOffset(ChildAt(loaded, 1)), 2);

    // A plain variable of the structure data type, with the same fields, gives the same bytes.
    CVemBaseNode* v = VemCreateCVemVariableNode("S", 6, kCbeTypeStruct, 4, 0);
    VemSetTypeName(v, "POINT");
    With(v, {Member("X", 0), Member("Y", 2)});
    ASSERT_EQ(VemWriteNode(v, dir.file("v.vem").c_str()), 1);
    EXPECT_EQ(vemtest::ReadFileBytes(dir.file("v.vem")), vemtest::ReadFileBytes(dir.file("s.vem")));
    VemDeleteNode(s);
    VemDeleteNode(loaded);
    VemDeleteNode(v);
}

TEST(VariablesStruct, CloneIsAStructureWithItsMembers) {
    CVemBaseNode* s = NewStruct("S", 6, 4);
    VemSetParentSegment(s, 3);
    VemAddChildTail(s, Member("X", 0));
    CVemBaseNode* c = VemClone(s);
    EXPECT_EQ(c->GetRuntimeClass(), RUNTIME_CLASS(CVemStructNode));
    EXPECT_EQ(VemGetOffset(c), 6);
    EXPECT_EQ(VemGetParentSegment(c), 3);
    EXPECT_EQ(c->Children.GetCount(), 1);
    VemDeleteNode(s);
    VemDeleteNode(c);
}

TEST(VariablesInstance, NewInstance) {
    CVemBaseNode* i = VemNewNode(kVemFbInstanceNode);
    ASSERT_EQ(i->GetRuntimeClass(), RUNTIME_CLASS(CVemFbInstanceNode));
    EXPECT_EQ(VemGetNodeType(i), kVemFbInstanceNode);
    EXPECT_EQ(VemGetVariableType(i), kCbeTypeFbInstance);
    EXPECT_EQ(VemGetSize(i), 4);
    EXPECT_EQ(VemIsPredefined(i), 0);
    VemDeleteNode(i);
    CVemFbInstanceNode direct("I", 12, "text");
    EXPECT_EQ(direct.InstanceText, "text");
    EXPECT_EQ(direct.Offset, 12);
    EXPECT_EQ(direct.Size, 4);
}

TEST(VariablesInstance, PredefinedIsNotStoredButCloned) {
    TempDir dir;
    CVemBaseNode* i = NewInstance("I", "TON");
    VemSetPredefinedFlag(i, 1);
    EXPECT_EQ(VemIsPredefined(i), 1);
    ASSERT_EQ(VemWriteNode(i, dir.file("i.vem").c_str()), 1);
    CVemBaseNode* loaded = VemLoadNode(dir.file("i.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->GetRuntimeClass(), RUNTIME_CLASS(CVemFbInstanceNode));
    EXPECT_EQ(VemIsPredefined(loaded), 0);
    EXPECT_EQ(VemGetTypeName(loaded), "TON");
    EXPECT_EQ(VemGetSize(loaded), 4);
    VemDeleteNode(loaded);
    // Chosen behaviour: a clone stands for the same function block and keeps the flag.
    CVemBaseNode* c = VemClone(i);
    EXPECT_EQ(c->GetRuntimeClass(), RUNTIME_CLASS(CVemFbInstanceNode));
    EXPECT_EQ(VemIsPredefined(c), 1);
    EXPECT_EQ(VemGetTypeName(c), "TON");
    VemDeleteNode(i);
    VemDeleteNode(c);
}

TEST(VariablesInstance, FindsItsFunctionBlockBelowTheTask) {
    CVemBaseNode* fb = NewFb("A : T");
    CVemBaseNode* instance = NewInstance("A", "T");
    CVemBaseNode* task = With(NewTask("T1"), {NewFb("A : U"), fb, With(VemNewNode(kVemProgramNode), {instance})});
    EXPECT_EQ(VemGetReferenceNode(instance), fb);
    // Only the type 4 counts.
    VemSetName(fb, "other");
    VemAddChildTail(task, VemCreateCVemFunctionNode("A : T", ""));
    EXPECT_EQ(VemGetReferenceNode(instance), nullptr);
    VemDeleteNode(task);
}

TEST(VariablesInstance, FindsItsFunctionBlockBelowGlobalResourceTwoLevelsUp) {
    // resource > TASKS > task > program > instance, and resource > "Global - Resource" > global task.
    CVemBaseNode* instance = NewInstance("A", "T");
    CVemBaseNode* task = With(NewTask("T1"), {With(VemNewNode(kVemProgramNode), {instance})});
    CVemBaseNode* fb = NewFb("A : T");
    CVemBaseNode* global = With(NewBase("Global - Resource"),
                                {With(NewTask("G1"), {NewFb("B : T")}), With(NewTask("G2"), {fb, NewFb("A : T")})});
    CVemBaseNode* resource = With(NewBase("RES"), {With(NewBase("TASKS"), {task}), global});
    EXPECT_EQ(VemGetReferenceNode(instance), fb);

    // One found below the task itself comes first.
    CVemBaseNode* local = NewFb("A : T");
    VemAddChildTail(task, local);
    EXPECT_EQ(VemGetReferenceNode(instance), local);
    VemDeleteChildNode(resource, local);

    // The global node must be of type 1 and bear exactly that name.
    VemSetName(global, "Global - resource");
    EXPECT_EQ(VemGetReferenceNode(instance), nullptr);
    VemDeleteNode(resource);
}

TEST(VariablesInstance, FindsNothingOutsideATask) {
    CVemBaseNode* instance = NewInstance("A", "T");
    CVemBaseNode* root = With(NewBase("R"), {NewFb("A : T"), instance});
    EXPECT_EQ(VemGetReferenceNode(instance), nullptr);
    VemDeleteNode(root);

    CVemBaseNode* alone = NewInstance("A", "T");
    EXPECT_EQ(VemGetReferenceNode(alone), nullptr);
    VemDeleteNode(alone);
}

// Chosen behaviour: a task with no node two levels above it has no global level to search.
TEST(VariablesInstance, TaskWithoutTwoLevelsAboveFindsOnlyItsOwn) {
    CVemBaseNode* instance = NewInstance("A", "T");
    CVemBaseNode* global = With(NewBase("Global - Resource"), {With(NewTask("G"), {NewFb("A : T")})});
    CVemBaseNode* parent = With(NewBase("P"), {With(NewTask("T1"), {instance}), global});
    EXPECT_EQ(VemGetReferenceNode(instance), nullptr);
    VemDeleteNode(parent);
}
