#include "zelm/components/private/written_map.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace Zelm::Private {

namespace {

using Map = ComponentsRepository::Map;

// What the text says, in pieces of the text itself.

struct TypeRow {
    std::string_view typeName;
    std::optional<std::string_view> error;
    std::string_view factoryName;
};

struct LibraryRow {
    std::optional<std::string_view> error;
    std::string_view name;
    int timeStamp = 0;
};

struct WrittenMap {
    std::vector<TypeRow> types;
    std::vector<LibraryRow> libraries;
    std::vector<int> version;
};

/// Takes a text from its front. Every function is false if something else stands there.
class Front {
public:
    explicit Front(std::string_view text) : rest_(text) {}

    bool take(std::string_view expected)
    {
        if (rest_.compare(0, expected.size(), expected) != 0)
            return false;
        rest_.remove_prefix(expected.size());
        return true;
    }

    bool take(std::string_view expected, std::string_view& string)
    {
        if (!take(expected) || !take("\""))
            return false;
        auto const size = static_cast<std::size_t>(
            std::find_if(rest_.begin(), rest_.end(), [](char c) { return !standsForItself(c); }) - rest_.begin());
        if (size == rest_.size() || rest_[size] != '"')
            return false;
        string = rest_.substr(0, size);
        rest_.remove_prefix(size + 1);
        return true;
    }

    /// Also where `expected` isn't there: the string then has no value.
    bool takeIfThere(std::string_view expected, std::optional<std::string_view>& string, std::string_view behind)
    {
        if (rest_.compare(0, expected.size(), expected) != 0)
            return true;
        return take(expected, string.emplace()) && take(behind);
    }

    bool take(std::string_view expected, int& number)
    {
        if (!take(expected))
            return false;
        auto const result = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
        if (result.ec != std::errc())
            return false;
        rest_.remove_prefix(static_cast<std::size_t>(result.ptr - rest_.data()));
        return true;
    }

private:
    /// Whether the character is itself in a JSON string, whoever reads it.
    static bool standsForItself(char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; }

    std::string_view rest_;
};

bool take(Front& front, TypeRow& row)
{
    return front.take("\t\t{\n\t\t\t\"ComponentTypeName\" : ", row.typeName) && front.take(",\n") &&
           front.takeIfThere("\t\t\t\"Error\" : ", row.error, ",\n") &&
           front.take("\t\t\t\"FactoryName\" : ", row.factoryName) && front.take("\n\t\t}");
}

bool take(Front& front, LibraryRow& row)
{
    return front.take("\t\t{\n") && front.takeIfThere("\t\t\t\"Error\" : ", row.error, ",\n") &&
           front.take("\t\t\t\"SharedObjectName\" : ", row.name) && front.take(",\n") &&
           front.take("\t\t\t\"SharedObjectTimeStamp\" : ", row.timeStamp) && front.take("\n\t\t}");
}

bool take(Front& front, int& number)
{
    return front.take("\t\t", number);
}

/// An array that isn't empty.
template <class T> bool take(Front& front, std::string_view key, std::vector<T>& values)
{
    if (!front.take(key) || !front.take("[\n"))
        return false;
    do {
        if (!take(front, values.emplace_back()))
            return false;
    } while (front.take(",\n"));
    return front.take("\n\t]");
}

bool take(Front& front, WrittenMap& map)
{
    return front.take("{\n") && take(front, "\t\"Components\" : ", map.types) && front.take(",\n") &&
           take(front, "\t\"SharedLibraries\" : ", map.libraries) && front.take(",\n") &&
           take(front, "\t\"Version\" : ", map.version) && front.take("\n}");
}

std::vector<Map::Component> rowsOf(std::vector<TypeRow> const& types)
{
    std::vector<Map::Component> rows;
    rows.reserve(types.size());
    std::string typeName;  // outside of the loop to keep their memory
    std::string factoryName;
    for (auto const& type : types) {
        auto& row = rows.emplace_back(typeName.assign(type.typeName), factoryName.assign(type.factoryName));
        if (type.error)
            row.error.assign(std::string(*type.error));
    }
    return rows;
}

std::vector<Map::LibInfo> rowsOf(std::vector<LibraryRow> const& libraries)
{
    std::vector<Map::LibInfo> rows;
    rows.reserve(libraries.size());
    std::string name;
    for (auto const& library : libraries) {
        auto& row = rows.emplace_back(name.assign(library.name), library.timeStamp);
        if (library.error)
            row.error.assign(std::string(*library.error));
    }
    return rows;
}

}  // namespace

bool takeWrittenForm(ComponentsRepository::Map& map, std::string_view text)
{
    Front front(text);
    WrittenMap written;
    if (!take(front, written))
        return false;
    auto components = rowsOf(written.types);
    auto sharedLibraries = rowsOf(written.libraries);

    // Nothing throws from here on.
    map.version.edit().swap(written.version);
    map.version.setEncoded(false);
    map.components.edit().swap(components);
    map.sharedLibraries.edit().swap(sharedLibraries);
    map.errors.reset();
    return true;
}

}  // namespace Zelm::Private
