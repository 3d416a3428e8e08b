// The switch EvemEnabled and the answers of every flat function: switch off, a null node, and a
// node of a kind that does not serve the function.
#include <functional>

#include "evem_test_util.h"

using evemtest::Create;
using evemtest::EVemTest;
using evemtest::NodePtr;

namespace {

std::string Text(long long v) { return std::to_string(v); }
std::string Text(const void* p) { return p ? "node" : "null"; }
std::string Text(const CString& s) { return "'" + s.str() + "'"; }

// One flat function with its three answers as text: switch off, null node, wrong kind.
struct FlatCase {
    const char* name;
    std::function<std::string(CEVemBaseNode*)> call;
    std::string off;
    std::string null;
    std::string wrong;
    tEVemNodeType wrongKind;  // a kind that does not serve the function
};

class EVemSwitch : public EVemTest {
protected:
    // An argument for the functions that take a statement; no case hands it over.
    NodePtr arg = Create(kEVemNotStmtNode);
    CVemByteArray value;

    std::vector<FlatCase> Cases() {
        CEVemBaseNode* a = arg.get();
        CVemByteArray* v = &value;
        CVemBaseNode* vemNode = reinterpret_cast<CVemBaseNode*>(&value);  // only kept, never used
        auto awl = [](CEVemBaseNode* n) {
            u16 line = 77, column = 77;
            const int r = EVemGetAwlPosition(n, line, column);
            return Text(r) + "," + Text(line) + "," + Text(column);
        };
        const auto code = kEVemPouCodeNode;
        const auto base = kEVemNotStmtNode;
        const auto var = kEVemLdVariableStmtNode;
        return {
            // set and give the operation's answer: 1, 0, the answer
            {"SetStatementNode", [=](CEVemBaseNode* n) { return Text(EVemSetStatementNode(n, a)); }, "1", "0", "0",
             base},
            {"SetNext", [=](CEVemBaseNode* n) { return Text(EVemSetNext(n, a)); }, "1", "0", "0", code},
            {"SetPrevious", [=](CEVemBaseNode* n) { return Text(EVemSetPrevious(n, a)); }, "1", "0", "0", code},
            {"SetValue", [=](CEVemBaseNode* n) { return Text(EVemSetValue(n, v)); }, "1", "0", "0", var},
            // set: 1, 0, 1
            {"SetDataSegSize", [](CEVemBaseNode* n) { return Text(EVemSetDataSegSize(n, 3)); }, "1", "0", "1", base},
            {"SetPathName", [](CEVemBaseNode* n) { return Text(EVemSetPathName(n, "P")); }, "1", "0", "1", base},
            {"SetPouType", [](CEVemBaseNode* n) { return Text(EVemSetPouType(n, kEVemPouProg)); }, "1", "0", "1", base},
            {"SetNegOperand", [](CEVemBaseNode* n) { return Text(EVemSetNegOperand(n, 1)); }, "1", "0", "1", base},
            {"SetAccuType", [](CEVemBaseNode* n) { return Text(EVemSetAccuType(n, 1)); }, "1", "0", "1", base},
            {"SetCbeType", [](CEVemBaseNode* n) { return Text(EVemSetCbeType(n, kCbeTypeInt)); }, "1", "0", "1", base},
            {"SetOffset", [](CEVemBaseNode* n) { return Text(EVemSetOffset(n, 5)); }, "1", "0", "1", base},
            {"SetFarOffset", [](CEVemBaseNode* n) { return Text(EVemSetFarOffset(n, 5)); }, "1", "0", "1", base},
            {"SetAddressMode", [](CEVemBaseNode* n) { return Text(EVemSetAddressMode(n, kEVemRefAddress)); }, "1", "0",
             "1", base},
            {"SetVemNode", [=](CEVemBaseNode* n) { return Text(EVemSetVemNode(n, vemNode)); }, "1", "0", "1", base},
            {"SetInstanceNode", [=](CEVemBaseNode* n) { return Text(EVemSetInstanceNode(n, vemNode)); }, "1", "0", "1",
             base},
            {"SetAwlLine", [](CEVemBaseNode* n) { return Text(EVemSetAwlLine(n, 9)); }, "1", "0", "1", code},
            {"SetAwlPosition", [](CEVemBaseNode* n) { return Text(EVemSetAwlPosition(n, 9, 2)); }, "1", "0", "1", code},
            {"SetName", [](CEVemBaseNode* n) { return Text(EVemSetName(n, "N")); }, "1", "0", "1", base},
            {"SetTypeName", [](CEVemBaseNode* n) { return Text(EVemSetTypeName(n, "T")); }, "1", "0", "1", base},
            {"SetLabelNum", [](CEVemBaseNode* n) { return Text(EVemSetLabelNum(n, 4)); }, "1", "0", "1", base},
            {"SetInType", [](CEVemBaseNode* n) { return Text(EVemSetInType(n, kCbeTypeInt)); }, "1", "0", "1", base},
            {"SetOutType", [](CEVemBaseNode* n) { return Text(EVemSetOutType(n, kCbeTypeInt)); }, "1", "0", "1", base},
            {"AddIndexNode", [=](CEVemBaseNode* n) { return Text(EVemAddIndexNode(n, a)); }, "1", "0", "1", var},
            {"SetPrevOperandNode", [=](CEVemBaseNode* n) { return Text(EVemSetPrevOperandNode(n, a)); }, "1", "0", "1",
             var},
            {"SetElementNode", [=](CEVemBaseNode* n) { return Text(EVemSetElementNode(n, vemNode)); }, "1", "0", "1",
             var},
            // string parameters: 0, 0, 1
            {"SetStdStringLParamStmtNode", [=](CEVemBaseNode* n) { return Text(EVemSetStdStringLParamStmtNode(n, a)); },
             "0", "0", "1", base},
            {"SetStdStringPParamStmtNode", [=](CEVemBaseNode* n) { return Text(EVemSetStdStringPParamStmtNode(n, a)); },
             "0", "0", "1", base},
            {"SetStdStringIn2ParamStmtNode",
             [=](CEVemBaseNode* n) { return Text(EVemSetStdStringIn2ParamStmtNode(n, a)); }, "0", "0", "1", base},
            // getters that answer 1 with the switch off
            {"GetNegOperand", [](CEVemBaseNode* n) { return Text(EVemGetNegOperand(n)); }, "1", "0", "0", base},
            {"GetOffset", [](CEVemBaseNode* n) { return Text(EVemGetOffset(n)); }, "1", "0", "0", base},
            {"GetFarOffset", [](CEVemBaseNode* n) { return Text(EVemGetFarOffset(n)); }, "1", "0", "0", base},
            // getters: 0, 0, the value
            {"GetPrevious", [](CEVemBaseNode* n) { return Text(EVemGetPrevious(n)); }, "null", "null", "null", code},
            {"GetNext", [](CEVemBaseNode* n) { return Text(EVemGetNext(n)); }, "null", "null", "null", code},
            {"GetStatementNode", [](CEVemBaseNode* n) { return Text(EVemGetStatementNode(n)); }, "null", "null", "null",
             base},
            {"GetPouType", [](CEVemBaseNode* n) { return Text(EVemGetPouType(n)); }, "0", "0", "0", base},
            {"GetDataSegSize", [](CEVemBaseNode* n) { return Text(EVemGetDataSegSize(n)); }, "0", "0", "0", base},
            {"GetValue", [](CEVemBaseNode* n) { return Text(EVemGetValue(n)); }, "null", "null", "null", var},
            {"GetAccuType", [](CEVemBaseNode* n) { return Text(EVemGetAccuType(n)); }, "0", "0", "0", base},
            {"GetCbeType", [](CEVemBaseNode* n) { return Text(EVemGetCbeType(n)); }, "0", "0", "0", base},
            {"GetVemNode", [](CEVemBaseNode* n) { return Text(EVemGetVemNode(n)); }, "null", "null", "null", base},
            {"GetInstanceNode", [](CEVemBaseNode* n) { return Text(EVemGetInstanceNode(n)); }, "null", "null", "null",
             base},
            {"GetAwlLine", [](CEVemBaseNode* n) { return Text(EVemGetAwlLine(n)); }, "0", "0", "0", code},
            {"GetLabelNum", [](CEVemBaseNode* n) { return Text(EVemGetLabelNum(n)); }, "0", "0", "0", base},
            {"GetInType", [](CEVemBaseNode* n) { return Text(EVemGetInType(n)); }, "0", "0", "0", base},
            {"GetOutType", [](CEVemBaseNode* n) { return Text(EVemGetOutType(n)); }, "0", "0", "0", base},
            {"GetIndexNode", [](CEVemBaseNode* n) { return Text(EVemGetIndexNode(n, 0)); }, "null", "null", "null",
             var},
            {"GetPrevOperandNode", [](CEVemBaseNode* n) { return Text(EVemGetPrevOperandNode(n)); }, "null", "null",
             "null", var},
            {"GetElementNode", [](CEVemBaseNode* n) { return Text(EVemGetElementNode(n)); }, "null", "null", "null",
             var},
            {"GetStdStringLParamStmtNode", [](CEVemBaseNode* n) { return Text(EVemGetStdStringLParamStmtNode(n)); },
             "null", "null", "null", base},
            {"GetStdStringPParamStmtNode", [](CEVemBaseNode* n) { return Text(EVemGetStdStringPParamStmtNode(n)); },
             "null", "null", "null", base},
            {"GetStdStringIn2ParamStmtNode", [](CEVemBaseNode* n) { return Text(EVemGetStdStringIn2ParamStmtNode(n)); },
             "null", "null", "null", base},
            {"GetNodeType", [](CEVemBaseNode* n) { return Text(EVemGetNodeType(n)); }, "0", "0", "38", base},
            // their own answers
            {"GetAwlPosition", awl, "0,77,77", "0,77,77", "1,0,0", code},
            {"GetAddressMode", [](CEVemBaseNode* n) { return Text(EVemGetAddressMode(n)); }, "4", "4", "4", base},
            {"GetIndexCount", [](CEVemBaseNode* n) { return Text(EVemGetIndexCount(n)); }, "-1", "-1", "-1", var},
            {"GetName", [](CEVemBaseNode* n) { return Text(EVemGetName(n)); }, "''", "''", "''", base},
            {"GetTypeName", [](CEVemBaseNode* n) { return Text(EVemGetTypeName(n)); }, "''", "''", "''", var},
            {"GetPathName", [](CEVemBaseNode* n) { return Text(EVemGetPathName(n)); }, "''", "''", "''", base},
        };
    }
};

}  // namespace

TEST_F(EVemSwitch, EveryFlatFunctionGivesItsAnswersWithTheSwitchOffForANullNodeAndForTheWrongKind) {
    for (const FlatCase& c : Cases()) {
        NodePtr node = Create(c.wrongKind == kEVemPouCodeNode ? kEVemLdVariableStmtNode : kEVemPouCodeNode);
        LurSetEvemEnabled(0);
        EXPECT_EQ(c.call(node.get()), c.off) << c.name;
        LurSetEvemEnabled(1);
        EXPECT_EQ(c.call(nullptr), c.null) << c.name;
        NodePtr wrong = Create(c.wrongKind);
        EXPECT_EQ(c.call(wrong.get()), c.wrong) << c.name;
    }
}

TEST_F(EVemSwitch, SettersWithTheSwitchOffChangeNothing) {
    NodePtr var = Create(kEVemLdVariableStmtNode);
    NodePtr code = Create(kEVemPouCodeNode, "Unit");
    const std::string varBefore = evemtest::DumpText(var.get(), "");
    const std::string codeBefore = evemtest::DumpText(code.get(), "");
    LurSetEvemEnabled(0);
    EXPECT_EQ(EVemSetName(var.get(), "x"), 1);
    EXPECT_EQ(EVemSetAwlPosition(var.get(), 3, 4), 1);
    EXPECT_EQ(EVemSetAddressMode(var.get(), kEVemNearAddress), 1);
    EVemSetUcodeOffset(var.get(), 7);
    EXPECT_EQ(EVemSetPathName(code.get(), "P"), 1);
    EXPECT_EQ(EVemSetDataSegSize(code.get(), 9), 1);
    EXPECT_EQ(EVemAddNewStmtNode(code.get(), kEVemLdVariableStmtNode), nullptr);
    EVemDeleteNode(var.get());  // does nothing with the switch off
    LurSetEvemEnabled(1);
    EXPECT_EQ(evemtest::DumpText(var.get(), ""), varBefore);
    EXPECT_EQ(evemtest::DumpText(code.get(), ""), codeBefore);
}

TEST_F(EVemSwitch, NullNodesAreSurvivedByTheFunctionsThatGiveNothing) {
    const long live = CEVemBaseNode::LiveCount();
    EVemDeleteNode(nullptr);
    EVemNodeDump(nullptr, "never-made");
    EVemSetUcodeOffset(nullptr, 1);
    EXPECT_EQ(CEVemBaseNode::LiveCount(), live);
    EXPECT_FALSE(vemtest::FileExists("never-made"));
}

TEST_F(EVemSwitch, TheSwitchIsWord17OfTheToolSettings) {
    auto* record = static_cast<u8*>(LurGetGlobalTobSettings(76));
    ASSERT_NE(record, nullptr);
    const i32 off = 0;
    const i32 on = 0x100;  // any value but 0 switches on
    std::memcpy(record + 68, &off, sizeof off);
    EXPECT_EQ(EVemCreateNode(kEVemPouCodeNode, ""), nullptr);
    std::memcpy(record + 68, &on, sizeof on);
    NodePtr node = Create(kEVemPouCodeNode);
    EXPECT_NE(node, nullptr);
}
