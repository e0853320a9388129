#include "zelm/components/components_repository.h"

#include "tests/components/installed.h"
#include "tests/components/repository_shell.h"
#include "tests/components/scripted.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_installation.h"

#include <gtest/gtest.h>

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <iostream>

namespace Zelm {
namespace {

using namespace Testing;
namespace fs = std::filesystem;

TEST(Exit, endsAllInstancesInTheByteOrderOfTheirIds)
{
    expectLines(InstalledEngines(), {"instantiate Engine z", "instantiate Wheel a", "create Engine", "exit"},
                {"engines: loaded", "engines: factory starts", "Engine(): made", "Engine(): starts as \"z\"",
                 "> instantiate Engine z = #1 \"z\"", "Wheel(): made", "Wheel(): starts as \"a\"",
                 "> instantiate Wheel a = #2 \"a\"", "Engine(): made", "> create Engine = #3 \"\"", "> exit",
                 "Wheel(): ends as \"a\"", "engines: factory ends", "Engine(): ends as \"z\""});
}

TEST(Exit, doesNotWriteTheMap)
{
    InstalledEngines const installation;

    auto const child = installation.run("removesTheMapFile", {installation.mapFile()});

    EXPECT_EQ(child.status, 0);
    EXPECT_FALSE(fs::exists(installation.mapFile()));
}

ZELM_CHILD(removesTheMapFile)
{
    ComponentsRepositoryInterface::getComponentsRepository();
    fs::remove(childArguments().at(0));
    return 0;
}

TEST(Exit, letsAComponentsEndCallTheRepository)
{
    expectLines(InstalledCars(), {"instantiate Car c", "exit"},
                {"calls_back: factory starts", "Car(): made", "Car(): starts as \"c\"",
                 "Car: itself in its start: not found", "engines: loaded", "engines: factory starts", "Engine(): made",
                 "Engine(): starts as \"c.engine\"", "> instantiate Car c = #1 \"c\"", "> exit",
                 "Car: itself in its end: not found", "Car: its engine in its end: found",
                 "Engine(): ends as \"c.engine\"", "Car(): ends as \"c\"", "calls_back: factory ends",
                 "engines: factory ends"});
}

TEST(Exit, endsTheProcessAtAnEndThatThrows)
{
    Installed const installation("components_that_throw", {"ThrowsInEnd"});

    auto const child = installation.run("runsLines", {"instantiate ThrowsInEnd t", "exit"});

    EXPECT_EQ(child.status, 128 + SIGABRT);
    EXPECT_THAT(child.err, ::testing::HasSubstr("no end for \"t\""));
}

/// Keeps a copy of the repository's pointer and gives it up at the very end.
struct Keeper {
    std::shared_ptr<ComponentsRepositoryInterface> repository;
    ~Keeper()
    {
        std::cout << "the process has "
                  << (ComponentsRepositoryInterface::getComponentsRepository() ? "a repository" : "none any more")
                  << std::endl;
    }
};

ZELM_CHILD(keepsACopyOfThePointer)
{
    static Keeper keeper;  // older than the repository, so it goes later
    keeper.repository = ComponentsRepositoryInterface::getComponentsRepository();
    keeper.repository->addComponent(
        std::make_shared<Scripted>(Scripted::Action(),
                                   [](Scripted&) { std::cout << "the component ends" << std::endl; }),
        "a");
    return 0;
}

TEST(Exit, destroysTheRepositoryWithTheLastCopyOfItsPointer)
{
    EXPECT_EQ(TemporaryInstallation().run("keepsACopyOfThePointer").out,
              "the process has none any more\nthe component ends\n");
}

}  // namespace
}  // namespace Zelm
