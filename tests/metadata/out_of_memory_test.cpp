// What conversions, mirrored objects and both readers leave behind when memory runs out, once and for good.
#include "tests/metadata/elements.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/printed_by.h"
#include "zelm/metadata/mirrored_object.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/reflector.h"
#include "zelm/metadata/typed_conversions.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace Zelm::MetaData {
namespace {

using namespace Testing;
using Zelm::Testing::failEachAllocationInTurn;
using Zelm::Testing::FailingAllocation;
using Zelm::Testing::printedBy;
using Zelm::Testing::Shortage;

std::string const longText = "a text too long to be stored inside of a string object";

TEST(CopyOutOfMemory, leavesTheSourceAsItWasAndNoPartOfTheCopy)
{
    Element const source = object({{longText, array({string(longText), object({{"b", string(longText)}})})}});
    Element const before = source;

    for (auto const shortage : {Shortage::Passing, Shortage::Lasting}) {
        auto const failures =
            failEachAllocationInTurn([&] { Element const copy(source); }, [&] { EXPECT_EQ(source, before); }, shortage);

        EXPECT_GT(failures, 5u);
    }
}

TEST(SetAsOutOfMemory, leavesAnElementThatIsFitForUse)
{
    Element target = integer(7);

    auto const failures = failEachAllocationInTurn(
        [&] {
            SetAs(std::vector<std::string>{longText, longText}, target);
        },
        [&] { Element const copy(target); });

    EXPECT_GT(failures, 4u);
    EXPECT_EQ(target, array({string(longText), string(longText)}));
}

struct Record : MirroredObject {
    Reflector<std::string, false, true> name{this, "name", ""};
    Reflector<int, false, true> number{this, "number", 0};
    ReflectorArray<std::string> texts{this, "texts", false};
};

Element const recordForm =
    object({{"name", string(longText)}, {"number", integer(5)}, {"texts", array({string(longText)})}});

TEST(MirroredObjectOutOfMemory, neverThrowsWhileItReadsAndReadsTheMembersThatNeedNoMemory)
{
    for (auto const shortage : {Shortage::Passing, Shortage::Lasting}) {
        bool failed = true;
        for (unsigned long successes = 0; failed; ++successes) {
            Record record;
            printedBy([&] {  // a member that can't be read may print a line
                FailingAllocation const failing(successes, shortage);
                record.copyFromMetaData(recordForm);
                failed = failing.hasFailed();
            });

            EXPECT_EQ(record.number(), 5);
            EXPECT_TRUE(record.name() == longText || record.name().empty());
            EXPECT_TRUE(!record.texts.initialized() || record.texts() == std::vector<std::string>{longText});
            if (!failed) {
                EXPECT_EQ(record.name(), longText);
                EXPECT_TRUE(record.texts.initialized());
            }
        }
    }
}

TEST(MirroredObjectOutOfMemory, canBeWrittenAgainIntoTheSameElement)
{
    Record record;
    record.copyFromMetaData(recordForm);
    Element target;

    for (auto const shortage : {Shortage::Passing, Shortage::Lasting}) {
        auto const failures = failEachAllocationInTurn([&] { record.copyToMetaData(target); },
                                                       [&] { Element const copy(target); }, shortage);

        EXPECT_GT(failures, 0u);
        EXPECT_EQ(target, recordForm);
        target = Element();
    }
}

TEST(ReadersOutOfMemory, reportALackThatLasts)
{
    std::string const text =
        R"({"a":[1,2.5,"a string too long for its object",{"b":null}],"a name too long":{"c":[[]]}})";
    for (bool const fast : {true, false}) {
        SCOPED_TRACE(fast ? "fast path" : "token reader");
        Object object;
        auto const failures = failEachAllocationInTurn(
            [&] {
                object.clear();
                if (fast) {
                    ReaderJson::Read(object, text);
                } else {
                    std::istringstream stream(text);
                    ReaderJson::Read(object, stream);
                }
            },
            [] {}, Shortage::Lasting);

        EXPECT_GT(failures, 10u);
        EXPECT_EQ(object.size(), 2u);
    }
}

TEST(JsonStringOutOfMemory, isWholeOrNotAtAll)
{
    Object object;
    for (int i = 0; i < 50; ++i)  // more text than a stream's buffer holds at first
        object[longText + std::to_string(i)] = array({integer(i), string(longText)});
    auto const whole = Json::metaDatatoJsonString(object);

    for (auto const shortage : {Shortage::Passing, Shortage::Lasting}) {
        std::string written;
        auto const failures = failEachAllocationInTurn(
            [&] {
                written = Json::metaDatatoJsonString(object);
                EXPECT_EQ(written, whole);
            },
            [&] { EXPECT_EQ(written, ""); }, shortage);

        EXPECT_GT(failures, 3u);
        EXPECT_EQ(written, whole);
    }
}

}  // namespace
}  // namespace Zelm::MetaData
