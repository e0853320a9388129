// OpenSSL's EVP_EncodeBlock and EVP_DecodeBlock: the forms for data in one piece, which put no line breaks into the
// text and are the faster ones. The caller sizes the buffer.
#include "core/bytes.h"
#include "support/agreement.h"
#include "support/allocations.h"

#include <openssl/evp.h>

namespace Zelm::Benchmarks {

namespace {

std::string encoded(Bytes const& bytes)
{
    std::string text((bytes.size() + 2) / 3 * 4, '\0');  // the terminating NUL has its place behind the string
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(), static_cast<int>(bytes.size()));
    return text;
}

/// The padding's bytes are written too, as zeros: the caller has to count them.
Bytes decoded(std::string const& text)
{
    Bytes bytes(text.size() / 4 * 3);
    auto const* const begin = reinterpret_cast<unsigned char const*>(text.data());
    int const size = EVP_DecodeBlock(bytes.data(), begin, static_cast<int>(text.size()));
    auto const padding = text.size() - 1 - text.find_last_not_of('=');
    bytes.resize(static_cast<std::size_t>(size) - padding);
    return bytes;
}

void encode(benchmark::State& state)
{
    Bytes const& bytes = mebibyte();
    CountedAllocations const counted(state);
    for (auto _ : state) {
        std::string const text = encoded(bytes);
        benchmark::DoNotOptimize(text.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(encode)->Name("base64_encode/openssl/1MiB");

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
BENCHMARK(decode)->Name("base64_decode/openssl/1MiB");

Agreement const sameText("OpenSSL's Base64 text is ours", [] { return encoded(mebibyte()) == mebibyteText(); });
Agreement const sameBytes("OpenSSL decodes our Base64 text", [] { return decoded(mebibyteText()) == mebibyte(); });

}  // namespace

}  // namespace Zelm::Benchmarks
