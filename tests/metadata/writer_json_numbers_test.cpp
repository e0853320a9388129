// The digits that the writer makes by itself are those of the stream's formatted output, whatever the Number.
#include "zelm/metadata/writer_json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <limits>
#include <random>
#include <sstream>
#include <string>

namespace Zelm::MetaData {
namespace {

/// Writes Numbers in both ways, on streams that are kept, as new ones take most of the time.
class BothWays {
public:
    BothWays() { formatted_ << std::setprecision(20); }

    ::testing::AssertionResult agreeOn(double number)
    {
        std::string const text = textOf(ours_, [&] { WriterJson::Write(Trivial_T<double>(number), ours_, false); });
        std::string const expected = textOf(formatted_, [&] { formatted_ << number; });
        if (text == expected)
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << text << " for " << expected;
    }

    /// The Number, its neighbours on both sides, and all of them with the other sign.
    ::testing::AssertionResult agreeAround(double number)
    {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        for (double const near : {std::nextafter(number, -infinity), number, std::nextafter(number, infinity)})
            for (double const one : {near, -near})
                if (auto result = agreeOn(one); !result)
                    return result;
        return ::testing::AssertionSuccess();
    }

private:
    template <class Write> static std::string textOf(std::ostringstream& stream, Write const& write)
    {
        stream.str("");
        write();
        return stream.str();
    }

    std::ostringstream ours_;
    std::ostringstream formatted_;
};

double withBits(std::uint64_t exponent, std::uint64_t mantissa)
{
    std::uint64_t const bits = exponent << 52 | mantissa;
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

TEST(WriterJsonNumbers, areTheStreamsForEachSizeThatADoubleMayHave)
{
    constexpr std::uint64_t mostMantissa = (std::uint64_t{1} << 52) - 1;
    std::mt19937_64 random(20230501);
    BothWays ways;
    for (std::uint64_t exponent = 0; exponent < 2048; ++exponent) {
        ASSERT_TRUE(ways.agreeAround(withBits(exponent, 0)));
        ASSERT_TRUE(ways.agreeOn(withBits(exponent, mostMantissa)));
        for (int i = 0; i < 20; ++i)
            ASSERT_TRUE(ways.agreeOn(withBits(exponent, random() & mostMantissa)));
    }
}

TEST(WriterJsonNumbers, areTheStreamsForMeasurementsFromTinyToLarge)
{
    constexpr std::uint64_t mostMantissa = (std::uint64_t{1} << 52) - 1;
    std::mt19937_64 random(20230502);
    BothWays ways;
    for (std::uint64_t exponent = 1023 - 16; exponent < 1023 + 66; ++exponent)
        for (int i = 0; i < 2000; ++i)
            ASSERT_TRUE(ways.agreeOn(withBits(exponent, random() & mostMantissa)));
}

TEST(WriterJsonNumbers, areTheStreamsAroundPowersOfTen)
{
    BothWays ways;
    for (int power = -323; power <= 308; ++power)
        ASSERT_TRUE(ways.agreeAround(std::strtod(("1e" + std::to_string(power)).c_str(), nullptr)));
}

/// Most of these have many nines or zeros among their digits, where rounding up goes through, or nothing is left out.
TEST(WriterJsonNumbers, areTheStreamsAroundNumbersWithFewDecimals)
{
    std::mt19937_64 random(20230503);
    BothWays ways;
    for (int i = 0; i < 50000; ++i) {
        double const whole = static_cast<double>(random() % static_cast<std::uint64_t>(std::pow(10, random() % 8)));
        double const scale = std::pow(10, random() % 9);
        ASSERT_TRUE(ways.agreeAround(whole + static_cast<double>(random() % 100000000) / scale));
        ASSERT_TRUE(ways.agreeAround(static_cast<double>(random() % 1000) / scale));
    }
}

TEST(WriterJsonNumbers, areTheStreamsWithFewBitsBehindThePoint)
{
    std::mt19937_64 random(20230504);
    BothWays ways;
    for (int bits = 0; bits < 64; ++bits)
        for (int i = 0; i < 500; ++i)
            ASSERT_TRUE(ways.agreeOn(std::ldexp(static_cast<double>(random() >> 11 >> (random() % 53)), -bits)));
}

TEST(WriterJsonNumbers, areRoundedToTheEvenDigitFromTheMiddleBetweenTwo)
{
    BothWays ways;
    // The 21st digit of each is a 5 at its end: 1234 + 1/2^17 is 1234.00000762939453125.
    double whole = 1;
    for (int digits = 1; digits <= 8; ++digits, whole *= 10)
        for (int odd = 1; odd < 200; odd += 2)
            ASSERT_TRUE(ways.agreeOn(whole + std::ldexp(odd, digits - 21)));

    std::ostringstream stream;
    WriterJson::Write(Trivial_T<double>(1000 + std::ldexp(1, -17)), stream, false);
    stream << ' ';
    WriterJson::Write(Trivial_T<double>(1000 + std::ldexp(3, -17)), stream, false);
    EXPECT_EQ(stream.str(), "1000.0000076293945312 1000.0000228881835938");
}

/// While this lives, the processor computes with zero in place of each subnormal number, as in all of a program that
/// is linked with -ffast-math.
class SubnormalsAreZero {
public:
    SubnormalsAreZero() { setControl(before_ | flush); }
    ~SubnormalsAreZero() { setControl(before_); }
    SubnormalsAreZero(SubnormalsAreZero const&) = delete;
    SubnormalsAreZero& operator=(SubnormalsAreZero const&) = delete;

private:
#if defined(__x86_64__)
    using Control = unsigned int;
    static constexpr Control flush = 0x8040;  // of results and of operands
    static Control control()
    {
        return __builtin_ia32_stmxcsr();
    }
    static void setControl(Control value)
    {
        __builtin_ia32_ldmxcsr(value);
    }
#elif defined(__aarch64__)
    using Control = std::uint64_t;
    static constexpr Control flush = Control{1} << 24;
    static Control control()
    {
        Control value = 0;
        asm volatile("mrs %0, fpcr" : "=r"(value));
        return value;
    }
    static void setControl(Control value)
    {
        asm volatile("msr fpcr, %0" : : "r"(value));
    }
#endif

    Control const before_ = control();
};

TEST(WriterJsonNumbers, thatAreSubnormalAreWrittenEvenIfTheProcessorTakesThemForZero)
{
    std::ostringstream stream;
    {
        SubnormalsAreZero const flushed;
        for (double const number : {std::numeric_limits<double>::denorm_min(), -withBits(0, 0xFFFFFFFFFFFFF)}) {
            double volatile const seen = number;
            ASSERT_EQ(seen * 1.0, 0.0);
            WriterJson::Write(Trivial_T<double>(number), stream, false);
            stream << ' ';
        }
        WriterJson::Write(Trivial_T<double>(-0.0), stream, false);
    }
    EXPECT_EQ(stream.str(), "4.9406564584124654418e-324 -2.225073858507200889e-308 -0");
}

}  // namespace
}  // namespace Zelm::MetaData
