// The fields of a statement in one call. Its texts come by value, so this header needs the class
// headers: vem32_classes.h brings it.
#pragma once

#include "platform/cstring.h"
#include "vem_evem.h"

// Every field of one statement, read in one call by a tool that reads whole chains.
struct tEVemStatementFields {
    tEVemNodeType Type;
    u16 AwlLine;
    u16 AwlColumn;
    u16 UcodeOffset;
    int NegOperand;
    tEVemAccuType AccuType;
    tCbeType CbeType;
    tEVemAddressMode AddressMode;
    u16 Offset;
    u16 FarOffset;
    u16 LabelNum;
    tCbeType InType;
    tCbeType OutType;
    int IndexCount;
    CString Name;
    CString TypeName;
    CVemByteArray* Value;
    CVemBaseNode* VemNode;
    CVemBaseNode* InstanceNode;
    CVemBaseNode* ElementNode;
    CEVemBaseNode* StdStringLParam;
    CEVemBaseNode* StdStringPParam;
    CEVemBaseNode* StdStringIn2Param;
};
// Fills each field with what the function of its name answers for the node (EVemGetNodeType,
// EVemGetAwlPosition, EVemGetUcodeOffset, EVemGetName, ..., EVemGetStdStringIn2ParamStmtNode),
// asking the switch once. 1 if the node answered them itself; 0 with the switch off or a null
// node, whose answers the fields then hold; 0 and nothing filled for null fields.
VEM_API int EVemGetStatementFields(CEVemBaseNode* node, tEVemStatementFields* fields);
