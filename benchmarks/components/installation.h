/// @file
/// Installations of many libraries, made for this run below the build folder and removed at its end.
///
///     StartedInstallation const installation(100);
///     installation.putInPlace();
///     ComponentsRepository repository;
///
/// The libraries are copies of one (numbered_libraries/), each with a number of its own in the run, instead of as many
/// compilations. The numbers differ since the dynamic loader takes two libraries of one SONAME for the same, and since
/// of two libraries with one type neither may make it.
///
/// A process works out once where its installation is (zelm/core/install_paths.h), so there is one place, and the
/// installations take turns in it. Its path is relative to the current directory, which mustn't change afterwards: the
/// scan passes over libraries with certain words in their path, and those may well stand in that of a source tree.
///
/// Thread-safety: none. A failure is a std::runtime_error, that of std::filesystem included.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Zelm::Benchmarks {

class Installation {
public:
    /// Copies that library, in whose name and content "numbered_0000" stands, so many times.
    Installation(std::string const& library, std::size_t count);
    Installation(Installation const&) = delete;
    Installation& operator=(Installation const&) = delete;

    /// Moves this installation to the place, and the one that is there aside.
    void putInPlace() const;

    /// The directory of the libraries, with "/" at its end, and the libraries, while the installation is in place.
    std::string const& directory() const { return directory_; }
    std::vector<std::string> const& libraries() const { return libraries_; }
    /// The type that each of them makes.
    std::vector<std::string> const& types() const { return types_; }

private:
    std::string aside_;
    std::string directory_;
    std::vector<std::string> libraries_;
    std::vector<std::string> types_;
};

/// The installation of so many copies of a library, in its place. Each is made once, since Google Benchmark calls the
/// function of a benchmark several times.
Installation const& installationOf(std::string const& library, std::size_t count);

/// An installation of component libraries that has been started before: the components map is in its file.
class StartedInstallation : public Installation {
public:
    explicit StartedInstallation(std::size_t count);

    /// The file of the components map, while the installation is in place.
    std::string mapFile() const { return directory() + "CMP_ComponentsMap.json"; }
};

}  // namespace Zelm::Benchmarks
