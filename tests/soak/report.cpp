#include "report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <functional>
#include <limits>

namespace Soak {

namespace {

/// How much the heap may grow between the beginning and the end of what is judged. The threads' caches of freed blocks,
/// which count as handed out, are switched off (scripts/soak does it with GLIBC_TUNABLES). What is left are this
/// program's own notes of its rounds, and the memory that threads keep to make elements of: how much of it lies idle
/// goes by who was quick in a round, so that rounds differ by half a megabyte.
constexpr double heapGrowthKB = 512;
/// Resident memory isn't as exact: how many pages the allocator keeps goes by where in its arenas the last blocks of a
/// round happen to lie, and by how much of the libraries' code has been used by now.
constexpr double residentGrowthKB = 4096;

/// The share of the rounds in which memory may find its level.
constexpr std::size_t warmUpShare = 4;

[[gnu::format(printf, 1, 2)]] std::string text(char const* format, ...)
{
    std::array<char, 400> buffer{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    va_end(arguments);
    return buffer.data();
}

/// The rounds behind the warm-up, at least one.
std::vector<Round> judgedRounds(std::vector<Round> const& rounds)
{
    auto const warmUp = std::min(rounds.size() - 1, std::max<std::size_t>(rounds.size() / warmUpShare, 1));
    return {rounds.begin() + static_cast<std::ptrdiff_t>(warmUp), rounds.end()};
}

Trend trend(std::vector<Round> const& rounds, std::function<double(Round const&)> const& value)
{
    std::vector<Sample> samples;
    for (auto const& round : rounds)
        samples.push_back({round.minutes, value(round)});
    return trendOf(samples);
}

void judge(StandardOutput& output, char const* name, char const* unit, Trend const& trend, double allowed,
           Faults& faults)
{
    double const growth = trend.end - trend.start;
    std::string const limit = std::isfinite(allowed) ? text("at most %+.0f", allowed) : "not judged in this build";
    output.tell(text("%-16s %8.0f%s at the start, %8.0f%s at the end: %+.0f (%s), %+.1f a minute", name, trend.start,
                     unit, trend.end, unit, growth, limit.c_str(), trend.slopePerMinute));
    if (growth > allowed)
        faults.add(text("%s: grown by %.0f%s", name, growth, unit));
}

}  // namespace

std::string lineTitles()
{
    return "  time   messages/s  resident kB (busy)      heap kB  descriptors  threads  children";
}

std::string lineOf(std::vector<Round> const& rounds)
{
    auto const& round = rounds.back();
    Round const before = rounds.size() > 1 ? rounds[rounds.size() - 2] : Round();
    double const seconds = (round.minutes - before.minutes) * 60;
    return text("%3d:%02d %12.0f %12.0f (%7.0f) %11.0f %12ld %8ld %9lu", static_cast<int>(round.minutes),
                static_cast<int>(round.minutes * 60) % 60,
                static_cast<double>(round.handled - before.handled) / seconds, round.quiet.residentKB, round.busyKB,
                round.quiet.heapKB, round.quiet.descriptors, round.quiet.threads, round.children);
}

bool tellReport(StandardOutput& output, Results const& results, Faults& faults)
{
    unsigned long lost = 0;
    unsigned long repeated = 0;
    output.tell(text("\n%-16s %14s %14s %8s %9s", "receiver", "published", "received", "lost", "repeated"));
    for (auto const& account : results.accounts) {
        output.tell(text("%-16s %14lu %14lu %8lu %9lu", account.receiver.c_str(), account.expected, account.received,
                         account.lost, account.repeated));
        lost += account.lost;
        repeated += account.repeated;
    }
    output.tell(
        text("the table showed %lu and told of %lu that came too fast", results.shownByTable, results.droppedByTable));

    auto const& rounds = results.rounds;
    auto const judged = judgedRounds(rounds);
    output.tell(text("\n%.1f minutes, %zu rounds, %zu of them to warm up; %lu sensors, %u at a time; %lu visits",
                     rounds.back().minutes, rounds.size(), rounds.size() - judged.size(), results.sensors,
                     results.settings.sensors, results.visits));
    output.tell(text("messages         %lu published, %lu lost, %lu repeated", results.accounts.front().expected, lost,
                     repeated));
    auto const ifTold = [](double allowed) { return tellsMemory ? allowed : std::numeric_limits<double>::infinity(); };
    judge(output, "resident memory", " kB", trend(judged, [](Round const& round) { return round.quiet.residentKB; }),
          ifTold(residentGrowthKB), faults);
    judge(output, "heap in use", " kB", trend(judged, [](Round const& round) { return round.quiet.heapKB; }),
          ifTold(heapGrowthKB), faults);
    judge(output, "descriptors", "", trend(judged, [](Round const& round) { return double(round.quiet.descriptors); }),
          0, faults);
    judge(output, "threads", "", trend(judged, [](Round const& round) { return double(round.quiet.threads); }), 0,
          faults);
    output.tell(text("child processes  %lu run, %lu of them have built the map anew, %lu failed", results.children.run,
                     results.children.builtTheMap, results.children.failed));

    for (auto const& fault : faults.texts())
        output.tell("fault: " + fault);
    if (faults.count() > Faults::keptTexts)
        output.tell(text("fault: and %lu more", faults.count() - Faults::keptTexts));
    output.tell(faults.count() == 0 ? "soak: all is well" : text("soak: FAILED, %lu faults", faults.count()));
    return faults.count() == 0;
}

}  // namespace Soak
