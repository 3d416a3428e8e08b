// Collections and strings of the platform layer.
#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <tuple>
#include <vector>

#include "memory_test_util.h"

namespace {}  // namespace

// Many keys entered and removed in a scrambled order, against a plain list of what must be there:
// every key is found or missing as it should be, and the order stays that of entering. Word keys
// that differ in their low bits only, and names that share a long prefix, crowd the index.
TEST(Maps, ManyKeysEnteredAndRemovedInAnyOrder) {
    CMapStringToOb names;
    CMapWordToOb words;
    std::vector<std::pair<u16, bool>> expected;  // key, present; in the order of entering
    u32 seed = 2024;
    auto next = [&seed] { return (seed = seed * 1103515245u + 12345u) >> 8; };
    for (int round = 0; round < 20000; ++round) {
        const auto key = static_cast<u16>(next() % 3000);
        const bool enter = next() % 3 != 0;
        const CString name = CString("TASK1.PREFIX_OF_SOME_LENGTH.V") + CString(std::to_string(key));
        auto* object = reinterpret_cast<CObject*>(std::uintptr_t{key} * 8 + 8);
        auto it = std::find_if(expected.begin(), expected.end(), [key](const auto& e) { return e.first == key; });
        if (enter) {
            names.SetAt(name, object);
            words.SetAt(key, object);
            if (it == expected.end()) expected.emplace_back(key, true);
        } else {
            EXPECT_EQ(names.RemoveKey(name), it != expected.end());
            EXPECT_EQ(words.RemoveKey(key), it != expected.end());
            if (it != expected.end()) expected.erase(it);
        }
    }
    ASSERT_EQ(names.GetCount(), static_cast<int>(expected.size()));
    ASSERT_EQ(words.GetCount(), static_cast<int>(expected.size()));
    for (u16 key = 0; key < 3000; ++key) {
        const bool present =
            std::any_of(expected.begin(), expected.end(), [key](const auto& e) { return e.first == key; });
        CObject* found = nullptr;
        EXPECT_EQ(words.Lookup(key, found), present) << key;
        if (present) {
            EXPECT_EQ(found, reinterpret_cast<CObject*>(std::uintptr_t{key} * 8 + 8));
        }
        const CString name = CString("TASK1.PREFIX_OF_SOME_LENGTH.V") + CString(std::to_string(key));
        EXPECT_EQ(names.Lookup(name, found), present) << key;
    }
    POSITION pos = words.GetStartPosition();
    for (const auto& e : expected) {
        ASSERT_NE(pos, nullptr);
        u16 key = 0;
        CObject* object = nullptr;
        words.GetNextAssoc(pos, key, object);
        EXPECT_EQ(key, e.first);
    }
    EXPECT_EQ(pos, nullptr);
}

// Every collection stores, loads and stores again to the same bytes; objects go as null references.
TEST(Collections, EveryKindLoadsWhatItStored) {
    auto same = [](auto& original, int count) {
        const std::vector<u8> first = memtest::Stored(original);
        std::remove_reference_t<decltype(original)> loaded;
        memtest::Load(first, [&](CArchive& ar) { loaded.Serialize(ar); });
        EXPECT_EQ(memtest::Stored(loaded), first);
        EXPECT_EQ(loaded.GetCount(), count);
    };
    CObArray objects;
    objects.Add(nullptr);
    CWordArray words;
    for (u16 w : {1, 0xFFFF}) words.Add(w);
    CStringArray texts;
    for (const char* t : {"", "x"}) texts.Add(t);
    CObList objectList;
    objectList.AddTail(nullptr);
    CStringList textList;
    for (const char* t : {"a", "b", "a"}) textList.AddTail(t);
    CMapStringToOb byName;
    byName.SetAt("k", nullptr);
    CMapWordToOb byWord;
    for (u16 k : {3, 1}) byWord.SetAt(k, nullptr);
    same(objects, 1);
    same(words, 2);
    same(texts, 2);
    same(objectList, 1);
    same(textList, 3);
    same(byName, 1);
    same(byWord, 2);
    // A search that starts behind a position finds the next equal element.
    EXPECT_EQ(textList.Find("a", textList.Find("a")), textList.GetTailPosition());
    EXPECT_EQ(objectList.Find(nullptr, objectList.GetHeadPosition()), nullptr);
}

TEST(Lists, InsertAroundPositionsAndNullPositions) {
    CStringList list;
    list.AddTail("b");
    list.InsertBefore(nullptr, "a");  // null: at the head
    list.InsertAfter(nullptr, "d");   // null: at the tail
    POSITION b = list.Find("b");
    list.InsertAfter(b, "c");
    std::string joined;
    for (POSITION pos = list.GetHeadPosition(); pos;) joined += list.GetNext(pos).str();
    EXPECT_EQ(joined, "abcd");
    EXPECT_EQ(list.GetAt(list.FindIndex(2)), "c");
    EXPECT_EQ(list.FindIndex(4), nullptr);
    EXPECT_EQ(list.FindIndex(-1), nullptr);
    list.RemoveAt(list.Find("c"));
    EXPECT_EQ(list.GetCount(), 3);
    EXPECT_EQ(list.RemoveHead(), "a");
    EXPECT_EQ(list.RemoveTail(), "d");
    EXPECT_EQ(list.GetHead(), "b");
    EXPECT_EQ(list.Find("zz"), nullptr);
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
    const char* none = nullptr;
    EXPECT_TRUE(CString() == none);  // a null text is the empty one, from either side
    EXPECT_TRUE("x" == CString("x"));
}

// Format writes what the C library writes, for the conversions it does itself and for the others.
TEST(Strings, FormatWritesWhatSnprintfWrites) {
    auto same = [](const char* format, auto... args) {
        char expected[512];
        std::snprintf(expected, sizeof expected, format, args...);
        CString s;
        s.Format(format, args...);
        EXPECT_EQ(std::string(s.GetString()), std::string(expected)) << format;
    };
    for (const int v : {0, 7, -7, 42, -1234, 65535, INT_MIN, INT_MAX}) {
        for (const char* f : {"%d", "%i|", "x%3d", "%05i", "%02d%%", "%-4d.", "%+d", "%.3d"}) same(f, v);
        for (const char* f : {"%u", "%x", "%X", "%04X", "%02u", "%8x", "%#x"}) same(f, static_cast<unsigned>(v));
        same("%ld %lu %lli %llX", static_cast<long>(v), static_cast<unsigned long>(v), static_cast<long long>(v) * 3,
             static_cast<unsigned long long>(v));
        same("%c%s=%u\n", 'A' + (v & 15), "name", static_cast<unsigned>(v));
    }
    same("%s|%5s|%-5s|%.2s", "", "ab", "cd", "efg");
    same("%hu %f %p", 70000, 1.5, static_cast<void*>(nullptr));
    same("%s", std::string(300, 'y').c_str());
}

// A string of up to 6 characters lies in the string's own word, a longer one in a block that copies
// share: every operation, across that border and on itself, gives what the standard string gives,
// and no copy taken on the way sees a later change.
TEST(Strings, ShortAndLongTextsFollowTheStandardString) {
    std::mt19937 random(7);
    CString s;
    std::string model;
    std::vector<std::pair<CString, std::string>> copies;
    for (int step = 0; step < 4000; ++step) {
        const std::string piece(random() % 9, static_cast<char>('a' + random() % 26));
        const std::size_t cut = std::min<std::size_t>(random() % 5, model.size());
        switch (random() % 13) {
            case 9: copies.emplace_back(s, model); break;
            case 10:
                s.MakeUpper();
                for (char& c : model) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
                break;
            case 11:
                if (!model.empty()) s.SetAt(0, ' ');
                s.TrimLeft();
                if (!model.empty()) model.erase(0, 1);
                break;
            case 12:
                if (!copies.empty()) std::tie(s, model) = copies[random() % copies.size()];
                break;
            case 0:
                s += piece.c_str();
                model += piece;
                break;
            case 1:
                s += s;
                model += model;
                break;
            case 2:
                s = s.Mid(static_cast<int>(cut));
                model.erase(0, cut);
                break;
            case 3:
                s = piece.c_str();
                model = piece;
                break;
            case 4: {
                CString moved(std::move(s));
                s = moved + "x";
                model += "x";
                break;
            }
            case 5:
                s.SetString(s.GetString() + cut, s.GetLength() - static_cast<int>(cut));
                model.erase(0, cut);
                break;
            case 6: {
                char* buffer = s.GetBuffer(static_cast<int>(piece.size()));
                if (model.size() < piece.size()) model.resize(piece.size(), '\0');
                if (!piece.empty()) buffer[0] = model[0] = 'Q';
                s.ReleaseBuffer(-1);
                model.resize(std::strlen(model.c_str()));
                break;
            }
            case 7:
                s.Empty();
                model.clear();
                break;
            default: {
                const CString copy = s;
                s = copy + copy;
                model += model;
                break;
            }
        }
        if (model.size() > 200) {
            s = s.Left(7);
            model.resize(7);
        }
        ASSERT_EQ(s.view(), model) << "step " << step;
        ASSERT_EQ(std::strlen(s.GetString()), model.size());
        for (const auto& [copy, text] : copies) ASSERT_EQ(copy.view(), text) << "step " << step;
    }
}

TEST(Paths, WindowsRulesOnEveryHost) {
    struct Case {
        const char *path, *drive, *directory, *title, *extension;
    };
    for (const Case& c : {Case{"C:\\PRJ\\sub/res1.obj", "C:", "\\PRJ\\sub/", "res1", ".obj"},
                          Case{"..\\cfg\\main.cfg", "", "..\\cfg\\", "main", ".cfg"},
                          Case{"name.tar.gz", "", "", "name.tar", ".gz"},  // the last dot
                          Case{"c:rel\\name.ext", "c:", "rel\\", "name", ".ext"},
                          Case{"1:\\x.y", "", "1:\\", "x", ".y"},  // only a letter makes a drive
                          Case{".cfg", "", "", "", ".cfg"}}) {
        SCOPED_TRACE(c.path);
        const VemPathParts p = VemSplitPath(c.path);
        EXPECT_EQ(p.drive, c.drive);
        EXPECT_EQ(p.directory, c.directory);
        EXPECT_EQ(p.title, c.title);
        EXPECT_EQ(p.extension, c.extension);
    }
#ifdef _WIN32
    // Windows takes a stored name as it stands.
    for (const char* name : {"C:\\PRJ\\a.obj", "D\\FILE12", "z:rel\\a"}) EXPECT_EQ(VemHostPath(name), name);
#else
    EXPECT_EQ(VemHostPath("C:\\PRJ\\a.obj"), "/PRJ/a.obj");
    EXPECT_EQ(VemHostPath("D\\FILE12"), "D/FILE12");
    EXPECT_EQ(VemHostPath("z:rel\\a"), "rel/a");
#endif
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
