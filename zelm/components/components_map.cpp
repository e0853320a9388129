#include "zelm/components/components_map.h"

#include "zelm/core/exceptions.h"

#include <algorithm>
#include <utility>

namespace Zelm {

std::vector<int> const codeVersion{1, 1, 0};

namespace {

/// The strings from the last to the first, one on each line: the newest message stands first.
std::string newestFirst(std::vector<std::string> const& messages)
{
    std::string text;
    for (auto message = messages.rbegin(); message != messages.rend(); ++message) {
        if (message != messages.rbegin())
            text += '\n';
        text += *message;
    }
    return text;
}

template <class Row, class Reflector>
Row const* firstRow(std::vector<Row> const& rows, Reflector Row::*key, std::string const& wanted)
{
    auto const found = std::find_if(rows.begin(), rows.end(), [&](Row const& row) { return (row.*key)() == wanted; });
    return found == rows.end() ? nullptr : &*found;
}

}  // namespace

// ------------------------------------------------------------------------------------------------------------ the rows

ComponentsRepository::Map::Component::Component() : Component("", "") {}

ComponentsRepository::Map::Component::Component(std::string const& typeName, std::string const& factory)
    : componentTypeName(this, "ComponentTypeName", typeName), factoryName(this, "FactoryName", factory),
      error(this, "Error")
{
}

// The reflectors are built anew, as each has to register with its own object.
ComponentsRepository::Map::Component::Component(Component const& other)
    : Component(other.componentTypeName(), other.factoryName())
{
    error = other.error;
}

ComponentsRepository::Map::Component::~Component() = default;

ComponentsRepository::Map::LibInfo::LibInfo() : LibInfo("", 0) {}

ComponentsRepository::Map::LibInfo::LibInfo(std::string const& name, int timeStamp)
    : sharedObjectName(this, "SharedObjectName", name), sharedObjectTimeStamp(this, "SharedObjectTimeStamp", timeStamp),
      error(this, "Error")
{
}

ComponentsRepository::Map::LibInfo::LibInfo(LibInfo const& other)
    : LibInfo(other.sharedObjectName(), other.sharedObjectTimeStamp())
{
    error = other.error;
}

ComponentsRepository::Map::LibInfo::~LibInfo() = default;

// ------------------------------------------------------------------------------------------------------------- the map

ComponentsRepository::Map::Map()
    : version(this, "Version", codeVersion), components(this, "Components", true),
      sharedLibraries(this, "SharedLibraries", true), errors(this, "Errors", false)
{
    version.setEncoded(false);  // the file shows the version as plain numbers
}

ComponentsRepository::Map::~Map() = default;

ComponentsRepository::Map::Component const&
ComponentsRepository::Map::operator[](std::string const& componentType) const
{
    // The first row decides, whatever the later ones of the same type say.
    if (auto const* const row = firstRow(components(), &Component::componentTypeName, componentType)) {
        if (row->error.initialized())
            throw Exception::FailedToCreateComponent(componentType, row->error());
        if (auto const* const library = firstRow(sharedLibraries(), &LibInfo::sharedObjectName, row->factoryName())) {
            if (library->error.initialized())
                throw Exception::FailedToCreateComponent(componentType, library->error());
            return *row;
        }
    }
    throw Exception::MissingComponent(componentType, errors.initialized() ? newestFirst(errors()) : "No entry found");
}

ComponentsRepository::Map::Component& ComponentsRepository::Map::operator[](std::string const& componentType)
{
    return const_cast<Component&>(std::as_const(*this)[componentType]);
}

ComponentsRepository::Map::LibInfo const& ComponentsRepository::Map::findLib(std::string const& libraryName) const
{
    if (auto const* const row = firstRow(sharedLibraries(), &LibInfo::sharedObjectName, libraryName))
        return *row;
    throw Exception::MissingLibrary(libraryName, "No entry found");
}

}  // namespace Zelm
