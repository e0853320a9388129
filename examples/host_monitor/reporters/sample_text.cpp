#include "sample_text.h"

#include "field_text.h"
#include "table.h"

#include "host_monitor/addresses.h"
#include "zelm/metadata/element.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <iterator>
#include <set>
#include <string_view>

namespace HostMonitor {

using Zelm::MetaData::Array;
using Zelm::MetaData::Element;
using Zelm::MetaData::ElementType;
using Zelm::MetaData::Object;

namespace {

constexpr char const* indentation = "  ";

bool isListOfObjects(Element const& element)
{
    if (element.GetElementType() != ElementType::Array)
        return false;
    auto const& array = element.CastTo<Array>();
    return std::all_of(array.begin(), array.end(),
                       [](Element const& entry) { return entry.GetElementType() == ElementType::Object; });
}

/// The columns for these rows: texts first, as they say what a row is about, then numbers, an error last.
struct Columns {
    std::vector<std::string> names;
    std::size_t texts = 0;
};

Columns columnsOf(std::vector<Object const*> const& rows)
{
    std::set<std::string> texts;
    std::set<std::string> others;
    bool hasError = false;
    for (auto const* row : rows)
        for (auto const& member : *row) {
            if (member.name() == "error")
                hasError = true;
            else
                (member.element().GetElementType() == ElementType::String ? texts : others).insert(member.name());
        }
    Columns result;
    result.texts = texts.size();
    result.names.assign(texts.begin(), texts.end());
    // A field that is text in one row and not in another stands among the texts.
    std::set_difference(others.begin(), others.end(), texts.begin(), texts.end(), std::back_inserter(result.names));
    if (hasError)
        result.names.emplace_back("error");
    return result;
}

std::vector<std::string> cellsOf(Object const& row, std::vector<std::string> const& names)
{
    std::vector<std::string> cells;
    for (auto const& name : names) {
        auto const member = row.find(name);
        cells.push_back(member == row.end() ? "-" : fieldText(name, member->element()));
    }
    return cells;
}

void appendTable(std::vector<Object const*> const& rows, std::size_t width, std::vector<std::string>& lines)
{
    auto const columns = columnsOf(rows);
    if (columns.names.empty())
        return;
    std::vector<Table::Column> headings;
    for (auto const& name : columns.names) {
        bool const isText = headings.size() < columns.texts || name == "error";
        headings.push_back({fieldHeading(name), isText ? Table::Align::Left : Table::Align::Right});
    }
    Table table(headings, columns.texts);
    for (auto const* row : rows)
        table.addRow(cellsOf(*row, columns.names));
    std::size_t const indent = std::string_view(indentation).size();
    for (auto const& line : table.lines(width > indent ? width - indent : 0))
        lines.push_back(indentation + line);
}

/// What every reading has as a message: the heads say what matters of it.
bool isOfEveryMessage(std::string_view name)
{
    constexpr std::array<std::string_view, 6> names{"DestID", "MessageID", "MsgUUID", "SenderID", "sequence", "time"};
    return std::find(names.begin(), names.end(), name) != names.end();
}

void appendReading(Object const& reading, std::size_t width, std::vector<std::string>& lines)
{
    Object own;
    std::vector<Array const*> lists;
    for (auto const& member : reading) {
        if (isOfEveryMessage(member.name()))
            continue;
        if (isListOfObjects(member.element()))
            lists.push_back(&member.element().CastTo<Array>());
        else
            own.insert(member);
    }
    appendTable({&own}, width, lines);
    for (auto const* list : lists) {
        std::vector<Object const*> rows;
        for (auto const& entry : *list)
            rows.push_back(&entry.CastTo<Object>());
        appendTable(rows, width, lines);
    }
}

/// In the local time zone; "-" for a time beyond the calendar.
std::string timeText(long milliseconds)
{
    std::time_t const seconds = milliseconds / 1000;
    std::tm local{};
    char buffer[64];
    if (!localtime_r(&seconds, &local))
        return "-";
    return {buffer, std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &local)};
}

}  // namespace

std::vector<std::string> sampleLines(Sample const& sample, std::size_t width)
{
    long newest = 0;
    for (auto const& reading : sample)
        newest = std::max(newest, reading->time());

    std::vector<std::string> lines{timeText(newest)};
    for (auto const& reading : sample) {
        Element tree;
        reading->copyToMetaData(tree);
        lines.emplace_back();
        lines.push_back(
            fieldText("sensor", Element(Zelm::MetaData::Trivial_T<std::string>(instanceIn(reading->senderID())))));
        appendReading(std::as_const(tree).CastTo<Object>(), width, lines);
    }
    return lines;
}

}  // namespace HostMonitor
