// The compile result as vemtool hands it to other programs: the tree in pre-order with every field
// the library stores for a node, read once. `export --json` writes it as nested JSON, `html` writes
// it column-wise for its page. Byte arrays and the statement model stay in the library; the model
// holds their handles.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tool.h"

namespace vemtool {

bool IsVariableType(u32 type);
bool IsUnitType(u32 type);

struct VariableRecord {
    decltype(VemGetOffset(nullptr)) offset;
    decltype(VemGetSize(nullptr)) size;
    decltype(VemGetParentSegment(nullptr)) parentSegment;
    decltype(VemGetVariableType(nullptr)) variableType;
    decltype(VemIsReference(nullptr)) reference;
    decltype(VemIsNetVar(nullptr)) netVar;
    decltype(VemGetProgramNr(nullptr)) programNr;
    CString declaredType;
    decltype(VemGetScope(nullptr)) scope;
    decltype(VemCanVariableBeWatched(nullptr)) canBeWatched;
    decltype(VemGetVarInOut(nullptr)) varInOut;
    decltype(VemGetSubSegmentKind(nullptr)) subSegmentKind;
    decltype(VemGetPiLocation(nullptr)) piLocation;
    unsigned dclLine = 0, dclColumn = 0;
    decltype(VemGetVarQualifier(nullptr)) qualifier;
    CString instanceText;
    std::optional<u32> address;  // computed: the task's start of the segment plus the offset
};

class Model;

struct ArrayRecord {
    decltype(VemGetDimensions(nullptr)) dimensions;
    decltype(VemGetHeaderLength(nullptr)) headerLength;
    decltype(VemGetArrayCode(nullptr)) arrayCode;
    decltype(VemGetArrayElementSizeOfType(nullptr)) elementSizeOfType;
    bool hasRanges = false;
    std::vector<tVemDimRange> ranges;
    std::unique_ptr<Model> element;  // the element's prototype with its own subtree, or null
};

struct StatEntry {
    u16 awlLine;
    i32 codeLine;
    u32 aeType, operandType;
};

struct UnitRecord {
    decltype(VemGetCodeSegment(nullptr)) codeSegment;
    decltype(VemGetDataSegment(nullptr)) dataSegment;
    decltype(VemGetIniSegment(nullptr)) iniSegment;
    decltype(VemGetCrSize(nullptr)) crSize;
    decltype(VemGetCrStackSize(nullptr)) crStackSize;
    decltype(VemGetCrStackElements(nullptr)) crStackElements;
    CString codePathName;
    decltype(VemGetCheckSum(nullptr)) checkSum;
    decltype(VemGetDate(nullptr)) date;
    decltype(VemGetDataSegLength(nullptr)) dataSegLength;
    u32 startOffset;
    CString path;
    decltype(VemGetProgramNr(nullptr)) programNr;
    decltype(VemGetGlobal(nullptr)) global;
    CVemByteArray* pflArray;
    std::vector<StatEntry> statList;
};

struct SegmentRecord {
    u16 number;
    std::optional<u32> absoluteStart;
    CVemByteArray* array;
};

struct SegmentTableRecord {
    CString pouName;
    u16 startSegmentNo, nextSegmentNo, noOfSegments;
    std::vector<SegmentRecord> segments;  // those that are there, by number
    const SegmentRecord* Find(u16 number) const;
};

struct ContainerFile {
    CString key;
    decltype(VemGetContainerFileType(nullptr, "")) type;
    decltype(VemGetContainerFileCheckSum(nullptr, "")) checkSum;
};

// What compiled tasks and executables hold beside their children.
struct CompiledRecord {
    std::optional<SegmentTableRecord> segmentTable;
    std::optional<std::vector<u32>> absOffsets;
    std::optional<std::vector<ContainerFile>> dataContainer;
    std::optional<std::vector<CEVemBaseNode*>> codeNodes;
    CVemByteArray* taskDefEntry = nullptr;  // compiled task
    // executable
    std::optional<SegmentTableRecord> componentList;
    CVemByteArray* taskDefSegment = nullptr;
    const tVemDeviceSettings* deviceSettings = nullptr;
    std::string datacontFilesProjectName;
    decltype(VemGetDatacontFilesUserLevel(nullptr, 0)) datacontFilesUserLevel = 0;
};

struct ModelNode {
    CVemBaseNode* node;
    u32 type;
    const char* className;
    CString text, name;
    decltype(CVemBaseNode::Serial) serial;
    decltype(CVemBaseNode::Expanded) expanded;
    decltype(CVemBaseNode::ExtraText) extraText;
    unsigned icon, bitmap;  // the library's pictures of the node (not exported)
    int parent;             // index in the model, -1 for the root
    int children;           // count; they follow in pre-order
    int size;               // nodes of the subtree, the node included
    std::optional<VariableRecord> variable;
    // What fewer nodes have stands apart, so that a node of the model stays small.
    std::unique_ptr<ArrayRecord> array;
    std::unique_ptr<UnitRecord> unit;
    std::unique_ptr<CString> configName;
    std::unique_ptr<std::vector<std::pair<CString, CString>>> tasks;  // task name and its file
    std::unique_ptr<CompiledRecord> compiled;
};

// One node's own fields, read from the library; its place in a model (parent, children, size) is
// left for the model to fill in. A writer that goes through the tree once reads node by node with it
// and keeps no model.
ModelNode ReadNode(CVemBaseNode* node);

class Model {
public:
    // Reads the tree below root; progress (when given) counts the nodes read.
    explicit Model(CVemBaseNode* root, Progress* progress = nullptr);
    const std::vector<ModelNode>& Nodes() const { return nodes_; }
    int IndexOf(CVemBaseNode* node) const;  // -1 for a node not in the tree (or null)
    // The nearest node at or above `index` that holds a segment table, or -1.
    int TableOwner(int index) const;

private:
    void Add(CVemBaseNode* node, int parent, Progress* progress);
    std::vector<ModelNode> nodes_;
    mutable std::unordered_map<CVemBaseNode*, int> index_;  // made at the first IndexOf
};

}  // namespace vemtool
