// The page on the life of processes and components quotes an example: what it shows is what is built.
#include "../support/temporary_directory.h"
#include "markdown.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace Zelm::Testing {
namespace {

TEST(LifecycleGuide, showsTheExampleAsItIs)
{
    std::string const example = "examples/message_patterns/main.cpp";

    auto const shown = blockOf(readFile(ZELM_SOURCE_DIR "/docs/lifecycle.md"), example);

    EXPECT_THAT(readFile(ZELM_SOURCE_DIR "/" + example), ::testing::HasSubstr('\n' + shown));
}

}  // namespace
}  // namespace Zelm::Testing
