// What the values and functions of this folder leave behind when memory runs out.
#include "tests/support/child_process.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/temporary_directory.h"
#include "zelm/core/base64.h"
#include "zelm/core/errors.h"
#include "zelm/core/exceptions.h"
#include "zelm/core/install_paths.h"
#include "zelm/core/shared_library_loader.h"
#include "zelm/core/uuid.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>
#include <vector>

#include <dlfcn.h>

namespace Zelm {
namespace {

using Testing::AllocationCount;
using Testing::childArguments;
using Testing::ChildOptions;
using Testing::failEachAllocationInTurn;
using Testing::runChild;
using Testing::Shortage;

std::string const longText = "a text too long to be stored inside of a string object";

// ---- Values --------------------------------------------------------------------------------------------------------

TEST(ErrorOutOfMemory, staysAsItWasWhenAssigned)
{
    Error const source(2, Error::Category::ComponentRepository, longText);
    Error target(1, Error::Category::Generic, "before");

    auto const failures = failEachAllocationInTurn([&] { target = source; },
                                                   [&] {
                                                       EXPECT_EQ(target.code(), 1u);
                                                       EXPECT_EQ(target.category(), Error::Category::Generic);
                                                       EXPECT_EQ(target.info(), "before");
                                                   });

    EXPECT_EQ(failures, 1u);
    EXPECT_EQ(target.code(), 2u);
    EXPECT_EQ(target.category(), Error::Category::ComponentRepository);
    EXPECT_EQ(target.info(), longText);
}

TEST(UuidOutOfMemory, staysAsItWasWhenAssigned)
{
    Uuid const source("8D8AC610-566D-4EF0-9C22-186B2A5ED793");
    Uuid const before;
    Uuid target(before);

    auto const failures = failEachAllocationInTurn([&] { target = source; }, [&] { EXPECT_EQ(target, before); });

    EXPECT_EQ(failures, 1u);
    EXPECT_EQ(target, source);
    EXPECT_EQ(target.asUuidString(), source.asUuidString());
}

TEST(UuidOutOfMemory, givesItsTextAtTheNextCall)
{
    Uuid const uuid;
    std::string text;

    auto const failures = failEachAllocationInTurn([&] { text = uuid.asUuidString(); }, [] {});

    EXPECT_GT(failures, 0u);
    EXPECT_EQ(Uuid(text), uuid);
}

TEST(ExceptionOutOfMemory, givesWayToTheLackOfMemory)
{
    auto const failures = failEachAllocationInTurn(
        [] {
            try {
                throw Exception::FailedToCreateComponent(longText, longText);
            } catch (Exception::Base const& error) {
                Exception::Base const copy(error);  // takes no memory, as it must be possible while another is thrown
                EXPECT_STREQ(copy.what(), error.what());
            }
        },
        [] {});

    EXPECT_GT(failures, 0u);
}

// ---- Base64 --------------------------------------------------------------------------------------------------------

TEST(EncodeBase64OutOfMemory, leavesTheTextAsItWas)
{
    std::vector<unsigned char> const data(10000, 'x');
    std::string text = "text";

    auto const failures = failEachAllocationInTurn([&] { encodeBase64(data.data(), data.size(), text); },
                                                   [&] { EXPECT_EQ(text, "text"); });

    EXPECT_EQ(failures, 1u);
    EXPECT_EQ(text.size(), 4 + 13336u);
}

TEST(DecodeBase64OutOfMemory, doesNotMatter)
{
    std::string const text(10000, 'A');
    std::vector<unsigned char> buffer(7500, 'x');

    AllocationCount const allocations;
    bool const decoded = decodeBase64(text, buffer.data(), buffer.size());
    auto const made = allocations.made();

    EXPECT_TRUE(decoded);
    EXPECT_EQ(made, 0u);
}

// ---- Installation paths --------------------------------------------------------------------------------------------

ZELM_CHILD(worksThePathsOutWhileMemoryRunsOut)
{
    auto const shortage = childArguments().at(0) == "lasting" ? Shortage::Lasting : Shortage::Passing;
    auto const failures = failEachAllocationInTurn([] { initInternalPaths(); }, [] {}, shortage);
    std::cout << (failures > 1 ? "after failures " : "at once ") << zelmRoot() << ' ' << componentsBinaryDir() << ' '
              << zelmComponentsMapDir();
    return 0;
}

TEST(InstallPathsOutOfMemory, areWorkedOutAtTheNextCallAndAnnouncedOnce)
{
    Testing::TemporaryDirectory const directory;
    auto const& root = directory.path();

    for (char const* shortage : {"passing", "lasting"}) {
        auto const child =
            runChild("worksThePathsOutWhileMemoryRunsOut",
                     ChildOptions().in(root).with({shortage}).set("ZELM_LibSubDir", "a folder of some length"));

        EXPECT_EQ(child.out,
                  "after failures " + root + " /a folder of some length/ " + root + "/a folder of some length//");
        EXPECT_EQ(child.err, "ZELM_DIR wasn't set using: " + root + "\n");
    }
}

// ---- The loader ----------------------------------------------------------------------------------------------------

/// Loads the library of the path that is the first argument.
ZELM_CHILD(loadsALibraryWhileMemoryRunsOut)
{
    char const* const path = childArguments().at(0).c_str();
    auto const failures = failEachAllocationInTurn(
        [&] {
            SharedLibraryLoader const library(path, 0);
            if (!library.isLoaded())
                std::cout << "failed without a word";
        },
        [&] {
            if (dlopen(path, RTLD_NOW | RTLD_NOLOAD))
                std::cout << "loaded, though nobody knows";
        });
    if (failures == 0)
        std::cout << "needed no memory";

    SharedLibraryLoader const library(path, 0);
    AllocationCount const allocations;
    bool const works = library.isLoaded() && library.libraryName() && library.resolveSymbolByName("zelmFixtureAnswer");
    std::cout << (works ? "works, allocations: " : "doesn't work") << allocations.made();
    return 0;
}

TEST(SharedLibraryLoaderOutOfMemory, loadsNothingAndCanBeMadeAgain)
{
    auto const child = runChild("loadsALibraryWhileMemoryRunsOut",
                                ChildOptions().with({ZELM_FIXTURES "/exports_an_answer/libexports_an_answer.so"}));

    EXPECT_EQ(child.out, "works, allocations: 0");
    EXPECT_EQ(child.status, 0);
}

}  // namespace
}  // namespace Zelm
