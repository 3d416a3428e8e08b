// The archive's encodings: strings, counts, schema words, object references.
#include <cerrno>

#include "memory_test_util.h"
#include "node/basenode.h"

using memtest::CauseOf;
using vemtest::Bytes;

namespace {

std::vector<u8> Store(const std::function<void(CArchive&)>& write) {
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        write(ar);
        ar.Close();
    }
    return file.Detach();
}

// A serializable class of the tests' own, to watch the object numbering.
class CTestItem : public CObject {
    VEM_DECLARE_SERIAL(CTestItem)
public:
    u16 value = 0;
    void Serialize(CArchive& ar) override {
        if (ar.IsStoring()) {
            ar << value;
        } else {
            ar >> value;
        }
    }
};
VEM_IMPLEMENT_SERIAL(CTestItem, CObject, 5)

}  // namespace

TEST(ArchiveStrings, LengthPrefixesByLength) {
    auto prefix = [](std::size_t n) {
        std::vector<u8> bytes = Store([n](CArchive& ar) { ar << CString(std::string(n, 'x')); });
        return std::vector<u8>(bytes.begin(), bytes.end() - static_cast<long>(n));
    };
    EXPECT_EQ(prefix(0), (std::vector<u8>{0x00}));
    EXPECT_EQ(prefix(254), (std::vector<u8>{0xFE}));
    EXPECT_EQ(prefix(255), (std::vector<u8>{0xFF, 0xFF, 0x00}));
    EXPECT_EQ(prefix(0xFFFD), (std::vector<u8>{0xFF, 0xFD, 0xFF}));
    EXPECT_EQ(prefix(0xFFFE), (std::vector<u8>{0xFF, 0xFF, 0xFF, 0xFE, 0xFF, 0x00, 0x00}));
}

// Texts of every length, many of them across a border of the buffer, read back with buffers of
// several sizes; the numbers between them stay in step.
TEST(ArchiveStrings, TextsAcrossBufferBordersReadBackWhole) {
    std::vector<std::string> texts;
    u32 seed = 99;
    for (int i = 0; i < 3000; ++i) {
        seed = seed * 1103515245u + 12345u;
        const std::size_t length = i % 500 == 0 ? 70000 + i : (seed >> 8) % 300;
        texts.emplace_back(length, static_cast<char>('a' + i % 26));
    }
    const std::vector<u8> bytes = Store([&](CArchive& ar) {
        for (std::size_t i = 0; i < texts.size(); ++i) ar << CString(texts[i]) << static_cast<u16>(i);
    });
    for (int bufferSize : {17, 4096, CArchive::kDefaultBufferSize}) {
        SCOPED_TRACE(bufferSize);
        CMemFile file(bytes);
        CArchive ar(&file, CArchive::load, bufferSize);
        for (std::size_t i = 0; i < texts.size(); ++i) {
            CString text;
            u16 number = 0;
            ar >> text >> number;
            ASSERT_EQ(text.str(), texts[i]) << i;
            ASSERT_EQ(number, i);
        }
        EXPECT_EQ(ar.GetPosition(), bytes.size());
        EXPECT_EQ(ar.GetRemaining(), 0u);
    }
}

TEST(ArchiveStrings, SixteenBitCharactersAreReadAsEightBit) {
    Bytes b;
    b.u8_(0xFF).u16_(0xFFFE).u8_(3);      // 16-bit form, three units
    b.u16_('A').u16_(0xFC).u16_(0x263A);  // 'A', u-umlaut, a character beyond 8 bits
    CMemFile file(b.v);
    CArchive ar(&file, CArchive::load);
    EXPECT_EQ(ar.ReadString(), "A\xFC?");
}

TEST(ArchiveStrings, HostileLengthFailsAsEndOfFileWithoutAllocating) {
    Bytes b;
    b.u8_(0xFF).u16_(0xFFFF).u32_(0xFFFFFFFF).u32_(0).u32_(0x100);  // 2^40 characters
    CMemFile file(b.v);
    CArchive ar(&file, CArchive::load);
    EXPECT_EQ(CauseOf([&] { ar.ReadString(); }), CArchiveException::endOfFile);
}

TEST(ArchiveCounts, SixteenBitsOrEscapedToThirtyTwo) {
    EXPECT_EQ(Store([](CArchive& ar) { ar.WriteCount(0xFFFE); }), (std::vector<u8>{0xFE, 0xFF}));
    EXPECT_EQ(Store([](CArchive& ar) { ar.WriteCount(0xFFFF); }),
              (std::vector<u8>{0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00}));
    CMemFile file(Store([](CArchive& ar) { ar.WriteCount(0x12345); }));
    CArchive ar(&file, CArchive::load);
    EXPECT_EQ(ar.ReadCount(), 0x12345u);
}

// A count is trusted only as far as the rest of the file can hold its items; the rest here is 4 bytes.
TEST(ArchiveCounts, ACountIsCheckedAgainstTheRestOfTheFile) {
    const auto read = [](u64 minBytes, bool sixteen, u32 limit) {
        CMemFile file(std::vector<u8>{2, 0, 0, 0, 0, 0});
        CArchive ar(&file, CArchive::load);
        try {
            return CauseOf([&] { sixteen ? void(ar.ReadCount16(minBytes, limit)) : void(ar.ReadCount(minBytes)); });
        } catch (const CMemoryException&) {
            return 100;
        }
    };
    EXPECT_EQ(read(2, false, 0), -1);
    EXPECT_EQ(read(3, false, 0), CArchiveException::endOfFile);
    EXPECT_EQ(read(2, true, 2), -1);
    EXPECT_EQ(read(3, true, 2), CArchiveException::endOfFile);
    EXPECT_EQ(read(3, true, 1), 100);  // the limit is asked before the file
}

TEST(ArchiveNumbers, LittleEndianWithoutPadding) {
    EXPECT_EQ(Store([](CArchive& ar) { ar << u8(0x01) << u16(0x0302) << u32(0x07060504) << i32(-1); }),
              (std::vector<u8>{1, 2, 3, 4, 5, 6, 7, 0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(ArchiveDirection, WrongDirectionAndShortFileRaiseTheirCauses) {
    CMemFile file;
    CArchive store(&file, CArchive::store);
    u16 w = 0;
    EXPECT_EQ(CauseOf([&] { store >> w; }), CArchiveException::writeOnly);
    CMemFile input(std::vector<u8>{1, 2});
    CArchive load(&input, CArchive::load);
    EXPECT_EQ(CauseOf([&] { load << w; }), CArchiveException::readOnly);
    CMemFile shortFile(std::vector<u8>{1});
    CArchive ar(&shortFile, CArchive::load);
    EXPECT_EQ(CauseOf([&] { ar >> w; }), CArchiveException::endOfFile);
}

TEST(ArchiveObjects, ClassesAndObjectsShareOneNumbering) {
    CTestItem a, b;
    a.value = 0x1111;
    b.value = 0x2222;
    std::vector<u8> bytes = Store([&](CArchive& ar) {
        ar.WriteObject(&a);
        ar.WriteObject(&b);
        ar.WriteObject(&a);
        ar.WriteObject(nullptr);
    });
    Bytes expected;
    expected.newClass(5, "CTestItem");
    expected.u16_(0x1111);               // object 2, behind class 1
    expected.u16_(0x8001).u16_(0x2222);  // class 1 seen before, object 3
    expected.u16_(0x0002);               // object 2 again
    expected.u16_(0x0000);               // null
    EXPECT_EQ(bytes, expected.v);

    CMemFile file(bytes);
    CArchive ar(&file, CArchive::load);
    auto* ra = static_cast<CTestItem*>(ar.ReadObject(RUNTIME_CLASS(CTestItem)));
    auto* rb = static_cast<CTestItem*>(ar.ReadObject(RUNTIME_CLASS(CTestItem)));
    EXPECT_EQ(ar.ReadObject(RUNTIME_CLASS(CTestItem)), ra);
    EXPECT_EQ(ar.ReadObject(nullptr), nullptr);
    EXPECT_EQ(ra->value, 0x1111);
    EXPECT_EQ(rb->value, 0x2222);
    delete ra;
    delete rb;
}

TEST(ArchiveObjects, BadReferencesRaiseTheirCauses) {
    auto causeOf = [](const std::vector<u8>& bytes, const CRuntimeClass* asked) {
        CMemFile file(bytes);
        CArchive ar(&file, CArchive::load);
        return CauseOf([&] { delete ar.ReadObject(asked); });
    };
    auto newClass = [](const std::string& name, u16 schema) {
        Bytes b;
        b.u16_(0xFFFF).u16_(schema).u16_(static_cast<unsigned>(name.size()));
        for (char c : name) b.u8_(static_cast<u8>(c));
        b.u16_(7);
        return b.v;
    };
    EXPECT_EQ(causeOf(newClass("CNoSuchClass", 5), nullptr), CArchiveException::badClass);
    EXPECT_EQ(causeOf(newClass("CTestItem", 4), nullptr), CArchiveException::badSchema);
    EXPECT_EQ(causeOf(newClass("CTestItem", 5), RUNTIME_CLASS(CVemBaseNode)), CArchiveException::badClass);
    EXPECT_EQ(causeOf(newClass(std::string(64, 'C'), 5), nullptr), CArchiveException::badClass);
    EXPECT_EQ(causeOf({0x05, 0x00}, nullptr), CArchiveException::badIndex);
    EXPECT_EQ(causeOf({0x03, 0x80}, nullptr), CArchiveException::badIndex);
    EXPECT_EQ(causeOf(newClass("CTestItem", 5), RUNTIME_CLASS(CTestItem)), -1);
}

TEST(ArchiveObjects, BigNumbersUseTheEscape) {
    // Numbers of 0x7FFF and above go as 7FFF and 32 bits; a class number gets the high bit there.
    std::vector<CTestItem> many(0x8000);  // class 1, objects 2 .. 0x8001
    CDWordArray first, second;            // class 0x8002, objects 0x8003 and 0x8004
    CMemFile file;
    {
        CArchive ar(&file, CArchive::store);
        for (CTestItem& item : many) ar.WriteObject(&item);
        ar.WriteObject(&many[0x7FFD]);  // object 0x7FFF
        ar.WriteObject(&first);
        ar.WriteObject(&second);
        ar.Close();
    }
    const std::vector<u8>& bytes = file.Data();
    Bytes expected;
    expected.u16_(0x7FFF).u32_(0x7FFF);  // object 0x7FFF
    expected.newClass(0, "CDWordArray");
    expected.u16_(0);                                // its record: count 0
    expected.u16_(0x7FFF).u32_(0x80008002).u16_(0);  // known class 0x8002, count 0
    EXPECT_EQ(std::vector<u8>(bytes.end() - static_cast<long>(expected.v.size()), bytes.end()), expected.v);

    CMemFile again(bytes);
    CArchive ar(&again, CArchive::load);
    std::vector<CObject*> read;
    for (int i = 0; i < 0x8000; ++i) read.push_back(ar.ReadObject(RUNTIME_CLASS(CTestItem)));
    EXPECT_EQ(ar.ReadObject(RUNTIME_CLASS(CTestItem)), read[0x7FFD]);
    CObject* a = ar.ReadObject(RUNTIME_CLASS(CDWordArray));
    CObject* b = ar.ReadObject(RUNTIME_CLASS(CDWordArray));
    EXPECT_NE(a, nullptr);
    EXPECT_NE(b, nullptr);
    EXPECT_NE(a, b);
    delete a;
    delete b;
    for (CObject* o : read) delete o;
}

// A chain of nodes each holding the next as its first child, loaded under the load's bound and by
// an archive that joins another load at its depth.
TEST(ArchiveObjects, NestingIsBoundedOverTheWholeLoad) {
    const auto load = [](int depth, int bound, int outerDepth) {
        Bytes b;
        for (int i = 0; i < depth; ++i) b.u16_(0).u8_(1).u8_(1).u8_(0).u32_(0).u8_(0).u16_(i + 1 < depth).u8_(1);
        CMemFile outerFile, file(b.v);
        CArchive outer(&outerFile, CArchive::load), ar(&file, CArchive::load);
        outer.LoadContext().Bounds.MaxNesting = bound;
        outer.StartAtDepth(outerDepth);
        ar.JoinLoad(outer);
        CVemBaseNode root;
        const int cause = CauseOf([&] { root.Serialize(ar); });
        EXPECT_EQ(outer.Depth(), outerDepth);
        return cause;
    };
    EXPECT_EQ(load(CArchive::kMaxDepth + 10, CArchive::kMaxDepth, 0), CArchiveException::genericException);
    EXPECT_EQ(load(CArchive::kMaxDepth - 1, CArchive::kMaxDepth, 0), -1);
    EXPECT_EQ(load(20, 20, 0), -1);
    EXPECT_EQ(load(20, 20, 1), CArchiveException::genericException);
    EXPECT_EQ(load(21, 20, 0), CArchiveException::genericException);
}

// Every cause of a file or archive failure has its text (with the file's name, or "an unnamed
// file"), and the system's error numbers map onto the causes.
TEST(PlatformExceptions, EveryCauseHasItsTextAndEveryErrorNumberItsCause) {
    using F = CFileException;
    using A = CArchiveException;
    const std::pair<int, const char*> files[] = {
        {F::fileNotFound, "f.vem was not found."},
        {F::badPath, "f.vem contains an invalid path."},
        {F::tooManyOpenFiles, "f.vem could not be opened because there are too many open files."},
        {F::accessDenied, "Access to f.vem was denied."},
        {F::invalidFile, "An invalid file handle was associated with f.vem."},
        {F::directoryFull, "f.vem could not be created because the directory is full."},
        {F::badSeek, "Seek failed on f.vem"},
        {F::hardIO, "A hardware I/O error was reported while accessing f.vem."},
        {F::sharingViolation, "A sharing violation occurred while accessing f.vem."},
        {F::lockViolation, "A locking violation occurred while accessing f.vem."},
        {F::diskFull, "Disk full while accessing f.vem."},
        {F::endOfFile, "An attempt was made to access f.vem past its end."},
        {F::removeCurrentDir, "An unexpected error occurred while accessing f.vem."},
    };
    for (const auto& [cause, text] : files) EXPECT_EQ(F(cause, -1, "f.vem").GetErrorMessage().str(), text);
    const std::pair<int, const char*> archives[] = {
        {A::readOnly, "Tried to write to an archive opened for loading: an unnamed file."},
        {A::endOfFile, "Unexpected end of file while reading an unnamed file."},
        {A::writeOnly, "Tried to read from an archive opened for storing: an unnamed file."},
        {A::badIndex, "an unnamed file has a bad format."},
        {A::badClass, "an unnamed file contains an unexpected object."},
        {A::badSchema, "an unnamed file contains an incorrect schema."},
        {A::bufferFull, "An unexpected error occurred while reading an unnamed file."},
    };
    for (const auto& [cause, text] : archives) EXPECT_EQ(A(cause).GetErrorMessage().str(), text);
    EXPECT_EQ(CMemoryException().GetErrorMessage().str(), "Out of memory.");
    EXPECT_EQ(CNotSupportedException().GetErrorMessage().str(), "Unsupported operation was attempted.");
    // clang-format off
    const std::pair<int, int> errors[] = {
        {0, F::none}, {ENOENT, F::fileNotFound}, {ELOOP, F::badPath}, {ENFILE, F::tooManyOpenFiles},
        {EROFS, F::accessDenied}, {EBADF, F::invalidFile}, {EFBIG, F::diskFull}, {ESPIPE, F::badSeek},
        {EIO, F::hardIO}, {EBUSY, F::sharingViolation}, {EXDEV, F::genericException}};
    // clang-format on
    for (const auto& [error, cause] : errors) EXPECT_EQ(F::OsErrorToCause(error), cause) << error;
}
