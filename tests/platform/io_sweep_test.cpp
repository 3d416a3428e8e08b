// Every write of the library under a file layer that fails the k-th open, read, write, flush, rename
// or close, for every k: nothing leaks, and either the call reports success with every file whole and
// new, or it reports the failure and each file in the directory is the one that stood there before
// or the whole new one (a single file: the old one), with no temporary file left behind.
// And the allocation sweep of a load: the k-th allocation of VemLoadNode fails, for every k.
#include <filesystem>
#include <functional>
#include <map>

#include "alloc_hook.h"
#include "demo_build.h"
#include "platform/filefault.h"
#include "resource_builder.h"
#include "test_util.h"
#include "units/hfile.h"

using vemtest::ReadFileBytes;
using vemtest::TempDir;

namespace {

using Files = std::map<std::string, std::vector<u8>>;

Files FilesIn(const std::string& dir) {
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(dir))
        if (entry.is_regular_file()) files[entry.path().filename().string()] = ReadFileBytes(entry.path().string());
    return files;
}

struct Write {
    const char* what;
    bool inPlace;  // an edit of the user's file in place: a failure in the middle is reported
    // Writes the old state (old = true) or the new one into the directory; 1 on success. File and
    // archive exceptions count as a failure reported.
    std::function<int(const std::string& dir, bool old)> run;
};

int Reported(const std::function<int()>& call) {
    try {
        return call();
    } catch (const CFileException&) {
        return 0;
    } catch (const CArchiveException&) {
        return 0;
    }
}

CVemBaseNode* Tree(bool old) {
    CVemBaseNode* node = vemtest::NewNode(kVemProjectNode, old ? "Old" : "New");
    for (int i = 0; i < (old ? 1 : 5); ++i) VemAddChildTail(node, VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 0));
    return node;
}

int WithTree(bool old, const std::function<int(CVemBaseNode*)>& use) {
    CVemBaseNode* tree = Tree(old);
    const int result = Reported([&] { return use(tree); });
    VemDeleteNode(tree);
    return result;
}

const Write kWrites[] = {
    {"node file", false,
     [](const std::string& dir, bool old) {
         return WithTree(old, [&](CVemBaseNode* t) { return VemWriteNode(t, (dir + "/r.vem").c_str()); });
     }},
    {"object", false,
     [](const std::string& dir, bool old) {
         return WithTree(old, [&](CVemBaseNode* t) {
             CVemReplaceFile file;
             if (!file.OpenReplace((dir + "/t.tsk").c_str())) return 0;
             CArchive ar(&file, CArchive::store);
             if (!VemWriteObject(t, ar)) return 0;
             ar.Close();
             file.Commit();
             return 1;
         });
     }},
    {"dump", false,
     [](const std::string& dir, bool old) {
         return WithTree(old, [&](CVemBaseNode* t) { return CVemNodeDump(t, (dir + "/r.txt").c_str()); });
     }},
    {"resource with task files", false,
     [](const std::string& dir, bool old) {
         vembuild::ResourceShape shape;
         shape.variablesPerTask = old ? 2 : 3;
         CVemBaseNode* exe = vembuild::BuildResource(shape);
         const int result = Reported([&] { return vembuild::WriteResource(exe, dir, dir + "/RES1.vem"); });
         VemDeleteNode(exe);
         return result;
     }},
    {"source header edit", true,
     [](const std::string& dir, bool old) {
         const std::string path = dir + "/u.st";
         if (old || !vemtest::FileExists(path)) {
             vemtest::WriteFileText(path, "$BEGIN_ZQ_HEADER\r\nNAME = P\r\n$END_ZQ_HEADER\r\nLD X\r\n");
             if (old) return 1;
         }
         return Reported([&] { return VemSrcSetValue(path.c_str(), "NAME", "PUMP_STATION"); });
     }},
};

}  // namespace

TEST(IoSweep, EveryFailingFileOperationIsReportedAndLeavesOldOrNewFiles) {
    const vem::FileOp ops[] = {vem::FileOp::open,  vem::FileOp::read,   vem::FileOp::write,
                               vem::FileOp::flush, vem::FileOp::rename, vem::FileOp::close};
    for (const Write& write : kWrites) {
        SCOPED_TRACE(write.what);
        for (const vem::FileOp op : ops) {
            for (long k = 0;; ++k) {
                SCOPED_TRACE(testing::Message() << "operation " << static_cast<int>(op) << " call " << k);
                TempDir dir;  // what a write gives may name its directory: both states are made in it
                ASSERT_EQ(write.run(dir.path(), false), 1);
                const Files after = FilesIn(dir.path());
                ASSERT_EQ(write.run(dir.path(), true), 1);
                const Files before = FilesIn(dir.path());
                int result = 0;
                long calls = 0;
                {
                    vemtest::AllocationWatch watch;
                    vem::FailFileOp(op, k);
                    result = write.run(dir.path(), false);
                    calls = vem::FileOpCalls(op);
                    vem::FailFileOp(op, -1);
                    EXPECT_EQ(watch.Live(), 0);
                }
                const Files now = FilesIn(dir.path());
                if (calls <= k) {  // the failure never struck: the write went through
                    EXPECT_EQ(result, 1);
                    EXPECT_EQ(now, after);
                    break;
                }
                if (result == 1) {  // a failure that the write could do without
                    EXPECT_EQ(now, after);
                    continue;
                }
                ASSERT_EQ(now.size(), before.size());
                if (write.inPlace) continue;
                for (const auto& [name, bytes] : now) {
                    const bool same = bytes == before.at(name) || (after.count(name) && bytes == after.at(name));
                    EXPECT_TRUE(same) << name;
                }
                if (result == 0 && before.size() == 1) {
                    EXPECT_EQ(now, before);
                }
            }
        }
    }
}

// A shortage at any allocation of the load of the demonstration resource gives null and leaks nothing.
TEST(IoSweep, EveryFailingAllocationOfALoadGivesNullAndLeaksNothing) {
    TempDir dir;
    CVemBaseNode* demo = vemtool::BuildDemo(vemtool::DemoShape{});
    ASSERT_TRUE(vemtool::WriteDemo(demo, dir.path(), dir.file("demo.vem"), vemtool::DemoShape{}));
    VemDeleteNode(demo);
    const CString path = dir.file("demo.vem").c_str();
    for (long k = 0;; ++k) {
        SCOPED_TRACE(k);
        vemtest::AllocationWatch watch;
        watch.FailAfter(k);
        CVemBaseNode* loaded = nullptr;
        try {
            loaded = VemLoadNode(path);
        } catch (const std::bad_alloc&) {
            ADD_FAILURE() << "the shortage left the load";
        }
        watch.FailAfter(-1);
        if (loaded) {
            EXPECT_GT(k, 100);
            VemDeleteNode(loaded);
            EXPECT_EQ(watch.Live(), 0);
            break;
        }
        EXPECT_EQ(watch.Live(), 0);
    }
}
