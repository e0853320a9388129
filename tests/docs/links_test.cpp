// Links in our documents.
#include "../support/temporary_directory.h"
#include "markdown.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace Zelm::Testing {
namespace {

using ::testing::Contains;

TEST(Documents, linkToFilesAndHeadingsThatExist)
{
    for (std::string const folder : {"/", "/docs/"})
        for (auto const& entry : std::filesystem::directory_iterator(ZELM_SOURCE_DIR + folder)) {
            if (entry.path().extension() != ".md")
                continue;
            SCOPED_TRACE(entry.path());
            for (auto const& link : localLinks(readFile(entry.path()))) {
                SCOPED_TRACE(link.file + '#' + link.anchor);
                auto const target = link.file.empty() ? entry.path() : entry.path().parent_path() / link.file;
                ASSERT_TRUE(std::filesystem::exists(target));
                if (!link.anchor.empty()) {
                    EXPECT_THAT(anchors(readFile(target)), Contains(link.anchor));
                }
            }
        }
}

}  // namespace
}  // namespace Zelm::Testing
