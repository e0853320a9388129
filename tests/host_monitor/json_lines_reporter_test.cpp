#include "reporters/json_lines_reporter.h"

#include "../support/temporary_directory.h"
#include "../support/throws_text.h"

#include "host_monitor/host_readings.h"
#include "zelm/core/exceptions.h"

namespace HostMonitor {

using Zelm::Exception::InvalidOperation;
using Zelm::Exception::InvalidParameter;
using Zelm::Testing::readFile;
using Zelm::Testing::TemporaryDirectory;
using Zelm::Testing::throwsText;

namespace {

std::shared_ptr<Reading> reading(std::string const& sensor, long time)
{
    auto const result = std::make_shared<Reading>();
    result->sensor = sensor;
    result->time = time;
    return result;
}

}  // namespace

TEST(JsonLine, isTheReadingInCompactForm)
{
    CpuReading reading;
    reading.sensor = "cpu";
    reading.time = 1'700'000'000'123;
    reading.loadPercent = 12.5;
    CoreLoad core;
    core.core = 3;
    reading.cores = {core};

    EXPECT_EQ(toJsonLine(reading),
              "{\"cores\":[{\"core\":3}],\"loadPercent\":12.5,\"sensor\":\"cpu\",\"time\":1700000000123}\n");
}

TEST(JsonLine, hasNoTraceOfFieldsThatArentSet)
{
    EXPECT_EQ(toJsonLine(MemoryReading()), "{\"sensor\":\"\",\"time\":0}\n");
}

TEST(JsonLinesReporter, writesEachReadingOfASampleAsALine)
{
    TemporaryDirectory const directory;
    JsonLinesReporter reporter({directory / "log"});
    reporter.startLifeCycle();
    reporter.report({reading("a", 1), reading("b", 2)});
    reporter.report({reading("a", 3)});

    EXPECT_EQ(readFile(directory / "log"), "{\"sensor\":\"a\",\"time\":1}\n"
                                           "{\"sensor\":\"b\",\"time\":2}\n"
                                           "{\"sensor\":\"a\",\"time\":3}\n");
}

TEST(JsonLinesReporter, appendsAfterANewStart)
{
    TemporaryDirectory const directory;
    JsonLinesReporter reporter({directory / "log"});
    reporter.startLifeCycle();
    reporter.report({reading("a", 1)});
    reporter.endLifeCycle();
    reporter.startLifeCycle();
    reporter.report({reading("a", 2)});

    EXPECT_EQ(readFile(directory / "log"), "{\"sensor\":\"a\",\"time\":1}\n{\"sensor\":\"a\",\"time\":2}\n");
}

TEST(JsonLinesReporter, reportsThatTheDiskIsFull)
{
    JsonLinesReporter reporter({"/dev/full"});
    reporter.startLifeCycle();

    EXPECT_THAT([&] { reporter.report({reading("a", 1)}); },
                throwsText<std::runtime_error>("can't write /dev/full: No space left on device"));
}

TEST(JsonLinesReporter, opensItsFileWhenItIsStarted)
{
    TemporaryDirectory const directory;
    std::string const path = directory / "absent/log";
    JsonLinesReporter reporter({path});

    EXPECT_THAT([&] { reporter.startLifeCycle(); },
                throwsText<std::runtime_error>("can't open " + path + ": No such file or directory"));
}

TEST(JsonLinesReporter, reportsNothingUnlessItIsStarted)
{
    TemporaryDirectory const directory;
    JsonLinesReporter reporter({directory / "log"});

    EXPECT_THAT([&] { reporter.report({}); }, throwsText<InvalidOperation>("JsonLinesReporter isn't started"));
    reporter.startLifeCycle();
    reporter.endLifeCycle();
    EXPECT_THAT([&] { reporter.report({}); }, throwsText<InvalidOperation>("JsonLinesReporter isn't started"));
}

TEST(JsonLinesReporter, takesExactlyOneArgument)
{
    auto const text = "Invalid Parameter: JsonLinesReporter takes one argument, a file or -";

    EXPECT_THAT([] { JsonLinesReporter reporter({}); }, throwsText<InvalidParameter>(text));
    EXPECT_THAT([] { JsonLinesReporter reporter({""}); }, throwsText<InvalidParameter>(text));
    EXPECT_THAT([] { JsonLinesReporter reporter({"a", "b"}); }, throwsText<InvalidParameter>(text));
}

}  // namespace HostMonitor
