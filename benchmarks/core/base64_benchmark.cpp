// Base64 of a mebibyte. Whoever encodes or decodes makes a buffer for the result each time: that is what an application
// does, and what the peers' functions do by themselves.
#include "core/bytes.h"
#include "support/agreement.h"
#include "support/allocations.h"

namespace Zelm::Benchmarks {

namespace {

void encode(benchmark::State& state)
{
    Bytes const& bytes = mebibyte();
    CountedAllocations const counted(state);
    for (auto _ : state) {
        std::string text;
        encodeBase64(bytes.data(), bytes.size(), text);
        benchmark::DoNotOptimize(text.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(encode)->Name("base64_encode/ours/1MiB");

Bytes decoded(std::string const& text)
{
    Bytes bytes(decodeSize(text));
    decodeBase64(text, bytes.data(), bytes.size());
    return bytes;
}

void decode(benchmark::State& state)
{
    std::string const& text = mebibyteText();
    CountedAllocations const counted(state);
    for (auto _ : state) {
        Bytes const bytes = decoded(text);
        benchmark::DoNotOptimize(bytes.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(decode)->Name("base64_decode/ours/1MiB");

Agreement const roundTrip("our own text decodes to the bytes", [] { return decoded(mebibyteText()) == mebibyte(); });

}  // namespace

}  // namespace Zelm::Benchmarks
