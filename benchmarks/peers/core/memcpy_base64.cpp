// The yardstick: a buffer of the result's size, made and filled by memcpy. Nobody could be faster who hands a result of
// that size to the caller.
#include "core/bytes.h"
#include "support/allocations.h"

#include <cstring>
#include <memory>

namespace Zelm::Benchmarks {

namespace {

template <class Output> void copy(benchmark::State& state, Output const& output)
{
    CountedAllocations const counted(state);
    for (auto _ : state) {
        std::unique_ptr<char[]> const buffer(new char[output.size()]);  // not zeroed first
        std::memcpy(buffer.get(), output.data(), output.size());
        benchmark::DoNotOptimize(buffer.get());
        benchmark::ClobberMemory();
    }
}

void copyText(benchmark::State& state)
{
    copy(state, mebibyteText());
}
BENCHMARK(copyText)->Name("base64_encode/memcpy/1MiB");

void copyBytes(benchmark::State& state)
{
    copy(state, mebibyte());
}
BENCHMARK(copyBytes)->Name("base64_decode/memcpy/1MiB");

}  // namespace

}  // namespace Zelm::Benchmarks
