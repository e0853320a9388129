/// @file
/// Names for the look-up benchmarks, and the loop of ours and the peer's.
#pragma once

#include "support/allocations.h"

#include <string>
#include <vector>

namespace Zelm::Benchmarks {

/// That many different names, in no order, as the members of real objects have them: one to three words, many with a
/// beginning in common ("user_list", "user_profile_image"). The same ones each time.
std::vector<std::string> memberNames(std::size_t count);

/// The names in an order that doesn't repeat soon enough for the processor to learn it; each of them occurs.
std::vector<std::string> lookUpOrder(std::vector<std::string> const& names);

/// One look-up for each iteration; `find` takes the name and returns the address of what it found.
template <class Find> void lookUp(benchmark::State& state, std::vector<std::string> const& names, Find const& find)
{
    std::vector<std::string> const order = lookUpOrder(names);
    std::size_t next = 0;
    CountedAllocations const counted(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(find(order[next]));
        next = next + 1 == order.size() ? 0 : next + 1;
    }
}

}  // namespace Zelm::Benchmarks
