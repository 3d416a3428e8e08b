// Task files found after a resource was copied or made on another machine, and the report of the
// tasks that a load leaves out.
#include <sys/stat.h>

#include <filesystem>

#include "compiled_test_util.h"

using compiledtest::ChildNames;
using compiledtest::MakeNode;
using compiledtest::NodePtr;
using vemtest::TempDir;
namespace fs = std::filesystem;

namespace {

// The loaded tree with its report; both go at the end of the scope.
struct Loaded {
    explicit Loaded(const std::string& file) { root.reset(VemLoadNodeTaskReport(file.c_str(), &load, &report)); }
    ~Loaded() { VemFreeTaskReport(&report); }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;
    CVemBaseNode* Tasks() const { return VemGetFirstNodeOfType(root.get(), kVemTaskContainerNode); }
    tVemLoadReport load{};
    tVemTaskReport report{};
    NodePtr root;
};

class TaskSearch : public compiledtest::SettingsTest {
protected:
    void TearDown() override {
        VemSetTaskFileSearch(1);
        VemClearTaskFileDirectories();
        compiledtest::SettingsTest::TearDown();
    }

    // A task file whose task is named after the place it stands, so a load shows which one it read.
    void WriteTask(const std::string& path, const char* name) {
        vemtest::WriteObjectFile(path, MakeNode(kVemTuiTaskNode, name).get());
    }

    TempDir dir_;
};

}  // namespace

// Where each stored name leads: one row a layout of files, and the task that the load reads.
TEST_F(TaskSearch, TheFirstPlaceInOrderWins) {
    const std::string node = dir_.file("n/R.vem"), search1 = dir_.file("s1"), search2 = dir_.file("s2");
    for (const char* d : {"n", "s1", "s2", "abs"}) fs::create_directory(dir_.file(d));
    struct Row {
        const char* stored;
        std::vector<std::string> files;  // relative to dir_; the task in each is named by the file
        const char* expected;            // the file read, or null for none
        int search = 1;
    };
    const std::string abs = dir_.file("abs/T.tsk");
    std::vector<Row> rows = {
        {"C:\\X\\T.tsk", {"n/T.tsk", "n/t.TSK", "s1/T.tsk"}, "n/T.tsk"},    // exact beats any case
        {"C:\\X\\T.tsk", {"n/t.TSK", "s1/T.tsk"}, "n/t.TSK"},               // node's directory first
        {"C:\\X\\T.tsk", {"n/a.tsk", "s1/T.TSK", "s2/T.tsk"}, "s1/T.TSK"},  // then the path in order
        {"C:\\X\\T.tsk", {"s2/t.tsk"}, "s2/t.tsk"},
        {"/X/Y/T.tsk", {"n/T.tsk"}, "n/T.tsk"},  // slashes as well
        {"..\\T.tsk", {"n/T.tsk"}, "n/T.tsk"},
        {abs.c_str(), {"abs/T.tsk", "n/T.tsk"}, "abs/T.tsk"},  // a name that opens is used
        {"C:\\X\\T.tsk", {"n/T.tsk"}, nullptr, 0},             // the literal rule
        {"C:\\X\\T.tsk", {"n/T.tsk.old", "s1/TT.tsk"}, nullptr},
    };
#ifdef _WIN32
    rows.erase(rows.begin());  // T.tsk and t.TSK are one name there
#endif
    // Missing, empty and null entries, and a file named as a directory, are passed over.
    const std::string none = dir_.file("none");
    const char* path[] = {"", search1.c_str(), nullptr, none.c_str(), node.c_str(), search2.c_str()};
    VemSetTaskFileDirectories(path, 6);
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.stored) + " -> " + (row.expected ? row.expected : "none"));
        for (const char* d : {"n", "s1", "s2", "abs"})
            for (const auto& e : fs::directory_iterator(dir_.file(d))) fs::remove(e.path());
        for (const std::string& f : row.files) WriteTask(dir_.file(f), f.c_str());
        vemtest::WriteContainerFile(node, {{"T", row.stored}});
        VemSetTaskFileSearch(row.search);
        Loaded loaded(node);
        ASSERT_NE(loaded.root, nullptr);
        EXPECT_EQ(ChildNames(loaded.Tasks()),
                  row.expected ? std::vector<std::string>{row.expected} : std::vector<std::string>{});
        EXPECT_EQ(loaded.report.Count, row.expected ? 0 : 1);
        EXPECT_EQ(VemGetTaskFileMap(loaded.Tasks())->GetCount(), 1);
        CString stored;
        EXPECT_TRUE(VemGetTaskFileMap(loaded.Tasks())->Lookup("T", stored));
        EXPECT_EQ(stored, row.stored);  // a load never changes the names
    }
#ifdef _WIN32
    GTEST_SKIP() << "the other rows hold; the exact name before another case cannot be shown: Windows file "
                    "names ignore case, so T.tsk and t.TSK cannot stand in one directory";
#endif
}

TEST_F(TaskSearch, TheSearchPathIsSetAddedToAndCleared) {
    EXPECT_EQ(VemGetTaskFileSearch(), 1);
    fs::create_directory(dir_.file("s"));
    WriteTask(dir_.file("s/T.tsk"), "T");
    vemtest::WriteContainerFile(dir_.file("R.vem"), {{"T", "C:\\X\\T.tsk"}});
    const auto found = [&] { return ChildNames(Loaded(dir_.file("R.vem")).Tasks()).size(); };
    EXPECT_EQ(found(), 0u);
    EXPECT_EQ(VemAddTaskFileDirectory(nullptr), 0);
    EXPECT_EQ(VemAddTaskFileDirectory(""), 0);
    EXPECT_EQ(VemAddTaskFileDirectory(dir_.file("s").c_str()), 1);
    EXPECT_EQ(found(), 1u);
    VemSetTaskFileSearch(0);
    EXPECT_EQ(VemGetTaskFileSearch(), 0);
    EXPECT_EQ(found(), 0u);
    VemSetTaskFileSearch(1);
    VemClearTaskFileDirectories();
    EXPECT_EQ(found(), 0u);
    const std::string s = dir_.file("s");
    const char* one[] = {s.c_str()};
    VemSetTaskFileDirectories(one, 1);
    EXPECT_EQ(found(), 1u);
    VemSetTaskFileDirectories(nullptr, 0);
    EXPECT_EQ(found(), 0u);
    // A node file named without a directory finds its tasks beside it, in the working directory.
    WriteTask(dir_.file("T.tsk"), "T");
    const fs::path back = fs::current_path();
    fs::current_path(dir_.path());
    EXPECT_EQ(ChildNames(Loaded("R.vem").Tasks()).size(), 1u);
    fs::current_path(back);
}

// Every entry that gives no child is listed once, in the stored order: the one where reading stopped
// with its reason (1 not found, 2 not readable, 3 no file) and the names tried ("+"), those behind
// it as skipped (4). An entry without a file drops the tasks read before it as well.
TEST_F(TaskSearch, TheReportListsEveryTaskLeftOut) {
    fs::create_directory(dir_.file("T2.tsk"));  // a directory where the file should be
    WriteTask(dir_.file("T1.tsk"), "T1");
    WriteTask(dir_.file("T3.tsk"), "T3");
    vemtest::WriteFileBytes(dir_.file("T4.tsk"), {0x00, 0x00});  // a null object
    VemAddTaskFileDirectory(dir_.file("none").c_str());
    struct Row {
        const char *stopper, *file;  // stored between T1 and T3
        std::vector<std::string> children, report;
    };
    const Row rows[] = {
        {"T5", "C:\\A\\T5.TSK", {"T1"}, {"T5 C:\\A\\T5.TSK 1+", "T3 T3.TSK 4"}},
        {"T2", "C:\\A\\T2.TSK", {"T1"}, {"T2 C:\\A\\T2.TSK 2+", "T3 T3.TSK 4"}},
        {"T4", "C:\\A\\T4.TSK", {"T1"}, {"T4 C:\\A\\T4.TSK 2+", "T3 T3.TSK 4"}},
        {"T6", "", {}, {"T1 C:\\A\\T1.TSK 4", "T6  3", "T3 T3.TSK 4"}},
        {nullptr, nullptr, {"T1", "T3"}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.stopper ? row.stopper : "whole");
        std::vector<std::pair<std::string, std::string>> tasks = {{"T1", "C:\\A\\T1.TSK"}, {"T3", "T3.TSK"}};
        if (row.stopper) tasks.insert(tasks.begin() + 1, {row.stopper, row.file});
        vemtest::WriteContainerFile(dir_.file("R.vem"), tasks);
        Loaded loaded(dir_.file("R.vem"));
        ASSERT_NE(loaded.root, nullptr);
        EXPECT_EQ(ChildNames(loaded.Tasks()), row.children);
        std::vector<std::string> report;
        for (int i = 0; i < loaded.report.Count; ++i) {
            const tVemMissingTask& t = loaded.report.Tasks[i];
            report.push_back(std::string(t.TaskName) + " " + t.FileName + " " + std::to_string(t.Reason) +
                             (t.TriedCount ? "+" : ""));
        }
        EXPECT_EQ(report, row.report);
    }
    // The names tried: the stored one as a host name, then beside the node file, then the path.
    vemtest::WriteContainerFile(dir_.file("R.vem"), {{"T5", "C:\\A\\T5.TSK"}});
    Loaded loaded(dir_.file("R.vem"));
    ASSERT_EQ(loaded.report.Count, 1);
    const tVemMissingTask& t = loaded.report.Tasks[0];
    EXPECT_EQ(
        std::vector<std::string>(t.Tried, t.Tried + t.TriedCount),
        (std::vector<std::string>{VemHostPath("C:\\A\\T5.TSK").str(), dir_.file("T5.TSK"), dir_.file("none/T5.TSK")}));
    // A failed load lists nothing; the report is freed all the same.
    Loaded failed(dir_.file("missing.vem"));
    EXPECT_EQ(failed.root, nullptr);
    EXPECT_EQ(failed.report.Count, 0);
}

// Names that are no task file stop the reading as before, also once searched for, and never hang.
TEST_F(TaskSearch, BadNamesStopTheReading) {
    fs::create_directory(dir_.file("n"));
    fs::create_directory(dir_.file("n/D.tsk"));
    fs::create_directory(dir_.file("s"));
    VemAddTaskFileDirectory(dir_.file("s").c_str());
    std::vector<std::pair<std::string, int>> rows = {
        {"", tVemMissingTask::kNotCompiled},
        {"..", tVemMissingTask::kNotReadable},
#ifdef _WIN32
        {"C:\\X\\..", tVemMissingTask::kNotReadable},  // C:\ there
#else
        {"C:\\X\\..", tVemMissingTask::kNotFound},
#endif
        {"C:\\PLANT\\", tVemMissingTask::kNotFound},
        {"C:\\X\\D.tsk", tVemMissingTask::kNotReadable},  // a directory beside the node file
        {"NUL", tVemMissingTask::kNotFound},              // the null device of Windows is not read
    };
#ifndef _WIN32
    ASSERT_EQ(::mkfifo(dir_.file("s/P.tsk").c_str(), 0600), 0);
    rows.push_back({"C:\\X\\P.TSK", tVemMissingTask::kNotReadable});  // a pipe in the search path
    rows.push_back({"/dev/null", tVemMissingTask::kNotReadable});
#endif
    for (const auto& [stored, reason] : rows) {
        SCOPED_TRACE(stored);
        vemtest::WriteContainerFile(dir_.file("n/R.vem"), {{"T", stored}});
        Loaded loaded(dir_.file("n/R.vem"));
        ASSERT_NE(loaded.root, nullptr);
        EXPECT_TRUE(ChildNames(loaded.Tasks()).empty());
        ASSERT_EQ(loaded.report.Count, 1);
        EXPECT_EQ(loaded.report.Tasks[0].Reason, reason);
    }
}

// Two names that lead to one file: the file is read once in a load, so the load fails as it does
// for two equal names.
TEST_F(TaskSearch, TwoNamesOfOneFoundFileFailTheLoad) {
    WriteTask(dir_.file("T.TSK"), "T");
    vemtest::WriteContainerFile(dir_.file("R.vem"), {{"A", "C:\\A\\T.TSK"}, {"B", "D:\\B\\t.tsk"}});
    Loaded loaded(dir_.file("R.vem"));
    EXPECT_EQ(loaded.root, nullptr);
    EXPECT_EQ(loaded.load.Failure, tVemLoadReport::kArchiveException);
}
