/// @file
/// Private to mirrored objects. The lines that tell of input that couldn't be read; they go to standard output, each
/// flushed.
///
///     printLine("Can't read ", name);
///
/// Thread-safety: that of std::cout.
#pragma once

#include <iostream>
#include <string_view>

namespace Zelm::MetaData::Private {

/// Throws nothing, even if std::cout is set to throw and fails: the line is lost then, and what it tells of goes on.
inline void printLine(std::string_view text, std::string_view end = {}) noexcept
{
    try {
        std::cout << text << end << std::endl;
    } catch (...) {
        // There is nowhere else to tell it.
    }
}

}  // namespace Zelm::MetaData::Private
