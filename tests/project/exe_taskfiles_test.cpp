// Executable node files whose task files are missing, cut short, empty or of another class.
#include "alloc_hook.h"
#include "compiled_test_util.h"

using compiledtest::ChildNames;
using compiledtest::MakeNode;
using compiledtest::NodePtr;
using compiledtest::Variable;
using vemtest::MessageCapture;

namespace {

class ExeTaskFiles : public compiledtest::SettingsTest {
protected:
    void WriteObjectFile(const std::string& path, const CObject* object) {
        CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
        CArchive ar(&file, CArchive::store);
        ar.WriteObject(object);
        ar.Close();
        file.Close();
    }

    // A compiled task with a variable and a segment, in its own file.
    void WriteTask(const char* name) {
        NodePtr task = MakeNode(kVemTuiTaskNode, name);
        VemAddChildTail(task.get(), Variable("V", 2, 2));
        VemSegTblAddNewSegment(VemGetSegmentTable(task.get()), VemBaNewByteArray(0, 1, 1, 0));
        VemAddNewSegmentLength(task.get(), 10);
        WriteObjectFile(TaskFile(name), task.get());
    }

    std::string TaskFile(const char* name) const { return dir_.file(std::string(name) + ".tsk"); }
    std::string NodeFile() const { return dir_.file("exe.vem"); }

    // The executable node with T1 and T2 compiled to their files.
    void WriteResource() {
        NodePtr exe = MakeNode(kVemExeNode, "R");
        CVemBaseNode* tasks = VemNewNode(kVemTaskContainerNode);
        VemAddChildTail(exe.get(), tasks);
        for (const char* name : {"T1", "T2"}) {
            VemRegisterTask(tasks, name);
            WriteTask(name);
            VemTaskCompiled(tasks, name, TaskFile(name).c_str());
        }
        ASSERT_EQ(VemWriteNode(exe.get(), NodeFile().c_str()), 1);
    }

    // The names of the tasks that a load hung below "TASKS".
    std::vector<std::string> LoadedTasks() {
        NodePtr root(VemLoadNode(NodeFile().c_str()));
        EXPECT_NE(root, nullptr);
        if (!root) return {};
        return ChildNames(VemFindVemNodeByNameAndType(root.get(), "TASKS", kVemTaskContainerNode));
    }

    vemtest::TempDir dir_;
};

}  // namespace

TEST_F(ExeTaskFiles, AllTasksComeBackWithTheirOwnTables) {
    WriteResource();
    NodePtr root(VemLoadNode(NodeFile().c_str()));
    ASSERT_NE(root, nullptr);
    CVemBaseNode* tasks = VemFindVemNodeByNameAndType(root.get(), "TASKS", kVemTaskContainerNode);
    EXPECT_EQ(ChildNames(tasks), (std::vector<std::string>{"T1", "T2"}));
    CVemBaseNode* t2 = VemFindVemNodeByNameAndType(tasks, "T2", kVemTuiTaskNode);
    VemCreateChildNodePathList(t2);
    EXPECT_EQ(VemGetAbsoluteVariableOffset(t2, "T2.V"), 10u + 2);
}

TEST_F(ExeTaskFiles, MissingFileKeepsTheTasksReadBefore) {
    WriteResource();
    CFile::Remove(TaskFile("T2").c_str());
    EXPECT_EQ(LoadedTasks(), std::vector<std::string>{"T1"});
    CFile::Remove(TaskFile("T1").c_str());
    EXPECT_TRUE(LoadedTasks().empty());
}

// A task file holding another node class is hung below "TASKS" all the same.
TEST_F(ExeTaskFiles, OtherNodeClassIsTakenAsItIs) {
    WriteResource();
    NodePtr variable(Variable("LOOSE", 0, 0));
    WriteObjectFile(TaskFile("T1"), variable.get());
    EXPECT_EQ(LoadedTasks(), (std::vector<std::string>{"LOOSE", "T2"}));
}

TEST_F(ExeTaskFiles, ForeignClassFailsTheLoad) {
    WriteResource();
    CVemDownloadList list;
    WriteObjectFile(TaskFile("T2"), &list);
    MessageCapture messages;
    vemtest::AllocationWatch watch;
    EXPECT_EQ(VemLoadNode(NodeFile().c_str()), nullptr);
    EXPECT_EQ(watch.Live(), 0);
    EXPECT_TRUE(messages.texts().empty());
}

TEST_F(ExeTaskFiles, EveryTruncatedTaskFileFailsTheLoad) {
    WriteResource();
    const std::vector<u8> bytes = vemtest::ReadFileBytes(TaskFile("T2"));
    MessageCapture messages;
    vemtest::AllocationWatch watch;
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        vemtest::WriteFileBytes(TaskFile("T2"),
                                std::vector<u8>(bytes.begin(), bytes.begin() + static_cast<long>(length)));
        ASSERT_EQ(VemLoadNode(NodeFile().c_str()), nullptr) << length;
    }
    EXPECT_EQ(watch.Live(), 0);
    EXPECT_TRUE(messages.texts().empty());
}
