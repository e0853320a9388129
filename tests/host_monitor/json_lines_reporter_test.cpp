#include "reporters/json_lines_reporter.h"

#include "collecting_dispatcher.h"

#include "../msgs/fifo_queue.h"
#include "../support/temporary_directory.h"
#include "../support/throws_text.h"

#include "host_monitor/addresses.h"
#include "host_monitor/host_readings.h"
#include "host_monitor/notices.h"
#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace HostMonitor {

using Testing::CollectingDispatcher;
using Zelm::Exception::InvalidParameter;
using Zelm::Msgs::Testing::FifoQueue;
using Zelm::Testing::readFile;
using Zelm::Testing::TemporaryDirectory;
using Zelm::Testing::throwsText;

namespace {

std::shared_ptr<MemoryReading> numberedReading(long sequence)
{
    auto const result = std::make_shared<MemoryReading>();
    result->senderID = componentAddress("memory", "m");
    result->msgUUID = std::string("u");
    result->sequence = sequence;
    return result;
}

std::string lineOf(long sequence)
{
    return R"({"MessageID":[1,1,2,1],"MsgUUID":"u","SenderID":[")" + hostName() + R"(","memory","m"],"sequence":)" +
           std::to_string(sequence) + ",\"time\":0}\n";
}

class JsonLinesReporterTest : public ::testing::Test {
protected:
    void start(JsonLinesReporter& reporter) { reporter.start(dispatcher, std::make_shared<FifoQueue>()); }

    TemporaryDirectory const directory;
    std::shared_ptr<CollectingDispatcher> const dispatcher = std::make_shared<CollectingDispatcher>();
};

}  // namespace

TEST(JsonLine, isTheMessageInCompactForm)
{
    CpuReading cpu;
    cpu.senderID = {"board", "cpu", "c"};
    cpu.msgUUID = std::string("u");
    cpu.time = 1'700'000'000'123;
    cpu.loadPercent = 12.5;
    CoreLoad core;
    core.core = 3;
    cpu.cores = {core};

    EXPECT_EQ(toJsonLine(cpu), "{\"MessageID\":[1,1,1,1],\"MsgUUID\":\"u\",\"SenderID\":[\"board\",\"cpu\",\"c\"],"
                               "\"cores\":[{\"core\":3}],\"loadPercent\":12.5,\"sequence\":0,"
                               "\"time\":1700000000123}\n");
}

TEST_F(JsonLinesReporterTest, writesEachMessageAsALineAndAllOfThemBeforeItEnds)
{
    JsonLinesReporter reporter({directory / "log"});
    start(reporter);
    std::string expected;
    for (long i = 1; i <= 20; ++i) {
        dispatcher->dispatchMessage(numberedReading(i));
        expected += lineOf(i);
    }
    reporter.endLifeCycle();

    EXPECT_EQ(readFile(directory / "log"), expected);
    EXPECT_EQ(reporter.reported(), 20U);
}

TEST_F(JsonLinesReporterTest, subscribesToTheAddressTreeOfThisMachine)
{
    JsonLinesReporter reporter({directory / "log"});
    start(reporter);

    EXPECT_THAT(dispatcher->subscriptions(), ::testing::ElementsAre(Testing::Subscription{
                                                 {hostName()}, Zelm::Msgs::MessageDispatcherInterface::everyMsg}));
}

TEST_F(JsonLinesReporterTest, appendsAfterANewStart)
{
    JsonLinesReporter reporter({directory / "log"});
    for (long const sequence : {1L, 2L}) {
        start(reporter);
        dispatcher->dispatchMessage(numberedReading(sequence));
        reporter.endLifeCycle();
    }

    EXPECT_EQ(readFile(directory / "log"), lineOf(1) + lineOf(2));
    EXPECT_EQ(reporter.reported(), 1U);
}

TEST_F(JsonLinesReporterTest, publishesThatTheDiskIsFull)
{
    JsonLinesReporter reporter({"/dev/full"});
    start(reporter);
    dispatcher->dispatchMessage(numberedReading(1));
    reporter.endLifeCycle();

    auto const failure = std::dynamic_pointer_cast<FailureMessage const>(dispatcher->messages().back());
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->error(), "can't write /dev/full: No space left on device");
    EXPECT_EQ(reporter.reported(), 0U);
}

TEST_F(JsonLinesReporterTest, opensItsFileWhenItIsStarted)
{
    std::string const path = directory / "absent/log";
    JsonLinesReporter reporter({path});

    EXPECT_THAT([&] { start(reporter); },
                throwsText<std::runtime_error>("can't open " + path + ": No such file or directory"));
    EXPECT_EQ(dispatcher->subscribers(), 0U);
}

TEST(JsonLinesReporter, takesExactlyOneArgument)
{
    auto const text = "Invalid Parameter: JsonLinesReporter takes one argument, a file or -";

    EXPECT_THAT([] { JsonLinesReporter reporter({}); }, throwsText<InvalidParameter>(text));
    EXPECT_THAT([] { JsonLinesReporter reporter({""}); }, throwsText<InvalidParameter>(text));
    EXPECT_THAT([] { JsonLinesReporter reporter({"a", "b"}); }, throwsText<InvalidParameter>(text));
}

}  // namespace HostMonitor
