#include "zelm/core/install_paths.h"

#include "zelm/core/files.h"
#include "zelm/core/scoped_accessor.h"

#include <cstdlib>
#include <iostream>
#include <mutex>
#include <utility>

namespace Zelm {

namespace {

struct InternalPaths {
    std::string root;
    std::string binaryDir;
    std::string componentsMapDir;
};

/// Never destroyed: components that end at the exit of the process may still ask.
InternalPaths& internalPaths()
{
    static InternalPaths& paths = *new InternalPaths;
    return paths;
}

void getEnvOr(std::string& value, std::string const& variable, std::string const& fallback)
{
    char const* const text = std::getenv(variable.c_str());
    value = text ? text : fallback;
}

/// Takes the root from the current directory. Where that isn't the installation's folder of programs it holds the
/// libraries itself, and `libDefault` is made empty: but not for a text too short to end in that folder's name, "/" and
/// an unknown directory among them, which says nothing about the installation.
void takeRootFromCurrentDirectory(std::string& root, std::string& libDefault)
{
    std::string const programs = pathSeparator() + "bin";
    root = getCWD();
    if (root.size() >= programs.size()) {
        auto const rootSize = root.size() - programs.size();
        if (root.compare(rootSize, programs.size(), programs) == 0)
            root.resize(rootSize);
        else
            libDefault.clear();
    }
}

void workOut(InternalPaths& result)
{
    InternalPaths paths;
    std::string libDefault = "lib";
    getEnvOr(paths.root, "ZELM_DIR", "");
    bool const rootIsAGuess = paths.root.empty();
    if (rootIsAGuess)
        takeRootFromCurrentDirectory(paths.root, libDefault);

    std::string libSubDir;
    getEnvOr(libSubDir, "ZELM_LibSubDir", libDefault);
    paths.binaryDir = pathSeparator();
    if (!libSubDir.empty())
        paths.binaryDir += libSubDir + pathSeparator();

    // The default ends in a separator already and gets a second one on purpose: every directory gets one, the file
    // system treats two like one, and programs may compare the text.
    getEnvOr(paths.componentsMapDir, "ZELM_ComponentsMapDir", paths.root + paths.binaryDir);
    paths.componentsMapDir += pathSeparator();

    // Said when nothing can fail any more: after a lack of memory the next call works all of this out again.
    if (rootIsAGuess)
        std::cerr << "ZELM_DIR wasn't set using: " << paths.root << std::endl;
    result = std::move(paths);
}

InternalPaths const& resolveInternalPaths()
{
    using Flag = ScopedAccessor<bool, std::mutex>;
    static Flag resolved;

    Flag::Access access(resolved);
    InternalPaths& paths = internalPaths();
    if (!*access) {
        workOut(paths);
        *access = true;
    }
    return paths;
}

}  // namespace

std::string const& zelmRoot()
{
    return resolveInternalPaths().root;
}

std::string const& componentsBinaryDir()
{
    return resolveInternalPaths().binaryDir;
}

std::string const& zelmComponentsMapDir()
{
    return resolveInternalPaths().componentsMapDir;
}

void initInternalPaths()
{
    resolveInternalPaths();
}

}  // namespace Zelm
