// The guide quotes the example message_patterns: what it shows is what is built and what is printed.
#include "../support/temporary_directory.h"
#include "markdown.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>

namespace Zelm::Testing {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;

std::string const example = ZELM_SOURCE_DIR "/examples/message_patterns/";
std::string const expectedOutputName = "expected_output.txt";

std::string guide()
{
    return readFile(ZELM_SOURCE_DIR "/docs/messaging.md");
}

/// Without the blanks that all lines begin with.
std::string unindented(std::string const& text)
{
    std::size_t indent = std::string::npos;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        indent = std::min(indent, line.find_first_not_of(' '));
    std::string result;
    std::istringstream again(text);
    for (std::string line; std::getline(again, line);)
        result += (line.empty() ? line : line.substr(indent)) + '\n';
    return result;
}

/// The piece of a source file between the marks of that name; a text that says so if there is none.
std::string pieceOf(std::string const& source, std::string const& name)
{
    auto const begin = source.find("// quote begins: " + name + '\n');
    auto const end = source.find("// quote ends: " + name + '\n');
    if (begin == std::string::npos || end == std::string::npos)
        return "no piece is called " + name;
    auto const first = source.find('\n', begin) + 1;
    auto const behind = source.rfind('\n', end) + 1;
    return unindented(source.substr(first, behind - first));
}

/// "pump.cpp: stop" names the piece "stop" of pump.cpp.
std::string quotedPiece(std::string const& name)
{
    auto const colon = name.find(": ");
    if (colon == std::string::npos || !std::filesystem::exists(example + name.substr(0, colon)))
        return "no file of the example is named by \"" + name + '"';
    return pieceOf(readFile(example + name.substr(0, colon)), name.substr(colon + 2));
}

TEST(MessagingGuide, showsPiecesOfTheExampleAsTheyAre)
{
    for (auto const& block : fencedBlocks(guide())) {
        SCOPED_TRACE(block.name);
        if (block.name != expectedOutputName) {
            EXPECT_EQ(block.language, "cpp");
            EXPECT_EQ(block.text, quotedPiece(block.name));
        }
    }
}

TEST(MessagingGuide, showsWhatTheExamplePrints)
{
    std::string const printed = '\n' + readFile(example + expectedOutputName);
    int shown = 0;
    for (auto const& block : fencedBlocks(guide())) {
        if (block.name != expectedOutputName)
            continue;
        ++shown;
        EXPECT_EQ(block.language, "text");
        EXPECT_THAT(printed, HasSubstr('\n' + block.text));  // whole lines
    }
    EXPECT_GT(shown, 0);
}

TEST(MessagingGuide, showsEveryPieceThatIsMarkedInTheExample)
{
    std::set<std::string> shown;
    for (auto const& block : fencedBlocks(guide()))
        shown.insert(block.name);
    for (auto const& entry : std::filesystem::directory_iterator(example)) {
        std::istringstream lines(readFile(entry.path()));
        for (std::string line; std::getline(lines, line);) {
            std::string const mark = "// quote begins: ";
            if (auto const at = line.find(mark); at != std::string::npos) {
                EXPECT_THAT(shown, Contains(entry.path().filename().string() + ": " + line.substr(at + mark.size())));
            }
        }
    }
}

}  // namespace
}  // namespace Zelm::Testing
