// The container in an Array, compared with std::deque, from which it must not be told but by its memory.
#include "zelm/metadata/sequence.h"

#include "tests/metadata/elements.h"
#include "tests/support/failing_allocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <deque>
#include <iterator>
#include <limits>
#include <new>
#include <random>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

/// A value whose blocks can't be long.
struct Limited {
    Element value;
    friend bool operator==(Limited const& a, Limited const& b) { return a.value == b.value; }
};

}  // namespace

template <> constexpr std::size_t Private::longestBlock<Limited> = 8;

namespace {

using Testing::integer;
using Testing::string;
using Zelm::Testing::AllocationCount;
using Zelm::Testing::failEachAllocationInTurn;
using Zelm::Testing::FailingAllocation;
using Zelm::Testing::Shortage;

using Elements = Private::Sequence<Element>;

static_assert(sizeof(Elements) == sizeof(void*));
static_assert(std::is_nothrow_move_constructible_v<Elements> && std::is_nothrow_move_assignable_v<Elements>);
static_assert(std::is_convertible_v<Elements::iterator, Elements::const_iterator>);
static_assert(!std::is_convertible_v<Elements::const_iterator, Elements::iterator>);
static_assert(std::is_same_v<std::iterator_traits<Elements::const_iterator>::reference, Element const&>);

Elements numbered(long size)
{
    Elements result;
    for (long i = 0; i < size; ++i)
        result.insert(result.end(), integer(i));
    return result;
}

::testing::AssertionResult sameAs(Elements const& actual, std::deque<Element> const& expected)
{
    if (actual.size() != expected.size() || actual.empty() != expected.empty())
        return ::testing::AssertionFailure() << "size " << actual.size() << " for " << expected.size();
    if (!std::equal(actual.begin(), actual.end(), expected.begin(), expected.end()))
        return ::testing::AssertionFailure() << "other elements, forwards";
    if (!std::equal(std::make_reverse_iterator(actual.end()), std::make_reverse_iterator(actual.begin()),
                    expected.rbegin(), expected.rend()))
        return ::testing::AssertionFailure() << "other elements, backwards";
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (actual[i] != expected[i])
            return ::testing::AssertionFailure() << "another element at " << i;
    }
    return ::testing::AssertionSuccess();
}

/// A sequence and a deque to which the same things happen, in turn.
struct Pair {
    Elements ours;
    std::deque<Element> plain;

    void step(std::mt19937& random, long number)
    {
        auto const at = static_cast<std::ptrdiff_t>(random() % (plain.size() + 1));
        auto const element = integer(number);
        switch (random() % 16) {
        case 0:
        case 1:
        case 2:
        case 3:
            expectPlace(ours.insert(ours.end(), Element(element)), plain.insert(plain.end(), element));
            break;
        case 4:
        case 5:
        case 6:
            expectPlace(ours.insert(ours.begin(), Element(element)), plain.insert(plain.begin(), element));
            break;
        case 7:
        case 8:
            expectPlace(ours.insert(ours.begin() + at, Element(element)), plain.insert(plain.begin() + at, element));
            break;
        case 9:
        case 10:
            if (at < std::ptrdiff_t(plain.size()))
                expectPlace(ours.erase(ours.begin() + at), plain.erase(plain.begin() + at));
            break;
        case 11:
            if (!plain.empty())
                expectPlace(ours.erase(ours.begin()), plain.erase(plain.begin()));
            break;
        case 12:
            if (!plain.empty())
                expectPlace(ours.erase(ours.end() - 1), plain.erase(plain.end() - 1));
            break;
        case 13: {
            auto const size = plain.size() / 2 + random() % 40;
            ours.resize(size);
            plain.resize(size);
            break;
        }
        case 14:
            if (random() % 2 == 0) {
                Elements const copy(ours);
                ours = copy;
            } else {
                Elements moved(std::move(ours));
                EXPECT_TRUE(ours.empty());
                ours = std::move(moved);
            }
            break;
        default:
            if (random() % 8 == 0) {
                ours.clear();
                plain.clear();
                ours.reserve(random() % 20);
            }
        }
    }

    void expectPlace(Elements::iterator place, std::deque<Element>::iterator expected)
    {
        auto const index = place - ours.begin();
        EXPECT_EQ(index, expected - plain.begin());
    }
};

TEST(Sequence, isADequeWhateverHappensToIt)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Pair pair;
        for (long number = 0; number < 400; ++number) {
            pair.step(random, number);
            ASSERT_TRUE(sameAs(pair.ours, pair.plain)) << number;
        }
    }
}

TEST(Sequence, hasTheIteratorsOfADeque)
{
    Elements elements;
    for (long i = 0; i < 300; ++i)
        elements.insert(i % 3 == 0 ? elements.begin() : elements.end(), integer(i));
    Elements const& view = elements;
    auto const size = std::ptrdiff_t(view.size());

    for (std::ptrdiff_t from = 0; from <= size; ++from) {
        for (std::ptrdiff_t to = from % 7; to <= size; to += 7) {
            auto const a = view.begin() + from;
            Elements::const_iterator const b = elements.begin() + to;
            ASSERT_EQ(b - a, to - from);
            ASSERT_TRUE(a + (to - from) == b && b - (to - from) == a && (to - from) + a == b);
            ASSERT_EQ(a == b, from == to);
            ASSERT_EQ(a != b, from != to);
            ASSERT_EQ(a < b, from < to);
            ASSERT_EQ(a <= b, from <= to);
            ASSERT_EQ(a > b, from > to);
            ASSERT_EQ(a >= b, from >= to);
            ASSERT_TRUE(to == size || &a[to - from] == &view[static_cast<std::size_t>(to)]);
        }
    }
    auto place = elements.begin();
    EXPECT_TRUE(place++ == elements.begin() && place == elements.begin() + 1);
    EXPECT_TRUE(place-- == elements.begin() + 1 && place == elements.begin());
    EXPECT_TRUE(Elements::iterator() == Elements::iterator());
    EXPECT_TRUE(Elements::const_iterator() == Elements::iterator());
    EXPECT_TRUE(Elements().begin() == Elements().end());
    EXPECT_EQ(Elements::iterator() - Elements::iterator(), 0);
}

TEST(Sequence, canBeSortedByTheStandardAlgorithm)
{
    std::mt19937 random(1);  // NOLINT: the same each time
    Elements elements;
    for (int i = 0; i < 1000; ++i)
        elements.insert(i % 3 == 0 ? elements.begin() : elements.end(), integer(static_cast<long>(random() % 500)));
    std::deque<Element> plain(elements.begin(), elements.end());
    auto const isLess = [](Element const& a, Element const& b) { return a.asInt64() < b.asInt64(); };

    std::sort(elements.begin(), elements.end(), isLess);
    std::sort(plain.begin(), plain.end(), isLess);

    EXPECT_TRUE(sameAs(elements, plain));
}

TEST(Sequence, leavesReferencesValidWhenItGrowsAndShrinksAtItsEnds)
{
    Elements elements = numbered(1);
    std::deque<Element*> places{&elements[0]};
    std::deque<long> values{0};
    std::mt19937 random(1);  // NOLINT: the same each time

    for (long number = 1; number < 3000; ++number) {
        bool const isFront = random() % 2 == 0;
        if (random() % 5 == 0 && elements.size() > 1) {
            elements.erase(isFront ? elements.begin() : elements.end() - 1);
            isFront ? places.pop_front() : places.pop_back();
            isFront ? values.pop_front() : values.pop_back();
        } else {
            Element* const place = &*elements.insert(isFront ? elements.begin() : elements.end(), integer(number));
            isFront ? places.push_front(place) : places.push_back(place);
            isFront ? values.push_front(number) : values.push_back(number);
        }
    }

    ASSERT_EQ(elements.size(), places.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        ASSERT_EQ(&elements[i], places[i]);
        ASSERT_EQ(*places[i], integer(values[i]));
    }
    Element const* const first = &elements[0];
    Elements const moved(std::move(elements));
    EXPECT_EQ(&moved[0], first);
}

TEST(Sequence, isAsItWasWhenMemoryRunsOut)
{
    for (long const size : {0, 1, 4, 16, 100}) {
        SCOPED_TRACE(size);
        Elements const before = numbered(size);
        auto const half = size / 2;
        auto const everyWay = [&](auto const& change, auto const& plainChange) {
            Elements changed = before;
            Element const* const first = size > 0 ? &changed[0] : nullptr;
            auto const unchanged = [&] {
                ASSERT_TRUE(changed == before);
                ASSERT_TRUE(size == 0 || &changed[0] == first);
            };
            Element const element = string("new");
            failEachAllocationInTurn([&] { change(changed, element); }, unchanged);
            std::deque<Element> expected(before.begin(), before.end());
            plainChange(expected, element);
            EXPECT_TRUE(sameAs(changed, expected));
        };

        for (int repeated = 0; repeated < 2; ++repeated) {
            everyWay([](auto& e, Element const& x) { e.insert(e.end(), Element(x)); },
                     [](auto& e, Element const& x) { e.push_back(x); });
            everyWay([](auto& e, Element const& x) { e.insert(e.begin(), Element(x)); },
                     [](auto& e, Element const& x) { e.push_front(x); });
            everyWay([&](auto& e, Element const& x) { e.insert(e.begin() + half, Element(x)); },
                     [&](auto& e, Element const& x) { e.insert(e.begin() + half, x); });
            everyWay([](auto& e, Element const&) { e.resize(500); }, [](auto& e, Element const&) { e.resize(500); });
        }

        Elements copy;
        auto const failures = failEachAllocationInTurn([&] { copy = before; }, [&] { ASSERT_TRUE(copy.empty()); });
        EXPECT_EQ(failures > 0, size > 0);
        EXPECT_TRUE(copy == before);
    }
}

TEST(Sequence, takesInAnElementOfItsOwn)
{
    for (long from = 0; from < 20; ++from) {
        for (long to = 0; to <= 20; ++to) {
            Elements elements = numbered(20);
            std::deque<Element> plain(elements.begin(), elements.end());

            auto const place = elements.insert(elements.begin() + to, std::move(elements[static_cast<unsigned>(from)]));

            plain[static_cast<unsigned>(from)] = Element();
            plain.insert(plain.begin() + to, integer(from));
            ASSERT_TRUE(sameAs(elements, plain)) << from << " to " << to;
            ASSERT_EQ(place - elements.begin(), to);
        }
    }
}

TEST(Sequence, keepsAnElementThatItCouldNotTakeIn)
{
    Elements elements = numbered(16);
    elements.resize(500);
    Element element = string("new");

    for (int i = 0; i < 600; ++i) {
        failEachAllocationInTurn(
            [&] {
                elements.insert(i % 2 == 0 ? elements.begin() : elements.end(), std::move(element));
                element = Element();
            },
            [&] { ASSERT_EQ(element, string("new")); });
        element = string("new");
    }
    EXPECT_EQ(elements.size(), 1100u);
}

TEST(Sequence, refusesASizeBeyondAnyMemory)
{
    Elements elements = numbered(2);

    EXPECT_THROW(elements.resize(std::numeric_limits<std::size_t>::max()), std::length_error);
    EXPECT_THROW(elements.resize(std::numeric_limits<std::size_t>::max() / sizeof(Element)), std::length_error);

    EXPECT_TRUE(elements == numbered(2));
}

TEST(Sequence, refusesToReserveBeyondAnyMemory)
{
    Elements empty;
    Elements elements = numbered(2);
    for (Elements* const sequence : {&empty, &elements}) {
        EXPECT_THROW(sequence->reserve(std::numeric_limits<std::size_t>::max()), std::length_error);
        EXPECT_THROW(sequence->reserve(std::numeric_limits<std::size_t>::max() / sizeof(Element)), std::length_error);
    }

    EXPECT_TRUE(empty == Elements());
    EXPECT_TRUE(elements == numbered(2));
}

TEST(Sequence, reservesABlockAsLongAsThereCanBeOneForMoreValues)
{
    for (std::size_t const size : {std::size_t{7}, std::size_t{8}, std::size_t{9}, std::size_t{1} << 40}) {
        SCOPED_TRACE(size);
        Private::Sequence<Limited> limited;
        limited.reserve(size);

        AllocationCount const allocations;
        for (int i = 0; i < 8; ++i)
            limited.insert(limited.end(), Limited());
        auto const madeForABlock = allocations.made();
        limited.insert(limited.end(), Limited());
        auto const madeForOneMore = allocations.made();

        EXPECT_EQ(madeForABlock, 0u);
        EXPECT_GT(madeForOneMore, 0u);
    }
}

// Block by block it would fill the machine's memory before it said so.
TEST(Sequence, asksForAllMemoryBeforeItTakesTheFirstOfSeveralBlocks)
{
    constexpr std::size_t tooMany = std::size_t{1} << 40;
    auto const allocationsUntilItFails = [](auto& sequence) {
        FailingAllocation const end(1000, Shortage::Lasting);
        AllocationCount const allocations;
        try {
            sequence.resize(tooMany);
        } catch (std::bad_alloc const&) {
            return allocations.made();
        }
        return 0UL;
    };

    Private::Sequence<Limited> limited;
    limited.resize(3);
    EXPECT_EQ(allocationsUntilItFails(limited), 1u);
    EXPECT_EQ(limited.size(), 3u);

    Elements elements = numbered(2);
    EXPECT_EQ(allocationsUntilItFails(elements), 1u);
    EXPECT_TRUE(elements == numbered(2));
}

TEST(Sequence, takesOneBlockForAKnownSize)
{
    Elements reserved;
    AllocationCount const allocations;
    reserved.reserve(100);
    for (int i = 0; i < 100; ++i)
        reserved.insert(reserved.end(), Element());
    Elements const copy(reserved);
    auto const made = allocations.made();

    EXPECT_EQ(made, 2u);
}

TEST(Sequence, takesItsMemoryWhenItIsReserved)
{
    Elements elements;
    auto const failures =
        failEachAllocationInTurn([&] { elements.reserve(100); }, [&] { ASSERT_TRUE(elements.empty()); });
    EXPECT_EQ(failures, 1u);
    EXPECT_TRUE(elements.empty());

    AllocationCount const allocations;
    for (int i = 0; i < 100; ++i)
        elements.insert(elements.end(), Element());
    auto const made = allocations.made();
    EXPECT_EQ(made, 0u);
}

TEST(Sequence, reservesNothingBesideWhatItHas)
{
    Elements elements = numbered(1);
    Elements cleared = numbered(1);
    cleared.clear();

    AllocationCount const allocations;
    elements.reserve(100);
    auto const madeBeside = allocations.made();
    cleared.reserve(100);
    auto const madeWhenCleared = allocations.made();

    EXPECT_EQ(madeBeside, 0u);
    EXPECT_EQ(madeWhenCleared, 1u);
    EXPECT_TRUE(elements == numbered(1));
}

TEST(Sequence, goesOnInAnotherBlockWhereOneCanNotBeLongEnough)
{
    for (std::size_t const size : {7U, 8U, 9U, 16U, 100U}) {
        SCOPED_TRACE(size);
        std::vector<Limited> values;
        while (values.size() < size)
            values.push_back({integer(static_cast<long>(values.size()))});
        auto const isAllOf = [&](Private::Sequence<Limited> const& sequence) {
            return sequence.size() == size && std::equal(values.begin(), values.end(), sequence.begin());
        };

        auto source = values;
        Private::Sequence<Limited> taken;
        taken.take(source.data(), size);
        EXPECT_TRUE(isAllOf(taken));

        Private::Sequence<Limited> inserted;
        inserted.reserve(size);
        for (Limited value : values)
            inserted.insert(inserted.end(), std::move(value));
        EXPECT_TRUE(isAllOf(inserted));

        Private::Sequence<Limited> const copy(taken);
        EXPECT_TRUE(isAllOf(copy));
        EXPECT_EQ(copy[size - 1].value, integer(static_cast<long>(size - 1)));

        taken.resize(size + 20);
        EXPECT_EQ(taken.size(), size + 20);
        taken.resize(size);
        EXPECT_TRUE(isAllOf(taken));
    }
}

TEST(Sequence, leavesNothingBehindWhenMemoryRunsOutInTheMiddleOfACopy)
{
    Private::Sequence<Limited> source;
    source.resize(50);

    Private::Sequence<Limited> copy;
    auto const failures = failEachAllocationInTurn([&] { copy = source; }, [&] { ASSERT_TRUE(copy.empty()); });

    EXPECT_GT(failures, 5u);  // a block for each eight, and their table
    EXPECT_TRUE(copy == source);
}

TEST(Sequence, takesValuesOverInOneBlock)
{
    for (long const size : {0L, 1L, 2L, 5L, 14L, 1000L}) {
        std::vector<Element> values;
        for (long i = 0; i < size; ++i)
            values.push_back(integer(i));

        Elements taken;
        AllocationCount const allocations;
        taken.take(values.data(), values.size());
        auto const made = allocations.made();

        EXPECT_EQ(made, size == 0 ? 0u : 1u);
        EXPECT_TRUE(taken == numbered(size)) << size;
        EXPECT_TRUE(values == std::vector<Element>(values.size())) << size;
        taken.insert(taken.end(), integer(size));
        EXPECT_TRUE(taken == numbered(size + 1)) << size;
    }
}

TEST(Sequence, takesFewBlocksForAnUnknownSize)
{
    AllocationCount const allocations;
    Elements elements;
    for (int i = 0; i < 100000; ++i)
        elements.insert(elements.end(), Element());
    auto const made = allocations.made();

    EXPECT_LT(made, 40u);
}

TEST(Sequence, givesItsMemoryBackWhenItIsEmptiedFromTheFront)
{
    Elements elements = numbered(1000);
    for (long i = 0; i < 20000; ++i) {  // a queue
        elements.insert(elements.end(), integer(1000 + i));
        ASSERT_EQ(elements[0], integer(i));
        elements.erase(elements.begin());
    }
    EXPECT_EQ(elements.size(), 1000u);
}

}  // namespace
}  // namespace Zelm::MetaData
