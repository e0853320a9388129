#include "../support/child_process.h"
#include "../support/temporary_installation.h"
#include "markdown.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Zelm::Testing {
namespace {

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
