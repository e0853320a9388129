/// @file
/// Where a virtual function stands in its class's table. Component libraries are built apart from the core library, so
/// an interface's functions may not change places.
///
///     EXPECT_EQ(slotOf(&MessageQueueInterface::putMessage), 2);
///
/// The destructor takes two places, and no pointer to it can be had.
#pragma once

#include <cstddef>
#include <cstring>

namespace Zelm::Testing {

/// Reads the pointer as the Itanium C++ ABI lays it out on both of our systems: its first word is the offset in the
/// table, plus 1 on x86-64.
template <class Function> std::ptrdiff_t slotOf(Function function)
{
    std::ptrdiff_t words[2];
    static_assert(sizeof words == sizeof function);
    std::memcpy(words, &function, sizeof words);
    return words[0] / static_cast<std::ptrdiff_t>(sizeof(void*));
}

}  // namespace Zelm::Testing
