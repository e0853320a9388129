// What the program writes as JSON lines agrees, number by number, with the proc file system that it was given.
#include "demo_installation.h"
#include "running_program.h"

#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <regex>
#include <sstream>

#include <sys/statvfs.h>

namespace HostMonitor::Testing {

using ::testing::ElementsAre;
using Zelm::MetaData::Array;
using Zelm::MetaData::Element;
using Zelm::MetaData::Object;
using Zelm::Testing::readFile;
using Zelm::Testing::writeFile;

namespace {

std::string const netHead =
    "Inter-|   Receive                                                |  Transmit\n"
    " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop fifo colls carrier "
    "compressed\n";

/// The lines of readings, with what every message has taken out, and what depends on the moment: the time, and the
/// length of an interval.
std::vector<std::string> withoutMoments(std::string const& text)
{
    static std::regex const ofEveryMessage("\"(DestID|MessageID|SenderID)\":\\[[^\\]]*\\],?|"
                                           "\"MsgUUID\":\"[^\"]*\",?|\"sequence\":[0-9]+,");
    static std::regex const time("\"time\":[0-9]+");
    static std::regex const interval("\"intervalMicroseconds\":[0-9]+");
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.find("\"MessageID\":[1,1,") == std::string::npos)
            continue;
        line = std::regex_replace(line, ofEveryMessage, "");
        line = std::regex_replace(line, time, "\"time\":T");
        lines.push_back(std::regex_replace(line, interval, "\"intervalMicroseconds\":I"));
    }
    return lines;
}

Object objectIn(std::string const& line)
{
    std::istringstream stream(line);
    Object object;
    Zelm::MetaData::ReaderJson::Read(object, stream);
    return object;
}

/// Writes the file anew and puts it in the place of the old one at once, so that a reader sees the one or the other.
void replaceFile(std::string const& path, std::string const& content)
{
    writeFile(path + ".new", content);
    std::filesystem::rename(path + ".new", path);
}

class JsonLines : public ::testing::Test {
protected:
    /// The program with one sensor, which looks at the copied tree, and a reporter on standard output.
    std::vector<std::string> commandLine(std::string const& type, std::vector<std::string> const& arguments)
    {
        auto const path =
            installation.configure({component("s", type, arguments), component("r", "JsonLinesReporter", {"-"})});
        return {"--config", path, "--interval", "0.01"};
    }

    std::string runOnce(std::string const& type, std::vector<std::string> const& arguments)
    {
        auto options = commandLine(type, arguments);
        options.insert(options.end(), {"--samples", "1"});
        return installation.run(options).out;
    }

    void writeProc(std::string const& name, std::string const& content) { writeFile(proc + "/" + name, content); }

    DemoInstallation installation;
    std::string const proc = installation / "proc";
    std::string const procArgument = "--proc=" + proc;
};

}  // namespace

TEST_F(JsonLines, holdTheFiguresOfTheMemory)
{
    writeProc("meminfo", "MemTotal:        8000000 kB\n"
                         "MemFree:         1000000 kB\n"
                         "MemAvailable:    6000000 kB\n"
                         "Buffers:           20000 kB\n"
                         "Cached:           300000 kB\n"
                         "SwapTotal:       4000000 kB\n"
                         "SwapFree:        3500000 kB\n");

    EXPECT_THAT(withoutMoments(runOnce("MemorySensor", {procArgument})),
                ElementsAre("{\"availableBytes\":6144000000,\"buffersBytes\":20480000,\"cachedBytes\":307200000,"
                            "\"freeBytes\":1024000000,\"swapFreeBytes\":3584000000,"
                            "\"swapTotalBytes\":4096000000,\"time\":T,\"totalBytes\":8192000000,"
                            "\"usedBytes\":2048000000,\"usedPercent\":25}"));
}

TEST_F(JsonLines, holdNoFiguresThatTheKernelDoesntGive)
{
    writeProc("meminfo", "MemTotal:        8000000 kB\nMemFree:         1000000 kB\n");

    EXPECT_THAT(withoutMoments(runOnce("MemorySensor", {procArgument})),
                ElementsAre("{\"freeBytes\":1024000000,\"time\":T,\"totalBytes\":8192000000}"));
}

TEST_F(JsonLines, holdTheCountersOfEachInterface)
{
    writeProc("net/dev", netHead + "    lo:    3267      29    1    2    0     0          0         0     4267      39"
                                   "    3    4    0     0       0          0\n"
                                   "  eth0: 88176438    3156    0    0    0     0          0         0   221310    2876"
                                   "    0    0    0     0       0          0\n");

    EXPECT_THAT(withoutMoments(runOnce("NetworkSensor", {procArgument})),
                ElementsAre("{\"interfaces\":["
                            "{\"interface\":\"lo\",\"receivedBytes\":3267,\"receivedBytesPerSecond\":0,"
                            "\"receivedDropped\":2,\"receivedErrors\":1,\"receivedPackets\":29,\"sentBytes\":4267,"
                            "\"sentBytesPerSecond\":0,\"sentDropped\":4,\"sentErrors\":3,\"sentPackets\":39},"
                            "{\"interface\":\"eth0\",\"receivedBytes\":88176438,\"receivedBytesPerSecond\":0,"
                            "\"receivedDropped\":0,\"receivedErrors\":0,\"receivedPackets\":3156,\"sentBytes\":221310,"
                            "\"sentBytesPerSecond\":0,\"sentDropped\":0,\"sentErrors\":0,\"sentPackets\":2876}"
                            "],\"intervalMicroseconds\":I,\"time\":T}"));
}

TEST_F(JsonLines, holdTheRatesSinceTheLastSample)
{
    auto const table = [](char const* received, char const* sent) {
        return netHead + "eth0: " + received + " 0 0 0 0 0 0 0 " + sent + " 0 0 0 0 0 0 0\n";
    };
    auto const traffic = [](Object const& line) -> Element const& { return line["interfaces"][0UL]; };
    writeProc("net/dev", table("1000000", "5000000"));
    RunningProgram program(installation.program(), installation.options(commandLine("NetworkSensor", {procArgument})));
    program.readLine();
    replaceFile(proc + "/net/dev", table("3000000", "6000000"));

    // Exactly one sample sees the change, whichever it is.
    Object line = objectIn(program.readLine());
    while (traffic(line)["receivedBytesPerSecond"].asInt64() == 0)
        line = objectIn(program.readLine());

    double const seconds = std::as_const(line)["intervalMicroseconds"].asDouble() / 1e6;
    EXPECT_EQ(traffic(line)["receivedBytes"].asInt64(), 3'000'000);
    EXPECT_EQ(traffic(line)["sentBytes"].asInt64(), 6'000'000);
    EXPECT_NEAR(traffic(line)["receivedBytesPerSecond"].asDouble(), 2e6 / seconds, 0.501);
    EXPECT_NEAR(traffic(line)["sentBytesPerSecond"].asDouble(), 1e6 / seconds, 0.501);
}

TEST_F(JsonLines, holdTheLoadSinceTheLastSample)
{
    writeProc("stat", "cpu  2000 0 0 2000 0 0 0 0 0 0\n"
                      "cpu0 1000 0 0 1000 0 0 0 0 0 0\n"
                      "cpu1 1000 0 0 1000 0 0 0 0 0 0\n");
    RunningProgram program(installation.program(), installation.options(commandLine("CpuSensor", {procArgument})));
    std::string const unchanged = withoutMoments(program.readLine()).front();
    // Core 1 goes away, core 7 comes; core 0 spends 5 of 40 ticks on work, all of them 30 of 80.
    replaceFile(proc + "/stat", "cpu  2010 4 6 2040 10 2 3 5 0 0\n"
                                "cpu0 1001 1 1 1030 5 1 1 0 0 0\n"
                                "cpu7 1 1 1 1 1 1 1 1 1 1\n");

    std::string line = withoutMoments(program.readLine()).front();
    while (line == unchanged)
        line = withoutMoments(program.readLine()).front();

    EXPECT_EQ(unchanged, "{\"cores\":[{\"core\":0},{\"core\":1}],\"time\":T}");
    EXPECT_EQ(line, "{\"cores\":[{\"core\":0,\"loadPercent\":12.5},{\"core\":7}],\"loadPercent\":37.5,"
                    "\"time\":T}");
}

TEST_F(JsonLines, holdTheUseOfFileSystems)
{
    struct statvfs status = {};
    ASSERT_EQ(statvfs(installation.root().c_str(), &status), 0);
    auto const output = runOnce("DiskSensor", {installation.root(), installation / "absent"});

    auto const line = objectIn(output);
    Element const& usage = line["fileSystems"][0UL];
    EXPECT_EQ(usage["mountPoint"].asString(), installation.root());
    EXPECT_EQ(usage["totalBytes"].asDouble(), static_cast<double>(status.f_blocks * status.f_frsize));
    EXPECT_EQ(usage["usedBytes"].asInt64(), usage["totalBytes"].asInt64() - usage["freeBytes"].asInt64());
    EXPECT_THAT(output, ::testing::HasSubstr("{\"error\":\"No such file or directory\",\"mountPoint\":\"" +
                                             (installation / "absent") + "\"}"));
}

TEST_F(JsonLines, holdNoShareOfAFileSystemWithoutBlocks)
{
    EXPECT_THAT(withoutMoments(runOnce("DiskSensor", {"/proc"})),
                ElementsAre("{\"fileSystems\":[{\"availableBytes\":0,\"freeBytes\":0,\"mountPoint\":\"/proc\","
                            "\"totalBytes\":0,\"usedBytes\":0}],\"time\":T}"));
}

TEST_F(JsonLines, sayWhyNothingWasMeasured)
{
    struct Row {
        char const* type;
        char const* file;
        char const* wrongContent;
        char const* reason;
        char const* list;
    };
    Row const rows[] = {
        {"CpuSensor", "stat", "intr 1\n", "holds no processor times", "\"cores\":[],"},
        {"MemorySensor", "meminfo", "", "holds no total of the memory", ""},
        {"NetworkSensor", "net/dev", "eth0: 1 2\n", "holds no table of network counters", "\"interfaces\":[],"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.type);
        std::string const file = proc + "/" + row.file;
        auto const lineWith = [&](std::string const& reason) {
            // The members stand in the order of their names.
            std::string const error = "\"error\":\"" + file + ": " + reason + "\",";
            std::string const list = row.list;
            return "{" + (list < error ? list + error : error + list) + "\"time\":T}";
        };

        EXPECT_THAT(withoutMoments(runOnce(row.type, {procArgument})),
                    ElementsAre(lineWith("No such file or directory")));
        writeFile(file, row.wrongContent);
        EXPECT_THAT(withoutMoments(runOnce(row.type, {procArgument})), ElementsAre(lineWith(row.reason)));
    }
}

TEST_F(JsonLines, goOnWhenAFileComesBack)
{
    RunningProgram program(installation.program(), installation.options(commandLine("MemorySensor", {procArgument})));
    auto const absent = objectIn(program.readLine());
    writeFile(proc + "/meminfo.new", "MemTotal: 1 kB\n");
    std::filesystem::rename(proc + "/meminfo.new", proc + "/meminfo");

    auto line = objectIn(program.readLine());
    while (line.find("error") != line.end())
        line = objectIn(program.readLine());

    EXPECT_NE(absent.find("error"), absent.end());
    EXPECT_EQ(std::as_const(line)["totalBytes"].asInt64(), 1024);
}

TEST_F(JsonLines, tellTheTimeOfTheReadingInMilliseconds)
{
    using namespace std::chrono;
    auto const now = [] { return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count(); };
    auto const before = now();
    auto const line = objectIn(runOnce("MemorySensor", {}));
    auto const after = now();

    EXPECT_GE(line["time"].asInt64(), before);
    EXPECT_LE(line["time"].asInt64(), after);
}

// The kernel's own files, copied, so that sensor and test look at the same moment of this machine; read here in another
// way than the sensors do.
TEST_F(JsonLines, agreeWithTheFilesOfThisMachine)
{
    for (char const* const name : {"stat", "meminfo", "net/dev"})
        writeProc(name, readFile(std::string("/proc/") + name));

    std::map<std::string, double> meminfo;
    std::istringstream memoryFile(readFile(proc + "/meminfo"));
    for (std::string line; std::getline(memoryFile, line);) {
        std::istringstream words(line);
        std::string name;
        double value = 0;
        words >> name >> value;
        meminfo[name] = value * 1024;
    }
    auto const memory = objectIn(runOnce("MemorySensor", {procArgument}));
    EXPECT_EQ(memory["totalBytes"].asDouble(), meminfo.at("MemTotal:"));
    EXPECT_EQ(memory["freeBytes"].asDouble(), meminfo.at("MemFree:"));
    EXPECT_EQ(memory["availableBytes"].asDouble(), meminfo.at("MemAvailable:"));
    EXPECT_EQ(memory["usedBytes"].asDouble(), meminfo.at("MemTotal:") - meminfo.at("MemAvailable:"));
    EXPECT_EQ(memory["buffersBytes"].asDouble(), meminfo.at("Buffers:"));
    EXPECT_EQ(memory["cachedBytes"].asDouble(), meminfo.at("Cached:"));
    EXPECT_EQ(memory["swapTotalBytes"].asDouble(), meminfo.at("SwapTotal:"));
    EXPECT_EQ(memory["swapFreeBytes"].asDouble(), meminfo.at("SwapFree:"));

    auto const network = objectIn(runOnce("NetworkSensor", {procArgument}));
    std::istringstream networkFile(readFile(proc + "/net/dev"));
    unsigned long row = 0;
    for (std::string line; std::getline(networkFile, line);) {
        if (line.find('|') != std::string::npos)
            continue;
        line[line.find(':')] = ' ';
        std::istringstream words(line);
        std::string name;
        double counters[16];
        words >> name;
        for (auto& counter : counters)
            words >> counter;
        Element const& traffic = network["interfaces"][row++];
        SCOPED_TRACE(name);
        EXPECT_EQ(traffic["interface"].asString(), name);
        EXPECT_EQ(traffic["receivedBytes"].asDouble(), counters[0]);
        EXPECT_EQ(traffic["receivedPackets"].asDouble(), counters[1]);
        EXPECT_EQ(traffic["receivedErrors"].asDouble(), counters[2]);
        EXPECT_EQ(traffic["receivedDropped"].asDouble(), counters[3]);
        EXPECT_EQ(traffic["sentBytes"].asDouble(), counters[8]);
        EXPECT_EQ(traffic["sentPackets"].asDouble(), counters[9]);
        EXPECT_EQ(traffic["sentErrors"].asDouble(), counters[10]);
        EXPECT_EQ(traffic["sentDropped"].asDouble(), counters[11]);
    }
    EXPECT_EQ(network["interfaces"].CastTo<Array>().size(), row);

    auto const cpu = objectIn(runOnce("CpuSensor", {procArgument}));
    std::istringstream statFile(readFile(proc + "/stat"));
    unsigned long core = 0;
    for (std::string line; std::getline(statFile, line);) {
        if (line.rfind("cpu", 0) != 0 || line.rfind("cpu ", 0) == 0)
            continue;
        long const number = cpu["cores"][core++]["core"].asInt64();
        EXPECT_EQ("cpu" + std::to_string(number), line.substr(0, line.find(' ')));
    }
    EXPECT_EQ(cpu["cores"].CastTo<Array>().size(), core);
}

}  // namespace HostMonitor::Testing
