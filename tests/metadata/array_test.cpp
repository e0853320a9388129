#include "zelm/metadata/element.h"

#include "tests/metadata/elements.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::integer;
using Testing::null;
using Testing::object;
using Testing::string;
using Zelm::Testing::throwsText;

static_assert(
    std::is_same_v<std::iterator_traits<Array::iterator>::iterator_category, std::random_access_iterator_tag>);
static_assert(std::is_convertible_v<Array::iterator, Array::const_iterator>);

TEST(Array, isEmptyByDefault)
{
    Array elements;
    Array const& view = elements;

    EXPECT_TRUE(view.empty());
    EXPECT_EQ(view.size(), 0u);
    EXPECT_TRUE(elements.begin() == elements.end());
    EXPECT_TRUE(view.begin() == view.end());
}

TEST(Array, indexingBeyondTheEndExtendsItWithNulls)
{
    Array elements;

    elements[5];

    ASSERT_EQ(elements.size(), 6u);
    for (Element const& element : elements)
        EXPECT_EQ(element.GetElementType(), ElementType::Null);
}

TEST(Array, indexingWithinItChangesNothing)
{
    Array elements = array({integer(1), integer(2)});

    EXPECT_EQ(elements[1], integer(2));
    EXPECT_EQ(elements.size(), 2u);
}

TEST(Array, constIndexingRefusesToGoBeyondTheEnd)
{
    Array elements;
    elements[5];
    Array const& view = elements;
    Array const none;

    EXPECT_EQ(view[5].GetElementType(), ElementType::Null);
    EXPECT_THAT([&] { (void)view[6]; },
                throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: Array out of bounds"));
    EXPECT_THAT([&] { (void)view[std::numeric_limits<unsigned long>::max()]; },
                throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: Array out of bounds"));
    EXPECT_THAT([&] { (void)none[0]; },
                throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: Array out of bounds"));
    EXPECT_EQ(view.size(), 6u);
}

TEST(Array, staysAsItWasIfItCanNeverBeThatLong)
{
    Array elements = array({integer(1)});

    EXPECT_THROW(elements[std::numeric_limits<unsigned long>::max()], std::length_error);
    EXPECT_THROW(elements[std::numeric_limits<unsigned long>::max() - 1], std::length_error);
    EXPECT_THROW(elements.resize(std::numeric_limits<unsigned long>::max()), std::length_error);
    EXPECT_THROW(elements.reserve(std::numeric_limits<unsigned long>::max()), std::length_error);

    EXPECT_EQ(elements, array({integer(1)}));
}

TEST(Array, insertsBeforeThePositionAndTellsWhereItStands)
{
    for (long at = 0; at <= 2; ++at) {
        Array elements = array({integer(1), integer(2)});
        std::vector<Element> expected = {integer(1), integer(2)};
        Element const inserted = string("new");

        auto const position = elements.insert(inserted, elements.begin() + at);

        expected.insert(expected.begin() + at, inserted);
        EXPECT_EQ(std::vector<Element>(elements.begin(), elements.end()), expected);
        EXPECT_EQ(position - elements.begin(), at);
        EXPECT_NE(&*position, &inserted);
    }
}

TEST(Array, appendsWithoutAPosition)
{
    Array elements;

    *elements.insert(null()) = integer(1);
    Element const second = integer(2);
    auto const position = elements.insert(second);

    EXPECT_TRUE(position == elements.end() - 1);
    EXPECT_EQ(elements, array({integer(1), integer(2)}));
}

TEST(Array, insertsIntoAnEmptyOneAtEitherEnd)
{
    Array front;
    Array back;

    auto const inFront = front.insert(integer(1), front.begin());
    auto const behind = back.insert(integer(1), back.end());

    EXPECT_TRUE(inFront == front.begin());
    EXPECT_TRUE(behind == back.begin());
    EXPECT_EQ(front, array({integer(1)}));
    EXPECT_EQ(back, array({integer(1)}));
}

TEST(Array, insertsAnElementOfItsOwn)
{
    for (long at = 0; at <= 3; ++at) {
        for (unsigned long from = 0; from < 3; ++from) {
            SCOPED_TRACE(std::to_string(from) + " before " + std::to_string(at));
            Array elements = array({string("a"), string("b"), string("c")});
            std::vector<Element> expected(elements.begin(), elements.end());
            expected.insert(expected.begin() + at, Element(expected[from]));

            elements.insert(elements[from], elements.begin() + at);

            EXPECT_EQ(std::vector<Element>(elements.begin(), elements.end()), expected);
        }
    }
}

TEST(Array, insertsACopyOfItselfAndPartsOfItsParts)
{
    Array elements = array({array({integer(1)})});

    elements.insert(elements);
    elements.insert(elements[0][0], elements.begin());

    EXPECT_EQ(elements, array({integer(1), array({integer(1)}), array({array({integer(1)})})}));
}

TEST(Array, movesAnElementInWithoutCopyingIt)
{
    Element element = object({{"a", integer(1)}});
    Element const* const member = &element["a"];
    Array elements = array({null()});

    elements.insert(std::move(element), elements.begin());

    EXPECT_EQ(&elements[0]["a"], member);
    EXPECT_EQ(element.GetElementType(), ElementType::Null);
}

TEST(Array, keepsReferencesToElementsAcrossInsertionsAtTheEnds)
{
    Array elements = array({integer(1)});
    Element const& element = elements[0];

    for (int i = 0; i < 1000; ++i) {
        elements.insert(null());
        elements.insert(null(), elements.begin());
    }
    elements[5000];

    EXPECT_EQ(&elements[1000], &element);
    EXPECT_EQ(element, integer(1));
}

TEST(Array, eraseTellsWhereTheNextElementStands)
{
    Array elements = array({integer(1), integer(2), integer(3)});

    EXPECT_EQ(*elements.erase(elements.begin() + 1), integer(3));
    auto const behindTheLast = elements.erase(elements.begin() + 1);
    EXPECT_TRUE(behindTheLast == elements.end());
    EXPECT_EQ(elements, array({integer(1)}));
    auto const behindTheOnly = elements.erase(elements.begin());
    EXPECT_TRUE(behindTheOnly == elements.end());
    EXPECT_EQ(elements, Array());
}

TEST(Array, resizesAtItsEnd)
{
    Array elements;

    elements.resize(0);
    EXPECT_TRUE(elements.empty());
    elements.resize(2);
    EXPECT_EQ(elements, array({null(), null()}));
    elements[0] = integer(1);
    elements.resize(1);
    EXPECT_EQ(elements, array({integer(1)}));
    elements.resize(0);
    EXPECT_EQ(elements, Array());
}

TEST(Array, clearRemovesAllElements)
{
    Array elements = array({integer(1)});

    elements.clear();

    EXPECT_TRUE(elements.empty());
    EXPECT_TRUE(elements.begin() == elements.end());
    elements.insert(integer(2));
    EXPECT_EQ(elements, array({integer(2)}));
}

TEST(Array, isTheSameWithMemoryReserved)
{
    for (unsigned long const reserved : {0UL, 1UL, 3UL, 100UL}) {
        Array elements;
        elements.reserve(reserved);
        EXPECT_TRUE(elements.empty());
        EXPECT_TRUE(elements.begin() == elements.end());
        EXPECT_EQ(elements, Array());

        for (long i = 0; i < 5; ++i)
            elements.insert(integer(i), i % 2 == 0 ? elements.end() : elements.begin());

        EXPECT_EQ(elements, array({integer(3), integer(1), integer(0), integer(2), integer(4)}));
    }
}

TEST(Array, keepsItsElementsInPlaceWhenMemoryIsReservedLater)
{
    Array elements = array({integer(1)});
    Element const& element = elements[0];

    elements.reserve(100);

    EXPECT_EQ(&elements[0], &element);
    EXPECT_EQ(elements, array({integer(1)}));
}

TEST(Array, copiesAreIndependent)
{
    Array const source = array({array({integer(1)})});
    Array copy = source;
    Array assigned = array({null(), null()});
    assigned = source;

    copy[0][0] = integer(2);
    assigned[0][0] = integer(3);

    EXPECT_EQ(source, array({array({integer(1)})}));
    EXPECT_EQ(assigned.size(), 1u);
}

TEST(Array, isEmptyAfterItWasMovedFrom)
{
    Array source = array({integer(1)});
    Element const* const element = &source[0];

    Array constructed = std::move(source);
    EXPECT_TRUE(source.empty());
    Array assigned = array({null()});
    assigned = std::move(constructed);
    EXPECT_TRUE(constructed.empty());

    EXPECT_EQ(&assigned[0], element);
    source.insert(null());
    EXPECT_EQ(source.size(), 1u);
}

TEST(Array, selfAssignmentKeepsReferences)
{
    Array elements = array({integer(1)});
    Array& same = elements;
    Element const& element = elements[0];

    elements = same;
    elements = std::move(same);

    EXPECT_EQ(&elements[0], &element);
    EXPECT_EQ(element, integer(1));
}

TEST(Array, canBeAssignedFromAPartOfItself)
{
    Array copied = array({array({integer(1), integer(2)})});
    copied = static_cast<Array const&>(std::as_const(copied)[0]);
    EXPECT_EQ(copied, array({integer(1), integer(2)}));

    Array moved = array({array({integer(1), integer(2)})});
    moved = std::move(static_cast<Array&>(moved[0]));
    EXPECT_EQ(moved, array({integer(1), integer(2)}));
}

TEST(Array, swaps)
{
    Array a = array({integer(1)});
    Array b;

    std::swap(a, b);

    EXPECT_TRUE(a.empty());
    EXPECT_EQ(b, array({integer(1)}));
}

TEST(Array, equalsAnotherEmptyOneWhateverItHeldBefore)
{
    Array emptied = array({integer(1)});
    emptied.erase(emptied.begin());

    EXPECT_TRUE(emptied == Array());
    EXPECT_TRUE(Array() == emptied);
    EXPECT_FALSE(Array() != emptied);
}

}  // namespace
}  // namespace Zelm::MetaData
