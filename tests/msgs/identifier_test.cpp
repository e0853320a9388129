#include "zelm/msgs/identifier.h"

#include "tests/metadata/elements.h"
#include "tests/msgs/short_forms.h"
#include "tests/support/throws_text.h"
#include "tests/support/vtable_slot.h"
#include "zelm/metadata/reflector.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <type_traits>
#include <vector>

namespace Zelm::Msgs {
namespace {

using MetaData::Element;
using MetaData::Testing::array;
using MetaData::Testing::boolean;
using MetaData::Testing::identical;
using MetaData::Testing::integer;
using MetaData::Testing::number;
using MetaData::Testing::string;
using Testing::any;
using Zelm::Testing::slotOf;
using Zelm::Testing::throwsText;

static_assert(std::is_base_of_v<MetaData::PartiallySerializableInterface, Identifier>);
static_assert(sizeof(Identifier) == sizeof(void*) + sizeof(unsigned long), "its value and nothing else");
static_assert(Identifier::toValue(1, 2, 3, 4) == 0x0001000200030004);

Identifier id(unsigned short category, unsigned short sub1, unsigned short sub2, unsigned short type)
{
    return {Identifier::toValue(category, sub1, sub2, type)};
}

Element arrayOf(std::vector<long> const& fields)
{
    std::vector<Element> elements;
    elements.reserve(fields.size());
    for (long const field : fields)
        elements.push_back(integer(field));
    return array(elements);
}

// ------------------------------------------------------------------------------------------------- value and fields

TEST(Identifier, packsItsFieldsFromTheMostGeneralDown)
{
    EXPECT_EQ(Identifier::toValue(1, 2, 3, 4), 0x0001000200030004u);
    EXPECT_EQ(Identifier::toValue(0x8000, 0x8000, 0x8000, 0x8000), 0x8000800080008000u);
    EXPECT_EQ(Identifier::toValue(any, 0, any, 0), 0xFFFF0000FFFF0000u);
}

TEST(Identifier, takesItsFieldsApart)
{
    Identifier const identifier(0xFFFE800000037FFF);

    EXPECT_EQ(identifier.category(), 0xFFFE);
    EXPECT_EQ(identifier.sub1(), 0x8000);
    EXPECT_EQ(identifier.sub2(), 3);
    EXPECT_EQ(identifier.type(), 0x7FFF);
}

TEST(Identifier, keepsEveryValue)
{
    for (unsigned long const value : {0ul, 1ul, 0x8000000000000000ul, 0xFFF0FFF0FFF0FFF0ul, ~0ul}) {
        EXPECT_EQ(Identifier(value).value(), value);
        EXPECT_EQ(Identifier::fromValue(value).value(), value);
        EXPECT_EQ(static_cast<unsigned long>(Identifier(value)), value);
    }
}

TEST(Identifier, isTheNumberThatItConvertsTo)
{
    Identifier const identifier = Identifier::toValue(1, 2, 3, 4);
    unsigned long const value = identifier;

    EXPECT_EQ(value, identifier.value());
    EXPECT_TRUE(identifier == id(1, 2, 3, 4));
    EXPECT_TRUE(identifier != id(1, 2, 3, 5));
    EXPECT_TRUE(identifier < id(1, 2, 3, 5));
}

TEST(Identifier, isCopiedAndAssignedAsAValue)
{
    Identifier const source(7);
    Identifier target(8);

    target = source;

    EXPECT_EQ(target.value(), 7u);
    EXPECT_EQ(Identifier(source).value(), 7u);
}

struct BehindIdentifier : Identifier {
    virtual void next() = 0;
};

TEST(Identifier, keepsItsVirtualFunctionsInTheirPlacesBehindTheDestructor)
{
    EXPECT_EQ(slotOf(&Identifier::copyToMetaData), 2);
    EXPECT_EQ(slotOf(&Identifier::copyFromMetaData), 3);
    EXPECT_EQ(slotOf(&BehindIdentifier::next), 4);
}

TEST(Identifier, isFoundAgainBehindItsInterfaceWithoutADynamicCast)
{
    Identifier const identifier(7);
    MetaData::PartiallySerializableInterface const& behind = identifier;

    EXPECT_EQ(static_cast<Identifier const&>(behind).value(), 7u);  // virtual inheritance would not let it through
}

// ------------------------------------------------------------------------------------------------------------ covers

TEST(Identifier, coversWhatItsWildcardsFromTheRightTakeIn)
{
    struct Case {
        char const* why;
        Identifier pattern;
        Identifier other;
        bool covers;
    };
    Case const cases[] = {
        {"an equal value", id(1, 2, 3, 4), id(1, 2, 3, 4), true},
        {"an equal value with a wildcard inside", id(1, 2, any, 4), id(1, 2, any, 4), true},
        {"an equal value of wildcards", id(any, any, any, any), id(any, any, any, any), true},
        {"another type", id(1, 2, 3, 4), id(1, 2, 3, 5), false},
        {"another category", id(1, 2, 3, 4), id(2, 2, 3, 4), false},
        {"type alone is wild", id(1, 2, 7, any), id(1, 2, 7, 9), true},
        {"type alone is wild, another sub2", id(1, 2, 7, any), id(1, 2, 8, 9), false},
        {"type alone is wild, another sub1", id(1, 2, 7, any), id(1, 3, 7, 9), false},
        {"type alone is wild, another category", id(1, 2, 7, any), id(2, 2, 7, 9), false},
        {"the last two are wild", id(1, 2, any, any), id(1, 2, 8, 9), true},
        {"the last two are wild, another sub1", id(1, 2, any, any), id(1, 3, 8, 9), false},
        {"the last three are wild", id(1, any, any, any), id(1, 3, 8, 9), true},
        {"the last three are wild, another category", id(1, any, any, any), id(2, 3, 8, 9), false},
        {"all four are wild", id(any, any, any, any), id(0, 0, 0, 0), true},
        {"a wildcard on the right is a number", id(1, 2, 3, 4), id(1, 2, 3, any), false},
        {"a wildcard category on the right is a number", id(1, 2, 3, any), id(any, 2, 3, 4), false},
        {"a wildcard sub1 on the right is a number", id(1, 2, 3, any), id(1, any, 3, 4), false},
        {"a wildcard sub2 on the right is a number", id(1, 2, 3, any), id(1, 2, any, 4), false},
        {"the reverse of that", id(1, 2, 3, any), id(1, 2, 3, 4), true},
    };
    for (Case const& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(row.pattern.covers(row.other), row.covers) << row.pattern << " covers " << row.other;
    }
}

TEST(Identifier, coversOnPurposeWithoutTheFieldsBehindAWildcard)
{
    EXPECT_TRUE(id(1, any, 7, any).covers(id(1, 3, 8, 9)));
    EXPECT_TRUE(id(1, any, 7, any).covers(id(1, 3, 7, 9)));
    EXPECT_FALSE(id(1, any, 7, any).covers(id(2, 3, 7, 9)));
    EXPECT_TRUE(id(any, 1, 2, 3).covers(id(4, 5, 6, 7)));
}

TEST(Identifier, coversItselfAloneOnPurposeIfItsTypeIsNoWildcard)
{
    EXPECT_TRUE(id(1, 2, any, 4).covers(id(1, 2, any, 4)));
    EXPECT_FALSE(id(1, 2, any, 4).covers(id(1, 2, 9, 4)));
    EXPECT_FALSE(id(1, any, any, 4).covers(id(1, 2, 9, 4)));
    EXPECT_FALSE(id(1, any, 3, 4).covers(id(1, 2, 3, 4)));
}

// --------------------------------------------------------------------------------------------------------- streaming

TEST(Identifier, writesItsFieldsToAStream)
{
    std::ostringstream stream;
    stream << id(1, 2, 3, 4) << id(any, any, any, any);

    EXPECT_EQ(stream.str(), "{ 1, 2, 3, 4 }{ 65535, 65535, 65535, 65535 }");
}

TEST(Identifier, writesItsFieldsInTheStreamsCurrentIntegerFormat)
{
    std::ostringstream stream;
    stream << std::hex << std::showbase << std::uppercase << id(10, 255, any, 0);

    EXPECT_EQ(stream.str(), "{ 0XA, 0XFF, 0XFFFF, 0 }");
}

// ----------------------------------------------------------------------------------------------------- serialisation

TEST(Identifier, becomesAnArrayOfFourIntegers)
{
    Element target;

    id(10, 2, any, 0x8000).copyToMetaData(target);

    EXPECT_PRED2(identical, target, arrayOf({10, 2, 65535, 32768}));
}

TEST(Identifier, replacesWhateverTheTargetHeld)
{
    Element longer = arrayOf({9, 9, 9, 9, 9, 9});
    Element object;
    object["kept"];

    id(1, 2, 3, 4).copyToMetaData(longer);
    id(1, 2, 3, 4).copyToMetaData(object);

    EXPECT_EQ(longer, arrayOf({1, 2, 3, 4}));
    EXPECT_EQ(object, arrayOf({1, 2, 3, 4}));
}

TEST(Identifier, readsBackWhatItWroteWildcardsIncluded)
{
    for (Identifier const& written : {id(1, 2, 3, 4), id(any, any, any, any), id(0x7FFF, 0x8000, 0, 0xFFFE)}) {
        Element element;
        written.copyToMetaData(element);
        Identifier read(77);

        read.copyFromMetaData(element);

        EXPECT_EQ(read.value(), written.value());
    }
}

TEST(Identifier, keepsTheLow16BitsOfEachFieldThatItReads)
{
    Identifier identifier;

    identifier.copyFromMetaData(arrayOf({-1, 131071, 65536, 32768}));

    EXPECT_EQ(identifier.value(), id(any, any, 0, 32768).value());
}

TEST(Identifier, readsNumbersWithoutTheirFraction)
{
    Identifier identifier;

    identifier.copyFromMetaData(array({number(3.7), number(0.5), number(65535.9), number(-1.5)}));

    EXPECT_EQ(identifier.value(), id(3, 0, any, any).value());
}

TEST(Identifier, readsTheFirstFourOfALongerArray)
{
    Identifier identifier;

    identifier.copyFromMetaData(arrayOf({1, 2, 3, 4, 5}));

    EXPECT_EQ(identifier.value(), id(1, 2, 3, 4).value());
}

TEST(Identifier, doesNotChangeTheSourceThatItReads)
{
    Element text = string("1234");
    Identifier identifier;

    EXPECT_ANY_THROW(identifier.copyFromMetaData(text));

    EXPECT_EQ(text.asString(), "1234");
}

TEST(Identifier, keepsItsValueIfTheSourceIsNoArray)
{
    Identifier identifier(7);

    EXPECT_THAT([&] { identifier.copyFromMetaData(Element()); },
                throwsText<Exception::InvalidOperation>("Attempting to index into Element which isn't an Array"));

    EXPECT_EQ(identifier.value(), 7u);
}

TEST(Identifier, keepsItsValueIfTheArrayIsTooShort)
{
    Identifier identifier(7);

    EXPECT_THAT(
        [&] {
            identifier.copyFromMetaData(arrayOf({1, 2, 3}));
        },
        throwsText<Exception::InvalidParameter>("Invalid Parameter: Array out of bounds"));

    EXPECT_EQ(identifier.value(), 7u);
}

TEST(Identifier, keepsItsValueIfAFieldIsNoNumber)
{
    Identifier identifier(7);
    Element const source = array({integer(1), integer(2), integer(3), string("4")});

    EXPECT_THAT([&] { identifier.copyFromMetaData(source); },
                throwsText<MetaData::Exception>("Bad cast: Can't convert MetaData String to Integer"));

    EXPECT_EQ(identifier.value(), 7u);
}

TEST(Identifier, readsItsFieldsInTheirOrderSoThatTheFirstFaultIsTheOneReported)
{
    Element const good = integer(1);
    Element const bad = boolean(true);
    Element const worse = string("4");

    for (Element const& source : {array({bad}), array({bad, worse}), array({good, bad, worse, worse}),
                                  array({good, good, bad, worse}), array({good, good, bad})}) {
        Identifier identifier(7);
        EXPECT_THAT([&] { identifier.copyFromMetaData(source); },
                    throwsText<MetaData::Exception>("Bad cast: Can't convert MetaData Boolean to Integer"));
    }
}

// ------------------------------------------------------------------------------------------------------- as a member

class Holder : public MetaData::MirroredObject {
public:
    MetaData::Reflector<Identifier, true, true> kind{this, "kind"};
};

TEST(Identifier, isAMemberOfAMirroredObject)
{
    Holder holder;
    holder.kind.assign(id(1, 2, 3, any));
    Element element;
    holder.copyToMetaData(element);
    Holder read;

    read.copyFromMetaData(element);

    EXPECT_EQ(element["kind"], arrayOf({1, 2, 3, 65535}));
    EXPECT_EQ(read.kind().value(), id(1, 2, 3, any).value());
}

TEST(Identifier, fallsBackToZeroAsAMemberThatCantBeRead)
{
    Holder holder;
    holder.kind.assign(id(1, 2, 3, 4));
    EXPECT_TRUE(holder.requireMember("kind"));
    Element source;
    source["kind"] = arrayOf({1, 2});

    holder.copyFromMetaData(source);

    EXPECT_EQ(holder.kind().value(), 0u);
}

}  // namespace
}  // namespace Zelm::Msgs
