#include "table.h"

#include <algorithm>
#include <utility>

namespace HostMonitor {

namespace {

constexpr std::size_t gap = 2;

/// Bytes behind the first of a UTF-8 character look like 10xxxxxx.
bool isFirstByte(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
}

void stripTrailingBlanks(std::string& text)
{
    text.erase(text.find_last_not_of(' ') + 1);
}

/// Which columns stand side by side: groups of at most `width`, each beginning with the key columns.
std::vector<std::vector<std::size_t>> groupColumns(std::vector<std::size_t> const& widths, std::size_t keys,
                                                   std::size_t width)
{
    std::vector<std::size_t> keyColumns;
    std::size_t keyWidth = 0;
    for (std::size_t i = 0; i < keys; ++i) {
        keyColumns.push_back(i);
        keyWidth += widths[i] + gap;
    }

    std::vector<std::vector<std::size_t>> groups{keyColumns};
    std::size_t used = keyWidth;
    for (std::size_t i = keys; i < widths.size(); ++i) {
        bool const isFirst = groups.back().size() == keys;
        if (!isFirst && used + widths[i] > width) {
            groups.push_back(keyColumns);
            used = keyWidth;
        }
        groups.back().push_back(i);
        used += widths[i] + gap;
    }
    return groups;
}

}  // namespace

std::size_t displayWidth(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isFirstByte));
}

std::string_view cutToWidth(std::string_view text, std::size_t width)
{
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (isFirstByte(text[i]) && ++characters > width)
            return text.substr(0, i);
    return text;
}

Table::Table(std::vector<Column> columns, std::size_t keys)
    : columns_(std::move(columns)), keys_(std::min(keys, columns_.size()))
{
}

void Table::addRow(std::vector<std::string> cells)
{
    cells.resize(columns_.size());
    rows_.push_back(std::move(cells));
}

std::vector<std::size_t> Table::widths() const
{
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        std::size_t width = displayWidth(columns_[i].heading);
        for (auto const& row : rows_)
            width = std::max(width, displayWidth(row[i]));
        result.push_back(width);
    }
    return result;
}

std::string Table::line(std::vector<std::string> const& cells, std::vector<std::size_t> const& shown,
                        std::vector<std::size_t> const& widths) const
{
    std::string result;
    for (std::size_t const column : shown) {
        if (column != shown.front())
            result.append(gap, ' ');
        auto const& cell = cells[column];
        std::size_t const padding = widths[column] - displayWidth(cell);
        if (columns_[column].align == Align::Right)
            result.append(padding, ' ').append(cell);
        else
            result.append(cell).append(padding, ' ');
    }
    stripTrailingBlanks(result);
    return result;
}

std::vector<std::string> Table::lines(std::size_t width) const
{
    std::vector<std::string> headings;
    for (auto const& column : columns_)
        headings.push_back(column.heading);

    auto const columnWidths = widths();
    std::vector<std::string> result;
    for (auto const& shown : groupColumns(columnWidths, keys_, width)) {
        result.push_back(line(headings, shown, columnWidths));
        for (auto const& row : rows_)
            result.push_back(line(row, shown, columnWidths));
    }
    return result;
}

}  // namespace HostMonitor
