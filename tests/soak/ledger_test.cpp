#include "ledger.h"

#include "host_monitor/addresses.h"
#include "host_monitor/alarm_message.h"
#include "host_monitor/host_readings.h"
#include "host_monitor/notices.h"

#include "zelm/msgs/message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace Soak {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

void takeReading(Ledger& ledger, std::string const& sensor, long sequence)
{
    HostMonitor::MemoryReading message;
    message.senderID = HostMonitor::Address{"host", "memory", sensor};
    message.sequence = sequence;
    ledger.take(message);
}

void takeEnd(Ledger& ledger, std::string const& sensor, long published)
{
    HostMonitor::FinishedMessage message;
    message.senderID = HostMonitor::Address{"host", "memory", sensor};
    message.published = published;
    ledger.take(message);
}

class TheLedger : public ::testing::Test {
protected:
    static void take(Ledger& ledger, std::string const& sensor, std::initializer_list<long> sequences)
    {
        for (long const sequence : sequences)
            takeReading(ledger, sensor, sequence);
    }

    Faults faults;
};

}  // namespace

TEST_F(TheLedger, findsNothingWrongWithStreamsThatAreWhole)
{
    Ledger ledger("log", faults, Ledger::Whole);
    take(ledger, "a", {1, 2});
    take(ledger, "b", {1});
    take(ledger, "a", {3});
    takeEnd(ledger, "a", 3);
    takeEnd(ledger, "b", 1);
    ledger.take(HostMonitor::AlarmMessage());

    auto const counts = ledger.counts();
    EXPECT_EQ(counts.readings, 4U);
    EXPECT_EQ(counts.ends, 2U);
    EXPECT_EQ(counts.alarms, 1U);
    EXPECT_EQ(counts.messages(), 7U);
    EXPECT_EQ(counts.lost + counts.repeated, 0U);
    EXPECT_THAT(ledger.streams(), IsEmpty());
    EXPECT_EQ(faults.count(), 0U);
}

TEST_F(TheLedger, countsWhatIsMissingAtTheBeginningInTheMiddleAndAtTheEnd)
{
    Ledger ledger("log", faults, Ledger::Whole);
    take(ledger, "a", {2, 5});
    takeEnd(ledger, "a", 6);
    takeEnd(ledger, "b", 3);

    EXPECT_EQ(ledger.counts().lost, 7U);
    EXPECT_EQ(ledger.counts().repeated, 0U);
    EXPECT_THAT(faults.texts(),
                ElementsAre("log: readings 1 to 1 of a are missing", "log: readings 3 to 4 of a are missing",
                            "log: readings 6 to 6 of a are missing", "log: readings 1 to 3 of b are missing"));
}

TEST_F(TheLedger, countsWhatComesTwiceOrTooLate)
{
    Ledger ledger("log", faults, Ledger::Whole);
    take(ledger, "a", {1, 1, 3, 2});
    takeEnd(ledger, "a", 2);

    EXPECT_EQ(ledger.counts().lost, 1U);
    EXPECT_EQ(ledger.counts().repeated, 3U);
    EXPECT_THAT(faults.texts(),
                ElementsAre("log: reading 1 of a came behind reading 1", "log: readings 2 to 2 of a are missing",
                            "log: reading 2 of a came behind reading 3",
                            "log: a has published 2 readings, but 3 came"));
}

TEST_F(TheLedger, letsPiecesBeginAndEndAnywhereButHaveNoGaps)
{
    Ledger ledger("visitor", faults, Ledger::Piece);
    take(ledger, "a", {7, 8, 10});
    take(ledger, "b", {4, 5});
    takeEnd(ledger, "b", 5);

    EXPECT_EQ(ledger.counts().lost, 1U);
    EXPECT_EQ(faults.count(), 1U);
    auto const streams = ledger.streams();
    ASSERT_EQ(streams.size(), 2U);
    EXPECT_EQ(streams.at("a").first, 7);
    EXPECT_EQ(streams.at("a").next, 11);
    EXPECT_EQ(streams.at("b").first, 4);
    EXPECT_EQ(streams.at("b").next, 6);
}

TEST_F(TheLedger, letsStreamsHaveGapsWhereThatIsExpectedButNoRepetitions)
{
    Ledger ledger("visitor", faults, Ledger::Gaps);
    take(ledger, "a", {7, 10, 9});

    EXPECT_EQ(ledger.counts().lost, 0U);
    EXPECT_EQ(ledger.counts().repeated, 1U);
}

TEST_F(TheLedger, takesTheFailureOfAComponentAndMessagesOfNoKnownKindForFaults)
{
    Ledger ledger("log", faults, Ledger::Whole);
    HostMonitor::FailureMessage failure;
    failure.senderID = HostMonitor::Address{"host", "memory", "a"};
    failure.error = "no reading was taken";
    ledger.take(failure);
    ledger.take(Zelm::Msgs::Message(Zelm::Msgs::Identifier::toValue(9, 8, 7, 6)));

    EXPECT_THAT(faults.texts(), ElementsAre("log: a has failed: no reading was taken",
                                            "log: a message of a kind that nobody sends, { 9, 8, 7, 6 } from "));
}

}  // namespace Soak
