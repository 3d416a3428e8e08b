// Plain names of the data types, indexed by the type's value.
#include "variables/variable.h"

namespace {

constexpr const char* kCbeTypeNames[40] = {
    "UNDEF",
    "BOOL",
    "BYTE",
    "WORD",
    "DWORD",
    "USINT",
    "UINT",
    "UDINT",
    "SINT",
    "INT",
    "DINT",
    "REAL",
    "TIME",
    "DATE",
    "TIME_OF_DAY",
    "DATE_AND_TIME",
    "LWORD",
    "ULINT",
    "LINT",
    "LREAL",
    "STRING",
    "ENUM",
    "ARRAY",
    "STRUCT",
    "BIT",
    "BCDREAL",
    "REFERENCE",
    "USER",
    "ARRAYOFARRAY",
    "ARRAYOFSTRUCT",
    "STRUCTOFSTRUCT",
    "STRUCTOFARRAY",
    "INITVALUES",
    "FBINSTANCE",
    "INT24",
    "REAL48",
    "",
    "",
    "",
    "",
};

}  // namespace

const char* vem::CbeTypeName(tCbeType type) { return type < kCbeTypeCount ? kCbeTypeNames[type] : ""; }
