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

TEST(TaskContainer, CountsRegisteredAndCompiledTasks) {
    CVemBaseNode* tasks = VemNewNode(kVemTaskContainerNode);
    EXPECT_EQ(Counts(tasks), std::make_pair(0, 0));
    VemRegisterTask(tasks, "T1");
    VemRegisterTask(tasks, "T2");
    VemTaskCompiled(tasks, "T1", "t1.tsk");
    EXPECT_EQ(Counts(tasks), std::make_pair(2, 1));
    VemRegisterTask(tasks, "T1");  // takes the compile result back
    EXPECT_EQ(Counts(tasks), std::make_pair(2, 0));
    VemTaskCompiled(tasks, "T3", "t3.tsk");     // never registered: the entry is made
    VemTaskCompiled(tasks, "t3", "other.tsk");  // keys keep their case
    EXPECT_EQ(Counts(tasks), std::make_pair(4, 2));

    // Only the container answers.
    CVemBaseNode* task = VemNewNode(kVemTaskNode);
    VemRegisterTask(task, "T1");
    EXPECT_EQ(Counts(task), std::make_pair(0, 0));
    VemDeleteNode(task);
    VemDeleteNode(tasks);
}

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

// The container reads its task files in the order of its list: a missing file or a null object
// stops the reading and keeps what was read; an entry without a file takes all tasks away.
TEST(TaskContainer, LoadHangsTheCompiledTasksBelowIt) {
    TempDir dir;
    WriteTaskFile(dir.file("t1.tsk"), "T1");
    WriteTaskFile(dir.file("t2.tsk"), "T2");
    WriteTaskFile(dir.file("t3.tsk"), "T3");
    WriteFileBytes(dir.file("null.tsk"), Bytes().u16_(0).v);  // the null reference
    CVemBaseNode* loose = VemCreateCVemVariableNode("LOOSE", 0, kCbeTypeInt, 2, 0);
    loose->AddChildTail(new CVemBaseNode(kVemBaseNode, "var", 0));
    WriteObjectFile(dir.file("loose.tsk"), loose);  // another node class is hung below all the same
    VemDeleteNode(loose);
    const std::string t1 = dir.file("t1.tsk"), t2 = dir.file("t2.tsk"), t3 = dir.file("t3.tsk");
    struct Case {
        const char* what;
        std::vector<std::pair<const char*, std::string>> entries;  // no file: only registered
        std::vector<std::string> names;
        int compiled;
    };
    const Case cases[] = {
        {"empty", {}, {}, 0},
        {"in the map's order", {{"T2", t2}, {"T1", t1}}, {"T2", "T1"}, 2},
        {"missing file", {{"T1", t1}, {"T2", dir.file("missing.tsk")}, {"T3", t3}}, {"T1"}, 3},
        {"null object", {{"T1", t1}, {"T2", dir.file("null.tsk")}, {"T3", t3}}, {"T1"}, 3},
        {"entry without a file", {{"T1", t1}, {"T2", ""}}, {}, 1},
        {"another node class", {{"T1", dir.file("loose.tsk")}, {"T2", t2}}, {"LOOSE", "T2"}, 2},
    };
    MessageCapture messages;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        CVemBaseNode* container = nullptr;
        CVemBaseNode* res = NewResourceWithContainer(container);
        for (const auto& [name, file] : c.entries) {
            VemRegisterTask(container, name);
            if (!file.empty()) VemTaskCompiled(container, name, file.c_str());
        }
        CVemBaseNode* loaded = StoreAndLoad(dir, res);
        VemDeleteNode(res);
        ASSERT_NE(loaded, nullptr);
        CVemBaseNode* tasks = VemGetFirstNodeOfType(loaded, kVemTaskContainerNode);
        ASSERT_NE(tasks, nullptr);
        EXPECT_EQ(VemGetParentNode(tasks), loaded);
        EXPECT_EQ(ChildNames(tasks), c.names);
        EXPECT_EQ(Counts(tasks), std::make_pair(static_cast<int>(c.entries.size()), c.compiled));
        CObList* list = VemGetChildList(tasks);
        for (POSITION pos = list->GetHeadPosition(); pos;) {
            auto* task = static_cast<CVemBaseNode*>(list->GetNext(pos));
            EXPECT_EQ(VemGetNodeType(task), VemGetName(task) == "LOOSE" ? kVemVariableNode : kVemTuiTaskNode);
            EXPECT_EQ(VemGetParentNode(task), tasks);
            EXPECT_EQ(ChildNames(task), (std::vector<std::string>{"var"}));
            EXPECT_EQ(task->Serial, 0u);
        }
        VemDeleteNode(loaded);
    }
    EXPECT_TRUE(messages.texts().empty());
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
    unknown.u16_(0xFFFF).u16_(5).u16_(12);  // new class, schema 5, a name of 12 characters
    for (char c : std::string("CVemNoSuchNd")) unknown.u8_(static_cast<u8>(c));
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
