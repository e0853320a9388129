#include "component_list.h"

#include "zelm/core/exceptions.h"

#include <algorithm>
#include <map>
#include <optional>
#include <ostream>
#include <string_view>
#include <vector>

#include <link.h>

namespace HostMonitor {

namespace {

using Map = Zelm::ComponentsRepository::Map;

/// Why a type of that row can't be created; empty if it can.
std::optional<std::string> reasonAgainst(Map const& map, Map::Component const& row)
{
    if (row.error.initialized())
        return row.error();
    try {
        auto const& library = map.findLib(row.factoryName());
        if (library.error.initialized())
            return library.error();
    } catch (Zelm::Exception::MissingLibrary const& failure) {
        return failure.what();
    }
    return std::nullopt;
}

struct Line {
    std::string type;
    std::string library;
    std::string reason;
};

void writeAligned(std::vector<Line> const& lines, std::ostream& out)
{
    std::size_t typeWidth = 0;
    std::size_t libraryWidth = 0;
    for (auto const& line : lines) {
        typeWidth = std::max(typeWidth, line.type.size());
        libraryWidth = std::max(libraryWidth, line.library.size());
    }
    for (auto const& line : lines) {
        out << line.type << std::string(typeWidth - line.type.size() + 2, ' ') << line.library;
        if (!line.reason.empty())
            out << std::string(libraryWidth - line.library.size() + 2, ' ') << line.reason;
        out << '\n';
    }
}

int collectObject(dl_phdr_info* info, std::size_t, void* data)
{
    std::string_view const path(info->dlpi_name ? info->dlpi_name : "");
    std::size_t const slash = path.rfind('/');
    static_cast<std::set<std::string>*>(data)->emplace(path.substr(slash == std::string_view::npos ? 0 : slash + 1));
    return 0;
}

}  // namespace

void writeComponentList(Map const& map, std::ostream& out)
{
    // In the order of the names. The repository answers from a type's first row alone, so the others don't count.
    std::map<std::string, Line> byType;
    for (auto const& row : map.components()) {
        auto const reason = reasonAgainst(map, row);
        byType.emplace(row.componentTypeName(),
                       Line{row.componentTypeName(), row.factoryName(), reason ? "can't be created: " + *reason : ""});
    }
    std::vector<Line> lines{{"TYPE", "LIBRARY", ""}};
    for (auto const& [type, line] : byType)
        lines.push_back(line);
    if (!byType.empty())
        writeAligned(lines, out);

    for (auto const& library : map.sharedLibraries())
        if (library.error.initialized())
            out << library.sharedObjectName() << ": " << library.error() << '\n';
    if (map.errors.initialized())
        for (auto const& error : map.errors())
            out << "while the map was built: " << error << '\n';
}

std::set<std::string> loadedLibraries(Map const& map)
{
    std::set<std::string> objects;
    dl_iterate_phdr(collectObject, &objects);
    std::set<std::string> result;
    for (auto const& library : map.sharedLibraries())
        if (objects.count(library.sharedObjectName()) != 0)
            result.insert(library.sharedObjectName());
    return result;
}

}  // namespace HostMonitor
