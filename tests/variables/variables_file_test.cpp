// Variable records in node files: the golden file of a root with one variable and records of older
// versions written by hand. Damaged records are among the hostile records.
#include "test_util.h"
#include "variables/variable.h"

using vemtest::Bytes;
using vemtest::Frame;
using vemtest::ReadFileBytes;
using vemtest::TempDir;
using vemtest::WriteFileBytes;

namespace {

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
    b.u16_(0);               // 27 schema word of the base record
    b.u8_(1).u8_(1);         // 29 node type, 30 Expanded
    b.str("R");              // 31 name
    b.u32_(0);               // 33 Serial
    b.u8_(0);                // 37 ExtraText
    b.u16_(1);               // 38 child count
    b.u8_(2);                // 40 type byte of the child
    b.u16_(0);               // 41 child: schema word of the base record
    b.u8_(2).u8_(0);         // 43 child: node type, 44 Expanded
    b.str("V");              // 45 child: name
    b.u32_(0);               // 47 child: Serial
    b.u8_(0);                // 51 child: ExtraText
    b.u16_(0);               // 52 child: child count
    b.u16_(3);               // 54 schema word of the variable record
    b.u16_(4);               // 56 Offset
    b.u16_(2);               // 58 Size
    b.u16_(0xFFFF);          // 60 ParentSegment
    b.u8_(9).u8_(0).u8_(0);  // 62 VariableType, 63 Reference, 64 NetVar
    b.u16_(0);               // 65 ProgramNr
    b.u8_(0).u8_(0);         // 67 TypeName, empty; 68 Scope
    b.u8_(1).u8_(0);         // 69 CanBeWatched, 70 VarInOut
    b.u8_(0);                // 71 InstanceText, empty
    b.u16_(0);               // 72 SubSegmentKind
    b.u8_(0);                // 74 PiLocation, empty
    b.u16_(0).u16_(0);       // 75 DclPositionA, 77 DclPositionB
    b.u32_(0);               // 79 VarQualifier
    return b.v;
}

// A variable as the root of a file, with a record of the given version up to the fields it holds.
Bytes VariableFileOfSchema(unsigned schema) {
    Bytes b = Frame(2);
    LeafBaseRecord(b, 2, 0, "OLD");
    b.u16_(schema);              // schema word
    b.u16_(0x0102);              // Offset
    b.u16_(0x0304);              // Size
    b.u16_(0x0506);              // ParentSegment
    b.u8_(10).u8_(1).u8_(1);     // VariableType DINT, Reference, NetVar
    b.u16_(7);                   // ProgramNr
    b.str("MYTYPE");             // TypeName
    b.u8_(4);                    // Scope
    b.u8_(0).u8_(1);             // CanBeWatched, VarInOut
    b.str("INST");               // InstanceText
    if (schema >= 1) b.u16_(2);  // SubSegmentKind
    if (schema >= 2) {
        b.str("%IX1.0");          // PiLocation
        b.u16_(0x21).u16_(0x22);  // DclPositionA, DclPositionB
    }
    if (schema >= 3) b.u32_(0xCAFEBABE);  // VarQualifier
    return b;
}

CVemVariableNode* AsVariable(CVemBaseNode* node) { return static_cast<CVemVariableNode*>(node); }

CVemBaseNode* LoadBytes(const TempDir& dir, const std::vector<u8>& bytes) {
    WriteFileBytes(dir.file("in.vem"), bytes);
    return VemLoadNode(dir.file("in.vem").c_str());
}

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

TEST(VariablesFile, RootWithOneVariableIsWrittenByteForByteAndLoadsEveryField) {
    TempDir dir;
    CVemBaseNode* root = vemtest::NewNode(kVemBaseNode, "R");
    VemAddChildTail(root, VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 0));
    ASSERT_EQ(VemWriteNode(root, dir.file("r.vem").c_str()), 1);
    VemDeleteNode(root);
    const std::vector<u8> golden = RootWithVariableFile();
    ASSERT_EQ(golden.size(), 83u);
    ASSERT_EQ(ReadFileBytes(dir.file("r.vem")), golden);
    root = VemLoadNode(dir.file("r.vem").c_str());
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(VemGetName(root), "R");
    EXPECT_EQ(root->Expanded, 1);
    ASSERT_EQ(root->Children.GetCount(), 1);
    CVemBaseNode* child = static_cast<CVemBaseNode*>(root->Children.GetHead());
    ASSERT_EQ(child->GetRuntimeClass(), RUNTIME_CLASS(CVemVariableNode));
    EXPECT_EQ(child->Parent, root);
    EXPECT_EQ(child->Expanded, 0);
    EXPECT_EQ(VemGetOffset(child), 4);
    EXPECT_EQ(VemGetSize(child), 2);
    // Values other than the defaults are covered by the test below and the older records.
    ASSERT_EQ(VemWriteNode(root, dir.file("again.vem").c_str()), 1);
    EXPECT_EQ(ReadFileBytes(dir.file("again.vem")), golden);
    VemDeleteNode(root);
}

TEST(VariablesFile, OlderRecordsLoadWithTheDefaultsOfTheLaterFields) {
    TempDir dir;
    struct Case {
        unsigned Schema;
        tIpSegmentKind Kind;
        const char* PiLocation;
        u32 DclA, DclB, Qualifier;
    };
    const Case cases[] = {{0, kIpSegCode, "", 0, 0, 0},
                          {1, kIpSegInit, "", 0, 0, 0},
                          {2, kIpSegInit, "%IX1.0", 0x21, 0x22, 0},
                          {3, kIpSegInit, "%IX1.0", 0x21, 0x22, 0xCAFEBABE}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.Schema);
        CVemBaseNode* loaded = LoadBytes(dir, VariableFileOfSchema(c.Schema).v);
        ASSERT_NE(loaded, nullptr);
        CVemVariableNode* v = AsVariable(loaded);
        ExpectVersionZeroFields(v);
        EXPECT_EQ(v->SubSegmentKind, c.Kind);
        EXPECT_EQ(v->PiLocation, c.PiLocation);
        EXPECT_EQ(v->DclPositionA, c.DclA);
        EXPECT_EQ(v->DclPositionB, c.DclB);
        EXPECT_EQ(v->VarQualifier, c.Qualifier);
        VemDeleteNode(loaded);
    }
}

TEST(VariablesFile, RecordsAreWrittenBackAsVersionThree) {
    TempDir dir;
    Bytes rewritten = VariableFileOfSchema(0);
    rewritten.v[42] = 3;        // schema word: behind the frame (27 bytes) and the base record (15 bytes)
    rewritten.u16_(0).u8_(0);   // SubSegmentKind, PiLocation empty
    rewritten.u16_(0).u16_(0);  // DclPositionA, DclPositionB
    rewritten.u32_(0);          // VarQualifier
    for (unsigned schema : {0u, 3u}) {
        CVemBaseNode* loaded = LoadBytes(dir, VariableFileOfSchema(schema).v);
        ASSERT_NE(loaded, nullptr) << schema;
        ASSERT_EQ(VemWriteNode(loaded, dir.file("again.vem").c_str()), 1);
        EXPECT_EQ(ReadFileBytes(dir.file("again.vem")), schema ? VariableFileOfSchema(3).v : rewritten.v) << schema;
        VemDeleteNode(loaded);
    }
}
