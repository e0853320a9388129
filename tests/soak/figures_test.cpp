#include "figures.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace Soak {

TEST(TheTrend, isThatOfMostSamplesWhateverSomeSay)
{
    std::vector<Sample> samples;
    for (int i = 0; i < 30; ++i)
        samples.push_back({i / 10.0, 100.0 + i});
    samples[1].value = 1e6;
    samples[15].value = 0;
    samples[28].value = 1e6;

    auto const trend = trendOf(samples);

    EXPECT_NEAR(trend.start, 105, 1);
    EXPECT_NEAR(trend.end, 125, 1);
    EXPECT_NEAR(trend.slopePerMinute, 10, 0.5);
}

TEST(TheTrend, ofOneSampleIsFlat)
{
    auto const trend = trendOf({{0.5, 42}});

    EXPECT_EQ(trend.start, 42);
    EXPECT_EQ(trend.end, 42);
    EXPECT_EQ(trend.slopePerMinute, 0);
}

TEST(TheFigures, countWhatThisProcessHolds)
{
    auto const before = figuresNow();
    int const descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    auto const during = figuresNow();
    close(descriptor);

    EXPECT_EQ(during.descriptors, before.descriptors + 1);
    EXPECT_EQ(figuresNow().descriptors, before.descriptors);
    EXPECT_GE(before.threads, 1);
    EXPECT_GT(before.residentKB, 100);
}

TEST(TheFigures, tellOfABlockOnTheHeap)
{
    if (!tellsMemory)
        GTEST_SKIP() << "a sanitizer has an allocator of its own";
    constexpr std::size_t size = 4 * 1024 * 1024;
    auto const before = figuresNow();
    auto const block = std::make_unique<std::vector<char>>(size, 'x');
    auto const during = figuresNow();

    EXPECT_GE(during.heapKB, before.heapKB + 4000);
    EXPECT_EQ(block->back(), 'x');
}

}  // namespace Soak
