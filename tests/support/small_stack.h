/// @file
/// Runs a piece of a test on a thread with little stack, so that what takes stack for each level of a deep tree crashes
/// long before the last one.
///
///     onASmallStack([&] { copy = deepTree; });
///
/// The thread ends before the call returns; an exception passes on.
#pragma once

#include <cstddef>
#include <functional>

namespace Zelm::Testing {

constexpr std::size_t smallStackBytes = 256 * 1024;

void onASmallStack(std::function<void()> const& call);

}  // namespace Zelm::Testing
