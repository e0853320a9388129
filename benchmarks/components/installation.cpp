#include "components/installation.h"

#include "components/numbered_libraries/number.h"
#include "zelm/components/components_map.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Zelm::Benchmarks {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view number = "numbered_0000";

/// Where the installations are. The process's installation is "installed" in there.
class TemporaryFolder {
public:
    TemporaryFolder()
    {
        fs::create_directories(ZELM_BENCHMARK_FOLDER);
        std::string name = ZELM_BENCHMARK_FOLDER "/installations-XXXXXX";
        if (!mkdtemp(name.data()))
            throw std::runtime_error("can't make a temporary directory " + name);
        path_ = name;
        relativePath_ = fs::relative(path_);
        setenv("ZELM_DIR", (relativePath_ / "installed").c_str(), 1);
        unsetenv("ZELM_LibSubDir");
        unsetenv("ZELM_ComponentsMapDir");
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;  // what can't be removed stays in the build folder
        fs::remove_all(path_, ignored);
    }
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    std::string operator/(std::string const& name) const { return relativePath_ / name; }

private:
    fs::path path_;
    fs::path relativePath_;
};

TemporaryFolder const& folder()
{
    static TemporaryFolder const theFolder;
    return theFolder;
}

/// "numbered_0001", "numbered_0002" and so on, each once in the process.
std::string nextNumber()
{
    static unsigned last = 0;
    if (++last > 9999)
        throw std::runtime_error("no number is left for a library");
    std::string const digits = std::to_string(last);
    return std::string(number.substr(0, number.size() - digits.size())) + digits;
}

std::string renumbered(std::string text, std::string const& newNumber)
{
    for (auto at = text.find(number); at != std::string::npos; at = text.find(number, at))
        text.replace(at, number.size(), newNumber);
    return text;
}

std::string contentOf(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), {}};
    if (content.find(number) == std::string::npos)
        throw std::runtime_error("no library to be numbered: " + path);
    return content;
}

/// Builds the components map in a child, so that this process loads none of the libraries. Ends the child.
[[noreturn]] void scanInChild()
{
    dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);  // that there is no map yet is no news
    ComponentsRepository::Map map;
    _exit(initializeSourceMap(map) ? 0 : 1);
}

}  // namespace

Installation::Installation(std::string const& library, std::size_t count) : directory_(folder() / "installed/lib/")
{
    static unsigned installations = 0;
    aside_ = folder() / ("aside_" + std::to_string(++installations));
    fs::path const libraryDirectory = fs::path(aside_) / "lib";
    fs::create_directories(libraryDirectory);

    auto const content = contentOf(library);
    for (std::size_t i = 0; i != count; ++i) {
        auto const ownNumber = nextNumber();
        auto const name = renumbered(fs::path(library).filename(), ownNumber);
        std::ofstream file(libraryDirectory / name, std::ios::binary);
        file << renumbered(content, ownNumber);
        file.close();
        if (!file)
            throw std::runtime_error("can't write " + name);
        libraries_.push_back(directory_ + name);
        types_.push_back(renumbered(ZELM_NUMBERED_TYPE, ownNumber));
    }
}

void Installation::putInPlace() const
{
    static std::string presentAside;
    if (presentAside == aside_)
        return;
    if (!presentAside.empty())
        fs::rename(folder() / "installed", presentAside);
    presentAside.clear();
    fs::rename(aside_, folder() / "installed");
    presentAside = aside_;
}

Installation const& installationOf(std::string const& library, std::size_t count)
{
    static std::map<std::pair<std::string, std::size_t>, Installation> all;
    auto const& installation = all.try_emplace({library, count}, library, count).first->second;
    installation.putInPlace();
    return installation;
}

StartedInstallation::StartedInstallation(std::size_t count) : Installation(ZELM_NUMBERED_LIBRARY, count)
{
    putInPlace();
    pid_t const child = fork();
    if (child == 0)
        scanInChild();
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error("no components map can be built in " + directory());
}

}  // namespace Zelm::Benchmarks
