// How long it takes to find the handlers of a message, by the number of subscriptions.

#include "msgs/tables.h"
#include "plain/msgs/plain_handler_lookup.h"
#include "support/agreement.h"
#include "support/allocations.h"
#include "zelm/msgs/handler_lookup.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>

namespace Zelm::Benchmarks {

using namespace Msgs;

namespace {

/// Whether both ways find the same handlers of each message, and any at all.
bool agree(Search const& search)
{
    for (auto const& message : search.messages) {
        auto const handlers = obtainMessageHandlers(message, search.table);
        if (handlers.empty() || !areFuncListsEquivalent(handlers, obtainHandlersThePlainWay(message, search.table)))
            return false;
    }
    return true;
}

Agreement const theSame("the plain way finds the same handlers, of small tables and of large ones",
                        [] { return agree(searchIn(12)) && agree(searchIn(100)) && agree(searchIn(10'000)); });

template <class Find> void findHandlers(benchmark::State& state, Find const& find)
{
    Search const& search = searchIn(static_cast<std::size_t>(state.range(0)));
    std::size_t next = 0;
    CountedAllocations const counted(state);
    for (auto _ : state) {
        auto const handlers = find(search.messages[next], search.table);
        benchmark::DoNotOptimize(handlers.data());
        if (++next == search.messages.size())
            next = 0;
    }
}

void ours(benchmark::State& state)
{
    findHandlers(state, obtainMessageHandlers);
}

void plain(benchmark::State& state)
{
    findHandlers(state, obtainHandlersThePlainWay);
}

/// A time to compare with, in cycles of whatever core this runs on: 156 steps of one cycle each, since each needs the
/// result of the one before. That is 60 ns at 2.6 GHz, and on any other core, or under any load, what 60 ns are there.
void floorOf156Cycles(benchmark::State& state)
{
    std::uint64_t value = 1;
    std::uint64_t const other = 0x5555555555555555;
    auto const step = [&] {
        value ^= other;
        asm volatile("" : "+r"(value));  // one instruction, not to be joined with its neighbours
    };
    for (auto _ : state) {
        for (int i = 0; i < 39; ++i) {
            step();
            step();
            step();
            step();
        }
    }
    benchmark::DoNotOptimize(value);
}

BENCHMARK(ours)->Name("find_handlers/ours")->Arg(12)->Arg(100)->Arg(10'000)->Arg(1'000'000);
BENCHMARK(plain)->Name("find_handlers/plain")->Arg(12)->Arg(100)->Arg(10'000)->Arg(1'000'000);
BENCHMARK(floorOf156Cycles)->Name("find_handlers/floor/12");

}  // namespace

}  // namespace Zelm::Benchmarks
