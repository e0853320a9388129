// Trees in a program without an operator new of its own, whose elements lie in cells.
#include "tests/metadata/elements.h"
#include "tests/support/child_process.h"
#include "zelm/metadata/element.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using namespace Testing;
using Zelm::Testing::ChildOptions;
using Zelm::Testing::runChild;

Element tree(int depth)
{
    std::vector<std::pair<std::string, Element>> members;
    for (int i = 0; i < 4; ++i) {
        auto const name = std::to_string(i) + (i % 2 == 0 ? "" : " with a name that takes a block of its own");
        members.emplace_back(name, depth > 0 ? array({tree(depth - 1), number(i), null()})
                                             : array({string(name), integer(i), boolean(true)}));
    }
    return object(members);
}

TEST(TreeInCells, isCopiedComparedChangedAndDestroyed)
{
    Element const before = tree(3);
    for (int i = 0; i < 20; ++i) {
        Element copy = before;
        ASSERT_EQ(copy, before);
        copy["2"][0]["1 with a name that takes a block of its own"] = copy["0"];
        copy["0"] = number(i);
        ASSERT_NE(copy, before);
        copy = std::move(copy["2"][0]);
        ASSERT_EQ(copy["0"], before["2"][0]["0"]);
    }
}

TEST(TreeInCells, isUsableWhereverItWasMade)
{
    Element const expected = tree(3);
    std::vector<Element> made(20);
    for (int round = 0; round < 5; ++round) {
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < 4; ++i) {
            threads.emplace_back([&, i] {
                for (std::size_t at = i; at < made.size(); at += 4)
                    made[at] = tree(3);  // the one before was made by a thread that has ended
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        for (Element const& element : made)
            ASSERT_EQ(element, expected);
    }
}

TEST(TreeInCells, mayOutliveTheThreadsOwnObjects)
{
    std::thread([] {
        thread_local Element const early = tree(1);
        thread_local Element const late = early;
        EXPECT_EQ(early, late);
    }).join();
}

// Destroyed when the program ends.
Element const lasting = tree(2);

TEST(TreeInCells, mayBeStatic)
{
    EXPECT_EQ(lasting, tree(2));
}

/// Prints how far apart the nearest two of many Numbers lie.
ZELM_CHILD(printsTheLeastDistance)
{
    std::vector<Element> const numbers(1000, number(1));
    std::vector<std::uintptr_t> places;
    for (Element const& element : numbers)
        places.push_back(reinterpret_cast<std::uintptr_t>(&element.CastTo<Trivial_T<double>>()));
    std::sort(places.begin(), places.end());
    std::uintptr_t least = UINTPTR_MAX;
    for (std::size_t i = 1; i < places.size(); ++i)
        least = std::min(least, places[i] - places[i - 1]);
    std::cout << least;
    return 0;
}

// The allocator puts at least a word of its own between any two pieces, and cells have nothing between them. The
// library needn't exist: only its name is looked at.
TEST(TreeInCells, isInPiecesOfTheAllocatorsWhenAMemoryCheckerLooksOn)
{
    auto const leastDistance = [](std::string const& preloaded) {
        auto const child = runChild("printsTheLeastDistance", ChildOptions().set("LD_PRELOAD", preloaded));
        EXPECT_EQ(child.status, 0) << child.err;
        return std::stoul(child.out);
    };

    EXPECT_GE(leastDistance("/nowhere/vgpreload_checker.so"), 2 * sizeof(Trivial_T<double>));
    if (!Zelm::Testing::underSanitizer) {
        EXPECT_EQ(leastDistance("/nowhere/another.so"), sizeof(Trivial_T<double>));
    }
}

}  // namespace
}  // namespace Zelm::MetaData
