// What the readers' targets hold when memory runs out: what they held before, and the members of the text that were
// complete by then, in the order of the text. Never a part of a member.
#include "zelm/metadata/reader_json.h"

#include "tests/metadata/elements.h"
#include "tests/metadata/spelled_out.h"
#include "tests/support/failing_allocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::integer;
using Testing::number;
using Testing::object;
using Testing::string;
using Zelm::Testing::FailingAllocation;
using Zelm::Testing::Shortage;

using MembersInOrder = std::vector<std::pair<std::string, Element>>;

std::string const longMemberName = "a name that is too long to be stored inside of a string object";

/// Not in the order of their names, in which an Object holds them.
std::string const textOfFive = R"({"m":[2.5,"a string that is too long to be stored inside"],")" + longMemberName +
                               R"(":{"b":[[{}]],"a":"another one that is too long to be stored inside"},)"
                               R"("c":4.5,"x":{"y":[0.5,[1.5]]},"b":"the last one that is too long to be stored"})";
MembersInOrder const fiveMembers = {
    {"m", array({number(2.5), string("a string that is too long to be stored inside")})},
    {longMemberName,
     object({{"b", array({array({object({})})})}, {"a", string("another one that is too long to be stored inside")}})},
    {"c", number(4.5)},
    {"x", object({{"y", array({number(0.5), array({number(1.5)})})}})},
    {"b", string("the last one that is too long to be stored")},
};

/// The target with none of the members, with the first one, with the first two and so on.
std::vector<std::string> statesOnTheWay(Object target)
{
    std::vector<std::string> states{Testing::spelledOut(Element(target))};
    for (auto const& [name, element] : fiveMembers) {
        target[name] = element;
        states.push_back(Testing::spelledOut(Element(target)));
    }
    return states;
}

/// Reads into a copy of `before` with each allocation failing in turn, and looks at the target after each failure.
template <class Target, class Read>
void expectWholeMembersAlone(Target const& before, std::vector<std::string> const& states, Read read, Shortage shortage)
{
    std::set<std::size_t> counts;
    std::size_t latest = 0;
    bool failed = true;
    for (unsigned long successes = 0; failed; ++successes) {
        Target target = before;
        bool wasReported = false;
        try {
            FailingAllocation const failing(successes, shortage);
            read(target);
            failed = failing.hasFailed();
        } catch (std::bad_alloc const&) {
            wasReported = true;
        }

        auto const state = std::find(states.begin(), states.end(), Testing::spelledOut(Element(target)));
        ASSERT_TRUE(state != states.end()) << ::testing::PrintToString(Element(target));
        auto const members = static_cast<std::size_t>(state - states.begin());
        EXPECT_GE(members, latest);  // the later memory runs out, the more is complete
        EXPECT_TRUE(wasReported || members == fiveMembers.size());
        latest = members;
        counts.insert(members);
    }

    EXPECT_EQ(latest, fiveMembers.size());
    EXPECT_EQ(counts.size(), fiveMembers.size() + 1);  // none of them to all: each was seen
}

template <class Target, class Read>
void expectWholeMembersAlone(Target const& before, std::vector<std::string> const& states, Read read)
{
    for (auto const shortage : {Shortage::Passing, Shortage::Lasting})
        expectWholeMembersAlone(before, states, read, shortage);
}

Object const filledObject = object({{"kept", array({string("as it was")})}, {"z", integer(1)}});

TEST(ReaderTargetOutOfMemory, keepsWholeMembersAloneWhenTheTokenReaderFails)
{
    std::string const text = textOfFive + " rest";
    auto const read = [&](auto& target) {
        std::istringstream stream(text);
        ReaderJson::Read(target, stream);
    };
    auto const states = statesOnTheWay(filledObject);

    expectWholeMembersAlone(filledObject, states, read);
    expectWholeMembersAlone(Element(filledObject), states, read);
}

TEST(ReaderTargetOutOfMemory, keepsWholeMembersAloneWhenTheFastReaderFails)
{
    expectWholeMembersAlone(filledObject, statesOnTheWay(filledObject),
                            [&](Object& target) { ReaderJson::Read(target, textOfFive); });
}

TEST(ReaderTargetOutOfMemory, keepsTheOldValueOrHasTheNewOneWhereTheFastReaderReplacesIt)
{
    Object const sameNames = object({{"m", object({{"old", integer(1)}})}, {"x", array({integer(2)})}, {"z", {}}});

    expectWholeMembersAlone(sameNames, statesOnTheWay(sameNames),
                            [&](Object& target) { ReaderJson::Read(target, textOfFive); });
}

}  // namespace
}  // namespace Zelm::MetaData
