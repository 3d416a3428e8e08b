// Names of the library's numbers: each enumerator without its family prefix, so that a name
// found in the tool's output is found in the headers too.
#include "tool.h"

namespace vemtool {

const char* NodeTypeName(u32 value) {
    switch (value) {
        case kVemBaseNode: return "Base";
        case kVemVariableNode: return "Variable";
        case kVemProgramNode: return "Program";
        case kVemFbNode: return "Fb";
        case kVemFunctionNode: return "Function";
        case kVemArrayNode: return "Array";
        case kVemStructNode: return "Struct";
        case kVemTaskNode: return "Task";
        case kVemExeNode: return "Exe";
        case kVemResourceNode: return "Resource";
        case kVemConfigNode: return "Config";
        case kVemProjectNode: return "Project";
        case kVemTuiTaskNode: return "TuiTask";
        case kVemTaskContainerNode: return "TaskContainer";
        case kVemFbInstanceNode: return "FbInstance";
        default: return "?";
    }
}

const char* DataTypeName(u32 value) {
    switch (value) {
        case kCbeTypeUndef: return "Undef";
        case kCbeTypeBool: return "Bool";
        case kCbeTypeByte: return "Byte";
        case kCbeTypeWord: return "Word";
        case kCbeTypeDword: return "Dword";
        case kCbeTypeUsint: return "Usint";
        case kCbeTypeUint: return "Uint";
        case kCbeTypeUdint: return "Udint";
        case kCbeTypeSint: return "Sint";
        case kCbeTypeInt: return "Int";
        case kCbeTypeDint: return "Dint";
        case kCbeTypeReal: return "Real";
        case kCbeTypeTime: return "Time";
        case kCbeTypeDate: return "Date";
        case kCbeTypeTod: return "Tod";
        case kCbeTypeDt: return "Dt";
        case kCbeTypeLword: return "Lword";
        case kCbeTypeUlint: return "Ulint";
        case kCbeTypeLint: return "Lint";
        case kCbeTypeLreal: return "Lreal";
        case kCbeTypeString: return "String";
        case kCbeTypeEnum: return "Enum";
        case kCbeTypeArray: return "Array";
        case kCbeTypeStruct: return "Struct";
        case kCbeTypeBit: return "Bit";
        case kCbeTypeBcdReal: return "BcdReal";
        case kCbeTypeReferenz: return "Referenz";
        case kCbeTypeUser: return "User";
        case kCbeTypeArrayOfArray: return "ArrayOfArray";
        case kCbeTypeArrayOfStruct: return "ArrayOfStruct";
        case kCbeTypeStructOfStruct: return "StructOfStruct";
        case kCbeTypeStructOfArray: return "StructOfArray";
        case kCbeTypeInitvalues: return "Initvalues";
        case kCbeTypeFbInstance: return "FbInstance";
        case kCbeTypeInt24: return "Int24";
        case kCbeTypeReal48: return "Real48";
        case kCbeTypeAddress: return "Address";
        case kCbeTypeWString: return "WString";
        default: return "?";
    }
}

const char* SegmentKindName(u32 value) {
    switch (value) {
        case kIpSegCode: return "Code";
        case kIpSegData: return "Data";
        case kIpSegInit: return "Init";
        case kIpSegSourceStart: return "SourceStart";
        case kIpSegSourceContinue: return "SourceContinue";
        case kIpSegTaskDef: return "TaskDef";
        case kIpSegPiMask: return "PiMask";
        case kIpSegNiMask: return "NiMask";
        case kIpSegIoTableStart: return "IoTableStart";
        case kIpSegIoTableContinue: return "IoTableContinue";
        case kIpSegIoComplexTableStart: return "IoComplexTableStart";
        case kIpSegIoComplexTableContinue: return "IoComplexTableContinue";
        case kIpSegInstanceTableStart: return "InstanceTableStart";
        case kIpSegInstanceTableContinue: return "InstanceTableContinue";
        case kIpSegDownloadTableStart: return "DownloadTableStart";
        case kIpSegDownloadTableContinue: return "DownloadTableContinue";
        case kIpSegNativeCode: return "NativeCode";
        case kIpSegInitSecond: return "InitSecond";
        case kIpSegIo: return "Io";
        case kIpSegIoInit: return "IoInit";
        case kIpSegIoOld: return "IoOld";
        case kIpSegParameter: return "Parameter";
        case kIpSegHardwareConfig: return "HardwareConfig";
        case kIpSegOemVarInfoTable: return "OemVarInfoTable";
        case kIpSegByRefAccessInfo: return "ByRefAccessInfo";
        case kIpSegInternPi: return "InternPi";
        case kIpSegInternNi: return "InternNi";
        case kIpSegInternNvMap: return "InternNvMap";
        case kIpSegInternInstanceStack: return "InternInstanceStack";
        case kIpSegInternAeStack: return "InternAeStack";
        case kIpSegInternExtAeSegment: return "InternExtAeSegment";
        case kIpSegInternExtAes: return "InternExtAes";
        case kIpSegInternAeTypeStack: return "InternAeTypeStack";
        default: return "?";
    }
}

const char* PouTypeName(u32 value) {
    switch (value) {
        case kEVemPouUndef: return "Undef";
        case kEVemPouProg: return "Prog";
        case kEVemPouFunction: return "Function";
        case kEVemPouFunctionBlock: return "FunctionBlock";
        default: return "?";
    }
}

const char* AddressModeName(u32 value) {
    switch (value) {
        case kEVemFarAddress: return "FarAddress";
        case kEVemNearAddress: return "NearAddress";
        case kEVemRefAddress: return "RefAddress";
        case kEVemIndAddress: return "IndAddress";
        case kEVemNoAddressMode: return "NoAddressMode";
        default: return "?";
    }
}

const char* StatementTypeName(u32 value) {
    switch (value) {
#define EVEM_NODE_TYPE(number, enumerator, kind) \
    case number:                                 \
        return &#enumerator[5];  // without "kEVem"
#include "vem_evem_types.def"
#undef EVEM_NODE_TYPE
        default: return "?";
    }
}

}  // namespace vemtool
