// Variable nodes: node text, segments, setters that reach the children. A variable with every field
// is a hostile record (store, load, cuts, clone); its dump is a golden file.
#include "test_util.h"
#include "variables/variable.h"

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

// The flat getters of fields that a store and a load carry without them.
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
    EXPECT_EQ(VemIsNetVar(v), 0);
    VemSetNetVar(v, 1);
    EXPECT_EQ(VemIsNetVar(v), 1);
    EXPECT_EQ(v->SetNetVar(0), 1);
    EXPECT_EQ(VemGetVarQualifier(v), 0u);
    VemSetVarQualifier(v, 7);
    EXPECT_EQ(VemGetVarQualifier(v), 7u);
    VemDeleteNode(v);
}

TEST(VariablesNode, PlainNamesOfTheDataTypes) {
    EXPECT_STREQ(vem::CbeTypeName(kCbeTypeUndef), "UNDEF");
    EXPECT_STREQ(vem::CbeTypeName(kCbeTypeTod), "TIME_OF_DAY");
    EXPECT_STREQ(vem::CbeTypeName(kCbeTypeReal48), "REAL48");
    EXPECT_STREQ(vem::CbeTypeName(kCbeTypeAddress), "");
    EXPECT_STREQ(vem::CbeTypeName(static_cast<tCbeType>(39)), "");
    EXPECT_STREQ(vem::CbeTypeName(kCbeTypeCount), "");
}
