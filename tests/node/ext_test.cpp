// Extensions for tools: the source key block.
#include "test_util.h"

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
