// Cross reference: the kinds of statements that read, write or call, the table of units, and the
// query that finds the lines where a variable is accessed or a unit called.
#include <set>

#include "evem_xref_test_util.h"

using evemtest::Create;
using evemtest::EVemTest;
using evemtest::NodePtr;
using xreftest::AddUnit;
using xreftest::Append;
using xreftest::MakeExe;
using xreftest::TreePtr;
using vemtest::Add;

namespace {

CVemBaseNode* Variable(CVemBaseNode* parent, const char* name, u32 kind) {
    CVemBaseNode* v = Add(parent, VemCreateCVemVariableNode(name, 0, kCbeTypeInt, 2, 0));
    VemSetTypeName(v, "INT");
    VemSetSubSegmentKind(v, static_cast<tIpSegmentKind>(kind));
    return v;
}

CVemBaseNode* Struct(CVemBaseNode* parent, const char* name) {
    CVemBaseNode* s = Add(parent, VemNewNode(kVemStructNode));
    VemSetName(s, name);
    VemSetTypeName(s, "POINT");
    return s;
}

CVemBaseNode* Instance(CVemBaseNode* parent, const char* name, const char* typeName) {
    CVemBaseNode* i = Add(parent, VemNewNode(kVemFbInstanceNode));
    VemSetName(i, name);
    VemSetTypeName(i, typeName);
    return i;
}

// Stand-in for a compiled task: any node of type 16.
TreePtr Task(const char* name) { return TreePtr(new CVemBaseNode(kVemTuiTaskNode, name, 1)); }

// The hits of queries, one "path:line:kind" each.
struct Query {
    CStringList Paths;
    CWordArray Lines;
    CWordArray Kinds;

    int Run(CEVemBaseNode* unit, CVemBaseNode* target, u16 mask) {
        return EVemCRExecQueryEx(unit, target, &Paths, &Lines, &Kinds, mask);
    }

    std::vector<std::string> Hits() const {
        EXPECT_EQ(Paths.GetCount(), Lines.GetSize());
        EXPECT_EQ(Paths.GetCount(), Kinds.GetSize());
        std::vector<std::string> hits;
        int i = 0;
        for (POSITION pos = Paths.GetHeadPosition(); pos; ++i)
            hits.push_back(Paths.GetNext(pos).str() + ":" + std::to_string(Lines[i]) + ":" + std::to_string(Kinds[i]));
        return hits;
    }
};

using Hits = std::vector<std::string>;

// A unit whose code reads a variable in line 1 and writes it in line 2.
CEVemBaseNode* ReadWrite(CVemBaseNode* exe, const char* path, const char* operand) {
    CEVemBaseNode* unit = AddUnit(exe, path);
    Append(unit, {{kEVemLdVariableStmtNode, 1, 0, operand}, {kEVemStVariableStmtNode, 2, 2, operand}});
    return unit;
}

}  // namespace

TEST_F(EVemTest, CheckAccessByKindOfAccess) {
    NodePtr load = Create(kEVemLdVariableStmtNode);
    NodePtr store = Create(kEVemStVariableStmtNode);
    NodePtr call = Create(kEVemCalFbStmtNode, "inst");
    // Answers for read, write, then the kinds 0, 3, 4 and 7, which are no single access.
    const std::pair<CEVemBaseNode*, std::vector<int>> cases[] = {
        {load.get(), {1, 0, 0, 0, 0, 0}}, {store.get(), {0, 1, 0, 0, 0, 0}}, {call.get(), {1, 1, 0, 0, 0, 0}}};
    for (const auto& [node, answers] : cases) {
        const std::vector<u16> kinds = {kEVemCrRead, kEVemCrWrite, 0, 3, 4, 7};
        for (std::size_t i = 0; i < kinds.size(); ++i)
            EXPECT_EQ(EVemCheckAccess(node, kinds[i]), answers[i]) << EVemGetNodeType(node) << " " << kinds[i];
    }
}

TEST_F(EVemTest, CheckOpOnVarWantsAVariableOperandOfExactlyThatName) {
    auto named = [](tEVemNodeType type, const char* name) {
        NodePtr node = Create(type);
        EVemSetName(node.get(), name);
        return node;
    };
    NodePtr load = named(kEVemLdVariableStmtNode, "Count");
    EXPECT_EQ(EVemCheckOpOnVar(load.get(), nullptr, "Count", kEVemCrRead), 1);
    EXPECT_EQ(EVemCheckOpOnVar(load.get(), nullptr, "COUNT", kEVemCrRead), 0);
    EXPECT_EQ(EVemCheckOpOnVar(load.get(), nullptr, "Count", kEVemCrWrite), 0);
    EXPECT_EQ(EVemCheckOpOnVar(named(kEVemLdIndexedVarStmtNode, "Arr").get(), nullptr, "Arr", kEVemCrRead), 1);
    EXPECT_EQ(EVemCheckOpOnVar(named(kEVemStdShlVarStmtNode, "Arr").get(), nullptr, "Arr", kEVemCrRead), 1);
    EXPECT_EQ(EVemCheckOpOnVar(named(kEVemStdModVarStmtNode, "Arr").get(), nullptr, "Arr", kEVemCrRead), 1);
    // The indexed forms of Shl to Expt are variable statements, but no reads.
    for (int kind = 178; kind <= 185; ++kind)
        EXPECT_EQ(EVemCheckOpOnVar(named(static_cast<tEVemNodeType>(kind), "Arr").get(), nullptr, "Arr", kEVemCrRead),
                  0);
    // A call reads and writes by its kind, but it has no variable operand.
    EXPECT_EQ(EVemCheckOpOnVar(Create(kEVemCalFbStmtNode, "Count").get(), nullptr, "Count", kEVemCrRead), 0);
    // These checks do not ask the switch.
    xreftest::SwitchOff off;
    EXPECT_EQ(EVemCheckOpOnVar(load.get(), nullptr, "Count", kEVemCrRead), 1);
}

TEST_F(EVemTest, CheckForCallComparesTheNodeTextUpToItsType) {
    TreePtr task = Task("T1");
    CVemBaseNode* inst = Instance(task.get(), "inst", "FBT");
    CVemBaseNode* fun = Add(task.get(), VemCreateCVemFunctionNode("F", ""));
    for (tEVemNodeType kind : {kEVemCalFbStmtNode, kEVemCalcFbStmtNode, kEVemCalcnFbStmtNode, kEVemCalFunStmtNode,
                               kEVemCalcenFbStmtNode, kEVemCalcenFunStmtNode})
        EXPECT_EQ(EVemCheckForCall(Create(kind, "inst").get(), inst, 0), 1) << kind;
    EXPECT_EQ(EVemCheckForCall(Create(kEVemCalFunStmtNode, "F").get(), fun, 0), 1);
    EXPECT_EQ(EVemCheckForCall(Create(kEVemCalFbStmtNode, "Inst").get(), inst, 0), 0);
    EXPECT_EQ(EVemCheckForCall(Create(kEVemCalFbStmtNode, "inst : FBT").get(), inst, 0), 0);
    EXPECT_EQ(EVemCheckForCall(Create(kEVemJmpStmtNode, "inst").get(), inst, 0), 0);
    NodePtr load = Create(kEVemLdVariableStmtNode);
    EVemSetName(load.get(), "inst");
    EXPECT_EQ(EVemCheckForCall(load.get(), inst, 0), 0);

    // The text is cut at its last colon, unless that stands first.
    TreePtr twoColons(new CVemBaseNode(kVemBaseNode, "P : Q : R", 1));
    TreePtr leadingColon(new CVemBaseNode(kVemBaseNode, ":X", 1));
    EXPECT_EQ(EVemCheckForCall(Create(kEVemCalFbStmtNode, "P : Q").get(), twoColons.get(), 0), 1);
    EXPECT_EQ(EVemCheckForCall(Create(kEVemCalFbStmtNode, ":X").get(), leadingColon.get(), 0), 1);
}

TEST_F(EVemTest, PouTableEndsAtANodeOfAnotherKind) {
    TreePtr exe = MakeExe();
    CEVemBaseNode* a = AddUnit(exe.get(), "A");
    VemGetEvemRootNodeListPtr(exe.get())->AddTail(EVemCreateNode(kEVemLdVariableStmtNode, ""));
    AddUnit(exe.get(), "B");
    CMapStringToOb table;
    EXPECT_EQ(EVemCRBuildPouTableEx(exe.get(), &table), 0);
    EXPECT_EQ(table.GetCount(), 1);
    EXPECT_EQ(table.PLookup("A") ? *table.PLookup("A") : nullptr, a);
}

TEST_F(EVemTest, PouTableOfOtherNodes) {
    TreePtr empty = MakeExe();
    TreePtr resource(VemNewNode(kVemResourceNode));
    TreePtr typedWithoutList(new CVemBaseNode(kVemExeNode, "RES", 1));
    CMapStringToOb table;
    table.SetAt("kept", nullptr);
    EXPECT_EQ(EVemCRBuildPouTableEx(empty.get(), &table), 1);
    EXPECT_EQ(EVemCRBuildPouTableEx(resource.get(), &table), 0);
    EXPECT_EQ(EVemCRBuildPouTableEx(typedWithoutList.get(), &table), 0);
    EXPECT_EQ(table.GetCount(), 1);

    TreePtr exe = MakeExe();
    AddUnit(exe.get(), "A");
    LurSetEvemEnabled(0);
    EXPECT_EQ(EVemCRBuildPouTableEx(exe.get(), &table), 1);
    EXPECT_EQ(EVemCRBuildPouTableEx(resource.get(), &table), 1);
    EXPECT_EQ(table.GetCount(), 1);
}

TEST_F(EVemTest, QueryFindsReadsAndWritesByTheMask) {
    TreePtr exe = MakeExe();
    TreePtr fun(VemCreateCVemFunctionNode("MAIN", ""));
    CVemBaseNode* count = Variable(fun.get(), "Count", 13);
    CEVemBaseNode* unit = AddUnit(exe.get(), "C:\\PRJ\\MAIN.POU");
    Append(unit, {{kEVemLdVariableStmtNode, 3, 0, "Count"},
                  {kEVemStVariableStmtNode, 4, 2, "Count"},
                  {kEVemAddVarStmtNode, 5, 4, "Count"},
                  {kEVemLdVariableStmtNode, 6, 6, "count"},
                  {kEVemStdShlIndexedVarStmtNode, 7, 8, "Count"},
                  {kEVemStdShlVarStmtNode, 8, 10, "Count"},
                  {kEVemSetVariableStmtNode, 9, 12, "Count"},
                  {kEVemCalFunStmtNode, 10, 14, "Count"}});
    const char* p = "C:\\PRJ\\MAIN.POU";
    auto hits = [&](u16 mask) {
        Query q;
        EXPECT_EQ(q.Run(unit, count, mask), 1);
        return q.Hits();
    };
    auto at = [p](int line, int kind) {
        return std::string(p) + ":" + std::to_string(line) + ":" + std::to_string(kind);
    };
    EXPECT_EQ(hits(0), Hits{});
    EXPECT_EQ(hits(1), (Hits{at(3, 1), at(5, 1), at(8, 1)}));
    EXPECT_EQ(hits(2), (Hits{at(4, 2), at(9, 2)}));
    EXPECT_EQ(hits(3), (Hits{at(3, 1), at(4, 2), at(5, 1), at(8, 1), at(9, 2)}));
    // A call is found by the call name, which for a variable is its name.
    EXPECT_EQ(hits(4), (Hits{at(10, 4)}));
}

TEST_F(EVemTest, QueryNeedsACodeNodeAndTheSwitch) {
    TreePtr exe = MakeExe();
    TreePtr fun(VemCreateCVemFunctionNode("MAIN", ""));
    CVemBaseNode* count = Variable(fun.get(), "Count", 13);
    CEVemBaseNode* unit = ReadWrite(exe.get(), "MAIN", "Count");
    NodePtr statement = Create(kEVemLdVariableStmtNode);
    Query q;
    EXPECT_EQ(q.Run(statement.get(), count, 7), 0);
    EXPECT_EQ(q.Run(nullptr, count, 7), 0);
    EXPECT_EQ(q.Run(unit, nullptr, 7), 0);
    EXPECT_EQ(EVemCRExecQueryEx(unit, count, nullptr, &q.Lines, &q.Kinds, 7), 0);
    xreftest::SwitchOff off;
    EXPECT_EQ(q.Run(unit, count, 7), 1);
    EXPECT_EQ(q.Run(statement.get(), count, 7), 1);
    EXPECT_TRUE(q.Hits().empty());
}

TEST_F(EVemTest, QueryComparesOwnerAndUnitByTheKindOfTheVariable) {
    TreePtr exe = MakeExe();
    TreePtr fun(VemCreateCVemFunctionNode("A", ""));
    CEVemBaseNode* unitA = ReadWrite(exe.get(), "C:\\PRJ\\A.POU", "X");
    CEVemBaseNode* unitB = ReadWrite(exe.get(), "C:\\PRJ\\B.POU", "X");
    CEVemBaseNode* unitLower = ReadWrite(exe.get(), "C:\\PRJ\\a.pou", "X");
    CVemBaseNode* x = Variable(fun.get(), "X", 5);
    auto found = [&](CEVemBaseNode* unit, u32 kind) {
        VemSetSubSegmentKind(x, static_cast<tIpSegmentKind>(kind));
        Query q;
        EXPECT_EQ(q.Run(unit, x, 3), 1);
        return q.Hits().size();
    };
    for (u32 kind : {3u, 5u, 12u}) {
        EXPECT_EQ(found(unitA, kind), 2u) << kind;
        EXPECT_EQ(found(unitB, kind), 0u) << kind;
        EXPECT_EQ(found(unitLower, kind), 0u) << kind;
    }
    for (u32 kind : {0u, 2u, 13u, 16u, 128u}) {
        EXPECT_EQ(found(unitLower, kind), 2u) << kind;
        EXPECT_EQ(found(unitB, kind), 0u) << kind;
    }
    for (u32 kind : {14u, 17u, 18u, 21u, 22u, 25u}) EXPECT_EQ(found(unitB, kind), 2u) << kind;
}

TEST_F(EVemTest, QueryTakesTheUnitNameFromTheFileName) {
    TreePtr exe = MakeExe();
    auto found = [&](const char* owner, const char* path) {
        TreePtr fun(VemCreateCVemFunctionNode(owner, ""));
        CVemBaseNode* x = Variable(fun.get(), "X", 5);
        Query q;
        EXPECT_EQ(q.Run(ReadWrite(exe.get(), path, "X"), x, 1), 1);
        return q.Hits().size() == 1;
    };
    EXPECT_TRUE(found("A.B", "C:\\PRJ\\A.B.POU"));
    EXPECT_FALSE(found("A", "C:\\PRJ\\A.B.POU"));
    EXPECT_TRUE(found(".POU", "C:\\PRJ\\.POU"));
    EXPECT_TRUE(found("A", "C:\\PRJ.D\\A"));
    EXPECT_TRUE(found("A", "A.POU"));
    EXPECT_TRUE(found("A", "C:/PRJ\\A.POU"));
    EXPECT_FALSE(found("A", "C:\\PRJ/A.POU"));
}

TEST_F(EVemTest, QueryNamesOperandsFromTheirUnitDown) {
    TreePtr exe = MakeExe();
    TreePtr task = Task("T1");
    CVemBaseNode* v = Variable(task.get(), "V", 5);
    CVemBaseNode* m2 = Variable(Struct(task.get(), "S2"), "M2", 5);
    CVemBaseNode* inst = Instance(task.get(), "inst", "FBT");
    CVemBaseNode* y = Variable(inst, "Y", 13);
    CVemBaseNode* im = Variable(Struct(inst, "S"), "M", 13);
    CVemBaseNode* fb = Add(task.get(), VemCreateCVemFbNode("inst : FBT", ""));
    CVemBaseNode* x = Variable(fb, "X", 5);
    CVemBaseNode* m = Variable(Struct(fb, "S"), "M", 5);

    CEVemBaseNode* program = AddUnit(exe.get(), "C:\\PRJ\\T1.POU");
    Append(program, {{kEVemLdVariableStmtNode, 1, 0, "V"},
                     {kEVemLdVariableStmtNode, 2, 0, "S2.M2"},
                     {kEVemLdVariableStmtNode, 3, 0, "inst.Y"},
                     {kEVemLdVariableStmtNode, 4, 0, "inst.S.M"},
                     {kEVemLdVariableStmtNode, 5, 0, "X"},
                     {kEVemLdVariableStmtNode, 6, 0, "S.M"}});
    CEVemBaseNode* block = AddUnit(exe.get(), "C:\\PRJ\\FBT.POU");
    Append(block, {{kEVemStVariableStmtNode, 7, 0, "X"},
                   {kEVemStVariableStmtNode, 8, 0, "S.M"},
                   {kEVemStVariableStmtNode, 9, 0, "inst.X"}});
    auto lines = [](CEVemBaseNode* unit, CVemBaseNode* target) {
        Query q;
        EXPECT_EQ(q.Run(unit, target, 3), 1);
        std::vector<int> found;
        for (int i = 0; i < q.Lines.GetSize(); ++i) found.push_back(q.Lines[i]);
        return found;
    };
    EXPECT_EQ(lines(program, v), std::vector<int>{1});
    EXPECT_EQ(lines(program, m2), std::vector<int>{2});
    EXPECT_EQ(lines(program, y), std::vector<int>{3});
    EXPECT_EQ(lines(program, im), std::vector<int>{4});
    // The function block's own variables belong to its unit and read without the instance.
    EXPECT_EQ(lines(program, x), std::vector<int>{});
    EXPECT_EQ(lines(program, m), std::vector<int>{});
    EXPECT_EQ(lines(block, x), std::vector<int>{7});
    EXPECT_EQ(lines(block, m), std::vector<int>{8});
}
