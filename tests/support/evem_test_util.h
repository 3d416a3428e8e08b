// Helpers of the statement model's tests: the switch, records in memory, chains, dumps.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "compiled_test_util.h"
#include "statement/evembase.h"

namespace evemtest {

// Every test starts and ends with the settings at their defaults (switch on).
using EVemTest = compiledtest::SettingsTest;

// Deletes a node of the model at the end of a scope, through the flat function.
struct NodeDeleter {
    void operator()(CEVemBaseNode* node) const { EVemDeleteNode(node); }
};
using NodePtr = std::unique_ptr<CEVemBaseNode, NodeDeleter>;

inline NodePtr Create(tEVemNodeType type, const char* name = "") { return NodePtr(EVemCreateNode(type, name)); }

// The node's record as its class writes it.
inline std::vector<u8> StoreRecord(CEVemBaseNode* node) { return memtest::Stored(*node); }

// Reads a record into a new node of the kind; fails the test if bytes are left over.
inline NodePtr LoadRecord(const std::vector<u8>& bytes, tEVemNodeType type) {
    NodePtr node = Create(type);
    CMemFile file(bytes);
    CArchive ar(&file, CArchive::load);
    node->Serialize(ar);
    EXPECT_EQ(ar.GetRemaining(), 0u) << "bytes left behind the record";
    return node;
}

// The kinds along a chain, from the given statement on.
inline std::vector<int> ChainTypes(CEVemBaseNode* first) {
    std::vector<int> types;
    for (CEVemBaseNode* node = first; node; node = EVemGetNext(node)) types.push_back(EVemGetNodeType(node));
    return types;
}

// What DumpNode writes with the prefix.
inline std::string DumpText(CEVemBaseNode* node, const char* prefix) {
    CMemFile file;
    node->DumpNode(&file, prefix);
    const std::vector<u8>& bytes = file.Data();
    return std::string(bytes.begin(), bytes.end());
}

// A pointer as the dumps print it: the C library's own form.
inline std::string PointerText(const void* pointer) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", pointer);
    return text;
}

}  // namespace evemtest
