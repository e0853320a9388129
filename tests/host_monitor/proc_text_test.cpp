#include "sensors/proc_text.h"

#include "../support/temporary_directory.h"
#include "../support/throws_text.h"

#include <limits>

namespace HostMonitor {

using Zelm::Testing::TemporaryDirectory;
using Zelm::Testing::throwsText;
using Zelm::Testing::writeFile;

TEST(ProcFile, isReadToItsEnd)
{
    TemporaryDirectory const directory;
    std::string const content(100'000, 'x');
    writeFile(directory / "stat", content);

    EXPECT_EQ(readProcFile(directory / "stat"), content);
}

TEST(ProcFile, hasNoSizeInTheRealFileSystemAndIsReadAllTheSame)
{
    EXPECT_NE(readProcFile("/proc/self/stat"), "");
}

TEST(ProcFile, thatCantBeReadSaysWhy)
{
    TemporaryDirectory const directory;

    EXPECT_THAT([&] { readProcFile(directory / "absent"); },
                throwsText<std::runtime_error>("No such file or directory"));
    EXPECT_THAT([&] { readProcFile(directory.path()); }, throwsText<std::runtime_error>("Is a directory"));
}

TEST(ProcFile, isRefusedIfItIsLargerThanTheLimit)
{
    TemporaryDirectory const directory;
    writeFile(directory / "fits", std::string(procFileLimit, 'x'));
    writeFile(directory / "larger", std::string(procFileLimit + 1, 'x'));

    EXPECT_EQ(readProcFile(directory / "fits").size(), procFileLimit);
    EXPECT_THAT([&] { readProcFile(directory / "larger"); },
                throwsText<std::runtime_error>("larger than 4194304 bytes"));
}

TEST(NextLine, cutsTheTextAtEachLineFeed)
{
    std::string_view text = "a\n\nb";

    EXPECT_EQ(nextLine(text), "a");
    EXPECT_EQ(nextLine(text), "");
    EXPECT_EQ(nextLine(text), "b");
    EXPECT_EQ(nextLine(text), std::nullopt);
}

TEST(NextWord, skipsBlanksAndTabs)
{
    std::string_view line = " \tone\t two ";

    EXPECT_EQ(nextWord(line), "one");
    EXPECT_EQ(nextWord(line), "two");
    EXPECT_EQ(nextWord(line), "");
    EXPECT_EQ(nextWord(line), "");
}

TEST(ToUnsigned, takesWholeDecimalWordsThatFit)
{
    struct Row {
        char const* why;
        std::string_view word;
        std::optional<std::uint64_t> number;
    };
    Row const rows[] = {
        {"zero", "0", 0},
        {"leading zeros", "007", 7},
        {"the largest", "18446744073709551615", std::numeric_limits<std::uint64_t>::max()},
        {"one more", "18446744073709551616", std::nullopt},
        {"nothing", "", std::nullopt},
        {"a sign", "-1", std::nullopt},
        {"the other sign", "+1", std::nullopt},
        {"a unit at its end", "12kB", std::nullopt},
        {"hexadecimal", "0x10", std::nullopt},
        {"a fraction", "1.5", std::nullopt},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(toUnsigned(row.word), row.number);
    }
}

TEST(ToLong, endsAtTheLargestLong)
{
    constexpr auto largest = std::numeric_limits<long>::max();

    EXPECT_EQ(toLong(3, 1024), 3072);
    EXPECT_EQ(toLong(3, 0), 0);
    EXPECT_EQ(toLong(std::uint64_t{1} << 53, 1024), largest);
    EXPECT_EQ(toLong((std::uint64_t{1} << 53) - 1, 1024), largest - 1023);
    EXPECT_EQ(toLong(std::uint64_t{1} << 63), largest);
}

}  // namespace HostMonitor
