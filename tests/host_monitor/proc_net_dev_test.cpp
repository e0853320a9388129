#include "sensors/proc_net_dev.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace HostMonitor {

using ::testing::ElementsAre;

namespace {

std::string const head =
    "Inter-|   Receive                                                |  Transmit\n"
    " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop fifo colls carrier "
    "compressed\n";

std::vector<std::string> namesIn(std::string const& rows)
{
    auto const interfaces = parseInterfaceCounters(head + rows);
    std::vector<std::string> names;
    for (auto const& interface : interfaces.value())
        names.push_back(interface.name);
    return names;
}

}  // namespace

TEST(InterfaceCounters, areReadForEachInterface)
{
    auto const interfaces = parseInterfaceCounters(head + "    lo:    1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"
                                                          "  eth0: 100 0 0 0 0 0 0 0 200 0 0 0 0 0 0 0\n");

    ASSERT_TRUE(interfaces);
    ASSERT_EQ(interfaces->size(), 2U);
    auto const& lo = interfaces->front();
    EXPECT_EQ(lo.name, "lo");
    EXPECT_EQ(lo.received.bytes, 1U);
    EXPECT_EQ(lo.received.packets, 2U);
    EXPECT_EQ(lo.received.errors, 3U);
    EXPECT_EQ(lo.received.dropped, 4U);
    EXPECT_EQ(lo.sent.bytes, 9U);
    EXPECT_EQ(lo.sent.packets, 10U);
    EXPECT_EQ(lo.sent.errors, 11U);
    EXPECT_EQ(lo.sent.dropped, 12U);
    EXPECT_EQ(interfaces->back().name, "eth0");
    EXPECT_EQ(interfaces->back().received.bytes, 100U);
    EXPECT_EQ(interfaces->back().sent.bytes, 200U);
}

TEST(InterfaceCounters, mayFollowTheColonAtOnce)
{
    auto const interfaces = parseInterfaceCounters(head + "eth0:1234567890 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n");

    ASSERT_TRUE(interfaces);
    ASSERT_EQ(interfaces->size(), 1U);
    EXPECT_EQ(interfaces->front().received.bytes, 1234567890U);
}

TEST(InterfaceCounters, belongToAnAliasWithAColonInItsName)
{
    EXPECT_THAT(namesIn("eth0:1: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"), ElementsAre("eth0:1"));
}

TEST(InterfaceCounters, leaveOutLinesThatCantBeRead)
{
    struct Row {
        char const* why;
        char const* line;
    };
    Row const rows[] = {
        {"no colon", "eth0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"},
        {"no name", ": 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"},
        {"too few counters", "eth0: 1 2 3 4 5 6 7 8 9 10 11\n"},
        {"a word among the counters", "eth0: 1 2 x 4 5 6 7 8 9 10 11 12 13 14 15 16\n"},
        {"a counter that fits no counter", "eth0: 18446744073709551616 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"},
        {"nothing at all", "\n"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_THAT(namesIn(row.line + std::string("lo: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n")), ElementsAre("lo"));
    }
}

TEST(InterfaceCounters, doWithoutTheCountersThatNobodyUses)
{
    EXPECT_THAT(namesIn("lo: 1 2 3 4 5 6 7 8 9 10 11 12\n"), ElementsAre("lo"));
}

TEST(InterfaceCounters, countTheFirstOfTwoLinesForOneInterface)
{
    EXPECT_THAT(namesIn("lo: 1 2 3 4 5 6 7 8 9 10 11 12\nlo: 1 2 3 4 5 6 7 8 9 10 11 12\n"), ElementsAre("lo"));
}

TEST(InterfaceCounters, haveNamesWithoutControlCharacters)
{
    EXPECT_THAT(namesIn("a\x1b[2J\x7f: 1 2 3 4 5 6 7 8 9 10 11 12\n"), ElementsAre("a?[2J?"));
}

TEST(InterfaceCounters, areAnEmptyListWhereThereIsAHeadButNoInterface)
{
    EXPECT_TRUE(namesIn("").empty());
}

TEST(InterfaceCounters, areMissingInOtherText)
{
    EXPECT_FALSE(parseInterfaceCounters(""));
    EXPECT_FALSE(parseInterfaceCounters("MemTotal:       24567890 kB\n"));
}

}  // namespace HostMonitor
