#include "memory/segkind.h"

namespace {

struct KindName {
    unsigned kind;
    const char* name;
};

// Some names end in a line feed, some do not, and their blanks are as the dumps have always shown them.
constexpr KindName kKindNames[] = {
    {0, "Codesegment\n"},
    {1, "Datasegment\n"},
    {2, "Initialsegment\n"},
    {3, "Source Segment - Start\n"},
    {4, "Source Segment - Continue\n"},
    {5, "Task definition segment\n"},
    {6, "PI And Mask segment\n"},
    {7, "NI And Mask segment\n"},
    {16, "IO Table segment - Start\n"},
    {17, "IO Table segment - Continue\n"},
    {18, " IO Complex Table - Start\n"},
    {19, "IO Complex Table - Continue\n"},
    {20, " Instance Table - Start \n"},
    {21, " Instance Table - Continue\n"},
    {22, "Download table - Start \n"},
    {23, " Download table - continue\n"},
    {24, "Native Code"},
    {25, "SegInitSecond"},
    {32, "IoSegment"},
    {33, "IoInitSegment"},
    {34, "IoOldSegment"},
    {35, "Parameter segment\n"},
    {36, "Hardware config segment\n"},
    {39, "OemVarInfoTable"},
    {57, "ByRef Access Info Segment"},
    {128, "intern - PI - segment \n"},
    {129, "intern - NI - segment\n "},
    {130, "intern - NV map segment \n"},
    {131, "intern - Instance stack\n"},
    {132, "intern - AE stack \n"},
    {133, "intern - Ext AE segment\n"},
    {134, "intern - Ext AEs\n"},
    {135, "intern - AETypeStck segment\n"},
};

}  // namespace

const char* vem::SegmentKindName(unsigned kind) {
    for (const KindName& k : kKindNames)
        if (k.kind == kind) return k.name;
    return "### unknown segment ###";
}
