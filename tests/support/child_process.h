/// @file
/// Runs a piece of a test in a process of its own: for what depends on the environment, the current directory, the
/// first call in a process, the libraries loaded or the way it ends.
///
///     ZELM_CHILD(printsTheRoot)
///     {
///         std::cout << zelmRoot();
///         return 0;
///     }
///
///     TEST(InstallPaths, takesTheRootFromTheEnvironment)
///     {
///         auto const child = runChild("printsTheRoot", ChildOptions().set("ZELM_DIR", "/opt/app"));
///         EXPECT_EQ(child.out, "/opt/app");
///     }
///
/// The child is this very program, started afresh with the name of the piece; its body returns the exit status. Its
/// exit runs destructors and leak checks as any program's does.
#pragma once

#include "tests/support/sanitizers.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Zelm::Testing {

struct ChildOptions {
    /// Sets a variable of the child's environment. All else is inherited, but for this library's own variables
    /// (ZELM_...) and LD_LIBRARY_PATH, which the child has only if they are set here.
    ChildOptions& set(std::string const& variable, std::string const& value);
    ChildOptions& in(std::string const& directory);                 ///< the child's current directory
    ChildOptions& runAs(std::string const& path);                   ///< a copy of this program, made before
    ChildOptions& with(std::vector<std::string> const& arguments);  ///< see childArguments
    ChildOptions& input(std::string const& path);                   ///< standard input; /dev/null without it

    std::map<std::string, std::string> environment;
    std::string directory;
    std::string program;
    std::string inputPath;
    std::vector<std::string> arguments;
};

struct ChildResult {
    int status = -1;  ///< exit status, or 128 + the signal that ended it
    std::string out;  ///< all of standard output
    std::string err;  ///< all of standard error
};

/// Runs the piece of that name and waits for it. Throws std::runtime_error if it can't be started or hasn't ended after
/// two minutes; it is killed then.
ChildResult runChild(std::string const& name, ChildOptions const& options = {});

/// Runs any program in the same way.
ChildResult runProgram(std::string const& path, ChildOptions const& options = {});

/// The words by which a shell starts a program of this build: its path, behind the emulator's if there is one.
std::vector<std::string> commandFor(std::string const& path);

/// In a child: the arguments that `with` gave.
std::vector<std::string> const& childArguments();

/// The path of this test program.
std::string thisProgram();

/// Whether these are programs of another processor, which an emulator runs. Limits that the kernel would enforce (of
/// memory, say) count for the emulator then and not for the program.
constexpr bool underEmulation =
#if defined(ZELM_UNDER_EMULATION)
    true;
#else
    false;
#endif

using ChildFunction = int (*)();
bool registerChild(char const* name, ChildFunction function);

/// If the command line asks for a child's piece, runs it and returns its exit status.
std::optional<int> runAsChild(int argc, char** argv);

}  // namespace Zelm::Testing

#define ZELM_CHILD(name)                                                                                               \
    static int zelmChild_##name();                                                                                     \
    [[maybe_unused]] static bool const zelmChildRegistered_##name =                                                    \
        ::Zelm::Testing::registerChild(#name, &zelmChild_##name);                                                      \
    static int zelmChild_##name()
