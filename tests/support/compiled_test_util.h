// Helpers of the tests of compiled tasks, executable nodes and arrays: nodes by type and name,
// records in memory, dumps as text, and the settings switch.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "memory_test_util.h"
#include "test_util.h"
#include "vem_settings.h"

namespace compiledtest {

// Every test starts and ends with the settings at their defaults (statement model on).
class SettingsTest : public ::testing::Test {
protected:
    void SetUp() override { LurResetSettings(); }
    void TearDown() override { LurResetSettings(); }
};

struct NodeDeleter {
    void operator()(CVemBaseNode* node) const {
        CVemBaseNode* n = node;
        VemDeleteNode(n);
    }
};
using NodePtr = std::unique_ptr<CVemBaseNode, NodeDeleter>;

inline constexpr auto Named = &vemtest::NewNode;

inline NodePtr MakeNode(tVemNodeType type, const char* name = "") { return NodePtr(Named(type, name)); }

inline CVemBaseNode* Variable(const char* name, u16 offset, u16 segment, tCbeType type = kCbeTypeInt, u16 size = 2) {
    CVemBaseNode* v = VemCreateCVemVariableNode(name, offset, type, size, 0);
    VemSetParentSegment(v, segment);
    return v;
}

using memtest::Stored;

inline std::vector<u8> Concat(std::initializer_list<std::vector<u8>> parts) {
    std::vector<u8> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// The node's record as its Serialize writes it.
inline std::vector<u8> StoreRecord(CVemBaseNode* node) { return memtest::Stored(*node); }

// Reads a record into the node; gives the bytes that were left behind it.
inline u64 LoadRecord(CVemBaseNode* node, const std::vector<u8>& bytes) {
    CMemFile file(bytes);
    CArchive ar(&file, CArchive::load);
    node->Serialize(ar);
    const u64 left = ar.GetRemaining();
    ar.Close();
    return left;
}

// What NodeDump writes with the prefix.
inline std::string DumpText(CVemBaseNode* node, const char* prefix) {
    CMemFile file;
    node->NodeDump(&file, prefix);
    return std::string(file.Data().begin(), file.Data().end());
}

// An empty segment table as it stands in a record.
inline const std::vector<u8> kEmptyTable = vemtest::Bytes()
                                               .u16_(0)  // no entries
                                               .u16_(0)  // version
                                               .u16_(1)  // numbers given out: byte array version
                                               .u16_(0)  //   no bytes
                                               .u8_(0)   //   little-endian
                                               .u8_(1)   //   ByteSize
                                               .u8_(0)   // name of the unit, empty
                                               .u16_(0)  // number of segments
                                               .u16_(0)  // start number
                                               .u16_(0)  // next number
                                               .v;

// A code node with a path, through the flat functions.
inline CEVemBaseNode* CodeNode(const char* path) {
    CEVemBaseNode* code = EVemCreateNode(kEVemPouCodeNode, "unit");
    EVemSetPathName(code, path);
    return code;
}

inline std::vector<std::string> CodeNodePaths(CVemBaseNode* node) {
    std::vector<std::string> paths;
    CObList* list = VemGetEvemRootNodeListPtr(node);
    for (POSITION pos = list->GetHeadPosition(); pos;) {
        paths.push_back(EVemGetPathName(static_cast<CEVemBaseNode*>(list->GetNext(pos))).str());
    }
    return paths;
}

// A compiled task with a variable, two segments (one Motorola), an entry, a data container file
// (made in `dir`), offsets and two code nodes.
inline CVemBaseNode* FullTask(const vemtest::TempDir& dir) {
    CVemBaseNode* task = Named(kVemTuiTaskNode, "TASK1");
    VemAddChildTail(task, Variable("V", 4, 2));
    CSegmentTable* table = VemGetSegmentTable(task);
    VemSegTblAddNewSegment(table, nullptr);
    CVemByteArray* data = VemBaNewByteArray(1, 2, 1, 0);
    VemBaAppendWord(data, 0x1234);
    VemSegTblAddNewSegment(table, data);
    VemAddNewSegmentLength(task, 2);
    CVemByteArray* entry = VemBaNewByteArray(0, 1, 1, 0);
    VemBaAppendByte(entry, 0xAB);
    VemSetTaskDefEntry(task, entry);
    vemtest::WriteFileText(dir.file("t.cfg"), "cfg");
    VemAddContainerFile(task, dir.file("t.cfg").c_str(), "CFG", 3);
    VemGetEvemRootNodeListPtr(task)->AddTail(CodeNode("C:\\PRJ\\A.st"));
    VemGetEvemRootNodeListPtr(task)->AddTail(CodeNode("C:\\PRJ\\B.st"));
    return task;
}

using vemtest::ChildNames;

}  // namespace compiledtest
