// What is published arrives: each reading and each alarm stands in the JSON lines, once, whichever way the program
// ends. Sensors number their readings and tell their number at the end; the program's summary has the same numbers from
// another source.
#include "demo_installation.h"
#include "running_program.h"

#include "host_monitor/alarm_message.h"
#include "host_monitor/host_readings.h"
#include "host_monitor/notices.h"

#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace HostMonitor::Testing {

using Zelm::Msgs::Message;
using Zelm::Testing::readFile;

namespace {

/// What JSON lines hold, rebuilt as messages, by the instance id of the sender.
struct Log {
    std::map<std::string, std::vector<long>> sequences;
    std::map<std::string, long> finished;  // how many each sensor says that it has published
    std::vector<std::shared_ptr<AlarmMessage>> alarms;
    std::set<std::string> uuids;
    unsigned long lines = 0;

    explicit Log(std::string const& text)
    {
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line); ++lines)
            take(Message::CreateFromMetaData(Zelm::Json::jsonStringtoMetaData(line)));
    }

private:
    void take(std::shared_ptr<Message> const& message)
    {
        auto const sender = std::as_const(message->senderID)().back();
        uuids.insert(message->msgUUID());
        if (auto const reading = std::dynamic_pointer_cast<Reading>(message))
            sequences[sender].push_back(reading->sequence());
        else if (auto const end = std::dynamic_pointer_cast<FinishedMessage>(message))
            finished[sender] = end->published();
        else if (auto const alarm = std::dynamic_pointer_cast<AlarmMessage>(message))
            alarms.push_back(alarm);
        else
            ADD_FAILURE() << "a message of " << sender << " that nobody expects";
    }
};

std::vector<long> fromOneTo(long last)
{
    std::vector<long> result;
    for (long i = 1; i <= last; ++i)
        result.push_back(i);
    return result;
}

std::string published(std::string const& id, std::size_t count, char const* verb = "published")
{
    return id + ' ' + verb + ' ' + std::to_string(count) + (count == 1 ? " message\n" : " messages\n");
}

std::string const ids[] = {"cpu", "memory", "disk", "network"};

class NoMessageLost : public ::testing::Test {
protected:
    NoMessageLost() { installation.buildMap(); }

    /// All sensors, the alarm with these thresholds, and two reporters.
    std::vector<std::string> commandLine(std::vector<std::string> const& thresholds)
    {
        auto const path = installation.configure(
            {component("cpu", "CpuSensor"), component("memory", "MemorySensor"), component("disk", "DiskSensor"),
             component("network", "NetworkSensor"), component("limits", "ThresholdAlarm", thresholds),
             component("log", "JsonLinesReporter", {installation / "log"}),
             component("lines", "JsonLinesReporter", {"-"})});
        return {"--config", path, "--summary"};
    }

    void expectWhole(Log const& log, std::string const& summary)
    {
        std::string expected;
        for (auto const& id : ids) {
            SCOPED_TRACE(id);
            ASSERT_EQ(log.finished.count(id), 1U);
            EXPECT_EQ(log.sequences.at(id), fromOneTo(log.finished.at(id)));
            expected += published(id, log.sequences.at(id).size());
        }
        expected += published("limits", log.alarms.size());
        expected += published("log", log.lines, "reported") + published("lines", log.lines, "reported");
        EXPECT_EQ(summary, expected);
        EXPECT_EQ(log.uuids.size(), log.lines);
    }

    DemoInstallation installation;
};

}  // namespace

TEST_F(NoMessageLost, whenTheSensorsHaveTakenAllTheirReadings)
{
    constexpr long count = 500;
    auto arguments = commandLine({R"({"sensor":"disk","field":"sequence","above":250})"});
    arguments.insert(arguments.end(), {"--interval", "0", "--samples", std::to_string(count)});
    auto const child = installation.run(arguments);

    Log const log(child.out);
    expectWhole(log, child.err);
    for (auto const& id : ids)
        EXPECT_EQ(log.finished.at(id), count);
    EXPECT_EQ(Log(readFile(installation / "log")).sequences, log.sequences);
    EXPECT_EQ(child.status, 0);

    ASSERT_EQ(log.alarms.size(), 1U);
    EXPECT_EQ(log.alarms.front()->sensor(), "disk");
    EXPECT_EQ(log.alarms.front()->readingSequence(), 251);
}

TEST_F(NoMessageLost, whenASignalEndsItHalfWay)
{
    auto arguments = commandLine({R"({"sensor":"memory","field":"totalBytes","above":0})"});
    arguments.insert(arguments.end(), {"--interval", "0.0002"});
    RunningProgram program(installation.program(), installation.options(arguments));
    std::string output;
    for (int i = 0; i < 400; ++i)
        output += program.readLine() + '\n';
    program.send(SIGINT);
    output += program.readRest();

    EXPECT_EQ(program.wait(), 0);
    Log const log(output);
    expectWhole(log, program.errors());
    EXPECT_EQ(log.alarms.size(), 1U);
    EXPECT_EQ(Log(readFile(installation / "log")).sequences, log.sequences);
}

// The last readings are those that are at risk: the alarm that they raise is published while the program ends.
TEST_F(NoMessageLost, whenTheLastReadingRaisesAnAlarm)
{
    constexpr long count = 300;
    std::vector<std::string> thresholds;
    for (auto const& id : ids)
        thresholds.push_back("{\"sensor\":\"" + id +
                             "\",\"field\":\"sequence\",\"above\":" + std::to_string(count - 1) + "}");
    auto arguments = commandLine(thresholds);
    arguments.insert(arguments.end(), {"--interval", "0", "--samples", std::to_string(count)});
    auto const child = installation.run(arguments);

    Log const log(child.out);
    expectWhole(log, child.err);
    std::set<std::string> alarmed;
    for (auto const& alarm : log.alarms) {
        EXPECT_EQ(alarm->readingSequence(), count);
        EXPECT_TRUE(alarmed.insert(alarm->sensor()).second);
    }
    EXPECT_EQ(alarmed.size(), 4U);
}

}  // namespace HostMonitor::Testing
