/// @file
/// An aligned table as lines of text.
///
///     Table table({{"core", Table::Align::Right}, {"load %", Table::Align::Right}});
///     table.addRow({"0", "12.5"});
///     for (auto const& line : table.lines(80)) ...
///
/// Text is taken as UTF-8 whose characters are one column wide each.
/// Thread-safety: as standard containers have it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace HostMonitor {

class Table {
public:
    enum class Align { Left, Right };
    struct Column {
        std::string heading;
        Align align;
    };

    /// The first `keys` columns tell the rows apart.
    explicit Table(std::vector<Column> columns, std::size_t keys = 0);

    /// Cells that are missing at the end are empty, those beyond the last column are dropped.
    void addRow(std::vector<std::string> cells);

    /// Headings and rows, columns two blanks apart. What doesn't fit into `width` goes below, headings again, with the
    /// key columns repeated; a single column that is wider than that still stands there whole.
    std::vector<std::string> lines(std::size_t width) const;

private:
    std::vector<std::size_t> widths() const;
    std::string line(std::vector<std::string> const& cells, std::vector<std::size_t> const& shown,
                     std::vector<std::size_t> const& widths) const;

    std::vector<Column> columns_;
    std::size_t keys_;
    std::vector<std::vector<std::string>> rows_;
};

/// The number of characters.
std::size_t displayWidth(std::string_view text);

/// At most the first `width` characters, never a part of one.
std::string_view cutToWidth(std::string_view text, std::size_t width);

}  // namespace HostMonitor
