// EVemGetStatementFields answers as the single functions do: for every kind, a null node and the
// switch off.
#include <cstdint>

#include "evem_test_util.h"

namespace {

std::string Show(const CString& s) { return "'" + s.str() + "'"; }
std::string Show(const void* p) { return std::to_string(reinterpret_cast<std::uintptr_t>(p)); }
std::string Show(long long v) { return std::to_string(v); }

template <class... Field>
std::string Text(const Field&... fields) {
    std::string text;
    ((text += Show(fields) + ' '), ...);
    return text;
}

std::string OneByOne(CEVemBaseNode* n) {
    u16 line = 0, column = 0;
    EVemGetAwlPosition(n, line, column);
    return Text(EVemGetNodeType(n), line, column, EVemGetUcodeOffset(n), EVemGetNegOperand(n), EVemGetAccuType(n),
                EVemGetCbeType(n), EVemGetAddressMode(n), EVemGetOffset(n), EVemGetFarOffset(n), EVemGetLabelNum(n),
                EVemGetInType(n), EVemGetOutType(n), EVemGetIndexCount(n), EVemGetName(n), EVemGetTypeName(n),
                EVemGetValue(n), EVemGetVemNode(n), EVemGetInstanceNode(n), EVemGetElementNode(n),
                EVemGetStdStringLParamStmtNode(n), EVemGetStdStringPParamStmtNode(n),
                EVemGetStdStringIn2ParamStmtNode(n));
}

std::string AtOnce(CEVemBaseNode* n, int served) {
    tEVemStatementFields f{};
    EXPECT_EQ(EVemGetStatementFields(n, &f), served);
    return Text(f.Type, f.AwlLine, f.AwlColumn, f.UcodeOffset, f.NegOperand, f.AccuType, f.CbeType, f.AddressMode,
                f.Offset, f.FarOffset, f.LabelNum, f.InType, f.OutType, f.IndexCount, f.Name, f.TypeName, f.Value,
                f.VemNode, f.InstanceNode, f.ElementNode, f.StdStringLParam, f.StdStringPParam, f.StdStringIn2Param);
}

using StatementFields = evemtest::EVemTest;

}  // namespace

TEST_F(StatementFields, AreTheAnswersOfTheSingleFunctions) {
    CVemByteArray value;
    for (int kind = kEVemPouCodeNode; kind < kEVemNodeTypeCount; ++kind) {
        evemtest::NodePtr node = evemtest::Create(static_cast<tEVemNodeType>(kind), "L1");
        if (!node) continue;
        CEVemBaseNode* n = node.get();
        EVemSetName(n, "OPERAND");
        EVemSetTypeName(n, "MOTOR_T");
        EVemSetAwlPosition(n, 12, 3);
        EVemSetUcodeOffset(n, 0x40);
        EVemSetNegOperand(n, 1);
        EVemSetAccuType(n, 5);
        EVemSetCbeType(n, kCbeTypeInt);
        EVemSetAddressMode(n, kEVemNearAddress);
        EVemSetOffset(n, 6);
        EVemSetFarOffset(n, 7);
        EVemSetLabelNum(n, 8);
        EVemSetValue(n, &value);
        EXPECT_EQ(AtOnce(n, 1), OneByOne(n)) << "kind " << kind;
    }
    EXPECT_EQ(AtOnce(nullptr, 0), OneByOne(nullptr));
    evemtest::NodePtr node = evemtest::Create(kEVemLdVariableStmtNode, "");
    LurSetEvemEnabled(0);
    EXPECT_EQ(AtOnce(node.get(), 0), OneByOne(node.get()));
    EXPECT_EQ(EVemGetStatementFields(node.get(), nullptr), 0);
    LurSetEvemEnabled(1);  // a delete with the switch off would leave the node behind
}
