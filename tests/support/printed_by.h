/// @file
/// What a call prints on standard output.
///
///     EXPECT_EQ(printedBy([&] { object.copyFromMetaData(source); }), "");
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace Zelm::Testing {

/// An exception passes on, after the capture has ended, so that it fails its own test and not those behind it.
template <class F> std::string printedBy(F&& call)
{
    ::testing::internal::CaptureStdout();
    try {
        call();
    } catch (...) {
        ::testing::internal::GetCapturedStdout();
        throw;
    }
    return ::testing::internal::GetCapturedStdout();
}

}  // namespace Zelm::Testing
