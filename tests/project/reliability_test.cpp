// Hostile and broken input, and failures while writing: what the library reads never crashes it or
// holds more than the input can carry, and what it writes never destroys the file it replaces.
#ifndef _WIN32
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <filesystem>

#include "alloc_hook.h"
#include "node/basenode.h"
#include "statement/evemcode.h"
#include "test_util.h"
#include "units/hfile.h"
#include "vem_ext.h"
#include "vem_settings.h"

using vemtest::Bytes;
using vemtest::Frame;
using vemtest::ReadFileBytes;
using vemtest::TempDir;
using vemtest::WriteContainerFile;
using vemtest::WriteFileBytes;
using vemtest::WriteObjectFile;

namespace {

constexpr long kMemoryBound = 50L << 20;

// A base record up to its child count: schema, type, expanded, name, serial, extra text.
Bytes& BaseHead(Bytes& b, unsigned type, const std::string& name) {
    return b.u16_(0).u8_(type).u8_(1).str(name).u32_(0).u8_(0);
}

struct Load {
    CVemBaseNode* node;
    int failure;
    long live;
    long peakBytes;
};

Load LoadWatched(const TempDir& dir, const std::vector<u8>& bytes) {
    WriteFileBytes(dir.file("hostile.vem"), bytes);
    tVemLoadReport report{};
    vemtest::AllocationWatch watch;
    CVemBaseNode* node = VemLoadNodeReport(dir.file("hostile.vem").c_str(), &report);
    return {node, report.Failure, watch.Live(), watch.PeakBytes()};
}

void ExpectRefused(const TempDir& dir, const std::vector<u8>& bytes, const char* what) {
    SCOPED_TRACE(what);
    const Load load = LoadWatched(dir, bytes);
    EXPECT_EQ(load.node, nullptr);
    EXPECT_EQ(load.failure, tVemLoadReport::kArchiveException);  // a corrupt file, not a shortage
    EXPECT_EQ(load.live, 0);
    EXPECT_LT(load.peakBytes, kMemoryBound);
}

}  // namespace

TEST(Reliability, HundredByteFilesThatClaimHugeSizesFailWithinBoundedMemory) {
    TempDir dir;
    Bytes longName = Frame(kVemBaseNode);
    longName.u16_(0).u8_(1).u8_(1).u8_(0xFF).u16_(0xFFFF).u32_(0xFFFFFFFF).u32_(0).u32_(1u << 8);  // 2^40 bytes
    longName.v.resize(100);
    ExpectRefused(dir, longName.v, "string of 2^40 bytes");

    Bytes wideName = Frame(kVemBaseNode);
    wideName.u16_(0).u8_(1).u8_(1).u8_(0xFF).u16_(0xFFFE).u8_(0xFF).u16_(0xFFFF).u32_(0xFFFFFFFE);
    wideName.v.resize(100);
    ExpectRefused(dir, wideName.v, "string of 2^32 wide characters");

    Bytes taskMap = Frame(kVemTaskContainerNode);
    BaseHead(taskMap, kVemTaskContainerNode, "TASKS").u16_(0).u16_(0).u16_(0xFFFF).u32_(0xFFFFFFFF);
    taskMap.v.resize(100);
    ExpectRefused(dir, taskMap.v, "map of 2^32 entries");

    Bytes children = Frame(kVemBaseNode);
    BaseHead(children, kVemBaseNode, "R").u16_(0xFFFE);
    children.v.resize(100);
    ExpectRefused(dir, children.v, "65534 children");
}

TEST(Reliability, HundredThousandNestedChildrenFailAtTheDepthBound) {
    TempDir dir;
    const auto nested = [](int levels) {
        Bytes b = Frame(kVemBaseNode);
        for (int i = 0; i < levels; ++i) BaseHead(b, kVemBaseNode, "").u16_(1).u8_(kVemBaseNode);
        BaseHead(b, kVemBaseNode, "").u16_(0);
        return b.v;
    };
    ExpectRefused(dir, nested(100000), "100000 levels");
    const Load deep = LoadWatched(dir, nested(CArchive::kMaxDepth - 10));
    ASSERT_NE(deep.node, nullptr);
    CVemBaseNode* node = deep.node;
    VemDeleteNode(node);
}

// A child whose type byte makes one class but whose record names the type of another loaded before
// as that class bearing the other type; a store then wrote the other type's byte, and the file
// could not be read back.
TEST(Reliability, RecordsThatNameTheTypeOfAnotherClassAreRefused) {
    TempDir dir;
    CVemBaseNode* root = vemtest::NewNode(kVemBaseNode, "R");
    VemAddChildTail(root, VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 0));
    ASSERT_EQ(VemWriteNode(root, dir.file("good.vem").c_str()), 1);
    VemDeleteNode(root);
    const std::vector<u8> good = ReadFileBytes(dir.file("good.vem"));
    ASSERT_EQ(good.size(), 83u);
    ASSERT_EQ(good[43], kVemVariableNode);

    std::vector<u8> child = good;
    child[43] = kVemProgramNode;  // the variable's record says program
    ExpectRefused(dir, child, "child");
    std::vector<u8> rootType = good;
    rootType[29] = kVemTaskNode;  // the root's record says task
    ExpectRefused(dir, rootType, "root");
    const Load load = LoadWatched(dir, good);
    ASSERT_NE(load.node, nullptr);
    CVemBaseNode* node = load.node;
    VemDeleteNode(node);
}

namespace {

// The record of a code node with the statements of these kinds.
std::vector<u8> CodeRecord(std::initializer_list<tEVemNodeType> kinds) {
    CEVemBaseNode* code = EVemCreateNode(kEVemPouCodeNode, "U");
    for (const tEVemNodeType kind : kinds) EVemAddNewStmtNode(code, kind);
    CMemFile file;
    CArchive ar(&file, CArchive::store);
    code->Serialize(ar);
    ar.Close();
    EVemDeleteNode(code);
    return file.Data();
}

// Loads a code node's record; the archive exception's cause, or -1 when it loads.
int LoadCode(const std::vector<u8>& bytes, int* kind = nullptr) {
    CEVemPouCodeNode code;
    CMemFile file(bytes);
    CArchive ar(&file, CArchive::load);
    try {
        code.Serialize(ar);
    } catch (const CArchiveException& e) {
        return e.m_cause;
    }
    if (kind) *kind = EVemGetNodeType(EVemGetNext(code.FirstStatement));
    return -1;
}

}  // namespace

TEST(Reliability, ChainStatementsThatNameTheKindOfAnotherClassAreRefused) {
    LurResetSettings();
    const std::vector<u8> good = CodeRecord({kEVemLdVariableStmtNode, kEVemStVariableStmtNode});
    // The second statement's tag stands where the chain of the first alone ends; its kind follows
    // behind the tag and the schema word.
    const std::size_t at = CodeRecord({kEVemLdVariableStmtNode}).size() - 2 + 4;
    ASSERT_EQ(good[at], kEVemStVariableStmtNode);
    std::vector<u8> codeKind = good;
    codeKind[at] = kEVemPouCodeNode;
    EXPECT_EQ(LoadCode(codeKind), CArchiveException::badClass);
    std::vector<u8> sameClass = good;
    sameClass[at] = kEVemLdVariableStmtNode;  // both kinds are made as one class
    int kind = 0;
    EXPECT_EQ(LoadCode(sameClass, &kind), -1);
    EXPECT_EQ(kind, kEVemLdVariableStmtNode);

    // An older record whose first statement names a code node and nests the next statement: both go.
    const long before = CEVemBaseNode::LiveCount();
    Bytes old;
    old.u16_(3).u16_(kEVemPouCodeNode).u16_(3).u16_(0).u16_(0).u8_(0);  // code node, empty path
    old.u16_(kEVemNotStmtNode).u16_(3).u16_(kEVemPouCodeNode).u16_(2).u16_(1).u16_(kEVemNotStmtNode);
    old.u16_(3).u16_(kEVemNotStmtNode).u16_(3).u16_(2);  // the nested statement, version 3
    old.u16_(0x10).u16_(0x20).u16_(0);                   // both code offsets, the end of the chain
    EXPECT_EQ(LoadCode(old.v), CArchiveException::badClass);
    EXPECT_EQ(CEVemBaseNode::LiveCount(), before);
}

// Fifteen files, each naming the next one three times, were read 3^14 times in one load.
TEST(Reliability, ATaskFileIsReadOnceInALoad) {
    TempDir dir;
    constexpr int kLevels = 14;
    const auto level = [&](int n) { return dir.file("level" + std::to_string(n) + ".tsk"); };
    for (int n = kLevels; n >= 0; --n) {
        CVemBaseNode* node = VemNewNode(n == kLevels ? kVemTuiTaskNode : kVemTaskContainerNode);
        if (n < kLevels)
            for (const char* name : {"A", "B", "C"}) VemTaskCompiled(node, name, level(n + 1).c_str());
        WriteObjectFile(level(n), node);
        VemDeleteNode(node);
    }
    WriteContainerFile(dir.file("fan.vem"), {{"T", level(0)}});
    vemtest::AllocationWatch watch;
    tVemLoadReport report{};
    EXPECT_EQ(VemLoadNodeReport(dir.file("fan.vem").c_str(), &report), nullptr);
    EXPECT_EQ(report.Failure, tVemLoadReport::kArchiveException);
    EXPECT_LT(watch.Made(), 5000);
    EXPECT_EQ(watch.Live(), 0);

    CVemBaseNode* task = VemNewNode(kVemTuiTaskNode);
    WriteObjectFile(dir.file("t.tsk"), task);
    VemDeleteNode(task);
    // By another name of the same file too.
    WriteContainerFile(dir.file("twice.vem"), {{"T1", dir.file("t.tsk")}, {"T2", dir.path() + "/./t.tsk"}});
    EXPECT_EQ(VemLoadNodeReport(dir.file("twice.vem").c_str(), &report), nullptr);
    // Each load and each container reads it afresh.
    WriteContainerFile(dir.file("once.vem"), {{"T1", dir.file("t.tsk")}});
    for (int i = 0; i < 2; ++i) {
        CVemBaseNode* loaded = VemLoadNodeReport(dir.file("once.vem").c_str(), &report);
        ASSERT_NE(loaded, nullptr);
        EXPECT_EQ(VemGetChildList(VemGetFirstNodeOfType(loaded, kVemTaskContainerNode))->GetCount(), 1);
        VemDeleteNode(loaded);
    }
}

// A pipe named as a task file would block the load until someone writes to it: it ends the reading
// like a missing file.
TEST(Reliability, APipeNamedAsATaskFileIsNoTaskFile) {
#ifdef _WIN32
    GTEST_SKIP() << "Windows makes no pipe in a directory";
#else
    TempDir dir;
    ASSERT_EQ(::mkfifo(dir.file("pipe.tsk").c_str(), 0600), 0);
    WriteContainerFile(dir.file("pipe.vem"), {{"T", dir.file("pipe.tsk")}});
    CVemBaseNode* loaded = VemLoadNode(dir.file("pipe.vem").c_str());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(VemGetChildList(VemGetFirstNodeOfType(loaded, kVemTaskContainerNode))->GetCount(), 0);
    VemDeleteNode(loaded);
#endif
}

// Each task file's archive counted its own depth: sixteen files, each nesting 400 deep, drove the
// load 6400 levels down the stack.
TEST(Reliability, TheDepthBoundHoldsAcrossTaskFiles) {
    TempDir dir;
    const auto file = [&](int n) { return dir.file("deep" + std::to_string(n) + ".tsk"); };
    // Three task files, each a chain of levels whose last node is a container naming the next file.
    const auto write = [&](int levels) {
        for (int n = 2; n >= 0; --n) {
            CVemBaseNode* top = VemNewNode(kVemBaseNode);
            CVemBaseNode* bottom = top;
            for (int i = 1; i < levels; ++i) {
                CVemBaseNode* next = vemtest::Add(bottom, VemNewNode(kVemBaseNode));
                bottom = next;
            }
            CVemBaseNode* container = VemNewNode(kVemTaskContainerNode);
            if (n < 2) VemTaskCompiled(container, "T", file(n + 1).c_str());
            VemAddChildTail(bottom, container);
            WriteObjectFile(file(n), top);
            VemDeleteNode(top);
        }
        WriteContainerFile(dir.file("deep.vem"), {{"T", file(0)}});
    };
    tVemLoadReport report{};
    write(CArchive::kMaxDepth / 2);
    EXPECT_EQ(VemLoadNodeReport(dir.file("deep.vem").c_str(), &report), nullptr);
    EXPECT_EQ(report.Failure, tVemLoadReport::kArchiveException);
    write(CArchive::kMaxDepth / 4);
    CVemBaseNode* loaded = VemLoadNodeReport(dir.file("deep.vem").c_str(), &report);
    ASSERT_NE(loaded, nullptr);
    VemDeleteNode(loaded);
}

namespace {

// A root whose store stops halfway: a process killed there, or an error of the platform.
class CStoppingNode : public CVemBaseNode {
public:
    explicit CStoppingNode(void (*stop)()) : CVemBaseNode(kVemBaseNode, "New", 1), stop_(stop) {}
    void Serialize(CArchive& ar) override {
        CVemBaseNode::Serialize(ar);
        ar.Write(std::string(100000, 'x').data(), 100000);
        stop_();
    }

private:
    void (*stop_)();
};

std::vector<u8> WriteOldFile(const std::string& path) {
    CVemBaseNode* old = vemtest::NewNode(kVemBaseNode, "Old");
    VemAddChildTail(old, VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 0));
    EXPECT_EQ(VemWriteNode(old, path.c_str()), 1);
    VemDeleteNode(old);
    return ReadFileBytes(path);
}

void ExpectOldFileLoads(const std::string& path, const std::vector<u8>& before) {
    EXPECT_EQ(ReadFileBytes(path), before);
    CVemBaseNode* loaded = VemLoadNode(path.c_str());
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(VemGetName(loaded), "Old");
    VemDeleteNode(loaded);
}

int RegularFiles(const std::string& dir) {
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) files += entry.is_regular_file();
    return files;
}

}  // namespace

TEST(Reliability, AProcessKilledWhileWritingANodeFileLeavesTheOldOneLoadable) {
#ifdef _WIN32
    GTEST_SKIP() << "Windows has no fork: no process can be killed in the middle of a write it shares";
#else
    TempDir dir;
    const std::string target = dir.file("r.vem");
    const std::vector<u8> before = WriteOldFile(target);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        CStoppingNode node([] { raise(SIGKILL); });
        VemWriteNode(&node, target.c_str());
        _exit(0);  // not reached
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    ExpectOldFileLoads(target, before);
#endif
}

// A shortage of memory passes to the caller wherever it strikes, and the old file stays.
TEST(Reliability, AFailureAtAnyAllocationOfAWriteLeavesTheOldFileWhole) {
    TempDir dir;
    const std::string target = dir.file("r.vem");
    const std::vector<u8> before = WriteOldFile(target);
    CVemBaseNode* tree = vemtest::NewNode(kVemProjectNode, "Old");
    for (int i = 0; i < 5; ++i) VemAddChildTail(tree, VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 0));
    for (long k = 0;; ++k) {
        SCOPED_TRACE(k);
        int result = 0;
        {
            vemtest::AllocationWatch watch;
            watch.FailAfter(k);
            try {
                result = VemWriteNode(tree, target.c_str());
            } catch (const std::bad_alloc&) {
            }
            watch.FailAfter(-1);
            EXPECT_EQ(watch.Live(), 0);
        }
        if (result == 1) break;
        ExpectOldFileLoads(target, before);
        EXPECT_EQ(RegularFiles(dir.path()), 1);
    }
    EXPECT_NE(ReadFileBytes(target), before);
    VemDeleteNode(tree);
}

#ifndef _WIN32
namespace {

// Writes that would make a file longer than the limit fail while it lives, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        previousHandler_ = signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &previous_);
        rlimit limit = previous_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &previous_);
        signal(SIGXFSZ, previousHandler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit previous_{};
    sighandler_t previousHandler_;
};

}  // namespace
#endif

// An edit that grows the file and cannot write reports it, and the file keeps its old bytes.
TEST(Reliability, AnEditThatCannotWriteIsReportedAndChangesNothing) {
#ifdef _WIN32
    GTEST_SKIP() << "Windows has no limit of a file's size to make a write fail";
#else
    TempDir dir;
    const std::string path = dir.file("unit.st");
    std::string body = "FUNCTION_BLOCK PUMP\r\n";
    for (int i = 0; i < 500; ++i) body += "  LD X" + std::to_string(i) + "\r\n";
    const std::string withBlock = "$BEGIN_ZQ_HEADER\r\nNAME = P\r\n$END_ZQ_HEADER\r\n" + body;
    struct Edit {
        const char* what;
        const std::string* text;
        int (*run)(CHFile&);
    };
    const Edit edits[] = {
        {"longer value", &withBlock, [](CHFile& f) { return f.SetValue("NAME", "PUMP_STATION"); }},
        {"new key", &withBlock, [](CHFile& f) { return f.SetValue("VERSION", "3"); }},
        {"new block", &body, [](CHFile& f) { return f.SetValue("NAME", "P"); }},
        {"longer text", &withBlock, [](CHFile& f) { return f.ReplaceText("LD X7\r\n", "LD X7\r\nST Y7\r\n"); }},
        {"longer name", &withBlock, [](CHFile& f) { return f.SetUnitName("PUMP_STATION"); }},
    };
    for (const Edit& edit : edits) {
        SCOPED_TRACE(edit.what);
        vemtest::WriteFileText(path, *edit.text);
        int result = -1;
        {
            CHFile file;
            ASSERT_EQ(file.OpenUpdate(path.c_str(), 0), 1);
            FileSizeLimit limit(edit.text->size() + 2);
            try {
                result = edit.run(file);
            } catch (const CFileException&) {
                result = 0;
            }
        }
        EXPECT_EQ(result, 0);
        EXPECT_EQ(vemtest::ReadFileText(path), *edit.text);
    }
    vemtest::WriteFileText(path, withBlock);
    FileSizeLimit limit(withBlock.size() + 2);
    EXPECT_EQ(VemSrcSetValue(path.c_str(), "NAME", "PUMP_STATION"), 0);
    EXPECT_EQ(vemtest::ReadFileText(path), withBlock);
#endif
}
