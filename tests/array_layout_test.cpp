// Array expansion: one element node per index, laid out in the target's alignment and unit size.
#include "compiled_test_util.h"
#include "variables/array.h"

using compiledtest::ChildNames;
using compiledtest::MakeNode;
using compiledtest::Named;
using compiledtest::NodePtr;

namespace {

using ArrayLayout = compiledtest::SettingsTest;

NodePtr Target(u8 alignment, u8 byteSize) {
    NodePtr exe = MakeNode(kVemExeNode, "R");
    tVemDeviceSettings settings = *VemGetDeviceSettings(exe.get());
    settings.Alignment = alignment;
    settings.ByteSize = byteSize;
    VemSetDeviceSettings(exe.get(), settings);
    return exe;
}

// An array below the parent with the element prototype and the ranges given.
CVemBaseNode* AddArray(CVemBaseNode* parent, const char* name, u16 offset, CVemBaseNode* element,
                       std::initializer_list<tVemDimRange> ranges) {
    CVemBaseNode* array = Named(kVemArrayNode, name);
    VemSetOffset(array, offset);
    u8 index = 0;
    for (const tVemDimRange& range : ranges) VemSetDimRange4Index(VemGetRange(array), index++, range);
    VemAddChildTail(array, element);
    VemAddChildTail(parent, array);
    return array;
}

CVemBaseNode* Element(tCbeType type, u16 size) { return VemCreateCVemVariableNode("", 0, type, size, 0); }

std::vector<int> Offsets(CVemBaseNode* array) {
    std::vector<int> offsets;
    CObList* list = VemGetChildList(array);
    for (POSITION pos = list->GetHeadPosition(); pos;) offsets.push_back(VemGetOffset(static_cast<CVemBaseNode*>(list->GetNext(pos))));
    return offsets;
}

std::vector<int> Sizes(CVemBaseNode* array) {
    std::vector<int> sizes;
    CObList* list = VemGetChildList(array);
    for (POSITION pos = list->GetHeadPosition(); pos;) sizes.push_back(VemGetSize(static_cast<CVemBaseNode*>(list->GetNext(pos))));
    return sizes;
}

std::vector<int> ExpandedOffsets(u8 alignment, u8 byteSize, u16 offset, CVemBaseNode* element, tVemDimRange range) {
    NodePtr exe = Target(alignment, byteSize);
    CVemBaseNode* array = AddArray(exe.get(), "A", offset, element, {range});
    VemExpandArray(array);
    return Offsets(array);
}

}  // namespace

TEST_F(ArrayLayout, ElementsAsBigAsTheAlignmentFollowEachOther) {
    EXPECT_EQ(ExpandedOffsets(2, 1, 10, Element(kCbeTypeInt, 2), {1, 3, 0}), (std::vector<int>{10, 12, 14}));
}

TEST_F(ArrayLayout, SmallerElementsAreNotRaised) {
    EXPECT_EQ(ExpandedOffsets(2, 1, 10, Element(kCbeTypeByte, 1), {1, 3, 0}), (std::vector<int>{10, 11, 12}));
}

TEST_F(ArrayLayout, BiggerElementsAreRaisedToTheAlignment) {
    EXPECT_EQ(ExpandedOffsets(2, 1, 10, Element(kCbeTypeUser, 3), {1, 3, 0}), (std::vector<int>{10, 14, 18}));
}

// A string's size is its length in units; at alignment 4 it is only raised to 2.
TEST_F(ArrayLayout, StringsTakeTheirLengthAndAlignToTwo) {
    NodePtr exe = Target(4, 1);
    CVemBaseNode* array = AddArray(exe.get(), "S", 0, Element(kCbeTypeString, 81), {{0, 1, 0}});
    VemSetArrayElementSizeOfType(array, 5);
    VemExpandArray(array);
    EXPECT_EQ(Offsets(array), (std::vector<int>{0, 6}));
    EXPECT_EQ(Sizes(array), (std::vector<int>{5, 5}));
}

TEST_F(ArrayLayout, StringLengthCountsUnitsOfTheTarget) {
    NodePtr exe = Target(2, 2);
    CVemBaseNode* array = AddArray(exe.get(), "S", 0, Element(kCbeTypeString, 81), {{0, 1, 0}});
    VemSetArrayElementSizeOfType(array, 3);
    VemExpandArray(array);
    EXPECT_EQ(Sizes(array), (std::vector<int>{6, 6}));
    EXPECT_EQ(Offsets(array), (std::vector<int>{0, 6}));
}

TEST_F(ArrayLayout, WideStringsKeepTheirSizeButAlignAsStrings) {
    EXPECT_EQ(ExpandedOffsets(4, 1, 0, Element(kCbeTypeWString, 6), {0, 2, 0}), (std::vector<int>{0, 6, 12}));
    EXPECT_EQ(ExpandedOffsets(4, 1, 0, Element(kCbeTypeDint, 6), {0, 2, 0}), (std::vector<int>{0, 8, 16}));
}

TEST_F(ArrayLayout, EveryElementTakesAWholeUnit) {
    EXPECT_EQ(ExpandedOffsets(1, 2, 0, Element(kCbeTypeBool, 1), {0, 3, 0}), (std::vector<int>{0, 2, 4, 6}));
    EXPECT_EQ(ExpandedOffsets(1, 4, 0, Element(kCbeTypeInt, 2), {0, 2, 0}), (std::vector<int>{0, 4, 8}));
    EXPECT_EQ(ExpandedOffsets(1, 3, 0, Element(kCbeTypeBool, 1), {0, 2, 0}), (std::vector<int>{0, 1, 2}));
}

TEST_F(ArrayLayout, HeaderIsRaisedToTheAlignment) {
    NodePtr exe = Target(4, 1);
    CVemBaseNode* array = AddArray(exe.get(), "A", 100, Element(kCbeTypeInt, 2), {{0, 1, 0}});
    VemSetHeaderLength(array, 5);
    VemExpandArray(array);
    EXPECT_EQ(Offsets(array), (std::vector<int>{108, 110}));
}

TEST_F(ArrayLayout, LastDimensionChangesFastest) {
    NodePtr exe = Target(1, 1);
    CVemBaseNode* array = AddArray(exe.get(), "A", 0, Element(kCbeTypeInt, 2), {{0, 1, 0}, {0, 2, 0}});
    VemExpandArray(array);
    EXPECT_EQ(ChildNames(array), (std::vector<std::string>{"A [ 0 , 0 ] ", "A [ 0 , 1 ] ", "A [ 0 , 2 ] ",
                                                           "A [ 1 , 0 ] ", "A [ 1 , 1 ] ", "A [ 1 , 2 ] "}));
    EXPECT_EQ(Offsets(array), (std::vector<int>{0, 2, 4, 6, 8, 10}));
}

TEST_F(ArrayLayout, NegativeAndReversedBounds) {
    NodePtr exe = Target(1, 1);
    CVemBaseNode* negative = AddArray(exe.get(), "N", 0, Element(kCbeTypeByte, 1), {{-2, 0, 0}});
    CVemBaseNode* reversed = AddArray(exe.get(), "R", 0, Element(kCbeTypeByte, 1), {{5, 3, 0}, {1, 2, 0}});
    VemExpandArray(exe.get());
    EXPECT_EQ(ChildNames(negative), (std::vector<std::string>{"N [ -2 ] ", "N [ -1 ] ", "N [ 0 ] "}));
    EXPECT_EQ(ChildNames(reversed), (std::vector<std::string>{"R [ 5 , 1 ] ", "R [ 5 , 2 ] "}));
}

TEST_F(ArrayLayout, ArrayOfArraysExpandsOnEveryLevel) {
    NodePtr exe = Target(1, 1);
    CVemBaseNode* inner = Named(kVemArrayNode, "I");
    VemSetDimRange4Index(VemGetRange(inner), 0, {0, 1, 0});
    VemAddChildTail(inner, Element(kCbeTypeInt, 2));
    VemSetSize(inner, 4);
    CVemBaseNode* outer = AddArray(exe.get(), "A", 20, inner, {{1, 2, 0}});
    VemExpandArray(outer);
    EXPECT_EQ(ChildNames(outer), (std::vector<std::string>{"A [ 1 ] ", "A [ 2 ] "}));
    CVemBaseNode* second = VemGetLastChild(outer);
    EXPECT_EQ(ChildNames(second), (std::vector<std::string>{"A [ 2 ]  [ 0 ] ", "A [ 2 ]  [ 1 ] "}));
    EXPECT_EQ(Offsets(second), (std::vector<int>{24, 26}));
    EXPECT_EQ(VemGetReferenceNode(second), nullptr);
}

TEST_F(ArrayLayout, ElementsTakeTheArraysSegmentAndThePrototypeGoes) {
    NodePtr exe = Target(2, 1);
    CVemBaseNode* array = AddArray(exe.get(), "A", 0, Element(kCbeTypeInt, 2), {{0, 1, 0}});
    VemSetParentSegment(array, 7);
    VemExpandArray(array);
    EXPECT_EQ(VemGetReferenceNode(array), nullptr);
    EXPECT_EQ(VemGetParentSegment(VemGetLastChild(array)), 7);
    EXPECT_EQ(VemGetSize(array), 0xFFFF);  // the array's own size is not touched
    VemExpandArray(array);
    EXPECT_EQ(ChildNames(array).size(), 2u);
}

TEST_F(ArrayLayout, WithoutExecutableEveryUnitIsOneByte) {
    NodePtr task = MakeNode(kVemTuiTaskNode, "T");
    CVemBaseNode* array = AddArray(task.get(), "A", 10, Element(kCbeTypeUser, 3), {{0, 2, 0}});
    VemSetHeaderLength(array, 3);
    VemExpandArray(task.get());
    EXPECT_EQ(Offsets(array), (std::vector<int>{13, 16, 19}));
}

TEST_F(ArrayLayout, AlignmentZeroCountsAsOne) {
    EXPECT_EQ(ExpandedOffsets(0, 1, 10, Element(kCbeTypeUser, 3), {0, 1, 0}), (std::vector<int>{10, 13}));
}

TEST_F(ArrayLayout, OffsetsWrapInSixteenBits) {
    EXPECT_EQ(ExpandedOffsets(1, 1, 65534, Element(kCbeTypeInt, 2), {0, 2, 0}), (std::vector<int>{65534, 0, 2}));
}

TEST_F(ArrayLayout, RangesThatCannotBeExpandedLeaveTheArrayAlone) {
    NodePtr exe = Target(1, 1);
    CVemBaseNode* unset = Named(kVemArrayNode, "U");
    VemAddChildTail(unset, Element(kCbeTypeInt, 2));
    VemAddChildTail(exe.get(), unset);
    EXPECT_THROW(VemExpandArray(unset), CInvalidArgException);
    CVemBaseNode* huge = AddArray(exe.get(), "H", 0, Element(kCbeTypeByte, 1), {{0, 255, 0}, {0, 255, 0}});
    EXPECT_THROW(VemExpandArray(huge), CInvalidArgException);
    EXPECT_NE(VemGetReferenceNode(huge), nullptr);
    EXPECT_TRUE(ChildNames(huge).empty());
    CVemBaseNode* none = AddArray(exe.get(), "Z", 0, Element(kCbeTypeByte, 1), {});
    VemGetRange(none)->DimSize = 0;
    VemExpandArray(none);
    EXPECT_NE(VemGetReferenceNode(none), nullptr);  // no dimension: the prototype stays
}
