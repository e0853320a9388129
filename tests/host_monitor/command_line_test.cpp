#include "app/command_line.h"

#include "../support/printed_by.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace HostMonitor {

using ::testing::HasSubstr;
using Zelm::Testing::printedBy;
using namespace std::chrono_literals;

namespace {

std::optional<Options> parseWords(std::vector<char const*> arguments)
{
    arguments.insert(arguments.begin(), "host_monitor");
    return parseCommandLine(static_cast<int>(arguments.size()), arguments.data(), "/etc/default.json");
}

}  // namespace

TEST(CommandLine, leavesToTheConfigurationWhatIsntAskedFor)
{
    auto const options = parseWords({});

    ASSERT_TRUE(options);
    EXPECT_EQ(options->configuration, "/etc/default.json");
    EXPECT_FALSE(options->interval);
    EXPECT_FALSE(options->samples);
    EXPECT_FALSE(options->summary);
    EXPECT_FALSE(options->list);
}

TEST(CommandLine, takesTheUsersWishes)
{
    auto const options =
        parseWords({"--config", "mine.json", "--interval", "0.25", "--samples", "7", "--summary", "--list"});

    ASSERT_TRUE(options);
    EXPECT_EQ(options->configuration, "mine.json");
    EXPECT_EQ(options->interval, 250ms);
    EXPECT_EQ(options->samples, 7U);
    EXPECT_TRUE(options->summary);
    EXPECT_TRUE(options->list);
}

TEST(CommandLine, takesIntervalsFromNothingToElevenDays)
{
    EXPECT_EQ(parseWords({"--interval", "0"})->interval, 0s);
    EXPECT_EQ(parseWords({"--interval", "1e6"})->interval, 1'000'000s);
    for (char const* const interval : {"-1", "1000001", "nan", "inf", "x", ""}) {
        SCOPED_TRACE(interval);
        EXPECT_THROW(parseWords({"--interval", interval}), std::runtime_error);
    }
}

TEST(CommandLine, refusesWhatItDoesntKnowInOneLine)
{
    std::vector<std::vector<char const*>> const wrong = {
        {"--intervall", "1"}, {"file.json"},         {"--samples", "-1"}, {"--samples", "x"},
        {"--samples"},        {"--interval", "1 s"}, {"--config"},
    };
    for (auto const& arguments : wrong) {
        SCOPED_TRACE(arguments.front());
        try {
            parseWords(arguments);
            ADD_FAILURE() << "isn't refused";
        } catch (std::runtime_error const& failure) {
            EXPECT_EQ(std::string(failure.what()).find('\n'), std::string::npos) << failure.what();
        }
    }
}

TEST(CommandLine, showsItsOptionsWhenItIsAskedForHelp)
{
    std::optional<Options> options = Options();
    std::string const help = printedBy([&] { options = parseWords({"--help"}); });

    EXPECT_FALSE(options);
    for (char const* const option : {"--config FILE", "--interval SECONDS", "--samples N", "--summary", "--list"})
        EXPECT_THAT(help, HasSubstr(option));
}

}  // namespace HostMonitor
