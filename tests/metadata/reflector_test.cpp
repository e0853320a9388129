#include "zelm/metadata/reflector.h"

#include "tests/metadata/elements.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/printed_by.h"
#include "tests/support/throws_text.h"
#include "tests/support/vtable_slot.h"

#include <gtest/gtest.h>

#include <complex>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::boolean;
using Testing::identical;
using Testing::integer;
using Testing::number;
using Testing::object;
using Testing::string;
using Zelm::Testing::AllocationCount;
using Zelm::Testing::printedBy;
using Zelm::Testing::slotOf;
using Zelm::Testing::throwsText;

std::string unsetReflector(std::string const& name)
{
    return "> " + name + " < not initialized in Zelm::MetaData::Reflector::operator()()";
}

/// Reads and writes itself without being a MirroredObject: an Array of one Integer.
class Code : public PartiallySerializableInterface {
public:
    explicit Code(long value = 0) : value_(value) {}

    void copyToMetaData(Element& target) const override { target = array({integer(value_)}); }
    void copyFromMetaData(Element const& source) override { value_ = source[0].asInt64(); }

    bool operator==(Code const& other) const { return value_ == other.value_; }

private:
    long value_;
};

struct ComparablePoint : MirroredObject {
    ComparablePoint() = default;
    ComparablePoint(ComparablePoint const& other) : MirroredObject() { *this = other; }
    ComparablePoint& operator=(ComparablePoint const& other) = default;

    Reflector<int, false, true> x{this, "x", 5};
    Reflector<int, false, true> y{this, "y"};

    bool operator==(ComparablePoint const& other) const
    {
        return x() == other.x() && y.initialized() == other.y.initialized() && (!y.initialized() || y() == other.y());
    }
};

ComparablePoint point(int x, int y)
{
    ComparablePoint result;
    result.x = x;
    result.y = y;
    return result;
}

// ---------------------------------------------------------------------------------------- all kinds of values together

/// A value of a type, how it is stored, and an element that can't be read as one.
template <class R> struct Example;

template <> struct Example<Reflector<int, false, true>> {
    static int value() { return -7; }
    static Element stored() { return integer(-7); }
    static Element unreadable() { return string("1"); }
};
template <> struct Example<Reflector<unsigned int, false, true>> {
    static unsigned int value() { return 4294967295u; }
    static Element stored() { return integer(4294967295); }
    static Element unreadable() { return string("1"); }
};
template <> struct Example<Reflector<unsigned long, false, true>> {
    static unsigned long value() { return 18446744073709551615ul; }
    static Element stored() { return integer(-1); }
    static Element unreadable() { return boolean(true); }
};
template <> struct Example<Reflector<long, false, true>> {
    static long value() { return 1; }
    static Element stored() { return integer(1); }
    static Element unreadable() { return object({}); }
};
template <> struct Example<Reflector<double, false, true>> {
    static double value() { return 2.5; }
    static Element stored() { return number(2.5); }
    static Element unreadable() { return string("2.5"); }
};
template <> struct Example<Reflector<bool, false, true>> {
    static bool value() { return true; }
    static Element stored() { return boolean(true); }
    static Element unreadable() { return integer(1); }
};
template <> struct Example<Reflector<std::string, false, true>> {
    static std::string value() { return "text"; }
    static Element stored() { return string("text"); }
    static Element unreadable() { return integer(1); }
};
template <> struct Example<Reflector<std::complex<bool>, false, true>> {
    static std::complex<bool> value() { return {true, false}; }
    static Element stored() { return array({boolean(true), boolean(false)}); }
    static Element unreadable() { return array({boolean(true)}); }
};
template <> struct Example<Reflector<std::vector<std::string>, false, true>> {
    static std::vector<std::string> value() { return {"a", "b"}; }
    static Element stored() { return array({string("a"), string("b")}); }
    static Element unreadable() { return array({string("a"), integer(1)}); }
};
template <> struct Example<Reflector<Code, true, true>> {
    static Code value() { return Code(7); }
    static Element stored() { return array({integer(7)}); }
    static Element unreadable() { return array({}); }
};
template <> struct Example<Reflector<Code, false, false>> : Example<Reflector<Code, true, true>> {
};
template <> struct Example<Reflector<int, true, false>> : Example<Reflector<int, false, true>> {
};

template <class R> using ValueOf = std::decay_t<decltype(std::declval<R const&>()())>;

template <class R> class AnyReflector : public ::testing::Test {
};

// The last two have the flags the other way round: these have no effect.
using Reflectors =
    ::testing::Types<Reflector<int, false, true>, Reflector<unsigned int, false, true>,
                     Reflector<unsigned long, false, true>, Reflector<long, false, true>,
                     Reflector<double, false, true>, Reflector<bool, false, true>, Reflector<std::string, false, true>,
                     Reflector<std::complex<bool>, false, true>, Reflector<std::vector<std::string>, false, true>,
                     Reflector<Code, true, true>, Reflector<Code, false, false>, Reflector<int, true, false>>;
TYPED_TEST_SUITE(AnyReflector, Reflectors);

TYPED_TEST(AnyReflector, isOptionalWithoutAValueAndRequiredWithOne)
{
    TypeParam const optional(nullptr, "optional");
    TypeParam const required(nullptr, "required", Example<TypeParam>::value());

    EXPECT_FALSE(optional.initialized());
    EXPECT_THAT([&] { optional(); }, throwsText<Zelm::Exception::InvalidOperation>(unsetReflector("optional")));
    EXPECT_TRUE(required.isRequired());
    EXPECT_TRUE(required() == Example<TypeParam>::value());
}

TYPED_TEST(AnyReflector, writesItsValueUnderItsNameAndReadsItBack)
{
    TypeParam reflector(nullptr, "key");
    reflector = Example<TypeParam>::value();

    Element written;
    reflector.copyToMetaData(written);
    TypeParam other(nullptr, "key");
    other.copyFromMetaData(written);

    EXPECT_PRED2(identical, written, object({{"key", Example<TypeParam>::stored()}}));
    EXPECT_TRUE(other() == Example<TypeParam>::value());
    EXPECT_FALSE(other.isRequired());
}

TYPED_TEST(AnyReflector, writesNothingWithoutAValue)
{
    TypeParam const reflector(nullptr, "key");

    for (Element const& before : {Element(), string("kept"), object({{"key", string("kept")}})}) {
        Element target = before;
        reflector.copyToMetaData(target);
        EXPECT_PRED2(identical, target, before);
    }
}

// No word about it on purpose: code that must refuse bad input looks at its fields afterwards.
TYPED_TEST(AnyReflector, fallsBackToTheDefaultValueIfItCantBeReadOnPurpose)
{
    using T = ValueOf<TypeParam>;
    for (Element const& source : {object({{"key", Example<TypeParam>::unreadable()}}), object({{"other", Element()}}),
                                  object({}), array({Example<TypeParam>::stored()}), string("key"), Element()}) {
        TypeParam uninitialized(nullptr, "key");
        TypeParam initialized(nullptr, "key");
        initialized = Example<TypeParam>::value();
        TypeParam required(nullptr, "key", Example<TypeParam>::value());

        std::string const printed = printedBy([&] {
            for (TypeParam* reflector : {&uninitialized, &initialized, &required})
                reflector->copyFromMetaData(source);
        });
        EXPECT_EQ(printed, "");

        EXPECT_FALSE(uninitialized.initialized());
        EXPECT_FALSE(initialized.initialized());
        ASSERT_TRUE(required.isRequired());
        EXPECT_TRUE(required() == T());
        for (TypeParam* reflector : {&uninitialized, &initialized}) {
            reflector->init();
            EXPECT_TRUE((*reflector)() == T());
        }
    }
}

TYPED_TEST(AnyReflector, readsAValueAfterAFailureAsBefore)
{
    TypeParam reflector(nullptr, "key");
    reflector.assign(object({{"key", Example<TypeParam>::unreadable()}}));

    reflector.assign(object({{"key", Example<TypeParam>::stored()}}));

    EXPECT_TRUE(reflector() == Example<TypeParam>::value());
}

TYPED_TEST(AnyReflector, clearsItsValueOnResetAndStaysRequiredIfItWas)
{
    using T = ValueOf<TypeParam>;
    TypeParam optional(nullptr, "optional");
    optional = Example<TypeParam>::value();
    TypeParam required(nullptr, "required", Example<TypeParam>::value());

    optional.reset();
    required.reset();

    EXPECT_FALSE(optional.initialized());
    optional.init();
    EXPECT_TRUE(optional() == T());
    EXPECT_TRUE(required.isRequired());
    EXPECT_TRUE(required() == T());
}

// --------------------------------------------------------------------------------------------------------- assignment

TEST(Reflector, takesTheValueButNeitherTheNameNorTheStateOfARequiredOne)
{
    Reflector<int, false, true> target(nullptr, "target");
    Reflector<int, false, true> const source(nullptr, "source", 5);

    auto& result = target = source;

    EXPECT_EQ(&result, &target);
    EXPECT_EQ(target(), 5);
    EXPECT_EQ(target.name(), "target");
    EXPECT_FALSE(target.isRequired());
}

TEST(Reflector, staysRequiredWhenItTakesAnOptionalValue)
{
    Reflector<int, false, true> target(nullptr, "target", 1);
    Reflector<int, false, true> source(nullptr, "source");
    source = 5;

    target = source;

    EXPECT_EQ(target(), 5);
    EXPECT_TRUE(target.isRequired());
}

TEST(Reflector, holdsTheDefaultValueAndStaysRequiredWhenItIsAssignedFromAnUnsetOne)
{
    Reflector<std::string, false, true> target(nullptr, "target", "text");
    Reflector<std::string, false, true> const source(nullptr, "source");

    target = source;

    EXPECT_TRUE(target.isRequired());
    EXPECT_EQ(target(), "");
}

TEST(Reflector, losesItsValueWhenItIsOptionalAndAssignedFromAnUnsetOne)
{
    Reflector<int, false, true> target(nullptr, "target");
    target = 5;
    Reflector<int, false, true> const source(nullptr, "source");

    target = source;

    EXPECT_FALSE(target.initialized());
    target.init();
    EXPECT_EQ(target(), 0);
}

TEST(Reflector, isUnchangedByAssignmentFromItself)
{
    Reflector<std::string, false, true> set(nullptr, "set", std::string(100, 'x'));
    Reflector<std::string, false, true> unsetOne(nullptr, "unset");

    set = std::as_const(set);
    unsetOne = std::as_const(unsetOne);

    EXPECT_EQ(set(), std::string(100, 'x'));
    EXPECT_FALSE(unsetOne.initialized());
}

TEST(Reflector, isBuiltFromATemporaryWithoutACopy)
{
    std::string value = "a text too long to be stored inside of a string object";
    char const* const storage = value.data();

    Reflector<std::string, false, true> const text(nullptr, "text", std::move(value));

    EXPECT_EQ(text().data(), storage);
    EXPECT_TRUE(text.isRequired());
}

TEST(Reflector, takesAPlainValue)
{
    Reflector<std::string, false, true> text(nullptr, "text");
    Reflector<unsigned long, false, true> count(nullptr, "count");

    text = "text";
    count.assign(3);

    EXPECT_EQ(text(), "text");
    EXPECT_EQ(count(), 3u);
}

/// Records the calls to both virtual operations and lets them through.
class RecordingReflector : public Reflector<int, false, true> {
public:
    using Reflector::Reflector;
    using Reflector::operator=;

    void assign(int const& value) override
    {
        calls += "value " + std::to_string(value) + "; ";
        Reflector::assign(value);
    }
    void assign(Element const& source) override
    {
        calls += "element; ";
        Reflector::assign(source);
    }

    std::string calls;
};

TEST(Reflector, givesOverridesOfAssignEveryValueThatComesIn)
{
    RecordingReflector required(nullptr, "x", 1);
    Reflector<int, false, true> set(nullptr, "set");
    set = 2;
    Reflector<int, false, true> const notSet(nullptr, "unset");

    required = 3;
    required = set;
    required = notSet;
    required.copyFromMetaData(object({{"x", integer(4)}}));

    EXPECT_EQ(required.calls, "value 3; value 2; value 0; element; ");
    EXPECT_EQ(required(), 4);
}

TEST(Reflector, doesntCallAssignWhenItIsResetOrTakesOverThatThereIsNoValue)
{
    RecordingReflector optional(nullptr, "x");
    Reflector<int, false, true> const notSet(nullptr, "unset");

    optional.reset();
    optional = notSet;

    EXPECT_EQ(optional.calls, "");
}

// --------------------------------------------------------------------------------------------------------- in objects

TEST(Reflector, worksAloneWithoutAParent)
{
    Reflector<int, false, true> reflector(nullptr, "x");

    reflector.copyFromMetaData(object({{"x", integer(1)}}));
    reflector = reflector() + 1;
    Element written = object({{"other", string("kept")}});
    reflector.copyToMetaData(written);

    EXPECT_PRED2(identical, written, object({{"other", string("kept")}, {"x", integer(2)}}));
}

TEST(Reflector, losesTheValueOfItsDeclarationOnPurposeWhenARequiredKeyIsMissing)
{
    ComparablePoint target;

    target.copyFromMetaData(object({{"other", integer(1)}}));

    EXPECT_EQ(target.x(), 0);
    Element written;
    target.copyToMetaData(written);
    EXPECT_PRED2(identical, written, object({{"x", integer(0)}}));
}

TEST(Reflector, saysWhichFieldIsntSet)
{
    Reflector<std::string, false, true> const error(nullptr, "Error");

    EXPECT_THAT([&] { error(); }, throwsText<Zelm::Exception::InvalidOperation>(
                                      "> Error < not initialized in Zelm::MetaData::Reflector::operator()()"));
}

TEST(Reflector, allocatesNothingForReadingNumbersThatAreThereOrMissing)
{
    ComparablePoint target;
    Element const complete = object({{"x", integer(1)}, {"y", integer(2)}});
    Element const empty = object({});

    AllocationCount const allocations;
    target.copyFromMetaData(complete);
    int const sum = target.x() + target.y();
    target.copyFromMetaData(empty);
    auto const made = allocations.made();

    EXPECT_EQ(sum, 3);
    EXPECT_EQ(made, 0u);
}

TEST(Reflector, holdsAMirroredObjectInAnObject)
{
    struct Line : MirroredObject {
        Reflector<ComparablePoint, true, true> from{this, "from", point(1, 2)};
        Reflector<ComparablePoint, true, true> to{this, "to"};
    } line, other;

    Element written;
    line.copyToMetaData(written);
    other.copyFromMetaData(object({{"from", object({{"y", integer(4)}})}, {"to", object({{"x", integer(3)}})}}));

    EXPECT_PRED2(identical, written, object({{"from", object({{"x", integer(1)}, {"y", integer(2)}})}}));
    EXPECT_TRUE(other.from() == point(0, 4));
    EXPECT_EQ(other.to().x(), 3);
    EXPECT_FALSE(other.to().y.initialized());
}

TEST(Reflector, keepsKeysOfAHeldObjectThatTheObjectDoesntKnow)
{
    Reflector<ComparablePoint, true, true> const reflector(nullptr, "at", point(1, 2));
    Element target = object({{"at", object({{"z", integer(3)}})}});

    reflector.copyToMetaData(target);

    EXPECT_PRED2(identical, target,
                 object({{"at", object({{"x", integer(1)}, {"y", integer(2)}, {"z", integer(3)}})}}));
}

TEST(Reflector, isAReflectorWithoutWriteAccessThroughTheParentheses)
{
    using Base = ReflectorNoWriteParend<int, true>;

    EXPECT_TRUE((std::is_base_of_v<Base, Reflector<int, false, true>>));
    EXPECT_TRUE((std::is_base_of_v<ReflectorBase, Base>));
    EXPECT_TRUE((std::is_same_v<decltype(std::declval<Reflector<int, false, true>&>()()), int const&>));
}

struct BehindReflector : Reflector<int, false, true> {
    using Reflector::Reflector;
    virtual void next() {}
};

TEST(Reflector, keepsItsVirtualFunctionsInTheirPlacesBehindTheDestructor)
{
    using Value = ReflectorNoWriteParend<int, true>;

    EXPECT_EQ(slotOf(&Value::copyToMetaData), 2);
    EXPECT_EQ(slotOf(&Value::copyFromMetaData), 3);
    EXPECT_EQ(slotOf(static_cast<void (Value::*)(int const&)>(&Value::assign)), 4);
    EXPECT_EQ(slotOf(static_cast<void (Value::*)(Element const&)>(&Value::assign)), 5);
    EXPECT_EQ(slotOf(&BehindReflector::next), 6);
}

}  // namespace
}  // namespace Zelm::MetaData
