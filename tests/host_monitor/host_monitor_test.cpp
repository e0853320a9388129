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

constexpr char const* listWithoutLoading = "TYPE               LIBRARY\n"
                                           "CpuSensor          libHostSensors.so.1.0.0\n"
                                           "DiskSensor         libHostSensors.so.1.0.0\n"
                                           "JsonLinesReporter  libHostReporters.so.1.0.0\n"
                                           "MemorySensor       libHostSensors.so.1.0.0\n"
                                           "NetworkSensor      libHostSensors.so.1.0.0\n"
                                           "TableReporter      libHostReporters.so.1.0.0\n"
                                           "component libraries loaded to tell this: none\n";

std::string const readsNothing = component("s", "MemorySensor", {"--proc=/absent"});
std::string const writesLines = component("r", "JsonLinesReporter", {"-"});

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

    EXPECT_THAT(child.out, HasSubstr("component libraries loaded to tell this: libHostReporters.so.1.0.0, "
                                     "libHostSensors.so.1.0.0\n"));
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
    EXPECT_THAT(first.out, StartsWith("{\"libraries\":[\"libHostReporters.so.1.0.0\",\"libHostSensors.so.1.0.0\","
                                      "\"libWitnesses.so.1.0.0\"]"));
    EXPECT_THAT(second.out, StartsWith("{\"libraries\":[\"libWitnesses.so.1.0.0\"]"));
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
    auto const child = Zelm::Testing::runProgram(
        "/bin/sh", installation.options({"-c", "exec \"$0\" --list >/dev/full", installation.program()}));

    EXPECT_EQ(child.err, "host_monitor: can't write standard output: No space left on device\n");
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, saysThatThereAreNoTypesToList)
{
    for (char const* const name : {"libHostSensors.so.1.0.0", "libHostReporters.so.1.0.0"})
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
    EXPECT_THAT(child.out, StartsWith("{\"error\":"));
    EXPECT_EQ(linesOf(child.out).size(), 1U);
}

TEST_F(HostMonitor, worksWithoutAStandardErrorToSendDiagnosticsTo)
{
    installation.buildMap();
    auto const child = Zelm::Testing::runProgram(
        "/bin/sh", installation.options({"-c", "exec \"$0\" --list 2>&-", installation.program()}));

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
    auto const lines = linesOf(child.out);
    ASSERT_EQ(lines.size(), 12U);
    for (std::size_t i = 0; i < lines.size(); i += 4) {
        EXPECT_THAT(lines[i], AllOf(HasSubstr("\"sensor\":\"cpu\""), HasSubstr("\"cores\":[")));
        EXPECT_THAT(lines[i + 1], AllOf(HasSubstr("\"sensor\":\"memory\""), HasSubstr("\"totalBytes\":")));
        EXPECT_THAT(lines[i + 2], AllOf(HasSubstr("\"sensor\":\"disk\""), HasSubstr("\"mountPoint\":\"/\"")));
        EXPECT_THAT(lines[i + 3], AllOf(HasSubstr("\"sensor\":\"network\""), HasSubstr("\"interface\":\"lo\"")));
    }
}

TEST_F(HostMonitor, servesSeveralReportersAtOnce)
{
    auto const child = sample({readsNothing, component("t", "TableReporter"),
                               component("f", "JsonLinesReporter", {installation / "log"}), writesLines});

    EXPECT_EQ(child.status, 0);
    auto const line = readFile(installation / "log");
    EXPECT_THAT(line, HasSubstr("\"error\":\"/absent/meminfo: No such file or directory\""));
    EXPECT_THAT(child.out, EndsWith("\n\n" + line));
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
    auto const child = Zelm::Testing::runProgram(
        "/bin/sh", installation.options({"-c", "exec \"$0\" --help >/dev/full", installation.program()}));

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
         "component \"cpu\": Invalid Parameter: unknown argument \"x\", expected --proc=DIR"},
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
         "component \"b\": the type \"Bystander\" is neither a sensor nor a reporter"},
        {"the id of the core factory",
         {component("CoreComponentFactory", "CpuSensor"), writesLines},
         "component \"CoreComponentFactory\": the id is taken"},
        {"a component that throws anything",
         {component("x", "ThrowsNoException")},
         "component \"x\" has thrown something that is no std::exception"},
        {"a sensor without a reading",
         {component("a2", "Failing", {"no reading"}), writesLines},
         "component \"a2\" gave no reading"},
        {"a sensor that fails", {component("a2", "Failing", {"take"}), writesLines}, "component \"a2\": take failed"},
        {"a sensor that throws anything",
         {component("a2", "Failing", {"take int"}), writesLines},
         "component \"a2\" has thrown something that is no std::exception"},
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
    for (char const* const name : {"libHostSensors.so.1.0.0", "libHostReporters.so.1.0.0"})
        std::filesystem::remove(installation / (std::string("lib/") + name));
    auto const child = installation.run({"--samples", "1"});

    EXPECT_EQ(child.err, "Failed to open: " + (installation / "lib//CMP_ComponentsMap.json") + "\n" +
                             "host_monitor: component \"cpu\": Failed to Create Component Type \"CpuSensor\": No "
                             "Component Repository Data (looked in " +
                             (installation / "lib/") + ")\n");
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

TEST_F(HostMonitor, endsEveryComponentAfterItsLastSample)
{
    installation.addWitnesses();
    auto const child = sample({component("b", "LifeCycleWitness"), component("a", "LifeCycleWitness"),
                               component("r", "JsonLinesReporter", {"/dev/null"})});

    // The last one first.
    EXPECT_THAT(linesOf(child.out), ElementsAre("start b", "start a", "end a", "end b"));
    EXPECT_EQ(child.status, 0);
}

TEST_F(HostMonitor, endsEveryComponentThatItHasStartedWhenItFails)
{
    installation.addWitnesses();
    auto const child = sample({component("b", "LifeCycleWitness"), component("a", "LifeCycleWitness"),
                               component("f", "JsonLinesReporter", {"/dev/full"})});

    EXPECT_THAT(linesOf(child.out), ElementsAre("start b", "start a", "end a", "end b"));
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, endsTheOtherComponentsWhenOneFailsToEnd)
{
    installation.addWitnesses();
    struct Row {
        char const* fault;
        std::string reason;
    };
    Row const rows[] = {{"end", "component \"m\": end failed"},
                        {"end int", "component \"m\" has thrown something that is no std::exception"}};
    for (auto const& row : rows) {
        SCOPED_TRACE(row.fault);
        auto const child =
            sample({component("z", "LifeCycleWitness"), component("m", "Failing", {row.fault}),
                    component("a", "LifeCycleWitness"), component("r", "JsonLinesReporter", {"/dev/null"})});

        EXPECT_THAT(linesOf(child.out), ElementsAre("start z", "start a", "end a", "end z"));
        EXPECT_EQ(child.err, "host_monitor: " + row.reason + "\n");
        EXPECT_EQ(child.status, 1);
    }
}

TEST_F(HostMonitor, tellsTheFirstOfSeveralFailures)
{
    installation.addWitnesses();
    auto const child = sample({component("a", "Failing", {"end"}), component("b", "Failing", {"end int"}),
                               component("f", "JsonLinesReporter", {"/dev/full"})});

    EXPECT_EQ(child.err, "host_monitor: component \"f\": can't write /dev/full: No space left on device\n");
    EXPECT_EQ(child.status, 1);
}

TEST_F(HostMonitor, isEndedCleanlyByASignalInTheMiddleOfItsWait)
{
    installation.addWitnesses();
    installation.buildMap();
    auto const path = installation.configure(
        {component("r", "JsonLinesReporter", {"/dev/null"}), component("w", "LifeCycleWitness")});
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        RunningProgram program(installation.program(),
                               installation.options({"--config", path, "--interval", "100000"}));
        EXPECT_EQ(program.readLine(), "start w");
        program.send(signal);

        EXPECT_EQ(program.readLine(), "end w");
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
