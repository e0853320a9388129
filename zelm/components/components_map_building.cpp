#include "zelm/components/component_factory.h"
#include "zelm/components/components_map.h"
#include "zelm/components/private/factory_function.h"
#include "zelm/components/private/library_file.h"
#include "zelm/components/private/written_map.h"
#include "zelm/core/exceptions.h"
#include "zelm/core/files.h"
#include "zelm/core/install_paths.h"
#include "zelm/core/private/file_kind.h"
#include "zelm/core/shared_library_loader.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/writer_json.h"

#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <list>
#include <locale>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

namespace Zelm {

namespace {

using Map = ComponentsRepository::Map;

std::string const& componentsMapFile()
{
    static std::string const path = zelmComponentsMapDir() + "CMP_ComponentsMap.json";
    return path;
}

Private::FileKind mapFileKind()
{
    return Private::fileKindOf(componentsMapFile().c_str());
}

/// Opens the map file. Opening a pipe waits for good for somebody at its other end, so one in the place of the map file
/// counts as a file that can't be opened.
template <class Stream> void openMapFile(Stream& file, Private::FileKind kind)
{
    if (kind != Private::FileKind::Pipe)
        file.open(componentsMapFile());
}

std::string fileNameOf(FileInfo const& file)
{
    return stripFileName(file.path, false);
}

/// Whether the path shows the core library itself or one of the libraries that it must not be confused with. Anywhere
/// in the path on purpose, directories included.
bool isExcluded(FileInfo const& file)
{
    static constexpr char const* words[] = {"ZelmCore", "QuobCore", "omniORB"};
    return std::any_of(std::begin(words), std::end(words),
                       [&](char const* word) { return file.path.find(word) != std::string::npos; });
}

void findComponentLibraries(std::list<FileInfo>& files)
{
    files =
        getFileList(zelmRoot() + componentsBinaryDir() + "*.so.*", IncludeFiles | ExcludeSymLinks | ExcludeDotNames);
    files.remove_if(isExcluded);
}

// --------------------------------------------------------------------------------------------------- trusting the file

/// Why a map that was read can't be trusted; empty if it can.
std::string_view faultOf(Map const& map)
{
    auto const& version = map.version();
    if (version.size() < codeVersion.size() || version[0] != codeVersion[0] || version[1] != codeVersion[1])
        return "version was invalid";
    if (version[2] > codeVersion[2])
        return "patch was later than code reverting";
    if (map.components().empty())
        return "Component Map was missing component list";
    if (map.sharedLibraries().empty())
        return "Component Map was missing library list";
    return {};
}

/// That of a hundred thousand libraries is half as long. What is longer isn't read before it was looked at.
constexpr std::streamoff largestWrittenForm = std::streamoff{64} << 20;  // 64 MiB

/// Takes in a text in the form that writeMap gives it, which private/written_map.h reads at once. False, with the file
/// at its beginning, if it isn't in that form.
bool readWrittenForm(Map& map, std::ifstream& file)
{
    if (std::locale() != std::locale::classic())
        return false;
    file.seekg(0, std::ios::end);
    auto const size = file.tellg();
    file.seekg(0);
    if (size <= 0 || size > largestWrittenForm)
        return false;
    std::string text(static_cast<std::size_t>(size), '\0');
    if (file.read(text.data(), size) && Private::takeWrittenForm(map, text))
        return true;
    file.clear();
    file.seekg(0);
    return false;
}

/// Takes in what the file holds and returns why it can't be trusted; empty if it can.
std::string_view readMap(Map& map, std::ifstream& file, Private::FileKind kind)
{
    try {
        if (kind != Private::FileKind::Regular || !readWrittenForm(map, file)) {
            MetaData::Object object;
            MetaData::ReaderJson::Read(object, file);
            map.copyFromMetaData(MetaData::Element(std::move(object)));
        }
        return faultOf(map);
    } catch (...) {  // whatever it is, a build mends it; it may be that there is no memory
        return "couldn't load Components Map";
    }
}

/// Fills the map from its file. Leaves it without library rows, which brings on a build, if the file isn't to be
/// trusted. The other rows stay: the build compares with them.
void loadMap(Map& map)
{
    std::ifstream file;
    auto const kind = mapFileKind();
    openMapFile(file, kind);
    if (!file.is_open()) {
        std::cerr << "Failed to open: " << componentsMapFile() << std::endl;
        return;
    }
    auto const reason = readMap(map, file, kind);
    if (reason.empty())
        return;
    std::cerr << "Rebuilding Component Map since " << reason << std::endl;
    map.sharedLibraries.reset();
}

/// Whether the library behind a row is another than the one that was scanned, or couldn't be loaded then.
bool isStale(Map::LibInfo const& row)
{
    if (row.error.initialized())
        return true;
    long lastWriteTime = 0;
    auto const path = zelmRoot() + componentsBinaryDir() + row.sharedObjectName();
    if (!getLastFileWriteTime(path.c_str(), lastWriteTime))
        return true;
    // The full time on purpose: one that doesn't fit the row's 32 signed bits never matches.
    return static_cast<long>(row.sharedObjectTimeStamp()) != lastWriteTime;
}

/// Whether the row is that of the file, as the file is now. What is listed is no symbolic link, so its write time is
/// the one that isStale would ask for once more, if it lies where isStale looks: behind a backslash in a name, which
/// counts as a delimiter, it doesn't.
bool isOf(Map::LibInfo const& row, FileInfo const& file, std::string const& directory)
{
    auto const& name = row.sharedObjectName();
    bool const isInPlace = file.path.size() == directory.size() + name.size();
    return isInPlace && fileNameOf(file) == name && !row.error.initialized() &&
           static_cast<long>(row.sharedObjectTimeStamp()) == file.lastWriteTime;
}

/// Whether the library rows say exactly what is on the disk. A row without a name is passed over.
bool fitsTheDisk(std::vector<Map::LibInfo> const& rows)
{
    std::list<FileInfo> files;
    findComponentLibraries(files);
    // The scan made the rows in the order in which it met the files, and an unchanged directory is listed in the same
    // order. Where they are equal one by one, no row is stale and no name is left: the rule below would say the same.
    auto const directory = zelmRoot() + componentsBinaryDir();
    auto const isUnchanged = [&](Map::LibInfo const& row, FileInfo const& file) { return isOf(row, file, directory); };
    if (std::equal(rows.begin(), rows.end(), files.begin(), files.end(), isUnchanged))
        return true;

    std::set<std::string> namesOnDisk;
    for (auto const& file : files)
        namesOnDisk.insert(fileNameOf(file));

    for (auto const& row : rows) {
        namesOnDisk.erase(row.sharedObjectName());
        if (!row.sharedObjectName().empty() && isStale(row))
            return false;
    }
    return namesOnDisk.empty();
}

// ------------------------------------------------------------------------------------------------------------ building

/// The row that tells how to make this type, or null if it can't be made.
Map::Component* usableRow(Map& map, std::string const& type)
{
    try {
        return &map[type];
    } catch (Exception::FailedToCreateComponent const&) {
        return nullptr;
    }
}

/// The low 32 bits.
int toTimeStamp(long lastWriteTime)
{
    return static_cast<int>(lastWriteTime);
}

void recordType(Map& map, std::string const& type, std::string const& libraryName)
{
    auto* const taken = usableRow(map, type);
    if (!taken) {
        // Also where the type's first row has an "Error" already: a row behind it is never reached, so that stands.
        map.components.edit().emplace_back(type, libraryName);
        return;
    }
    // Neither factory wins: from now on the type can't be made.
    taken->error.assign("Error processing: " + type + " - Cannot add factory: " + libraryName +
                        ", since component already has a factory: " + taken->factoryName());
}

Map::LibInfo& recordLibrary(Map& map, FileInfo const& file)
{
    return map.sharedLibraries.edit().emplace_back(fileNameOf(file), toTimeStamp(file.lastWriteTime));
}

void recordFailure(Map& map, FileInfo const& file, std::string const& reason)
{
    // Complete before it is added: a row that lost its "Error" to a lack of memory would tell of a sound library.
    Map::LibInfo row(fileNameOf(file), toTimeStamp(file.lastWriteTime));
    row.error.assign("Error loading: " + file.path + " -> " + reason);
    map.sharedLibraries.edit().push_back(row);
}

/// Loads one library and records it, with the types that its factory supports.
void scanLibrary(Map& map, FileInfo const& file)
{
    // With these files the loader would end the process, or wait for good.
    if (auto const reason = Private::reasonNotToLoad(file.path); !reason.empty())
        return recordFailure(map, file, file.path + ": " + reason);

    SharedLibraryLoader const library(file.path.c_str(), 0);
    if (!library.isLoaded())
        return recordFailure(map, file, library.errorString());
    auto const name = recordLibrary(map, file).sharedObjectName();

    auto const makeFactory = Private::factoryFunctionOf(library);
    if (!makeFactory)
        return;
    auto const factory = makeFactory();
    auto* const passive = dynamic_cast<LifeCycle::PassiveInterface*>(factory.get());
    if (!passive)
        return;

    passive->startLifeCycle();  // a factory knows its types only from now on
    for (auto const& entry : factory->supportedComponents())
        recordType(map, entry.first, name);
    passive->endLifeCycle();  // not reached if anything before it throws
}

/// A what() may be null, however odd that is, and a text can't be made of that.
std::string textOf(std::exception const& error)
{
    char const* const text = error.what();
    return text ? text : "";
}

/// Keeps a type visible that was in the map and isn't provided any more.
void keepOldRow(Map& map, Map::Component const& old, std::vector<std::string>& messages)
{
    auto const& factory = old.factoryName();
    // A type in conflict can't be made either and counts as gone on purpose: it gains a row in each build.
    if (usableRow(map, old.componentTypeName()))
        return;
    auto& row = map.components.edit().emplace_back(old.componentTypeName(), factory);
    try {
        map.findLib(factory);  // there, but without this type: its factory's refusal will tell
    } catch (Exception::MissingLibrary const&) {
        row.error.assign("Library with factory is missing");
    } catch (std::exception const& error) {
        messages.push_back(textOf(error));
    }
}

/// Puts the map together. What stops the scan is added to the messages, and the rows made until then stand.
void scan(Map& map, std::list<FileInfo> const& files, std::vector<std::string>& messages)
{
    try {
        map.version.assign(codeVersion);
        map.version.setEncoded(false);
        auto const oldRows = std::move(map.components.edit());  // nothing throws from here to the first library
        map.components.reset();
        map.sharedLibraries.reset();
        map.errors.reset();

        for (auto const& file : files)
            scanLibrary(map, file);
        for (auto const& old : oldRows)
            keepOldRow(map, old, messages);
    } catch (std::exception const& error) {
        messages.push_back(textOf(error));
    }
}

std::string writtenForm(Map const& map)
{
    MetaData::Element document;
    map.copyToMetaData(document);
    std::ostringstream text;
    text.exceptions(std::ios::badbit);  // otherwise a lack of memory cuts the text off without a word
    MetaData::WriterJson::Write(document.CastTo<MetaData::Object>(), text, true);
    return text.str();
}

/// Writes the map into its file, if that can be opened. A failure is not reported: the map in memory stands, and the
/// next start builds again. A lack of memory is the exception, and leaves the file as it was.
void writeMap(Map const& map)
{
    // Everything that needs memory comes before the opening, which empties the file: hence a buffer of our own, too.
    auto const text = writtenForm(map);
    char buffer[4096];
    std::ofstream file;
    file.rdbuf()->pubsetbuf(buffer, sizeof buffer);
    openMapFile(file, mapFileKind());
    if (!file.is_open())
        return;
    file << text;
    try {
        file.close();
    } catch (...) {  // as above
    }
}

}  // namespace

bool initializeSourceMap(ComponentsRepository::Map& map)
{
    if (map.sharedLibraries().empty())
        loadMap(map);
    if (!map.sharedLibraries().empty() && !fitsTheDisk(map.sharedLibraries()))
        map.sharedLibraries.reset();
    if (!map.sharedLibraries().empty())
        return true;

    if (buildComponentsMap(map))
        return true;
    map.sharedLibraries.reset();
    return false;
}

bool buildComponentsMap(ComponentsRepository::Map& map)
{
    std::list<FileInfo> files;
    findComponentLibraries(files);
    std::vector<std::string> messages;
    scan(map, files, messages);
    if (!messages.empty())
        map.errors.assign(messages);
    writeMap(map);
    return !map.sharedLibraries().empty();
}

}  // namespace Zelm
