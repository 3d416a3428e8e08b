// CEVemBaseNode: record, head of the dump, and the table of kind texts.
#include "statement/evembase.h"

#include "node/dumptext.h"
#include "statement/evemdump.h"

#include <cstring>

#include "vem_settings.h"

VEM_IMPLEMENT_SERIAL(CEVemBaseNode, CObject, 5)

namespace {

long g_liveNodes = 0;

// The settings library's record of global tool settings; the switch is its 32-bit word 17.
constexpr int kTobSettingsSize = 76;
constexpr std::size_t kEvemEnabledOffset = 68;

i32 SwitchValue() {
    const void* record = LurGetGlobalTobSettings(kTobSettingsSize);
    if (!record) return 0;
    i32 value = 0;
    std::memcpy(&value, static_cast<const u8*>(record) + kEvemEnabledOffset, sizeof value);
    return value;
}

// The texts of the kinds, one zero-padded row of 40 characters each. The first two rows end in a
// blank, as the dumps have always shown them.
struct NodeTypeTexts {
    char rows[kEVemNodeTypeCount][kEVemNodeTypeTextWidth];
};

constexpr const char* kNodeTypeNames[kEVemNodeTypeCount] = {
#define EVEM_NODE_TYPE(Value, Name, Class) #Name,
#include "vem_evem_types.def"
#undef EVEM_NODE_TYPE
};

constexpr int kRowsWithBlank = 2;

constexpr NodeTypeTexts MakeNodeTypeTexts() {
    NodeTypeTexts texts{};
    for (int row = 0; row < kEVemNodeTypeCount; ++row) {
        int length = 0;
        for (const char* c = kNodeTypeNames[row]; *c; ++c) texts.rows[row][length++] = *c;
        if (row < kRowsWithBlank) texts.rows[row][length++] = ' ';
    }
    return texts;
}

constexpr bool EveryRowFits() {
    for (const char* name : kNodeTypeNames) {
        int length = 0;
        while (name[length]) ++length;
        if (length + 1 >= kEVemNodeTypeTextWidth) return false;  // room for the blank and the zero
    }
    return true;
}
static_assert(EveryRowFits(), "a kind's text must fit its row");

constexpr NodeTypeTexts kNodeTypeTexts = MakeNodeTypeTexts();

}  // namespace

bool vem::evem::IsEnabled() { return SwitchValue() != 0; }

bool vem::evem::ObjectsEnabled() { return SwitchValue() == 1; }

const char* vem::evem::NodeTypeText(i32 type) {
    if (type < 0 || type >= kEVemNodeTypeCount) return "";
    return kNodeTypeTexts.rows[type];
}

CEVemBaseNode::CEVemBaseNode() : CEVemBaseNode(kEVemBaseNode) {}

CEVemBaseNode::CEVemBaseNode(tEVemNodeType type) : NodeType(type) { ++g_liveNodes; }

CEVemBaseNode::~CEVemBaseNode() { --g_liveNodes; }

long CEVemBaseNode::LiveCount() { return g_liveNodes; }

// offset width field
//   0      2   schema word, version 3
//   2      2   NodeType, low 16 bits
void CEVemBaseNode::Serialize(CArchive& ar) {
    if (ar.IsStoring()) {
        VemSerializeSchema(ar, kSchema);
        ar << static_cast<u16>(NodeType);
    } else {
        ar.LoadSchema(kSchema);
        u16 type = 0;
        ar >> type;
        NodeType = type;
    }
}

void CEVemBaseNode::DumpNode(CFile* file, CString prefix) {
    CVemDumpText text;
    vem::evem::AppendBaseDump(text, prefix.GetString(), NodeType);
    text.WriteTo(file);
}

void CEVemBaseNode::WriteDump(CFile* file, const CString& text) {
    file->Write(text.GetString(), static_cast<unsigned>(text.GetLength()));
}
