#include "zelm/core/uuid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <type_traits>
#include <utility>

namespace Zelm {
namespace {

std::string const lowerText = "0b5f8a0e-3d0c-4b0e-9c52-6f1c7e0d9a43";
std::string const upperText = "0B5F8A0E-3D0C-4B0E-9C52-6F1C7E0D9A43";
unsigned char const lowerTextsBytes[16] = {0x0b, 0x5f, 0x8a, 0x0e, 0x3d, 0x0c, 0x4b, 0x0e,
                                           0x9c, 0x52, 0x6f, 0x1c, 0x7e, 0x0d, 0x9a, 0x43};

static_assert(!std::is_polymorphic_v<Uuid>);
static_assert(sizeof(Uuid) == sizeof(Uuid::Bytes) + sizeof(std::string), "its bytes, its text and nothing else");

Uuid copyOf(Uuid const& uuid)
{
    return {uuid};
}

TEST(Uuid, isNewlyGeneratedByDefault)
{
    EXPECT_FALSE(Uuid() == Uuid());
    EXPECT_TRUE(Uuid() != Uuid());
}

TEST(Uuid, hasATextOf36CharactersInFiveGroups)
{
    std::string text = Uuid().asUuidString();

    ASSERT_EQ(text.size(), 36u);
    for (std::size_t const hyphen : {8u, 13u, 18u, 23u}) {
        EXPECT_EQ(text[hyphen], '-') << text;
        text[hyphen] = '0';
    }
    EXPECT_EQ(text.find_first_not_of("0123456789abcdefABCDEF"), std::string::npos) << text;
}

TEST(Uuid, equalsTheOneBuiltFromItsText)
{
    Uuid const uuid;

    EXPECT_TRUE(Uuid(uuid.asUuidString()) == uuid);
}

TEST(Uuid, equalsTheOneBuiltFromItsBytesAndHasTheSameText)
{
    Uuid const uuid;
    Uuid const rebuilt(uuid.asUuid_t());

    EXPECT_TRUE(rebuilt == uuid);
    EXPECT_EQ(rebuilt.asUuidString(), uuid.asUuidString());
}

TEST(Uuid, readsAndPrintsTheBytesInTheOrderOfTheText)
{
    EXPECT_TRUE(std::equal(std::begin(lowerTextsBytes), std::end(lowerTextsBytes), Uuid(lowerText).asUuid_t()));
    EXPECT_EQ(Uuid(lowerTextsBytes).asUuidString(), lowerText);
}

TEST(Uuid, givesItsTextAgainAtEveryCall)
{
    Uuid const uuid;
    std::string const first = uuid.asUuidString();

    EXPECT_EQ(uuid.asUuidString(), first);
}

TEST(Uuid, convertsToItsBytesAndToItsText)
{
    Uuid const uuid(upperText);

    unsigned char const(&bytes)[16] = uuid;
    std::string const text = uuid;

    EXPECT_EQ(&bytes, &uuid.asUuid_t());
    EXPECT_EQ(text, upperText);
}

TEST(Uuid, handsOutTheTextOfATemporary)
{
    EXPECT_EQ(Uuid(upperText).asUuidString(), upperText);
    EXPECT_EQ(Uuid(lowerTextsBytes).asUuidString(), lowerText);
}

TEST(Uuid, keepsTheTextThatItWasBuiltFromToTheLetter)
{
    Uuid const upper(upperText);

    EXPECT_TRUE(upper == Uuid(lowerText));
    EXPECT_EQ(upper.asUuidString(), upperText);
}

TEST(Uuid, leavesTheTextBehindWhenItIsCopiedOnPurpose)
{
    Uuid const upper(upperText);
    Uuid const copy = copyOf(upper);

    EXPECT_TRUE(copy == upper);
    EXPECT_EQ(copy.asUuidString(), lowerText);
}

TEST(Uuid, leavesTheTextBehindWhenItIsMovedTooOnPurpose)
{
    Uuid upper(upperText);
    Uuid const moved(static_cast<Uuid&&>(upper));

    EXPECT_EQ(moved.asUuidString(), lowerText);
    EXPECT_EQ(upper.asUuidString(), upperText);
}

TEST(Uuid, carriesTheTextAlongWhenItIsAssignedOnPurpose)
{
    Uuid const upper(upperText);
    Uuid target;

    Uuid& result = target = upper;

    EXPECT_EQ(&result, &target);
    EXPECT_TRUE(target == upper);
    EXPECT_EQ(target.asUuidString(), upperText);
}

TEST(Uuid, forgetsItsOldTextWhenItIsAssigned)
{
    Uuid const source(lowerTextsBytes);
    Uuid target(std::string("no uuid"));

    target = source;

    EXPECT_EQ(target.asUuidString(), lowerText);
}

TEST(Uuid, takesMalformedTextWithoutAWordAndGivesItBackOnPurpose)
{
    for (std::string const text : {"no uuid", "0b5f8a0e-3d0c-4b0e-9c52-6f1c7e0d9a4", "{0b5f8a0e}"}) {
        SCOPED_TRACE(text);
        Uuid const uuid{text};

        EXPECT_EQ(uuid.asUuidString(), text);
        EXPECT_EQ(Uuid(uuid).asUuidString(), "00000000-0000-0000-0000-000000000000");
    }
}

TEST(Uuid, takesItsBytesFromTheTextUpToANullAndKeepsTheWholeText)
{
    std::string const text = upperText + std::string("\0more", 5);
    Uuid const uuid(text);

    EXPECT_TRUE(uuid == Uuid(lowerText));
    EXPECT_EQ(uuid.asUuidString(), text);
}

TEST(Uuid, takesTheEmptyTextForNone)
{
    EXPECT_EQ(Uuid(std::string()).asUuidString(), "00000000-0000-0000-0000-000000000000");
}

TEST(Uuid, comparesBytesAloneAndNoTexts)
{
    Uuid const shown(lowerTextsBytes);
    shown.asUuidString();

    EXPECT_TRUE(shown == Uuid(lowerTextsBytes));
    EXPECT_FALSE(shown != Uuid(upperText));
    EXPECT_TRUE(Uuid(std::string("one")) == Uuid(std::string("two")));
}

TEST(Uuid, standsBeforeItselfOnPurpose)
{
    Uuid const uuid;
    Uuid const equal(uuid.asUuid_t());

    EXPECT_TRUE(uuid < uuid);
    EXPECT_TRUE(uuid < equal);
    EXPECT_TRUE(equal < uuid);
}

TEST(Uuid, standsBeforeOrBehindADifferentOne)
{
    Uuid const low(lowerText);
    Uuid const high(std::string("fb5f8a0e-3d0c-4b0e-9c52-6f1c7e0d9a43"));

    EXPECT_TRUE(low < high);
    EXPECT_FALSE(high < low);
}

TEST(Uuid, writesItsTextToAStream)
{
    std::ostringstream stream;
    stream << Uuid(upperText) << ' ' << Uuid(lowerTextsBytes);

    EXPECT_EQ(stream.str(), upperText + ' ' + lowerText);
}

}  // namespace
}  // namespace Zelm
