// Source header file: edits in place on large files keep every byte outside the edited range.
#include "hfile_test_util.h"

#include <new>

#include "alloc_hook.h"

using namespace hfiletest;
using namespace std::string_literals;

namespace {

constexpr std::size_t kLarge = 400000;

// A block, a unit line, several hundred kilobytes of body.
std::string LargeSource(const std::string& block, const std::string& unitLine = "PROGRAM main") {
    return block + unitLine + "\r\n" + Filler(kLarge, 7) + "END_PROGRAM\r\n";
}

const std::string kBlock = Block({"CHECK = 123", "AUTHOR = someone", "LONG = first", "second"});

class HFileEdit : public HFileTest {
protected:
    // Opens `text` for update, runs the edit, closes, and gives the file's bytes.
    template <class F>
    std::string Edited(const std::string& text, F edit) {
        const std::string path = Put(text);
        CHFile file;
        EXPECT_EQ(file.OpenUpdate(path.c_str(), 0), 1);
        edit(file);
        file.Close();
        return Content(path);
    }
};

TEST_F(HFileEdit, SetValueReplacesOnlyTheValue) {
    const std::string text = LargeSource(kBlock);
    const std::size_t at = text.find("123");
    for (const std::string value : {"1234567", "9", "", "456"}) {
        SCOPED_TRACE(value);
        const std::string after = Edited(text, [&](CHFile& f) { EXPECT_EQ(f.SetValue("check", value.c_str()), 1); });
        EXPECT_TRUE(after == Spliced(text, at, 3, value));
    }
}

TEST_F(HFileEdit, SetValueWithoutBlockPutsOneInFront) {
    // A body that starts within the new block's length gets room made in front of it.
    for (const std::string& prefix : {""s, "(* c *)\r\n"s}) {
        const std::string text = LargeSource(prefix);
        const std::string after = Edited(text, [](CHFile& f) {
            EXPECT_EQ(f.SetValue("CHECK", "9"), 1);
            EXPECT_EQ(f.HasHeader(), 1);
        });
        EXPECT_TRUE(after == Block({"CHECK = 9"}) + text);
    }
    // A body that starts further in keeps its place: the block takes the bytes in front of it.
    const std::string prefix = "(* " + std::string(300, 'c') + " *)\r\n";
    const std::string text = LargeSource(prefix);
    const std::string after = Edited(text, [](CHFile& f) { EXPECT_EQ(f.SetValue("CHECK", "9"), 1); });
    const std::string block = Block({"CHECK = 9"});
    EXPECT_TRUE(after == block + text.substr(block.size()));
}

TEST_F(HFileEdit, SetValueRefusals) {
    for (const std::string& text : {""s, "TYPE t : INT; END_TYPE\r\n"s}) {
        const std::string after = Edited(
            text, [](CHFile& f) { EXPECT_EQ(CauseOf([&] { f.SetValue("CHECK", "1"); }), CFileException::badSeek); });
        EXPECT_EQ(after, text);
    }
    // A begin marker alone gives no place for a new key.
    const std::string open = kBegin + "A = 1\r\nPROGRAM p\r\n";
    EXPECT_EQ(Edited(open, [](CHFile& f) { EXPECT_EQ(CauseOf([&] { f.SetValue("B", "1"); }), 1); }), open);
    const std::string path = Put(kBlock + "PROGRAM p\r\n");
    CHFile file;
    ASSERT_EQ(file.OpenRead(path.c_str(), 0), 1);
    EXPECT_EQ(file.SetValue("CHECK", "1"), 0);
    file.Close();
    EXPECT_EQ(Content(path), kBlock + "PROGRAM p\r\n");
}

TEST_F(HFileEdit, ZeroByteInValueLineDoesNotWidenTheEdit) {
    const std::string block = kBegin + "CHECK = 1\0002\r\nNEXT = x\r\n"s + kEnd;
    const std::string text = LargeSource(block);
    const std::string after = Edited(text, [](CHFile& f) { EXPECT_EQ(f.SetValue("CHECK", "5"), 1); });
    EXPECT_TRUE(after == Spliced(text, kBegin.size() + 8, 3, "5"));
}

TEST_F(HFileEdit, ReplaceTextOnlyTheFirstMatchAndRefusals) {
    EXPECT_EQ(Edited("A tok B TOK C\r\n", [](CHFile& f) { EXPECT_EQ(f.ReplaceText("TOK", "x"), 1); }),
              "A x B TOK C\r\n");
    const std::string text = LargeSource(kBlock);
    EXPECT_TRUE(Edited(text, [](CHFile& f) {
                    f.Seek(100, CFile::begin);
                    EXPECT_EQ(f.ReplaceText("absent text", "x"), 0);
                    EXPECT_EQ(f.GetPosition(), 0u);
                }) == text);
    EXPECT_EQ(Opened(text)->ReplaceText("CHECK", "x"), 0);  // a file open for reading only
}

TEST_F(HFileEdit, SetUnitNameKeepsFunctionReturnType) {
    const std::string text = kBlock + "FUNCTION f : INT\r\nEND_FUNCTION\r\n";
    const std::string after = Edited(text, [](CHFile& f) { EXPECT_EQ(f.SetUnitName("g"), 1); });
    EXPECT_EQ(after, kBlock + "FUNCTION G : INT\r\nEND_FUNCTION\r\n");
}

TEST_F(HFileEdit, SetUnitNameCutsNameAndRefuses) {
    const std::string text = LargeSource(kBlock);
    const std::string name(80, 'q');
    EXPECT_TRUE(Edited(text, [&](CHFile& f) { EXPECT_EQ(f.SetUnitName(name.c_str()), 1); }) ==
                Spliced(text, kBlock.size(), 12, "PROGRAM " + std::string(64, 'Q')));
    // A unit line that is too long, no unit, a keyword in lower case.
    for (const std::string& unit : {"PROGRAM " + std::string(300, 'p'), "TYPE t : INT;"s, "program p"s}) {
        const std::string refused = kBlock + unit + "\r\n";
        EXPECT_EQ(Edited(refused, [](CHFile& f) { EXPECT_EQ(f.SetUnitName("x"), 0); }), refused);
    }
}

TEST_F(HFileEdit, GapAndRemovalKeepAllOtherBytes) {
    const std::string text = LargeSource(kBlock);
    const std::size_t size = text.size();
    for (std::size_t at : {std::size_t{0}, std::size_t{2047}, size / 2, size - 1, size}) {
        for (std::size_t count : {std::size_t{1}, std::size_t{3000}, std::size_t{500000}}) {
            SCOPED_TRACE(at);
            SCOPED_TRACE(count);
            const std::string after = Edited(text, [&](CHFile& f) {
                f.Seek(1234, CFile::begin);
                EXPECT_EQ(f.InsertGap(static_cast<i64>(at), static_cast<i64>(count)), 1);
                EXPECT_EQ(f.GetPosition(), 1234u);
                const u64 expected = at < size ? size + count : size;
                EXPECT_EQ(f.CFile::GetLength(), expected);
            });
            if (at == size) {
                EXPECT_TRUE(after == text);
                continue;
            }
            EXPECT_TRUE(after.compare(0, at, text, 0, at) == 0);
            EXPECT_TRUE(after.compare(at + count, std::string::npos, text, at) == 0);
            const std::string back = Edited(after, [&](CHFile& f) {
                EXPECT_EQ(f.RemoveBytes(static_cast<i64>(at), static_cast<i64>(count)), 1);
                EXPECT_EQ(f.GetPosition(), 0u);
            });
            EXPECT_TRUE(back == text);
        }
    }
}

TEST_F(HFileEdit, RemovalPastTheEndIsRefused) {
    const std::string text = kBlock + "PROGRAM p\r\n";
    EXPECT_EQ(Edited(text, [&](CHFile& f) { EXPECT_EQ(f.RemoveBytes(10, static_cast<i64>(text.size())), 0); }), text);
    EXPECT_EQ(Edited(text, [](CHFile& f) { EXPECT_EQ(f.InsertGap(5, 0), 1); }), text);
}

// A shortage of memory at any point of an edit leaves the file whole or fully edited, and
// leaks nothing.
TEST_F(HFileEdit, MemoryShortageLeavesFileWhole) {
    const std::string text = Block({"CHECK = 1"}) + "FUNCTION f : INT\r\n" + Filler(20000, 5);
    const std::string path = Put(text);
    struct Edit {
        const char* what;
        int (*run)(CHFile&);
        std::string result;
    };
    const Edit edits[] = {
        {"SetValue", [](CHFile& f) { return f.SetValue("CHECK", "123456"); }, Spliced(text, 26, 1, "123456")},
        {"NewKey", [](CHFile& f) { return f.SetValue("NEW", "2"); }, Spliced(text, text.find(kEnd), 0, "NEW = 2\r\n")},
        {"ReplaceText", [](CHFile& f) { return f.ReplaceText("v100 ", "w"); },
         Spliced(text, text.find("v100 "), 5, "w")},
        {"SetUnitName", [](CHFile& f) { return f.SetUnitName("longer_name"); },
         Spliced(text, text.find("f : INT"), 1, "LONGER_NAME")},
    };
    for (const Edit& edit : edits) {
        for (long k = 0;; ++k) {
            SCOPED_TRACE(edit.what);
            SCOPED_TRACE(k);
            vemtest::WriteFileText(path, text);
            int result = 0;
            {
                CHFile file;
                ASSERT_EQ(file.OpenUpdate(path.c_str(), 0), 1);
                vemtest::AllocationWatch watch;
                watch.FailAfter(k);
                try {
                    result = edit.run(file);
                } catch (const std::bad_alloc&) {
                }
                watch.FailAfter(-1);
                EXPECT_EQ(watch.Live(), 0);
            }
            const std::string after = Content(path);
            if (result == 1) {
                EXPECT_TRUE(after == edit.result);
                break;
            }
            EXPECT_TRUE(after == text);
        }
    }
}

}  // namespace
