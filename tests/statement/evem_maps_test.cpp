// Line maps: the code offset and the statement of each source line of a unit, found by its path
// among the executable's code nodes, and their part in the executable's dump.
#include "evem_xref_test_util.h"
#include "statement/evemlist.h"

using evemtest::EVemTest;
using vemtest::MessageCapture;
using xreftest::AddUnit;
using xreftest::Append;
using xreftest::Entries;
using xreftest::MakeExe;
using xreftest::StatementAt;
using xreftest::TreePtr;

using Lines = std::vector<std::string>;

namespace {

constexpr const char* kPath = "C:\\PRJ\\MAIN.POU";
constexpr const char* kNotExe = "EVemFillAwlLine2UcodeOffsetMap:: Passed Node is not of type CVemExeNode !";

// A load and a store in line 5, an addition in line 6.
std::vector<CEVemBaseNode*> LoadStoreAdd(CEVemBaseNode* unit) {
    return Append(unit, {{kEVemLdVariableStmtNode, 5, 0x10, "a"},
                         {kEVemStVariableStmtNode, 5, 0x14, "b"},
                         {kEVemAddVarStmtNode, 6, 0x18, "c"}});
}

Lines OffsetMap(CVemBaseNode* exe, const char* path) {
    CMapStringToString map;
    EXPECT_EQ(EVemFillAwlLine2UcodeOffsetMap(exe, path, &map), 1);
    return Entries(map);
}

}  // namespace

TEST_F(EVemTest, LineMapsKeepOutLineZeroAndShowUnplacedCode) {
    TreePtr exe = MakeExe();
    CEVemBaseNode* unit = AddUnit(exe.get(), kPath);
    Append(unit, {{kEVemLdVariableStmtNode, 0, 0x30, "a"},
                  {kEVemStVariableStmtNode, 3},  // never placed: 0xCDCD
                  {kEVemLdConstStmtNode, 65535, 0xFFFF}});
    EXPECT_EQ(OffsetMap(exe.get(), kPath), (Lines{"3=52685", "65535=65535"}));
}

TEST_F(EVemTest, LineMapsSkipTheParameterTransfersOfACall) {
    TreePtr exe = MakeExe();
    CEVemBaseNode* unit = AddUnit(exe.get(), kPath);
    const auto s = Append(unit, {
                                    {kEVemInputInoutParamListStmtNode, 10, 0},
                                    {kEVemLdVariableStmtNode, 11, 2, "a"},    // user's operand
                                    {kEVemStVariableStmtNode, 11, 4, "in1"},  // into the input: out
                                    {kEVemStIndexedVarStmtNode, 12, 6, "in2"},
                                    {kEVemOutputParamListStmtNode, 13, 8},
                                    {kEVemLdVariableStmtNode, 14, 10, "out"},  // from the output: out
                                    {kEVemStVariableStmtNode, 15, 12, "b"},
                                    {kEVemLdIndexedVarStmtNode, 16, 14, "arr"},
                                    {kEVemEndParamListStmtNode, 17, 16},
                                    {kEVemLdVariableStmtNode, 18, 18, "c"},
                                    {kEVemStVariableStmtNode, 18, 20, "d"},
                                });
    EXPECT_EQ(OffsetMap(exe.get(), kPath), (Lines{"10=0", "11=2", "12=6", "13=8", "15=12", "16=14", "17=16", "18=20"}));

    CMapStringToOb statements;
    ASSERT_EQ(EVemFillAwlLine2EvemNodeMap(exe.get(), kPath, &statements), 1);
    EXPECT_EQ(StatementAt(statements, "11"), s[1]);
    EXPECT_EQ(StatementAt(statements, "14"), nullptr);
    EXPECT_EQ(StatementAt(statements, "18"), s[10]);
}

TEST_F(EVemTest, LineMapsAskedOfAnotherNodeShowOneMessage) {
    TreePtr resource(VemNewNode(kVemResourceNode));
    // A node of the executable's type that is not of its class is refused all the same.
    TreePtr typed(new CVemBaseNode(kVemExeNode, "RES", 1));
    MessageCapture messages;
    CMapStringToString offsets;
    CMapStringToOb statements;
    offsets.SetAt("1", "2");

    EXPECT_EQ(EVemFillAwlLine2UcodeOffsetMap(resource.get(), kPath, &offsets), 0);
    EXPECT_EQ(EVemFillAwlLine2EvemNodeMap(typed.get(), kPath, &statements), 0);

    EXPECT_EQ(messages.texts(), (std::vector<std::string>{kNotExe, kNotExe}));
    EXPECT_EQ(messages.styles(), (std::vector<unsigned>{MB_OK, MB_OK}));
    EXPECT_EQ(Entries(offsets), Lines{"1=2"});
    EXPECT_TRUE(statements.IsEmpty());
}

TEST_F(EVemTest, LineMapsWithTheSwitchOffGiveNothing) {
    TreePtr exe = MakeExe();
    LoadStoreAdd(AddUnit(exe.get(), kPath));
    TreePtr resource(VemNewNode(kVemResourceNode));
    LurSetEvemEnabled(0);
    MessageCapture messages;
    CMapStringToString offsets;
    CMapStringToOb statements;
    EXPECT_EQ(EVemFillAwlLine2UcodeOffsetMap(exe.get(), kPath, &offsets), 0);
    EXPECT_EQ(EVemFillAwlLine2EvemNodeMap(exe.get(), kPath, &statements), 0);
    EXPECT_EQ(EVemFillAwlLine2UcodeOffsetMap(resource.get(), kPath, &offsets), 0);
    EXPECT_TRUE(offsets.IsEmpty());
    EXPECT_TRUE(statements.IsEmpty());
    EXPECT_TRUE(messages.texts().empty());
}

// The dump of the executable prints the maps of its units.
class EVemLineMapDumpTest : public EVemTest {
protected:
    void SetUp() override {
        EVemTest::SetUp();
        LurSetProjectCode(271);
    }

    std::string Dump(const std::vector<const char*>& paths) {
        CStringList names;
        for (const char* path : paths) names.AddTail(path);
        CMemFile file;
        vem::evem::DumpLineMaps(&file, "P>", exe.get(), names);
        return std::string(file.Data().begin(), file.Data().end());
    }

    TreePtr exe = MakeExe();
};

TEST_F(EVemLineMapDumpTest, OnlyForTheirProjectCodeAndWithTheSwitchOn) {
    LoadStoreAdd(AddUnit(exe.get(), kPath));
    EXPECT_EQ(Dump({}), "");
    LurSetProjectCode(270);
    EXPECT_EQ(Dump({kPath}), "");
    LurSetProjectCode(271);
    LurSetEvemEnabled(0);
    EXPECT_EQ(Dump({kPath}), "");
}
