// Executable node: the tables of the resource, its device settings, the numbering of its tasks,
// the code nodes of its units, the record and the dump.
#include "project/exe.h"

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_set>

#include "platform/fieldio.h"
#include "project/compiled.h"
#include "statement/evembase.h"
#include "statement/evemlist.h"
#include "vem_bytearray.h"
#include "vem_node.h"

VEM_IMPLEMENT_SERIAL(CVemExeNode, CVemResourceNode, 5)

namespace {

constexpr char kTasksName[] = "TASKS";
// The project code for which the dump prints the line maps of the code nodes.

// A null table stands for a new empty one, so that the node can always store itself.
void TakeTable(std::unique_ptr<CSegmentTable>& held, CSegmentTable*& given) {
    vem::TouchLayout();
    CSegmentTable* taken = given ? given : new CSegmentTable(0);
    if (taken != held.get()) held.reset(taken);
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
    SegmentTable = std::make_unique<CSegmentTable>(0);
    ComponentList = std::make_unique<CSegmentTable>(0);
}

CVemExeNode::~CVemExeNode() { vem::evem::DeleteRootList(EvemRootNodeList); }

void CVemExeNode::SetSegmentTable(CSegmentTable*& table) { TakeTable(SegmentTable, table); }

void CVemExeNode::SetComponentList(CSegmentTable*& table) { TakeTable(ComponentList, table); }

const u8* CVemExeNode::GetTaskDefSegmentBytePointer() {
    return TaskDefSegment ? TaskDefSegment->GetBytePointer() : nullptr;
}

u16 CVemExeNode::AddNewSegmentLength(u16 length) { return vem::AppendSegmentLength(AbsOffsets, length); }

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
    if (!vem::evem::IsEnabled() || !taskNode || taskNode->GetNodeType() != kVemTuiTaskNode) return 1;
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
        vem::SkipDownloadList(ar);
        vem::SkipByteBuffer(ar);
    }
    AbsOffsets.Serialize(ar);
    vem::SerializeOwned(TaskDefSegment, ar);
    if (schema == 0) vem::SkipByteBuffer(ar);
    DataContainer.Serialize(ar);
    SerializeDeviceSettings(ar);
    vem::SerializeField<u16>(ar, DatacontFilesUserLevel);
    vem::SerializeText(ar, DatacontFilesProjectName);
    if (vem::evem::IsEnabled()) vem::evem::SerializeRootList(ar, EvemRootNodeList);
}

// The device settings in a record: 129 bytes, little-endian, no padding. The table is the layout:
// Serialize walks it, and the checks below hold it against the record in memory. A field that is
// wider in memory than in the file loses its high bits when stored and is zero-extended when loaded.
namespace {

struct DeviceSettingsRow {
    enum Kind : u8 { kField, kMarker, kReserved };
    Kind kind;
    u8 fileOffset;
    u8 fileWidth;
    u8 memoryOffset;  // fields only
    u8 memoryWidth;   // fields only
};

#define VEM_DEVICE_FIELD(at, width, field) \
    { DeviceSettingsRow::kField, at, width, offsetof(tVemDeviceSettings, field), sizeof(tVemDeviceSettings::field) }

constexpr DeviceSettingsRow kDeviceSettingsLayout[] = {
    {DeviceSettingsRow::kMarker, 0, 4, 0, 0},  // CD CD CD CD, not looked at on loading
    VEM_DEVICE_FIELD(4, 2, DeviceWord1),
    VEM_DEVICE_FIELD(6, 2, DeviceWord2),
    VEM_DEVICE_FIELD(8, 2, MotorolaFormat),  // the eight flags: their low 16 bits
    VEM_DEVICE_FIELD(10, 2, ResourceGlobalSegTable),
    VEM_DEVICE_FIELD(12, 2, OnlineLinking),
    VEM_DEVICE_FIELD(14, 2, IncrementalDownload),
    VEM_DEVICE_FIELD(16, 2, OneSegTableAtOnlineLinking),
    VEM_DEVICE_FIELD(18, 2, OnlineEditor),
    VEM_DEVICE_FIELD(20, 2, TaskDownload),
    VEM_DEVICE_FIELD(22, 2, TaskStart),
    VEM_DEVICE_FIELD(24, 2, MaxWatchEntries),
    VEM_DEVICE_FIELD(26, 1, DeviceByte1),
    VEM_DEVICE_FIELD(27, 1, DeviceByte2),
    VEM_DEVICE_FIELD(28, 1, DeviceByte3),
    VEM_DEVICE_FIELD(29, 1, DeviceByte4),
    VEM_DEVICE_FIELD(30, 1, DeviceByte5),
    VEM_DEVICE_FIELD(31, 1, DeviceByte6),
    VEM_DEVICE_FIELD(32, 1, IpType),
    VEM_DEVICE_FIELD(33, 2, DeviceWord3),
    VEM_DEVICE_FIELD(35, 1, DeviceByte7),
    VEM_DEVICE_FIELD(36, 1, Alignment),  // 0 loads as 1
    VEM_DEVICE_FIELD(37, 1, ByteSize),
    VEM_DEVICE_FIELD(38, 4, DeviceLong1),
    VEM_DEVICE_FIELD(42, 1, DeviceByte9),
    VEM_DEVICE_FIELD(43, 4, DeviceLong2),
    {DeviceSettingsRow::kField, 47, 4, offsetof(tVemDeviceSettings, DeviceLong3), 4},
    {DeviceSettingsRow::kField, 51, 4, offsetof(tVemDeviceSettings, DeviceLong3) + 4, 4},
    {DeviceSettingsRow::kReserved, 55, CVemExeNode::kReservedBytes, 0, 0},  // zeros; skipped on loading
};

#undef VEM_DEVICE_FIELD

// The rows follow each other without gap and end at 129 bytes; every member of the record in memory
// but the reserved bytes is stored exactly once (the byte count below adds up the members), each
// into no more bytes than it has.
constexpr bool DeviceSettingsLayoutHolds() {
    unsigned next = 0;
    bool stored[sizeof(tVemDeviceSettings)] = {};
    for (const DeviceSettingsRow& row : kDeviceSettingsLayout) {
        if (row.fileOffset != next) return false;
        next += row.fileWidth;
        if (row.kind != DeviceSettingsRow::kField) continue;
        if (row.fileWidth > row.memoryWidth) return false;
        if (row.memoryWidth != 1 && row.memoryWidth != 2 && row.memoryWidth != 4) return false;
        if (row.memoryOffset % row.memoryWidth != 0) return false;
        for (unsigned i = row.memoryOffset; i < row.memoryOffset + row.memoryWidth; ++i) {
            if (i >= sizeof(stored) || stored[i]) return false;
            stored[i] = true;
        }
    }
    if (next != CVemExeNode::kDeviceSettingsBytes) return false;
    unsigned storedBytes = 0;
    for (bool b : stored) storedBytes += b ? 1 : 0;
    using S = tVemDeviceSettings;
    return storedBytes == 3 * sizeof(u16) + 8 * sizeof(i32) + sizeof(S::MaxWatchEntries) + 11 * sizeof(u8) +
                              sizeof(S::DeviceLong1) + sizeof(S::DeviceLong2) + sizeof(S::DeviceLong3);
}
static_assert(DeviceSettingsLayoutHolds());
static_assert(sizeof(tVemDeviceSettings::ReservedBytes) == CVemExeNode::kReservedBytes);

u32 ReadMemory(const u8* at, unsigned width) {
    switch (width) {
        case 1: return *at;
        case 2: {
            u16 v;
            std::memcpy(&v, at, 2);
            return v;
        }
        default: {
            u32 v;
            std::memcpy(&v, at, 4);
            return v;
        }
    }
}

void WriteMemory(u8* at, unsigned width, u32 value) {
    switch (width) {
        case 1: *at = static_cast<u8>(value); break;
        case 2: {
            const u16 v = static_cast<u16>(value);
            std::memcpy(at, &v, 2);
            break;
        }
        default: std::memcpy(at, &value, 4); break;
    }
}

void SerializeFileValue(CArchive& ar, unsigned width, u32& value) {
    switch (width) {
        case 1: vem::SerializeField<u8>(ar, value); break;
        case 2: vem::SerializeField<u16>(ar, value); break;
        default: vem::SerializeField<u32>(ar, value); break;
    }
}

}  // namespace

void CVemExeNode::SerializeDeviceSettings(CArchive& ar) {
    u8* const record = reinterpret_cast<u8*>(&DeviceSettings);
    for (const DeviceSettingsRow& row : kDeviceSettingsLayout) {
        if (row.kind == DeviceSettingsRow::kField) {
            u32 value = ar.IsStoring() ? ReadMemory(record + row.memoryOffset, row.memoryWidth) : 0;
            SerializeFileValue(ar, row.fileWidth, value);
            if (ar.IsLoading()) WriteMemory(record + row.memoryOffset, row.memoryWidth, value);
        } else if (row.kind == DeviceSettingsRow::kMarker) {
            u32 marker = kDeviceSettingsMarker;
            SerializeFileValue(ar, row.fileWidth, marker);
        } else {
            u8 reserved[kReservedBytes] = {};
            if (ar.IsStoring()) {
                ar.Write(reserved, row.fileWidth);
            } else {
                ar.EnsureRead(reserved, row.fileWidth);
            }
        }
    }
    if (ar.IsLoading() && DeviceSettings.Alignment == 0) DeviceSettings.Alignment = 1;
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
    return text + vem::DumpNewLine(prefix) + kVemDumpRule;
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
    const CString nl = vem::DumpNewLine(prefix);
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
    const CString nl = vem::DumpNewLine(prefix);
    if (!vem::evem::IsEnabled()) {
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
        vem::evem::DumpNode(node, file, prefix + "->>");
    }
    vem::evem::DumpLineMaps(file, prefix, this, pathNames);  // only for a project that asks for them
}

void CVemExeNode::NodeDump(CFile* file, CString indent) {
    const CString& prefix = indent;
    const CString nl = vem::DumpNewLine(prefix);
    CString text = prefix + "*EXENODE: " + Name + "\n" + prefix + " Device Settings \n";
    text += DeviceSettingsDumpText(prefix);
    text += TaskDefSegmentDumpText(prefix);
    text += TablesDumpText(file, prefix);
    text += nl + kVemDumpRule;
    text += vem::DataContainerDumpText(DataContainer, prefix);
    text += prefix + "======== EXENODE has EVEM Information for following Pou's   ========= ";
    DumpCodeNodes(file, text, prefix);
    WriteText(file, nl + kVemDumpRule);
    CVemBaseNode::NodeDump(file, indent);
}
