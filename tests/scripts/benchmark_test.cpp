// How scripts/benchmark reads targets and judges what was measured. It measures nothing here: it reports results that
// the test has written.
#include "script_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

namespace Zelm::Testing {

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

/// What was measured in one repetition, in Google Benchmark's form.
std::string measured(std::string const& name, double cpuTime, std::string const& more = "")
{
    return R"({"name": ")" + name + R"(", "run_name": ")" + name +
           R"(", "run_type": "iteration", "time_unit": "us", )" + R"("real_time": 1000, "cpu_time": )" +
           std::to_string(cpuTime) + more + "}";
}

/// The script in a tree of its own, with these targets and results.
class BenchmarkScript {
public:
    explicit BenchmarkScript(std::string const& targets) { writeFile(tree_ / "benchmarks/targets.txt", targets); }

    void has(std::vector<std::string> const& results) const
    {
        std::string text;
        for (std::string const& result : results)
            text += (text.empty() ? "" : ",\n") + result;
        writeFile(tree_ / "build/benchmark/results/zelm_core_benchmarks.json",
                  R"({"context": {"date": "today", "num_cpus": 2, "mhz_per_cpu": 2600}, "benchmarks": [)" + text +
                      "]}");
    }
    void leftOut(std::string const& line) const { writeFile(tree_ / "build/benchmark/benchmarks/left_out", line); }

    ChildResult report(std::vector<std::string> arguments = {}) const
    {
        arguments.insert(arguments.begin(), "--report");
        return tree_.run("scripts/benchmark", arguments);
    }

private:
    ScriptTree const tree_;
};

/// The cells of the table's row that begins with these words, blanks left out; empty if there is none.
std::vector<std::string> rowOf(std::string const& table, std::string const& what, std::string const& against)
{
    for (auto const& line : linesOf(table)) {
        std::vector<std::string> cells;
        std::istringstream columns(line);
        for (std::string cell; std::getline(columns, cell, '|');) {
            auto const begin = cell.find_first_not_of(' ');
            cells.push_back(begin == std::string::npos ? ""
                                                       : cell.substr(begin, cell.find_last_not_of(' ') + 1 - begin));
        }
        if (cells.size() > 7 && cells[1] == what && cells[2] == against)
            return {std::next(cells.begin(), 3), std::next(cells.begin(), 8)};
    }
    return {};
}

}  // namespace

TEST(BenchmarkScript, showsItsUsageAndRefusesWhatItDoesntKnow)
{
    ScriptTree const tree;
    auto const help = tree.run("scripts/benchmark", {"--help"});
    EXPECT_THAT(help.out, HasSubstr("usage: scripts/benchmark "));
    EXPECT_EQ(help.status, 0);

    auto const usage =
        "; usage: scripts/benchmark [--help] [--check] [--quick | --report] [--repetitions N] [ROW...]\n";
    auto const unknown = tree.run("scripts/benchmark", {"--fast"});
    EXPECT_EQ(unknown.err, std::string("benchmark: unrecognized arguments: --fast") + usage);
    EXPECT_EQ(unknown.status, 2);

    auto const none = tree.run("scripts/benchmark", {"--repetitions", "0"});
    EXPECT_EQ(none.err,
              std::string("benchmark: argument --repetitions: it takes a whole number from 1 on, not \"0\"") + usage);
    EXPECT_EQ(none.status, 2);
    EXPECT_FALSE(tree.hasBegunToWork());
}

TEST(BenchmarkScript, judgesTheRatioByTheTargetAndFailsTheCheckBeyondATenth)
{
    struct Case {
        char const* why;
        char const* what;
        char const* target;
        double ours, theirs;
        char const *ratio, *met;
    };
    Case const cases[] = {
        {"just met", "a", "at most 0.5", 50, 100, "0.50", "yes"},
        {"missed by less than a tenth", "b", "at most 0.5", 54, 100, "0.54", "nearly"},
        {"missed by more", "c", "at most 0.5", 56, 100, "0.56", "NO"},
        {"at least so many times faster", "d", "at least 4", 25, 100, "4 x", "yes"},
        {"a tenth slower than that", "e", "at least 4", 27, 100, "3.7 x", "nearly"},
        {"much slower than that", "f", "at least 4", 50, 100, "2 x", "NO"},
    };
    std::string targets;
    std::vector<std::string> results;
    for (auto const& row : cases) {
        targets += std::string(row.what) + " | peer | " + row.target + "\n";
        results.push_back(measured(std::string(row.what) + "/ours", row.ours));
        results.push_back(measured(std::string(row.what) + "/peer", row.theirs));
    }
    BenchmarkScript const script(targets);
    script.has(results);

    auto const report = script.report();
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_THAT(rowOf(report.out, row.what, "peer"), ElementsAre(_, "100 us", row.ratio, row.target, row.met));
    }
    EXPECT_THAT(report.out, HasSubstr("\nbenchmark: 2 of 6 targets are met\n"));
    EXPECT_EQ(report.err, "");
    EXPECT_EQ(report.status, 0);

    auto const check = script.report({"--check"});
    EXPECT_EQ(check.err, "benchmark: c against peer: 0.56, expected at most 0.5\n"
                         "benchmark: f against peer: 2 x, expected at least 4\n");
    EXPECT_EQ(check.status, 1);
}

TEST(BenchmarkScript, takesTheMedianOfAllRepetitions)
{
    BenchmarkScript const script("read | peer | at most 0.5\n");
    script.has(
        {measured("read/ours", 10), measured("read/ours", 90), measured("read/ours", 30), measured("read/peer", 100)});

    EXPECT_THAT(rowOf(script.report().out, "read", "peer"),
                ElementsAre("30 us", "100 us", "0.30", "at most 0.5", "yes"));
}

TEST(BenchmarkScript, comparesWallTimeOfThoseThatAreMeasuredByIt)
{
    BenchmarkScript const script("pump/2 | peer | at least 2\n");
    script.has({measured("pump/ours/2/real_time", 1), measured("pump/peer/2/threads:2", 3000)});

    EXPECT_THAT(rowOf(script.report().out, "pump/2", "peer"), ElementsAre("1 ms", "3 ms", "3 x", "at least 2", "yes"));
}

TEST(BenchmarkScript, judgesCountersByThemselvesOrAgainstAnother)
{
    BenchmarkScript const script("find/4 | ours | allocations at most 0\n"
                                 "keep/4 | ours | allocations at most 2\n"
                                 "keep/4 | peer | bytes at most 1.2\n");
    script.has({measured("find/ours/4", 1, R"(, "allocations": 1)"),
                measured("keep/ours/4", 1, R"(, "allocations": 2, "bytes": 5000)"),
                measured("keep/peer/4", 1, R"(, "bytes": 4000)")});
    auto const child = script.report({"--check"});

    EXPECT_THAT(rowOf(child.out, "find/4", ""), ElementsAre("1", "", "", "allocations at most 0", "NO"));
    EXPECT_THAT(rowOf(child.out, "keep/4", ""), ElementsAre("2", "", "", "allocations at most 2", "yes"));
    EXPECT_THAT(rowOf(child.out, "keep/4", "peer"),
                ElementsAre("5,000", "4,000", "1.25", "bytes at most 1.2", "nearly"));
    EXPECT_EQ(child.err, "benchmark: find/4 against ours: 1, expected allocations at most 0\n");
    EXPECT_EQ(child.status, 1);
}

TEST(BenchmarkScript, countsNothingThatOnlyTheFirstOfManyIterationsDoes)
{
    BenchmarkScript const script("find/4 | ours | allocations at most 0\n");
    script.has({measured("find/ours/4", 1, R"(, "allocations": 0.0004)")});

    EXPECT_EQ(script.report({"--check"}).status, 0);

    script.has({measured("find/ours/4", 1, R"(, "allocations": 0.25)")});

    EXPECT_EQ(script.report({"--check"}).status, 1);
}

TEST(BenchmarkScript, judgesNothingAgainstAPeerThatIsLeftOut)
{
    BenchmarkScript const script("read/small | peer | at most 0.5\n");
    script.has({measured("read/ours/small", 50)});
    script.leftOut("core peer: the package Peer isn't there\n");
    auto const child = script.report({"--check"});

    EXPECT_THAT(rowOf(child.out, "read/small", "peer"), ElementsAre("50 us", "-", "-", "at most 0.5", "left out"));
    EXPECT_THAT(child.out, HasSubstr("\nleft out: core peer: the package Peer isn't there\n"));
    EXPECT_EQ(child.status, 0);
}

TEST(BenchmarkScript, failsForATargetWithoutABenchmark)
{
    BenchmarkScript const script("raed/small | peer | at most 0.5\n");
    script.has({measured("read/ours/small", 50), measured("read/peer/small", 100)});
    script.leftOut("messaging peer: the package Peer isn't there\n");
    auto const child = script.report();

    EXPECT_EQ(child.err, "benchmark: raed/small against peer: no such benchmark, or nothing to compare\n");
    EXPECT_EQ(child.status, 1);
}

TEST(BenchmarkScript, failsIfABenchmarkGaveUp)
{
    BenchmarkScript const script("");
    script.has({measured("read/ours/small", 0, R"(, "error_occurred": true, "error_message": "no data")")});
    auto const child = script.report();

    EXPECT_EQ(child.err, "benchmark: read/ours/small: no data\n");
    EXPECT_EQ(child.status, 1);
}

TEST(BenchmarkScript, listsComparisonsWithoutATargetBehindTheOthers)
{
    BenchmarkScript const script("read/small | peer | at most 0.5\n");
    script.has({measured("read/floor/small", 10), measured("read/ours/small", 50), measured("read/peer/small", 100)});
    auto const child = script.report();

    EXPECT_THAT(rowOf(child.out, "read/small", "floor"), ElementsAre("50 us", "10 us", "5.00", "", ""));
    EXPECT_LT(child.out.find("| peer "), child.out.find("| floor "));
}

TEST(BenchmarkScript, showsTheChosenRowsAlone)
{
    BenchmarkScript const script("read/small | peer | at most 0.5\nread/large | peer | at most 0.5\n"
                                 "write/small | peer | at most 0.5\n");
    script.has({measured("read/ours/small", 50), measured("read/peer/small", 100), measured("read/ours/large", 50),
                measured("read/peer/large", 100), measured("write/ours/small", 90), measured("write/peer/small", 100)});

    EXPECT_THAT(script.report({"re*"}).out, Not(HasSubstr("write/small")));
    auto const one = script.report({"--check", "read/small"});
    EXPECT_THAT(one.out, HasSubstr("read/small"));
    EXPECT_THAT(one.out, Not(HasSubstr("read/large")));
    EXPECT_EQ(one.status, 0);
    EXPECT_EQ(script.report({"--check"}).status, 1);
}

TEST(BenchmarkScript, namesEachLineOfATargetThatItCantRead)
{
    struct Case {
        char const *why, *line, *fault;
    };
    Case const cases[] = {
        {"a comment", "# a comment", nullptr},
        {"with a comment behind it", "first | peer | at most 1.5  # another", nullptr},
        {"nothing", "", nullptr},
        {"two fields", "read | at most 1", "expected three fields, \"row/case | against | at most X\""},
        {"no row", "Read it | peer | at most 1", "\"Read it\" is no row/case"},
        {"nobody", "read | | at most 1", "\"\" is nobody to compare with"},
        {"no bound", "read | peer | 0.5",
         "\"0.5\" is neither \"at most X\" nor \"at least X\", with or without a counter before"},
        {"a negative limit", "read | peer | at most -1",
         "\"at most -1\" is neither \"at most X\" nor \"at least X\", with or without a counter before"},
        {"an unknown counter", "read | peer | items at most 1",
         "\"items at most 1\" is neither \"at most X\" nor \"at least X\", with or without a counter before"},
        {"more allocations wanted", "read | ours | allocations at least 1",
         "of allocations the fewer the better: \"at most\""},
        {"time against itself", "read | ours | at most 1", "a time is compared with somebody else's"},
        {"a bound that always holds", "read | peer | at least 0", "every time is at least 0 times faster"},
        {"said twice", "first | peer | at most 2", "line 2 says what is expected of it"},
        {"another counter of the same", "first | peer | allocations at most 2", nullptr},
    };
    std::string targets, faults;
    int line = 0;
    for (auto const& row : cases) {
        targets += std::string(row.line) + "\n";
        ++line;
        if (row.fault)
            faults += "benchmark: benchmarks/targets.txt:" + std::to_string(line) + ": " + row.fault + "\n";
    }
    auto const child = BenchmarkScript(targets).report();

    EXPECT_EQ(child.err, faults);
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.status, 1);
}

}  // namespace Zelm::Testing
