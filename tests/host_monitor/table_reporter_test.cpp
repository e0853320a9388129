#include "reporters/table_reporter.h"

#include "collecting_dispatcher.h"

#include "../msgs/fifo_queue.h"

#include "host_monitor/host_readings.h"
#include "zelm/messaging/fixed_depth_queue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace HostMonitor {

using Testing::CollectingDispatcher;
using ::testing::HasSubstr;
using Testing::Subscription;
using Zelm::Msgs::Testing::FifoQueue;

namespace {

std::shared_ptr<MemoryReading> reading(double used)
{
    auto const result = std::make_shared<MemoryReading>();
    result->senderID = {"board", "memory", "m"};
    result->usedPercent = used;
    return result;
}

std::shared_ptr<AlarmMessage> alarm(bool raised)
{
    auto const result = std::make_shared<AlarmMessage>();
    result->raised = raised;
    result->sensor = std::string("m");
    result->field = std::string("usedPercent");
    result->value = raised ? 95 : 80;
    result->above = 90;
    return result;
}

/// Says that it has dropped some, and never does.
class LossyQueue final : public FifoQueue, public Zelm::Messaging::FixedDepthQueueInterface {
public:
    unsigned long depth() const override { return 1; }
    unsigned long droppedMessages() const override { return 7; }
};

class TableReporterTest : public ::testing::Test {
protected:
    /// What a reporter with this queue writes of the messages, on something that is no terminal.
    std::string shown(std::shared_ptr<Zelm::Msgs::MessageQueueInterface> const& queue,
                      std::vector<std::shared_ptr<Zelm::Msgs::Message const>> const& messages)
    {
        ::testing::internal::CaptureStdout();
        reporter.start(dispatcher, queue);
        for (auto const& message : messages)
            dispatcher->dispatchMessage(message);
        reporter.endLifeCycle();
        return ::testing::internal::GetCapturedStdout();
    }

    std::shared_ptr<CollectingDispatcher> const dispatcher = std::make_shared<CollectingDispatcher>();
    TableReporter reporter{std::vector<std::string>()};
};

}  // namespace

TEST_F(TableReporterTest, showsEachReadingAndEachAlarmBelowTheLastOne)
{
    auto const text = shown(std::make_shared<FifoQueue>(), {reading(95), alarm(true), reading(80), alarm(false)});

    EXPECT_THAT(text, ::testing::ContainsRegex("\n\nm\n  used %\n    95.0\n\n"
                                               "ALARM m: used % is 95.0, above 90.0\n\n"
                                               "[^\n]+\n\nm\n  used %\n    80.0\n\n"
                                               "m: used % is 80.0, no longer above 90.0\n\n"));
    EXPECT_EQ(reporter.reported(), 4U);
}

TEST_F(TableReporterTest, tellsHowManyMessagesItsQueueHasDropped)
{
    EXPECT_THAT(shown(std::make_shared<LossyQueue>(), {alarm(true)}),
                HasSubstr("above 90.0\n7 messages have come too fast to be shown\n"));
}

TEST_F(TableReporterTest, subscribesToThePatternsOfReadingsAndAlarms)
{
    shown(std::make_shared<FifoQueue>(), {});

    EXPECT_THAT(dispatcher->subscriptions(), ::testing::UnorderedElementsAre(Subscription{{}, Kinds::everyReading},
                                                                             Subscription{{}, Kinds::everyAlarm}));
}

}  // namespace HostMonitor
