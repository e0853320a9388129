#include "sensors/network_meter.h"

#include "../support/throws_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace HostMonitor {

using ::testing::ElementsAre;
using Zelm::Testing::throwsText;

namespace {

using namespace std::chrono_literals;

InterfaceCounters counters(std::string const& name, std::uint64_t received, std::uint64_t sent)
{
    return {name, {received, 2, 3, 4}, {sent, 6, 7, 8}};
}

/// A clock that stands still until the test moves it.
NetworkMeter::Moment at(std::chrono::microseconds time)
{
    return NetworkMeter::Moment{} + 1h + time;
}

long valueOf(Field<long> const& field)
{
    return field.initialized() ? field() : -1;
}

/// The rates of the first interface, received and sent, -1 standing for none.
std::vector<long> rates(NetworkMeter& meter, std::vector<InterfaceCounters> const& rows, NetworkMeter::Moment moment)
{
    NetworkReading reading;
    meter.measure(rows, moment, reading);
    auto const& first = reading.interfaces().at(0);
    return {valueOf(first.receivedBytesPerSecond), valueOf(first.sentBytesPerSecond)};
}

}  // namespace

TEST(NetworkMeter, takesOverTheCounters)
{
    NetworkMeter meter;
    NetworkReading reading;
    meter.measure(std::vector{counters("lo", 1, 5), counters("eth0", 10, 50)}, at(0s), reading);

    ASSERT_EQ(reading.interfaces().size(), 2U);
    auto const& lo = reading.interfaces()[0];
    EXPECT_EQ(lo.interfaceName(), "lo");
    EXPECT_EQ(lo.receivedBytes(), 1);
    EXPECT_EQ(lo.receivedPackets(), 2);
    EXPECT_EQ(lo.receivedErrors(), 3);
    EXPECT_EQ(lo.receivedDropped(), 4);
    EXPECT_EQ(lo.sentBytes(), 5);
    EXPECT_EQ(lo.sentPackets(), 6);
    EXPECT_EQ(lo.sentErrors(), 7);
    EXPECT_EQ(lo.sentDropped(), 8);
    EXPECT_EQ(reading.interfaces()[1].interfaceName(), "eth0");
    EXPECT_EQ(reading.interfaces()[1].receivedBytes(), 10);
    EXPECT_EQ(reading.interfaces()[1].sentBytes(), 50);
}

TEST(NetworkMeter, findsNoRatesAtItsFirstMeasurement)
{
    NetworkMeter meter;
    NetworkReading reading;
    meter.measure(std::vector{counters("lo", 1, 1)}, at(0s), reading);

    EXPECT_FALSE(reading.intervalMicroseconds.initialized());
    EXPECT_FALSE(reading.interfaces()[0].receivedBytesPerSecond.initialized());
    EXPECT_FALSE(reading.interfaces()[0].sentBytesPerSecond.initialized());
}

TEST(NetworkMeter, dividesByTheTimeSinceTheLastMeasurement)
{
    NetworkMeter meter;
    rates(meter, {counters("lo", 1000, 0)}, at(0s));
    NetworkReading reading;
    meter.measure(std::vector{counters("lo", 2000, 500)}, at(2500ms), reading);

    EXPECT_EQ(reading.intervalMicroseconds(), 2'500'000);
    EXPECT_EQ(reading.interfaces()[0].receivedBytesPerSecond(), 400);
    EXPECT_EQ(reading.interfaces()[0].sentBytesPerSecond(), 200);
}

TEST(NetworkMeter, roundsRatesToTheNearestByte)
{
    NetworkMeter meter;
    rates(meter, {counters("lo", 0, 0)}, at(0s));

    EXPECT_THAT(rates(meter, {counters("lo", 1, 2)}, at(3s)), ElementsAre(0, 1));
}

TEST(NetworkMeter, findsNoRatesWhereNoTimeHasPassed)
{
    NetworkMeter meter;
    rates(meter, {counters("lo", 0, 0)}, at(0s));

    EXPECT_THAT(rates(meter, {counters("lo", 1, 2)}, at(0s)), ElementsAre(-1, -1));
}

TEST(NetworkMeter, findsNoRateForACounterThatGoesBackwards)
{
    NetworkMeter meter;
    rates(meter, {counters("lo", 4'294'967'000, 0)}, at(0s));

    EXPECT_THAT(rates(meter, {counters("lo", 704, 10)}, at(1s)), ElementsAre(-1, 10));
    EXPECT_THAT(rates(meter, {counters("lo", 804, 10)}, at(2s)), ElementsAre(100, 0));
}

TEST(NetworkMeter, bearsTheLargestCounters)
{
    constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
    NetworkMeter meter;
    rates(meter, {counters("lo", 0, 0)}, at(0s));
    NetworkReading reading;
    meter.measure(std::vector{counters("lo", largest, largest)}, at(1us), reading);

    EXPECT_EQ(reading.interfaces()[0].receivedBytes(), std::numeric_limits<long>::max());
    EXPECT_GT(reading.interfaces()[0].receivedBytesPerSecond(), std::numeric_limits<long>::max() - 1024);
}

TEST(NetworkMeter, followsInterfacesThatComeAndGo)
{
    NetworkMeter meter;
    rates(meter, {counters("lo", 0, 0), counters("eth0", 0, 0)}, at(0s));

    EXPECT_THAT(rates(meter, {counters("ppp0", 9, 9), counters("lo", 0, 0)}, at(1s)), ElementsAre(-1, -1));
    EXPECT_THAT(rates(meter, {counters("eth0", 9, 9), counters("lo", 0, 0)}, at(2s)), ElementsAre(-1, -1));
    EXPECT_THAT(rates(meter, {counters("eth0", 10, 11), counters("lo", 0, 0)}, at(3s)), ElementsAre(1, 2));
}

TEST(NetworkMeter, refusesWhatIsNoTableAndStaysAsItWas)
{
    NetworkMeter meter;
    rates(meter, {counters("lo", 0, 0)}, at(0s));

    NetworkReading reading;
    EXPECT_THAT([&] { meter.measure(std::nullopt, at(1s), reading); },
                throwsText<std::runtime_error>("holds no table of network counters"));
    EXPECT_THAT(rates(meter, {counters("lo", 20, 40)}, at(2s)), ElementsAre(10, 20));
}

}  // namespace HostMonitor
