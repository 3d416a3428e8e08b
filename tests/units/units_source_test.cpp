// What a unit takes from its source file: the date of the file and the checksum of its header.
#include <chrono>
#include <ctime>
#include <filesystem>

#include "test_util.h"
#include "units/pou.h"

using vemtest::TempDir;
using vemtest::WriteFileText;

namespace {

// Sets the file's modification time to a local date and time.
void SetLocalModificationTime(const std::string& path, int year, int month, int day, int hour, int minute, int second) {
    std::tm local{};
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;
    const std::time_t when = std::mktime(&local);
    std::error_code error;
    std::filesystem::last_write_time(
        path, std::chrono::file_clock::from_sys(std::chrono::system_clock::from_time_t(when)), error);
    ASSERT_FALSE(error) << error.message();
}

const char kSource[] =
    "$BEGIN_ZQ_HEADER\r\n"
    "NAME = MAIN\r\n"
    "CHECK = 305419896\r\n"
    "$END_ZQ_HEADER\r\n"
    "PROGRAM MAIN\r\n"
    "END_PROGRAM\r\n";

}  // namespace

TEST(UnitsSource, DateIsPackedFromTheLocalModificationTime) {
    TempDir dir;
    const std::string path = dir.file("main.poe");
    WriteFileText(path, kSource);
    SetLocalModificationTime(path, 2024, 2, 29, 13, 7, 31);
    CVemBaseNode* program = VemNewNode(kVemProgramNode);
    VemSetDate(program, path.c_str());
    const u32 date = VemGetDate(program);
    EXPECT_EQ(date >> 25, 44u);         // year - 1980
    EXPECT_EQ(date >> 21 & 0xF, 2u);    // month
    EXPECT_EQ(date >> 16 & 0x1F, 29u);  // day
    EXPECT_EQ(date >> 11 & 0x1F, 13u);  // hour
    EXPECT_EQ(date >> 5 & 0x3F, 7u);    // minute
    EXPECT_EQ(date & 0x1F, 15u);        // seconds / 2
    EXPECT_EQ(date, 0x585D68EFu);
    // A file that cannot be opened leaves the date as it was.
    VemSetDate(program, dir.file("missing.poe").c_str());
    EXPECT_EQ(VemGetDate(program), date);
    VemDeleteNode(program);
}

TEST(UnitsSource, PackedDateFields) {
    EXPECT_EQ(CVemPouNode::PackDate(1980, 1, 1, 0, 0, 0), 0x00210000u);
    EXPECT_EQ(CVemPouNode::PackDate(2107, 12, 31, 23, 59, 59), 0xFF9FBF7Du);
    EXPECT_EQ(CVemPouNode::PackDate(2108, 1, 1, 0, 0, 1), 0x00210000u);  // the year falls off the word
}

// A source without the key gives zero; a file that cannot be opened leaves the checksum as it was.
TEST(UnitsSource, ChecksumIsTheNumberOfTheHeadersCheckKey) {
    TempDir dir;
    WriteFileText(dir.file("main.poe"), kSource);
    WriteFileText(dir.file("plain.poe"), "PROGRAM MAIN\r\nEND_PROGRAM\r\n");
    const std::pair<const char*, u32> cases[] = {{"main.poe", 305419896u}, {"plain.poe", 0u}, {"missing.poe", 9u}};
    for (const auto& [name, expected] : cases) {
        CVemBaseNode* unit = VemCreateCVemFunctionNode("MAIN", "");
        VemSetCheckSum(unit, 9u);
        VemSetCheckSum(unit, dir.file(name).c_str());
        EXPECT_EQ(VemGetCheckSum(unit), expected) << name;
        VemDeleteNode(unit);
    }
}
