// All fields of a statement at once: a reader of whole chains asks the switch once per statement,
// not once per field.
#include "statement/evembase.h"
#include "statement/evemstmt.h"
#include "vem_evem_fields.h"

int EVemGetStatementFields(CEVemBaseNode* node, tEVemStatementFields* fields) {
    if (!fields) return 0;
    tEVemStatementFields& f = *fields;
    if (!vem::evem::IsEnabled() || !node) {
        // The answers of the switch off or of a null node, as each function gives them.
        f.Type = EVemGetNodeType(node);
        f.AwlLine = f.AwlColumn = 0;
        EVemGetAwlPosition(node, f.AwlLine, f.AwlColumn);
        f.UcodeOffset = EVemGetUcodeOffset(node);
        f.NegOperand = EVemGetNegOperand(node);
        f.AccuType = EVemGetAccuType(node);
        f.CbeType = EVemGetCbeType(node);
        f.AddressMode = EVemGetAddressMode(node);
        f.Offset = EVemGetOffset(node);
        f.FarOffset = EVemGetFarOffset(node);
        f.LabelNum = EVemGetLabelNum(node);
        f.InType = EVemGetInType(node);
        f.OutType = EVemGetOutType(node);
        f.IndexCount = EVemGetIndexCount(node);
        f.Name = EVemGetName(node);
        f.TypeName = EVemGetTypeName(node);
        f.Value = EVemGetValue(node);
        f.VemNode = EVemGetVemNode(node);
        f.InstanceNode = EVemGetInstanceNode(node);
        f.ElementNode = EVemGetElementNode(node);
        f.StdStringLParam = EVemGetStdStringLParamStmtNode(node);
        f.StdStringPParam = EVemGetStdStringPParamStmtNode(node);
        f.StdStringIn2Param = EVemGetStdStringIn2ParamStmtNode(node);
        return 0;
    }
    f.Type = static_cast<tEVemNodeType>(node->NodeType);
    f.AwlLine = f.AwlColumn = 0;
    node->GetAwlPosition(f.AwlLine, f.AwlColumn);
    f.UcodeOffset = vem::evem::IsStatement(node) ? static_cast<CEVemBaseStmtNode*>(node)->UcodeOffset : u16{0};
    f.NegOperand = node->GetNegOperand();
    f.AccuType = node->GetAccuType();
    f.CbeType = node->GetCbeType();
    f.AddressMode = node->GetAddressMode();
    f.Offset = node->GetOffset();
    f.FarOffset = node->GetFarOffset();
    f.LabelNum = node->GetLabelNum();
    f.InType = node->GetInType();
    f.OutType = node->GetOutType();
    f.IndexCount = node->GetIndexCount();
    f.Name = node->GetName();
    f.TypeName = node->GetTypeName();
    f.Value = node->GetValue();
    f.VemNode = node->GetVemNode();
    f.InstanceNode = node->GetInstanceNode();
    f.ElementNode = node->GetElementNode();
    f.StdStringLParam = node->GetStdStringLParamStmtNode();
    f.StdStringPParam = node->GetStdStringPParamStmtNode();
    f.StdStringIn2Param = node->GetStdStringIn2ParamStmtNode();
    return 1;
}
