// Variable records in node files: the golden file of a root with one variable, records of older
// versions written by hand, and damaged records.
#include "test_util.h"
#include "variables/variable.h"

using vemtest::Bytes;
using vemtest::ReadFileBytes;
using vemtest::TempDir;
using vemtest::WriteFileBytes;

namespace {

Bytes Frame(unsigned rootType) {
    Bytes b;
    b.u16_(rootType);  // node type word of the root
    for (char c : std::string("Norvadis_VEM_Version:003")) b.u8_(static_cast<u8>(c));
    b.u8_(0);  // end of the stamp
    return b;
}

// Base record of a node without children.
Bytes& LeafBaseRecord(Bytes& b, unsigned type, unsigned expanded, const std::string& name) {
    b.u16_(0);        // schema word of the base record
    b.u8_(type);      // node type
    b.u8_(expanded);  // Expanded
    b.str(name);      // name
    b.u32_(0);        // Serial
    b.u8_(0);         // ExtraText, empty
    b.u16_(0);        // child count
    return b;
}

// Root R of type 1, expanded, with the variable V: INT at offset 4, size 2, all else default.
std::vector<u8> RootWithVariableFile() {
    Bytes b = Frame(1);
    b.u16_(0);    // 27 schema word of the base record
    b.u8_(1);     // 29 node type
    b.u8_(1);     // 30 Expanded
    b.str("R");   // 31 name
    b.u32_(0);    // 33 Serial
    b.u8_(0);     // 37 ExtraText
    b.u16_(1);    // 38 child count
    b.u8_(2);     // 40 type byte of the child
    b.u16_(0);    // 41 child: schema word of the base record
    b.u8_(2);     // 43 child: node type
    b.u8_(0);     // 44 child: Expanded
    b.str("V");   // 45 child: name
    b.u32_(0);    // 47 child: Serial
    b.u8_(0);     // 51 child: ExtraText
    b.u16_(0);    // 52 child: child count
    b.u16_(3);    // 54 schema word of the variable record
    b.u16_(4);    // 56 Offset
    b.u16_(2);    // 58 Size
    b.u16_(0xFFFF);  // 60 ParentSegment
    b.u8_(9);     // 62 VariableType
    b.u8_(0);     // 63 Reference
    b.u8_(0);     // 64 NetVar
    b.u16_(0);    // 65 ProgramNr
    b.u8_(0);     // 67 TypeName, empty
    b.u8_(0);     // 68 Scope
    b.u8_(1);     // 69 CanBeWatched
    b.u8_(0);     // 70 VarInOut
    b.u8_(0);     // 71 InstanceText, empty
    b.u16_(0);    // 72 SubSegmentKind
    b.u8_(0);     // 74 PiLocation, empty
    b.u16_(0);    // 75 DclPositionA
    b.u16_(0);    //    DclPositionB
    b.u32_(0);    // 79 VarQualifier
    return b.v;
}

// A variable as the root of a file, with a record of the given version up to the fields it holds.
Bytes VariableFileOfSchema(unsigned schema) {
    Bytes b = Frame(2);
    LeafBaseRecord(b, 2, 0, "OLD");
    b.u16_(schema);  // schema word
    b.u16_(0x0102);  // Offset
    b.u16_(0x0304);  // Size
    b.u16_(0x0506);  // ParentSegment
    b.u8_(10);       // VariableType DINT
    b.u8_(1);        // Reference
    b.u8_(1);        // NetVar
    b.u16_(7);       // ProgramNr
    b.str("MYTYPE");  // TypeName
    b.u8_(4);        // Scope
    b.u8_(0);        // CanBeWatched
    b.u8_(1);        // VarInOut
    b.str("INST");   // InstanceText
    if (schema >= 1) b.u16_(2);  // SubSegmentKind
    if (schema >= 2) {
        b.str("%IX1.0");  // PiLocation
        b.u16_(0x21);     // DclPositionA
        b.u16_(0x22);     // DclPositionB
    }
    if (schema >= 3) b.u32_(0xCAFEBABE);  // VarQualifier
    return b;
}

CVemVariableNode* AsVariable(CVemBaseNode* node) { return static_cast<CVemVariableNode*>(node); }

void ExpectVersionZeroFields(CVemVariableNode* v) {
    EXPECT_EQ(v->Name, "OLD");
    EXPECT_EQ(v->Offset, 0x0102);
    EXPECT_EQ(v->Size, 0x0304);
    EXPECT_EQ(v->ParentSegment, 0x0506);
    EXPECT_EQ(v->VariableType, kCbeTypeDint);
    EXPECT_EQ(v->Reference, 1);
    EXPECT_EQ(v->NetVar, 1);
    EXPECT_EQ(v->ProgramNr, 7);
    EXPECT_EQ(v->TypeName, "MYTYPE");
    EXPECT_EQ(v->Scope, 4u);
    EXPECT_EQ(v->CanBeWatched, 0);
    EXPECT_EQ(v->VarInOut, 1);
    EXPECT_EQ(v->InstanceText, "INST");
}

}  // namespace

TEST(VariablesFile, RootWithOneVariableIsWrittenByteForByte) {
    TempDir dir;
    CVemBaseNode* root = VemNewNode(kVemBaseNode);
    VemSetName(root, "R");
    VemAddChildTail(root, VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 0));
    ASSERT_EQ(VemWriteNode(root, dir.file("r.vem").c_str()), 1);
    const std::vector<u8> golden = RootWithVariableFile();
    ASSERT_EQ(golden.size(), 83u);
    EXPECT_EQ(ReadFileBytes(dir.file("r.vem")), golden);
    VemDeleteNode(root);
}

TEST(VariablesFile, RootWithOneVariableLoadsEveryField) {
    TempDir dir;
    WriteFileBytes(dir.file("r.vem"), RootWithVariableFile());
    CVemBaseNode* root = VemLoadNode(dir.file("r.vem").c_str());
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(VemGetName(root), "R");
    EXPECT_EQ(root->Expanded, 1);
    ASSERT_EQ(root->Children.GetCount(), 1);
    CVemBaseNode* child = static_cast<CVemBaseNode*>(root->Children.GetHead());
    ASSERT_EQ(child->GetRuntimeClass(), RUNTIME_CLASS(CVemVariableNode));
    CVemVariableNode* v = AsVariable(child);
    EXPECT_EQ(v->Parent, root);
    EXPECT_EQ(v->NodeType, static_cast<u32>(kVemVariableNode));
    EXPECT_EQ(v->Expanded, 0);
    EXPECT_EQ(v->Name, "V");
    EXPECT_EQ(v->Serial, 0u);
    EXPECT_EQ(v->ExtraText, "");
    EXPECT_EQ(v->Offset, 4);
    EXPECT_EQ(v->Size, 2);
    EXPECT_EQ(v->ParentSegment, 0xFFFF);
    EXPECT_EQ(v->VariableType, kCbeTypeInt);
    EXPECT_EQ(v->Reference, 0);
    EXPECT_EQ(v->NetVar, 0);
    EXPECT_EQ(v->ProgramNr, 0);
    EXPECT_EQ(v->TypeName, "");
    EXPECT_EQ(v->Scope, 0u);
    EXPECT_EQ(v->CanBeWatched, 1);
    EXPECT_EQ(v->VarInOut, 0);
    EXPECT_EQ(v->InstanceText, "");
    EXPECT_EQ(v->SubSegmentKind, kIpSegCode);
    EXPECT_EQ(v->PiLocation, "");
    EXPECT_EQ(v->DclPositionA, 0u);
    EXPECT_EQ(v->DclPositionB, 0u);
    EXPECT_EQ(v->VarQualifier, 0u);
    VemDeleteNode(root);
}

TEST(VariablesFile, EveryFieldSurvivesAStoreAndALoad) {
    TempDir dir;
    CVemBaseNode* node = VemCreateCVemVariableNode("W", 0x1234, kCbeTypeLreal, 8, 6);
    VemSetParentSegment(node, 0x0ABC);
    VemSetReference(node, 1);
    VemSetNetVar(node, 1);
    VemSetProgramNr(node, 0x4321);
    VemSetTypeName(node, "LREAL");
    VemVariableCanBeWatched(node, 0);
    VemSetVarInOut(node, 1);
    VemSetSubSegmentKind(node, kIpSegInitSecond);
    VemSetPiLocation(node, "%MW7");
    VemSetDclPosition(node, 0x12345, 0xFFFF);  // 16 bits in a file
    VemSetVarQualifier(node, 0xDEADBEEF);
    AsVariable(node)->InstanceText = "IT";
    ASSERT_EQ(VemWriteNode(node, dir.file("w.vem").c_str()), 1);
    CVemBaseNode* loaded = VemLoadNode(dir.file("w.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    CVemVariableNode* v = AsVariable(loaded);
    EXPECT_EQ(v->Offset, 0x1234);
    EXPECT_EQ(v->Size, 8);
    EXPECT_EQ(v->Scope, 6u);
    EXPECT_EQ(v->VariableType, kCbeTypeLreal);
    EXPECT_EQ(v->ParentSegment, 0x0ABC);
    EXPECT_EQ(v->Reference, 1);
    EXPECT_EQ(v->NetVar, 1);
    EXPECT_EQ(v->ProgramNr, 0x4321);
    EXPECT_EQ(v->TypeName, "LREAL");
    EXPECT_EQ(v->CanBeWatched, 0);
    EXPECT_EQ(v->VarInOut, 1);
    EXPECT_EQ(v->SubSegmentKind, kIpSegInitSecond);
    EXPECT_EQ(v->PiLocation, "%MW7");
    EXPECT_EQ(v->DclPositionA, 0x2345u);
    EXPECT_EQ(v->DclPositionB, 0xFFFFu);
    EXPECT_EQ(v->VarQualifier, 0xDEADBEEFu);
    EXPECT_EQ(v->InstanceText, "IT");
    VemDeleteNode(node);
    VemDeleteNode(loaded);
}

TEST(VariablesFile, RecordOfVersionZeroLoadsWithTheDefaultsOfTheLaterFields) {
    TempDir dir;
    WriteFileBytes(dir.file("v0.vem"), VariableFileOfSchema(0).v);
    CVemBaseNode* loaded = VemLoadNode(dir.file("v0.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    CVemVariableNode* v = AsVariable(loaded);
    ExpectVersionZeroFields(v);
    EXPECT_EQ(v->SubSegmentKind, kIpSegCode);
    EXPECT_EQ(v->PiLocation, "");
    EXPECT_EQ(v->DclPositionA, 0u);
    EXPECT_EQ(v->DclPositionB, 0u);
    EXPECT_EQ(v->VarQualifier, 0u);
    VemDeleteNode(loaded);
}

TEST(VariablesFile, RecordOfVersionOneAddsTheSubSegmentKind) {
    TempDir dir;
    WriteFileBytes(dir.file("v1.vem"), VariableFileOfSchema(1).v);
    CVemBaseNode* loaded = VemLoadNode(dir.file("v1.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    ExpectVersionZeroFields(AsVariable(loaded));
    EXPECT_EQ(AsVariable(loaded)->SubSegmentKind, kIpSegInit);
    EXPECT_EQ(AsVariable(loaded)->PiLocation, "");
    VemDeleteNode(loaded);
}

TEST(VariablesFile, RecordOfVersionTwoLoadsWithQualifierZero) {
    TempDir dir;
    WriteFileBytes(dir.file("v2.vem"), VariableFileOfSchema(2).v);
    CVemBaseNode* loaded = VemLoadNode(dir.file("v2.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    CVemVariableNode* v = AsVariable(loaded);
    ExpectVersionZeroFields(v);
    EXPECT_EQ(v->SubSegmentKind, kIpSegInit);
    EXPECT_EQ(v->PiLocation, "%IX1.0");
    EXPECT_EQ(v->DclPositionA, 0x21u);
    EXPECT_EQ(v->DclPositionB, 0x22u);
    EXPECT_EQ(v->VarQualifier, 0u);
    VemDeleteNode(loaded);
}

TEST(VariablesFile, RecordOfVersionThreeIsWhatTheLibraryWrites) {
    TempDir dir;
    const Bytes file = VariableFileOfSchema(3);
    WriteFileBytes(dir.file("v3.vem"), file.v);
    CVemBaseNode* loaded = VemLoadNode(dir.file("v3.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(AsVariable(loaded)->VarQualifier, 0xCAFEBABEu);
    ASSERT_EQ(VemWriteNode(loaded, dir.file("again.vem").c_str()), 1);
    EXPECT_EQ(ReadFileBytes(dir.file("again.vem")), file.v);
    VemDeleteNode(loaded);
}

TEST(VariablesFile, OlderRecordsAreWrittenBackAsVersionThree) {
    TempDir dir;
    WriteFileBytes(dir.file("v0.vem"), VariableFileOfSchema(0).v);
    CVemBaseNode* loaded = VemLoadNode(dir.file("v0.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    ASSERT_EQ(VemWriteNode(loaded, dir.file("v3.vem").c_str()), 1);
    Bytes rewritten = VariableFileOfSchema(0);
    rewritten.v[42] = 3;  // schema word: behind the frame (27 bytes) and the base record (15 bytes)
    rewritten.u16_(0);    // SubSegmentKind
    rewritten.u8_(0);     // PiLocation, empty
    rewritten.u16_(0);    // DclPositionA
    rewritten.u16_(0);    // DclPositionB
    rewritten.u32_(0);    // VarQualifier
    EXPECT_EQ(ReadFileBytes(dir.file("v3.vem")), rewritten.v);
    VemDeleteNode(loaded);
}

TEST(VariablesFile, ARecordOfAnUnknownVersionFailsTheLoad) {
    TempDir dir;
    std::vector<u8> file = RootWithVariableFile();
    file[54] = 4;  // schema word of the variable record
    WriteFileBytes(dir.file("v4.vem"), file);
    EXPECT_EQ(VemLoadNode(dir.file("v4.vem").c_str()), nullptr);
}

TEST(VariablesFile, EveryCutOfTheRecordFailsTheLoad) {
    TempDir dir;
    const std::vector<u8> file = VariableFileOfSchema(3).v;
    for (std::size_t length = 27; length < file.size(); ++length) {
        WriteFileBytes(dir.file("cut.vem"), std::vector<u8>(file.begin(), file.begin() + length));
        EXPECT_EQ(VemLoadNode(dir.file("cut.vem").c_str()), nullptr) << length;
    }
    const std::vector<u8> tree = RootWithVariableFile();
    for (std::size_t length = 40; length < tree.size(); ++length) {
        WriteFileBytes(dir.file("cut.vem"), std::vector<u8>(tree.begin(), tree.begin() + length));
        EXPECT_EQ(VemLoadNode(dir.file("cut.vem").c_str()), nullptr) << length;
    }
}
