#include "fuzz/support/check.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace Zelm::Fuzzing {

std::string quoted(std::string_view bytes)
{
    constexpr std::size_t longestShown = 4000;
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text = "\"";
    for (char const c : bytes.substr(0, longestShown)) {
        auto const byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            text += {'\\', c};
        } else if (byte >= ' ' && byte < 0x7F) {
            text += c;
        } else {
            text += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return text + (bytes.size() > longestShown ? "\"..." : "\"");
}

void fail(std::string_view rule, std::string_view details)
{
    // Where the fuzzer reports too, but not through std::cerr, whose buffer a target may have swapped.
    std::string const report = "BROKEN RULE: " + std::string(rule) + '\n' + std::string(details) + '\n';
    std::fwrite(report.data(), 1, report.size(), stderr);
    std::abort();
}

void checkSame(std::string_view actual, std::string_view expected, std::string_view rule)
{
    if (actual == expected)
        return;
    auto const place = std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end()).first;
    fail(rule, "actual:   " + quoted(actual) + "\nexpected: " + quoted(expected) + "\nfirst difference at offset " +
                   std::to_string(place - actual.begin()));
}

}  // namespace Zelm::Fuzzing
