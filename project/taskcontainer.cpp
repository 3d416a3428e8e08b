// Task container: the compile state of a resource as a map from task names to task files. Its
// children are never stored with it; a load reads them back from the task files.
#include <algorithm>
#include <memory>
#include <vector>

#include "project/taskfiles.h"
#include "project/tasks.h"
#include "vem_ext.h"

VEM_IMPLEMENT_SERIAL(CVemTaskContainerNode, CVemBaseNode, 5)

namespace {

// A task file opened inside the load: refused beyond the load's nesting of task files, and when
// the load read it before. A file named a second time in one load, by itself or by another, would
// be read again for every container that names it: a few small files that name each other would
// multiply the tree with every level.
class TaskFileNesting {
public:
    TaskFileNesting(vem::load::Context& load, const CString& path) : m_load(load) {
        if (m_load.TaskFileNesting >= m_load.Bounds.MaxTaskFileNesting) VemThrowArchive(CArchiveException::badIndex);
        vem::FileId id;
        if (m_load.TaskFileScopes > 0 && vem::FileIdentity(path, id)) {
            const auto& read = m_load.TaskFilesRead;
            if (std::find(read.begin(), read.end(), id) != read.end()) VemThrowArchive(CArchiveException::badIndex);
            m_load.TaskFilesRead.push_back(id);
        }
        ++m_load.TaskFileNesting;
    }
    ~TaskFileNesting() { --m_load.TaskFileNesting; }
    TaskFileNesting(const TaskFileNesting&) = delete;
    TaskFileNesting& operator=(const TaskFileNesting&) = delete;

private:
    vem::load::Context& m_load;
};

}  // namespace

CVemBaseNode* vem::load::ReadTaskFile(const CString& path, const CArchive& outer) {
    // A name of a pipe or a device would block the load or read without end: such a file is no
    // task file.
    CFileStatus status;
    if (!CFile::GetStatus(path, status) || !status.m_isRegular) return nullptr;
    CFile file;
    if (!file.Open(path, CFile::modeRead | CFile::typeBinary)) return nullptr;
    std::unique_ptr<CObject> object;
    try {
        TaskFileNesting nesting(outer.LoadContext(), path);
        CArchive ar(&file, CArchive::load);
        ar.JoinLoad(outer);  // the tree goes on below the container that names the file
        object.reset(ar.ReadObject(RUNTIME_CLASS(CVemBaseNode)));
        ar.Close();
    } catch (...) {
        file.Abort();  // closed before the exception reaches the loader of the tree
        throw;
    }
    file.Close();
    return static_cast<CVemBaseNode*>(object.release());
}

CVemTaskContainerNode::CVemTaskContainerNode() : CVemBaseNode(kVemTaskContainerNode, "TASKS", 1) {}

CVemTaskContainerNode::~CVemTaskContainerNode() = default;

//  width   field
//  .       base record, child count 0
//  2       schema word (0)
//  count   entries of TaskList, then per entry:
//  string    task name
//  string    path of the task file, empty while not compiled
void CVemTaskContainerNode::Serialize(CArchive& ar) {
    DeleteAllChildren();
    LastChild = nullptr;
    CVemBaseNode::Serialize(ar);
    VemSerializeSchema(ar, kSchema);
    TaskList.Serialize(ar);
    if (ar.IsLoading()) ReadTasks(ar);
}

// A stored name that does not open here is looked for by its last part (vem::TaskFileFinder); the
// entry itself stays as stored, so a store writes the same bytes. Reading stops at the first entry
// without a file or without a task, as it always did, and every entry that gives no child is noted
// for the load's report.
void CVemTaskContainerNode::ReadTasks(const CArchive& ar) {
    const vem::load::TaskFileScope scope(ar.LoadContext());
    vem::TaskFileFinder finder(ar.GetFile() ? ar.GetFile()->GetFilePath() : CString());
    std::vector<std::pair<CString, CString>> read;  // entries whose task hangs below this node
    bool stopped = false;
    CString name, path;
    for (POSITION pos = TaskList.GetStartPosition(); pos;) {
        TaskList.GetNextAssoc(pos, name, path);
        if (stopped) {
            vem::NoteMissingTask(tVemMissingTask::kSkipped, name, path, {});
            continue;
        }
        stopped = true;
        if (path.IsEmpty()) {
            DeleteAllChildren();
            LastChild = nullptr;
            for (const auto& [task, file] : read) vem::NoteMissingTask(tVemMissingTask::kSkipped, task, file, {});
            vem::NoteMissingTask(tVemMissingTask::kNotCompiled, name, path, {});
            continue;
        }
        const vem::TaskFileLookup lookup = finder.Find(path);
        if (lookup.path.IsEmpty()) {
            vem::NoteMissingTask(lookup.reason, name, path, lookup.tried);
            continue;
        }
        std::unique_ptr<CVemBaseNode> task(vem::load::ReadTaskFile(lookup.path, ar));
        if (!task) {
            vem::NoteMissingTask(tVemMissingTask::kNotReadable, name, path, lookup.tried);
            continue;
        }
        AddChildTail(task.get());  // the list's own entry may fail for want of memory
        task.release();
        read.emplace_back(name, path);
        stopped = false;
    }
}

void CVemTaskContainerNode::TaskCompiled(const CString& taskName, const CString& filePath) {
    TaskList.SetAt(taskName, filePath);
}

void CVemTaskContainerNode::RegisterTask(const CString& taskName) { TaskList.SetAt(taskName, CString()); }

tCompiledTasks CVemTaskContainerNode::AllTaskCompiledSuccesfully() {
    tCompiledTasks counts{};
    CString name, path;
    for (POSITION pos = TaskList.GetStartPosition(); pos;) {
        TaskList.GetNextAssoc(pos, name, path);
        ++counts.NoOfTasks;
        if (!path.IsEmpty()) ++counts.NoOfCompiledTasks;
    }
    return counts;
}

void CVemTaskContainerNode::NodeDump(CFile* file, CString indent) {
    CString text = indent + "*TUITASKNODE: " + Name + "\n" + indent;
    if (!TaskList.IsEmpty()) {
        text += "\nTASKLISTE\n";
        CString name, path;
        for (POSITION pos = TaskList.GetStartPosition(); pos;) {
            TaskList.GetNextAssoc(pos, name, path);
            text += "\n" + indent + name + "   ->  " + path;
        }
    }
    text += "\n" + indent + "========================================  \n";
    WriteText(file, text);
    DumpChildren(file, indent);
}
