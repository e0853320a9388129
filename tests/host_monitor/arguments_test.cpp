#include "sensors/arguments.h"

#include "../support/throws_text.h"

#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace HostMonitor {

using ::testing::ElementsAre;
using Zelm::Exception::InvalidParameter;
using Zelm::Testing::throwsText;

TEST(ProcDirectory, isTheRealOneUnlessAnotherIsGiven)
{
    EXPECT_EQ(parseProcDirectory({}), "/proc");
    EXPECT_EQ(parseProcDirectory({"--proc=/copied/proc"}), "/copied/proc");
    EXPECT_EQ(parseProcDirectory({"--proc=/a", "--proc=/b"}), "/b");
}

TEST(ProcDirectory, isRefusedUnlessItIsAbsolute)
{
    EXPECT_THAT([] { parseProcDirectory({"--proc=copied"}); },
                throwsText<InvalidParameter>("Invalid Parameter: \"copied\" is no absolute path"));
    EXPECT_THAT([] { parseProcDirectory({"--proc="}); },
                throwsText<InvalidParameter>("Invalid Parameter: \"\" is no absolute path"));
}

TEST(ProcDirectory, isTheOnlyArgument)
{
    EXPECT_THAT([] { parseProcDirectory({"--porc=/x"}); },
                throwsText<InvalidParameter>("Invalid Parameter: unknown argument \"--porc=/x\", expected --proc=DIR, "
                                             "--period=SECONDS or --readings=N"));
    EXPECT_THAT([] { parseProcDirectory({"/x"}); },
                throwsText<InvalidParameter>("Invalid Parameter: unknown argument \"/x\", expected --proc=DIR, "
                                             "--period=SECONDS or --readings=N"));
}

TEST(MountPoints, areTheRootUnlessOthersAreGiven)
{
    EXPECT_THAT(parseMountPoints({}), ElementsAre("/"));
    EXPECT_THAT(parseMountPoints({"/home", "/mnt/a=b"}), ElementsAre("/home", "/mnt/a=b"));
}

TEST(MountPoints, areAbsolutePathsAndNoOptions)
{
    EXPECT_THAT(
        [] {
            parseMountPoints({"/", "home"});
        },
        throwsText<InvalidParameter>("Invalid Parameter: \"home\" is no absolute path"));
    EXPECT_THAT([] { parseMountPoints({""}); },
                throwsText<InvalidParameter>("Invalid Parameter: \"\" is no absolute path"));
    EXPECT_THAT([] { parseMountPoints({"--all"}); },
                throwsText<InvalidParameter>("Invalid Parameter: unknown argument \"--all\", expected mount points, "
                                             "--period=SECONDS or --readings=N"));
}

}  // namespace HostMonitor
