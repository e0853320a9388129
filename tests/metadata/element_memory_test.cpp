#include "zelm/metadata/element.h"

#include "tests/metadata/elements.h"
#include "tests/support/failing_allocator.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::integer;
using Testing::null;
using Testing::number;
using Testing::object;
using Testing::string;
using Zelm::Testing::AllocationCount;
using Zelm::Testing::failEachAllocationInTurn;

constexpr char longName[] = "a name too long to be stored inside of a string object";

/// How often the call allocates.
template <class Call> unsigned long allocationsOf(Call const& call)
{
    AllocationCount const allocations;
    call();
    return allocations.made();
}

Element treeOfLongNames()
{
    return object({{"a", array({integer(1), string(longName)})}, {longName, object({{"b", number(0.5)}})}});
}

// ------------------------------------------------------------------------------------------------ what costs no memory

TEST(AllocationCount, seesTheAllocationsOfTheLibrary)
{
    EXPECT_EQ(allocationsOf([] { Element const element = Trivial_T<long>(1); }), 1u);
}

TEST(ElementMemory, isUntouchedByDefaultValues)
{
    EXPECT_EQ(allocationsOf([] {
                  Element const element;
                  Element const copy = element;
                  Element const fromNull = Null();
                  Object const members;
                  Object const membersCopy = members;
                  Array const elements;
                  Array const elementsCopy = elements;
              }),
              0u);
}

TEST(ElementMemory, isUntouchedByMovesAndSwaps)
{
    Element a = treeOfLongNames();
    Element b = integer(1);
    Object members = object({{"a", integer(1)}});
    Object otherMembers;
    Array elements = array({integer(1)});
    Array otherElements;

    EXPECT_EQ(allocationsOf([&] {
                  Element c = std::move(a);
                  a = std::move(c);
                  std::swap(a, b);
                  std::swap(members, otherMembers);
                  std::swap(elements, otherElements);
              }),
              0u);
}

TEST(ElementMemory, isUntouchedByLookUps)
{
    Element element = treeOfLongNames();
    Element const& view = element;
    std::string const name = longName;
    Object& members = element;
    Object const& constMembers = members;

    EXPECT_EQ(allocationsOf([&] {
                  (void)view[longName];
                  (void)view[name];
                  (void)view[std::string_view(name)];
                  (void)view["a"][1];
                  (void)element[longName];
                  (void)element["a"][1];
                  (void)members.find(longName);
                  (void)constMembers.find(name);
                  (void)constMembers.find("a name that isn't there and that is long, too");
                  (void)members[longName];
                  (void)constMembers[longName];
              }),
              0u);
}

TEST(ElementMemory, isUntouchedByCastsConversionsAndComparisons)
{
    Element element = treeOfLongNames();
    Element const other = element;
    Object const members = other;
    Element const text = string(longName);
    Element const numeric = number(2.5);

    EXPECT_EQ(allocationsOf([&] {
                  (void)static_cast<Object const&>(other);
                  (void)static_cast<Object&>(element);
                  (void)text.asString();
                  (void)numeric.asInt8();
                  (void)numeric.asDouble();
                  (void)(element == other);
                  (void)(element == members);
                  (void)(members == element);
                  (void)(numeric != text);
              }),
              0u);
}

TEST(ElementMemory, isNotCopiedWhenAMemberOrElementIsMovedIn)
{
    Object::Member member(longName, treeOfLongNames());
    Object members;
    EXPECT_EQ(allocationsOf([&] { members.insert(std::move(member)); }), 1u);

    Array elements = array({null()});
    Element element = treeOfLongNames();
    EXPECT_EQ(allocationsOf([&] { elements.insert(std::move(element)); }), 0u);
}

// ------------------------------------------------------------------------------------------- when there is none left

TEST(ElementOutOfMemory, staysAsItWasWhenAssigned)
{
    Element const source = treeOfLongNames();
    Element const before = object({{"kept", array({integer(1)})}});
    Element target = before;
    Element const* const reference = &target["kept"][0];

    auto const failures = failEachAllocationInTurn([&] { target = source; },
                                                   [&] {
                                                       ASSERT_EQ(target, before);
                                                       ASSERT_EQ(&target["kept"][0], reference);
                                                   });

    EXPECT_GT(failures, 5u);
    EXPECT_EQ(target, source);
}

TEST(ElementOutOfMemory, staysAsItWasWhenAssignedFromAPartOfItself)
{
    Element const before = treeOfLongNames();
    Element target = before;

    auto const failures = failEachAllocationInTurn([&] { target = target["a"]; }, [&] { ASSERT_EQ(target, before); });

    EXPECT_GT(failures, 2u);
    EXPECT_EQ(target, array({integer(1), string(longName)}));
}

TEST(ElementOutOfMemory, staysAsItWasWhenRetypedByACast)
{
    Element target = integer(7);

    EXPECT_GT(
        failEachAllocationInTurn([&] { (void)static_cast<Object&>(target); }, [&] { ASSERT_EQ(target, integer(7)); }),
        0u);

    EXPECT_EQ(target, Element(Object()));
}

TEST(ElementOutOfMemory, staysAsItWasWhenRetypedByIndexing)
{
    Element members = integer(7);
    EXPECT_GT(failEachAllocationInTurn([&] { (void)members[longName]; }, [&] { ASSERT_EQ(members, integer(7)); }), 2u);
    EXPECT_EQ(members, object({{longName, null()}}));

    Element elements = integer(7);
    EXPECT_GT(failEachAllocationInTurn([&] { (void)elements[1000]; }, [&] { ASSERT_EQ(elements, integer(7)); }), 2u);
    EXPECT_EQ(static_cast<Array&>(elements).size(), 1001u);
}

TEST(ObjectOutOfMemory, staysAsItWas)
{
    Object const before = object({{"a", treeOfLongNames()}, {"c", integer(1)}});
    Object::Member const member("b", treeOfLongNames());
    auto const unchanged = [&before](Object const& members) { return [&] { ASSERT_EQ(members, before); }; };

    Object indexed = before;
    EXPECT_GT(failEachAllocationInTurn([&] { (void)indexed[longName]; }, unchanged(indexed)), 0u);
    EXPECT_EQ(indexed.size(), 3u);

    Object extended = before;
    EXPECT_GT(failEachAllocationInTurn([&] { extended.insert(member); }, unchanged(extended)), 0u);
    EXPECT_EQ(extended["b"], treeOfLongNames());

    Object assigned = before;
    Object const source = object({{"x", treeOfLongNames()}});
    EXPECT_GT(failEachAllocationInTurn([&] { assigned = source; }, unchanged(assigned)), 0u);
    EXPECT_EQ(assigned, source);
}

TEST(ObjectOutOfMemory, leavesAMemberThatCouldNotBeMovedInWithItsOwner)
{
    Object members;
    Object::Member member("a", treeOfLongNames());

    EXPECT_GT(failEachAllocationInTurn([&] { members.insert(std::move(member)); },
                                       [&] {
                                           ASSERT_TRUE(members.empty());
                                           ASSERT_EQ(member, Object::Member("a", treeOfLongNames()));
                                       }),
              0u);

    EXPECT_EQ(members, object({{"a", treeOfLongNames()}}));
}

TEST(ArrayOutOfMemory, staysAsItWas)
{
    Array const before = array({treeOfLongNames(), integer(1)});
    auto const unchanged = [&before](Array const& elements) { return [&] { ASSERT_EQ(elements, before); }; };

    Array appended = before;
    EXPECT_GT(failEachAllocationInTurn([&] { appended.insert(appended[0]); }, unchanged(appended)), 0u);
    EXPECT_EQ(appended, array({treeOfLongNames(), integer(1), treeOfLongNames()}));

    Array prepended = before;
    EXPECT_GT(
        failEachAllocationInTurn([&] { prepended.insert(prepended[0], prepended.begin()); }, unchanged(prepended)), 0u);
    EXPECT_EQ(prepended, array({treeOfLongNames(), treeOfLongNames(), integer(1)}));

    Array resized = before;
    EXPECT_GT(failEachAllocationInTurn([&] { resized.resize(1000); }, unchanged(resized)), 0u);
    EXPECT_EQ(resized.size(), 1000u);

    Array assigned = before;
    Array const source = array({treeOfLongNames()});
    EXPECT_GT(failEachAllocationInTurn([&] { assigned = source; }, unchanged(assigned)), 0u);
    EXPECT_EQ(assigned, source);
}

}  // namespace
}  // namespace Zelm::MetaData
