// glib's one-step functions, which make a buffer of the right size and fill it.
#include "core/bytes.h"
#include "support/agreement.h"
#include "support/allocations.h"

#include <glib.h>

#include <memory>

namespace Zelm::Benchmarks {

namespace {

struct GFree {
    void operator()(void* block) const { g_free(block); }
};

void encode(benchmark::State& state)
{
    Bytes const& bytes = mebibyte();
    CountedAllocations const counted(state);
    for (auto _ : state) {
        std::unique_ptr<gchar, GFree> const text(g_base64_encode(bytes.data(), bytes.size()));
        benchmark::DoNotOptimize(text.get());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(encode)->Name("base64_encode/glib/1MiB");

void decode(benchmark::State& state)
{
    std::string const& text = mebibyteText();
    CountedAllocations const counted(state);
    for (auto _ : state) {
        gsize size = 0;
        std::unique_ptr<guchar, GFree> const bytes(g_base64_decode(text.c_str(), &size));
        benchmark::DoNotOptimize(bytes.get());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(decode)->Name("base64_decode/glib/1MiB");

Agreement const sameText("glib's Base64 text is ours", [] {
    std::unique_ptr<gchar, GFree> const text(g_base64_encode(mebibyte().data(), mebibyte().size()));
    return text.get() == mebibyteText();
});
Agreement const sameBytes("glib decodes our Base64 text", [] {
    gsize size = 0;
    std::unique_ptr<guchar, GFree> const bytes(g_base64_decode(mebibyteText().c_str(), &size));
    return Bytes(bytes.get(), bytes.get() + size) == mebibyte();
});

}  // namespace

}  // namespace Zelm::Benchmarks
