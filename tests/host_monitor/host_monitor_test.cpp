// The program as its users see it: started in an installation of its own.
#include "demo_installation.h"
#include "pseudo_terminal.h"
#include "running_program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <sstream>

namespace HostMonitor::Testing {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using Zelm::Testing::readFile;
using Zelm::Testing::TemporaryDirectory;
using Zelm::Testing::writeFile;

namespace {

constexpr char const* listWithoutLoading = "TYPE                    LIBRARY\n"
                                           "CallbackMessageQueue    libZelmMessaging.so.0.1.0\n"
                                           "CpuSensor               libHostSensors.so.1.0.0\n"
                                           "DiskSensor              libHostSensors.so.1.0.0\n"
                                           "FixedDepthMessageQueue  libZelmMessaging.so.0.1.0\n"
                                           "JsonLinesReporter       libHostReporters.so.1.0.0\n"
                                           "MemorySensor            libHostSensors.so.1.0.0\n"
                                           "MessageDispatcher       libZelmMessaging.so.0.1.0\n"
                                           "MessageQueue            libZelmMessaging.so.0.1.0\n"
                                           "NetworkSensor           libHostSensors.so.1.0.0\n"
                                           "TableReporter           libHostReporters.so.1.0.0\n"
                                           "ThresholdAlarm          libHostAlarms.so.1.0.0\n"
                                           "component libraries loaded to tell this: none\n";

constexpr char const* componentLibraries[] = {"libHostAlarms.so.1.0.0", "libHostReporters.so.1.0.0",
                                              "libHostSensors.so.1.0.0", "libZelmMessaging.so.0.1.0"};

std::string const readsNothing = component("s", "MemorySensor", {"--proc=/absent"});
std::string const writesLines = component("r", "JsonLinesReporter", {"-"});
std::string const writesNowhere = component("r", "JsonLinesReporter", {"/dev/null"});

std::vector<std::string> linesOf(std::string const& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

class HostMonitor : public ::testing::Test {
protected:
    /// Runs one sample of these components in an installation whose map stands already.
    Zelm::Testing::ChildResult sample(std::vector<std::string> const& components)
    {
        installation.buildMap();
        return installation.run({"--config", installation.configure(components), "--interval", "0", "--samples", "1"});
    }

    DemoInstallation installation;
};

}  // namespace

// ------------------------------------------------------------------------------------------------ list and the starts

TEST_F(HostMonitor, listsTheInstalledTypesWithTheirLibraries)
{
    installation.buildMap();
    auto const child = installation.run({"--list"});

    EXPECT_EQ(child.out, listWithoutLoading);
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

TEST_F(HostMonitor, loadsTheLibrariesAtItsFirstStartToBuildTheMap)
{
    auto const child = installation.run({"--list"});

    EXPECT_THAT(child.out,
                HasSubstr("component libraries loaded to tell this: libHostAlarms.so.1.0.0, "
                          "libHostReporters.so.1.0.0, libHostSensors.so.1.0.0, libZelmMessaging.so.0.1.0\n"));
    EXPECT_EQ(child.err, "Failed to open: " + (installation / "lib//CMP_ComponentsMap.json") + "\n");
    EXPECT_EQ(child.status, 0);
}

TEST_F(HostMonitor, loadsNoLibraryAtItsSecondStartBeforeItCreatesTheFirstComponent)
{
    installation.addWitnesses();
    std::vector<std::string> const arguments = {
        "--config",
        installation.configure({component("w", "MapsWitness"), component("cpu", "CpuSensor"), writesLines}),
        "--interval",
        "0",
        "--samples",
        "1"};

    auto const first = installation.run(arguments);
    auto const second = installation.run(arguments);

    // The witness is the first component, and its own library alone has to be there when it is created.
    EXPECT_THAT(first.out, HasSubstr("\"libraries\":[\"libHostAlarms.so.1.0.0\",\"libHostReporters.so.1.0.0\","
                                     "\"libHostSensors.so.1.0.0\",\"libWitnesses.so.1.0.0\"]"));
    EXPECT_THAT(second.out, HasSubstr("\"libraries\":[\"libWitnesses.so.1.0.0\"]"));
    EXPECT_THAT(second.out, HasSubstr("\"cores\":["));
    EXPECT_EQ(second.err, "");
}

TEST_F(HostMonitor, listsWhyTypesCantBeCreated)
{
    installation.buildMap();
    std::filesystem::remove(installation / "lib/libHostSensors.so.1.0.0");
    writeFile(installation / "lib/libBroken.so.1", "no library at all");
    std::filesystem::copy(installation / "lib/libHostReporters.so.1.0.0", installation / "lib/libCopied.so.1.0.0");
    auto const child = installation.run({"--list"});

    for (char const* const type : {"CpuSensor", "DiskSensor", "MemorySensor", "NetworkSensor"})
        EXPECT_THAT(child.out, ContainsRegex(std::string(type) + " +libHostSensors.so.1.0.0 +can't be created: "
                                                                 "Library with factory is missing\n"));
    EXPECT_THAT(child.out, HasSubstr("can't be created: Error processing: TableReporter - Cannot add factory: lib"));
    EXPECT_THAT(child.out, HasSubstr("\nlibBroken.so.1: Error loading: "));
    EXPECT_EQ(child.status, 0);
}

TEST_F(HostMonitor, saysThatTheListCouldntBeWritten)
{
    installation.buildMap();
    auto const child = installation.runByShell("--list >/dev/full");

    EXPECT_EQ(child.err, "host_monitor: can't write standard output: No space left on device\n");
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, saysThatThereAreNoTypesToList)
{
    for (char const* const name : componentLibraries)
        std::filesystem::remove(installation / (std::string("lib/") + name));
    writeFile(installation / "lib/libBroken.so.1", "no library at all");
    auto const child = installation.run({"--list"});

    EXPECT_EQ(child.err, "Failed to open: " + (installation / "lib//CMP_ComponentsMap.json") +
                             "\nhost_monitor: no component types in " + (installation / "lib/") + "\n");
    EXPECT_THAT(child.out, StartsWith("libBroken.so.1: Error loading: "));
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, looksForTheMapOnceWhenItListsAndTheMapCantBeWritten)
{
    auto options = installation.options({"--list"});
    options.set("ZELM_ComponentsMapDir", installation / "absent");
    auto const child = Zelm::Testing::runProgram(installation.program(), options);

    EXPECT_EQ(child.err, "Failed to open: " + (installation / "absent/CMP_ComponentsMap.json") + "\n");
    EXPECT_EQ(child.status, 0);
}

// ----------------------------------------------------------------------------------------------------- standard output

TEST_F(HostMonitor, keepsTheLibrarysDiagnosticsOutOfItsOutput)
{
    auto const path = installation.configure({readsNothing, writesLines});
    std::vector<std::vector<std::string>> const commands = {{"--list"},
                                                            {"--config", path, "--interval", "0", "--samples", "1"}};
    for (auto const& command : commands) {
        SCOPED_TRACE(command.front());
        writeFile(installation / "lib/CMP_ComponentsMap.json", "{\"Version\":[1,1,0],\"Components\":5}");
        auto const child = installation.run(command);

        EXPECT_THAT(child.err, StartsWith("Exception MetaDat::ReflectorArray"));
        EXPECT_THAT(child.out, AllOf(Not(HasSubstr("Exception")), Not(::testing::IsEmpty())));
        EXPECT_EQ(child.status, 0);
    }
}

TEST_F(HostMonitor, keepsWhatLibrariesSayWhileTheMapIsBuiltOutOfItsOutput)
{
    installation.addWitnesses();
    auto options = installation.options(
        {"--config", installation.configure({readsNothing, writesLines}), "--interval", "0", "--samples", "1"});
    options.set("WITNESSES_SPEAK", "1");
    auto const child = Zelm::Testing::runProgram(installation.program(), options);

    EXPECT_EQ(child.err, "Failed to open: " + (installation / "lib//CMP_ComponentsMap.json") +
                             "\nWitnesses loaded\nWitnesses loaded\n");
    // The reading, and that there won't be another.
    EXPECT_THAT(linesOf(child.out), ElementsAre(HasSubstr("\"error\":"), HasSubstr("\"published\":1")));
}

TEST_F(HostMonitor, worksWithoutAStandardErrorToSendDiagnosticsTo)
{
    installation.buildMap();
    auto const child = installation.runByShell("--list 2>&-");

    EXPECT_EQ(child.out, listWithoutLoading);
    EXPECT_EQ(child.status, 0);
}

// ----------------------------------------------------------------------------------------------------------- ordinary

TEST_F(HostMonitor, showsTablesWithItsOwnConfiguration)
{
    installation.buildMap();
    auto const child = installation.run({"--interval", "0.01", "--samples", "2"});

    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
    for (char const* const part : {"\ncpu\n", "\nmemory\n", "\ndisk\n", "\nnetwork\n", "  core", "mount point"})
        EXPECT_THAT(child.out, HasSubstr(part));
    EXPECT_THAT(child.out, Not(HasSubstr("\x1b")));
    auto const lines = linesOf(child.out);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "memory"), 2);
}

TEST_F(HostMonitor, writesJsonLinesWithItsOtherConfiguration)
{
    installation.buildMap();
    auto const child =
        installation.run({"--config", installation / "etc/json_lines.json", "--interval", "0", "--samples", "3"});

    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
    struct Row {
        char const* sensor;
        char const* field;
    };
    for (auto const& row :
         {Row{"\"cpu\",\"cpu\"]", "\"cores\":["}, Row{"\"memory\",\"memory\"]", "\"totalBytes\":"},
          Row{"\"disk\",\"disk\"]", "\"mountPoint\":\"/\""}, Row{"\"network\",\"network\"]", "\"interface\":\"lo\""}}) {
        SCOPED_TRACE(row.sensor);
        auto const lines = linesOf(child.out);
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                [&](std::string const& line) {
                                    return line.find(row.sensor) != std::string::npos &&
                                           line.find(row.field) != std::string::npos;
                                }),
                  3);
    }
}

TEST_F(HostMonitor, showsAlarmsWithTheConfigurationThatRaisesThem)
{
    installation.buildMap();
    auto const child =
        installation.run({"--config", installation / "etc/alarms.json", "--interval", "0", "--samples", "1"});

    EXPECT_EQ(child.err, "");
    EXPECT_THAT(child.out, ContainsRegex("\nALARM memory: used % is [0-9.]+, above 1.0\n"));
    EXPECT_THAT(child.out, ContainsRegex("\nALARM disk: file systems used % is [0-9.]+, below 100.0\n"));
}

TEST_F(HostMonitor, servesSeveralReportersAtOnce)
{
    auto const child = sample({readsNothing, component("t", "TableReporter"),
                               component("f", "JsonLinesReporter", {installation / "log"}),
                               component("g", "JsonLinesReporter", {installation / "log2"})});

    EXPECT_EQ(child.status, 0);
    EXPECT_THAT(child.out, HasSubstr("  /absent/meminfo: No such file or directory"));
    auto const log = readFile(installation / "log");
    EXPECT_THAT(log, HasSubstr("\"error\":\"/absent/meminfo: No such file or directory\""));
    EXPECT_EQ(readFile(installation / "log2"), log);
}

TEST_F(HostMonitor, takesTheScheduleOfEachSensorFromTheConfigurationUnlessItIsToldAnother)
{
    installation.buildMap();
    auto const path =
        installation.configure({component("a", "MemorySensor", {"--period=0", "--readings=2"}),
                                component("b", "MemorySensor", {"--period=0.001", "--readings=3", "--proc=/absent"}),
                                component("r", "JsonLinesReporter", {"/dev/null"})});

    EXPECT_EQ(installation.run({"--config", path, "--summary"}).err,
              "a published 2 messages\nb published 3 messages\nr reported 7 messages\n");
    EXPECT_EQ(installation.run({"--config", path, "--summary", "--samples", "1"}).err,
              "a published 1 message\nb published 1 message\nr reported 4 messages\n");
}

TEST_F(HostMonitor, takesTheInstallationThatZelmDirNames)
{
    TemporaryDirectory const empty;
    auto options = installation.options({"--list"});
    options.set("ZELM_DIR", empty.path());
    auto const child = Zelm::Testing::runProgram(installation.program(), options);

    EXPECT_THAT(child.err, StartsWith("Failed to open: " + empty.path() + "/lib//CMP_ComponentsMap.json\n"));
    EXPECT_THAT(child.err, EndsWith("\nhost_monitor: no component types in " + empty.path() + "/lib/\n"));
    EXPECT_EQ(child.out, "component libraries loaded to tell this: none\n");
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, takesItsOwnInstallationIfZelmDirIsEmpty)
{
    installation.buildMap();
    auto options = installation.options({"--list"});
    options.set("ZELM_DIR", "");

    EXPECT_EQ(Zelm::Testing::runProgram(installation.program(), options).out, listWithoutLoading);
}

TEST_F(HostMonitor, findsItsInstallationWhenItIsStartedThroughALink)
{
    installation.buildMap();
    TemporaryDirectory const elsewhere;
    std::filesystem::create_symlink(installation.program(), elsewhere / "monitor");

    EXPECT_EQ(Zelm::Testing::runProgram(elsewhere / "monitor", installation.options({"--list"})).out,
              listWithoutLoading);
}

TEST_F(HostMonitor, showsHelp)
{
    auto const child = installation.run({"--help"});

    EXPECT_THAT(child.out, HasSubstr("--interval SECONDS"));
    EXPECT_EQ(child.status, 0);
}

TEST_F(HostMonitor, saysThatTheHelpCouldntBeWritten)
{
    auto const child = installation.runByShell("--help >/dev/full");

    EXPECT_EQ(child.err, "host_monitor: can't write standard output: No space left on device\n");
    EXPECT_EQ(child.status, 1);
}

// ------------------------------------------------------------------------------------------------------------- faults

TEST_F(HostMonitor, refusesWhatItCantUseInOneLine)
{
    installation.addWitnesses();
    struct Row {
        char const* why;
        std::vector<std::string> components;
        std::string reason;
    };
    Row const rows[] = {
        {"a wrong type name",
         {component("cpu", "CpuSensr"), writesLines},
         "component \"cpu\": Failed to Create Component Type \"CpuSensr\": Component not found: No entry found (see "
         "--list)"},
        {"wrong arguments of a sensor",
         {component("cpu", "CpuSensor", {"x"}), writesLines},
         "component \"cpu\": Invalid Parameter: unknown argument \"x\", expected --proc=DIR, --period=SECONDS or "
         "--readings=N"},
        {"a wrong schedule",
         {component("cpu", "CpuSensor", {"--period=x"}), writesLines},
         "component \"cpu\": Invalid Parameter: \"x\" is no period, expected seconds between 0 and 1000000"},
        {"an alarm without thresholds",
         {readsNothing, component("a", "ThresholdAlarm"), writesLines},
         "component \"a\": Invalid Parameter: there are no thresholds"},
        {"a threshold without a field",
         {readsNothing, component("a", "ThresholdAlarm", {R"({"sensor":"s","above":1})"}), writesLines},
         "component \"a\": Invalid Parameter: \"field\" is missing in threshold 1"},
        {"a threshold for a sensor that isn't there",
         {readsNothing, component("a", "ThresholdAlarm", {R"({"sensor":"cpu","field":"f","above":1})"}), writesLines},
         "component \"a\": there is no sensor \"cpu\""},
        {"a threshold for a component that is no sensor",
         {readsNothing, component("a", "ThresholdAlarm", {R"({"sensor":"r","field":"f","above":1})"}), writesLines},
         "component \"a\": there is no sensor \"r\""},
        {"wrong arguments of the table",
         {readsNothing, component("t", "TableReporter", {"x"})},
         "component \"t\": Invalid Parameter: TableReporter takes no arguments"},
        {"a file that can't be opened",
         {readsNothing, component("f", "JsonLinesReporter", {"/absent/log"})},
         "component \"f\": can't open /absent/log: No such file or directory"},
        {"a full disk",
         {readsNothing, component("f", "JsonLinesReporter", {"/dev/full"})},
         "component \"f\": can't write /dev/full: No space left on device"},
        {"no sensor", {writesLines}, "there is no sensor among the components"},
        {"no reporter", {readsNothing}, "there is no reporter among the components"},
        {"a component of another kind",
         {component("b", "Bystander"), readsNothing, writesLines},
         "component \"b\": the type \"Bystander\" is neither a sensor nor an alarm nor a reporter"},
        {"the id of the core factory",
         {component("CoreComponentFactory", "CpuSensor"), writesLines},
         "component \"CoreComponentFactory\": the id is taken"},
        {"a component that throws anything",
         {component("x", "ThrowsNoException")},
         "component \"x\" has thrown something that is no std::exception"},
        {"the id of the dispatcher",
         {component("dispatcher", "CpuSensor"), writesLines},
         "component \"dispatcher\": the id is taken"},
        {"a reporter that fails to start",
         {readsNothing, component("a2", "FailingReporter", {"start"})},
         "component \"a2\": start failed"},
        {"a sensor without a reading",
         {component("a2", "FailingSensor", {"no reading"}), writesNowhere},
         "component \"a2\": no reading was taken"},
        {"a sensor that fails",
         {component("a2", "FailingSensor", {"take"}), writesNowhere},
         "component \"a2\": take failed"},
        {"a sensor that throws anything",
         {component("a2", "FailingSensor", {"take int"}), writesNowhere},
         "component \"a2\": something was thrown that is no std::exception"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.why);
        auto const child = sample(row.components);
        EXPECT_EQ(child.err, "host_monitor: " + row.reason + "\n");
        EXPECT_EQ(child.out, "");
        EXPECT_EQ(child.status, 1);
    }
}

TEST_F(HostMonitor, saysThatALibraryIsMissing)
{
    installation.buildMap();
    std::filesystem::remove(installation / "lib/libHostSensors.so.1.0.0");
    auto const child = installation.run({"--samples", "1"});

    EXPECT_EQ(child.err, "host_monitor: component \"cpu\": Failed to Create Component Type \"CpuSensor\": Library with "
                         "factory is missing\n");
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, saysThatThereAreNoLibrariesAtAll)
{
    for (char const* const name : componentLibraries)
        std::filesystem::remove(installation / (std::string("lib/") + name));
    auto const child = installation.run({"--samples", "1"});

    EXPECT_EQ(child.err, "Failed to open: " + (installation / "lib//CMP_ComponentsMap.json") + "\n" +
                             "host_monitor: component \"cpu\": Failed to Create Component Type \"CpuSensor\": No "
                             "Component Repository Data (looked in " +
                             (installation / "lib/") + ")\n");
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, saysThatThereIsNoDispatcher)
{
    installation.buildMap();
    std::filesystem::remove(installation / "lib/libZelmMessaging.so.0.1.0");
    auto const child = installation.run({"--samples", "1"});

    EXPECT_EQ(child.err,
              "host_monitor: component \"dispatcher\": Failed to Create Component Type \"MessageDispatcher\": "
              "Library with factory is missing\n");
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, refusesToRunAsFastAsItCanWithoutEnd)
{
    installation.buildMap();
    auto const child =
        installation.run({"--config", installation.configure({readsNothing, writesNowhere}), "--interval", "0"});

    EXPECT_EQ(child.err,
              "host_monitor: component \"s\": Invalid Parameter: a period of 0 needs a number of readings\n");
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, refusesABrokenConfigurationFileBeforeItLooksAtAnyLibrary)
{
    writeFile(installation / "broken.json", "{\n\"components\" : [ { \"id\" : } ]\n}");
    auto const child = installation.run({"--config", installation / "broken.json"});

    EXPECT_EQ(child.err, "host_monitor: " + (installation / "broken.json") + ": line 2: Unexpected token: }\n");
    EXPECT_EQ(child.status, 1);
    EXPECT_FALSE(std::filesystem::exists(installation / "lib/CMP_ComponentsMap.json"));
}

TEST_F(HostMonitor, refusesAConfigurationFileThatIsntThere)
{
    auto const child = installation.run({"--config", "/absent.json"});

    EXPECT_EQ(child.err, "host_monitor: /absent.json: No such file or directory\n");
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, refusesArgumentsThatItDoesntKnow)
{
    auto const child = installation.run({"--sample", "1"});

    EXPECT_THAT(child.err, StartsWith("host_monitor: "));
    EXPECT_EQ(linesOf(child.err).size(), 1U);
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.status, 1);
}

// ---------------------------------------------------------------------------------------------------------------- end

TEST_F(HostMonitor, startsReceiversBeforeSendersAndEndsThemBehindWhateverTheirOrder)
{
    installation.addWitnesses();
    auto const child =
        sample({component("s1", "SensorWitness"), component("a1", "AlarmWitness"), component("r1", "ReporterWitness"),
                component("s2", "SensorWitness"), component("r2", "ReporterWitness"), component("a2", "AlarmWitness")});

    EXPECT_THAT(linesOf(child.out),
                ElementsAre("start r1", "start r2", "start a1", "start a2", "start s1", "start s2",  //
                            "end s2", "end s1", "end a2", "end a1", "end r2", "end r1"));
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

TEST_F(HostMonitor, endsEveryComponentThatItHasStartedWhenOneFails)
{
    installation.addWitnesses();
    struct Row {
        char const* why;
        std::string reporter;
    };
    Row const rows[] = {{"while it runs", component("f", "JsonLinesReporter", {"/dev/full"})},
                        {"when it ends", component("f", "FailingReporter", {"end"})},
                        {"when it ends, with something else", component("f", "FailingReporter", {"end int"})}};
    for (auto const& row : rows) {
        SCOPED_TRACE(row.why);
        auto const child = sample({component("r", "ReporterWitness"), row.reporter, component("s", "SensorWitness")});

        EXPECT_THAT(linesOf(child.out), ElementsAre("start r", "start s", "end s", "end r"));
        EXPECT_THAT(child.err, StartsWith("host_monitor: component \"f\""));
        EXPECT_EQ(child.status, 1);
    }
}

TEST_F(HostMonitor, endsWhatItHasStartedWhenAnotherFailsToStart)
{
    installation.addWitnesses();
    auto const child = sample({component("r", "ReporterWitness"), component("f", "FailingReporter", {"start"}),
                               component("s", "SensorWitness")});

    EXPECT_THAT(linesOf(child.out), ElementsAre("start r", "end r"));
    EXPECT_EQ(child.err, "host_monitor: component \"f\": start failed\n");
}

TEST_F(HostMonitor, tellsTheFailureOfTheRunBeforeThoseOfItsEnd)
{
    installation.addWitnesses();
    auto const child =
        sample({component("a", "FailingReporter", {"end"}), component("b", "FailingReporter", {"end int"}),
                component("f", "JsonLinesReporter", {"/dev/full"}), readsNothing});

    EXPECT_EQ(child.err, "host_monitor: component \"f\": can't write /dev/full: No space left on device\n");
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, isEndedCleanlyByASignalInTheMiddleOfItsWait)
{
    installation.addWitnesses();
    installation.buildMap();
    auto const path = installation.configure({component("r", "ReporterWitness"), component("w", "SensorWitness")});
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        RunningProgram program(installation.program(),
                               installation.options({"--config", path, "--interval", "100000"}));
        EXPECT_EQ(program.readLine(), "start r");
        EXPECT_EQ(program.readLine(), "start w");
        program.send(signal);

        EXPECT_EQ(program.readRest(), "end w\nend r\n");
        EXPECT_EQ(program.wait(), 0);
        EXPECT_EQ(program.errors(), "");
    }
}

TEST_F(HostMonitor, saysThatNobodyReadsItsOutputAnyMore)
{
    installation.buildMap();
    RunningProgram program(
        installation.program(),
        installation.options({"--config", installation.configure({readsNothing, writesLines}), "--interval", "0.01"}));
    program.readLine();
    program.closeOutput();

    EXPECT_EQ(program.wait(), 1);
    EXPECT_EQ(program.errors(), "host_monitor: component \"r\": can't write standard output: Broken pipe\n");
}

}  // namespace HostMonitor::Testing
