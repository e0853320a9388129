#include "../support/child_process.h"
#include "../support/temporary_installation.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Zelm::Testing {
namespace {

/// The text of the fenced block behind the marker `<!-- name -->`.
std::string blockOf(std::string const& document, std::string const& name)
{
    auto const marker = document.find("<!-- " + name + " -->");
    if (marker == std::string::npos)
        return "no block is called " + name;
    auto const fence = document.find("```", marker);
    auto const begin = document.find('\n', fence) + 1;
    auto const end = document.find("```", begin);
    return document.substr(begin, end - begin);
}

std::string readme()
{
    return readFile(ZELM_SOURCE_DIR "/README.md");
}

TEST(Readme, showsTheQuickStartExampleAsItIs)
{
    EXPECT_EQ(blockOf(readme(), "examples/quick_start/main.cpp"),
              readFile(ZELM_SOURCE_DIR "/examples/quick_start/main.cpp"));
}

TEST(Readme, showsWhatTheQuickStartExamplePrints)
{
    TemporaryInstallation const installation;
    std::filesystem::copy_file(GREETERS_LIBRARY, installation.library("libGreeters.so.1.0.0"));
    auto const options = installation.options();

    auto const run = runProgram(QUICK_START, options);

    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, blockOf(readme(), "its output"));
}

}  // namespace
}  // namespace Zelm::Testing
