#include "script_tree.h"

#include <filesystem>
#include <sstream>

namespace Zelm::Testing {

namespace fs = std::filesystem;

ScriptTree::ScriptTree()
{
    fs::copy(SOURCE_TREE "/scripts", tree_ / "scripts", fs::copy_options::recursive);
    for (auto const* const path : {".ci/run", "CMakePresets.json", "fuzz/CMakeLists.txt"}) {
        fs::create_directories(fs::path(tree_ / path).parent_path());
        fs::copy(std::string(SOURCE_TREE "/") + path, tree_ / path);
    }
    writeProgram("scripts/setup", "touch \"${0%/*}/../set_up\"\nexit 9");
}

ChildResult ScriptTree::run(std::string const& script, std::vector<std::string> const& arguments,
                            ChildOptions options) const
{
    return runProgram(tree_ / script, options.with(arguments).in("/"));
}

bool ScriptTree::hasBegunToWork() const
{
    return fs::exists(tree_ / "set_up") || fs::exists(tree_ / "build");
}

void ScriptTree::writeProgram(std::string const& path, std::string const& lines) const
{
    writeFile(tree_ / path, "#!/bin/sh\n" + lines + '\n');
    fs::permissions(tree_ / path, fs::perms::owner_all);
}

std::vector<std::string> linesOf(std::string const& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace Zelm::Testing
