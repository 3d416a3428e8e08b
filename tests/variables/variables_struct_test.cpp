// Structures and function block instances: member lookup, and an instance's lookup of its function
// block.
#include "test_util.h"
#include "variables/struct.h"

using vemtest::NewNode;
using vemtest::TempDir;

namespace {

CVemBaseNode* Member(const char* name, u16 offset, tCbeVarScope scope = 0) {
    return VemCreateCVemVariableNode(name, offset, kCbeTypeInt, 2, scope);
}

CVemBaseNode* NewStruct(const char* name, u16 offset, u16 size) {
    CVemBaseNode* s = vemtest::NewNode(kVemStructNode, name);
    VemSetOffset(s, offset);
    VemSetSize(s, size);
    return s;
}

CVemBaseNode* NewInstance(const char* name, const char* typeName) {
    CVemBaseNode* i = vemtest::NewNode(kVemFbInstanceNode, name);
    VemSetTypeName(i, typeName);
    return i;
}

// A stand-in for the compiled task: any node of type 16.
CVemBaseNode* NewTask(const char* name) { return new CVemBaseNode(kVemTuiTaskNode, name, 1); }

CVemBaseNode* NewFb(const char* name) { return VemCreateCVemFbNode(name, ""); }

// Appends the children in order and gives back the parent.
CVemBaseNode* With(CVemBaseNode* parent, std::initializer_list<CVemBaseNode*> children) {
    for (CVemBaseNode* child : children) VemAddChildTail(parent, child);
    return parent;
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

TEST(VariablesInstance, FindsItsFunctionBlockBelowGlobalResourceTwoLevelsUp) {
    // resource > TASKS > task > program > instance, and resource > "Global - Resource" > global task.
    CVemBaseNode* instance = NewInstance("A", "T");
    CVemBaseNode* task = With(NewTask("T1"), {With(VemNewNode(kVemProgramNode), {instance})});
    CVemBaseNode* fb = NewFb("A : T");
    CVemBaseNode* global = With(NewNode(kVemBaseNode, "Global - Resource"),
                                {With(NewTask("G1"), {NewFb("B : T")}), With(NewTask("G2"), {fb, NewFb("A : T")})});
    CVemBaseNode* resource = With(NewNode(kVemBaseNode, "RES"), {With(NewNode(kVemBaseNode, "TASKS"), {task}), global});
    EXPECT_EQ(VemGetReferenceNode(instance), fb);

    // One found below the task itself comes first.
    CVemBaseNode* local = vemtest::Add(task, NewFb("A : T"));
    EXPECT_EQ(VemGetReferenceNode(instance), local);
    VemDeleteChildNode(resource, local);

    // The global node must be of type 1 and bear exactly that name.
    VemSetName(global, "Global - resource");
    EXPECT_EQ(VemGetReferenceNode(instance), nullptr);
    VemDeleteNode(resource);
}

TEST(VariablesInstance, FindsNothingOutsideATask) {
    CVemBaseNode* instance = NewInstance("A", "T");
    CVemBaseNode* root = With(NewNode(kVemBaseNode, "R"), {NewFb("A : T"), instance});
    EXPECT_EQ(VemGetReferenceNode(instance), nullptr);
    VemDeleteNode(root);

    CVemBaseNode* alone = NewInstance("A", "T");
    EXPECT_EQ(VemGetReferenceNode(alone), nullptr);
    VemDeleteNode(alone);
}

// Chosen behaviour: a task with no node two levels above it has no global level to search.
TEST(VariablesInstance, TaskWithoutTwoLevelsAboveFindsOnlyItsOwn) {
    CVemBaseNode* instance = NewInstance("A", "T");
    CVemBaseNode* global = With(NewNode(kVemBaseNode, "Global - Resource"), {With(NewTask("G"), {NewFb("A : T")})});
    CVemBaseNode* parent = With(NewNode(kVemBaseNode, "P"), {With(NewTask("T1"), {instance}), global});
    EXPECT_EQ(VemGetReferenceNode(instance), nullptr);
    VemDeleteNode(parent);
}
