#include "reporters/field_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace HostMonitor {

using Zelm::MetaData::Array;
using Zelm::MetaData::Element;
using Zelm::MetaData::Object;
using Zelm::MetaData::Trivial_T;

namespace {

Element integer(long value)
{
    return Trivial_T<long>(value);
}

Element number(double value)
{
    return Trivial_T<double>(value);
}

Element text(std::string const& value)
{
    return Trivial_T<std::string>(value);
}

}  // namespace

TEST(FieldHeading, isTheWordsWithoutTheUnit)
{
    struct Row {
        char const* name;
        char const* heading;
    };
    Row const rows[] = {
        {"core", "core"},
        {"mountPoint", "mount point"},
        {"freeBytes", "free"},
        {"swapTotalBytes", "swap total"},
        {"receivedBytesPerSecond", "received/s"},
        {"interruptsPerSecond", "interrupts/s"},
        {"loadPercent", "load %"},
        {"intervalMicroseconds", "interval"},
        // The unit is the name here.
        {"Bytes", "bytes"},
        {"PerSecond", "per second"},
        // These only look alike.
        {"kilobytes", "kilobytes"},
        {"BytesSent", "bytes sent"},
        {"", ""},
        {"a\x1b[2J", "a?[2 j"},
    };
    for (auto const& row : rows)
        EXPECT_EQ(fieldHeading(row.name), row.heading) << row.name;
}

TEST(FieldText, showsNumbersInTheUnitOfTheName)
{
    struct Row {
        char const* name;
        Element value;
        char const* shown;
    };
    Row const rows[] = {
        {"core", integer(7), "7"},
        {"core", integer(-7), "-7"},
        {"load", number(12.34), "12.3"},
        {"load", number(0), "0.0"},
        {"load", number(-0.1), "-0.1"},
        {"load", number(0.0123), "0.012"},
        {"load", number(-0.04), "-0.04"},
        {"loadPercent", number(12.34), "12.3"},
        {"loadPercent", integer(100), "100.0"},
        {"freeBytes", integer(1536), "1.5 KiB"},
        {"freeBytes", number(1536), "1.5 KiB"},
        {"sentBytesPerSecond", integer(1023), "1023 B/s"},
        {"interruptsPerSecond", integer(50), "50/s"},
        {"intervalMicroseconds", integer(1'000'999), "1.001 s"},
    };
    for (auto const& row : rows)
        EXPECT_EQ(fieldText(row.name, row.value), row.shown) << row.name;
}

TEST(FieldText, showsEveryKindOfElement)
{
    Array list;
    list.insert(text("a"));
    list.insert(integer(2048));
    Object object;
    object["b"] = integer(1);
    object["a"] = text("x\n");

    EXPECT_EQ(fieldText("f", Element()), "-");
    EXPECT_EQ(fieldText("f", Trivial_T<bool>(true)), "true");
    EXPECT_EQ(fieldText("f", Trivial_T<bool>(false)), "false");
    EXPECT_EQ(fieldText("f", text("é")), "é");
    EXPECT_EQ(fieldText("fBytes", list), "a, 2.0 KiB");
    EXPECT_EQ(fieldText("f", Array()), "");
    EXPECT_EQ(fieldText("f", object), "{\"a\":\"x\\n\",\"b\":1}");
}

TEST(FieldText, replacesControlCharacters)
{
    EXPECT_EQ(fieldText("f", text("a\x1b[2J\n\t\x7f")), "a?[2J???");
    EXPECT_EQ(fieldText("f", text("\xC2\x9B"
                                  "2J\xC2\xA0\xC2")),
              "?2J\xC2\xA0\xC2");
}

TEST(BytesText, takesTheLargestUnitThatIsntBelowOne)
{
    struct Row {
        double bytes;
        char const* shown;
    };
    Row const rows[] = {
        {0, "0 B"},
        {1, "1 B"},
        {1023, "1023 B"},
        {1024, "1.0 KiB"},
        {1536, "1.5 KiB"},
        {1024 * 1023.9, "1023.9 KiB"},
        {1024 * 1023.96, "1.0 MiB"},
        {1024 * 1024, "1.0 MiB"},
        {5e9, "4.7 GiB"},
        {static_cast<double>(std::numeric_limits<long>::max()), "8.0 EiB"},
        {1e25, "8673617.4 EiB"},
        {-2048, "-2.0 KiB"},
    };
    for (auto const& row : rows)
        EXPECT_EQ(bytesText(row.bytes), row.shown) << row.bytes;
}

}  // namespace HostMonitor
