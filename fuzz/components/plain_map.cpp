#include "fuzz/components/plain_map.h"

#include "zelm/core/exceptions.h"
#include "zelm/metadata/reader_json.h"

#include <iostream>
#include <sstream>

#include <sys/stat.h>

namespace Zelm::Fuzzing {

using namespace MetaData;

namespace {

PlainObject plainComponent()
{
    PlainObject row;
    row.add<PlainValue>("ComponentTypeName", stringOf, string("")).require(string(""));
    row.add<PlainValue>("FactoryName", stringOf, string("")).require(string(""));
    row.add<PlainValue>("Error", stringOf, string(""));
    return row;
}

PlainObject plainLibrary()
{
    PlainObject row;
    row.add<PlainValue>("SharedObjectName", stringOf, string("")).require(string(""));
    row.add<PlainValue>("SharedObjectTimeStamp", integerOf<int>, integer(0)).require(integer(0));
    row.add<PlainValue>("Error", stringOf, string(""));
    return row;
}

PlainValue& fieldIn(PlainObject const& row, std::string const& name)
{
    for (auto const& field : row.fields) {
        if (field->name == name)
            return static_cast<PlainValue&>(*field);
    }
    throw std::logic_error("a row without " + name);
}

void set(PlainObject const& row, std::string const& name, Element const& value)
{
    fieldIn(row, name).value = value;
    fieldIn(row, name).init();
}

bool hasError(PlainObject const& row)
{
    return fieldIn(row, "Error").set;
}

PlainObject const* firstRow(std::vector<PlainObject> const& rows, std::string const& key, std::string const& wanted)
{
    for (auto const& row : rows) {
        if (textIn(row, key) == wanted)
            return &row;
    }
    return nullptr;
}

}  // namespace

std::string textIn(PlainObject const& row, std::string const& name)
{
    return fieldIn(row, name).value.asString();
}

PlainMap::PlainMap()
    : version_(object_.add<PlainIntArray>("Version")),
      components_(object_.add<PlainRows>("Components", plainComponent)),
      libraries_(object_.add<PlainRows>("SharedLibraries", plainLibrary)),
      errors_(object_.add<PlainArray>("Errors", stringOf))
{
    version_.require();
    version_.values = {integer(1), integer(1), integer(0)};
    components_.require();
    libraries_.require();
}

// ------------------------------------------------------------------------------------------------------------- a start

bool PlainMap::initialise(std::optional<std::string> const& text, Disk const& disk)
{
    if (text) {
        if (auto const reason = load(*text); !reason.empty()) {
            std::cerr << "Rebuilding Component Map since " << reason << '\n';
            libraries_.rows.clear();
        }
    } else {
        std::cerr << "Failed to open: " << disk.mapFile << '\n';
    }
    if (libraries_.rows.empty() || !fits(disk)) {
        build(disk);
        isBuilt_ = true;
    }
    return !libraries_.rows.empty();
}

/// Why the text can't be trusted; empty if it can.
std::string PlainMap::load(std::string const& text)
{
    try {
        std::istringstream stream(text);
        Element element;
        Object object;
        ReaderJson::Read(object, stream);
        read(object);
    } catch (...) {
        return "couldn't load Components Map";
    }
    auto const version = [this](std::size_t i) { return wholeNumberOf(version_.values[i]); };
    if (version_.values.size() < 3 || version(0) != 1 || version(1) != 1)
        return "version was invalid";
    if (version(2) > 0)
        return "patch was later than code reverting";
    if (components_.rows.empty())
        return "Component Map was missing component list";
    return libraries_.rows.empty() ? "Component Map was missing library list" : "";
}

bool PlainMap::fits(Disk const& disk) const
{
    bool isCandidateKnown = disk.candidate.empty();
    for (auto const& row : libraries_.rows) {
        auto const name = textIn(row, "SharedObjectName");
        isCandidateKnown = isCandidateKnown || name == disk.candidate;
        struct stat attributes;
        if (name.empty())
            continue;
        if (hasError(row) || stat((disk.libraries + name).c_str(), &attributes) != 0 ||
            attributes.st_mtime != wholeNumberOf(fieldIn(row, "SharedObjectTimeStamp").value))
            return false;
    }
    return isCandidateKnown;
}

void PlainMap::build(Disk const& disk)
{
    auto const oldRows = std::move(components_.rows);
    version_.values = {integer(1), integer(1), integer(0)};
    version_.encoded = false;
    components_.rows.clear();
    libraries_.rows.clear();
    errors_.values.clear();
    errors_.uninit();

    if (!disk.candidate.empty()) {
        auto const row = plainLibrary();
        set(row, "SharedObjectName", string(disk.candidate));
        set(row, "SharedObjectTimeStamp", integer(static_cast<int>(disk.writeTime)));
        set(row, "Error", string("Error loading: " + disk.libraries + disk.candidate + " -> " + disk.loadError));
        libraries_.rows.push_back(row);
    }
    for (auto const& old : oldRows) {
        // With no library that could be loaded, no type is provided any more, and each old row comes again.
        auto const row = plainComponent();
        set(row, "ComponentTypeName", fieldIn(old, "ComponentTypeName").value);
        set(row, "FactoryName", fieldIn(old, "FactoryName").value);
        if (!libraryRow(textIn(row, "FactoryName")))
            set(row, "Error", string("Library with factory is missing"));
        components_.rows.push_back(row);
    }
}

// ------------------------------------------------------------------------------------------------------------ look-ups

PlainObject const* PlainMap::libraryRow(std::string const& name) const
{
    return firstRow(libraries_.rows, "SharedObjectName", name);
}

void PlainMap::lookUpLibrary(std::string const& name) const
{
    if (!libraryRow(name))
        throw Zelm::Exception::MissingLibrary(name, "No entry found");
}

void PlainMap::lookUp(std::string const& type) const
{
    if (auto const* const row = firstRow(components_.rows, "ComponentTypeName", type)) {
        if (hasError(*row))
            throw Zelm::Exception::FailedToCreateComponent(type, textIn(*row, "Error"));
        if (auto const* const library = libraryRow(textIn(*row, "FactoryName"))) {
            if (hasError(*library))
                throw Zelm::Exception::FailedToCreateComponent(type, textIn(*library, "Error"));
            return;
        }
    }
    if (!errors_.set)
        throw Zelm::Exception::MissingComponent(type, "No entry found");
    std::string detail;
    for (auto message = errors_.values.rbegin(); message != errors_.values.rend(); ++message)
        detail += (message == errors_.values.rbegin() ? "" : "\n") + message->asString();
    throw Zelm::Exception::MissingComponent(type, detail);
}

}  // namespace Zelm::Fuzzing
