// Project, configuration, resource and task nodes: counting, node texts, records, dumps.
#include "test_util.h"

using vemtest::Bytes;
using vemtest::ChildNames;
using vemtest::NewNode;
using vemtest::Frame;
using vemtest::ReadFileBytes;
using vemtest::TempDir;

namespace {

// Base record of a childless node with an empty extra text.
Bytes& BaseRecord(Bytes& b, unsigned type, unsigned expanded, const std::string& name) {
    return b.u16_(0).u8_(type).u8_(expanded).str(name).u32_(0).u8_(0).u16_(0);
}

}  // namespace

TEST(ProjectNodes, AddHeadSortsOnAResourceButNotOnAConfiguration) {
    for (tVemNodeType type : {kVemResourceNode, kVemConfigNode}) {
        CVemBaseNode* parent = VemNewNode(type);
        VemAddChildTail(parent, NewNode(kVemBaseNode, "B"));
        VemAddChildTail(parent, NewNode(kVemBaseNode, "D"));
        CVemBaseNode* c = NewNode(kVemBaseNode, "C");
        EXPECT_EQ(VemAddChildHead(parent, c), 1);
        EXPECT_EQ(VemGetParentNode(c), parent);
        if (type == kVemResourceNode) {
            EXPECT_EQ(ChildNames(parent), (std::vector<std::string>{"B", "C", "D"}));
            EXPECT_EQ(VemGetNoOfTask(parent), 3);
            EXPECT_EQ(VemGetName(VemGetLastChild(parent)), "D");  // the sorted insert leaves it
        } else {
            EXPECT_EQ(ChildNames(parent), (std::vector<std::string>{"C", "B", "D"}));
            EXPECT_EQ(VemGetNoOfTask(parent), 0);
            EXPECT_EQ(VemGetLastChild(parent), c);
        }
        VemAddChildSorted(parent, NewNode(kVemBaseNode, "A"));
        EXPECT_EQ(ChildNames(parent).front(), "A");
        EXPECT_EQ(VemGetNoOfTask(parent), type == kVemResourceNode ? 4 : 0);
        VemDeleteNode(parent);
    }
}

TEST(ProjectNodes, ResourceTextIsNameTitleAndConfigurationTitleInUpperCase) {
    CVemBaseNode* res = NewNode(kVemResourceNode, "C:\\PRJ\\res1.obj");
    EXPECT_EQ(VemGetNodeText(res), "RES1  -  ");
    VemSetConfigName(res, "..\\cfg\\main.cfg");
    EXPECT_EQ(VemGetNodeText(res), "RES1  -  MAIN");
    EXPECT_EQ(VemGetName(res), "C:\\PRJ\\res1.obj");  // the name itself is kept as given
    EXPECT_EQ(VemGetConfigName(res), "..\\cfg\\main.cfg");

    // Forward slashes separate too; a dot in a directory is no extension; the last dot is.
    VemSetName(res, "d:/x.y/Res2");
    VemSetConfigName(res, "cfg.v1/conf.a.b");
    EXPECT_EQ(VemGetNodeText(res), "RES2  -  CONF.A");
    VemSetName(res, "C:\\PRJ\\");  // no file part: an empty title
    EXPECT_EQ(VemGetNodeText(res), "  -  CONF.A");

    char buffer[64];
    VemGetNodeTextEx(res, buffer);
    EXPECT_STREQ(buffer, "  -  CONF.A");
    VemDeleteNode(res);
}

TEST(ProjectNodes, PathNameBelongsToTheResource) {
    CVemBaseNode* res = VemNewNode(kVemResourceNode);
    VemSetPathName(res, "C:\\PRJ\\res1.obj");
    EXPECT_EQ(VemGetPathName(res), "C:\\PRJ\\res1.obj");
    EXPECT_EQ(VemGetObjFileName(res), "C:\\PRJ\\res1.obj");
    char buffer[64];
    VemGetPathNameEx(res, buffer);
    EXPECT_STREQ(buffer, "C:\\PRJ\\res1.obj");

    CVemBaseNode* project = VemNewNode(kVemProjectNode);
    VemSetPathName(project, "x");
    VemSetConfigName(project, "y");
    EXPECT_EQ(VemGetPathName(project), "");
    EXPECT_EQ(VemGetObjFileName(project), "");
    EXPECT_EQ(VemGetConfigName(project), "");
    EXPECT_EQ(VemGetNoOfTask(project), 0);
    VemSetResourceName(res, "R");
    EXPECT_EQ(VemGetResourceName(res), "");  // the task's field, not the resource's
    VemDeleteNode(project);
    VemDeleteNode(res);
}

TEST(TaskNode, TextDropsOneBackslashAndTheSystemDirectory) {
    struct Case {
        const char* name;
        const char* text;
    };
    for (const Case& c : {Case{"MAIN", "MAIN"}, Case{"\\MAIN", "MAIN"}, Case{"KOMPO.SYS\\MAIN", "MAIN"},
                          Case{"\\KOMPO.SYS\\MAIN", "MAIN"}, Case{"kompo.sys\\MAIN", "kompo.sys\\MAIN"},
                          Case{"\\\\MAIN", "\\MAIN"}, Case{"KOMPO.SYS\\KOMPO.SYS\\M", "KOMPO.SYS\\M"},
                          Case{"KOMPO.SYS", "KOMPO.SYS"}, Case{"\\", ""}, Case{"", ""}}) {
        CVemBaseNode* task = NewNode(kVemTaskNode, c.name);
        EXPECT_EQ(VemGetNodeText(task), c.text) << c.name;
        EXPECT_EQ(VemGetName(task), c.name);
        VemDeleteNode(task);
    }
}

// The resource stores its ConfigName but not its PathName; the task not its resource's name; the
// project and the configuration only their schema words.
TEST(ProjectNodes, RecordsByteForByte) {
    TempDir dir;
    CVemBaseNode* res = NewNode(kVemResourceNode, "R");
    VemSetConfigName(res, "C");
    VemSetPathName(res, "not stored");
    Bytes resource = Frame(13);
    BaseRecord(resource, 13, 1, "R").u16_(0).str("C");  // schema word of the resource record, ConfigName
    CVemBaseNode* task = NewNode(kVemTaskNode, "T");
    VemSetResourceName(task, "RES");
    EXPECT_EQ(VemGetResourceName(task), "RES");
    VemAddChildTail(task, NewNode(kVemBaseNode, "child"));
    Bytes withChild = Frame(11);
    withChild.u16_(0).u8_(11).u8_(1).str("T").u32_(0).u8_(0).u16_(1).u8_(1);  // base record with one child
    BaseRecord(withChild, 1, 1, "child").u16_(0);                             // schema word of the task record
    CVemBaseNode* project = NewNode(kVemProjectNode, "P");
    VemAddChildTail(project, NewNode(kVemConfigNode, "K"));
    Bytes upper = Frame(15);
    upper.u16_(0).u8_(15).u8_(1).str("P").u32_(0).u8_(0).u16_(1).u8_(14);  // a configuration, not expanded:
    BaseRecord(upper, 14, 0, "K").u16_(0).u16_(0);                         // the schema words of both records
    const std::pair<CVemBaseNode*, std::vector<u8>> rows[] = {
        {res, resource.v}, {task, withChild.v}, {project, upper.v}};
    for (auto [node, want] : rows) {
        ASSERT_EQ(VemWriteNode(node, dir.file("n.vem").c_str()), 1);
        EXPECT_EQ(ReadFileBytes(dir.file("n.vem")), want);
        VemDeleteNode(node);
        CVemBaseNode* loaded = VemLoadNode(dir.file("n.vem").c_str());
        ASSERT_NE(loaded, nullptr);
        EXPECT_EQ(VemGetResourceName(loaded), "");
        ASSERT_EQ(VemWriteNode(loaded, dir.file("again.vem").c_str()), 1);
        EXPECT_EQ(ReadFileBytes(dir.file("again.vem")), want);
        VemDeleteNode(loaded);
    }
}
