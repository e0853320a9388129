// The components map: any text is the map file of an installation, and what two starts in a row make of it, what they
// print and write and what the map answers then, is what a model says that spells out the rules. The text is also read
// by the fast path, and the map that this makes answers as the model's does. The installation has one file that looks
// like a component library and isn't one, or none, so that no code is loaded.
//
// The first two bytes are choices. 0 takes the text as it is, 1 takes a tree and writes it as text. Then 0 has the file
// that looks like a library and the map file, 1 has no library, 2 no map, 3 neither; 4 to 7 are the same, and the
// library comes or goes between the two starts.
#include "zelm/components/components_map.h"

#include "fuzz/components/plain_map.h"
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/outcome.h"
#include "fuzz/support/trees.h"
#include "tests/support/temporary_directory.h"
#include "zelm/metadata/reader_json.h"

#include <cstdlib>
#include <filesystem>
#include <set>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;
namespace fs = std::filesystem;

namespace {

using Map = ComponentsRepository::Map;

// ---------------------------------------------------------------------------------------------------- the installation

/// Made once for each process, and removed when it exits. The library finds it by the environment.
class Installation {
public:
    Installation()
    {
        for (auto const* const name :
             {"libone.so.1.0.0", "libZelmCore.so.0", "libtwo.so", "libdot.so.", "libdir.so.1/file"})
            Testing::writeFile(library(name), "no library");
        fs::create_symlink("libone.so.1.0.0", library("libone.so.1"));
        timespec const times[] = {{writeTime, 0}, {writeTime, 0}};
        check(utimensat(AT_FDCWD, library(candidate).c_str(), times, 0) == 0, "the write time can be set");
        check(dlopen(library(candidate).c_str(), RTLD_NOW) == nullptr, "what is no library can't be loaded");
        loadError_ = dlerror();
        setenv("ZELM_DIR", directory_.path().c_str(), 1);
        unsetenv("ZELM_LibSubDir");
        unsetenv("ZELM_ComponentsMapDir");
    }

    std::string mapFile() const { return directory_ / "lib//CMP_ComponentsMap.json"; }

    /// As it is with or without the candidate, which is put in its place.
    Disk diskWith(bool hasCandidate) const
    {
        if (hasCandidate != fs::exists(library(candidate))) {
            auto const aside = directory_ / "aside";
            fs::rename(hasCandidate ? aside : library(candidate), hasCandidate ? library(candidate) : aside);
        }
        return {library(""), mapFile(), hasCandidate ? candidate : "", writeTime, loadError_};
    }

private:
    static constexpr char const* candidate = "libone.so.1.0.0";
    static constexpr long writeTime = 1700000000;

    std::string library(std::string const& name) const { return directory_ / ("lib/" + name); }

    Testing::TemporaryDirectory directory_;
    std::string loadError_;
};

// -------------------------------------------------------------------------------------------------------------- checks

/// The texts in the tree, and two more: what to look up.
void addTexts(Element const& element, std::set<std::string>& texts)
{
    if (element.GetElementType() == ElementType::String)
        texts.insert(element.asString());
    if (element.GetElementType() == ElementType::Array) {
        for (Element const& each : element.CastTo<Array>())
            addTexts(each, texts);
    }
    if (element.GetElementType() == ElementType::Object) {
        for (auto const& member : element.CastTo<Object>())
            addTexts(member.element(), texts);
    }
}

void checkMap(Map& map, PlainMap const& model)
{
    Element form;
    map.copyToMetaData(form);
    checkSame(detailsOf(form), detailsOf(model.form()), "the map holds what the model says");

    std::set<std::string> names{"", "no such name"};
    addTexts(form, names);
    for (auto const& name : names) {
        Map::Component const* found = nullptr;
        checkSame(outcomeOf([&] { found = &std::as_const(map)[name]; }), outcomeOf([&] { model.lookUp(name); }),
                  "looking a type up ends as the model says");
        if (found) {
            check(found->componentTypeName() == name && !found->error.initialized(), "what is found is usable", name);
            check(&map[name] == found, "both forms of the look-up find the same", name);
            map.findLib(found->factoryName());
        }
        checkSame(
            outcomeOf([&] { check(map.findLib(name).sharedObjectName() == name, "the library is the one", name); }),
            outcomeOf([&] { model.lookUpLibrary(name); }), "looking a library up ends as the model says");
    }
}

/// What is printed on both streams, and the result.
template <class F> std::string reportOf(F&& call)
{
    bool result = false;
    std::string out;
    auto const err = printedBy(std::cerr, [&] { out = outcomeOf([&] { result = call(); }); });
    return "out: " + out + "\nerr: " + err + (result ? "true" : "false");
}

/// A start with that map file. Returns what the file holds then.
std::string checkStart(std::optional<std::string> const& text, Disk const& disk)
{
    Map map;
    auto const report = reportOf([&] { return initializeSourceMap(map); });
    PlainMap model;
    auto const plainReport = reportOf([&] { return model.initialise(text, disk); });
    checkSame(report, plainReport, "a start ends as the model says");
    checkMap(map, model);

    auto file = Testing::readFile(disk.mapFile);
    checkSame(file, model.isBuilt() ? Json::metaDatatoJsonString(model.form().CastTo<Object>()) : *text,
              "the file is written if the map was built, and only then");
    return file;
}

/// The same map out of the fast path's reading.
void checkReading(std::string const& text)
{
    Element const element(Json::jsonStringtoMetaData(text));
    Map map;
    PlainMap model;
    checkSame(outcomeOf([&] { map.copyFromMetaData(element); }), outcomeOf([&] { model.read(element); }),
              "reading a map ends as the model says");
    checkMap(map, model);
}

void checkInstallation(Input& input)
{
    static Installation const installation;
    bool const isTree = input.choice(2) == 1;
    unsigned const choice = input.choice(8);
    bool const hasLibrary = choice % 2 == 0;
    bool const hasMap = choice % 4 < 2;
    bool const changes = choice >= 4;
    std::string text(input.rest());
    if (isTree) {
        Object object;
        Element const tree = TreeReader(text).next();
        if (tree.GetElementType() == ElementType::Object)
            object = tree.CastTo<Object>();
        text = Json::metaDatatoJsonString(object);
    }

    checkReading(text);
    Disk const disk = installation.diskWith(hasLibrary);
    fs::remove(disk.mapFile);
    if (hasMap)
        Testing::writeFile(disk.mapFile, text);
    auto const file = checkStart(hasMap ? std::optional(text) : std::nullopt, disk);
    checkStart(file, installation.diskWith(changes ? !hasLibrary : hasLibrary));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Input input(data, size);
    printedBy(std::cout, [&] { checkInstallation(input); });  // what isn't looked at goes nowhere
    return 0;
}
