// Extensions for tools: load reports and the source key block.
#include "test_util.h"

TEST(LoadReport, NamesTheFailureAndWhereItStopped) {
    vemtest::TempDir dir;
    CVemBaseNode* root = VemNewNode(kVemBaseNode);
    VemSetName(root, "R");
    CVemBaseNode* v = VemCreateCVemVariableNode("V", 4, kCbeTypeInt, 2, 0);
    VemAddChildTail(root, v);
    ASSERT_EQ(VemWriteNode(root, dir.file("r.vem").c_str()), 1);
    VemDeleteNode(root);
    std::vector<u8> bytes = vemtest::ReadFileBytes(dir.file("r.vem"));
    ASSERT_EQ(bytes.size(), 83u);
    bytes.resize(60);  // inside the variable's record
    vemtest::WriteFileBytes(dir.file("cut.vem"), bytes);

    vemtest::MessageCapture messages;
    tVemLoadReport report;
    EXPECT_EQ(VemLoadNodeReport(dir.file("cut.vem").c_str(), &report), nullptr);
    EXPECT_EQ(report.Failure, tVemLoadReport::kArchiveException);
    EXPECT_EQ(report.Cause, CArchiveException::endOfFile);
    EXPECT_EQ(report.Offset, 60u);
    EXPECT_STREQ(report.RecordClass, "CVemVariableNode");

    EXPECT_EQ(VemLoadNodeReport(dir.file("missing.vem").c_str(), &report), nullptr);
    EXPECT_EQ(report.Failure, tVemLoadReport::kCannotOpen);
    EXPECT_EQ(report.Cause, CFileException::fileNotFound);

    CVemBaseNode* good = VemLoadNodeReport(dir.file("r.vem").c_str(), &report);
    ASSERT_NE(good, nullptr);
    EXPECT_EQ(report.Failure, tVemLoadReport::kNone);
    VemDeleteNode(good);
    EXPECT_TRUE(messages.texts().empty());
}

TEST(SourceKeys, ReadChangeAndUnit) {
    vemtest::TempDir dir;
    const std::string file = dir.file("main.st");
    vemtest::WriteFileText(file, "$BEGIN_ZQ_HEADER\r\nCHECK = 12\r\n$END_ZQ_HEADER\r\nPROGRAM Main\r\nEND_PROGRAM\r\n");
    CString value;
    ASSERT_EQ(VemSrcGetValue(file.c_str(), "check", value), 1);
    EXPECT_EQ(value, "12");
    ASSERT_EQ(VemSrcSetValue(file.c_str(), "CHECK", "345"), 1);
    ASSERT_EQ(VemSrcGetValue(file.c_str(), "CHECK", value), 1);
    EXPECT_EQ(value, "345");
    CString kind, name;
    ASSERT_EQ(VemSrcGetUnit(file.c_str(), kind, name), 1);
    EXPECT_EQ(kind, "PROGRAM");
    EXPECT_EQ(name, "Main");
    EXPECT_EQ(VemSrcGetValue(dir.file("none.st").c_str(), "CHECK", value), 0);
}
