#include "reporters/sample_text.h"

#include "host_monitor/host_readings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace HostMonitor {

using ::testing::ElementsAre;

namespace {

constexpr std::size_t wideEnough = 1000;

/// The lines without the first, the time, which depends on the time zone.
std::vector<std::string> sampleRows(Sample const& sample, std::size_t width = wideEnough)
{
    auto lines = sampleLines(sample, width);
    lines.erase(lines.begin());
    return lines;
}

std::shared_ptr<CpuReading> cpuReading()
{
    auto const reading = std::make_shared<CpuReading>();
    reading->senderID = {"board", "kind", "cpu"};
    reading->loadPercent = 12.5;
    CoreLoad measured;
    measured.core = 0;
    measured.loadPercent = 10;
    CoreLoad fresh;
    fresh.core = 1;
    reading->cores = {measured, fresh};
    return reading;
}

class OtherReading : public Reading {
public:
    OtherReading() : Reading(Zelm::Msgs::Identifier::toValue(1, 1, 99, 1)) {}

    Field<std::string> state{this, "state", "good"};
    ListField<std::string> tags{this, "tags", {"a", "b"}};
};

}  // namespace

TEST(SampleText, showsAReadingsOwnFieldsAndThenItsLists)
{
    EXPECT_THAT(sampleRows({cpuReading()}), ElementsAre("",                //
                                                        "cpu",             //
                                                        "  load %",        //
                                                        "    12.5",        //
                                                        "  core  load %",  //
                                                        "     0    10.0",  //
                                                        "     1       -"));
}

TEST(SampleText, showsReadingsInTheirOrder)
{
    auto const first = std::make_shared<MemoryReading>();
    first->senderID = {"board", "kind", "z"};
    auto const second = std::make_shared<MemoryReading>();
    second->senderID = {"board", "kind", "a"};

    EXPECT_THAT(sampleRows({first, second}), ElementsAre("", "z", "", "a"));
}

TEST(SampleText, putsTextsInFrontAndErrorsLast)
{
    auto const reading = std::make_shared<DiskReading>();
    reading->senderID = {"board", "kind", "disk"};
    FileSystemUsage good;
    good.mountPoint = "/";
    good.freeBytes = 1024;
    FileSystemUsage bad;
    bad.mountPoint = "/absent";
    bad.error = "No such file or directory";
    reading->fileSystems = {good, bad};

    EXPECT_THAT(sampleRows({reading}), ElementsAre("",                               //
                                                   "disk",                           //
                                                   "  mount point     free  error",  //
                                                   "  /            1.0 KiB  -",      //
                                                   "  /absent            -  No such file or directory"));
}

TEST(SampleText, saysWhyNothingWasMeasured)
{
    auto const reading = std::make_shared<MemoryReading>();
    reading->senderID = {"board", "kind", "memory"};
    reading->error = "/proc/meminfo: Permission denied";

    EXPECT_THAT(sampleRows({reading}), ElementsAre("", "memory", "  error", "  /proc/meminfo: Permission denied"));
}

TEST(SampleText, showsReadingsThatItHasNeverHeardOf)
{
    auto const reading = std::make_shared<OtherReading>();
    reading->senderID = {"board", "kind", "other"};

    EXPECT_THAT(sampleRows({reading}), ElementsAre("", "other", "  state  tags", "  good   a, b"));
}

TEST(SampleText, dividesTablesThatAreTooWide)
{
    EXPECT_THAT(sampleRows({cpuReading()}, 13), ElementsAre("", "cpu", "  load %", "    12.5",  //
                                                            "  core", "     0", "     1",       //
                                                            "  load %", "    10.0", "       -"));
}

TEST(SampleText, letsNoSensorIdDisturbTheTerminal)
{
    auto const reading = std::make_shared<MemoryReading>();
    reading->senderID = {"board", "kind", "\x1b[2J"};

    EXPECT_THAT(sampleRows({reading}), ElementsAre("", "?[2J"));
}

TEST(SampleText, beginsWithTheLocalTimeOfTheNewestReading)
{
    auto const older = std::make_shared<MemoryReading>();
    older->time = 1'700'000'000'999;
    auto const newer = std::make_shared<MemoryReading>();
    newer->time = 1'700'000'001'000;
    std::time_t const seconds = 1'700'000'001;
    std::tm local{};
    localtime_r(&seconds, &local);
    char expected[64];
    std::strftime(expected, sizeof expected, "%Y-%m-%d %H:%M:%S", &local);

    EXPECT_EQ(sampleLines({newer, older}, wideEnough).front(), expected);
}

TEST(SampleText, bearsATimeBeyondTheCalendar)
{
    auto const reading = std::make_shared<MemoryReading>();
    reading->time = std::numeric_limits<long>::max();

    EXPECT_NE(sampleLines({reading}, wideEnough).front(), "");
}

}  // namespace HostMonitor
