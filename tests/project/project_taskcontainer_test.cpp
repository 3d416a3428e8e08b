// Task container: compile state, its record, and the task files it reads when it is loaded.
#include "alloc_hook.h"
#include "download/datacontainer.h"
#include "test_util.h"

using vemtest::Bytes;
using vemtest::ChildNames;
using vemtest::NewNode;
using vemtest::MessageCapture;
using vemtest::ReadFileBytes;
using vemtest::TempDir;
using vemtest::WriteFileBytes;
using vemtest::WriteObjectFile;

namespace {

// A compiled task as it stands in for one here: a base node of type 16 with one child.
void WriteTaskFile(const std::string& path, const char* name) {
    CVemBaseNode task(kVemTuiTaskNode, name, 1);
    task.AddChildTail(new CVemBaseNode(kVemBaseNode, "var", 0));
    CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
    CArchive ar(&file, CArchive::store);
    ASSERT_EQ(VemWriteObject(&task, ar), 1);
    ar.Close();
    file.Close();
}

// Executable-like root: a resource with the container below it.
CVemBaseNode* NewResourceWithContainer(CVemBaseNode*& container) {
    CVemBaseNode* res = NewNode(kVemResourceNode, "R");
    container = VemNewNode(kVemTaskContainerNode);
    VemAddChildTail(res, container);
    return res;
}

CVemBaseNode* StoreAndLoad(const TempDir& dir, CVemBaseNode* root) {
    EXPECT_EQ(VemWriteNode(root, dir.file("exe.vem").c_str()), 1);
    return VemLoadNode(dir.file("exe.vem").c_str());
}

// Registered and compiled tasks.
std::pair<int, int> Counts(CVemBaseNode* node) {
    const tCompiledTasks counts = VemAllTaskCompiledSuccesfully(node);
    return {counts.NoOfTasks, counts.NoOfCompiledTasks};
}

}  // namespace

TEST(TaskContainer, RecordHoldsTheListAndNoChildren) {
    TempDir dir;
    CVemBaseNode* tasks = VemNewNode(kVemTaskContainerNode);
    VemRegisterTask(tasks, "T1");
    VemAddChildTail(tasks, NewNode(kVemBaseNode, "in memory only"));
    VemAddChildTail(tasks, NewNode(kVemBaseNode, "also"));
    ASSERT_EQ(VemWriteNode(tasks, dir.file("c.vem").c_str()), 1);
    EXPECT_TRUE(ChildNames(tasks).empty());  // the store took them away

    Bytes want = vemtest::Frame(17);
    want.u16_(0).u8_(17).u8_(1).str("TASKS").u32_(0).u8_(0);  // base record: schema .. extra text
    want.u16_(0);                                             // child count: never any
    want.u16_(0);                                             // schema word of the container record
    want.u16_(1);                                             // TaskList: count
    want.str("T1");                                           // key
    want.str("");                                             // value: not compiled
    EXPECT_EQ(ReadFileBytes(dir.file("c.vem")), want.v);
    VemDeleteNode(tasks);

    CVemBaseNode* loaded = VemLoadNode(dir.file("c.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(VemGetName(loaded), "TASKS");
    EXPECT_TRUE(ChildNames(loaded).empty());
    EXPECT_EQ(Counts(loaded), std::make_pair(1, 0));
    VemDeleteNode(loaded);
}

TEST(TaskContainer, ADamagedTaskFileFailsTheWholeLoadCleanly) {
    TempDir dir;
    WriteTaskFile(dir.file("good.tsk"), "T1");
    const std::vector<u8> good = ReadFileBytes(dir.file("good.tsk"));
    CVemDataObject notANode;
    WriteObjectFile(dir.file("other.tsk"), &notANode);
    CVemDownloadList list;
    WriteObjectFile(dir.file("list.tsk"), &list);
    Bytes unknown;
    unknown.newClass(5, "CVemNoSuchNd");
    Bytes newer = Bytes().raw(good);
    newer.v[2 + 2 + 2 + 12] = 1;  // behind tag, schema, length and "CVemBaseNode": the record's schema word

    std::vector<std::vector<u8>> damaged = {
        {}, unknown.v, ReadFileBytes(dir.file("other.tsk")), ReadFileBytes(dir.file("list.tsk")), newer.v};
    for (std::size_t cut = 1; cut < good.size(); cut += 3) {
        damaged.emplace_back(good.begin(), good.begin() + static_cast<long>(cut));
    }
    MessageCapture messages;
    const int descriptors = vemtest::OpenHandles();
    for (std::size_t i = 0; i < damaged.size(); ++i) {
        WriteFileBytes(dir.file("bad.tsk"), damaged[i]);
        CVemBaseNode* container = nullptr;
        CVemBaseNode* res = NewResourceWithContainer(container);
        VemTaskCompiled(container, "T1", dir.file("good.tsk").c_str());
        VemTaskCompiled(container, "T2", dir.file("bad.tsk").c_str());
        ASSERT_EQ(VemWriteNode(res, dir.file("exe.vem").c_str()), 1);
        VemDeleteNode(res);
        vemtest::AllocationWatch watch;
        EXPECT_EQ(VemLoadNode(dir.file("exe.vem").c_str()), nullptr) << i;
        EXPECT_EQ(watch.Live(), 0) << i;
        EXPECT_EQ(vemtest::OpenHandles(), descriptors) << i;
    }
    EXPECT_TRUE(messages.texts().empty());
}

TEST(TaskContainer, ATaskFileThatNamesItselfFailsInsteadOfRecursing) {
    TempDir dir;
    CVemBaseNode* inner = VemNewNode(kVemTaskContainerNode);
    VemTaskCompiled(inner, "T", dir.file("self.tsk").c_str());
    WriteObjectFile(dir.file("self.tsk"), inner);
    VemDeleteNode(inner);
    CVemBaseNode* container = nullptr;
    CVemBaseNode* res = NewResourceWithContainer(container);
    VemTaskCompiled(container, "T", dir.file("self.tsk").c_str());
    const int descriptors = vemtest::OpenHandles();
    EXPECT_EQ(StoreAndLoad(dir, res), nullptr);
    EXPECT_EQ(vemtest::OpenHandles(), descriptors);
    VemDeleteNode(res);
}
