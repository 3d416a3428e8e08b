// Collections and strings of the platform layer.
#include "test_util.h"

namespace {

std::vector<std::string> Keys(const CMapStringToString& map) {
    std::vector<std::string> keys;
    CString key, value;
    for (POSITION pos = map.GetStartPosition(); pos;) {
        map.GetNextAssoc(pos, key, value);
        keys.push_back(key.str());
    }
    return keys;
}

}  // namespace

TEST(Maps, InsertionOrderAndReplacedValuesKeepTheirPlace) {
    CMapStringToString map;
    map.SetAt("b", "1");
    map.SetAt("a", "2");
    map.SetAt("c", "3");
    map.SetAt("a", "4");
    EXPECT_EQ(Keys(map), (std::vector<std::string>{"b", "a", "c"}));
    CString value;
    ASSERT_TRUE(map.Lookup("a", value));
    EXPECT_EQ(value, "4");
    EXPECT_TRUE(map.RemoveKey("b"));
    EXPECT_FALSE(map.RemoveKey("b"));
    map.SetAt("b", "5");
    EXPECT_EQ(Keys(map), (std::vector<std::string>{"a", "c", "b"}));
    EXPECT_EQ(map.GetCount(), 3);
    EXPECT_FALSE(map.Lookup("A", value));  // keys compare with case
}

TEST(Maps, StoreLoadStoreGivesTheSameBytes) {
    CMapStringToString map;
    for (const char* k : {"zeta", "alpha", "mid"}) map.SetAt(k, CString(k) + "!");
    CMemFile first;
    {
        CArchive ar(&first, CArchive::store);
        map.Serialize(ar);
        ar.Close();
    }
    CMapStringToString loaded;
    {
        CMemFile in(first.Data());
        CArchive ar(&in, CArchive::load);
        loaded.Serialize(ar);
    }
    CMemFile second;
    {
        CArchive ar(&second, CArchive::store);
        loaded.Serialize(ar);
        ar.Close();
    }
    EXPECT_EQ(first.Data(), second.Data());
    EXPECT_EQ(Keys(loaded), (std::vector<std::string>{"zeta", "alpha", "mid"}));
}

TEST(Lists, InsertAroundPositionsAndNullPositions) {
    CStringList list;
    list.AddTail("b");
    list.InsertBefore(nullptr, "a");      // null: at the head
    list.InsertAfter(nullptr, "d");       // null: at the tail
    POSITION b = list.Find("b");
    list.InsertAfter(b, "c");
    std::string joined;
    for (POSITION pos = list.GetHeadPosition(); pos;) joined += list.GetNext(pos).str();
    EXPECT_EQ(joined, "abcd");
    list.RemoveAt(list.Find("c"));
    EXPECT_EQ(list.GetCount(), 3);
    EXPECT_EQ(list.RemoveHead(), "a");
    EXPECT_EQ(list.RemoveTail(), "d");
    EXPECT_EQ(list.GetHead(), "b");
    EXPECT_EQ(list.Find("zz"), nullptr);
}

TEST(Arrays, CheckedAccessRaisesInvalidArgument) {
    CDWordArray words;
    words.Add(7);
    words.SetAtGrow(3, 9);
    EXPECT_EQ(words.GetSize(), 4);
    EXPECT_EQ(words.GetAt(2), 0u);
    EXPECT_EQ(words[3], 9u);
    EXPECT_THROW(words.GetAt(4), CInvalidArgException);
    EXPECT_THROW(words.GetAt(-1), CInvalidArgException);
}

TEST(Arrays, HostileCountFailsAtTheEndOfTheFile) {
    vemtest::Bytes b;
    b.u16_(0xFFFF).u32_(0xFFFFFFF0u).u32_(1);
    CMemFile file(b.v);
    CArchive ar(&file, CArchive::load);
    CDWordArray words;
    EXPECT_THROW(words.Serialize(ar), CArchiveException);
    EXPECT_EQ(words.GetSize(), 0);
}

TEST(Strings, FormattingSearchAndCase) {
    CString s;
    s.Format("%s-%04X|%i", "ab", 0x2A, -3);
    EXPECT_EQ(s, "ab-002A|-3");
    s.AppendFormat("%s", std::string(300, 'x').c_str());
    EXPECT_EQ(s.GetLength(), 10 + 300);
    CString t("Hello \xF6 World");
    t.MakeUpper();
    EXPECT_EQ(t, "HELLO \xF6 WORLD");  // plain ASCII rules
    EXPECT_EQ(t.Find("WORLD"), 8);
    EXPECT_EQ(t.Find('Q'), -1);
    EXPECT_EQ(t.ReverseFind('O'), 9);
    EXPECT_EQ(t.Left(5), "HELLO");
    EXPECT_EQ(t.Mid(8), "WORLD");
    EXPECT_EQ(t.Mid(8, 2), "WO");
    EXPECT_EQ(t.Right(3), "RLD");
    EXPECT_EQ(t.Left(-1), "");
    EXPECT_EQ(t.Mid(99), "");
    CString blanks("  x y \t");
    EXPECT_EQ(blanks.Trim(), "x y");
    EXPECT_LT(CString("Z").Compare("a"), 0);
    EXPECT_EQ(CString("abc").CompareNoCase("ABC"), 0);
    EXPECT_GT(CString("\xFC").Compare("z"), 0);  // bytes compare unsigned
}

TEST(Paths, WindowsRulesOnEveryHost) {
    VemPathParts p = VemSplitPath("C:\\PRJ\\sub/res1.obj");
    EXPECT_EQ(p.drive, "C:");
    EXPECT_EQ(p.directory, "\\PRJ\\sub/");
    EXPECT_EQ(p.title, "res1");
    EXPECT_EQ(p.extension, ".obj");
    p = VemSplitPath("..\\cfg\\main.cfg");
    EXPECT_EQ(p.title, "main");
    EXPECT_EQ(p.directory, "..\\cfg\\");
    p = VemSplitPath("name.tar.gz");
    EXPECT_EQ(p.title, "name.tar");
    EXPECT_EQ(p.extension, ".gz");
    EXPECT_EQ(VemHostPath("C:\\PRJ\\a.obj"), "/PRJ/a.obj");
    EXPECT_EQ(VemHostPath("D\\FILE12"), "D/FILE12");
}

TEST(Files, DuplicateKeepsAPositionOfItsOwn) {
    vemtest::TempDir dir;
    vemtest::WriteFileText(dir.file("f"), "0123456789");
    CFile file(dir.file("f").c_str(), CFile::modeRead);
    char c = 0;
    file.Seek(4, CFile::begin);
    CFile* dup = file.Duplicate();
    dup->Seek(0, CFile::begin);
    ASSERT_EQ(dup->Read(&c, 1), 1u);
    EXPECT_EQ(c, '0');
    ASSERT_EQ(file.Read(&c, 1), 1u);
    EXPECT_EQ(c, '4');
    delete dup;
    CFileException error;
    CFile missing;
    EXPECT_FALSE(missing.Open(dir.file("nope").c_str(), CFile::modeRead, &error));
    EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
    EXPECT_THROW(CFile(dir.file("nope").c_str(), CFile::modeRead), CFileException);
}
