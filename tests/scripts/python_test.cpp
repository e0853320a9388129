// What the scripts in Python do on a machine without it.
#include "script_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace Zelm::Testing {

namespace fs = std::filesystem;

/// Makes a folder of the tree's with these programs of the system's, to be all that PATH names.
std::string folderWith(ScriptTree const& tree, std::vector<std::string> const& programs)
{
    auto const folder = tree / "programs";
    fs::create_directory(folder);
    for (auto const& program : programs)
        fs::create_symlink("/usr/bin/" + program, folder + '/' + program);
    return folder;
}

TEST(ScriptsInPython, askForItIfItIsntThere)
{
    for (auto const* const script : {"scripts/benchmark", "scripts/coverage", "scripts/mutate"}) {
        SCOPED_TRACE(script);
        ScriptTree const tree;
        auto const path = folderWith(tree, {"bash", "dirname", "realpath"});
        tree.writeProgram("scripts/setup", "echo \"$@\"; exit 9");

        auto const child = tree.run(script, {"--help"}, ChildOptions().set("PATH", path));

        EXPECT_EQ(child.err, "--python\n");
        EXPECT_EQ(child.out, "");
        EXPECT_EQ(child.status, 9);
    }
}

TEST(ScriptsInPython, goOnWithIt)
{
    ScriptTree const tree;
    auto const path = folderWith(tree, {"bash", "dirname", "realpath"});
    tree.writeProgram("scripts/setup",
                      "printf '#!/bin/sh\\necho \"$@\"\\n' >" + path + "/python3; /bin/chmod +x " + path + "/python3");

    auto const child = tree.run("scripts/mutate", {"--site", "a b"}, ChildOptions().set("PATH", path));

    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.out, "-B " + tree / "scripts/mutation" + " --site a b\n");
    EXPECT_EQ(child.status, 0);
}

}  // namespace Zelm::Testing
