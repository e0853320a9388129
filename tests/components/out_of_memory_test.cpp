// What the repository and the components map leave behind when memory runs out.
#include "zelm/components/components_repository.h"

#include "tests/components/installed.h"
#include "tests/components/map_runs.h"
#include "tests/components/scripted.h"
#include "tests/support/child_process.h"
#include "tests/support/failing_allocator.h"
#include "zelm/components/component_factory.h"
#include "zelm/components/components_map.h"
#include "zelm/components/core_component_factory.h"
#include "zelm/metadata/reader_json.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <dlfcn.h>

namespace Zelm {
namespace {

using namespace Testing;
namespace fs = std::filesystem;

std::string const longName = "a name too long to be stored inside of a string object";

/// What a child's checks say, without what the libraries log.
std::string complaintsIn(std::string const& out)
{
    std::istringstream lines(out);
    std::string complaints;
    for (std::string line; std::getline(lines, line);)
        if (line.find("not so") == 0)
            complaints += line + '\n';
    return complaints;
}

// ------------------------------------------------------------------------------------------------- a factory's
// creators

TEST(ComponentFactoryOutOfMemory, keepsItsCreatorsAsTheyWere)
{
    class Factory : public ComponentFactory_Base {
    } factory;
    auto const makesNothing = [](auto const&) { return std::shared_ptr<ComponentInterface>(); };
    factory.addComponentCreator("first", makesNothing);

    auto const failures = failEachAllocationInTurn([&] { factory.addComponentCreator(longName, makesNothing); },
                                                   [&] { EXPECT_EQ(factory.supportedComponents().size(), 1u); });

    EXPECT_GT(failures, 0u);
    EXPECT_EQ(factory.supportedComponents().count(longName), 1u);
}

TEST(ComponentFactoryOutOfMemory, canStillTakeCreatorsOut)
{
    class Factory : public ComponentFactory_Base {
    } factory;
    for (char const* type : {"a", "b", "c"})
        factory.addComponentCreator(type, [](auto const&) { return std::shared_ptr<ComponentInterface>(); });
    std::string const type = "b";

    AllocationCount const allocations;
    factory.removeComponentCreator(type);
    factory.removeAllComponentCreators();
    auto const made = allocations.made();

    EXPECT_EQ(made, 0u);
    EXPECT_TRUE(factory.supportedComponents().empty());
}

TEST(CoreComponentFactoryOutOfMemory, canBeStartedAgain)
{
    CoreComponentFactory_Impl factory;

    failEachAllocationInTurn([&] { factory.startLifeCycle(); }, [] {});

    EXPECT_EQ(factory.supportedComponents().size(), 2u);
}

// ------------------------------------------------------------------------------------------------ instances in the
// table

/// A component that was started is in the table and so will be ended; one that isn't there was never started.
ZELM_CHILD(addsComponentsWhileMemoryRunsOut)
{
    for (auto const shortage : {Shortage::Passing, Shortage::Lasting}) {
        auto const repository = std::make_unique<ComponentsRepository>();
        bool running = false;
        auto const component =
            std::make_shared<Scripted>([&](Scripted&) { running = true; }, [&](Scripted&) { running = false; });

        auto const failures = failEachAllocationInTurn([&] { repository->addComponent(component, longName); },
                                                       [&] {
                                                           ZELM_CHECK(!running);
                                                           ZELM_CHECK(!repository->findComponent(longName));
                                                       },
                                                       shortage);

        ZELM_CHECK(failures > 1);
        ZELM_CHECK(running);
        ZELM_CHECK(repository->findComponent(longName) == component);
        AllocationCount const allocations;
        repository->removeComponent(component);
        ZELM_CHECK(allocations.made() == 0);
        ZELM_CHECK(!running);
    }
    return 0;
}

TEST(AddComponentOutOfMemory, startsNoComponentThatItCanNotKeep)
{
    auto const child = TemporaryInstallation().run("addsComponentsWhileMemoryRunsOut");
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.status, 0);
}

/// The components whose end was called, in their order.
ZELM_CHILD(releasesComponentsWhileMemoryRunsOut)
{
    ComponentsRepository repository;
    int ended = 0;
    for (char const* id : {"a", "b", "c"})
        repository.addComponent(std::make_shared<Scripted>(Scripted::Action(), [&](Scripted&) { ++ended; }), id);

    auto const failures =
        failEachAllocationInTurn([&] { repository.releaseAllComponents(); }, [&] { ZELM_CHECK(ended == 0); });

    ZELM_CHECK(failures > 0);
    ZELM_CHECK(ended == 3);
    ZELM_CHECK(!repository.findComponent("CoreComponentFactory"));
    return 0;
}

TEST(ReleaseAllComponentsOutOfMemory, endsAllOrNone)
{
    auto const child = TemporaryInstallation().run("releasesComponentsWhileMemoryRunsOut");
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.status, 0);
}

// ----------------------------------------------------------------------------------------------------- making
// components

/// Keeps the library from being loaded in the midst of a failing attempt: what runs then is the library's own.
void load(std::string const& library)
{
    ZELM_CHECK(dlopen(library.c_str(), RTLD_NOW) != nullptr);
}

/// Makes a component in a repository of its own, as the factory that a failure has left would help the next attempt.
/// Whether that got through without a failure.
bool instantiatesAnEngine(std::string const& factoryId, unsigned long successes, Shortage shortage)
{
    ComponentsRepository repository;
    std::shared_ptr<ComponentInterface> component;
    bool failed = true;
    try {
        FailingAllocation const failing(successes, shortage);
        component = repository.instantiateComponent("Engine", longName, {longName});
        failed = failing.hasFailed();
    } catch (std::bad_alloc const&) {
    }

    ZELM_CHECK(repository.findComponent(longName) == component);
    ZELM_CHECK(repository.instantiateComponent("Engine", longName, {longName})->instanceId() == longName);
    ZELM_CHECK(repository.findComponent(factoryId) != nullptr);
    return !failed;
}

/// Its argument is the path of the library "engines", whose types the map knows.
ZELM_CHILD(createsComponentsWhileMemoryRunsOut)
{
    load(childArguments().at(0));
    auto const factoryId = fs::path(childArguments().at(0)).filename().string() + "->Factory";
    for (auto const shortage : {Shortage::Passing, Shortage::Lasting}) {
        unsigned long failures = 0;
        while (!instantiatesAnEngine(factoryId, failures, shortage))
            ++failures;
        ZELM_CHECK(failures > 10);
    }
    return 0;
}

TEST(InstantiateComponentOutOfMemory, storesNothingAndSucceedsTheNextTime)
{
    InstalledEngines const installation;

    auto const child = installation.run("createsComponentsWhileMemoryRunsOut", {installation.library(engines)});

    EXPECT_EQ(complaintsIn(child.out), "");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

// -------------------------------------------------------------------------------------------------- making the map

/// What is wrong with a map file that a build has left behind; empty if nothing is.
std::string faultOf(std::string const& file, std::size_t libraries, std::string const& brokenLibrary)
{
    ComponentsRepository::Map map;
    try {
        MetaData::Object object;
        std::ifstream stream(file);
        MetaData::ReaderJson::Read(object, stream);
        map.copyFromMetaData(MetaData::Element(std::move(object)));
    } catch (std::exception const& error) {
        return error.what();
    }
    for (auto const& row : map.sharedLibraries())
        if (row.sharedObjectName() == brokenLibrary && !row.error.initialized())
            return "a library that can't be loaded has no Error";
    if (map.errors.initialized())
        return {};
    return map.components().size() < 2 || map.sharedLibraries().size() != libraries ? "rows are missing without a word"
                                                                                    : "";
}

bool makesARepository(unsigned long successes, Shortage shortage, bool& failed)
{
    std::unique_ptr<ComponentsRepository> repository;
    try {
        FailingAllocation const failing(successes, shortage);
        repository = std::make_unique<ComponentsRepository>();
        failed = failing.hasFailed();
        return true;
    } catch (std::bad_alloc const&) {
        failed = true;
        return false;
    }
}

std::ptrdiff_t openFiles()
{
    fs::directory_iterator const files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}

/// Makes a repository for each allocation that can fail. The arguments are the map file, what it holds before each
/// attempt ("none" for no file), the library that works and the one that can't be loaded.
ZELM_CHILD(makesRepositoriesWhileMemoryRunsOut)
{
    auto const& file = childArguments().at(0);
    auto const& before = childArguments().at(1);
    load(childArguments().at(2));
    auto const& broken = childArguments().at(3);

    for (auto const shortage : {Shortage::Passing, Shortage::Lasting}) {
        unsigned long failures = 0;
        for (bool failed = true; failed; failures += failed ? 1 : 0) {
            fs::remove(file);
            if (before != "none")
                writeFile(file, before);
            auto const opened = openFiles();

            bool const made = makesARepository(failures, shortage, failed);

            ZELM_CHECK(openFiles() == opened);
            bool const unchanged = fs::exists(file) ? readFile(file) == before : before == "none";
            auto const fault = unchanged ? std::string() : faultOf(file, 2, broken);
            if (!fault.empty() || (!failed && !made))
                std::cout << "not so, if memory runs out after " << failures << " allocations: " << fault << std::endl;
        }
        ZELM_CHECK(failures > 10);
    }
    return 0;
}

TEST(MapFileOutOfMemory, isWholeOrAsItWas)
{
    TemporaryInstallation installation;
    installation.add("engines");
    installation.add("undefined_symbol");
    ASSERT_EQ(installation.run("initializesAMap").status, 0);
    auto const whole = readFile(installation.mapFile());
    auto const broken = TemporaryInstallation::libraryName("undefined_symbol");
    std::string const another = MapText{{{"Oar", "libOld.so.1"}}, {{"libOld.so.1", 1}}}.text();

    for (auto const& before : {std::string("none"), whole, another}) {
        SCOPED_TRACE(before);
        auto const child = installation.run("makesRepositoriesWhileMemoryRunsOut",
                                            {installation.mapFile(), before, installation.library(engines), broken});

        EXPECT_EQ(complaintsIn(child.out), "");
        EXPECT_EQ(child.status, 0) << child.err;
    }
}

// ------------------------------------------------------------------------------------------- the process's repository

ZELM_CHILD(asksForTheRepositoryUntilMemorySuffices)
{
    auto const failures =
        failEachAllocationInTurn([] { ComponentsRepositoryInterface::getComponentsRepository(); }, [] {});

    ZELM_CHECK(failures > 10);
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    ZELM_CHECK(repository->findComponent(coreFactoryName) != nullptr);
    AllocationCount const allocations;
    ComponentsRepositoryInterface::getComponentsRepository()->findComponent(coreFactoryName);
    ZELM_CHECK(allocations.made() == 0);
    repository->addComponent(
        std::make_shared<Scripted>(Scripted::Action(), [](Scripted&) { std::cout << "ended" << std::endl; }), "a");
    return 0;
}

TEST(GetComponentsRepositoryOutOfMemory, triesAgainAtTheNextCallAndEndsItsComponentsOnce)
{
    auto const child = TemporaryInstallation().run("asksForTheRepositoryUntilMemorySuffices");

    EXPECT_EQ(child.out, "ended\n");
    EXPECT_EQ(child.status, 0) << child.err;
}

}  // namespace
}  // namespace Zelm
