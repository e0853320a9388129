// Reading text of any depth from a stream takes no stack for each level.
#include "zelm/metadata/reader_json.h"

#include "tests/metadata/deep_trees.h"
#include "tests/metadata/elements.h"
#include "tests/support/small_stack.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <utility>

namespace Zelm::MetaData {
namespace {

using Testing::aMillionLevels;
using Testing::deepLevels;
using Testing::deepText;
using Testing::deepTree;
using Testing::innermostOf;
using Testing::integer;
using Zelm::Testing::onASmallStack;

TEST(DeepTokenReader, readsEveryLevel)
{
    onASmallStack([] {
        std::istringstream stream(deepText("{\"x\":7}", aMillionLevels + 2) + " rest");
        Object object;
        ReaderJson::Read(object, stream);

        EXPECT_EQ(innermostOf(Element(std::move(object)), aMillionLevels + 2), Testing::object({{"x", integer(7)}}));
        EXPECT_EQ(stream.get(), ' ');
    });
}

TEST(DeepTokenReader, readsIntoAnElementThatIsDeepAlready)
{
    onASmallStack([] {
        std::istringstream stream(deepText("true", 2));
        Element element = deepTree(Element(), deepLevels + 1);  // an Array, which gives way
        ReaderJson::Read(element, stream);

        EXPECT_EQ(element, deepTree(Testing::boolean(true), 2));
    });
}

/// What the token reader says of a text. The target keeps what was complete before the fault.
struct Refusal {
    std::string text;
    std::uint32_t offset;
    std::size_t membersKept;
};

Refusal refusalOf(std::string const& text)
{
    Object target;
    std::istringstream stream(text);
    try {
        ReaderJson::Read(target, stream);
    } catch (ReaderJson::ParseException const& exception) {
        return {exception.what(), exception.tokenStart().documentOffset, target.size()};
    } catch (ReaderJson::ScanException const& exception) {
        return {exception.what(), exception.errorPosition().documentOffset, target.size()};
    } catch (Zelm::Exception::InvalidParameter const& exception) {
        return {exception.what(), 0, target.size()};
    }
    return {"none", 0, target.size()};
}

TEST(DeepTokenReader, refusesAFaultBelowEveryLevelWithItsOwnTextAndPlace)
{
    std::string const front = "{\"whole\":1,\"half\":";
    std::string const open(deepLevels / 4, '[');  // an Array takes more memory than an Object
    auto const at = static_cast<std::uint32_t>(front.size() + open.size());
    struct Row {
        char const* inside;
        char const* text;
        std::uint32_t offset;
    };
    Row const rows[] = {
        {"}", "Unexpected token: }", at},
        {"1 2]}", "Unexpected token: 2", at + 2},
        {"{\"a\"}}", "Unexpected token: }", at + 4},
        {"1-2}", "Unexpected character in NUMBER token: -", at},
        {"nul}", "Expected string: null", at + 4},
        {"{\"a\":1,\"a\":2}}", "Invalid Parameter: Object member already exists: a", 0},
    };
    onASmallStack([&] {
        for (Row const& row : rows) {
            SCOPED_TRACE(row.inside);
            auto const refusal = refusalOf(front + open + row.inside);
            EXPECT_EQ(refusal.text, row.text);
            EXPECT_EQ(refusal.offset, row.offset);
            EXPECT_EQ(refusal.membersKept, std::string(row.text).find("Expected") == 0 ? 0u : 1u);
        }
    });
}

TEST(DeepTokenReader, readsAMillionArrays)
{
    onASmallStack([] {
        std::istringstream stream("{\"a\":" + Testing::deepArraysText("7", aMillionLevels) + '}');
        Object object;
        ReaderJson::Read(object, stream);

        EXPECT_TRUE(object["a"] == Testing::deepArrays(integer(7), aMillionLevels));
    });
}

}  // namespace
}  // namespace Zelm::MetaData
