// Cross reference and line maps on a whole compiled resource, after it went to its files and came
// back: a debugger's questions about a structure member, a function block's variable and the
// units that are called.
#include <algorithm>

#include "evem_xref_test_util.h"
#include "resource_builder.h"

using evemtest::EVemTest;
using vemtest::TempDir;
using xreftest::Append;
using xreftest::Entries;
using xreftest::TreePtr;

namespace {

constexpr const char* kTask1 = "C:\\PRJ\\TASK1.st";
constexpr const char* kTask2 = "C:\\PRJ\\TASK2.st";
constexpr const char* kFb0 = "C:\\PRJ\\FB0.st";

using Hits = std::vector<std::string>;

CEVemBaseNode* CodeNode(CVemBaseNode* exe, const char* path) {
    CObList* list = VemGetEvemRootNodeListPtr(exe);
    for (POSITION pos = list->GetHeadPosition(); pos;) {
        auto* node = static_cast<CEVemBaseNode*>(list->GetNext(pos));
        if (EVemGetPathName(node) == path) return node;
    }
    return nullptr;
}

// The node at the end of a path of names, child by child from the root.
CVemBaseNode* Find(CVemBaseNode* root, const std::vector<const char*>& names) {
    CVemBaseNode* node = root;
    for (const char* name : names) {
        CVemBaseNode* found = nullptr;
        CObList* children = VemGetChildList(node);
        for (POSITION pos = children->GetHeadPosition(); pos && !found;) {
            auto* child = static_cast<CVemBaseNode*>(children->GetNext(pos));
            if (VemGetName(child) == name) found = child;
        }
        if (!found) return nullptr;
        node = found;
    }
    return node;
}

// What the compiler adds to the resource's code: the programs read and write a member of their
// structure S0, call the function block instance FBI0 and the global function; the function
// block reads and writes its variable X.
void AddStatements(CVemBaseNode* exe) {
    Append(CodeNode(exe, kTask1), {{kEVemLdVariableStmtNode, 20, 0x40, "S0.M1"},
                                   {kEVemCalFbStmtNode, 21, 0x44, "FBI0"},
                                   {kEVemCalFunStmtNode, 22, 0x48, "GFUN"},
                                   {kEVemStVariableStmtNode, 23, 0x4C, "S0.M1"}});
    Append(CodeNode(exe, kTask2),
           {{kEVemLdVariableStmtNode, 20, 0x40, "S0.M1"}, {kEVemCalcFbStmtNode, 24, 0x44, "FBI0"}});
    Append(CodeNode(exe, kFb0), {{kEVemLdVariableStmtNode, 30, 0x40, "X"},
                                 {kEVemAddVarStmtNode, 31, 0x44, "X"},
                                 {kEVemStVariableStmtNode, 32, 0x48, "X"},
                                 {kEVemLdVariableStmtNode, 33, 0x4C, "FBI0.X"}});
}

class EVemResourceTest : public EVemTest {
protected:
    void SetUp() override {
        EVemTest::SetUp();
        CVemBaseNode* built = vembuild::BuildResource(vembuild::ResourceShape{});
        AddStatements(built);
        const std::string nodeFile = dir.file("RES1.vem");
        const int written = vembuild::WriteResource(built, dir.path(), nodeFile);
        VemDeleteNode(built);
        ASSERT_EQ(written, 1);
        exe.reset(VemLoadNode(nodeFile.c_str()));
        ASSERT_NE(exe, nullptr);
        ASSERT_EQ(EVemCRBuildPouTableEx(exe.get(), &table), 1);
    }

    // The hits of a query over every unit of the table, sorted, as "path:line:kind".
    Hits Query(CVemBaseNode* target, u16 mask) {
        EXPECT_NE(target, nullptr);
        CStringList paths;
        CWordArray lines;
        CWordArray kinds;
        for (POSITION pos = table.GetStartPosition(); pos;) {
            CString path;
            CObject* unit = nullptr;
            table.GetNextAssoc(pos, path, unit);
            EXPECT_EQ(EVemCRExecQueryEx(static_cast<CEVemBaseNode*>(unit), target, &paths, &lines, &kinds, mask), 1);
        }
        Hits hits;
        int i = 0;
        for (POSITION pos = paths.GetHeadPosition(); pos; ++i)
            hits.push_back(paths.GetNext(pos).str() + ":" + std::to_string(lines[i]) + ":" + std::to_string(kinds[i]));
        std::sort(hits.begin(), hits.end());
        return hits;
    }

    TempDir dir;
    TreePtr exe;
    CMapStringToOb table;
};

}  // namespace

TEST_F(EVemResourceTest, CalledUnitsAreFoundWhereTheyAreCalled) {
    EXPECT_EQ(Query(Find(exe.get(), {"TASKS", "TASK1", "FBI0 : FB0"}), 7),
              (Hits{"C:\\PRJ\\TASK1.st:21:4", "C:\\PRJ\\TASK2.st:24:4"}));
    EXPECT_EQ(Query(Find(exe.get(), {vembuild::kGlobalName, vembuild::kGlobalTaskName, "GFUN"}), 4),
              (Hits{"C:\\PRJ\\TASK1.st:22:4"}));
}

TEST_F(EVemResourceTest, LineMapsOfTheLoadedUnits) {
    CMapStringToString offsets;
    ASSERT_EQ(EVemFillAwlLine2UcodeOffsetMap(exe.get(), kTask1, &offsets), 1);
    EXPECT_EQ(Entries(offsets), (std::vector<std::string>{"10=0", "11=4", "12=8", "20=64", "21=68", "22=72", "23=76"}));

    CMapStringToOb statements;
    ASSERT_EQ(EVemFillAwlLine2EvemNodeMap(exe.get(), kFb0, &statements), 1);
    EXPECT_EQ(EVemGetName(xreftest::StatementAt(statements, "31")), "X");
    EXPECT_EQ(EVemGetNodeType(xreftest::StatementAt(statements, "31")), kEVemAddVarStmtNode);

    // The second task gave the block's path in lower case; the executable kept the first one.
    EXPECT_EQ(EVemFillAwlLine2UcodeOffsetMap(exe.get(), "c:\\prj\\fb0.st", &offsets), 0);
}

TEST_F(EVemResourceTest, TheDumpShowsTheLineMapsForItsProjectCode) {
    const std::string head = "\n======== AwlLine2UcodeOffset and EVEM-Node Map for C:\\PRJ\\TASK1.st  =========";
    auto dump = [this] {
        CMemFile file;
        CVemNodeDump(exe.get(), &file);
        return std::string(file.Data().begin(), file.Data().end());
    };
    EXPECT_EQ(dump().find(head), std::string::npos);
    LurSetProjectCode(271);
    const std::string text = dump();
    EXPECT_NE(text.find(head), std::string::npos);
    EXPECT_NE(text.find("AWL-Line: 23 \t->  UCODE-Offset: 0X4c "), std::string::npos);
}
