// The statement model in memory: the factory, appending, links, and what each class keeps.
#include "evem_test_util.h"

using evemtest::ChainTypes;
using evemtest::Create;
using evemtest::EVemTest;
using evemtest::NodePtr;

namespace {

// The class that each kind makes, from the table of kinds: ranges of kinds with their class.
struct KindRange {
    int first;
    int last;
    const char* cls;
};

const char* ExpectedClass(int type) {
    static const std::vector<int> constRows = {
        7,  14, 17, 20, 23, 26, 29,  32,  35,  39,  42,  45,  48,  51,  54,  57,  60,  63,  66,  70,  73,  76, 79,
        82, 85, 88, 91, 94, 97, 100, 103, 106, 109, 143, 144, 145, 146, 151, 152, 153, 154, 161, 163, 166, 171};
    static const KindRange ranges[] = {
        {3, 3, "CEVemPouCodeNode"},
        {8, 8, "CEVemOpOnVarStmtNode"},
        {9, 9, "CEVemArrayOperatorStmtNode"},
        {10, 10, "CEVemOpOnVarStmtNode"},
        {11, 11, "CEVemArrayOperatorStmtNode"},
        {12, 13, "CEVemOpOnVarStmtNode"},
        {38, 38, "CEVemBaseStmtNode"},
        {69, 69, "CEVemBaseStmtNode"},
        {112, 115, "CEVemConvStmtNode"},
        {116, 119, "CEVemJumpLabelStmtNode"},
        {120, 123, "CEVemCalStmtNode"},
        {124, 126, "CEVemBaseStmtNode"},
        {127, 130, "CEVemReferenceStmtNode"},
        {132, 141, "CEVemBaseStmtNode"},
        {142, 142, "CEVemOpOnTypeStmtNode"},
        {147, 150, "CEVemOpOnVarStmtNode"},
        {155, 158, "CEVemOpOnVarStmtNode"},
        {159, 159, "CEVemBaseStmtNode"},
        {160, 160, "CEVemOpOnVarStmtNode"},
        {162, 162, "CEVemOpOnVarStmtNode"},
        {164, 164, "CEVemStdStringMidDelNode"},
        {165, 165, "CEVemOpOnVarStmtNode"},
        {167, 167, "CEVemStdStringInsertNode"},
        {168, 168, "CEVemStdStringMidDelNode"},
        {169, 169, "CEVemStdStringReplaceNode"},
        {170, 170, "CEVemOpOnVarStmtNode"},
        {172, 175, "CEVemBaseStmtNode"},
        {176, 177, "CEVemCalStmtNode"},
        {178, 186, "CEVemArrayOperatorStmtNode"},
    };
    for (int row : constRows)
        if (row == type) return "CEVemOpOnConstStmtNode";
    for (const KindRange& r : ranges)
        if (type >= r.first && type <= r.last) return r.cls;
    // The operators from 14 to 111 repeat constant, variable, indexed in their six rows.
    if (type >= 14 && type <= 111 && type != 38 && type != 69) {
        const int inGroup = (type < 38 ? type - 14 : type < 69 ? type - 39 : type - 70) % 3;
        return inGroup == 1 ? "CEVemOpOnVarStmtNode" : "CEVemArrayOperatorStmtNode";
    }
    return nullptr;  // 0 to 2, 4 to 6, 131
}

std::string ClassOf(CEVemBaseNode* node) { return node->GetRuntimeClass()->m_lpszClassName; }

}  // namespace

TEST_F(EVemTest, CreateNodeMakesTheClassOfEachKind) {
    for (int type = -1; type <= 187; ++type) {
        NodePtr node = Create(static_cast<tEVemNodeType>(type), "N");
        const char* expected = type >= 0 && type < 187 ? ExpectedClass(type) : nullptr;
        if (!expected) {
            EXPECT_EQ(node, nullptr) << type;
            continue;
        }
        ASSERT_NE(node, nullptr) << type;
        EXPECT_EQ(ClassOf(node.get()), expected) << type;
        EXPECT_EQ(EVemGetNodeType(node.get()), type);
    }
}

TEST_F(EVemTest, OnlyCodeNodesLabelsAndCallsTakeTheName) {
    EXPECT_EQ(EVemGetName(Create(kEVemPouCodeNode, "Unit").get()), "Unit");
    EXPECT_EQ(EVemGetName(Create(kEVemJmpStmtNode, "L1").get()), "L1");
    EXPECT_EQ(EVemGetName(Create(kEVemCalFbStmtNode, "Inst").get()), "Inst");
    EXPECT_EQ(EVemGetName(Create(kEVemLdVariableStmtNode, "x").get()), "");
    EXPECT_EQ(EVemGetPouType(Create(kEVemPouCodeNode, "Unit").get()), kEVemPouUndef);
}

TEST_F(EVemTest, AddNewStmtNodeMakesStatementsOnly) {
    NodePtr code = Create(kEVemPouCodeNode, "U");
    for (int type : {0, 3, 5, 6, 131, 187, -1})
        EXPECT_EQ(EVemAddNewStmtNode(code.get(), static_cast<tEVemNodeType>(type)), nullptr) << type;
    EXPECT_EQ(EVemGetStatementNode(code.get()), nullptr);
    EXPECT_EQ(EVemAddNewStmtNode(nullptr, kEVemNotStmtNode), nullptr);
}

TEST_F(EVemTest, AppendingBuildsTheChainInOrder) {
    NodePtr code = Create(kEVemPouCodeNode, "U");
    CEVemBaseNode* first = EVemAddNewStmtNode(code.get(), kEVemLdVariableStmtNode);
    CEVemBaseNode* second = EVemAddNewStmtNode(code.get(), kEVemAddConstStmtNode);
    CEVemBaseNode* third = EVemAddNewStmtNode(code.get(), kEVemStVariableStmtNode);
    EXPECT_EQ(EVemGetStatementNode(code.get()), first);
    EXPECT_EQ(ChainTypes(first), (std::vector<int>{8, 14, 10}));
    EXPECT_EQ(EVemGetPrevious(first), code.get());
    EXPECT_EQ(EVemGetPrevious(second), first);
    EXPECT_EQ(EVemGetPrevious(third), second);
    EXPECT_EQ(EVemGetNext(third), nullptr);
}

TEST_F(EVemTest, ASetChainTakesNoAppendsAndTheCallerKeepsTheNewStatement) {
    NodePtr code = Create(kEVemPouCodeNode, "U");
    CEVemBaseNode* head = EVemCreateNode(kEVemNotStmtNode, "");
    ASSERT_EQ(EVemSetStatementNode(code.get(), head), 1);  // the code node owns it from here
    CEVemBaseNode* added = EVemAddNewStmtNode(code.get(), kEVemNegStmtNode);
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(EVemGetNext(head), nullptr);
    EXPECT_EQ(EVemGetPrevious(added), nullptr);
    EVemDeleteNode(added);  // it stands outside the chain
    EXPECT_EQ(EVemSetStatementNode(code.get(), nullptr), 0);
    EXPECT_EQ(EVemSetStatementNode(code.get(), code.get()), 0);  // a kind below 6
    EXPECT_EQ(EVemGetStatementNode(code.get()), head);
}

// Appending goes behind the statement appended last, wherever the chain was changed since.
TEST_F(EVemTest, AppendingFollowsTheLastAppendedStatement) {
    NodePtr code = Create(kEVemPouCodeNode, "U");
    CEVemBaseNode* a = EVemAddNewStmtNode(code.get(), kEVemLdVariableStmtNode);
    CEVemBaseNode* b = EVemAddNewStmtNode(code.get(), kEVemNotStmtNode);
    CEVemBaseNode* x = EVemCreateNode(kEVemNegStmtNode, "");
    ASSERT_EQ(EVemSetNext(b, x), 1);
    CEVemBaseNode* c = EVemAddNewStmtNode(code.get(), kEVemStVariableStmtNode);
    EXPECT_EQ(EVemGetNext(b), c);  // x falls out of the chain and stays the caller's
    EXPECT_EQ(EVemGetPrevious(c), b);
    EVemDeleteNode(x);

    // A new head keeps the end that appending knew.
    CEVemBaseNode* head = EVemCreateNode(kEVemNotStmtNode, "");
    ASSERT_EQ(EVemSetStatementNode(code.get(), head), 1);
    CEVemBaseNode* d = EVemAddNewStmtNode(code.get(), kEVemNegStmtNode);
    EXPECT_EQ(EVemGetNext(c), d);
    EXPECT_EQ(EVemGetPrevious(d), c);
    EXPECT_EQ(ChainTypes(head), std::vector<int>{38});
    // The old chain is no longer the code node's.
    EVemSetStatementNode(code.get(), a);
    EVemDeleteNode(head);
}

TEST_F(EVemTest, LinksRefuseWhatCannotStandInAChain) {
    NodePtr a = Create(kEVemNotStmtNode);
    NodePtr b = Create(kEVemNegStmtNode);
    NodePtr code = Create(kEVemPouCodeNode, "U");
    EXPECT_EQ(EVemSetNext(a.get(), code.get()), 0);
    EXPECT_EQ(EVemSetNext(a.get(), nullptr), 0);
    EXPECT_EQ(EVemGetNext(a.get()), nullptr);
    EXPECT_EQ(EVemSetNext(a.get(), b.get()), 1);
    EXPECT_EQ(EVemGetNext(a.get()), b.get());
    EXPECT_EQ(EVemGetPrevious(b.get()), nullptr);  // SetNext links one way only
    EXPECT_EQ(EVemSetPrevious(b.get(), code.get()), 1);
    EXPECT_EQ(EVemSetPrevious(b.get(), nullptr), 0);
    EXPECT_EQ(EVemGetPrevious(b.get()), code.get());
}

TEST_F(EVemTest, DeletingAStatementLeavesItsNeighbours) {
    NodePtr code = Create(kEVemPouCodeNode, "U");
    CEVemBaseNode* first = EVemAddNewStmtNode(code.get(), kEVemNotStmtNode);
    CEVemBaseNode* second = EVemAddNewStmtNode(code.get(), kEVemNegStmtNode);
    const long live = CEVemBaseNode::LiveCount();
    EVemSetNext(first, EVemAddNewStmtNode(code.get(), kEVemNotStmtNode));  // unlink the second
    EVemDeleteNode(second);
    EXPECT_EQ(CEVemBaseNode::LiveCount(), live);  // one made, one deleted
    EXPECT_EQ(ChainTypes(first), (std::vector<int>{38, 38}));
}

TEST_F(EVemTest, AppendingToAStatementPutsTheNewOneRightBehindIt) {
    NodePtr code = Create(kEVemPouCodeNode, "U");
    CEVemBaseNode* first = EVemAddNewStmtNode(code.get(), kEVemNotStmtNode);
    EVemAddNewStmtNode(code.get(), kEVemNegStmtNode);
    CEVemBaseNode* inserted = EVemAddNewStmtNode(first, kEVemReturnStmtNode);
    EXPECT_EQ(ChainTypes(first), (std::vector<int>{38, 172, 175}));
    EXPECT_EQ(EVemGetPrevious(inserted), first);
    EVemAddNewStmtNode(code.get(), kEVemReturncStmtNode);  // the code node still appends at the end
    EXPECT_EQ(ChainTypes(first), (std::vector<int>{38, 172, 175, 173}));
}

// Name, offsets and address mode are covered through the record of a code node.
TEST_F(EVemTest, VariableStatementKeepsItsOperand) {
    NodePtr s = Create(kEVemLdVariableStmtNode);
    auto* vemNode = reinterpret_cast<CVemBaseNode*>(0x1000);  // borrowed, never touched
    auto* instance = reinterpret_cast<CVemBaseNode*>(0x2000);
    EXPECT_EQ(EVemGetAddressMode(s.get()), kEVemNoAddressMode);
    EVemSetVemNode(s.get(), vemNode);
    EVemSetInstanceNode(s.get(), instance);
    EVemSetCbeType(s.get(), kCbeTypeInt);
    EVemSetNegOperand(s.get(), 1);
    EVemSetAccuType(s.get(), 1);
    EXPECT_EQ(EVemGetVemNode(s.get()), vemNode);
    EXPECT_EQ(EVemGetInstanceNode(s.get()), instance);
    EXPECT_EQ(EVemGetCbeType(s.get()), kCbeTypeInt);
    EXPECT_EQ(EVemGetNegOperand(s.get()), 1);
    EXPECT_EQ(EVemGetAccuType(s.get()), 1u);
    // A statement keeps every bit of what was set, in the object or beside it, and back to the default.
    NodePtr t = Create(kEVemLdVariableStmtNode);
    for (const u32 mode : {0x12345u, 0x10000u, 3u}) {
        EVemSetAddressMode(t.get(), static_cast<tEVemAddressMode>(mode));
        EXPECT_EQ(EVemGetAddressMode(t.get()), mode);
    }
    EVemSetNegOperand(s.get(), -7);
    EVemSetVemNode(s.get(), nullptr);
    EVemSetCbeType(s.get(), kCbeTypeUndef);
    EXPECT_EQ(EVemGetNegOperand(s.get()), -7);
    EXPECT_EQ(EVemGetVemNode(s.get()), nullptr);
    EXPECT_EQ(EVemGetCbeType(s.get()), kCbeTypeUndef);
    EXPECT_EQ(EVemGetInstanceNode(s.get()), instance);
}

TEST_F(EVemTest, AwlPositionAndLine) {
    NodePtr s = Create(kEVemNotStmtNode);
    EXPECT_EQ(EVemSetAwlPosition(s.get(), 12, 3), 1);
    u16 line = 0, column = 0;
    EXPECT_EQ(EVemGetAwlPosition(s.get(), line, column), 1);
    EXPECT_EQ((std::pair<int, int>{line, column}), (std::pair<int, int>{12, 3}));
    EVemSetAwlLine(s.get(), 40);
    EVemGetAwlPosition(s.get(), line, column);
    EXPECT_EQ((std::pair<int, int>{line, column}), (std::pair<int, int>{40, 3}));
    EXPECT_EQ(EVemGetAwlLine(s.get()), 40);
}

TEST_F(EVemTest, ConstantStatementKeepsAClone) {
    NodePtr s = Create(kEVemLdConstStmtNode);
    CVemByteArray value;
    value.AppendWord(0x1234);
    EXPECT_EQ(EVemSetValue(s.get(), &value), 1);
    CVemByteArray* held = EVemGetValue(s.get());
    ASSERT_NE(held, nullptr);
    EXPECT_NE(held, &value);
    value.AppendByte(9);
    EXPECT_EQ(held->GetLength(), 2u);
    EXPECT_EQ(EVemSetValue(s.get(), nullptr), 0);
    EXPECT_EQ(EVemGetValue(s.get()), held);
}

TEST_F(EVemTest, ArrayStatementOwnsItsIndexesAndPrecedingOperand) {
    const long live = CEVemBaseNode::LiveCount();
    {
        NodePtr s = Create(kEVemLdIndexedVarStmtNode);
        CEVemBaseNode* i0 = EVemCreateNode(kEVemLdConstStmtNode, "");
        CEVemBaseNode* i1 = EVemCreateNode(kEVemLdVariableStmtNode, "");
        EVemAddIndexNode(s.get(), i0);
        EVemAddIndexNode(s.get(), i1);
        EXPECT_EQ(EVemGetIndexCount(s.get()), 2);
        EXPECT_EQ(EVemGetIndexNode(s.get(), 0), i0);
        EXPECT_EQ(EVemGetIndexNode(s.get(), 1), i1);
        EXPECT_THROW(EVemGetIndexNode(s.get(), 2), CInvalidArgException);
        EXPECT_THROW(EVemGetIndexNode(s.get(), -1), CInvalidArgException);
        EVemAddIndexNode(s.get(), nullptr);  // counted like any other
        EXPECT_EQ(EVemGetIndexCount(s.get()), 3);
        EXPECT_EQ(EVemGetIndexNode(s.get(), 2), nullptr);
        CEVemBaseNode* replaced = EVemCreateNode(kEVemLdVariableStmtNode, "");
        EVemSetPrevOperandNode(s.get(), replaced);
        EVemSetPrevOperandNode(s.get(), EVemCreateNode(kEVemLdVariableStmtNode, ""));
        EXPECT_EQ(CEVemBaseNode::LiveCount(), live + 5);  // the replaced one is the caller's again
        EVemDeleteNode(replaced);
        auto* element = reinterpret_cast<CVemBaseNode*>(0x3000);
        EVemSetElementNode(s.get(), element);
        EXPECT_EQ(EVemGetElementNode(s.get()), element);
        EXPECT_NE(EVemGetPrevOperandNode(s.get()), nullptr);
        EXPECT_EQ(CEVemBaseNode::LiveCount(), live + 4);
    }
    EXPECT_EQ(CEVemBaseNode::LiveCount(), live);
}

TEST_F(EVemTest, StringStatementsOwnTheirParameters) {
    const long live = CEVemBaseNode::LiveCount();
    {
        NodePtr mid = Create(kEVemStdStringMidStmtNode);
        NodePtr insert = Create(kEVemStdStringInsertStmtNode);
        NodePtr replace = Create(kEVemStdStringReplaceStmtNode);
        for (CEVemBaseNode* s : {mid.get(), insert.get(), replace.get()})
            EXPECT_EQ(EVemSetStdStringPParamStmtNode(s, EVemCreateNode(kEVemLdConstStmtNode, "")), 1);
        EVemSetStdStringLParamStmtNode(mid.get(), EVemCreateNode(kEVemLdConstStmtNode, ""));
        EVemSetStdStringLParamStmtNode(replace.get(), EVemCreateNode(kEVemLdConstStmtNode, ""));
        EVemSetStdStringIn2ParamStmtNode(insert.get(), EVemCreateNode(kEVemLdVariableStmtNode, ""));
        EVemSetStdStringIn2ParamStmtNode(replace.get(), EVemCreateNode(kEVemLdVariableStmtNode, ""));
        EXPECT_EQ(EVemGetStdStringIn2ParamStmtNode(mid.get()), nullptr);   // MID has no second input
        EXPECT_EQ(EVemGetStdStringLParamStmtNode(insert.get()), nullptr);  // INSERT has no L
        EXPECT_NE(EVemGetStdStringLParamStmtNode(replace.get()), nullptr);
        EXPECT_NE(EVemGetStdStringIn2ParamStmtNode(insert.get()), nullptr);
        EXPECT_EQ(CEVemBaseNode::LiveCount(), live + 10);
    }
    EXPECT_EQ(CEVemBaseNode::LiveCount(), live);
}

// The fields of a label are covered through its record.
TEST_F(EVemTest, CallReferenceAndConversionKeepTheirFields) {
    NodePtr call = Create(kEVemCalFbStmtNode, "Inst");
    auto* fb = reinterpret_cast<CVemBaseNode*>(0x4000);
    EVemSetVemNode(call.get(), fb);
    EXPECT_EQ(EVemGetVemNode(call.get()), fb);
    EXPECT_EQ(EVemGetInstanceNode(call.get()), nullptr);  // a call has no instance node

    NodePtr ref = Create(kEVemCreateRefStmtNode);
    EVemSetOffset(ref.get(), 1);
    EVemSetFarOffset(ref.get(), 2);
    EVemSetInstanceNode(ref.get(), fb);
    EXPECT_EQ(EVemGetOffset(ref.get()), 1);
    EXPECT_EQ(EVemGetFarOffset(ref.get()), 2);
    EXPECT_EQ(EVemGetInstanceNode(ref.get()), fb);
    EXPECT_EQ(EVemGetName(ref.get()), "");

    NodePtr conv = Create(kEVemTypecastStmtNode);
    EVemSetInType(conv.get(), kCbeTypeInt);
    EVemSetOutType(conv.get(), kCbeTypeReal);
    EXPECT_EQ(EVemGetInType(conv.get()), kCbeTypeInt);
    EXPECT_EQ(EVemGetOutType(conv.get()), kCbeTypeReal);
}

TEST_F(EVemTest, UcodeOffsetIsSetOnStatementsOnly) {
    NodePtr s = Create(kEVemNotStmtNode);
    NodePtr code = Create(kEVemPouCodeNode, "U");
    EVemSetUcodeOffset(s.get(), 0x20);
    EVemSetUcodeOffset(code.get(), 0x20);
    EXPECT_NE(evemtest::DumpText(s.get(), "").find("UCODE Offset = 32\n"), std::string::npos);
}
