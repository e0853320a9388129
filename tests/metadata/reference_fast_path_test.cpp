// The fast path beside the reference that spells its rules out: a caller must not be able to tell which of them it was.
#include "tests/metadata/reference_fast_path.h"

#include "tests/metadata/elements.h"
#include "tests/metadata/spelled_out.h"
#include "tests/support/temporary_directory.h"
#include "zelm/metadata/reader_json.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <random>
#include <sstream>
#include <string>

namespace Zelm::MetaData {
namespace {

using Testing::ReferenceFastPath;
using Testing::spelledOut;

std::string const parsedDocument = Zelm::Testing::readFile(ZELM_TEST_DATA "/json/twitter.json");
std::string const behindADeepMember = "{\"deep\":" + std::string(40, '[') + std::string(40, ']') + ",";

/// What is printed by way of std::cout, in memory: a file for each of the many texts would take its time.
class Printed {
public:
    Printed() : old_(std::cout.rdbuf(&buffer_)) {}
    ~Printed() { std::cout.rdbuf(old_); }
    Printed(Printed const&) = delete;
    Printed& operator=(Printed const&) = delete;

    std::string text() const { return buffer_.str(); }

private:
    std::stringbuf buffer_;
    std::streambuf* old_;
};

struct TakenByBoth {
    std::string byLibrary;
    std::string byReference;
    bool refused;
};

TakenByBoth takenByBoth(Object const& target, std::string const& text)
{
    auto const outcomeOf = [&](auto read) {
        Printed const printed;
        Object object = target;
        read(object, text);
        return printed.text() + spelledOut(object);
    };
    TakenByBoth taken;
    taken.byLibrary = outcomeOf([](Object& object, std::string const& json) { ReaderJson::Read(object, json); });
    taken.byReference = outcomeOf(ReferenceFastPath::Read);
    taken.refused = taken.byReference.rfind("Read: Parser Error!\n", 0) == 0;
    return taken;
}

/// Texts of objects for the reference, from a fixed seed.
class RandomTexts {
public:
    explicit RandomTexts(unsigned seed) : random_(seed) {}

    std::size_t below(std::size_t limit)
    {
        return random_() % limit;  // a distribution of the standard library differs from one library to the next
    }

    std::string number()
    {
        std::string text = below(3) == 0 ? "-" : "";
        text += below(8) == 0 ? "0" : wholeNumber();
        if (below(2) == 0) {
            text += '.';
            text.append(below(6) == 0 ? below(30) : 0, '0');
            text += digits(1 + below(25));
        }
        if (below(2) == 0) {
            static char const* const signs[] = {"e", "E", "e-", "E-", "e+", "E+"};
            text += signs[below(6)];
            text.append(below(8) == 0 ? 3 : 0, '0');
            text += std::to_string(exponent());
        }
        return text;
    }

    std::string value(unsigned depth)
    {
        static char const* const words[] = {
            "null", "true", "false", R"("")", R"("\n\"\/")", R"("\u00e9\ud83d\ude00")", R"("x\u0000y")",
        };
        switch (below(depth == 0 ? 3 : 5)) {
        case 0:
            return words[below(7)];
        case 3:
            return '[' + list(depth, false) + ']';
        case 4:
            return '{' + list(depth, true) + '}';
        default:
            return number();
        }
    }

    std::string list(unsigned depth, bool named)
    {
        static char const* const names[] = {R"("a":)", R"("b" : )", R"("":)", R"("\u0061":)", R"("a\u0000b":)"};
        std::string text;
        for (auto parts = below(5); parts > 0; --parts) {
            text += named ? names[below(5)] : "";
            text += value(depth - 1);
            text += parts > 1 ? ", " : "";
        }
        return text;
    }

    /// With a byte or a few of them missing, doubled, or others in their place.
    std::string spoilt(std::string text)
    {
        static char const bytes[] = {'{', '}', '[', ']', ',', ':', '"', '\\', '0', '-', '.', 'e', '\x01', '\0', '\xFF'};
        for (auto changes = 1 + below(2); changes > 0 && !text.empty(); --changes) {
            auto const place = below(text.size());
            if (below(3) == 0)
                text.erase(place, 1);
            else if (below(2) == 0)
                text.insert(place, 1, text[below(text.size())]);
            else
                text[place] = bytes[below(sizeof bytes)];
        }
        return text;
    }

private:
    std::string digits(std::size_t count)
    {
        std::string text;
        while (text.size() < count)
            text += static_cast<char>('0' + below(10));
        return text;
    }

    /// Of few digits, of about as many as an integer holds, or as a double does.
    std::string wholeNumber()
    {
        std::size_t const counts[] = {below(5), 8 + below(4), 16 + below(8), below(320)};
        std::string text(1, static_cast<char>('1' + below(9)));
        return text += digits(counts[below(4)]);
    }

    std::uint64_t exponent()
    {
        std::uint64_t const exponents[] = {below(10), below(40), 290 + below(40), 600 + below(50),
                                           2147483630 + below(30)};
        return exponents[below(5)];
    }

    std::mt19937 random_;
};

TEST(ReferenceFastPath, agreesOnADocumentWhicheverParserReadsIt)
{
    for (bool const isDeep : {false, true}) {
        SCOPED_TRACE(isDeep);
        auto const taken = takenByBoth({}, isDeep ? behindADeepMember + parsedDocument.substr(1) : parsedDocument);

        EXPECT_FALSE(taken.refused);
        EXPECT_TRUE(taken.byLibrary == taken.byReference);  // which are too long to be printed
    }
}

TEST(ReferenceFastPath, agreesOnPartsOfADocumentWithOneByteMissingOrInItsPlaceAnother)
{
    Object members;
    ReaderJson::Read(members, parsedDocument);
    auto const text = Json::metaDatatoJsonString(members["statuses"][0].CastTo<Object>());
    ASSERT_GT(text.size(), 1000u);

    RandomTexts random(2);
    for (std::size_t place = 0; place < text.size(); place += 11) {
        for (auto const& changed : {random.spoilt(text), text.substr(0, place)}) {
            auto const taken = takenByBoth({}, changed);
            ASSERT_EQ(taken.byLibrary, taken.byReference) << changed;
        }
    }
}

TEST(ReferenceFastPath, agreesOnNumbersToTheLastBit)
{
    RandomTexts random(3);
    int refused = 0;
    for (int round = 0; round < 10000; ++round) {
        auto const text = "{\"a\":" + random.number() + '}';
        auto const taken = takenByBoth({}, text);

        ASSERT_EQ(taken.byLibrary, taken.byReference) << text;
        refused += taken.refused;
    }
    EXPECT_GT(refused, 200);  // those that are too large
    EXPECT_LT(refused, 4000);
}

TEST(ReferenceFastPath, agreesOnRandomTextsForEveryTargetWhicheverParserReadsThem)
{
    auto const filled = Testing::object({{"a", Testing::object({{"kept", Element()}})}, {"kept", Testing::integer(1)}});
    RandomTexts random(4);
    int refused = 0;
    constexpr int rounds = 4000;
    for (int round = 0; round < rounds; ++round) {
        auto text = (round % 2 == 0 ? "{" : behindADeepMember) + "\"first\":1," + random.list(3, true) + '}';
        if (round % 3 == 0)
            text = random.spoilt(text);
        auto const target = round % 5 == 0 ? filled.CastTo<Object>() : Object();
        auto const taken = takenByBoth(target, text);

        ASSERT_EQ(taken.byLibrary, taken.byReference) << text;
        refused += taken.refused;
    }
    EXPECT_GT(refused, rounds / 6);
    EXPECT_LT(refused, rounds / 6 * 5);
}

TEST(ReferenceFastPath, agreesOnRootsThatAreNoObjects)
{
    for (char const* text : {"null", "true", "false", "0", "[]", "7", "\"x\"", "[1,2]", "", " ", "nul", "[}"}) {
        auto const taken = takenByBoth(Testing::object({{"kept", Element()}}).CastTo<Object>(), text);
        EXPECT_EQ(taken.byLibrary, taken.byReference) << text;
    }
}

}  // namespace
}  // namespace Zelm::MetaData
