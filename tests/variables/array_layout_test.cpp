// Array expansion: one element node per index, laid out in the target's alignment and unit size.
#include "compiled_test_util.h"
#include "variables/array.h"
#include "vem_limits.h"

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

// A value of every element, in order.
std::vector<int> Each(CVemBaseNode* array, int (*value)(CVemBaseNode*)) {
    std::vector<int> values;
    CObList* list = VemGetChildList(array);
    for (POSITION pos = list->GetHeadPosition(); pos;)
        values.push_back(value(static_cast<CVemBaseNode*>(list->GetNext(pos))));
    return values;
}

std::vector<int> Offsets(CVemBaseNode* array) {
    return Each(array, [](CVemBaseNode* n) { return int{VemGetOffset(n)}; });
}
std::vector<int> Sizes(CVemBaseNode* array) {
    return Each(array, [](CVemBaseNode* n) { return int{VemGetSize(n)}; });
}

std::vector<int> ExpandedOffsets(u8 alignment, u8 byteSize, u16 offset, CVemBaseNode* element, tVemDimRange range) {
    NodePtr exe = Target(alignment, byteSize);
    CVemBaseNode* array = AddArray(exe.get(), "A", offset, element, {range});
    VemExpandArray(array);
    return Offsets(array);
}

}  // namespace

// Elements as big as the alignment follow each other, smaller ones are not raised, bigger ones are
// raised to it; wide strings keep their size but align as strings; every element takes a whole unit;
// alignment 0 counts as 1; offsets wrap in 16 bits.
TEST_F(ArrayLayout, ElementOffsetsFollowAlignmentAndUnitSize) {
    struct Case {
        u8 alignment, byteSize;
        u16 offset;
        tCbeType type;
        u16 size;
        tVemDimRange range;
        std::vector<int> offsets;
    };
    const Case cases[] = {
        {2, 1, 10, kCbeTypeInt, 2, {1, 3, 0}, {10, 12, 14}},  {2, 1, 10, kCbeTypeByte, 1, {1, 3, 0}, {10, 11, 12}},
        {2, 1, 10, kCbeTypeUser, 3, {1, 3, 0}, {10, 14, 18}}, {4, 1, 0, kCbeTypeWString, 6, {0, 2, 0}, {0, 6, 12}},
        {4, 1, 0, kCbeTypeDint, 6, {0, 2, 0}, {0, 8, 16}},    {1, 2, 0, kCbeTypeBool, 1, {0, 3, 0}, {0, 2, 4, 6}},
        {1, 4, 0, kCbeTypeInt, 2, {0, 2, 0}, {0, 4, 8}},      {1, 3, 0, kCbeTypeBool, 1, {0, 2, 0}, {0, 1, 2}},
        {0, 1, 10, kCbeTypeUser, 3, {0, 1, 0}, {10, 13}},     {1, 1, 65534, kCbeTypeInt, 2, {0, 2, 0}, {65534, 0, 2}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << int{c.alignment} << " " << int{c.byteSize} << " " << c.type << " "
                                        << c.size);
        EXPECT_EQ(ExpandedOffsets(c.alignment, c.byteSize, c.offset, Element(c.type, c.size), c.range), c.offsets);
    }
}

// A string's size is its length in units of the target; at alignment 4 it is only raised to 2.
TEST_F(ArrayLayout, StringsTakeTheirLengthInUnitsAndAlignToTwo) {
    struct Case {
        u8 alignment, byteSize;
        u16 length;
        std::vector<int> offsets, sizes;
    };
    for (const Case& c : {Case{4, 1, 5, {0, 6}, {5, 5}}, Case{2, 2, 3, {0, 6}, {6, 6}}}) {
        NodePtr exe = Target(c.alignment, c.byteSize);
        CVemBaseNode* array = AddArray(exe.get(), "S", 0, Element(kCbeTypeString, 81), {{0, 1, 0}});
        VemSetArrayElementSizeOfType(array, c.length);
        VemExpandArray(array);
        EXPECT_EQ(Offsets(array), c.offsets);
        EXPECT_EQ(Sizes(array), c.sizes);
    }
}

TEST_F(ArrayLayout, NegativeAndReversedBounds) {
    NodePtr exe = Target(1, 1);
    CVemBaseNode* negative = AddArray(exe.get(), "N", 0, Element(kCbeTypeByte, 1), {{-2, 0, 0}});
    CVemBaseNode* reversed = AddArray(exe.get(), "R", 0, Element(kCbeTypeByte, 1), {{5, 3, 0}, {1, 2, 0}});
    VemExpandArray(exe.get());
    EXPECT_EQ(ChildNames(negative), (std::vector<std::string>{"N [ -2 ] ", "N [ -1 ] ", "N [ 0 ] "}));
    EXPECT_EQ(ChildNames(reversed), (std::vector<std::string>{"R [ 5 , 1 ] ", "R [ 5 , 2 ] "}));
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
    // 17 arrays of 65535 bytes each make more nodes than one expansion may: the nodes made go again.
    CVemBaseNode* inner = Named(kVemArrayNode, "I");
    VemSetDimRange4Index(VemGetRange(inner), 0, {0, 65534, 0});
    VemAddChildTail(inner, Element(kCbeTypeByte, 1));
    CVemBaseNode* many = AddArray(exe.get(), "M", 0, inner, {{0, 16, 0}});
    static_assert(17 * (1 + 65535) > kVemMaxExpandedNodes && 16 * (1 + 65535) <= kVemMaxExpandedNodes);
    EXPECT_THROW(VemExpandArray(many), CInvalidArgException);
    EXPECT_EQ(VemGetReferenceNode(many), inner);
    EXPECT_TRUE(ChildNames(many).empty());
    CVemBaseNode* none = AddArray(exe.get(), "Z", 0, Element(kCbeTypeByte, 1), {});
    VemGetRange(none)->DimSize = 0;
    VemExpandArray(none);
    EXPECT_NE(VemGetReferenceNode(none), nullptr);  // no dimension: the prototype stays
}
