/// @file
/// Reading the text files of the proc file system, with bounds: nothing here trusts that a file is short, complete or
/// well formed.
///
///     std::string const content = readProcFile("/proc/meminfo");
///     std::string_view rest = content;
///     while (auto line = nextLine(rest))
///         if (nextWord(*line) == "MemTotal:")
///             if (auto const total = toUnsigned(nextWord(*line))) ...
///
/// Thread-safety: functions without state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace HostMonitor {

/// More than any kernel writes into the files read here, thousands of cores and interfaces included.
constexpr std::size_t procFileLimit = 4UL * 1024 * 1024;

/// The whole content. Throws std::runtime_error "<reason>", without the path, if the file can't be read or is larger
/// than procFileLimit.
std::string readProcFile(std::string const& path);

/// Cuts the next line off the front of `text` and returns it without its line feed; empty when nothing is left.
std::optional<std::string_view> nextLine(std::string_view& text);

/// Cuts the next word off the front of `line`, with the blanks and tabs before it; an empty word when nothing is left.
std::string_view nextWord(std::string_view& line);

/// The number if the whole word is one in decimal digits and fits 64 bits.
std::optional<std::uint64_t> toUnsigned(std::string_view word);

/// `count` units of `unit` as a long, or the largest long if it doesn't fit.
long toLong(std::uint64_t count, std::uint64_t unit = 1);

}  // namespace HostMonitor
