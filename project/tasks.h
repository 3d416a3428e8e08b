// Tasks: the plain task level of the tree, and the container that keeps the task files of a
// compiled resource and reads them when it is loaded.
#pragma once

#include "node/basenode.h"
#include "vem_limits.h"

class CVemTaskNode : public CVemBaseNode {
    VEM_DECLARE_SERIAL(CVemTaskNode)
public:
    static constexpr u16 kSchema = 0;

    explicit CVemTaskNode(const CString& name = CString());
    ~CVemTaskNode() override;

    // base record, schema word (u16); ResourceName is not stored
    void Serialize(CArchive& ar) override;
    VEM_NODE_TYPE_PICTURES(kVemTaskNode)
    // The name without one leading backslash and then without "KOMPO.SYS\".
    CString GetNodeText() override;
    int SetResourceName(CString resourceName) override;
    CString GetResourceName() override { return ResourceName; }
    void NodeDump(CFile* file, CString indent) override;

    CString ResourceName;
};

class CVemTaskContainerNode : public CVemBaseNode {
    VEM_DECLARE_SERIAL(CVemTaskContainerNode)
public:
    static constexpr u16 kSchema = 0;
    // Task files that a load reads inside one another by default (a container inside a task file).
    static constexpr int kMaxTaskFileNesting = static_cast<int>(kVemMaxTaskFileNesting);

    CVemTaskContainerNode();  // always named "TASKS"
    ~CVemTaskContainerNode() override;

    // Deletes the children first, in both directions, then: base record (no children), schema word
    // (u16), TaskList. A load then reads the task files.
    void Serialize(CArchive& ar) override;
    VEM_NODE_TYPE_PICTURES(kVemTaskContainerNode)
    void TaskCompiled(const CString& taskName, const CString& filePath) override;
    void RegisterTask(const CString& taskName) override;
    tCompiledTasks AllTaskCompiledSuccesfully() override;
    void NodeDump(CFile* file, CString indent) override;

    // Task name → path of its task file, or empty while the task is not compiled.
    CMapStringToString TaskList;

private:
    // Hangs the task of each entry below this node, in map order, until an entry without a file
    // (which takes all of them away again) or a file that gives no task.
    void ReadTasks(const CArchive& ar);
};

// One task file: a node as an object of a class derived from CVemBaseNode. Null if the file cannot
// be opened or holds a null object; archive exceptions pass on, with the file closed. The file is
// read as a part of `outer`'s load, at whose nesting its tree goes on.
namespace vem::load {
CVemBaseNode* ReadTaskFile(const CString& path, const CArchive& outer);
}  // namespace vem::load
