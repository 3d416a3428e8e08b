// Helpers of the test suite: a scratch directory, captured message boxes, file bytes.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "vem32_classes.h"

namespace vemtest {

// A fresh directory below the system's temporary directory, removed with its contents at the end.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

// Collects the texts of the message boxes shown while it lives, instead of printing them.
class MessageCapture {
public:
    MessageCapture();
    ~MessageCapture();
    MessageCapture(const MessageCapture&) = delete;
    MessageCapture& operator=(const MessageCapture&) = delete;
    const std::vector<std::string>& texts() const { return texts_; }
    const std::vector<unsigned>& styles() const { return styles_; }

private:
    static int Handler(const char* text, unsigned style, void* context);
    std::vector<std::string> texts_;
    std::vector<unsigned> styles_;
    VemMessageBoxHandler previous_;
};

std::vector<u8> ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const std::vector<u8>& bytes);
std::string ReadFileText(const std::string& path);
void WriteFileText(const std::string& path, const std::string& text);
bool FileExists(const std::string& path);
// The node file of the node: every stored field of it and its children.
std::vector<u8> Written(CVemBaseNode* node);
// Files and other objects of the system that the process holds open.
int OpenHandles();
// The object in a file of its own, as the compiler writes a task.
void WriteObjectFile(const std::string& path, const CObject* object);
// A node file of a resource "R" whose task container maps each task name to a stored file name.
void WriteContainerFile(const std::string& path, const std::vector<std::pair<std::string, std::string>>& tasks);

// Little-endian byte builders for hand-written records.
struct Bytes {
    std::vector<u8> v;
    Bytes& u8_(unsigned x) {
        v.push_back(static_cast<u8>(x));
        return *this;
    }
    Bytes& u16_(unsigned x) { return u8_(x & 0xFF).u8_((x >> 8) & 0xFF); }
    Bytes& u32_(u32 x) { return u16_(x & 0xFFFF).u16_(x >> 16); }
    Bytes& str(const std::string& s) {  // short string form
        u8_(static_cast<unsigned>(s.size()));
        v.insert(v.end(), s.begin(), s.end());
        return *this;
    }
    Bytes& raw(const std::vector<u8>& b) {
        v.insert(v.end(), b.begin(), b.end());
        return *this;
    }
    // A new class in an object stream: the tag FFFF, the class schema, the name behind its length.
    Bytes& newClass(unsigned schema, const std::string& name) {
        u16_(0xFFFF).u16_(schema).u16_(static_cast<unsigned>(name.size()));
        return raw(std::vector<u8>(name.begin(), name.end()));
    }
};

// Names of the node's children, in order.
inline std::vector<std::string> ChildNames(CVemBaseNode* parent) {
    std::vector<std::string> names;
    CObList* list = VemGetChildList(parent);
    for (POSITION pos = list->GetHeadPosition(); pos;)
        names.push_back(VemGetName(static_cast<CVemBaseNode*>(list->GetNext(pos))).str());
    return names;
}

// Adds a child at the tail and gives it back.
template <class Node>
Node* Add(CVemBaseNode* parent, Node* child) {
    VemAddChildTail(parent, child);
    return child;
}

inline CVemBaseNode* NewNode(tVemNodeType type, const char* name) {
    CVemBaseNode* node = VemNewNode(type);
    VemSetName(node, name);
    return node;
}

// A little-endian array of ByteSize 1 that holds the bytes.
inline CVemByteArray* NewArray(std::initializer_list<u8> bytes) {
    auto* array = new CVemByteArray;
    for (u8 b : bytes) array->Append(&b, 1);
    return array;
}

// Node type word of the root and the version stamp with its end: the 27 bytes in front of every
// node file.
inline Bytes Frame(unsigned rootType) {
    Bytes b;
    b.u16_(rootType);
    for (char c : std::string("Norvadis_VEM_Version:003")) b.u8_(static_cast<u8>(c));
    b.u8_(0);
    return b;
}

}  // namespace vemtest
