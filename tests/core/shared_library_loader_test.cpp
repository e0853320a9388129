#include "zelm/core/shared_library_loader.h"

#include "tests/core/system_calls.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <sys/stat.h>

namespace Zelm {
namespace {

using Testing::childArguments;
using Testing::ChildOptions;
using ::testing::EndsWith;
using Testing::executableLink;
using Testing::executableLinkReads;
using ::testing::HasSubstr;
using Testing::runChild;
using Testing::StandIn;
using ::testing::StartsWith;
using Testing::TemporaryDirectory;
using Testing::writeFile;

std::string const fixtures = ZELM_FIXTURES;  // as the build tells, in quotes
std::string const exportsAnAnswer = fixtures + "/exports_an_answer/libexports_an_answer.so";
std::string const needsAnAnswer = fixtures + "/needs_an_answer/libneeds_an_answer.so";
std::string const tellsWhenItIsLoaded = fixtures + "/tells_when_it_is_loaded/libtells_when_it_is_loaded.so";
std::string const sameName = "libsame_name_twice.so";
std::string const copyOne = fixtures + "/same_name_twice/one/" + sameName;
std::string const copyTwo = fixtures + "/same_name_twice/two/" + sameName;
std::string const directoryOfTwo = fixtures + "/same_name_twice/two";

template <class Function> Function* resolved(SharedLibraryLoader const& library, char const* symbol)
{
    return reinterpret_cast<Function*>(library.resolveSymbolByName(symbol));
}

void copyFile(std::string const& from, std::string const& to)
{
    std::filesystem::create_directories(std::filesystem::path(to).parent_path());
    std::filesystem::copy_file(from, to);
}

// ---- Where a library is looked for ---------------------------------------------------------------------------------

/// Loads the library of the name that is the first argument, and tells which copy it is.
ZELM_CHILD(tellsWhichCopyItLoads)
{
    SharedLibraryLoader const library(childArguments().at(0).c_str(), 0);
    if (!library.isLoaded()) {
        std::cout << library.errorString();
        return 1;
    }
    std::cout << resolved<char const*()>(library, "zelmFixtureCopy")();
    return 0;
}

/// The same where the running executable can't be told: by what the second argument says.
ZELM_CHILD(tellsWhichCopyItLoadsWithoutKnowingItself)
{
    auto const& why = childArguments().at(1);
    StandIn const link(executableLink(), why == "unreadable" ? std::nullopt : std::optional<std::string>(why));
    SharedLibraryLoader const library(childArguments().at(0).c_str(), 0);
    std::cout << (library.isLoaded() ? resolved<char const*()>(library, "zelmFixtureCopy")() : "none");
    return 0;
}

/// Loads the library of the name and with the flags that are the arguments, and then one that needs its symbols.
ZELM_CHILD(tellsWhetherSymbolsAreGlobal)
{
    SharedLibraryLoader const answer(childArguments().at(0).c_str(), std::stoi(childArguments().at(1)));
    if (!answer.isLoaded()) {
        std::cout << "not loaded";
        return 0;
    }
    SharedLibraryLoader const user(needsAnAnswer.c_str(), 0);
    std::cout << (user.isLoaded() ? "global " : "local ")
              << (dlsym(RTLD_DEFAULT, "zelmFixtureAnswer") ? "found" : "not found");
    if (user.isLoaded())
        std::cout << ' ' << resolved<int()>(user, "zelmFixtureTwiceTheAnswer")();
    return 0;
}

std::string const local = "local not found";
std::string const global = "global found 84";

/// Loads the library of the name that is the first argument, and tells what errorString says afterwards, twice.
ZELM_CHILD(tellsTheErrorOfItsLibrary)
{
    SharedLibraryLoader const library(childArguments().at(0).c_str(), 0);
    std::cout << (library.isLoaded() ? "loaded" : "not loaded");
    for (int i = 0; i < 2; ++i)
        std::cout << " [" << library.errorString() << ']';
    return 0;
}

/// Loads the library of the name that is the first argument twice, with one loader after the other.
ZELM_CHILD(loadsTheSameLibraryTwice)
{
    for (char const* which : {"first", "second"}) {
        {
            SharedLibraryLoader const library(childArguments().at(0).c_str(), 0);
            std::cout << which << " loader " << (library.isLoaded() ? "made" : "failed") << std::endl;
        }
        std::cout << which << " loader destroyed" << std::endl;
    }
    return 0;
}

std::string const loadedOnceAndForGood = "static objects made\n"
                                         "first loader made\n"
                                         "first loader destroyed\n"
                                         "second loader made\n"
                                         "second loader destroyed\n"
                                         "static objects destroyed\n";

/// A copy of this program in a "bin" folder, to put libraries beside.
class LibrariesBesideTheExecutable : public ::testing::Test {
protected:
    LibrariesBesideTheExecutable() { copyFile(Testing::thisProgram(), program()); }

    std::string program() const { return directory / "bin/program"; }
    std::string loaded(std::string const& name, ChildOptions options = {}) const
    {
        return runChild("tellsWhichCopyItLoads", options.runAs(program()).with({name})).out;
    }

    TemporaryDirectory directory;
    ChildOptions const twoInTheSearchPath = ChildOptions().set("LD_LIBRARY_PATH", directoryOfTwo);
};

TEST_F(LibrariesBesideTheExecutable, arePreferredToThoseOfTheStandardSearchOnPurpose)
{
    copyFile(copyOne, directory / "bin/" + sameName);

    EXPECT_EQ(loaded(sameName, twoInTheSearchPath), "one");
}

TEST_F(LibrariesBesideTheExecutable, areNotNeededWhereTheStandardSearchFindsOne)
{
    EXPECT_EQ(loaded(sameName, twoInTheSearchPath), "two");
}

TEST_F(LibrariesBesideTheExecutable, giveWayToTheStandardSearchIfTheyCannotBeOpened)
{
    writeFile(directory / "bin/" + sameName, "no library");

    EXPECT_EQ(loaded(sameName, twoInTheSearchPath), "two");
}

TEST_F(LibrariesBesideTheExecutable, giveWayToTheStandardSearchWithoutBeingOpenedIfTheyArePipes)
{
    std::filesystem::create_directories(directory / "bin");
    ASSERT_EQ(mkfifo((directory / "bin/" + sameName).c_str(), 0600), 0);

    EXPECT_EQ(loaded(sameName, twoInTheSearchPath), "two");
}

TEST_F(LibrariesBesideTheExecutable, areFoundByANameWithADirectoryInItToo)
{
    copyFile(copyOne, directory / "bin/sub/" + sameName);
    copyFile(copyTwo, directory / "elsewhere/sub/" + sameName);

    EXPECT_EQ(loaded("sub/" + sameName, ChildOptions().in(directory / "elsewhere")), "one");
}

TEST_F(LibrariesBesideTheExecutable, giveWayToTheCurrentDirectoryForANameWithADirectoryInIt)
{
    copyFile(copyTwo, directory / "elsewhere/sub/" + sameName);

    EXPECT_EQ(loaded("sub/" + sameName, ChildOptions().in(directory / "elsewhere")), "two");
}

TEST_F(LibrariesBesideTheExecutable, areNotReplacedByThoseOfTheCurrentDirectoryForABareName)
{
    copyFile(copyTwo, directory / "elsewhere/" + sameName);

    EXPECT_THAT(loaded(sameName, ChildOptions().in(directory / "elsewhere")), StartsWith(sameName + ": "));
}

TEST_F(LibrariesBesideTheExecutable, areNotLookedAtForAnAbsoluteName)
{
    copyFile(copyOne, directory / "bin" + copyTwo);  // the absolute name, taken as if it were relative

    EXPECT_EQ(loaded(copyTwo), "two");
}

TEST_F(LibrariesBesideTheExecutable, areFoundThoughTheExecutablesPathHasItsGreatestLength)
{
    copyFile(copyOne, directory / "bin/" + sameName);
    // The longest text that the link may have; what stands behind the last "/" is cut off.
    std::string link = directory / "bin/";
    link.append(4096 - link.size(), 'x');

    auto const child =
        runChild("tellsWhichCopyItLoadsWithoutKnowingItself", ChildOptions(twoInTheSearchPath).with({sameName, link}));

    EXPECT_EQ(child.out, "one");
}

TEST_F(LibrariesBesideTheExecutable, areNotLookedForInAPartOfADirectoryThatIsTooLongToOpen)
{
    copyFile(copyOne, directory / "bin/" + sameName);
    // Ends in its last delimiter: one byte less would leave "bin" for the directory.
    std::string link = directory / "bin/";
    link.append(4095 - link.size(), 'x') += '/';

    auto const child =
        runChild("tellsWhichCopyItLoadsWithoutKnowingItself", ChildOptions(twoInTheSearchPath).with({sameName, link}));

    EXPECT_EQ(child.out, "two");
}

TEST_F(LibrariesBesideTheExecutable, areNotLookedForIfTheExecutableCannotBeTold)
{
    copyFile(copyOne, directory / "bin/" + sameName);
    for (char const* why : {"unreadable", "no delimiter in it", ""}) {
        SCOPED_TRACE(why);
        auto const child = runChild("tellsWhichCopyItLoadsWithoutKnowingItself",
                                    ChildOptions(twoInTheSearchPath).runAs(program()).with({sameName, why}));
        EXPECT_EQ(child.out, "two");
    }
}

/// A library with its two ways in by a bare name: from beside the executable, and by the standard search.
class LibraryFoundByABareName : public LibrariesBesideTheExecutable, public ::testing::WithParamInterface<char const*> {
protected:
    std::string outputOf(char const* child, std::string const& library, std::vector<std::string> arguments = {})
    {
        std::string const name = std::filesystem::path(library).filename();
        copyFile(library, directory / GetParam() + "/" + name);
        arguments.insert(arguments.begin(), name);
        return runChild(child,
                        ChildOptions().runAs(program()).set("LD_LIBRARY_PATH", directory / "standard").with(arguments))
            .out;
    }
};

TEST_P(LibraryFoundByABareName, hasGlobalSymbolsIfTheFlagSaysSo)
{
    EXPECT_EQ(outputOf("tellsWhetherSymbolsAreGlobal", exportsAnAnswer, {"2"}), global);
}

TEST_P(LibraryFoundByABareName, hasLocalSymbolsWithoutTheFlag)
{
    EXPECT_EQ(outputOf("tellsWhetherSymbolsAreGlobal", exportsAnAnswer, {"0"}), local);
}

TEST_P(LibraryFoundByABareName, isRefusedIfItMissesAFunction)
{
    EXPECT_THAT(outputOf("tellsTheErrorOfItsLibrary", needsAnAnswer), StartsWith("not loaded ["));
}

TEST_P(LibraryFoundByABareName, leavesNoErrorBehind)
{
    EXPECT_EQ(outputOf("tellsTheErrorOfItsLibrary", exportsAnAnswer), "loaded [] []");
}

TEST_P(LibraryFoundByABareName, isNeverUnloadedOnPurpose)
{
    EXPECT_EQ(outputOf("loadsTheSameLibraryTwice", tellsWhenItIsLoaded), loadedOnceAndForGood);
}

INSTANTIATE_TEST_SUITE_P(BesideTheExecutableOrElsewhere, LibraryFoundByABareName, ::testing::Values("bin", "standard"));

TEST(SharedLibraryLoader, opensAnAbsolutePathWithoutAskingWhereTheExecutableIs)
{
    int const before = executableLinkReads();

    SharedLibraryLoader const absolute(exportsAnAnswer.c_str(), 0);
    EXPECT_TRUE(absolute.isLoaded());
    EXPECT_EQ(executableLinkReads(), before);

    SharedLibraryLoader const relative("libno_such_library.so", 0);
    EXPECT_FALSE(relative.isLoaded());
    EXPECT_EQ(executableLinkReads(), before + 1);
}

TEST(SharedLibraryLoader, takesTheEmptyNameForTheProcessItselfWithoutAskingWhereTheExecutableIs)
{
    int const before = executableLinkReads();

    SharedLibraryLoader const process("", 0);

    EXPECT_TRUE(process.isLoaded());
    EXPECT_STREQ(process.libraryName(), "");
    EXPECT_NE(process.resolveSymbolByName("malloc"), nullptr);
    EXPECT_EQ(executableLinkReads(), before);
}

// ---- What it knows of a library ------------------------------------------------------------------------------------

TEST(SharedLibraryLoader, resolvesWhatTheLibraryExports)
{
    SharedLibraryLoader const library(exportsAnAnswer.c_str(), 0);

    ASSERT_TRUE(library.isLoaded());
    EXPECT_EQ(library.libraryName(), exportsAnAnswer);
    ASSERT_NE(library.resolveSymbolByName("zelmFixtureAnswer"), nullptr);
    EXPECT_EQ(resolved<int()>(library, "zelmFixtureAnswer")(), 42);
}

TEST(SharedLibraryLoader, keepsTheNameThatItGotWhateverHappensToTheOriginal)
{
    std::string name = exportsAnAnswer;

    SharedLibraryLoader const library(name.c_str(), 0);
    name.assign(name.size(), 'x');

    EXPECT_EQ(library.libraryName(), exportsAnAnswer);
}

TEST(SharedLibraryLoader, givesNullForAnAbsentSymbolAndTellsWhyOnce)
{
    SharedLibraryLoader const library(exportsAnAnswer.c_str(), 0);

    EXPECT_EQ(library.resolveSymbolByName("noSuchFunction"), nullptr);

    EXPECT_THAT(library.errorString(), HasSubstr("noSuchFunction"));
    EXPECT_EQ(library.errorString(), "");
}

TEST(SharedLibraryLoader, hasNoErrorAfterASuccess)
{
    SharedLibraryLoader const library(exportsAnAnswer.c_str(), 0);

    EXPECT_EQ(library.errorString(), "");
}

TEST(SharedLibraryLoader, isNotLoadedIfThereIsNoSuchLibraryAndTellsWhyOnceOnPurpose)
{
    SharedLibraryLoader const library("libno_such_library.so", 0);

    EXPECT_FALSE(library.isLoaded());
    EXPECT_STREQ(library.libraryName(), "libno_such_library.so");
    // The reason is that of the attempt with the bare name.
    EXPECT_THAT(library.errorString(), StartsWith("libno_such_library.so: "));
    EXPECT_EQ(library.errorString(), "");
}

// The dynamic loader would wait for whoever writes into a pipe.
TEST(SharedLibraryLoader, isNotLoadedOnPurposeFromAPipeOrADeviceAndTellsWhyOnce)
{
    TemporaryDirectory const directory;
    auto const pipe = directory / "libpipe.so.1";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    auto const link = directory / "liblink.so.1";
    std::filesystem::create_symlink("libpipe.so.1", link);
    struct {
        std::string name;
        char const* why;
    } const cases[] = {
        {pipe, "a pipe"},
        {link, "a link to one"},
        {"./libpipe.so.1", "a pipe by a relative path"},
        {"/dev/zero", "a device"},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        auto const child = runChild("tellsTheErrorOfItsLibrary", ChildOptions().in(directory.path()).with({row.name}));

        EXPECT_THAT(child.out, StartsWith("not loaded [" + row.name + "/not a regular file: "));
        EXPECT_THAT(child.out, EndsWith("] []"));
    }
}

TEST(SharedLibraryLoader, leavesItToTheDynamicLoaderToTellADirectory)
{
    TemporaryDirectory const directory;

    SharedLibraryLoader const library(directory.path().c_str(), 0);

    EXPECT_FALSE(library.isLoaded());
    EXPECT_THAT(library.errorString(), StartsWith(directory.path() + ": "));
}

TEST(SharedLibraryLoader, findsNothingOfTheProcessIfNoLibraryIsLoaded)
{
    SharedLibraryLoader const library("libno_such_library.so", 0);
    library.errorString();

    EXPECT_EQ(library.resolveSymbolByName("malloc"), nullptr);
    EXPECT_EQ(library.resolveSymbolByName("noSuchFunction"), nullptr);

    EXPECT_EQ(library.errorString(), "");  // as nobody was asked
}

TEST(SharedLibraryLoader, keepsTheReasonWhenItIsAskedForASymbolThoughNoLibraryIsLoaded)
{
    SharedLibraryLoader const library("libno_such_library.so", 0);

    EXPECT_EQ(library.resolveSymbolByName("malloc"), nullptr);
    EXPECT_EQ(library.resolveSymbolByName("noSuchFunction"), nullptr);

    EXPECT_THAT(library.errorString(), StartsWith("libno_such_library.so: "));
}

TEST(SharedLibraryLoader, anotherFailureReplacesTheError)
{
    SharedLibraryLoader const library("libno_such_library.so", 0);
    SharedLibraryLoader const other("libnor_this_one.so", 0);

    EXPECT_THAT(library.errorString(), StartsWith("libnor_this_one.so: "));
}

TEST(SharedLibraryLoader, bindsAtOnceAndSoRefusesALibraryThatMissesAFunction)
{
    for (int flags : {0, 1, 4}) {
        SharedLibraryLoader const library(needsAnAnswer.c_str(), flags);

        EXPECT_FALSE(library.isLoaded());
        EXPECT_THAT(library.errorString(), HasSubstr("zelmFixtureAnswer"));
    }
}

TEST(SharedLibraryLoader, makesSymbolsGlobalByTheOneBitThatCounts)
{
    struct {
        int flags;
        std::string expected;
        char const* why;
    } const cases[] = {
        {0, local, "none"},
        {1, local, "the dynamic loader's bit for lazy binding"},
        {4, local, "the dynamic loader's bit that loads nothing"},
        {0x100, local, "the dynamic loader's bit for global symbols"},
        {~SharedLibraryLoader::ResolveGlobally, local, "all but the one that counts"},
        {SharedLibraryLoader::ResolveGlobally, global, "the one that counts"},
        {2, global, "its value"},
        {3, global, "another one beside it"},
        {6, global, "another one beside it"},
        {-1, global, "all"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(std::to_string(row.flags) + ": " + row.why);
        auto const child =
            runChild("tellsWhetherSymbolsAreGlobal", ChildOptions().with({exportsAnAnswer, std::to_string(row.flags)}));
        EXPECT_EQ(child.out, row.expected);
    }
}

// ---- How long things last ------------------------------------------------------------------------------------------

TEST(SharedLibraryLoader, leavesTheLibraryLoadedOnPurposeWhenItIsDestroyed)
{
    char const* (*copy)() = nullptr;
    {
        SharedLibraryLoader const library(copyOne.c_str(), 0);
        copy = resolved<char const*()>(library, "zelmFixtureCopy");
    }

    ASSERT_NE(copy, nullptr);
    EXPECT_STREQ(copy(), "one");
    EXPECT_NE(dlopen(copyOne.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST(SharedLibraryLoader, runsStaticInitialisersOnceAndTheirCounterpartsAtTheEndOfTheProcess)
{
    auto const child = runChild("loadsTheSameLibraryTwice", ChildOptions().with({tellsWhenItIsLoaded}));

    EXPECT_EQ(child.out, loadedOnceAndForGood);
}

TEST(SharedLibraryLoader, sharesItsStateWithItsCopies)
{
    SharedLibraryLoader empty;
    std::optional<SharedLibraryLoader> original(std::in_place, exportsAnAnswer.c_str(), 0);

    SharedLibraryLoader const copy(*original);
    empty = *original;
    char const* const name = original->libraryName();
    original.reset();

    for (SharedLibraryLoader const* each : {&copy, static_cast<SharedLibraryLoader const*>(&empty)}) {
        EXPECT_TRUE(each->isLoaded());
        EXPECT_EQ(each->libraryName(), name);
        EXPECT_NE(each->resolveSymbolByName("zelmFixtureAnswer"), nullptr);
    }
}

TEST(SharedLibraryLoader, isMovedWithItsState)
{
    SharedLibraryLoader original(exportsAnAnswer.c_str(), 0);
    char const* const name = original.libraryName();

    SharedLibraryLoader moved(std::move(original));
    SharedLibraryLoader target;
    target = std::move(moved);

    EXPECT_TRUE(target.isLoaded());
    EXPECT_EQ(target.libraryName(), name);
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<SharedLibraryLoader>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<SharedLibraryLoader>);
}

TEST(ConvertToNativeSharedLibraryName, putsLibInFrontAndSoBehind)
{
    EXPECT_EQ(convertToNativeSharedLibraryName("foo"), "libfoo.so");
    EXPECT_EQ(convertToNativeSharedLibraryName(""), "lib.so");
}

}  // namespace
}  // namespace Zelm
