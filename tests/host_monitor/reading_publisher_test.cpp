#include "host_monitor/reading_publisher.h"

#include "collecting_dispatcher.h"

#include "../support/throws_text.h"

#include "host_monitor/host_readings.h"
#include "host_monitor/notices.h"
#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace HostMonitor {

using Testing::CollectingDispatcher;
using Zelm::Exception::InvalidParameter;
using Zelm::Testing::throwsText;
using namespace std::chrono_literals;

namespace {

Address const ownAddress{"board", "memory", "m1"};

class ReadingPublisherTest : public ::testing::Test {
protected:
    void start(Schedule const& schedule)
    {
        publisher.start(dispatcher, ownAddress, schedule, [] { return std::make_shared<MemoryReading>(); });
    }
    void startWith(ReadingPublisher::TakeReading takeReading)
    {
        publisher.start(dispatcher, ownAddress, {0us, 5}, takeReading);
    }

    /// What a FailureMessage said, if the last message is one.
    std::string lastFailure() const
    {
        auto const last = std::dynamic_pointer_cast<FailureMessage const>(dispatcher->messages().back());
        return last ? last->error() : "no failure";
    }

    std::shared_ptr<CollectingDispatcher> const dispatcher = std::make_shared<CollectingDispatcher>();
    ReadingPublisher publisher;
};

}  // namespace

TEST_F(ReadingPublisherTest, publishesSoManyReadingsInSequenceAndThenThatItHasFinished)
{
    start({0us, 3});
    dispatcher->awaitMessages(4);
    publisher.stop();

    auto const messages = dispatcher->messages();
    ASSERT_EQ(messages.size(), 4U);
    for (std::size_t i = 0; i < 3; ++i) {
        auto const reading = std::dynamic_pointer_cast<MemoryReading const>(messages[i]);
        ASSERT_TRUE(reading);
        EXPECT_EQ(reading->sequence(), static_cast<long>(i + 1));
        EXPECT_EQ(reading->senderID(), ownAddress);
        EXPECT_EQ(reading->destID(), alarmService());
    }
    auto const finished = std::dynamic_pointer_cast<FinishedMessage const>(messages[3]);
    ASSERT_TRUE(finished);
    EXPECT_EQ(finished->published(), 3);
    EXPECT_EQ(finished->senderID(), ownAddress);
    EXPECT_EQ(publisher.published(), 3U);
}

TEST_F(ReadingPublisherTest, takesNoReadingBeforeTheFirstPeriodIsOver)
{
    start({24h, 1});
    publisher.stop();

    auto const messages = dispatcher->messages();
    ASSERT_EQ(messages.size(), 1U);
    auto const finished = std::dynamic_pointer_cast<FinishedMessage const>(messages.front());
    ASSERT_TRUE(finished);
    EXPECT_EQ(finished->published(), 0);
}

TEST_F(ReadingPublisherTest, hasPublishedAllThatItTookWhenItIsStopped)
{
    std::atomic<long> taken{0};
    publisher.start(dispatcher, ownAddress, {1us, 0}, [&] {
        ++taken;
        return std::make_shared<MemoryReading>();
    });
    dispatcher->awaitMessages(10);
    publisher.stop();

    auto const messages = dispatcher->messages();
    EXPECT_EQ(static_cast<long>(messages.size()), taken + 1);
    auto const finished = std::dynamic_pointer_cast<FinishedMessage const>(messages.back());
    ASSERT_TRUE(finished);
    EXPECT_EQ(finished->published(), taken);
}

TEST_F(ReadingPublisherTest, countsFromOneAgainAfterANewStart)
{
    start({0us, 2});
    dispatcher->awaitMessages(3);
    start({0us, 1});
    dispatcher->awaitMessages(5);

    auto const again = std::dynamic_pointer_cast<Reading const>(dispatcher->messages()[3]);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->sequence(), 1);
}

TEST_F(ReadingPublisherTest, tellsThatItCantGoOnInPlaceOfItsEnd)
{
    int calls = 0;
    startWith([&calls]() -> std::shared_ptr<Reading> {
        if (++calls == 3)
            throw std::runtime_error("the probe is loose");
        return std::make_shared<MemoryReading>();
    });
    dispatcher->awaitMessages(3);
    publisher.stop();

    EXPECT_EQ(dispatcher->messages().size(), 3U);
    EXPECT_EQ(lastFailure(), "the probe is loose");
    EXPECT_EQ(dispatcher->messages().back()->senderID(), ownAddress);
    EXPECT_EQ(publisher.published(), 2U);
}

TEST_F(ReadingPublisherTest, tellsWhenSomethingIsThrownThatIsNoException)
{
    startWith([]() -> std::shared_ptr<Reading> { throw 1; });
    dispatcher->awaitMessages(1);
    publisher.stop();

    EXPECT_EQ(lastFailure(), "something was thrown that is no std::exception");
}

TEST_F(ReadingPublisherTest, takesAnEmptyReadingForAFailure)
{
    startWith([] { return nullptr; });
    dispatcher->awaitMessages(1);
    publisher.stop();

    EXPECT_EQ(lastFailure(), "no reading was taken");
}

TEST_F(ReadingPublisherTest, refusesToPublishAsFastAsItCanWithoutEnd)
{
    EXPECT_THAT(
        [&] {
            start({0us, 0});
        },
        throwsText<InvalidParameter>("Invalid Parameter: a period of 0 needs a number of readings"));
    publisher.stop();
    EXPECT_TRUE(dispatcher->messages().empty());
}

TEST_F(ReadingPublisherTest, stopsWhenItGoes)
{
    {
        ReadingPublisher shortLived;
        shortLived.start(dispatcher, ownAddress, {24h, 0}, [] { return std::make_shared<MemoryReading>(); });
    }
    EXPECT_EQ(dispatcher->messages().size(), 1U);
}

}  // namespace HostMonitor
