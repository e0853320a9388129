#include "host_monitor/ticker.h"

#include <gtest/gtest.h>

#include <future>

namespace HostMonitor {

using namespace std::chrono_literals;

TEST(Ticker, ticksOnePeriodAfterItsStartAtTheEarliest)
{
    auto const start = std::chrono::steady_clock::now();
    Ticker ticker(5ms);

    EXPECT_TRUE(ticker.waitForTick());
    EXPECT_TRUE(ticker.waitForTick());
    EXPECT_GE(std::chrono::steady_clock::now() - start, 10ms);
}

TEST(Ticker, ticksAtOnceWithoutAPeriod)
{
    Ticker ticker(0ms);

    for (int i = 0; i < 1000; ++i)
        ASSERT_TRUE(ticker.waitForTick());
}

// A day that nobody waits for: a ticker that doesn't end is ended by the test's time limit.
TEST(Ticker, endsAWaitWhenItIsStopped)
{
    Ticker ticker(24h);
    auto wait = std::async(std::launch::async, [&] { return ticker.waitForTick(); });
    ticker.stop();

    EXPECT_FALSE(wait.get());
    EXPECT_FALSE(ticker.waitForTick());
}

TEST(Ticker, doesntTickAfterItIsStoppedEvenWithoutAPeriod)
{
    Ticker ticker(0ms);
    ticker.stop();

    EXPECT_FALSE(ticker.waitForTick());
}

}  // namespace HostMonitor
