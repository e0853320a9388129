#include "zelm/metadata/element.h"

#include "tests/metadata/elements.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::integer;
using Testing::null;
using Testing::object;
using Testing::string;
using Zelm::Testing::throwsText;

std::vector<std::string> namesOf(Object const& object)
{
    std::vector<std::string> names;
    for (Object::Member const& member : object)
        names.push_back(member.name());
    return names;
}

// ------------------------------------------------------------------------------------------------------------- members

TEST(ObjectMember, holdsNameAndElement)
{
    Object::Member member("a", integer(1));
    Object::Member const& view = member;
    EXPECT_EQ(view.name(), "a");
    EXPECT_EQ(view.element(), integer(1));

    member.name() = "b";
    member.element() = integer(2);
    EXPECT_EQ(view.name(), "b");
    EXPECT_EQ(view.element(), integer(2));
}

TEST(ObjectMember, copiesWhatItIsMadeFrom)
{
    std::string name = "a";
    Element element = object({{"x", integer(1)}});

    Object::Member const member(name, element);
    name = "changed";
    element["x"] = integer(9);

    EXPECT_EQ(member.name(), "a");
    EXPECT_EQ(member.element(), object({{"x", integer(1)}}));
}

TEST(ObjectMember, isEqualByNameAndElementButOrderedByNameAlone)
{
    Object::Member const one("a", integer(1));

    EXPECT_TRUE(one == Object::Member("a", integer(1)));
    EXPECT_TRUE(one != Object::Member("a", integer(2)));
    EXPECT_TRUE(one != Object::Member("b", integer(1)));
    EXPECT_TRUE(one < Object::Member("b", integer(0)));
    EXPECT_FALSE(one < Object::Member("a", integer(2)));
    EXPECT_FALSE(Object::Member("a", integer(2)) < one);
}

TEST(ObjectMember, handsOutItsElementForWritingThoughConst)
{
    Object members = object({{"a", integer(1)}});

    members.find("a")->editableElement() = integer(2);

    EXPECT_EQ(members, object({{"a", integer(2)}}));
}

// --------------------------------------------------------------------------------------------------------------- order

TEST(Object, isEmptyByDefault)
{
    Object const members;

    EXPECT_TRUE(members.empty());
    EXPECT_EQ(members.size(), 0u);
    EXPECT_TRUE(members.begin() == members.end());
}

TEST(Object, listsItsMembersByTheUnsignedBytesOfTheirNames)
{
    std::vector<std::string> const ascending = {"",    std::string(1, '\0'),  "\x01", "10", "9",    "Z",
                                                "a",   std::string("a\0", 2), "aa",   "b",  "\x7F", "\x80",
                                                "\xFF"};
    Object members;

    for (auto name = ascending.rbegin(); name != ascending.rend(); ++name)
        members[*name];

    EXPECT_EQ(namesOf(members), ascending);
    for (std::size_t i = 0; i + 1 < ascending.size(); ++i)
        EXPECT_TRUE(Object::Member(ascending[i], null()) < Object::Member(ascending[i + 1], null()));
}

TEST(Object, listsMembersMadeByIndexingInOrder)
{
    Object members;
    members["b"];
    members["a"];

    EXPECT_EQ(namesOf(members), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(std::prev(members.end())->name(), "b");
}

// ------------------------------------------------------------------------------------------------------------- look-up

TEST(Object, findsAMemberByNameAlone)
{
    Object members = object({{"a", integer(1)}, {"b", integer(2)}});
    Object const& view = members;
    std::string const name = "b";

    EXPECT_EQ(members.find("b")->element(), integer(2));
    EXPECT_EQ(view.find("b")->element(), integer(2));
    EXPECT_TRUE(view.find(name) == view.find("b"));
    EXPECT_TRUE(view.find(std::string_view(name)) == view.find("b"));
    EXPECT_TRUE(view.find(Trivial_T<std::string>(name)) == view.find("b"));
    EXPECT_TRUE(members.find("x") == members.end());
    EXPECT_TRUE(view.find("") == view.end());
    EXPECT_TRUE(view.find(std::string("b\0", 2)) == view.end());
}

TEST(Object, indexingCreatesANullMemberWhereThereIsNone)
{
    Object members;

    Element& created = members["a"];

    EXPECT_EQ(created.GetElementType(), ElementType::Null);
    EXPECT_EQ(&members["a"], &created);
    EXPECT_EQ(members.size(), 1u);
}

TEST(Object, indexingReplacesTheElementOfAMemberThatIsThere)
{
    Object members = object({{"a", integer(1)}});

    members["a"] = string("y");

    EXPECT_EQ(members, object({{"a", string("y")}}));
}

TEST(Object, constIndexingRefusesANameThatIsNotThere)
{
    Object const members = object({{"a", integer(1)}});

    EXPECT_EQ(members["a"], integer(1));
    EXPECT_THAT([&] { (void)members["age"]; },
                throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: Object member not found: age"));
    EXPECT_THAT([&] { (void)members[""]; },
                throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: Object member not found: "));
    EXPECT_EQ(members.size(), 1u);
}

// ----------------------------------------------------------------------------------------------------------- insertion

TEST(Object, insertsACopyAndTellsWhereItStands)
{
    Object members = object({{"b", null()}});
    Object::Member const member("a", integer(1));

    auto const position = members.insert(member);

    EXPECT_TRUE(position == members.begin());
    EXPECT_EQ(*position, member);
    EXPECT_NE(&position->element(), &member.element());
}

TEST(Object, insertRefusesANameThatIsThereAndKeepsItsElement)
{
    Object members = object({{"a", string("x")}, {"b", null()}});
    Object const before = members;
    Object::Member again("a", string("y"));
    std::string const expected = "Invalid Parameter: Object member already exists: a";

    EXPECT_THAT([&] { members.insert(again); }, throwsText<Zelm::Exception::InvalidParameter>(expected));
    EXPECT_THAT([&] { members.insert(std::move(again)); }, throwsText<Zelm::Exception::InvalidParameter>(expected));
    EXPECT_THAT([&] { members.insert(again, members.begin()); },
                throwsText<Zelm::Exception::InvalidParameter>(expected));
    EXPECT_THAT([&] { members.insert(again, std::next(members.begin())); },
                throwsText<Zelm::Exception::InvalidParameter>(expected));

    EXPECT_EQ(members, before);
    EXPECT_EQ(again, Object::Member("a", string("y")));
}

TEST(Object, insertsInOrderWhateverTheHint)
{
    std::vector<std::string> const present = {"b", "d", "f"};
    for (std::string const name : {"a", "b", "c", "d", "e", "f", "g"}) {
        for (long hint = 0; hint <= 3; ++hint) {
            SCOPED_TRACE(name + " at " + std::to_string(hint));
            Object members = object({{"b", null()}, {"d", null()}, {"f", null()}});
            bool const isThere = std::count(present.begin(), present.end(), name) != 0;
            Object::Member const member(name, integer(1));
            auto const position = std::next(members.begin(), hint);
            if (isThere) {
                EXPECT_THROW(members.insert(member, position), Zelm::Exception::InvalidParameter);
                EXPECT_EQ(namesOf(members), present);
                continue;
            }
            EXPECT_EQ(*members.insert(member, position), member);
            auto expected = present;
            expected.insert(std::lower_bound(expected.begin(), expected.end(), name), name);
            EXPECT_EQ(namesOf(members), expected);
        }
    }
}

TEST(Object, insertsAMemberOfItsOwnSubtree)
{
    Object members = object({{"a", object({{"b", integer(1)}})}});
    Object& inner = members["a"];

    members.insert(*inner.begin());

    EXPECT_EQ(members, object({{"a", object({{"b", integer(1)}})}, {"b", integer(1)}}));
}

TEST(Object, keepsReferencesToMembersAcrossInsertionsAndOtherErasures)
{
    Object members = object({{"m", integer(1)}, {"x", null()}});
    Element& element = members["m"];

    members.insert({"a", null()});
    members.insert({"z", null()});
    members.erase(members.find("x"));

    EXPECT_EQ(&members["m"], &element);
    EXPECT_EQ(element, integer(1));
}

// ------------------------------------------------------------------------------------------------------------- removal

TEST(Object, eraseTellsWhereTheNextMemberStands)
{
    Object members = object({{"a", null()}, {"b", null()}, {"c", null()}});

    EXPECT_EQ(members.erase(members.find("b"))->name(), "c");
    auto const behindTheLast = members.erase(members.find("c"));
    EXPECT_TRUE(behindTheLast == members.end());
    EXPECT_EQ(namesOf(members), std::vector<std::string>{"a"});
}

TEST(Object, clearRemovesAllMembers)
{
    Object members = object({{"a", null()}, {"b", null()}});

    members.clear();

    EXPECT_TRUE(members.empty());
    EXPECT_EQ(members, Object());
}

// ---------------------------------------------------------------------------------------------------- copies and moves

TEST(Object, copiesAreIndependent)
{
    Object const source = object({{"a", object({{"b", integer(1)}})}});
    Object copy = source;
    Object assigned = object({{"x", null()}});
    assigned = source;

    copy["a"]["b"] = integer(2);
    assigned["a"]["b"] = integer(3);

    EXPECT_EQ(source, object({{"a", object({{"b", integer(1)}})}}));
    EXPECT_EQ(namesOf(assigned), std::vector<std::string>{"a"});
}

TEST(Object, isEmptyAfterItWasMovedFrom)
{
    Object source = object({{"a", integer(1)}});
    Element const* const element = &source["a"];

    Object constructed = std::move(source);
    EXPECT_TRUE(source.empty());
    Object assigned = object({{"x", null()}});
    assigned = std::move(constructed);
    EXPECT_TRUE(constructed.empty());

    EXPECT_EQ(&assigned["a"], element);
    source["again"];
    EXPECT_EQ(source.size(), 1u);
}

TEST(Object, selfAssignmentKeepsReferences)
{
    Object members = object({{"a", integer(1)}});
    Object& same = members;
    Element const& element = members["a"];

    members = same;
    members = std::move(same);

    EXPECT_EQ(&members["a"], &element);
    EXPECT_EQ(element, integer(1));
}

TEST(Object, canBeAssignedFromAPartOfItself)
{
    Object copied = object({{"a", object({{"b", integer(1)}})}});
    copied = static_cast<Object const&>(std::as_const(copied)["a"]);
    EXPECT_EQ(copied, object({{"b", integer(1)}}));

    Object moved = object({{"a", object({{"b", integer(1)}})}});
    moved = std::move(static_cast<Object&>(moved["a"]));
    EXPECT_EQ(moved, object({{"b", integer(1)}}));
}

TEST(Object, swaps)
{
    Object a = object({{"a", null()}});
    Object b;

    std::swap(a, b);

    EXPECT_TRUE(a.empty());
    EXPECT_EQ(namesOf(b), std::vector<std::string>{"a"});
}

TEST(Object, agreesWithAMapOverRandomChanges)
{
    std::mt19937 random(20240229);  // NOLINT(cert-msc51-cpp): the same sequence in each run
    Object members;
    std::map<std::string, long> oracle;

    for (long step = 0; step < 4000; ++step) {
        std::string name(random() % 3, ' ');
        for (char& letter : name)
            letter = static_cast<char>(random() % 4 * 85);  // 0, 85, 170, 255
        auto const found = members.find(name);
        ASSERT_EQ(found != members.end(), oracle.count(name) == 1);
        switch (random() % 3) {
        case 0:
            members[name] = integer(step);
            oracle[name] = step;
            break;
        case 1:
            if (found == members.end()) {
                auto const hint = std::next(members.begin(), static_cast<long>(random() % (members.size() + 1)));
                members.insert({name, integer(step)}, hint);
                oracle[name] = step;
            }
            break;
        default:
            if (found != members.end()) {
                members.erase(found);
                oracle.erase(name);
            }
        }
    }

    ASSERT_EQ(members.size(), oracle.size());
    auto expected = oracle.begin();
    for (Object::Member const& member : members) {
        EXPECT_EQ(member, Object::Member(expected->first, integer(expected->second)));
        ++expected;
    }
}

}  // namespace
}  // namespace Zelm::MetaData
