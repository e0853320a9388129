// Writing trees of any depth takes no stack for each level.
#include "zelm/metadata/writer_json.h"

#include "tests/metadata/deep_trees.h"
#include "tests/metadata/elements.h"
#include "tests/support/small_stack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>

namespace Zelm::MetaData {
namespace {

using Testing::aMillionLevels;
using Testing::deepArrays;
using Testing::deepText;
using Testing::deepTree;
using Testing::integer;
using Zelm::Testing::onASmallStack;

TEST(DeepWriterJson, writesEachLevelOnOneLine)
{
    onASmallStack([] {
        Element const tree = deepTree(integer(7), aMillionLevels);
        std::ostringstream stream;
        WriterJson::Write(tree, stream, false);

        EXPECT_TRUE(stream.str() == deepText("7", aMillionLevels));
    });
}

/// Takes any amount of text. Counts its bytes and its tabs, and the longest run of tabs.
class TabCounter : public std::streambuf {
public:
    unsigned long bytes = 0;
    unsigned long tabs = 0;
    unsigned long longestRun = 0;

protected:
    int_type overflow(int_type byte) override
    {
        char const c = traits_type::to_char_type(byte);
        count({&c, 1});
        return byte;
    }

    std::streamsize xsputn(char const* text, std::streamsize size) override
    {
        count({text, static_cast<std::size_t>(size)});
        return size;
    }

private:
    void count(std::string_view text)
    {
        bytes += text.size();
        // The writer puts an indentation out in one piece, which is tabs from end to end.
        if (text.front() == '\t' && text.back() == '\t') {
            tabs += text.size();
            longestRun = std::max(longestRun, text.size());
        }
    }
};

TEST(DeepWriterJson, indentsEachLevelByATabOnLinesOfItsOwn)
{
    static constexpr unsigned long levels = 10000;  // the text grows with the square of it
    onASmallStack([] {
        TabCounter counter;
        std::ostream stream(&counter);
        WriterJson::Write(deepArrays(Element(), levels), stream, true);

        unsigned long const lines = 2 * levels + 1;
        EXPECT_EQ(counter.longestRun, levels);
        EXPECT_EQ(counter.tabs, levels * levels);  // 0 to `levels`, and down again to 0
        EXPECT_EQ(counter.bytes, counter.tabs + 2 * levels + 4 + lines - 1);
    });
}

TEST(DeepWriterJson, writesAMillionArraysOnOneLine)
{
    onASmallStack([] {
        std::ostringstream stream;
        WriterJson::Write(deepArrays(integer(7), aMillionLevels), stream, false);

        EXPECT_TRUE(stream.str() == Testing::deepArraysText("7", aMillionLevels));
    });
}

}  // namespace
}  // namespace Zelm::MetaData
