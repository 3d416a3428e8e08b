// Executable node: the tables of the resource, its device settings, the numbering of its tasks,
// the code nodes of its units, the record and the dump.
#include "project/exe.h"

#include <memory>
#include <string>
#include <unordered_set>

#include "project/compiled.h"
#include "statement/evembase.h"
#include "statement/evemlist.h"
#include "variables/fieldio.h"
#include "vem_bytearray.h"
#include "vem_node.h"

VEM_IMPLEMENT_SERIAL(CVemExeNode, CVemResourceNode, 5)

namespace {

constexpr char kTasksName[] = "TASKS";
// The project code for which the dump prints the line maps of the code nodes.

// A null table stands for a new empty one, so that the node can always store itself.
void TakeTable(CSegmentTable*& held, CSegmentTable*& given) {
    CSegmentTable* taken = given ? given : new CSegmentTable(0);
    if (taken != held) delete held;
    held = taken;
    given = nullptr;
}

}  // namespace

tVemDeviceSettings CVemExeNode::DefaultDeviceSettings() {
    tVemDeviceSettings settings{};
    settings.Alignment = 1;
    settings.ByteSize = 1;
    return settings;
}

CVemExeNode::CVemExeNode(const CString& name) : CVemResourceNode(kVemExeNode, name, 1) {
    // Last, so that nothing is left behind if one of them fails.
    auto segments = std::make_unique<CSegmentTable>(0);
    ComponentList = new CSegmentTable(0);
    SegmentTable = segments.release();
}

CVemExeNode::~CVemExeNode() {
    delete SegmentTable;
    delete ComponentList;
    delete TaskDefSegment;
    EVemDeleteRootList(EvemRootNodeList);
}

void CVemExeNode::SetSegmentTable(CSegmentTable*& table) { TakeTable(SegmentTable, table); }

void CVemExeNode::SetComponentList(CSegmentTable*& table) { TakeTable(ComponentList, table); }

const u8* CVemExeNode::GetTaskDefSegmentBytePointer() {
    return TaskDefSegment ? TaskDefSegment->GetBytePointer() : nullptr;
}

u16 CVemExeNode::AddNewSegmentLength(u16 length) { return VemAppendSegmentLength(AbsOffsets, length); }

// ---- tasks and units -------------------------------------------------------------------------------

// Only the compiled tasks below "TASKS" count; the container is preferred to a task node of that
// name.
void CVemExeNode::ComputeProgramNumbers(int flag) {
    CVemBaseNode* tasks = VemFindVemNodeByNameAndType(this, kTasksName, kVemTaskContainerNode);
    if (!tasks) tasks = VemFindVemNodeByNameAndType(this, kTasksName, kVemTaskNode);
    if (!tasks) return;
    u16 number = 1;
    for (POSITION pos = tasks->Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = tasks->ChildAt(pos);
        if (child->GetNodeType() != kVemTuiTaskNode) continue;
        child->SetProgramNr(flag ? 0 : number++);
    }
}

// One code node for each unit, by its path in upper case, however many tasks call the unit.
int CVemExeNode::AddFilteredEvemNodes(CVemBaseNode* taskNode) {
    if (!EVemIsEnabled() || !taskNode || taskNode->GetNodeType() != kVemTuiTaskNode) return 1;
    CObList* list = taskNode->GetEvemRootNodeListPtr();
    if (!list) return 0;
    // The names taken over so far, for a lookup in constant time instead of a walk of the list for
    // every code node. The list compares a name as a zero-terminated text, and so does this.
    std::unordered_set<std::string> taken;
    for (POSITION pos = FilteredNodeNames.GetHeadPosition(); pos;) taken.insert(FilteredNodeNames.GetNext(pos).str());
    while (!list->IsEmpty()) {
        std::unique_ptr<CEVemBaseNode> node(static_cast<CEVemBaseNode*>(list->RemoveHead()));
        if (node->NodeType == kEVemUndefNode) continue;
        CString path = node->GetPathName();
        path.MakeUpper();
        if (taken.count(std::string(path.GetString()))) continue;
        EvemRootNodeList.AddTail(node.get());
        node.release();
        FilteredNodeNames.AddTail(path);
        taken.insert(path.str());
    }
    return 1;
}

// The compiled tasks right below the node and those below "Global - Resource" and other plain
// nodes are searched; those below "TASKS" are not.
CString CVemExeNode::GetPouPathNameFromCodeSegNr(u16 codeSegment) {
    for (POSITION pos = Children.GetHeadPosition(); pos;) {
        CVemBaseNode* child = ChildAt(pos);
        CString path;
        if (child->GetNodeType() == kVemTuiTaskNode) {
            path = child->GetPouPathNameFromCodeSegNr(codeSegment);
        } else if (child->GetNodeType() == kVemBaseNode) {
            for (POSITION inner = child->Children.GetHeadPosition(); inner && path.IsEmpty();) {
                CVemBaseNode* task = child->ChildAt(inner);
                if (task->GetNodeType() == kVemTuiTaskNode) path = task->GetPouPathNameFromCodeSegNr(codeSegment);
            }
        }
        if (!path.IsEmpty()) return path;
    }
    return CString();
}

// ---- record ----------------------------------------------------------------------------------------

//  width   field                                       condition
//  .       resource record, children inline
//  2       schema word (1)
//  .       segment table
//  .       component list
//  .       download list and tagged buffer, dropped    version 0 only
//  .       absolute offsets, word array
//  .       task definition segment, tagged buffer
//  .       tagged buffer, dropped                      version 0 only
//  .       data container
//  129     device settings
//  2       user level of the container's files
//  string  project name of the container's files
//  2+      code nodes: count, then each record         only with the statement model
// The path name and the filtered names are not stored.
void CVemExeNode::Serialize(CArchive& ar) {
    CVemResourceNode::Serialize(ar);
    const u16 schema = VemSerializeSchema(ar, kSchema);
    SegmentTable->Serialize(ar);
    ComponentList->Serialize(ar);
    if (schema == 0) {
        VemSkipDownloadList(ar);
        VemSkipByteBuffer(ar);
    }
    AbsOffsets.Serialize(ar);
    VemBaSerialize(TaskDefSegment, ar);
    if (schema == 0) VemSkipByteBuffer(ar);
    DataContainer.Serialize(ar);
    SerializeDeviceSettings(ar);
    VemSerializeField<u16>(ar, DatacontFilesUserLevel);
    VemSerializeText(ar, DatacontFilesProjectName);
    if (EVemIsEnabled()) EVemSerializeRootList(ar, EvemRootNodeList);
}

//  offset  width  field
//  0       4      marker CD CD CD CD, not looked at on loading
//  4       2      DeviceWord1
//  6       2      DeviceWord2
//  8       2      MotorolaFormat, low 16 bits
//  10      2      ResourceGlobalSegTable, low 16 bits
//  12      2      OnlineLinking, low 16 bits
//  14      2      IncrementalDownload, low 16 bits
//  16      2      OneSegTableAtOnlineLinking, low 16 bits
//  18      2      OnlineEditor, low 16 bits
//  20      2      TaskDownload, low 16 bits
//  22      2      TaskStart, low 16 bits
//  24      2      MaxWatchEntries
//  26      1      DeviceByte1 .. DeviceByte6 (26 to 31)
//  32      1      IpType
//  33      2      DeviceWord3
//  35      1      DeviceByte7
//  36      1      Alignment; 0 loads as 1
//  37      1      ByteSize
//  38      4      DeviceLong1
//  42      1      DeviceByte9
//  43      4      DeviceLong2
//  47      8      DeviceLong3, both words
//  55      74     reserved, written as zeros and skipped on loading
void CVemExeNode::SerializeDeviceSettings(CArchive& ar) {
    tVemDeviceSettings& s = DeviceSettings;
    u32 marker = kDeviceSettingsMarker;
    VemSerializeField<u32>(ar, marker);
    VemSerializeField<u16>(ar, s.DeviceWord1);
    VemSerializeField<u16>(ar, s.DeviceWord2);
    VemSerializeField<u16>(ar, s.MotorolaFormat);
    VemSerializeField<u16>(ar, s.ResourceGlobalSegTable);
    VemSerializeField<u16>(ar, s.OnlineLinking);
    VemSerializeField<u16>(ar, s.IncrementalDownload);
    VemSerializeField<u16>(ar, s.OneSegTableAtOnlineLinking);
    VemSerializeField<u16>(ar, s.OnlineEditor);
    VemSerializeField<u16>(ar, s.TaskDownload);
    VemSerializeField<u16>(ar, s.TaskStart);
    VemSerializeField<u16>(ar, s.MaxWatchEntries);
    VemSerializeField<u8>(ar, s.DeviceByte1);
    VemSerializeField<u8>(ar, s.DeviceByte2);
    VemSerializeField<u8>(ar, s.DeviceByte3);
    VemSerializeField<u8>(ar, s.DeviceByte4);
    VemSerializeField<u8>(ar, s.DeviceByte5);
    VemSerializeField<u8>(ar, s.DeviceByte6);
    VemSerializeField<u8>(ar, s.IpType);
    VemSerializeField<u16>(ar, s.DeviceWord3);
    VemSerializeField<u8>(ar, s.DeviceByte7);
    VemSerializeField<u8>(ar, s.Alignment);
    VemSerializeField<u8>(ar, s.ByteSize);
    VemSerializeField<u32>(ar, s.DeviceLong1);
    VemSerializeField<u8>(ar, s.DeviceByte9);
    VemSerializeField<u32>(ar, s.DeviceLong2);
    VemSerializeField<u32>(ar, s.DeviceLong3[0]);
    VemSerializeField<u32>(ar, s.DeviceLong3[1]);
    u8 reserved[kReservedBytes] = {};
    if (ar.IsStoring()) {
        ar.Write(reserved, kReservedBytes);
    } else {
        ar.EnsureRead(reserved, kReservedBytes);
        if (s.Alignment == 0) s.Alignment = 1;
    }
}

// ---- dump ------------------------------------------------------------------------------------------

CString CVemExeNode::DeviceSettingsDumpText(const CString& prefix) const {
    struct FlagText {
        i32 tVemDeviceSettings::*flag;
        const char* on;
        const char* off;
    };
    static constexpr FlagText kFlags[] = {
        {&tVemDeviceSettings::MotorolaFormat, "    Format: MOTOROLA \n", "    Format:  Intel \n"},
        {&tVemDeviceSettings::ResourceGlobalSegTable, "    SegmentTabelle resource global \n",
         "    SegmentTabelle TaskGlobal \n"},
        {&tVemDeviceSettings::OnlineLinking, "    online linking enabled\n", "    Online Linking disabled\n"},
        {&tVemDeviceSettings::IncrementalDownload, "    incremental download enabled\n",
         "    incremental download disabled\n"},
        {&tVemDeviceSettings::OneSegTableAtOnlineLinking, "    one segment table at online linking \n",
         "    two segment tables at online linking \n"},
        {&tVemDeviceSettings::OnlineEditor, "\tonline Editor possible\n", "    no online Editor possible\n"},
        {&tVemDeviceSettings::TaskDownload, "\tTask can be downloaded seperatly\n",
         "    only resources can be downloaded"},
        {&tVemDeviceSettings::TaskStart, "     Task can be started seperatly\n",
         "    only whole resources can be started\n"},
    };
    CString text;
    for (const FlagText& row : kFlags) text += prefix + (DeviceSettings.*row.flag ? row.on : row.off);
    text.AppendFormat("Max Watch Entries: %i\n", static_cast<int>(DeviceSettings.MaxWatchEntries));
    return text + VemDumpNewLine(prefix) + kVemDumpRule;
}

CString CVemExeNode::TaskDefSegmentDumpText(const CString& prefix) const {
    CString text = prefix + "============= Dump of Task Defintion Segment =====================\n";
    if (!TaskDefSegment) return text;
    CStringArray lines;
    TaskDefSegment->Dump(lines);
    for (int i = 0; i < lines.GetSize(); ++i) text += prefix + lines[i] + "\n";
    return text;
}

// Both tables print straight to the file, ahead of what the text has gathered.
CString CVemExeNode::TablesDumpText(CFile* file, const CString& prefix) {
    const CString nl = VemDumpNewLine(prefix);
    CString text;
    if (SegmentTable->GetSize() > 0) {
        SegmentTable->Dump(prefix, file);
    } else {
        text += nl + "No Segmenttable found !! \n";
    }
    if (ComponentList->GetSize() > 0) {
        text += nl + " ============== Dump of Component List ===================== \n";
        ComponentList->Dump(prefix, file);
    } else {
        text += nl + "No Componentlist found !! \n";
    }
    return text;
}

void CVemExeNode::DumpCodeNodes(CFile* file, CString text, const CString& prefix) {
    const CString nl = VemDumpNewLine(prefix);
    if (!EVemIsEnabled()) {
        text += nl + "No EVEM Information for this OEM !! \n";
        WriteText(file, text);
        return;
    }
    WriteText(file, text);
    CStringList pathNames;
    for (POSITION pos = EvemRootNodeList.GetHeadPosition(); pos;) {
        auto* node = static_cast<CEVemBaseNode*>(EvemRootNodeList.GetNext(pos));
        const CString path = EVemGetPathName(node);
        pathNames.AddTail(path);
        WriteText(file, nl + path + "\n");
        EVemDumpNode(node, file, prefix + "->>");
    }
    EVemDumpLineMaps(file, prefix, this, pathNames);  // only for a project that asks for them
}

void CVemExeNode::NodeDump(CFile* file, CString indent) {
    const CString& prefix = indent;
    const CString nl = VemDumpNewLine(prefix);
    CString text = prefix + "*EXENODE: " + Name + "\n" + prefix + " Device Settings \n";
    text += DeviceSettingsDumpText(prefix);
    text += TaskDefSegmentDumpText(prefix);
    text += TablesDumpText(file, prefix);
    text += nl + kVemDumpRule;
    text += VemDataContainerDumpText(DataContainer, prefix);
    text += prefix + "======== EXENODE has EVEM Information for following Pou's   ========= ";
    DumpCodeNodes(file, text, prefix);
    WriteText(file, nl + kVemDumpRule);
    CVemBaseNode::NodeDump(file, indent);
}
