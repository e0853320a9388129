#include "zelm/components/components_repository.h"

#include "tests/components/installed.h"
#include "tests/components/map_runs.h"
#include "tests/components/repository_shell.h"
#include "tests/support/child_process.h"
#include "tests/support/no_more_files.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/temporary_installation.h"
#include "zelm/core/exceptions.h"

#include <gtest/gtest.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <iostream>

namespace Zelm {
namespace {

using namespace Testing;
namespace fs = std::filesystem;

// ----------------------------------------------------------------------------------------------------- createComponent

TEST(CreateComponent, givesANewObjectThatIsNotStartedNotNamedAndNotKept)
{
    expectLines(InstalledEngines(), {"create Engine V 8", "create Wheel", "create Engine", "find Engine"},
                {"engines: loaded", "engines: factory starts", "Engine(V, 8): made", "> create Engine V 8 = #1 \"\"",
                 "Wheel(): made", "> create Wheel = #2 \"\"", "Engine(): made", "> create Engine = #3 \"\"",
                 "> find Engine = none"});
}

TEST(CreateComponent, startsTheLibrarysFactoryOnceAndKeepsIt)
{
    expectLines(InstalledEngines(),
                {"find " + enginesFactory, "create Engine", "find " + enginesFactory, "create Wheel",
                 "find " + enginesFactory, "types " + enginesFactory},
                {"> find " + enginesFactory + " = none", "engines: loaded", "engines: factory starts", "Engine(): made",
                 "> create Engine = #1 \"\"", "> find " + enginesFactory + " = #2 \"" + enginesFactory + "\"",
                 "Wheel(): made", "> create Wheel = #3 \"\"",
                 "> find " + enginesFactory + " = #2 \"" + enginesFactory + "\"",
                 "> types " + enginesFactory + " = [ Engine Wheel ]"});
}

TEST(CreateComponent, givesANewUnstartedFactoryForATypeThatEndsInTheFactorySuffix)
{
    expectLines(InstalledEngines(),
                {"create " + enginesFactory + " ignored", "create Engine", "find " + enginesFactory,
                 "create " + enginesFactory},
                {"engines: loaded", "> create " + enginesFactory + " ignored = #1 \"\"", "engines: factory starts",
                 "Engine(): made", "> create Engine = #2 \"\"",
                 "> find " + enginesFactory + " = #3 \"" + enginesFactory + "\"",
                 "> create " + enginesFactory + " = #4 \"\""});
}

TEST(CreateComponent, takesTheFirstCreatorOfATypeThatItsLibraryRegistersTwice)
{
    expectLines(Installed("one_type_twice", {"Twice"}), {"create Twice"},
                {"one_type_twice: factory starts", "First(): made", "> create Twice = #1 \"\""});
}

TEST(CreateComponent, failsForEveryTypeWhereTheMapHasNoComponents)
{
    TemporaryInstallation installation;
    installation.add("missing_symbol");
    std::string const factory = TemporaryInstallation::libraryName("missing_symbol") + "->Factory";

    expectLines(installation, {"create Engine", "create " + factory, "create ->Factory"},
                {"missing_symbol: loaded", "> create Engine = " + failed("Engine", "No Component Repository Data"),
                 "> create " + factory + " = " + failed(factory, "No Component Repository Data"),
                 "> create ->Factory = " + failed("->Factory", "No Component Repository Data")},
                failedToOpen(installation));
}

TEST(CreateComponent, failsForATypeThatTheMapDoesntKnow)
{
    expectLines(InstalledEngines(),
                {"create Sail", "create engine", "create MessageCenter", "create CoreComponentFactory"},
                {"> create Sail = " + missing("Sail", "No entry found"),
                 "> create engine = " + missing("engine", "No entry found"),
                 "> create MessageCenter = " + missing("MessageCenter", "No entry found"),
                 "> create CoreComponentFactory = " + missing("CoreComponentFactory", "No entry found")});
}

TEST(CreateComponent, failsForAnUnknownTypeWithWhatStoppedTheScan)
{
    TemporaryInstallation installation;
    installation.add("throws_in_end");

    expectLines(installation, {"create Oar"},
                {"throws: factory starts", "throws: factory gone", "> create Oar = " + missing("Oar", "thrown in end")},
                failedToOpen(installation));
}

TEST(CreateComponent, failsForATypeWhoseLibraryTheMapDoesntKnow)
{
    InstalledEngines const installation;
    writeFile(installation.mapFile(), MapText{{{"Sail", "libOther.so.1"}}, {{engines, writeTime}}}.text());

    expectLines(installation, {"create Sail"}, {"> create Sail = " + missing("Sail", "No entry found")});
}

TEST(CreateComponent, failsWithTheErrorOfATypeInConflict)
{
    TemporaryInstallation installation;
    installation.add("engines");
    installation.add("rival");
    auto const libraries = installation.librariesInDirectoryOrder();
    installation.run("runsLines");

    expectLines(
        installation, {"create Engine", "instantiate Engine e"},
        {"> create Engine = " + failed("Engine", "Error processing: Engine - Cannot add factory: " + libraries[1] +
                                                     ", since component already has a factory: " + libraries[0]),
         "> instantiate Engine e = " +
             failed("Engine", "Error processing: Engine - Cannot add factory: " + libraries[1] +
                                  ", since component already has a factory: " + libraries[0])});
}

TEST(CreateComponent, failsWithTheErrorOfATypeWhoseLibraryIsGone)
{
    InstalledEngines const installation;
    fs::remove(installation.library(engines));

    expectLines(installation, {"create Engine"},
                {"> create Engine = " + failed("Engine", "Library with factory is missing")});
}

TEST(CreateComponent, failsWithTheErrorOfATypesLibrary)
{
    InstalledEngines const installation;
    auto const path = installation.library(engines);
    writeFile(path, "no library");

    expectLines(
        installation, {"create Engine"},
        {"> create Engine = " + failed("Engine", "Error loading: " + path + " -> " + path + ": file too short")});
}

TEST(CreateComponent, failsWhereALibraryOfTheMapCantBeLoaded)
{
    InstalledEngines const installation;
    writeFile(installation.library(engines), "no library");
    setWriteTime(installation.library(engines), writeTime);  // looks unchanged

    auto const child = installation.run("runsLines", {"create Engine", "find " + enginesFactory});

    // The loader spells the directory as it came across it.
    EXPECT_THAT(child.out, ::testing::StartsWith("> create Engine = FailedToLoad: Component \"" + engines +
                                                 "\" failed to load: " + installation.root() + "/"));
    EXPECT_THAT(child.out,
                ::testing::EndsWith("/lib/" + engines + ": file too short\n> find " + enginesFactory + " = none\n"));
}

/// Asks for an Engine while no file can be opened, and again when files can be opened.
ZELM_CHILD(createsAComponentWithoutFilesAndAgain)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    try {
        NoMoreFiles const limit;
        repository->instantiateComponent("Engine", "e", {});
    } catch (Exception::FailedToLoad const& failure) {
        std::cout << failure.what() << std::endl;
    }
    std::cout << (repository->findComponent("e") || repository->findComponent(enginesFactory) ? "kept" : "nothing kept")
              << std::endl;
    repository->instantiateComponent("Engine", "e", {});
    repository->releaseAllComponents();
    return 0;
}

TEST(CreateComponent, failsWhereALibraryCantBeOpenedAndSucceedsWhenItCan)
{
    if (underSanitizer)
        GTEST_SKIP() << "a sanitizer's runtime needs files for its own checks";
    auto const child = InstalledEngines().run("createsAComponentWithoutFilesAndAgain");

    EXPECT_THAT(
        child.out,
        ::testing::AllOf(
            ::testing::StartsWith("Component \"" + engines + "\" failed to load: " + engines + ": cannot open shared"),
            ::testing::EndsWith("\nnothing kept\nengines: loaded\nengines: factory starts\nEngine(): made\n"
                                "Engine(): starts as \"e\"\nEngine(): ends as \"e\"\nengines: factory ends\n")));
    EXPECT_EQ(child.status, 0) << child.err;
}

TEST(CreateComponent, failsNamingTheLibraryWhereThatHasNoFactoryFunction)
{
    Installed const installation("missing_symbol", {"Ghost"});
    std::string const name = TemporaryInstallation::libraryName("missing_symbol");

    expectLines(installation, {"create Ghost"},
                {"missing_symbol: loaded", "> create Ghost = " + failed(name, "Couldn't find factory function")});
}

TEST(CreateComponent, takesTheSuffixAloneForTheProgramWhichHasNoFactoryFunction)
{
    // Nor does it get one from a library, whose symbols stay private to it.
    expectLines(InstalledEngines(), {"create ->Factory", "create Engine", "create ->Factory", "create >Factory"},
                {"> create ->Factory = " + failed("", "Couldn't find factory function"), "engines: loaded",
                 "engines: factory starts", "Engine(): made", "> create Engine = #1 \"\"",
                 "> create ->Factory = " + failed("", "Couldn't find factory function"),
                 "> create >Factory = " + missing(">Factory", "No entry found")});
}

TEST(CreateComponent, findsNoFactoryFunctionInTheProgramAfterAScanEither)
{
    TemporaryInstallation installation;
    installation.add("engines");

    expectLines(installation, {"create ->Factory"},
                {"engines: loaded", "engines: factory starts", "engines: factory ends",
                 "> create ->Factory = " + failed("", "Couldn't find factory function")},
                failedToOpen(installation));
}

TEST(CreateComponent, failsNamingTheFactoryWhereItsLibraryGivesNone)
{
    std::string const factory = TemporaryInstallation::libraryName("empty_factory") + "->Factory";

    expectLines(Installed("empty_factory", {"Ghost"}), {"create Ghost", "create " + factory},
                {"empty_factory: asked", "> create Ghost = " + failed(factory, "No component factory provided"),
                 "empty_factory: asked",
                 "> create " + factory + " = " + failed(factory, "No component factory provided")});
}

TEST(CreateComponent, failsNamingTheFactoryWhereThatIsNoComponent)
{
    std::string const factory = TemporaryInstallation::libraryName("not_a_component") + "->Factory";

    expectLines(
        Installed("not_a_component", {"Homeless"}), {"create Homeless", "find " + factory},
        {"> create Homeless = " + failed(factory, "Component factory provided doesn't support ComponentInterface"),
         "> find " + factory + " = none"});
}

TEST(CreateComponent, failsWhereAnotherComponentRunsUnderTheFactorysId)
{
    expectLines(InstalledEngines(), {"add " + enginesFactory, "create Engine"},
                {"> add " + enginesFactory + " = " + success,
                 "> create Engine = " + failed(enginesFactory, "Component factory failed to load")},
                "Error loading ComponentFactory: " + enginesFactory + "\n");
}

TEST(CreateComponent, failsWhereTheFactoryMakesNothingAndKeepsTheFactory)
{
    std::string const factory = TemporaryInstallation::libraryName("declines") + "->Factory";

    expectLines(Installed("declines", {"Nothing"}),
                {"create Nothing", "instantiate Nothing n", "find n", "find " + factory},
                {"declines: factory starts",
                 "> create Nothing = " + failed("Nothing", "Component factory didn't create component"),
                 "> instantiate Nothing n = " + failed("Nothing", "Component factory didn't create component"),
                 "> find n = none", "> find " + factory + " = #1 \"" + factory + "\""});
}

TEST(CreateComponent, failsForATypeThatItsFactoryNoLongerSupports)
{
    Installed const installation("types_from_environment", {"Mast", "Oar"});
    std::string const factory = TemporaryInstallation::libraryName("types_from_environment") + "->Factory";

    expectLines(installation.options().set("FIXTURE_TYPES", "Oar"), {"create Mast", "create Oar", "find " + factory},
                {"types_from_environment: factory starts",
                 "> create Mast = " + failed("Mast", "Component factory didn't create component"), "Oar(): made",
                 "> create Oar = #1 \"\"", "> find " + factory + " = #2 \"" + factory + "\""});
}

TEST(CreateComponent, takesAFactoryThatIsNotPassiveOnceTheMapNamesIt)
{
    expectLines(Installed("not_passive", {"Unseen"}), {"create Unseen"},
                {"not_passive: factory made", "Unseen(): made", "> create Unseen = #1 \"\""});
}

struct CreationThrowsCase {
    std::string fixture;
    std::vector<std::string> log;
    std::string result;
    bool keepsTheFactory;
};

TEST(CreateComponent, passesOnWhatALibraryThrows)
{
    CreationThrowsCase const cases[] = {
        {"throws_in_factory_function", {}, "runtime_error: thrown in factory_function", false},
        {"throws_in_start", {"throws: factory gone"}, "runtime_error: thrown in start", false},
        {"throws_in_creator", {"throws: factory starts"}, "runtime_error: thrown in creator", true},
        {"throws_a_number_in_factory_function", {}, "the number 42", false},
        {"throws_a_number_in_start", {"throws: factory gone"}, "the number 42", false},
        {"throws_a_number_in_creator", {"throws: factory starts"}, "the number 42", true},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.fixture);
        std::string const factory = TemporaryInstallation::libraryName(row.fixture) + "->Factory";

        auto out = row.log;
        out.push_back("> instantiate Bomb b = " + row.result);
        out.push_back("> find b = none");
        out.push_back("> find " + factory + " = " + (row.keepsTheFactory ? "#1 \"" + factory + '"' : "none"));

        expectLines(Installed(row.fixture, {"Bomb"}), {"instantiate Bomb b", "find b", "find " + factory}, out);
    }
}

// ------------------------------------------------------------------------------------------------ instantiateComponent

TEST(InstantiateComponent, keepsTheNewObjectUnderItsIdAndStartsIt)
{
    expectLines(InstalledEngines(), {"instantiate Engine main V 8", "find main", "find Engine"},
                {"engines: loaded", "engines: factory starts", "Engine(V, 8): made", "Engine(V, 8): starts as \"main\"",
                 "> instantiate Engine main V 8 = #1 \"main\"", "> find main = #1 \"main\"", "> find Engine = none"});
}

TEST(InstantiateComponent, givesARunningInstanceAsItIsWhateverItsTypeAndArgumentsOnPurpose)
{
    expectLines(InstalledEngines(),
                {"instantiate Engine main", "instantiate Engine main V 8", "instantiate Wheel main",
                 "instantiate Unknown main", "find CoreComponentFactory", "instantiate Engine CoreComponentFactory"},
                {"engines: loaded", "engines: factory starts", "Engine(): made", "Engine(): starts as \"main\"",
                 "> instantiate Engine main = #1 \"main\"", "> instantiate Engine main V 8 = #1 \"main\"",
                 "> instantiate Wheel main = #1 \"main\"", "> instantiate Unknown main = #1 \"main\"",
                 "> find CoreComponentFactory = #2 \"CoreComponentFactory\"",
                 "> instantiate Engine CoreComponentFactory = #2 \"CoreComponentFactory\""});
}

TEST(InstantiateComponent, storesNothingWhereTheComponentsStartThrows)
{
    Installed const installation("components_that_throw", {"ThrowsInStart"});

    expectLines(installation, {"instantiate ThrowsInStart t", "find t"},
                {"components_that_throw: factory starts", "ThrowsInStart(): made",
                 "> instantiate ThrowsInStart t = runtime_error: no start for \"t\"", "> find t = none"});
}

TEST(InstantiateComponent, letsAComponentsStartCallTheRepositoryWhichDoesntKnowItYet)
{
    expectLines(InstalledCars(), {"instantiate Car c", "find c.engine"},
                {"calls_back: factory starts", "Car(): made", "Car(): starts as \"c\"",
                 "Car: itself in its start: not found", "engines: loaded", "engines: factory starts", "Engine(): made",
                 "Engine(): starts as \"c.engine\"", "> instantiate Car c = #1 \"c\"",
                 "> find c.engine = #2 \"c.engine\""});
}

TEST(InstantiateComponent, givesItsNewObjectEvenIfTheIdWasTakenMeanwhileOnPurpose)
{
    // The creator put another object under the id: that one stays there, and the new one is neither named nor started.
    expectLines(InstalledCars(), {"instantiate Overtaken o o", "find o"},
                {"calls_back: factory starts", "Overtaker(o): made", "Overtaker(o): starts as \"o\"",
                 "Overtaken(o): made", "> instantiate Overtaken o o = #1 \"\"", "> find o = #2 \"o\""});
}

}  // namespace
}  // namespace Zelm
