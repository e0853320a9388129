// Trees in a program without an operator new of its own, whose elements lie in cells.
#include "tests/metadata/elements.h"
#include "zelm/metadata/element.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using namespace Testing;

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

}  // namespace
}  // namespace Zelm::MetaData
