/// @file
/// How a fuzz target says what must hold. A check that fails prints the rule and what differs, and aborts, which the
/// fuzzer takes for a crash: it keeps the input.
///
///     check(decoded.size() == size, "decodeSize tells the number of bytes", text);
///     checkSame(again, bytes, "what was encoded decodes to itself");
#pragma once

#include <string>
#include <string_view>
#include <type_traits>

namespace Zelm::Fuzzing {

/// The bytes with all that isn't visible ASCII as an escape, in quotes; long ones cut.
std::string quoted(std::string_view bytes);

/// Prints the rule that was broken, and the details where there are any, and aborts.
[[noreturn]] void fail(std::string_view rule, std::string_view details = {});

inline void check(bool holds, std::string_view rule, std::string_view details = {})
{
    if (!holds)
        fail(rule, details);
}

/// The details are put together only where they are needed: by a call of `details`, which returns a text.
template <class Details, class = std::enable_if_t<std::is_invocable_v<Details const&>>>
void check(bool holds, std::string_view rule, Details const& details)
{
    if (!holds)
        fail(rule, details());
}

/// Both as bytes.
void checkSame(std::string_view actual, std::string_view expected, std::string_view rule);

}  // namespace Zelm::Fuzzing
