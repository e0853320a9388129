/// @file
/// An installation of its own for one test: <root>/bin with a copy of this test program, <root>/lib with the core
/// library and chosen fixture libraries (tests/fixtures). What is to see it as its installation runs in a child:
///
///     TemporaryInstallation installation;
///     installation.add("engines");
///     auto const child = installation.run("makesTheRepository");
///     EXPECT_EQ(readFile(installation.mapFile()), ...);
#pragma once

#include "child_process.h"
#include "temporary_directory.h"

#include <string>
#include <vector>

namespace Zelm::Testing {

class TemporaryInstallation {
public:
    TemporaryInstallation();

    std::string const& root() const { return directory_.path(); }
    std::string library(std::string const& name) const { return directory_ / ("lib/" + name); }
    /// Where the components map is by default, spelled as the library spells it.
    std::string mapFile() const { return directory_ / "lib//CMP_ComponentsMap.json"; }

    /// Copies a fixture library into lib, by default under libraryName(fixture), last written at `writeTime`.
    void add(std::string const& fixture);
    void add(std::string const& fixture, std::string const& name);
    /// The libraries that the scan is to find, in the order of the directory.
    std::vector<std::string> librariesInDirectoryOrder() const;

    /// "ZELM_DIR" alone is set, and what a sanitizer's build needs to find libraries in lib.
    ChildOptions options(std::vector<std::string> const& arguments = {}) const;
    ChildResult run(std::string const& child, std::vector<std::string> const& arguments = {}) const;

    /// The write time that add gives, in seconds since 1970.
    static constexpr long writeTime = 1700000000;
    /// The file name of a fixture library: lib<fixture>.so.1.0.0, the prefix of all fixtures included.
    static std::string libraryName(std::string const& fixture);

private:
    TemporaryDirectory directory_;
    std::string program_;
};

/// Sets a file's last write time, in seconds since 1970. Throws std::runtime_error if that fails.
void setWriteTime(std::string const& path, long seconds);

}  // namespace Zelm::Testing
