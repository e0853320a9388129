/// @file
/// An installation of the program and its libraries for one test, and ways to run it.
#pragma once

#include "../support/child_process.h"
#include "../support/temporary_directory.h"

#include <string>
#include <vector>

namespace HostMonitor::Testing {

class DemoInstallation {
public:
    DemoInstallation();

    std::string const& root() const { return directory_.path(); }
    std::string operator/(std::string const& name) const { return directory_ / name; }
    std::string program() const { return directory_ / "bin/host_monitor"; }

    /// Adds the library of the fixtures, whose types are told in fixtures/witnesses.cpp.
    void addWitnesses();
    /// Lets the map be built, so that the next start has nothing to say about that.
    void buildMap() const;

    /// Writes a configuration of these lines of components, and returns its path.
    std::string configure(std::vector<std::string> const& components) const;

    /// The environment that the program needs here: none but what a sanitizer's build wants to find libraries.
    Zelm::Testing::ChildOptions options(std::vector<std::string> const& arguments) const;
    Zelm::Testing::ChildResult run(std::vector<std::string> const& arguments) const;
    /// With arguments and redirections as a shell takes them.
    Zelm::Testing::ChildResult runByShell(std::string const& arguments) const;

private:
    Zelm::Testing::TemporaryDirectory directory_;
};

/// One component's line of a configuration. An argument that begins with a brace is taken for a JSON object.
std::string component(std::string const& id, std::string const& type, std::vector<std::string> const& arguments = {});

}  // namespace HostMonitor::Testing
