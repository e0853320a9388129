// A program that is loaded at a fixed place, and asks for the address of a function of the standard library's: then
// that function seems to be in the program, in which operator new really is.
#include "tests/metadata/elements.h"
#include "tests/support/failing_allocator.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Zelm::Testing::AllocationCount;

TEST(OperatorNewOfAProgramAtAFixedPlace, seesEachPieceOfMemoryThatElementsTake)
{
    // In code: an address in data would be put in by the loader, which knows where the function is.
    auto* volatile const functionAskedFor = &std::get_new_handler;
    ASSERT_NE(functionAskedFor, nullptr);
    std::vector<Element> elements;
    elements.reserve(1000);

    AllocationCount const allocations;
    for (int i = 0; i < 1000; ++i)
        elements.push_back(Testing::number(i));
    auto const made = allocations.made();

    EXPECT_EQ(made, 1000u);
}

}  // namespace
}  // namespace Zelm::MetaData
