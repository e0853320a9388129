/// @file
/// A child that calls the repository line by line, and what is expected of it. The lines:
///
///     create <type> <argument>...             instantiate <type> <id> <argument>...
///     add <id>                                a new component of the program's own
///     find <id>    remove <id>    release
///     types <id>                              what the factory of that id supports
///     exit                                    ends the process with all that is in the repository
///
/// Each is written with what comes of it, between what the libraries log meanwhile. Components are told apart by
/// numbers in the order in which they first appear: #2 "main" is the second one, and its instance id is "main".
#pragma once

#include "tests/components/installed.h"
#include "tests/support/child_process.h"

#include <string>
#include <vector>

namespace Zelm::Testing {

/// Runs the lines in an installation's child and compares all that is written, but for the log of the exit unless
/// "exit" is the last line.
void expectLines(TemporaryInstallation const& installation, std::vector<std::string> const& lines,
                 std::vector<std::string> const& out, std::string const& err = "");
void expectLines(ChildOptions options, std::vector<std::string> const& lines, std::vector<std::string> const& out,
                 std::string const& err = "");

// What comes of a line.
inline std::string const success = "false, code 0, category 0, ERROR category: 0 code: 0";
inline std::string const alreadyInRepository = "false, code 0, category 1, ERROR category: 1 code: 0";
inline std::string const invalidParameter =
    "true, code 1, category 0, Invalid or out-of-range parameter passed to function.";
std::string failed(std::string const& name, std::string const& detail);   ///< FailedToCreateComponent
std::string missing(std::string const& name, std::string const& detail);  ///< MissingComponent

inline std::string const enginesFactory = engines + "->Factory";

/// An installation of the library "calls_back" beside the library "engines", with their map.
class InstalledCars : public InstalledEngines {
public:
    InstalledCars();
};

}  // namespace Zelm::Testing
