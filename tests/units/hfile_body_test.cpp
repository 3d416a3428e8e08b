// Source header file: opening and closing, the unit's kind and name, the body through Read, Write
// and GetLength.
#include "hfile_test_util.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

using namespace hfiletest;

namespace {

const std::string kBody = "PROGRAM main\r\nEND_PROGRAM\r\n";

class HFileOpen : public HFileTest {};

TEST_F(HFileOpen, NewFileIsClosed) {
    CHFile file;
    EXPECT_EQ(file.FileName(), "--no-file-currently-open--");
    EXPECT_EQ(file.HasHeader() | file.HeaderDisplaced() | file.CanRead() | file.CanWrite() | file.IsTypeFile(), 0);
    EXPECT_EQ(file.BodyPosition(), 0);
    EXPECT_EQ(file.BodyWritten(), 0);
    EXPECT_STREQ(file.GetRuntimeClass()->m_lpszClassName, "CHFile");
    EXPECT_EQ(file.GetRuntimeClass()->m_wSchema, 5u);
    std::unique_ptr<CObject> made(CRuntimeClass::FromName("CHFile")->CreateObject());
    EXPECT_TRUE(made->IsKindOf(RUNTIME_CLASS(CFile)));
}

TEST_F(HFileOpen, UnopenableFile) {
    const std::string missing = dir_.file("missing.st");
    CHFile file;
    EXPECT_EQ(file.OpenRead(missing.c_str(), 1), 0);
    EXPECT_EQ(file.OpenUpdate(missing.c_str(), 1), 0);
    EXPECT_EQ(file.OpenCreate(dir_.file("no/such/dir.st").c_str(), 1), 0);
    EXPECT_EQ(file.FileName(), "--no-file-currently-open--");
    try {
        file.OpenRead(missing.c_str(), 0);
        ADD_FAILURE() << "no exception";
    } catch (const CFileException& e) {
        EXPECT_EQ(e.m_cause, CFileException::fileNotFound);
        EXPECT_EQ(e.m_strFileName, missing.c_str());
    }
    EXPECT_EQ(file.CloseChecked(0), 1);
}

// Closes the descriptor behind the file's back, so that the platform's close fails.
class BrokenHFile : public CHFile {
public:
#ifdef _WIN32
    void LoseDescriptor() { _close(m_fd); }
#else
    void LoseDescriptor() { ::close(m_fd); }
#endif
};

// Close reports a failure in a message box; CloseChecked answers it without one.
TEST_F(HFileOpen, FailedClose) {
    const std::string path = Put(kBody);
    BrokenHFile file;
    {
        vemtest::MessageCapture boxes;
        ASSERT_EQ(file.OpenRead(path.c_str(), 0), 1);
        file.LoseDescriptor();
        EXPECT_EQ(file.CloseChecked(1), 0);
        ASSERT_EQ(file.OpenRead(path.c_str(), 0), 1);
        file.LoseDescriptor();
        EXPECT_EQ(CauseOf([&] { file.CloseChecked(0); }), CFileException::invalidFile);
        EXPECT_TRUE(boxes.texts().empty());
    }
    vemtest::MessageCapture boxes;
    ASSERT_EQ(file.OpenRead(path.c_str(), 0), 1);
    file.LoseDescriptor();
    file.Close();
    ASSERT_EQ(boxes.texts().size(), 1u);
    EXPECT_EQ(boxes.texts()[0], "Error during file-close.\nFile: " + path + "\n");
    EXPECT_EQ(boxes.styles()[0], 0x1110u);
    EXPECT_EQ(file.FileName(), "--no-file-currently-open--");
    EXPECT_FALSE(file.IsOpen());
}

class HFileUnit : public HFileTest {
protected:
    CString KindOf(const std::string& text) { return Opened(text)->GetUnitKind(1); }
    CString NameOf(const std::string& text) { return Opened(text)->GetUnitName(1); }
    int NameCause(const std::string& text) {
        return CauseOf([file = Opened(text)] { file->GetUnitName(0); });
    }
};

TEST_F(HFileUnit, KindIsTheFirstWord) {
    EXPECT_EQ(KindOf(Block({"A = 1"}) + "PROGRAM p\r\n"), "PROGRAM");
    EXPECT_EQ(KindOf("FUNCTION_BLOCK fb\r\nFUNCTION f : INT\r\n"), "FUNCTION_BLOCK");
    EXPECT_EQ(KindOf("function f : INT\r\n"), "FUNCTION");
    EXPECT_EQ(KindOf("TYPE t : INT; END_TYPE\r\n"), "");
    EXPECT_EQ(CauseOf([file = Opened("")] { file->GetUnitKind(0); }), CFileException::genericException);
}

TEST_F(HFileUnit, NameOfEachKind) {
    EXPECT_EQ(NameOf(Block({"A = 1"}) + "PROGRAM  main \r\n"), "main");
    EXPECT_EQ(NameOf("FUNCTION_BLOCK\tfb1\r\n"), "fb1");
    EXPECT_EQ(NameOf("FUNCTION f : INT\r\n"), "f");
    EXPECT_EQ(NameOf("PROGRAM p"), "p");
}

TEST_F(HFileUnit, NameFailures) {
    EXPECT_EQ(NameCause("FUNCTION f\r\n"), CFileException::genericException);
    EXPECT_EQ(NameCause("PROGRAM  \r\n"), CFileException::genericException);
    EXPECT_EQ(NameCause("FUNCTION  : INT\r\n"), CFileException::genericException);
    EXPECT_EQ(NameCause("program p\r\n"), CFileException::genericException);
    EXPECT_EQ(NameCause("TYPE t\r\n"), CFileException::badSeek);
    EXPECT_EQ(NameCause(""), CFileException::badSeek);
    const std::string longLine = "PROGRAM " + std::string(248, 'p');
    EXPECT_EQ(NameCause(longLine.substr(0, 255) + "\r\n"), -1);
    EXPECT_EQ(NameCause(longLine + "\r\n"), CFileException::badSeek);
    EXPECT_EQ(NameOf(longLine + "\r\n"), "");
}

class HFileBody : public HFileTest {
protected:
    static std::string ReadAll(CHFile& file, unsigned piece) {
        std::string all;
        std::string buf(piece, '\0');
        while (unsigned got = file.Read(buf.data(), piece)) all.append(buf, 0, got);
        return all;
    }
};

TEST_F(HFileBody, NoBodyMeansNoLengthAndBadSeek) {
    // The last one is a type file whose block has no end marker.
    const std::pair<std::string, std::string> cases[] = {{"", "unit.st"},
                                                         {Block({"A = 1"}), "unit.st"},
                                                         {"TYPE t : INT;\r\n", "unit.st"},
                                                         {kBegin + "A = 1\r\n[TYPES]\r\n", "t.typ"}};
    for (const auto& [text, name] : cases) {
        auto file = Opened(text, name);
        EXPECT_EQ(file->GetLength(), CHFile::kNoBody) << text;
        char c = 0;
        EXPECT_EQ(CauseOf([&] { file->Read(&c, 1); }), CFileException::badSeek) << text;
        EXPECT_EQ(file->ReadChecked(&c, 1), -1) << text;
    }
    CHFile file;  // nor can a file opened for creating be read
    ASSERT_EQ(file.OpenCreate(dir_.file("n.st").c_str(), 0), 1);
    char c = 0;
    EXPECT_EQ(CauseOf([&] { file.Read(&c, 1); }), CFileException::badSeek);
}

TEST_F(HFileBody, TypeFileBodyStartsAtSection) {
    const std::string text = Block({"A = [1]"}) + "(* t *)\r\n[TYPES]\r\nX=1\r\n";
    auto file = Opened(text, "types.TYP");
    EXPECT_EQ(file->GetLength(), 14u);
    EXPECT_EQ(ReadAll(*file, 3), "[TYPES]\r\nX=1\r\n");
}

TEST_F(HFileBody, WriteOnlyOncePerOpening) {
    const std::string path = Put(Block({"A = 1"}) + kBody);
    CHFile file;
    ASSERT_EQ(file.OpenUpdate(path.c_str(), 0), 1);
    file.Write("PROGRAM q\r\n", 11);
    EXPECT_EQ(file.BodyWritten(), 1);
    try {
        file.Write("x", 1);
        ADD_FAILURE() << "no exception";
    } catch (const CFileException& e) {
        EXPECT_EQ(e.m_cause, CFileException::accessDenied);
        EXPECT_EQ(e.m_strFileName, path.c_str());
    }
    EXPECT_EQ(file.WriteChecked("x", 1), 0);
    file.Close();
    EXPECT_EQ(Content(path), Block({"A = 1"}) + "PROGRAM q\r\n");
    ASSERT_EQ(file.OpenRead(path.c_str(), 0), 1);
    EXPECT_EQ(CauseOf([&] { file.Write("x", 1); }), CFileException::accessDenied);
}

TEST_F(HFileBody, NewFileGetsEmptyBlockThenKeys) {
    const std::string path = dir_.file("new.st");
    CHFile file;
    ASSERT_EQ(file.OpenCreate(path.c_str(), 0), 1);
    EXPECT_EQ(file.WriteChecked(kBody.data(), static_cast<unsigned>(kBody.size())), 1);
    EXPECT_EQ(file.HasHeader(), 1);
    EXPECT_EQ(file.SetValue("CHECK", "42"), 1);
    file.Close();
    EXPECT_EQ(Content(path), kBegin + "\r\nCHECK = 42\r\n" + kEnd + kBody);
    u32 check = 0;
    EXPECT_TRUE(vem::ReadCheckKey(path.c_str(), check));
    EXPECT_EQ(check, 42u);
}

// The first write puts the block at the start, completed with its end marker and line end.
TEST_F(HFileBody, WriteRepairsTheBlock) {
    const std::string block = Block({"A = 1", "B = 2"});
    const std::pair<std::string, std::string> cases[] = {
        {"(* before *)\r\n" + block + "(* between *)\r\n" + kBody, block},
        {kBegin + "A = 1\r\n" + kBody, Block({"A = 1"})},
        {kBegin + "A = 1\r\n$END_ZQ_HEADER", Block({"A = 1"})},
    };
    for (const auto& [text, expected] : cases) {
        const std::string path = Put(text);
        CHFile file;
        ASSERT_EQ(file.OpenUpdate(path.c_str(), 0), 1);
        file.Write("FUNCTION f : INT\r\n", 18);
        EXPECT_EQ(file.HeaderDisplaced(), 0);
        file.Close();
        EXPECT_EQ(Content(path), expected + "FUNCTION f : INT\r\n") << text;
    }
}

}  // namespace
