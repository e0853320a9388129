// What it costs to make a message and to destroy it, beside what no way around it could save: a new UUID as text, and
// three small strings.

#include "support/allocations.h"
#include "zelm/msgs/message.h"

#include <benchmark/benchmark.h>
#include <uuid/uuid.h>

#include <string>
#include <vector>

namespace Zelm::Benchmarks {

using namespace Msgs;

namespace {

constexpr unsigned long kind = Identifier::toValue(10, 1, 1, 7);

void withoutAddresses(benchmark::State& state)
{
    CountedAllocations const counted(state);
    for (auto _ : state) {
        Message const message(kind);
        benchmark::DoNotOptimize(&message);
        benchmark::ClobberMemory();
    }
}

void withAddresses(benchmark::State& state)
{
    std::vector<std::string> const sender{"plant 3", "line 1", "press 7"};
    std::vector<std::string> const dest{"plant 3", "office", "display"};
    CountedAllocations const counted(state);
    for (auto _ : state) {
        Message const message(kind, sender, dest);
        benchmark::DoNotOptimize(&message);
        benchmark::ClobberMemory();
    }
}

void floor(benchmark::State& state)
{
    CountedAllocations const counted(state);
    for (auto _ : state) {
        uuid_t bytes;
        char text[UUID_STR_LEN];
        uuid_generate(bytes);
        uuid_unparse(bytes, text);
        std::string const strings[] = {"plant 3", "line 1", "press 7"};
        benchmark::DoNotOptimize(&text);
        benchmark::DoNotOptimize(&strings);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(withoutAddresses)->Name("construct_message/ours/without_addresses");
BENCHMARK(withAddresses)->Name("construct_message/ours/with_addresses");
BENCHMARK(floor)->Name("construct_message/floor/without_addresses");
BENCHMARK(floor)->Name("construct_message/floor/with_addresses");

}  // namespace

}  // namespace Zelm::Benchmarks
