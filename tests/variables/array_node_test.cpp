// Array node: ranges, the element prototype, what reaches it, the record and the clone.
#include <algorithm>

#include "alloc_hook.h"
#include "compiled_test_util.h"
#include "variables/array.h"

using compiledtest::ChildNames;
using compiledtest::LoadRecord;
using compiledtest::MakeNode;
using compiledtest::Named;
using compiledtest::NodePtr;
using compiledtest::StoreRecord;
using vemtest::Bytes;

namespace {

using ArrayNode = compiledtest::SettingsTest;

CVemBaseNode* IntElement() { return VemCreateCVemVariableNode("", 0, kCbeTypeInt, 2, 0); }

NodePtr IntArray(tVemDimRange range = {0, 1, 0}) {
    NodePtr array = MakeNode(kVemArrayNode, "A");
    VemSetDimRange4Index(VemGetRange(array.get()), 0, range);
    VemAddChildTail(array.get(), IntElement());
    return array;
}

std::vector<u8> Tail(const std::vector<u8>& record, std::size_t size) {
    return std::vector<u8>(record.end() - static_cast<long>(size), record.end());
}

}  // namespace

TEST_F(ArrayNode, ParamVarOffsetIsTwelveBehind) {
    NodePtr array = IntArray();
    VemSetOffset(array.get(), 100);
    EXPECT_EQ(VemGetParamVarOffset(array.get()), 112);
    NodePtr variable(VemCreateCVemVariableNode("V", 100, kCbeTypeInt, 2, 0));
    EXPECT_EQ(VemGetParamVarOffset(variable.get()), 100);
}

TEST_F(ArrayNode, ElementSizeOnlyOnArrays) {
    NodePtr array = MakeNode(kVemArrayNode);
    VemSetArrayElementSizeOfType(array.get(), 12);
    EXPECT_EQ(static_cast<CVemArrayNode*>(array.get())->ElementSizeOfType, 12);
    NodePtr variable = MakeNode(kVemVariableNode);
    VemSetArrayElementSizeOfType(variable.get(), 12);
    VemSetArrayElementSizeOfType(nullptr, 12);
    EXPECT_EQ(StoreRecord(variable.get()), StoreRecord(MakeNode(kVemVariableNode).get()));
}

// The prototype takes the segment given, the elements the array's own.
TEST_F(ArrayNode, SegmentsReferenceAndProgramNumberReachThePrototype) {
    NodePtr array = IntArray();
    VemAddChildHead(array.get(), IntElement());
    VemSetParentSegment(array.get(), 5);
    EXPECT_EQ(VemGetParentSegment(array.get()), 5);
    EXPECT_EQ(VemGetParentSegment(VemGetReferenceNode(array.get())), 5);
    EXPECT_EQ(VemGetParentSegment(VemGetLastChild(array.get())), 5);
    VemSetScope(array.get(), 8);  // a variable that holds its own data keeps its segment
    VemSetParentSegment(array.get(), 6);
    EXPECT_EQ(VemGetParentSegment(array.get()), 5);
    EXPECT_EQ(VemGetParentSegment(VemGetReferenceNode(array.get())), 6);
    EXPECT_EQ(VemGetParentSegment(VemGetLastChild(array.get())), 5);
    VemSetReference(array.get(), 1);  // reference and program number reach the prototype only
    EXPECT_EQ(VemIsReference(VemGetReferenceNode(array.get())), 1);
    VemSetProgramNr(array.get(), 4);
    EXPECT_EQ(VemGetProgramNr(array.get()), 4);
    EXPECT_EQ(VemGetProgramNr(VemGetReferenceNode(array.get())), 4);
    EXPECT_EQ(VemGetProgramNr(VemGetLastChild(array.get())), 0);
}

// A structure prototype moves its members by its own offset; the prototype stays where it is.
TEST_F(ArrayNode, OffsetsReachAStructurePrototypesMembers) {
    NodePtr array = MakeNode(kVemArrayNode, "A");
    VemSetDimRange4Index(VemGetRange(array.get()), 0, {0, 1, 0});
    VemSetOffset(array.get(), 10);
    CVemBaseNode* s = Named(kVemStructNode, "");
    VemSetOffset(s, 4);
    VemAddChildTail(s, VemCreateCVemVariableNode("M", 2, kCbeTypeInt, 2, 0));
    VemAddChildTail(array.get(), s);
    u16 starts[40] = {};
    starts[kIpSegCode] = 100;
    VemComputeOffsets(array.get(), starts);
    EXPECT_EQ(VemGetOffset(array.get()), 110);
    EXPECT_EQ(VemGetOffset(s), 4);
    EXPECT_EQ(VemGetOffset(VemGetLastChild(s)), 6);
    array->ShiftOffsets(5);
    EXPECT_EQ(VemGetOffset(array.get()), 115);
    EXPECT_EQ(VemGetOffset(VemGetLastChild(s)), 10);
}

TEST_F(ArrayNode, CloneCopiesRangePrototypeAndElements) {
    NodePtr array = IntArray({2, 4, 0});
    VemSetHeaderLength(array.get(), 6);
    VemSetDimensions(array.get(), 1);
    VemAddChildHead(array.get(), Named(kVemVariableNode, "E"));
    NodePtr copy(VemClone(array.get()));
    EXPECT_EQ(VemGetNodeType(copy.get()), kVemArrayNode);
    EXPECT_EQ(VemGetHeaderLength(copy.get()), 6);
    EXPECT_EQ(VemGetDimensions(copy.get()), 1);
    EXPECT_EQ(VemGetDimRange(VemGetRange(copy.get()), 0).HighBound, 4);
    EXPECT_EQ(VemGetDimSize(VemGetRange(copy.get())), 1);
    ASSERT_NE(VemGetReferenceNode(copy.get()), nullptr);
    EXPECT_NE(VemGetReferenceNode(copy.get()), VemGetReferenceNode(array.get()));
    EXPECT_EQ(VemGetSize(VemGetReferenceNode(copy.get())), 2);
    EXPECT_EQ(ChildNames(copy.get()), std::vector<std::string>{"E"});
}

TEST_F(ArrayNode, ArrayWithoutRangesIsNotCloned) {
    NodePtr array = MakeNode(kVemArrayNode, "A");
    VemAddChildHead(array.get(), Named(kVemVariableNode, "E"));
    VemAddChildTail(array.get(), IntElement());
    vemtest::AllocationWatch watch;
    EXPECT_THROW(VemClone(array.get()), CInvalidArgException);
    EXPECT_EQ(watch.Live(), 0);
}

// Behind the variable record: the three word arrays, DimSize, ArrayCode, ElementSizeOfType,
// Dimensions, HeaderLength and the prototype, null after an expansion.
TEST_F(ArrayNode, RecordOfAnExpandedArray) {
    CVemArrayNode array("A", 0x1FF, 0x0102, 0, 1);
    VemSetDimRange4Index(&array.Range, 0, {-1, 2, 0});
    VemSetHeaderLength(&array, 0x0304);
    VemAddChildTail(&array, IntElement());
    VemExpandArray(&array);
    const std::vector<u8> tail = Bytes()
                                     .u16_(1)
                                     .u32_(0xFFFFFFFF)  // low bounds: -1
                                     .u16_(1)
                                     .u32_(2)  // high bounds: 2
                                     .u16_(1)
                                     .u32_(0xFFFFFFFF)  // current indices, back at -1
                                     .u8_(1)            // DimSize
                                     .u8_(0xFF)         // ArrayCode, low 8 bits
                                     .u16_(0x0102)      // ElementSizeOfType
                                     .u8_(1)            // Dimensions
                                     .u16_(0x0304)      // HeaderLength
                                     .u16_(0)           // no prototype
                                     .v;
    const std::vector<u8> record = StoreRecord(&array);
    EXPECT_EQ(Tail(record, tail.size()), tail);
    NodePtr loaded = MakeNode(kVemArrayNode);
    EXPECT_EQ(LoadRecord(loaded.get(), record), 0u);
    EXPECT_EQ(ChildNames(loaded.get()).size(), 4u);
    EXPECT_EQ(VemGetReferenceNode(loaded.get()), nullptr);
    EXPECT_EQ(static_cast<CVemArrayNode*>(loaded.get())->ArrayCode, 0xFFu);
    EXPECT_EQ(StoreRecord(loaded.get()), record);
}

// The prototype goes as a new object of a new class; a foreign class there fails the load.
TEST_F(ArrayNode, PrototypeGoesAsAnObject) {
    NodePtr array = IntArray();
    std::vector<u8> record = StoreRecord(array.get());
    const std::string name = "CVemVariableNode";
    const auto at = std::search(record.begin(), record.end(), name.begin(), name.end());
    ASSERT_NE(at, record.end());
    EXPECT_EQ(std::vector<u8>(at - 6, at), Bytes().u16_(0xFFFF).u16_(5).u16_(16).v);
    NodePtr loaded = MakeNode(kVemArrayNode);
    EXPECT_EQ(LoadRecord(loaded.get(), record), 0u);
    ASSERT_NE(VemGetReferenceNode(loaded.get()), nullptr);
    EXPECT_EQ(VemGetSize(VemGetReferenceNode(loaded.get())), 2);
    EXPECT_EQ(VemGetParentNode(VemGetReferenceNode(loaded.get())), nullptr);

    const std::string foreign = "CVemDownloadList";
    std::copy(foreign.begin(), foreign.end(), at);
    vemtest::AllocationWatch watch;
    {
        NodePtr failed = MakeNode(kVemArrayNode);
        EXPECT_THROW(LoadRecord(failed.get(), record), CArchiveException);
    }
    EXPECT_EQ(watch.Live(), 0);
}
