// Dumps of units and programs, character for character.
#include "test_util.h"
#include "units/pou.h"

using vemtest::ReadFileText;
using vemtest::TempDir;

namespace {

std::string Dump(CVemBaseNode* node, const TempDir& dir) {
    EXPECT_EQ(CVemNodeDump(node, dir.file("dump.txt").c_str()), 1);
    return ReadFileText(dir.file("dump.txt"));
}

void AddEntry(CVemBaseNode* unit, u16 line, i32 codeLine, u32 operandType, u32 aeType) {
    auto* entry = new CStatListEntry;
    entry->AwlLine = line;
    entry->CodeLine = codeLine;
    entry->OperandType = operandType;
    entry->AEType = aeType;
    VemGetStatList(unit)->NewEntry(entry);
}

// The dump of a unit with all fields at their defaults, up to the head of its statement list.
std::string DefaultUnit(const std::string& p, const std::string& name, const std::string& path) {
    std::string text = p + "*POUNODE: " + name + "\n" + p + "Path: " + path + " \n";
    for (const char* line : {"DataSegLength: 0 ", "ProgramNr: 0", "CodeSegNr: 65535 ", "DataSegNr: 65535 ",
                             "IniDataSegNr: 65535 ", "CrSize: 0 ", "CodeFileName:  ", "Checksum: 0 ", "Date: 0 ",
                             "StartOffset: 0 ", "SizeCrStack: 0 ", "ElemCrStack: 0 "})
        text += p + line + "\n";
    return text + "\n" + p + "STATMENTLIST \n";
}

}  // namespace

TEST(UnitsDump, ProgramWithStatementsAndAVariable) {
    TempDir dir;
    CVemBaseNode* program = VemNewNode(kVemProgramNode);
    VemSetName(program, "MAIN");
    VemSetPathName(program, "C:\\PRJ\\MAIN.poe");
    VemSetGlobal(program, 1);
    VemAddChildTail(program, VemCreateCVemVariableNode("X", 4, kCbeTypeInt, 2, 1));
    VemSetSegmentNumbers(program, 4, 3, 5, 6);
    VemSetDataSegLength(program, 20);
    VemSetProgramNr(program, 2);
    VemSetCrSize(program, 6);
    VemSetCodePathName(program, "main.obj");
    VemSetCheckSum(program, 4000000000u);
    static_cast<CVemPouNode*>(program)->Date = 1234;
    program->SetStartOffset(70000);
    VemSetCrStackSize(program, 8);
    VemSetCrStackElements(program, 9);
    AddEntry(program, 10, -1, 3, 4);
    AddEntry(program, 2, 70000, 65535, 0);
    const std::string expected =
        "*PROGRAMNODE: MAIN\n"
        "GlobalFlag: 1 \n"
        "*POUNODE: MAIN\n"
        "Path: C:\\PRJ\\MAIN.poe \n"
        "DataSegLength: 20 \n"
        "ProgramNr: 2\n"
        "CodeSegNr: 3 \n"
        "DataSegNr: 4 \n"
        "IniDataSegNr: 5 \n"
        "CrSize: 6 \n"
        "CodeFileName: main.obj \n"
        "Checksum: 4000000000 \n"
        "Date: 1234 \n"
        "StartOffset: 70000 \n"
        "SizeCrStack: 8 \n"
        "ElemCrStack: 9 \n"
        "\n"
        "STATMENTLIST \n"
        "Nr:10 AwlLine:10 CodeLine:-1 OperandType:3 AEType:4 \n"
        "Nr:2 AwlLine:2 CodeLine:70000 OperandType:65535 AEType:0 \n"
        "\n"
        "  - *VARIABLE: X\n"
        "  - Offset: 4 \n"
        "  - ProgrammNr: 2 \n"
        "  - ParentSegment: 4 \n"
        "  - Gr\xF6_e: 2 \n"
        "  - Variablentyp: 9 \n"
        "  - Scope: 1 \n"
        "  - Referenz = 0 \n"
        "  - VariableCanBeWatched = 1 \n"
        "  - VarInOUt = 0 \n"
        "\n";
    EXPECT_EQ(Dump(program, dir), expected);
    VemDeleteNode(program);
}

TEST(UnitsDump, ChildUnitsRepeatTheIndentBehindEveryLine) {
    TempDir dir;
    CVemBaseNode* program = VemNewNode(kVemProgramNode);
    VemSetName(program, "P");
    CVemBaseNode* fb = VemCreateCVemFbNode("F : T", "f.poe");
    AddEntry(fb, 1, 16, 2, 1);
    CVemBaseNode* function = VemCreateCVemFunctionNode("G", "");
    VemAddChildTail(program, fb);
    VemAddChildTail(fb, function);
    const std::string expected = "*PROGRAMNODE: P\nGlobalFlag: 0 \n" + DefaultUnit("", "P", "") + "\n" +
                                 DefaultUnit("  - ", "F : T", "f.poe") +
                                 "  - Nr:1 AwlLine:1 CodeLine:16 OperandType:2 AEType:1 \n"
                                 "  - \n" +
                                 DefaultUnit("  -   - ", "G", "") + "  -   - \n";
    EXPECT_EQ(Dump(program, dir), expected);
    VemDeleteNode(program);
}

TEST(UnitsDump, ProgramsOnlyAddTheirHeadBelowOtherNodes) {
    TempDir dir;
    CVemBaseNode* root = VemNewNode(kVemBaseNode);
    CVemBaseNode* program = VemNewNode(kVemProgramNode);
    VemSetName(program, "Q");
    VemSetGlobal(program, -1);
    VemAddChildTail(root, program);
    const std::string head =
        "BaseNodeType: 1\n"
        "  - *PROGRAMNODE: Q\n"
        "  - GlobalFlag: -1 \n"
        "  - *POUNODE: Q\n";
    EXPECT_EQ(Dump(root, dir).substr(0, head.size()), head);
    VemDeleteNode(root);
}
