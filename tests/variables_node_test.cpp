// Variable nodes: construction, node text, offsets, segments, setters that reach the children,
// dump and clone.
#include "test_util.h"
#include "variables/variable.h"

using vemtest::ReadFileText;
using vemtest::TempDir;

namespace {

CVemBaseNode* NewVariable(const char* name, u16 offset, tCbeType type, u16 size, tCbeVarScope scope = 0) {
    return VemCreateCVemVariableNode(name, offset, type, size, scope);
}

// Keeps the debug flag at 0 outside the test that sets it.
struct DebugFlag {
    explicit DebugFlag(int value) { VemSetDebugFlag(value); }
    ~DebugFlag() { VemSetDebugFlag(0); }
};

}  // namespace

// The arguments and the defaults that the dump shows are covered by the dump test.
TEST(VariablesNode, NewVariableHoldsItsArgumentsAndDefaults) {
    CVemBaseNode* v = NewVariable("V", 4, kCbeTypeInt, 2, 3);
    EXPECT_EQ(VemGetNodeType(v), kVemVariableNode);
    EXPECT_EQ(VemGetParamVarOffset(v), 4);
    EXPECT_EQ(VemIsNetVar(v), 0);
    EXPECT_EQ(VemGetSubSegmentKind(v), kIpSegCode);
    EXPECT_EQ(VemGetVarQualifier(v), 0u);
    EXPECT_EQ(v->Serial, 0xFFFFFFFFu);  // the creator gives no serial
    // Operations of other classes answer the base's defaults.
    EXPECT_EQ(VemGetCrSize(v), 12345);
    EXPECT_EQ(v->GetStartOffset(), 0xFFFFFFFFu);
    VemDeleteNode(v);
}

TEST(VariablesNode, NodeTypeFollowsTheDataType) {
    const std::pair<tCbeType, tVemNodeType> cases[] = {
        {kCbeTypeArray, kVemArrayNode},   {kCbeTypeStruct, kVemStructNode},  {kCbeTypeFbInstance, kVemFbInstanceNode},
        {kCbeTypeBool, kVemVariableNode}, {kCbeTypeUndef, kVemVariableNode}, {kCbeTypeArrayOfStruct, kVemVariableNode},
    };
    for (const auto& [type, nodeType] : cases) {
        CVemBaseNode* v = NewVariable("V", 0, type, 0);
        EXPECT_EQ(VemGetNodeType(v), nodeType) << type;
        EXPECT_EQ(v->HasSymbol, nodeType == kVemVariableNode ? 0 : 1) << type;
        VemDeleteNode(v);
    }
}

TEST(VariablesNode, NewNodeMakesAnEmptyVariableWithASerial) {
    CVemBaseNode* v = VemNewNode(kVemVariableNode);
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v->GetRuntimeClass(), RUNTIME_CLASS(CVemVariableNode));
    EXPECT_NE(v->Serial, 0xFFFFFFFFu);
    EXPECT_EQ(VemGetName(v), "");
    EXPECT_EQ(VemGetVariableType(v), kCbeTypeUndef);
    VemDeleteNode(v);
}

TEST(VariablesNode, NodeTextWithAndWithoutTheDebugFlag) {
    CVemBaseNode* v = NewVariable("X", 16, kCbeTypeInt, 2);
    EXPECT_EQ(VemGetNodeText(v), "X");
    VemSetTypeName(v, "INT");
    EXPECT_EQ(VemGetNodeText(v), "X : INT");
    VemSetParentSegment(v, 5);
    VemSetProgramNr(v, 3);
    {
        DebugFlag debug(1);
        EXPECT_EQ(VemGetNodeText(v), "X : INT | Offset: 10 | Size: 2 | Seg: 5  | Ref: 0 | Prg: 3");
        VemSetParentSegment(v, 0x2005);  // bits above the 13 of a segment number do not show
        VemSetReference(v, 1);
        EXPECT_EQ(VemGetNodeText(v), "X : INT | Offset: 10 | Size: 2 | Seg: 5  | Ref: 1 | Prg: 3");
    }
    EXPECT_EQ(VemGetName(v), "X");
    VemDeleteNode(v);
}

TEST(VariablesNode, ComputeOffsetsAddsTheStartOfTheSubSegmentEachTimeInSixteenBits) {
    const u16 starts[] = {0, 100, 200};
    CVemBaseNode* v = NewVariable("V", 6, kCbeTypeInt, 2);
    VemSetSubSegmentKind(v, kIpSegInit);
    EXPECT_EQ(VemComputeOffsets(v, starts), 1);
    EXPECT_EQ(VemGetOffset(v), 206);
    EXPECT_EQ(VemComputeOffsets(v, starts), 1);
    EXPECT_EQ(VemGetOffset(v), 406);
    // Offsets wrap in sixteen bits.
    VemSetOffset(v, 0xFFFF);
    VemSetSubSegmentKind(v, kIpSegData);
    VemComputeOffsets(v, starts);
    EXPECT_EQ(VemGetOffset(v), 99);
    EXPECT_EQ(v->ShiftOffsets(0x1FFFF), 1);
    EXPECT_EQ(VemGetOffset(v), 98);
    VemDeleteNode(v);
}

TEST(VariablesNode, ScopeEightKeepsItsSegmentUnlessItIsAReference) {
    CVemBaseNode* own = NewVariable("A", 0, kCbeTypeInt, 2, 8);
    VemSetParentSegment(own, 7);
    EXPECT_EQ(VemGetParentSegment(own), 0xFFFF);
    VemSetReference(own, 1);
    VemSetParentSegment(own, 7);
    EXPECT_EQ(VemGetParentSegment(own), 7);

    CVemBaseNode* other = NewVariable("B", 0, kCbeTypeInt, 2, 9);
    VemSetParentSegment(other, 7);
    EXPECT_EQ(VemGetParentSegment(other), 7);
    VemDeleteNode(own);
    VemDeleteNode(other);
}

TEST(VariablesNode, SettersReachTheChildren) {
    CVemBaseNode* parent = NewVariable("P", 0, kCbeTypeUser, 8);
    CVemBaseNode* a = NewVariable("A", 0, kCbeTypeInt, 2);
    CVemBaseNode* b = NewVariable("B", 2, kCbeTypeInt, 2);
    VemAddChildTail(parent, a);
    VemAddChildTail(parent, b);

    VemVariableCanBeWatched(parent, 0);
    EXPECT_EQ(VemCanVariableBeWatched(parent), 0);
    EXPECT_EQ(VemCanVariableBeWatched(a), 0);
    EXPECT_EQ(VemCanVariableBeWatched(b), 0);

    VemSetVarInOut(parent, 1);
    EXPECT_EQ(VemGetVarInOut(a), 1);
    VemSetVarInOut(parent, 0);
    EXPECT_EQ(VemGetVarInOut(b), 0);

    // The members of a reference become in/out, not references.
    VemSetReference(parent, 1);
    EXPECT_EQ(VemIsReference(parent), 1);
    EXPECT_EQ(VemGetVarInOut(parent), 0);
    EXPECT_EQ(VemGetVarInOut(a), 1);
    EXPECT_EQ(VemGetVarInOut(b), 1);
    EXPECT_EQ(VemIsReference(a), 0);

    // A plain variable keeps its program number to itself.
    VemSetProgramNr(parent, 4);
    EXPECT_EQ(VemGetProgramNr(parent), 4);
    EXPECT_EQ(VemGetProgramNr(a), 0);
    VemDeleteNode(parent);
}

// The other setters are covered through a store and a load of the node.
TEST(VariablesNode, SettersThatAnswerOrKeepSomething) {
    CVemBaseNode* v = NewVariable("V", 0, kCbeTypeInt, 2);
    VemSetVariableType(v, kCbeTypeArray);
    EXPECT_EQ(VemGetVariableType(v), kCbeTypeArray);
    EXPECT_EQ(VemGetNodeType(v), kVemVariableNode);  // only the constructor settles the node type
    VemSetDclPosition(v, 11, 12);
    unsigned a = 0, b = 0;
    VemGetDclPosition(v, a, b);
    EXPECT_EQ(a, 11u);
    EXPECT_EQ(b, 12u);
    VemSetNetVar(v, 1);
    EXPECT_EQ(VemIsNetVar(v), 1);
    EXPECT_EQ(v->SetNetVar(0), 1);
    VemDeleteNode(v);
}

TEST(VariablesNode, CloneCopiesEveryFieldAndTheChildren) {
    CVemBaseNode* source = NewVariable("V", 4, kCbeTypeInt, 2, 5);
    auto* v = static_cast<CVemVariableNode*>(source);
    v->Reference = 1;
    v->ParentSegment = 3;
    v->SubSegmentKind = kIpSegInit;
    v->NetVar = 1;
    v->TypeName = "T";
    v->ProgramNr = 6;
    v->CanBeWatched = 0;
    v->VarInOut = 1;
    v->VarQualifier = 7;
    v->InstanceText = "I";
    v->PiLocation = "%QX0.1";
    v->DclPositionA = 8;
    v->DclPositionB = 9;
    VemAddChildTail(v, NewVariable("C", 0, kCbeTypeBool, 1));

    CVemBaseNode* clone = VemClone(v);
    auto* c = static_cast<CVemVariableNode*>(clone);
    ASSERT_EQ(c->GetRuntimeClass(), RUNTIME_CLASS(CVemVariableNode));
    // The file holds every field of the variable and its child.
    TempDir dir;
    ASSERT_EQ(VemWriteNode(source, dir.file("s.vem").c_str()), 1);
    ASSERT_EQ(VemWriteNode(clone, dir.file("c.vem").c_str()), 1);
    EXPECT_EQ(vemtest::ReadFileBytes(dir.file("c.vem")), vemtest::ReadFileBytes(dir.file("s.vem")));
    EXPECT_EQ(c->Parent, nullptr);
    ASSERT_EQ(c->Children.GetCount(), 1);
    auto* child = static_cast<CVemBaseNode*>(c->Children.GetHead());
    EXPECT_EQ(child->GetRuntimeClass(), RUNTIME_CLASS(CVemVariableNode));
    EXPECT_EQ(child->Parent, c);
    VemDeleteNode(source);
    VemDeleteNode(clone);
}

TEST(VariablesNode, PlainNamesOfTheDataTypes) {
    EXPECT_STREQ(VemCbeTypeName(kCbeTypeUndef), "UNDEF");
    EXPECT_STREQ(VemCbeTypeName(kCbeTypeTod), "TIME_OF_DAY");
    EXPECT_STREQ(VemCbeTypeName(kCbeTypeReal48), "REAL48");
    EXPECT_STREQ(VemCbeTypeName(kCbeTypeAddress), "");
    EXPECT_STREQ(VemCbeTypeName(static_cast<tCbeType>(39)), "");
    EXPECT_STREQ(VemCbeTypeName(kCbeTypeCount), "");
}
