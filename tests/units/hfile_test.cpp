// Source header file: finding and reading keys, the block scanner at block borders, iteration.
#include "hfile_test_util.h"

using namespace hfiletest;

namespace {

const std::string kBody = "PROGRAM main\r\nVAR x : INT; END_VAR\r\nEND_PROGRAM\r\n";

class HFileKeys : public HFileTest {
protected:
    CString ValueIn(const std::string& text, const char* key) { return Opened(text)->GetValue(key); }
};

TEST_F(HFileKeys, ValuesOfKeys) {
    struct Case {
        std::string Text;
        const char* Key;
        const char* Value;
    };
    const Case cases[] = {
        // The key's case does not matter.
        {Block({"CHECK = 123"}) + kBody, "CHECK", "123"},
        {Block({"CHECK = 123"}) + kBody, "check", "123"},
        {Block({"check = 123"}) + kBody, "CHECK", "123"},
        {Block({"Check = MixedValue"}) + kBody, "cHECK", "MixedValue"},
        // A key only at the start of a line, behind blanks; part of a longer key is no match.
        {Block({"NOTE CHECK = 1"}) + kBody, "CHECK", ""},
        {Block({"NOTE = text CHECK = 1", "CHECK = 2"}) + kBody, "CHECK", "2"},
        {Block({" \t CHECK = 5"}) + kBody, "CHECK", "5"},
        {Block({"XCHECK = 1"}) + kBody, "CHECK", ""},
        // Continuation lines join with line ends; an end marker behind blanks still ends the value.
        {Block({"KEY = A", "B"}) + kBody, "KEY", "A\r\nB"},
        {Block({"KEY = A", "B", "C", "NEXT = D"}) + kBody, "KEY", "A\r\nB\r\nC"},
        {Block({"KEY = A", "NEXT = D", "E"}) + kBody, "NEXT", "D\r\nE"},
        {kBegin + "KEY = A\r\n  " + kEnd + kBody, "KEY", "A"},
        // Empty or missing values.
        {Block({"KEY = "}) + kBody, "KEY", ""},
        {Block({"KEY = 1"}) + kBody, "OTHER", ""},
        {kBody, "KEY", ""},
        {"", "KEY", ""},
        {Block({"A = 1"}) + "CHECK = 9\r\n" + kBody, "CHECK", ""},  // behind the end marker
        {kBegin + "CHECK = 9\r\n" + kBody, "CHECK", ""},            // a header without an end
        {kBegin + "CHECK = 9", "CHECK", ""},                        // the value's line has no end
    };
    for (const Case& c : cases) EXPECT_EQ(ValueIn(c.Text, c.Key), c.Value) << c.Text << " " << c.Key;
}

TEST_F(HFileKeys, ZeroByteEndsTheTextOfItsBlock) {
    // The zero hides the rest of its 2048 bytes: no block, no body.
    const std::string text = std::string("(*\0*)\r\n", 7) + Block({"CHECK = 1"}) + kBody;
    CHFile file;
    ASSERT_EQ(file.OpenRead(Put(text).c_str(), 0), 1);
    EXPECT_EQ(file.HasHeader(), 0);
    EXPECT_EQ(file.GetValue("CHECK"), "");
    char c = 0;
    EXPECT_EQ(file.ReadChecked(&c, 1), -1);
    file.Close();
    // Behind the body's start a zero is read as any other byte.
    const std::string withZero = Block({"CHECK = 1"}) + kBody + std::string("\0tail", 5);
    ASSERT_EQ(file.OpenRead(Put(withZero).c_str(), 0), 1);
    EXPECT_EQ(file.GetValue("CHECK"), "1");
    std::string body(200, '\0');
    body.resize(file.Read(body.data(), 200));
    EXPECT_EQ(body, kBody + std::string("\0tail", 5));
}

TEST_F(HFileKeys, OnlyFileOpenForReadingGivesValues) {
    const std::string path = Put(Block({"CHECK = 1"}) + kBody);
    CHFile file;
    ASSERT_EQ(file.OpenCreate(dir_.file("other.st").c_str(), 0), 1);
    EXPECT_EQ(file.GetValue("CHECK"), "");
    file.Close();
    ASSERT_EQ(file.OpenUpdate(path.c_str(), 0), 1);
    EXPECT_EQ(file.GetValue("CHECK"), "1");
}

// A block whose CHECK line starts at `offset`, padded by one long key line.
std::string BlockWithCheckAt(std::size_t offset, const std::string& checkLine = "CHECK = 123") {
    return kBegin + PadLine(kBegin.size(), offset) + "\r\n" + checkLine + "\r\n" + kEnd + kBody;
}

TEST_F(HFileKeys, KeyAcrossBlockBorders) {
    for (std::size_t offset : {2030u, 2040u, 2043u, 2044u, 2047u, 2048u, 2049u, 4090u, 4093u, 6140u}) {
        SCOPED_TRACE(offset);
        EXPECT_EQ(ValueIn(BlockWithCheckAt(offset), "CHECK"), "123");
    }
}

TEST_F(HFileKeys, LineStartSeenAcrossBorders) {
    // Blanks before the key on both sides of a border, more than the look-behind holds.
    for (std::size_t offset : {1900u, 1950u, 1990u, 2040u}) {
        SCOPED_TRACE(offset);
        EXPECT_EQ(ValueIn(BlockWithCheckAt(offset, std::string(150, ' ') + "CHECK = 3"), "CHECK"), "3");
    }
    // Text in the middle of a line stays no key where a later block begins with it.
    for (std::size_t offset = 1970; offset < 1990; ++offset) {
        SCOPED_TRACE(offset);
        const std::string line = "NOTE = x" + std::string(offset - kBegin.size() - 8, 'y');
        const std::string text =
            kBegin + line + "CHECK = 1" + std::string(200, 'z') + "\r\nCHECK = 2\r\n" + kEnd + kBody;
        EXPECT_EQ(ValueIn(text, "CHECK"), "2");
    }
}

TEST_F(HFileKeys, IteratorGoesThroughKeysInFileOrder) {
    const std::string text = Block({"A = 1", "continued", "", "  B  = 2", "C = 3"}) + kBody;
    auto file = Opened(text);
    std::vector<std::string> keys;
    for (CHFileKeyIterator it(file.get()); it.IsValid(); it.Next()) keys.push_back(it.GetKey().str());
    EXPECT_EQ(keys, (std::vector<std::string>{"A", "B", "C"}));
}

TEST_F(HFileKeys, IteratorWithoutCompleteBlockHasNoKeys) {
    for (const std::string& text : {kBody, kBegin + "A = 1\r\n" + kBody, Block({}) + kBody}) {
        auto file = Opened(text);
        CHFileKeyIterator it(file.get());
        EXPECT_EQ(it.IsValid(), 0);
        EXPECT_EQ(it.GetKey(), "");
    }
}

class HFileCheckKey : public HFileTest {};

TEST_F(HFileCheckKey, UnreadableFileLeavesValue) {
    u32 value = 5;
    EXPECT_FALSE(vem::ReadCheckKey(dir_.file("missing.st").c_str(), value));
    EXPECT_FALSE(vem::ReadCheckKey(dir_.path().c_str(), value));
    EXPECT_EQ(value, 5u);
}

TEST(HFileCheckValue, ParsesLeadingSignedDecimal) {
    EXPECT_EQ(vem::ParseCheckValue("123"), 123u);
    EXPECT_EQ(vem::ParseCheckValue(" \t+7x"), 7u);
    EXPECT_EQ(vem::ParseCheckValue("-1"), 0xFFFFFFFFu);
    EXPECT_EQ(vem::ParseCheckValue("12 34"), 12u);
    EXPECT_EQ(vem::ParseCheckValue("x12"), 0u);
    EXPECT_EQ(vem::ParseCheckValue("-"), 0u);
    EXPECT_EQ(vem::ParseCheckValue(""), 0u);
    EXPECT_EQ(vem::ParseCheckValue(nullptr), 0u);
    EXPECT_EQ(vem::ParseCheckValue("4294967297"), 1u);
}

}  // namespace
