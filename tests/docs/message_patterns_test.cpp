// The example message_patterns, installed, prints what is written down beside it.
#include "../support/child_process.h"
#include "../support/temporary_directory.h"
#include "../support/temporary_installation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Zelm::Testing {
namespace {

using ::testing::HasSubstr;

std::string expectedOutput()
{
    return readFile(ZELM_SOURCE_DIR "/examples/message_patterns/expected_output.txt");
}

/// An installation with the program and, if wanted, the messaging library.
class Installed : public TemporaryInstallation {
public:
    explicit Installed(bool hasMessaging = true) : program_(root() + "/bin/message_patterns")
    {
        std::filesystem::copy_file(MESSAGE_PATTERNS, program_);
        if (!hasMessaging)
            return;
        std::filesystem::path const file = std::filesystem::canonical(ZELM_MESSAGING_LIBRARY);
        std::filesystem::copy_file(file, library(file.filename()));
    }
    /// Started somewhere else and without a variable that tells the root: the program knows its own.
    ChildResult runFromElsewhere() const
    {
        auto options = this->options().in("/");
        options.environment.erase("ZELM_DIR");
        return runProgram(program_, options);
    }

private:
    std::string program_;
};

TEST(MessagePatterns, printsWhatIsWrittenDownAtEveryStart)
{
    Installed const installation;
    auto const first = installation.runFromElsewhere();  // builds the components map
    auto const second = installation.runFromElsewhere();

    EXPECT_EQ(first.out, expectedOutput());
    EXPECT_EQ(first.status, 0) << first.err;
    EXPECT_EQ(second.out, expectedOutput());
    EXPECT_EQ(second.err, "");
    EXPECT_EQ(second.status, 0);
}

TEST(MessagePatterns, saysWhatIsMissingWithoutTheMessagingLibrary)
{
    auto const run = Installed(false).runFromElsewhere();

    EXPECT_THAT(run.err, HasSubstr("message_patterns: "));
    EXPECT_THAT(run.err, HasSubstr("MessageDispatcher"));
    EXPECT_EQ(run.status, 1);
}

#ifdef ZELM_INSTALLS
void install(std::string const& root, std::string const& component)
{
    auto const child =
        runProgram(CMAKE_PROGRAM,
                   ChildOptions().with({"--install", CMAKE_BUILD_TREE, "--prefix", root, "--component", component}));
    ASSERT_EQ(child.status, 0) << child.err;
}

TEST(MessagePatterns, runsFromWhereTheInstallRulesPutIt)
{
    if (std::string(CMAKE_LIBRARY_DIR) != "lib")
        GTEST_SKIP() << "the program looks for its libraries in lib";
    TemporaryDirectory const root;
    install(root.path(), "runtime");
    install(root.path(), "message_patterns");

    ChildOptions options;
    options.in("/");
    if (underSanitizer)
        options.set("LD_LIBRARY_PATH", root / "lib");
    auto const run = runProgram(root / "bin/message_patterns", options);

    EXPECT_EQ(run.out, expectedOutput());
    EXPECT_EQ(run.status, 0) << run.err;
}
#endif

}  // namespace
}  // namespace Zelm::Testing
