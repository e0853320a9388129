/// @file
/// A place that shows one page of lines after the other: in the same place on a terminal, below each other elsewhere.
///
/// Thread-safety: none.
#pragma once

#include "output_file.h"

#include <cstddef>
#include <string>
#include <vector>

namespace HostMonitor {

class Screen {
public:
    /// Borrows the output. It is refreshed in place if it is a terminal that understands that, to go by TERM.
    explicit Screen(OutputFile& output);

    bool isRefreshed() const { return refreshed_; }

    /// The columns that a line may have now: the terminal's but for the last, which some of them wrap at; without a
    /// terminal there is no limit.
    std::size_t width() const;

    /// Shows the lines in place of the last page. On a terminal what doesn't fit is left out, and the last line says
    /// so: lines that have scrolled away can't be refreshed. Throws as OutputFile::write.
    void show(std::vector<std::string> const& lines);

private:
    std::string refreshing(std::vector<std::string> const& lines);

    OutputFile& output_;
    bool const refreshed_;
    std::size_t shownLines_ = 0;  // of the last page, which the cursor stands below
};

}  // namespace HostMonitor
