/// @file
/// The scripts in a tree of their own, which a test may fill with what they are to find there. Nothing is installed: in
/// place of scripts/setup is one that leaves a mark and fails, so that a script ends where it would begin to work.
///
///     ScriptTree const tree;
///     EXPECT_EQ(tree.run("scripts/test", {"nope"}).status, 2);
///     EXPECT_FALSE(tree.hasBegunToWork());
#pragma once

#include "../support/child_process.h"
#include "../support/temporary_directory.h"

#include <string>
#include <vector>

namespace Zelm::Testing {

class ScriptTree {
public:
    ScriptTree();

    /// From a directory that has nothing to do with the tree.
    ChildResult run(std::string const& script, std::vector<std::string> const& arguments,
                    ChildOptions options = {}) const;

    /// Whether scripts/setup has been called or anything has been built.
    bool hasBegunToWork() const;

    /// A program of the tree's: a shell script of these lines.
    void writeProgram(std::string const& path, std::string const& lines) const;

    std::string operator/(std::string const& path) const { return tree_ / path; }

private:
    TemporaryDirectory const tree_;
};

std::vector<std::string> linesOf(std::string const& text);

}  // namespace Zelm::Testing
