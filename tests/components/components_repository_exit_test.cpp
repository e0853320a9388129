#include "zelm/components/components_repository.h"

#include "tests/components/installed.h"
#include "tests/components/repository_shell.h"
#include "tests/components/scripted.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_installation.h"

#include <gtest/gtest.h>

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <utility>

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

std::string answer()
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    if (!repository)
        return "none";
    return repository->findComponent("b") ? "one that has b" : "one without b";
}

/// Tells when it is started, ended and destroyed, and which repository it finds then.
class Asking : public Component_Base, public LifeCycle::PassiveInterface {
public:
    explicit Asking(std::string name, std::function<void()> end = {}) : name_(std::move(name)), end_(std::move(end)) {}
    ~Asking() override { tell("goes"); }
    void startLifeCycle() override { tell("starts"); }
    void endLifeCycle() override
    {
        tell("ends");
        if (end_)
            end_();
    }

private:
    void tell(char const* event)
    {
        std::cout << name_ << " " << event << ", the repository is " << answer() << std::endl;
    }

    std::string name_;
    std::function<void()> end_;
};

void add(std::string const& id, std::function<void()> end = {})
{
    ComponentsRepositoryInterface::getComponentsRepository()->addComponent(std::make_shared<Asking>(id, std::move(end)),
                                                                           id);
}

/// Keeps a copy of the repository's pointer and gives it up as it goes.
struct Keeper {
    std::shared_ptr<ComponentsRepositoryInterface> repository;
    ~Keeper() { std::cout << "the keeper goes, the repository is " << answer() << std::endl; }
};

ZELM_CHILD(addsAComponentInTheLastEnd)
{
    add("a", [] { add("c"); });
    add("b");
    return 0;
}

TEST(Exit, dropsWhatAnEndAddsWithoutEndingItOnPurpose)
{
    auto const child = TemporaryInstallation().run("addsAComponentInTheLastEnd");

    EXPECT_EQ(child.out, "a starts, the repository is one without b\n"
                         "b starts, the repository is one without b\n"
                         "a ends, the repository is one that has b\n"
                         "c starts, the repository is one that has b\n"
                         "b ends, the repository is one without b\n"
                         "a goes, the repository is one without b\n"
                         "b goes, the repository is one without b\n"
                         "c goes, the repository is none\n");
    EXPECT_EQ(child.status, 0);
}

ZELM_CHILD(copiesThePointerInTheLastEnd)
{
    static Keeper keeper;  // older than the repository, so it goes later
    add("a", [] {
        keeper.repository = ComponentsRepositoryInterface::getComponentsRepository();
        std::cout << "owners: " << keeper.repository.use_count() << std::endl;
    });
    return 0;
}

TEST(Exit, givesTheEndsAPointerThatDoesNotOwnTheRepository)
{
    auto const child = TemporaryInstallation().run("copiesThePointerInTheLastEnd");

    EXPECT_EQ(child.out, "a starts, the repository is one without b\n"
                         "a ends, the repository is one without b\n"
                         "owners: 0\n"
                         "a goes, the repository is one without b\n"
                         "the keeper goes, the repository is none\n");
    EXPECT_EQ(child.status, 0);
}

ZELM_CHILD(keepsACopyOfThePointer)
{
    static Keeper keeper;
    keeper.repository = ComponentsRepositoryInterface::getComponentsRepository();
    add("a");
    add("b");
    return 0;
}

TEST(Exit, destroysTheRepositoryWithTheLastCopyOfItsPointerAndInReachOfItsComponents)
{
    auto const child = TemporaryInstallation().run("keepsACopyOfThePointer");

    EXPECT_EQ(child.out, "a starts, the repository is one without b\n"
                         "b starts, the repository is one without b\n"
                         "the keeper goes, the repository is one that has b\n"
                         "a ends, the repository is one that has b\n"
                         "b ends, the repository is one without b\n"
                         "a goes, the repository is one without b\n"
                         "b goes, the repository is one without b\n");
    EXPECT_EQ(child.status, 0);
}

/// Takes over a copy of the pointer when the process's own share is gone.
struct Heir {
    explicit Heir(Keeper& keeper) : keeper_(keeper) {}
    ~Heir() { keeper_.repository = ComponentsRepositoryInterface::getComponentsRepository(); }
    Keeper& keeper_;
};

ZELM_CHILD(takesOverTheRepositoryBehindItsRelease)
{
    static Keeper last;
    static Keeper first;
    static Heir const heir(last);  // goes while `first` still has its copy
    first.repository = ComponentsRepositoryInterface::getComponentsRepository();
    add("a");
    return 0;
}

TEST(Exit, givesARealCopyOfThePointerAsLongAsAnyIsKept)
{
    auto const child = TemporaryInstallation().run("takesOverTheRepositoryBehindItsRelease");

    EXPECT_EQ(child.out, "a starts, the repository is one without b\n"
                         "the keeper goes, the repository is one without b\n"
                         "the keeper goes, the repository is one without b\n"
                         "a ends, the repository is one without b\n"
                         "a goes, the repository is one without b\n");
    EXPECT_EQ(child.status, 0);
}

// -------------------------------------------------------------------------------------------- a library's static
// objects

/// Makes a Clerk, of the library "keeps_a_ledger", and ends as its argument says.
ZELM_CHILD(makesAClerk)
{
    auto repository = ComponentsRepositoryInterface::getComponentsRepository();
    repository->instantiateComponent("Clerk", "c", {});
    std::cout << "main ends" << std::endl;
    auto const& how = childArguments().at(0);
    if (how == "release")
        repository->releaseAllComponents();
    if (how == "throw")
        throw std::runtime_error("out of main");
    if (how == "exit with a copy of the pointer")
        std::exit(0);
    if (how == "abort")
        std::abort();
    if (how == "_Exit")
        std::_Exit(0);
    if (how == "quick_exit")
        std::quick_exit(0);
    repository.reset();
    if (how == "exit")
        std::exit(0);
    return 0;
}

std::string const factoryStarts = "keeps_a_ledger: factory starts\n";
std::string const factoryEnds = "keeps_a_ledger: factory ends\n";
std::string const scanned = "ledger: made\n" + factoryStarts + factoryEnds;
std::string const clerkStarts = "drawer: made\nClerk: starts, the ledger is there, the drawer is there\nmain ends\n";
// Loaded by the scan, or when a component was asked for.
std::string const firstStart = scanned + factoryStarts + clerkStarts;
std::string const laterStart = "ledger: made\n" + factoryStarts + clerkStarts;

/// What is printed at the first start of an installation of "keeps_a_ledger", where the scan loads it, and at a later
/// one, where the map says what it makes.
void expectAtBothStarts(std::string const& how, std::string const& atFirst, std::string const& later)
{
    TemporaryInstallation installation;
    installation.add("keeps_a_ledger");
    EXPECT_EQ(installation.run("makesAClerk", {how}).out, firstStart + atFirst);
    EXPECT_EQ(installation.run("makesAClerk", {how}).out, laterStart + later);
}

TEST(Exit, findsALibrarysStaticObjectsOnPurposeOnlyIfTheyAreOlderThanTheRepository)
{
    for (std::string const how : {"return", "exit"}) {
        SCOPED_TRACE(how);
        expectAtBothStarts(how,
                           "drawer: destroyed\n"
                           "Clerk: ends, the ledger is there, the drawer is gone\n" +
                               factoryEnds + "ledger: destroyed\n",
                           "drawer: destroyed\nledger: destroyed\n"
                           "Clerk: ends, the ledger is gone, the drawer is gone\n" +
                               factoryEnds);
    }
}

TEST(Exit, comesTooLateToMatterIfTheComponentsAreReleasedBeforeMainEnds)
{
    std::string const ends = "Clerk: ends, the ledger is there, the drawer is there\n" + factoryEnds +
                             "drawer: destroyed\nledger: destroyed\n";

    expectAtBothStarts("release", ends, ends);
}

TEST(Exit, endsNothingIfAnExceptionLeavesMain)
{
    expectAtBothStarts("throw", "", "");
}

TEST(Exit, endsNothingIfTheProcessLeavesAtOnce)
{
    for (std::string const how : {"abort", "_Exit", "quick_exit"}) {
        SCOPED_TRACE(how);
        expectAtBothStarts(how, "", "");
    }
}

// std::exit leaves the local variables of the functions that it doesn't return from as they are.
TEST(Exit, endsNothingOnPurposeWhileAFunctionThatCallsItHoldsTheRepository)
{
    std::string const destroyed = "drawer: destroyed\nledger: destroyed\n";

    expectAtBothStarts("exit with a copy of the pointer", destroyed, destroyed);
}

}  // namespace
}  // namespace Zelm
