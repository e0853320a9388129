#include "temporary_installation.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>

namespace Zelm::Testing {

namespace fs = std::filesystem;

namespace {

/// A second name for a file that nobody will change; a copy where the file system can't give it one.
void linkOrCopy(fs::path const& from, fs::path const& to)
{
    std::error_code failed;
    fs::create_hard_link(from, to, failed);
    if (failed)
        fs::copy_file(from, to);
}

}  // namespace

TemporaryInstallation::TemporaryInstallation() : program_(directory_ / "bin/program")
{
    fs::create_directory(directory_ / "bin");
    fs::create_directory(directory_ / "lib");
    linkOrCopy(thisProgram(), program_);

    fs::path const core = fs::canonical(ZELM_CORE_LIBRARY);
    linkOrCopy(core, library(core.filename()));
    fs::create_symlink(core.filename(), library(ZELM_CORE_SONAME));
}

void TemporaryInstallation::add(std::string const& fixture)
{
    add(fixture, libraryName(fixture));
}

void TemporaryInstallation::add(std::string const& fixture, std::string const& name)
{
    fs::copy_file(ZELM_COMPONENT_FIXTURES "/" + libraryName(fixture), library(name));
    setWriteTime(library(name), writeTime);
}

std::vector<std::string> TemporaryInstallation::librariesInDirectoryOrder() const
{
    std::vector<std::string> names;
    for (auto const& entry : fs::directory_iterator(directory_ / "lib")) {
        std::string const name = entry.path().filename();
        if (!entry.is_symlink() && name.find(".so.") != std::string::npos && name.find("ZelmCore") == std::string::npos)
            names.push_back(name);
    }
    return names;
}

ChildOptions TemporaryInstallation::options(std::vector<std::string> const& arguments) const
{
    ChildOptions options;
    options.set("ZELM_DIR", root()).runAs(program_).with(arguments);
    if (underSanitizer)
        options.set("LD_LIBRARY_PATH", root() + "/lib");
    return options;
}

ChildResult TemporaryInstallation::run(std::string const& child, std::vector<std::string> const& arguments) const
{
    return runChild(child, options(arguments));
}

std::string TemporaryInstallation::libraryName(std::string const& fixture)
{
    return "libfixture_" + fixture + ".so.1.0.0";
}

void setWriteTime(std::string const& path, long seconds)
{
    timespec const times[] = {{seconds, 0}, {seconds, 0}};
    if (utimensat(AT_FDCWD, path.c_str(), times, 0) != 0)
        throw std::runtime_error("can't set the write time of " + path + ": " + std::strerror(errno));
}

}  // namespace Zelm::Testing
