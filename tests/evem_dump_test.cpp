// Dumps of the statement model: the head of every node, the lines of each class, the values of
// constants by type, and a code node's dump file.
#include "evem_test_util.h"

using evemtest::Create;
using evemtest::DumpText;
using evemtest::EVemTest;
using evemtest::NodePtr;
using evemtest::PointerText;

namespace {

const std::string kNull = PointerText(nullptr);

std::string Head(const std::string& p, const std::string& type) {
    return "\n" + p + "Version = 3\n" + p + "NodeType = " + type + "\n";
}

std::string Statement(const std::string& p, const std::string& type, const std::string& offset = "52685") {
    return Head(p, type) + p + "AWL Position = 0 0\n" + p + "UCODE Offset = " + offset + "\n";
}

std::string Operator(const std::string& p, const std::string& type, const std::string& cbe = "unknown Cbe type",
                     const std::string& neg = "FALSE", const std::string& accu = "shadow") {
    return Statement(p, type) + p + "CbeType = " + cbe + "\n" + p + "NegOperand = " + neg + "\n" + p +
           "AccuType = " + accu + "\n";
}

std::string Variable(const std::string& p, const std::string& type, const std::string& name,
                     const std::string& mode, const void* vemNode = nullptr) {
    return Operator(p, type) + p + "Name = " + name + p + "AddressMode = " + mode + p + "NearOffset = 0\n" + p +
           "FarOffset = 0\n" + p + "VemNode = " + PointerText(vemNode) + "\n" + p + "VemInstanceNode = " + kNull +
           "\n";
}

// A new constant statement of that type holding the bytes.
NodePtr Constant(tCbeType type, const std::vector<u8>& bytes) {
    NodePtr s = Create(kEVemLdConstStmtNode);
    CVemByteArray value;
    if (!bytes.empty()) value.Append(bytes.data(), static_cast<unsigned>(bytes.size()));
    EVemSetValue(s.get(), &value);
    EVemSetCbeType(s.get(), type);
    return s;
}

std::string ValueLine(tCbeType type, const std::vector<u8>& bytes) {
    const std::string dump = DumpText(Constant(type, bytes).get(), "");
    const auto at = dump.find("Value = ");
    return dump.substr(at + 8);
}

}  // namespace

TEST_F(EVemTest, NewStatementDumpsTheUnsetCodeOffset) {
    NodePtr s = Create(kEVemNotStmtNode);
    EXPECT_EQ(DumpText(s.get(), "P>"), Statement("P>", "kEVemNotStmtNode"));
    EVemSetAwlPosition(s.get(), 12, 3);
    EVemSetUcodeOffset(s.get(), 0x20);
    EXPECT_EQ(DumpText(s.get(), ""), Head("", "kEVemNotStmtNode") + "AWL Position = 12 3\nUCODE Offset = 32\n");
}

TEST_F(EVemTest, KindsZeroAndOneDumpWithTheirTrailingBlank) {
    const CRuntimeClass* cls = CRuntimeClass::FromName("CEVemBaseNode");
    ASSERT_NE(cls, nullptr);
    NodePtr bare(static_cast<CEVemBaseNode*>(cls->CreateObject()));
    EXPECT_EQ(DumpText(bare.get(), "-"), Head("-", "kEVemBaseNode "));
    CMemFile file(vemtest::Bytes().u16_(3).u16_(0).v);  // base record of kind 0
    CArchive ar(&file, CArchive::load);
    bare->Serialize(ar);
    EXPECT_EQ(DumpText(bare.get(), "-"), Head("-", "kEVemUndefNode "));
}

TEST_F(EVemTest, EveryKindDumpsItsOwnName) {
    const std::pair<tEVemNodeType, const char*> kinds[] = {
        {kEVemLdConstStmtNode, "kEVemLdConstStmtNode"},
        {kEVemParXornIndexedVarStmtNode, "kEVemParXornIndexedVarStmtNode"},
        {kEVemIndexedRefStmtNode, "kEVemIndexedRefStmtNode"}};
    for (const auto& [kind, name] : kinds)
        EXPECT_EQ(DumpText(Create(kind).get(), "").substr(0, Head("", name).size()), Head("", name));
}

TEST_F(EVemTest, OperationOnATypeDumpsTheTypeName) {
    NodePtr abs = Create(kEVemStdAbsStmtNode);
    const std::string base = Statement("", "kEVemStdAbsStmtNode");
    EXPECT_EQ(DumpText(abs.get(), ""), base + "CbeType = unknown Cbe type\n");
    const std::pair<u32, const char*> names[] = {{1, "kCbeTypeBool"},     {14, "kCbeTypeTod"},
                                                 {37, "kCbeTypeWString"}, {40, "kCbeTypeCount"},
                                                 {38, "unknown Cbe type"}, {0, "unknown Cbe type"}};
    for (const auto& [type, name] : names) {
        EVemSetCbeType(abs.get(), static_cast<tCbeType>(type));
        EXPECT_EQ(DumpText(abs.get(), ""), base + "CbeType = " + name + "\n") << type;
    }
}

TEST_F(EVemTest, OperatorDumpsSignAndAccumulator) {
    NodePtr s = Create(kEVemAddVarStmtNode);
    EVemSetNegOperand(s.get(), 1);
    EVemSetAccuType(s.get(), 1);
    EXPECT_EQ(DumpText(s.get(), ""),
              Operator("", "kEVemAddVarStmtNode", "unknown Cbe type", "TRUE", "normal") + "Name = AddressMode = " +
                  "unknown address mode\nNearOffset = 0\nFarOffset = 0\nVemNode = " + kNull +
                  "\nVemInstanceNode = " + kNull + "\n");
    EVemSetNegOperand(s.get(), 2);  // only 1 reads as negated
    EVemSetAccuType(s.get(), 2);    // every other value is the shadow accumulator
    EXPECT_NE(DumpText(s.get(), "").find("NegOperand = FALSE\nAccuType = shadow\n"), std::string::npos);
}

TEST_F(EVemTest, VariableStatementDumpsItsOperand) {
    NodePtr s = Create(kEVemLdVariableStmtNode);
    auto* vemNode = reinterpret_cast<CVemBaseNode*>(0xAB0);
    EVemSetName(s.get(), "inst.x");
    EVemSetVemNode(s.get(), vemNode);
    const std::pair<tEVemAddressMode, const char*> modes[] = {{kEVemFarAddress, "kEVemFarAddress\n"},
                                                              {kEVemNearAddress, "kEVemNearAddress\n"},
                                                              {kEVemRefAddress, "kEVemRefAddress\n"},
                                                              {kEVemIndAddress, "kEVemIndAddress\n"},
                                                              {kEVemNoAddressMode, "unknown address mode\n"}};
    for (const auto& [mode, text] : modes) {
        EVemSetAddressMode(s.get(), mode);
        EXPECT_EQ(DumpText(s.get(), ">"), Variable(">", "kEVemLdVariableStmtNode", "inst.x", text, vemNode));
    }
}

TEST_F(EVemTest, NewAndLoadedVariableStatementsDumpAlike) {
    NodePtr s = Create(kEVemStVariableStmtNode);
    NodePtr loaded = evemtest::LoadRecord(evemtest::StoreRecord(s.get()), kEVemStVariableStmtNode);
    const std::string expected = Variable("", "kEVemStVariableStmtNode", "", "unknown address mode\n");
    EXPECT_EQ(DumpText(s.get(), ""), expected);
    EXPECT_EQ(DumpText(loaded.get(), ""), expected);
}

TEST_F(EVemTest, ArrayStatementDumpsItsIndexesAndPrecedingOperand) {
    NodePtr s = Create(kEVemLdIndexedVarStmtNode);
    CEVemBaseNode* i0 = EVemCreateNode(kEVemLdConstStmtNode, "");
    CEVemBaseNode* i1 = EVemCreateNode(kEVemNotStmtNode, "");
    CEVemBaseNode* prev = EVemCreateNode(kEVemNegStmtNode, "");
    EVemAddIndexNode(s.get(), i0);
    EVemAddIndexNode(s.get(), i1);
    EVemSetPrevOperandNode(s.get(), prev);
    const std::string p = "#";
    const std::string expected =
        Variable(p, "kEVemLdIndexedVarStmtNode", "", "unknown address mode\n") + p + "Element node = " + kNull +
        "\n" + p + "Index count = 2\n" + p + "Index 0 = " + PointerText(i0) + "\n" +
        Operator(p, "kEVemLdConstStmtNode") + p + "Value = unknown or complex type; no dump possible\n" + p +
        "Index 1 = " + PointerText(i1) + "\n" + Statement(p, "kEVemNotStmtNode") + Statement(p, "kEVemNegStmtNode");
    EXPECT_EQ(DumpText(s.get(), "#"), expected);
}

TEST_F(EVemTest, ConstantDumpsItsValueByType) {
    const std::string unknown = "unknown or complex type; no dump possible\n";
    EXPECT_EQ(ValueLine(kCbeTypeBool, {0xAB}), "ab\n");
    EXPECT_EQ(ValueLine(kCbeTypeBit, {0x01}), "1\n");
    EXPECT_EQ(ValueLine(kCbeTypeByte, {200}), "200\n");
    EXPECT_EQ(ValueLine(kCbeTypeUsint, {7}), "7\n");
    EXPECT_EQ(ValueLine(kCbeTypeWord, {0xFE, 0xFF}), "65534\n");
    EXPECT_EQ(ValueLine(kCbeTypeUint, {0x34, 0x12}), "4660\n");
    EXPECT_EQ(ValueLine(kCbeTypeEnum, {3, 0}), "3\n");
    EXPECT_EQ(ValueLine(kCbeTypeDword, {0xFF, 0xFF, 0xFF, 0xFF}), "4294967295\n");
    EXPECT_EQ(ValueLine(kCbeTypeUdint, {1, 0, 1, 0}), "65537\n");
    EXPECT_EQ(ValueLine(kCbeTypeTime, {0xE8, 0x03, 0, 0}), "1000\n");
    EXPECT_EQ(ValueLine(kCbeTypeSint, {0xFF}), "-1\n");
    EXPECT_EQ(ValueLine(kCbeTypeInt, {0x00, 0x80}), "-32768\n");
    EXPECT_EQ(ValueLine(kCbeTypeDint, {0, 0, 0, 0x80}), "-2147483648\n");
    EXPECT_EQ(ValueLine(kCbeTypeReal, {0, 0, 0xC0, 0x3F}), "1.500000\n");
    EXPECT_EQ(ValueLine(kCbeTypeDate, {0xE8, 0x07, 3, 7}), "2024-03-07\n");
    EXPECT_EQ(ValueLine(kCbeTypeTod, {9, 5, 0}), "09:05:00\n");
    EXPECT_EQ(ValueLine(kCbeTypeLreal, {0, 0, 0, 0, 0, 0, 0x02, 0xC0}), "-2.250000\n");
    EXPECT_EQ(ValueLine(kCbeTypeString, {3, 3, 'a', 'b', 'c', 0, 'z'}), "abc\n");
    for (tCbeType other : {kCbeTypeUndef, kCbeTypeDt, kCbeTypeLword, kCbeTypeArray, kCbeTypeWString, kCbeTypeCount})
        EXPECT_EQ(ValueLine(other, {1, 2, 3, 4}), unknown) << other;
}

TEST_F(EVemTest, ConstantBytesThatAreMissingReadAsZero) {
    EXPECT_EQ(ValueLine(kCbeTypeDword, {5}), "5\n");
    EXPECT_EQ(ValueLine(kCbeTypeString, {3}), "\n");
    NodePtr bare = Create(kEVemAddConstStmtNode);  // no value at all
    EVemSetCbeType(bare.get(), kCbeTypeInt);
    EXPECT_EQ(DumpText(bare.get(), ""), Operator("", "kEVemAddConstStmtNode", "kCbeTypeInt") + "Value = 0\n");
}

TEST_F(EVemTest, LabelAndCallDumpTheirNamesAndNumbers) {
    NodePtr label = Create(kEVemLabelDefStmtNode, "L1");
    EVemSetLabelNum(label.get(), 7);
    EVemSetOffset(label.get(), 68);
    const std::string labelLines = "Name = L1Type name = Label Number = 7\nOffset = 68\n";
    EXPECT_EQ(DumpText(label.get(), ""), Statement("", "kEVemLabelDefStmtNode") + labelLines);

    NodePtr call = Create(kEVemCalFunStmtNode, "F");
    EVemSetTypeName(call.get(), "FUN");
    EXPECT_EQ(DumpText(call.get(), "."), Statement(".", "kEVemCalFunStmtNode") +
                                             ".Name = F.Type name = FUN.Label Number = 0\n.Offset = 0\n" +
                                             ".VemNode = " + kNull + "\n");
}

TEST_F(EVemTest, ReferenceAndConversionDumpTheirFields) {
    NodePtr ref = Create(kEVemStRefStmtNode);
    EVemSetOffset(ref.get(), 1);
    EVemSetFarOffset(ref.get(), 2);
    EXPECT_EQ(DumpText(ref.get(), ""),
              Statement("", "kEVemStRefStmtNode") + "Offset = 1\nFarOffset = 2\nVemNode = " + kNull + "\n");

    NodePtr conv = Create(kEVemBcdToTypeStmtNode);
    EVemSetInType(conv.get(), kCbeTypeWord);
    EVemSetOutType(conv.get(), kCbeTypeInt);
    EXPECT_EQ(DumpText(conv.get(), ""),
              Statement("", "kEVemBcdToTypeStmtNode") + "InType = kCbeTypeWord\nOutType = kCbeTypeInt\n");
}

TEST_F(EVemTest, StringStatementsDumpTheirParameters) {
    NodePtr replace = Create(kEVemStdStringReplaceStmtNode);
    CEVemBaseNode* p = EVemCreateNode(kEVemNotStmtNode, "");
    EVemSetStdStringPParamStmtNode(replace.get(), p);
    EXPECT_EQ(DumpText(replace.get(), ""), Statement("", "kEVemStdStringReplaceStmtNode") + "PParamStmtNode = " +
                                               PointerText(p) + "\n" + Statement("", "kEVemNotStmtNode") +
                                               "LParamStmtNode = " + kNull + "\nIn2ParamStmtNode = " + kNull + "\n");
    NodePtr insert = Create(kEVemStdStringInsertStmtNode);
    EXPECT_EQ(DumpText(insert.get(), ""), Statement("", "kEVemStdStringInsertStmtNode") + "PParamStmtNode = " +
                                              kNull + "\nIn2ParamStmtNode = " + kNull + "\n");
    NodePtr del = Create(kEVemStdStringDeleteStmtNode);
    EXPECT_EQ(DumpText(del.get(), ""), Statement("", "kEVemStdStringDeleteStmtNode") + "PParamStmtNode = " + kNull +
                                           "\nLParamStmtNode = " + kNull + "\n");
}

TEST_F(EVemTest, CodeNodeDumpFileHoldsTheUnitAndItsStatements) {
    vemtest::TempDir dir;
    const std::string path = dir.file("unit.txt");
    vemtest::WriteFileText(path, "an older dump that is longer than the new one, which replaces it whole\n");
    NodePtr code = Create(kEVemPouCodeNode, "Unit");
    EVemSetPathName(code.get(), "U");
    EVemSetPouType(code.get(), kEVemPouFunction);
    EVemSetDataSegSize(code.get(), 4);
    EVemAddNewStmtNode(code.get(), kEVemNotStmtNode);
    EVemAddNewStmtNode(code.get(), kEVemReturnStmtNode);
    EVemNodeDump(code.get(), path.c_str());
    EXPECT_EQ(vemtest::ReadFileText(path),
              Head("->>", "kEVemPouCodeNode") +
                  "->>PouName = Unit->>PouPathName = U->>PouType = kEVemPouFunction->>LocalDataSegSize: 4\n"
                  "->>STATEMENTNODES:\r\n" +
                  Statement("->>- ", "kEVemNotStmtNode") + Statement("->>- ", "kEVemReturnStmtNode"));
}

TEST_F(EVemTest, NewCodeNodeDumpsNothingBehindItsKind) {
    NodePtr code = Create(kEVemPouCodeNode, "");
    EXPECT_EQ(DumpText(code.get(), ""), Head("", "kEVemPouCodeNode") +
                                            "PouName = PouPathName = PouType = LocalDataSegSize: 0\nSTATEMENTNODES:\r\n");
    EVemSetPouType(code.get(), kEVemPouFunctionBlock);
    EXPECT_NE(DumpText(code.get(), "").find("PouType = kEVemPouFunctionBlockLocal"), std::string::npos);
}

TEST_F(EVemTest, DumpToAFileThatCannotBeMadeWritesNothing) {
    vemtest::TempDir dir;
    NodePtr code = Create(kEVemPouCodeNode, "U");
    const std::string path = dir.file("missing/unit.txt");
    EVemNodeDump(code.get(), path.c_str());
    EXPECT_FALSE(vemtest::FileExists(path));
    NodePtr statement = Create(kEVemNotStmtNode);  // only code nodes write dump files
    EVemNodeDump(statement.get(), dir.file("s.txt").c_str());
    EXPECT_FALSE(vemtest::FileExists(dir.file("s.txt")));
}
