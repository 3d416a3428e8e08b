// Program organisation units: segments, what reaches the children, the three kinds, and clones.
#include "test_util.h"
#include "units/pou.h"
#include "variables/struct.h"
#include "vem_bytearray.h"

namespace {

CVemBaseNode* NewVariable(const char* name, u16 offset) {
    return VemCreateCVemVariableNode(name, offset, kCbeTypeInt, 2, 0);
}

CVemBaseNode* NewProgram(const char* name) { return vemtest::NewNode(kVemProgramNode, name); }

std::vector<CVemBaseNode*> ChildrenOf(CVemBaseNode* node) {
    std::vector<CVemBaseNode*> out;
    for (POSITION pos = node->Children.GetHeadPosition(); pos;) out.push_back(node->ChildAt(pos));
    return out;
}

void AddChildren(CVemBaseNode* parent, std::initializer_list<CVemBaseNode*> children) {
    for (CVemBaseNode* child : children) VemAddChildTail(parent, child);
}

// Sets all four segment numbers of a unit to the same value.
CVemBaseNode* InSegment(CVemBaseNode* unit, u16 segment) {
    VemSetSegmentNumbers(unit, segment, segment, segment, segment);
    return unit;
}

}  // namespace

TEST(UnitsPou, SegmentNumbersAndTheNccNumber) {
    CVemBaseNode* p = NewProgram("P");
    EXPECT_EQ(VemSetSegmentNumbers(p, 10, 11, 12, 13), 1);
    EXPECT_EQ(VemGetDataSegment(p), 10);
    EXPECT_EQ(VemGetCodeSegment(p), 11);
    EXPECT_EQ(VemGetIniSegment(p), 12);
    EXPECT_EQ(VemGetParentSegment(p), 10);
    // The fourth number is kept, but the getter answers with the ini segment.
    EXPECT_EQ(static_cast<CVemPouNode*>(p)->NccSegNr, 13);
    EXPECT_EQ(VemGetNccSegment(p), 12);
    VemSetDataSegment(p, 20);
    EXPECT_EQ(VemGetParentSegment(p), 20);
    VemDeleteNode(p);
}

TEST(UnitsPou, SegmentReachesTheChildrenButNotProcessImageVariablesOrReferences) {
    CVemBaseNode* p = NewProgram("P");
    CVemBaseNode* plain = NewVariable("A", 0);
    CVemBaseNode* atPi = NewVariable("B", 0);
    VemSetPiLocation(atPi, "%IX0.0");
    CVemBaseNode* reference = NewVariable("C", 0);
    VemSetReference(reference, 1);
    CVemBaseNode* structure = VemNewNode(kVemStructNode);
    VemSetPiLocation(structure, "%IX0.1");  // the location test is for plain variables only
    CVemBaseNode* member = vemtest::Add(structure, NewVariable("M", 0));
    CVemBaseNode* own = VemCreateCVemVariableNode("D", 0, kCbeTypeInt, 2, 8);
    AddChildren(p, {plain, atPi, reference, structure, own});

    VemSetSegmentNumbers(p, 5, 6, 7, 8);
    EXPECT_EQ(VemGetParentSegment(plain), 5);
    EXPECT_EQ(VemGetParentSegment(atPi), 0xFFFF);
    EXPECT_EQ(VemGetParentSegment(reference), 0xFFFF);
    EXPECT_EQ(VemGetParentSegment(structure), 5);
    EXPECT_EQ(VemGetParentSegment(member), 5);
    EXPECT_EQ(VemGetParentSegment(own), 0xFFFF);

    // A child added later needs its own call.
    CVemBaseNode* late = vemtest::Add(p, NewVariable("E", 0));
    EXPECT_EQ(VemGetParentSegment(late), 0xFFFF);
    VemSetChildSegments(p);
    EXPECT_EQ(VemGetParentSegment(late), 5);
    VemDeleteNode(p);
}

TEST(UnitsPou, DeleteAllChildPousKeepsTheVariables) {
    CVemBaseNode* p = NewProgram("P");
    CVemBaseNode* plain = NewVariable("A", 0);
    CVemBaseNode* array = VemCreateCVemVariableNode("R", 0, kCbeTypeArray, 4, 0);  // node type 6
    CVemBaseNode* structure = VemNewNode(kVemStructNode);
    AddChildren(p, {VemNewNode(kVemFbInstanceNode), plain, VemCreateCVemFbNode("F", ""), array,
                    VemCreateCVemFunctionNode("G", ""), structure, NewProgram("Q")});
    VemDeleteAllChildPous(p);
    EXPECT_EQ(ChildrenOf(p), (std::vector<CVemBaseNode*>{plain, array, structure}));
    VemDeleteAllChildPous(p);
    EXPECT_EQ(ChildrenOf(p).size(), 3u);
    // On a node that is no unit nothing happens.
    VemAddChildTail(structure, VemNewNode(kVemFbInstanceNode));
    VemDeleteAllChildPous(structure);
    EXPECT_EQ(ChildrenOf(structure).size(), 1u);
    VemDeleteNode(p);
}

TEST(UnitsPou, ObjectFileIsTheSourcePathAndTheHeaderLengthIsNotKept) {
    CVemBaseNode* p = NewProgram("P");
    VemSetPathName(p, "C:\\PRJ\\P.poe");
    VemSetCodePathName(p, "C:\\PRJ\\P.obj");
    EXPECT_EQ(VemGetObjFileName(p), "C:\\PRJ\\P.poe");
    EXPECT_EQ(VemGetCodePathName(p), "C:\\PRJ\\P.obj");
    p->SetStartOffset(0x10000);
    EXPECT_EQ(p->GetStartOffset(), 0x10000u);
    VemSetHeaderLength(p, 5);
    EXPECT_EQ(VemGetHeaderLength(p), 0);
    VemDeleteNode(p);
}

TEST(UnitsPou, PflArrayIsTakenAndFreedButNeverReplacedByTheSetter) {
    CVemBaseNode* p = NewProgram("P");
    CVemByteArray* first = vemtest::NewArray({1, 2});
    VemSetPflArray(p, first);
    EXPECT_EQ(VemGetPflArray(p), first);
    CVemByteArray* taken = VemGetPflArray(p);
    VemSetPflArray(p, vemtest::NewArray({3}));  // the caller took the first one away before
    delete taken;
    VemDeleteNode(p);  // frees the second; ASan checks

    CVemBaseNode* q = NewProgram("Q");
    CVemByteArray data;
    VemSetDataSegmentPtr(q, &data);
    EXPECT_EQ(VemGetDataSegmentPtr(q), &data);
    VemDeleteNode(q);  // leaves the data segment alone
}

// The icons of each class are in node_classes_test.cpp.
TEST(UnitsPou, IconsAndBitmaps) {
    CVemBaseNode* program = NewProgram("P");
    CVemBaseNode* fb = VemCreateCVemFbNode("F", "");
    CVemBaseNode* function = VemCreateCVemFunctionNode("G", "");
    CVemPouNode plain(kVemBaseNode, "U", "");
    VemSetGlobal(program, 256);
    EXPECT_EQ(program->GetIconID(), 137u);
    EXPECT_EQ(plain.GetBitmapID(), 116u);
    EXPECT_EQ(plain.GetIconID(), 117u);
    VemSetGlobal(program, 3);
    EXPECT_EQ(VemGetGlobal(program), 3);
    VemSetGlobal(fb, 3);
    EXPECT_EQ(VemGetGlobal(fb), 0);  // the flag is for programs only
    for (CVemBaseNode* n : {program, fb, function}) VemDeleteNode(n);
}

TEST(UnitsPou, FunctionHasAnOffsetAndAKindAndAFunctionBlockKeepsItsKindApart) {
    CVemBaseNode* function = VemCreateCVemFunctionNode("G", "g.poe");
    EXPECT_EQ(VemGetSubSegmentKind(function), kIpSegIo);  // setting both shows in the clone test
    EXPECT_EQ(VemGetOffset(function), 0);

    CVemBaseNode* fb = VemCreateCVemFbNode("F", "f.poe");
    auto* block = static_cast<CVemFbNode*>(fb);
    VemSetSubSegmentKind(fb, kIpSegData);
    EXPECT_EQ(VemGetSubSegmentKind(fb), kIpSegCode);
    EXPECT_EQ(block->GetFbSubSegmentKind(), kIpSegCode);
    block->SetFbSubSegmentKind(kIpSegInit);
    EXPECT_EQ(block->GetFbSubSegmentKind(), kIpSegInit);
    EXPECT_EQ(VemGetSubSegmentKind(fb), kIpSegCode);
    VemSetOffset(fb, 9);
    EXPECT_EQ(VemGetOffset(fb), 0);
    EXPECT_EQ(VemGetPathName(fb), "f.poe");
    VemDeleteNode(function);
    VemDeleteNode(fb);
}

TEST(UnitsPou, PathOfAUnitByCodeSegment) {
    CVemBaseNode* top = InSegment(VemCreateCVemFbNode("TOP", "top.poe"), 1);
    CVemBaseNode* inner = InSegment(VemCreateCVemFbNode("IN", "in.poe"), 2);
    CVemBaseNode* deep = InSegment(VemCreateCVemFunctionNode("DEEP", "deep.poe"), 7);
    CVemBaseNode* program = InSegment(NewProgram("P"), 8);
    VemSetPathName(program, "p.poe");
    AddChildren(top, {program, inner, InSegment(VemCreateCVemFunctionNode("F1", "first.poe"), 9),
                      InSegment(VemCreateCVemFunctionNode("F2", "second.poe"), 9)});
    VemAddChildTail(inner, deep);

    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(top, 7), "deep.poe");  // through the child block
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(top, 2), "in.poe");
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(top, 9), "first.poe");  // first in list order
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(top, 1), "");           // its own number is not compared
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(top, 8), "");           // programs are skipped
    EXPECT_EQ(VemGetPouPathNameFromCodeSegNr(deep, 7), "");          // a function is not searched
    VemDeleteNode(top);
}

TEST(UnitsPou, CloneCopiesTheUnitWithItsListAndArrays) {
    CVemBaseNode* source = NewProgram("P");
    auto* p = static_cast<CVemProgramNode*>(source);
    VemSetSegmentNumbers(source, 1, 2, 3, 4);
    VemSetCrSize(source, 5);
    VemSetCrStackSize(source, 6);
    VemSetCrStackElements(source, 7);
    VemSetCheckSum(source, 8);
    p->Date = 9;
    VemSetDataSegLength(source, 10);
    VemSetPathName(source, "p.poe");
    VemSetCodePathName(source, "p.obj");
    VemSetProgramNr(source, 11);
    p->SetStartOffset(12);
    VemSetGlobal(source, 1);
    auto* entry = new CStatListEntry;
    entry->AwlLine = 4;
    VemGetStatList(source)->NewEntry(entry);
    VemSetPflArray(source, vemtest::NewArray({0xAA}));
    CVemByteArray* data = vemtest::NewArray({1, 2, 3});
    VemSetDataSegmentPtr(source, data);
    VemAddChildTail(source, NewVariable("V", 0));

    CVemBaseNode* clone = VemClone(source);
    auto* c = static_cast<CVemProgramNode*>(clone);
    ASSERT_EQ(clone->GetRuntimeClass(), RUNTIME_CLASS(CVemProgramNode));
    EXPECT_EQ(vemtest::Written(clone), vemtest::Written(source));  // every stored field, the list and the children
    EXPECT_EQ(c->NccSegNr, CVemPouNode::kNoSegment);               // not copied
    ASSERT_NE(c->StatList, nullptr);
    EXPECT_NE(c->StatList, p->StatList);
    ASSERT_NE(c->StatList->GetEntry(4), nullptr);
    EXPECT_NE(c->StatList->GetEntry(4), entry);
    ASSERT_NE(c->PflArray, nullptr);
    EXPECT_NE(c->PflArray, p->PflArray);
    EXPECT_EQ(c->PflArray->GetLength(), 1u);
    // The clone works on a copy of the data segment, which it owns (ASan checks the free).
    ASSERT_NE(c->DataSegmentPtr, nullptr);
    EXPECT_NE(c->DataSegmentPtr, data);
    EXPECT_EQ(c->DataSegmentPtr->GetLength(), 3u);
    CVemByteArray other;
    VemSetDataSegmentPtr(clone, &other);  // the copy stays the clone's to free
    EXPECT_EQ(VemGetDataSegmentPtr(clone), &other);
    VemDeleteNode(clone);

    // Without arrays the clone has none.
    VemSetDataSegmentPtr(source, nullptr);
    CVemByteArray* pfl = VemGetPflArray(source);
    VemSetPflArray(source, nullptr);
    delete pfl;
    CVemBaseNode* bare = VemClone(source);
    EXPECT_EQ(VemGetPflArray(bare), nullptr);
    EXPECT_EQ(VemGetDataSegmentPtr(bare), nullptr);
    VemDeleteNode(bare);
    VemDeleteNode(source);
    delete data;
}
