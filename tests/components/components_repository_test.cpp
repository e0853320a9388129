#include "zelm/components/components_repository.h"

#include "tests/components/installed.h"
#include "tests/components/map_runs.h"
#include "tests/components/repository_shell.h"
#include "tests/components/scripted.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_installation.h"
#include "tests/support/vtable_slot.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <thread>
#include <type_traits>

namespace Zelm {
namespace {

using namespace Testing;
namespace fs = std::filesystem;

// ----------------------------------------------------------------------------------------------------------- constants

TEST(RepositoryConstants, holdTheirTexts)
{
    EXPECT_EQ(factorySuffix, "->Factory");
    EXPECT_EQ(coreFactoryName, "CoreComponentFactory");
}

struct BehindRepository : ComponentsRepositoryInterface {
    virtual void next() = 0;
};

TEST(RepositoryInterface, hasItsFunctionsInTheOrderThatLibrariesAreBuiltFor)
{
    EXPECT_EQ(slotOf(&ComponentsRepositoryInterface::releaseAllComponents), 0);
    EXPECT_EQ(slotOf(&ComponentsRepositoryInterface::addComponent), 1);
    EXPECT_EQ(slotOf(&ComponentsRepositoryInterface::removeComponent), 2);
    EXPECT_EQ(slotOf(&ComponentsRepositoryInterface::findComponent), 3);
    EXPECT_EQ(slotOf(&ComponentsRepositoryInterface::createComponent), 4);
    EXPECT_EQ(slotOf(&ComponentsRepositoryInterface::instantiateComponent), 5);
    EXPECT_EQ(slotOf(&BehindRepository::next), 8);
}

TEST(RepositoryErrors, haveTheirCodesAndTheRepositorysCategory)
{
    ComponentsRepositoryInterface::AlreadyInRepository already;
    ComponentsRepositoryInterface::NotInRepository notIn;
    ComponentsRepositoryInterface::ComponentRepositoryError other(5);

    EXPECT_EQ(already.code(), 0u);
    EXPECT_EQ(notIn.code(), 1u);
    EXPECT_EQ(other.code(), 5u);
    for (Error const* error :
         {static_cast<Error const*>(&already), static_cast<Error const*>(&notIn), static_cast<Error const*>(&other)})
        EXPECT_EQ(error->category(), Error::Category::ComponentRepository);
    EXPECT_EQ(already.info(), "ERROR category: 1 code: 0");
    EXPECT_EQ(notIn.info(), "ERROR category: 1 code: 1");
}

TEST(AlreadyInRepository, isFalseInABooleanTestOnPurposeAndDiffersFromNoErrorByCategory)
{
    ComponentsRepositoryInterface::AlreadyInRepository already;
    ComponentsRepositoryInterface::NotInRepository notIn;

    EXPECT_FALSE(bool(already));
    EXPECT_TRUE(bool(notIn));
    EXPECT_NE(already.category(), NoError().category());
}

// ----------------------------------------------------------------------------------------------------- locateComponent

TEST(LocateComponent, givesTheInstanceUnderAnIdAndRemovesItOnRequest)
{
    auto const a = std::make_shared<Plain>();
    std::map<std::string, std::shared_ptr<ComponentInterface>> table = {{"a", a}, {"b", std::make_shared<Plain>()}};

    EXPECT_EQ(locateComponent(table, "a", false), a);
    EXPECT_EQ(table.size(), 2u);
    EXPECT_EQ(locateComponent(table, "a", true), a);
    EXPECT_EQ(table.size(), 1u);
    EXPECT_EQ(table.count("b"), 1u);
}

TEST(LocateComponent, givesAnEmptyPointerForAnUnknownId)
{
    std::map<std::string, std::shared_ptr<ComponentInterface>> table = {{"a", std::make_shared<Plain>()}};

    EXPECT_EQ(locateComponent(table, "A", false), nullptr);
    EXPECT_EQ(locateComponent(table, "", true), nullptr);
    EXPECT_EQ(table.size(), 1u);
}

// ----------------------------------------------------------------------------------------------- making the repository

ZELM_CHILD(asksForTheRepositoryTwice)
{
    auto const first = ComponentsRepositoryInterface::getComponentsRepository();
    auto const second = ComponentsRepositoryInterface::getComponentsRepository();
    std::cout << (first && first == second ? "one" : "two");
    return 0;
}

TEST(GetComponentsRepository, givesOneRepositoryForTheProcess)
{
    EXPECT_EQ(TemporaryInstallation().run("asksForTheRepositoryTwice").out, "one");
}

ZELM_CHILD(asksForTheRepositoryFromManyThreads)
{
    std::vector<std::shared_ptr<ComponentsRepositoryInterface>> seen(8);
    std::vector<std::thread> threads;
    for (auto& each : seen)
        threads.emplace_back([&each] { each = ComponentsRepositoryInterface::getComponentsRepository(); });
    for (auto& thread : threads)
        thread.join();
    for (auto const& each : seen)
        if (!each || each != seen[0])
            return 1;
    return 0;
}

TEST(GetComponentsRepository, letsConcurrentFirstCallersWaitForOneBuilder)
{
    TemporaryInstallation installation;
    installation.add("engines");

    auto const child = installation.run("asksForTheRepositoryFromManyThreads");

    EXPECT_EQ(child.status, 0);
    EXPECT_EQ(child.out, "engines: loaded\nengines: factory starts\nengines: factory ends\n");
    EXPECT_EQ(child.err, failedToOpen(installation));
}

/// Asks for the repository, removes the library that its argument names, and asks again.
ZELM_CHILD(asksForTheRepositoryAgainAfterAFailure)
{
    try {
        ComponentsRepositoryInterface::getComponentsRepository();
    } catch (int number) {
        std::cout << "threw the number " << number << std::endl;
    }
    fs::remove(childArguments().at(0));
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    std::cout << (repository->findComponent("CoreComponentFactory") ? "works now" : "no core factory") << std::endl;
    return 0;
}

TEST(GetComponentsRepository, triesAgainAfterAConstructionThatThrew)
{
    TemporaryInstallation installation;
    installation.add("throws_a_number_in_start");

    auto const child =
        installation.run("asksForTheRepositoryAgainAfterAFailure",
                         {installation.library(TemporaryInstallation::libraryName("throws_a_number_in_start"))});

    EXPECT_EQ(child.out, "throws: factory gone\nthrew the number 42\nworks now\n");
    EXPECT_EQ(child.err, failedToOpen(installation) + failedToOpen(installation));
    EXPECT_EQ(child.status, 0);
}

TEST(Repository, isNeitherCopiedNorAssigned)
{
    EXPECT_FALSE(std::is_copy_constructible_v<ComponentsRepository>);
    EXPECT_FALSE(std::is_copy_assignable_v<ComponentsRepository>);
}

TEST(Repository, hasTheCoreFactoryRunningFromTheBeginningAlsoWithoutAnyLibrary)
{
    TemporaryInstallation const installation;

    expectLines(installation, {"find CoreComponentFactory", "types CoreComponentFactory"},
                {"> find CoreComponentFactory = #1 \"CoreComponentFactory\"",
                 "> types CoreComponentFactory = [ MessageCenter MessageQueue ]"},
                failedToOpen(installation));
}

TEST(Repository, loadsNoLibraryBeforeOneOfItsTypesIsAskedFor)
{
    InstalledEngines installation;
    installation.add("rival");
    MapText map{{{"Engine", engines}, {"Sail", TemporaryInstallation::libraryName("rival")}}, {}};
    for (auto const& name : installation.librariesInDirectoryOrder())
        map.libraries.push_back({name, writeTime});
    writeFile(installation.mapFile(), map.text());

    expectLines(installation, {"find Engine", "create Engine", "create Engine"},
                {"> find Engine = none", "engines: loaded", "engines: factory starts", "Engine(): made",
                 "> create Engine = #1 \"\"", "Engine(): made", "> create Engine = #2 \"\""});
}

TEST(Repository, findsALibraryByItsBareNameAfterAScanAndInAFreshProcess)
{
    TemporaryInstallation installation;
    installation.add("engines");
    expectLines(installation, {"create Engine"},
                {"engines: loaded", "engines: factory starts", "engines: factory ends", "engines: factory starts",
                 "Engine(): made", "> create Engine = #1 \"\""},
                failedToOpen(installation));
    expectLines(installation, {"create Engine"},
                {"engines: loaded", "engines: factory starts", "Engine(): made", "> create Engine = #1 \"\""});
}

TEST(Repository, findsALibraryElsewhereByItsBareNameOnlyInTheProcessThatScannedIt)
{
    // Where neither the program nor the core library lies, the bare name leads nowhere unless the library is loaded.
    InstalledEngines const installation;
    fs::create_directory(installation.root() + "/plugins");
    fs::rename(installation.library(engines), installation.root() + "/plugins/" + engines);
    auto const options = installation.options().set("ZELM_LibSubDir", "plugins");
    std::string const map = installation.root() + "/plugins//CMP_ComponentsMap.json";

    expectLines(options, {"create Engine"},
                {"engines: loaded", "engines: factory starts", "engines: factory ends", "engines: factory starts",
                 "Engine(): made", "> create Engine = #1 \"\""},
                "Failed to open: " + map + "\n");
    expectLines(options, {"create Engine", "find " + enginesFactory},
                {"> create Engine = FailedToLoad: Component \"" + engines + "\" failed to load: " + engines +
                     ": cannot open shared object file: No such file or directory",
                 "> find " + enginesFactory + " = none"});
}

ZELM_CHILD(instantiatesFromManyThreads)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    constexpr std::size_t threadCount = 4;
    constexpr int rounds = 50;
    std::vector<std::vector<std::shared_ptr<ComponentInterface>>> shared(threadCount);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < rounds; ++i) {
                auto const own = "own " + std::to_string(t) + "." + std::to_string(i);
                auto const mine = repository->instantiateComponent("Single", own, {});
                shared[t].push_back(repository->instantiateComponent("Single", "shared " + std::to_string(i), {}));
                if (repository->findComponent(own) != mine || !repository->createComponent("Single", {}))
                    std::cout << "not found: " << own << std::endl;
                repository->removeComponent(mine);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    for (auto const& each : shared)
        ZELM_CHECK(each == shared[0]);
    return 0;
}

TEST(Repository, makesComponentsOneAtATimeForAllThreads)
{
    auto const child = Installed("one_at_a_time", {"Single"}).run("instantiatesFromManyThreads");

    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

}  // namespace
}  // namespace Zelm
