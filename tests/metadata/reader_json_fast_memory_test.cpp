// The fast path's parser has memory of its own, from malloc and realloc. Each time that there is none of it, at the
// first call, at the second one and so on to the last, the reader says so and leaves the target as it was. What it
// leaves behind is for the leak check of the sanitizers' build.
//
// A program of its own: only here are these others, and everything else is tested with those of the system.
#include "zelm/metadata/reader_json.h"

#include "tests/metadata/elements.h"
#include "tests/metadata/spelled_out.h"
#include "tests/support/failing_malloc.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace Zelm::MetaData {
namespace {

using Testing::spelledOut;
using Zelm::Testing::FailingMalloc;

std::string repeated(std::string const& piece, int times)
{
    std::string text;
    for (int i = 0; i < times; ++i)
        text += piece;
    return text;
}

struct TextAndGrowth {
    char const* why;
    std::string text;
    unsigned long fewestFailures;
};

std::string const longString = '"' + std::string(300, 'x') + "\\n\"";

TextAndGrowth const textsThatGrow[] = {
    {"the least that a text needs", "{\"a\":1}", 1},
    {"a long array, on the parser's stack", "{\"a\":[" + repeated("1,", 20000) + "1]}", 10},
    {"many members", '{' + repeated("\"a\":[],", 2000) + "\"b\":1}", 5},
    {"a long string, on the stack of its own", "{\"a\":\"" + std::string(100000, 'x') + "\"}", 10},
    {"many strings, in the pool", "{\"a\":[" + repeated(longString + ',', 1000) + longString + "]}", 10},
    {"a text that is too deep for the first parser",
     "{\"a\":" + repeated("[", 500) + repeated("2.5,", 5000) + "2.5" + repeated("]", 500) + '}', 10},
    {"a fault at the end", "{\"a\":[" + repeated(longString + ',', 200) + "}", 4},
};

TEST(FastReaderOutOfMemory, isReportedForEachPieceOfTheParsersMemoryAndLeavesTheTarget)
{
    Object const before = Testing::object({{"a", Testing::array({Element()})}, {"kept", Testing::integer(7)}});
    for (auto const& row : textsThatGrow) {
        SCOPED_TRACE(row.why);
        Object expected = before;
        ReaderJson::Read(expected, row.text);

        Object target = before;
        unsigned long failures = 0;
        for (bool failed = true; failed;) {
            bool wasReported = false;
            try {
                FailingMalloc const failing(failures);
                ReaderJson::Read(target, row.text);
                failed = failing.hasFailed();
            } catch (std::bad_alloc const&) {
                wasReported = true;
            }
            ASSERT_EQ(wasReported, failed) << "call " << failures;
            if (failed) {
                ASSERT_TRUE(spelledOut(target) == spelledOut(before)) << "call " << failures;
                ++failures;
            }
        }

        EXPECT_TRUE(spelledOut(target) == spelledOut(expected));
        EXPECT_GE(failures, row.fewestFailures);
    }
}

int newHandlerCalls = 0;

TEST(FastReaderOutOfMemory, asksTheNewHandlerForMoreAsOperatorNewDoes)
{
    auto const& text = textsThatGrow[1].text;
    Object expected;
    ReaderJson::Read(expected, text);
    auto const before = std::set_new_handler([] { ++newHandlerCalls; });

    int failures = 0;
    for (bool failed = true; failed;) {
        Object target;
        {
            FailingMalloc const failing(static_cast<unsigned long>(failures));
            ReaderJson::Read(target, text);
            failed = failing.hasFailed();
        }
        failures += failed ? 1 : 0;
        ASSERT_TRUE(spelledOut(target) == spelledOut(expected)) << "call " << failures;
    }
    std::set_new_handler(before);

    EXPECT_GT(failures, 10);
    EXPECT_EQ(newHandlerCalls, failures);
}

}  // namespace
}  // namespace Zelm::MetaData
