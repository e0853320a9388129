#include "sensors/memory_reading.h"

#include "../support/throws_text.h"

#include <gtest/gtest.h>

namespace HostMonitor {

using Zelm::Testing::throwsText;

TEST(MemoryReading, takesOverWhatIsKnown)
{
    MemoryReading reading;
    assignMemory({1000, 200, 400, 30, 40, 500, 600}, reading);

    EXPECT_EQ(reading.totalBytes(), 1000);
    EXPECT_EQ(reading.freeBytes(), 200);
    EXPECT_EQ(reading.availableBytes(), 400);
    EXPECT_EQ(reading.usedBytes(), 600);
    EXPECT_EQ(reading.usedPercent(), 60);
    EXPECT_EQ(reading.buffersBytes(), 30);
    EXPECT_EQ(reading.cachedBytes(), 40);
    EXPECT_EQ(reading.swapTotalBytes(), 500);
    EXPECT_EQ(reading.swapFreeBytes(), 600);
}

TEST(MemoryReading, hasNoFieldForWhatIsntKnown)
{
    MemoryReading reading;
    MemoryFigures figures;
    figures.total = 1000;
    assignMemory(figures, reading);

    EXPECT_EQ(reading.totalBytes(), 1000);
    EXPECT_FALSE(reading.freeBytes.initialized());
    EXPECT_FALSE(reading.availableBytes.initialized());
    EXPECT_FALSE(reading.usedBytes.initialized());
    EXPECT_FALSE(reading.usedPercent.initialized());
    EXPECT_FALSE(reading.buffersBytes.initialized());
    EXPECT_FALSE(reading.cachedBytes.initialized());
    EXPECT_FALSE(reading.swapTotalBytes.initialized());
    EXPECT_FALSE(reading.swapFreeBytes.initialized());
}

TEST(MemoryReading, usesNoLessThanNothing)
{
    MemoryReading reading;
    MemoryFigures figures;
    figures.total = 1000;
    figures.available = 1001;
    assignMemory(figures, reading);

    EXPECT_EQ(reading.usedBytes(), 0);
    EXPECT_EQ(reading.usedPercent(), 0);
}

TEST(MemoryReading, hasNoShareOfNothing)
{
    MemoryReading reading;
    MemoryFigures figures;
    figures.total = 0;
    figures.available = 0;
    assignMemory(figures, reading);

    EXPECT_EQ(reading.usedBytes(), 0);
    EXPECT_FALSE(reading.usedPercent.initialized());
}

TEST(MemoryReading, isRefusedWithoutATotal)
{
    MemoryReading reading;
    EXPECT_THAT([&] { assignMemory({}, reading); }, throwsText<std::runtime_error>("holds no total of the memory"));
}

}  // namespace HostMonitor
