#include "zelm/metadata/name_order.h"

#include "tests/metadata/elements.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Private::headOf;
using Private::isSame;
using Private::NameOrder;
using Private::SoughtName;
using Testing::integer;

/// Names of up to 20 bytes, many of which begin alike, with NUL bytes and bytes above 0x7f among them.
std::string randomName(std::mt19937& random)
{
    static char const bytes[] = {'\0', '\x01', 'a', 'b', '\x7f', '\x80', '\xff'};
    std::string name(random() % 3 == 0 ? "aaaaaaaa" : "");
    auto const size = random() % 13;
    for (unsigned i = 0; i < size; ++i)
        name += bytes[random() % (random() % 2 == 0 ? 2 : sizeof bytes)];
    return name;
}

/// The same text in another kind of string object: one that has a large block for a short text, with other bytes
/// behind it.
std::string inALargeBlock(std::string const& name)
{
    std::string result(100, '\xff');
    result.assign(name);
    return result;
}

TEST(NameOrder, isTheOrderOfStrings)
{
    std::mt19937 random(1);  // NOLINT: the same names each time
    for (int i = 0; i < 30000; ++i) {
        Object::Member const a(randomName(random), Element());
        Object::Member const b(inALargeBlock(randomName(random)), Element());
        SoughtName const soughtA(a.name());
        SoughtName const soughtB(b.name());

        bool const expected = a.name() < b.name();
        ASSERT_EQ(NameOrder()(a, b), expected) << i;
        ASSERT_EQ(NameOrder()(a, soughtB), expected) << i;
        ASSERT_EQ(NameOrder()(soughtA, b), expected) << i;
        ASSERT_EQ(NameOrder()(b, a), b.name() < a.name()) << i;
        ASSERT_EQ(isSame(a.name(), soughtB), a.name() == b.name()) << i;
        ASSERT_TRUE(isSame(a.name(), soughtA)) << i;
    }
}

TEST(NameOrder, readsTheSameHeadFromAnyPlace)
{
    std::mt19937 random(2);  // NOLINT: the same names each time
    for (int i = 0; i < 5000; ++i) {
        std::string const name = randomName(random);
        std::vector<char> const withNothingBehind(name.begin(), name.end());
        std::string shrunk = inALargeBlock(name);
        shrunk.shrink_to_fit();

        std::uint64_t expected = 0;
        for (std::size_t at = 0; at < 8; ++at)
            expected = expected << 8 | (at < name.size() ? static_cast<unsigned char>(name[at]) : 0);
        ASSERT_EQ(headOf(std::string_view(withNothingBehind.data(), withNothingBehind.size())), expected);
        ASSERT_EQ(headOf(name), expected);
        ASSERT_EQ(headOf(shrunk), expected);
        ASSERT_EQ(headOf(inALargeBlock(name)), expected);
    }
}

TEST(NameOrder, needsStringsThatHaveEightBytes)
{
    std::string moved(100, 'x');
    std::string const other(std::move(moved));
    std::string reserved;
    reserved.reserve(1);
    std::string shrunk(100, 'x');
    shrunk.clear();
    shrunk.shrink_to_fit();

    for (std::string const& text : {std::string(), std::string("a"), moved, reserved, shrunk})
        EXPECT_GE(text.capacity(), 8u);
}

TEST(ObjectOfRandomNames, isSortedAndFindsItsMembersHoweverItWasFilled)
{
    std::mt19937 random(3);  // NOLINT: the same names each time
    for (int round = 0; round < 20; ++round) {
        std::vector<std::string> names;
        Object members;
        for (int i = 0; i < 60; ++i) {
            auto const name = randomName(random);
            if (members.find(name) == members.end())
                names.push_back(name);
            members[name] = integer(i);
        }
        std::sort(names.begin(), names.end());
        Object inOrder;
        for (std::string const& name : names)
            inOrder.insert(Object::Member(name, members[name]), inOrder.end());

        ASSERT_EQ(members.size(), names.size());
        ASSERT_EQ(inOrder, members);
        ASSERT_TRUE(
            std::equal(names.begin(), names.end(), members.begin(), members.end(),
                       [](std::string const& name, Object::Member const& member) { return name == member.name(); }));
        for (std::string const& name : names)
            ASSERT_EQ(members.find(std::string_view(name))->name(), name);
    }
}

}  // namespace
}  // namespace Zelm::MetaData
