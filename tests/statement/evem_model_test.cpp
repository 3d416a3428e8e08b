// The statement model in memory: the factory, appending, links, and what each class keeps.
#include "evem_test_util.h"

using evemtest::ChainTypes;
using evemtest::Create;
using evemtest::EVemTest;
using evemtest::NodePtr;

TEST_F(EVemTest, AddNewStmtNodeMakesStatementsOnly) {
    NodePtr code = Create(kEVemPouCodeNode, "U");
    for (int type : {0, 3, 5, 6, 131, 187, -1})
        EXPECT_EQ(EVemAddNewStmtNode(code.get(), static_cast<tEVemNodeType>(type)), nullptr) << type;
    EXPECT_EQ(EVemGetStatementNode(code.get()), nullptr);
    EXPECT_EQ(EVemAddNewStmtNode(nullptr, kEVemNotStmtNode), nullptr);
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
