#include "zelm/metadata/reflector.h"

#include "tests/metadata/reflector_arrays.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/printed_by.h"
#include "tests/support/throws_text.h"
#include "tests/support/vtable_slot.h"

#include <gtest/gtest.h>

#include <complex>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::boolean;
using Testing::corrupt;
using Testing::identical;
using Testing::integer;
using Testing::Ints;
using Testing::noArray;
using Testing::number;
using Testing::object;
using Testing::objectForm;
using Testing::Row;
using Testing::rowElement;
using Testing::string;
using Testing::Strings;
using Testing::unset;
using Testing::written;
using Testing::wrongType;
using Zelm::Testing::failEachAllocationInTurn;
using Zelm::Testing::printedBy;
using Zelm::Testing::slotOf;
using Zelm::Testing::throwsText;

// --------------------------------------------------------------------------------------- all element types in one form

template <class T> struct ArrayExample;
template <> struct ArrayExample<int> {
    static std::vector<int> values() { return {4, -5}; }
    static Element stored() { return array({integer(4), integer(-5)}); }
    static std::vector<Element> corrupt() { return {array({integer(1), string("x")}), array({Element()})}; }
};
template <> struct ArrayExample<std::string> {
    static std::vector<std::string> values() { return {"b", "", "a"}; }
    static Element stored() { return array({string("b"), string(""), string("a")}); }
    static std::vector<Element> corrupt() { return {array({integer(1), integer(2)}), array({string("a"), Element()})}; }
};
template <> struct ArrayExample<Row> {
    static std::vector<Row> values() { return {Row("a", 1), Row("b", 2)}; }
    static Element stored() { return array({rowElement("a", 1), rowElement("b", 2)}); }
    static std::vector<Element> corrupt() { return {}; }
};
template <> struct ArrayExample<double> {
    static std::vector<double> values() { return {0.5, 2}; }
    static Element stored() { return array({number(0.5), number(2)}); }
    static std::vector<Element> corrupt() { return {array({string("0.5")})}; }
};
template <> struct ArrayExample<long> {
    static std::vector<long> values() { return {1l << 40, -1}; }
    static Element stored() { return array({integer(1l << 40), integer(-1)}); }
    static std::vector<Element> corrupt() { return {array({boolean(true)})}; }
};
template <> struct ArrayExample<bool> {
    static std::vector<bool> values() { return {true, false}; }
    static Element stored() { return array({boolean(true), boolean(false)}); }
    static std::vector<Element> corrupt() { return {array({boolean(true), integer(0)})}; }
};
template <> struct ArrayExample<std::complex<bool>> {
    static std::vector<std::complex<bool>> values() { return {{true, false}}; }
    static Element stored() { return array({array({boolean(true), boolean(false)})}); }
    static std::vector<Element> corrupt() { return {array({array({boolean(true)})})}; }
};

template <class T> class AnyReflectorArray : public ::testing::Test {
};

using ElementTypes = ::testing::Types<int, std::string, Row, double, long, bool, std::complex<bool>>;
TYPED_TEST_SUITE(AnyReflectorArray, ElementTypes);

TYPED_TEST(AnyReflectorArray, isRequiredWithInitialElements)
{
    ReflectorArray<TypeParam> const reflector(nullptr, "key", ArrayExample<TypeParam>::values());

    EXPECT_TRUE(reflector.isRequired());
    EXPECT_TRUE(reflector() == ArrayExample<TypeParam>::values());
}

TYPED_TEST(AnyReflectorArray, isEmptyAndPlainWithoutInitialElements)
{
    ReflectorArray<TypeParam> const optional(nullptr, "optional", false);
    ReflectorArray<TypeParam> const required(nullptr, "required", true);

    EXPECT_FALSE(optional.initialized());
    EXPECT_THAT([&] { optional(); }, throwsText<Zelm::Exception::InvalidOperation>(unset("optional")));
    EXPECT_TRUE(required.isRequired());
    EXPECT_TRUE(required().empty());
    EXPECT_FALSE(optional.encoded());
    EXPECT_FALSE(required.encoded());
    EXPECT_PRED2(identical, written(required), object({{"required", array({})}}));
}

TYPED_TEST(AnyReflectorArray, writesItsElementsAsAnArrayAndReadsThemBack)
{
    ReflectorArray<TypeParam> reflector(nullptr, "key", false);
    reflector.assign(ArrayExample<TypeParam>::values());

    Element const element = written(reflector);
    ReflectorArray<TypeParam> other(nullptr, "key", false);
    std::string const printed = printedBy([&] { other.copyFromMetaData(element); });

    EXPECT_PRED2(identical, element, object({{"key", ArrayExample<TypeParam>::stored()}}));
    EXPECT_TRUE(other() == ArrayExample<TypeParam>::values());
    EXPECT_FALSE(other.isRequired());
    EXPECT_EQ(printed, "");
}

TYPED_TEST(AnyReflectorArray, fitsWhatStandsAtItsKeyToItsOwnLength)
{
    ReflectorArray<TypeParam> reflector(nullptr, "key", false);
    reflector = ArrayExample<TypeParam>::values();
    Array longer;
    longer.resize(9);

    for (Element const& before : {string("gone"), object({{"gone", Element()}}), Element(longer), array({})}) {
        Element const target = object({{"key", before}, {"other", string("kept")}});
        EXPECT_PRED2(identical, written(reflector, target),
                     object({{"key", ArrayExample<TypeParam>::stored()}, {"other", string("kept")}}));
    }
}

TYPED_TEST(AnyReflectorArray, writesNothingWithoutAValue)
{
    ReflectorArray<TypeParam> const reflector(nullptr, "key", false);

    for (Element const& before : {Element(), string("kept"), object({{"key", string("kept")}})})
        EXPECT_PRED2(identical, written(reflector, before), before);
}

TYPED_TEST(AnyReflectorArray, losesItsElementsAndTheirMemoryIfItsKeyIsMissing)
{
    ReflectorArray<TypeParam> optional(nullptr, "key", false), required(nullptr, "key", true);
    optional = ArrayExample<TypeParam>::values();
    required = ArrayExample<TypeParam>::values();

    std::string const printed = printedBy([&] {
        for (auto* reflector : {&optional, &required})
            reflector->copyFromMetaData(object({{"other", ArrayExample<TypeParam>::stored()}}));
    });

    EXPECT_FALSE(optional.initialized());
    EXPECT_TRUE(optional.edit().empty());
    EXPECT_EQ(optional.edit().capacity(), 0u);
    EXPECT_TRUE(required.isRequired());
    EXPECT_TRUE(required().empty());
    EXPECT_EQ(required().capacity(), 0u);
    EXPECT_PRED2(identical, written(required), object({{"key", array({})}}));
    EXPECT_EQ(printed, "");
}

TYPED_TEST(AnyReflectorArray, losesItsElementsIfItIsAssignedFromWhatIsNoObject)
{
    for (Element const& source : {ArrayExample<TypeParam>::stored(), string("key"), Element()}) {
        ReflectorArray<TypeParam> reflector(nullptr, "key", false);
        reflector = ArrayExample<TypeParam>::values();

        EXPECT_EQ(printedBy([&] { reflector.assign(source); }), "");

        EXPECT_FALSE(reflector.initialized());
        EXPECT_TRUE(reflector.edit().empty());
    }
}

// Where a scalar reflector takes such a source for one without its key.
TYPED_TEST(AnyReflectorArray, throwsOnPurposeIfItIsReadFromWhatIsNoObject)
{
    for (Element source : {ArrayExample<TypeParam>::stored(), string("key"), Element()}) {
        auto const before = source;
        ReflectorArray<TypeParam> reflector(nullptr, "key", false);
        reflector = ArrayExample<TypeParam>::values();

        EXPECT_THAT([&] { reflector.copyFromMetaData(source); },
                    throwsText<Exception>(std::string("Bad cast: Can't convert MetaData ") +
                                          ToString(before.GetElementType()) + " to Object"));

        EXPECT_TRUE(reflector() == ArrayExample<TypeParam>::values());
        EXPECT_PRED2(identical, source, before);
    }
}

TYPED_TEST(AnyReflectorArray, keepsItsElementsOnPurposeIfTheArrayIsCorrupt)
{
    for (Element const& bad : ArrayExample<TypeParam>::corrupt()) {
        ReflectorArray<TypeParam> set(nullptr, "set", ArrayExample<TypeParam>::values());
        ReflectorArray<TypeParam> optional(nullptr, "optional", false);
        optional = ArrayExample<TypeParam>::values();
        ReflectorArray<TypeParam> notSet(nullptr, "unset", false);

        EXPECT_EQ(printedBy([&] { set.copyFromMetaData(object({{"set", bad}})); }), corrupt("set"));
        EXPECT_EQ(printedBy([&] { optional.copyFromMetaData(object({{"optional", bad}})); }), corrupt("optional"));
        EXPECT_EQ(printedBy([&] { notSet.copyFromMetaData(object({{"unset", bad}})); }), corrupt("unset"));

        EXPECT_TRUE(set() == ArrayExample<TypeParam>::values());
        EXPECT_TRUE(set.isRequired());
        EXPECT_TRUE(optional.initialized());
        EXPECT_FALSE(optional.isRequired());
        EXPECT_TRUE(optional() == ArrayExample<TypeParam>::values());
        EXPECT_FALSE(notSet.initialized());
        EXPECT_TRUE(notSet.edit().empty());
    }
}

TYPED_TEST(AnyReflectorArray, keepsItsElementsIfItGetsSomethingElseThanAnArray)
{
    bool const hasObjectForm = std::is_same_v<TypeParam, int>;
    for (Element const& other : {string("x"), object({{"a", integer(1)}}), integer(1), Element()}) {
        ReflectorArray<TypeParam> reflector(nullptr, "key", false);
        reflector = ArrayExample<TypeParam>::values();
        ReflectorArray<TypeParam> notSet(nullptr, "key", false);

        for (auto* read : {&reflector, &notSet}) {
            std::string const printed = printedBy([&] { read->copyFromMetaData(object({{"key", other}})); });
            EXPECT_EQ(printed, hasObjectForm ? wrongType : noArray);
        }

        EXPECT_TRUE(reflector() == ArrayExample<TypeParam>::values());
        EXPECT_FALSE(reflector.isRequired());
        EXPECT_FALSE(notSet.initialized());
        EXPECT_TRUE(notSet.edit().empty());
    }
}

TYPED_TEST(AnyReflectorArray, dropsItsElementsAndTheirMemoryOnReset)
{
    ReflectorArray<TypeParam> optional(nullptr, "optional", false), required(nullptr, "required", true);
    optional = ArrayExample<TypeParam>::values();
    required = ArrayExample<TypeParam>::values();

    optional.reset();
    required.reset();

    EXPECT_FALSE(optional.initialized());
    EXPECT_EQ(optional.edit().capacity(), 0u);
    EXPECT_TRUE(required.isRequired());
    EXPECT_EQ(required().size(), 0u);
    EXPECT_EQ(required().capacity(), 0u);
}

TYPED_TEST(AnyReflectorArray, readsAnEmptyArrayAsAValue)
{
    ReflectorArray<TypeParam> reflector(nullptr, "key", false);

    reflector.copyFromMetaData(object({{"key", array({})}}));

    EXPECT_TRUE(reflector.initialized());
    EXPECT_TRUE(reflector().empty());
}

// ------------------------------------------------------------------------------------------------ value and assignment

TEST(ReflectorArray, isGivenAValueByAskingForWriteAccess)
{
    Strings reflector(nullptr, "key", false);

    reflector.edit();

    EXPECT_TRUE(reflector.initialized());
    EXPECT_FALSE(reflector.isRequired());
    EXPECT_PRED2(identical, written(reflector), object({{"key", array({})}}));
}

TEST(ReflectorArray, takesAListOfOneOrNoElementForElementsAndNotForAFlag)
{
    Ints const one(nullptr, "one", {1});
    Ints const none(nullptr, "none", {});
    Strings const text(nullptr, "text", {"a"});

    EXPECT_EQ(one(), std::vector<int>{1});
    EXPECT_EQ(none(), std::vector<int>{});
    EXPECT_EQ(text(), std::vector<std::string>{"a"});
}

template <class R, class = void> constexpr bool takesAFlagInBraces = false;
template <class R>
constexpr bool takesAFlagInBraces<R, std::void_t<decltype(R(nullptr, std::string(), {false}))>> = true;

// Numbers would take it for a 0. To bools it is the element that it looks like.
static_assert(!takesAFlagInBraces<ReflectorArray<int>> && !takesAFlagInBraces<ReflectorArray<double>>);
static_assert(takesAFlagInBraces<ReflectorArray<bool>>);

template <class R, class Flag>
constexpr bool takesFlag = std::is_constructible_v<R, MirroredObject*, std::string, Flag>;
static_assert(takesFlag<Ints, bool> && takesFlag<Ints, bool const&>);
static_assert(!takesFlag<Ints, int> && !takesFlag<Ints, std::true_type> && !takesFlag<Ints, void*> &&
              !takesFlag<Ints, std::vector<bool>::reference>);

TEST(ReflectorArray, takesPlainElements)
{
    Ints ints(nullptr, "ints", false);
    Strings strings(nullptr, "strings", true);

    ints = {0, 0, 1};
    strings = std::vector<std::string>{"a", "b"};

    EXPECT_EQ(ints(), (std::vector<int>{0, 0, 1}));
    EXPECT_FALSE(ints.isRequired());
    EXPECT_EQ(strings(), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(strings.isRequired());
}

// Unlike a scalar reflector, which moves the value alone.
TEST(ReflectorArray, takesOverStateElementsAndFormWhenItIsAssignedOnPurpose)
{
    Ints const unsetPlain(nullptr, "source", false);
    Ints setPlain(nullptr, "source", false);
    setPlain = {1, 2};
    Ints const requiredEncoded(nullptr, "source", {3});

    for (Ints const* source : {&unsetPlain, static_cast<Ints const*>(&setPlain), &requiredEncoded}) {
        Ints unsetTarget(nullptr, "target", false);
        Ints requiredTarget(nullptr, "target", {7, 8, 9});
        for (Ints* target : {&unsetTarget, &requiredTarget}) {
            EXPECT_EQ(&(*target = *source), target);

            EXPECT_EQ(target->initialized(), source->initialized());
            EXPECT_EQ(target->isRequired(), source->isRequired());
            EXPECT_EQ(target->encoded(), source->encoded());
            EXPECT_EQ(target->name(), "target");
            if (source->initialized())
                EXPECT_EQ((*target)(), (*source)());
            else
                EXPECT_TRUE(target->edit().empty());
        }
    }
}

TEST(ReflectorArray, isNoLongerRequiredOnPurposeAfterAssignmentFromAnUnsetOne)
{
    Strings const source(nullptr, "source", false);
    Strings target(nullptr, "target", {"a"});

    target = source;

    EXPECT_FALSE(target.initialized());
    EXPECT_PRED2(identical, written(target), Element());
}

TEST(ReflectorArray, takesOverElementsThatAreThereWithoutAValue)
{
    Ints source(nullptr, "key", false);
    source.assign(object({{"key", objectForm(1, "BwAAAA==")}}));
    Ints target(nullptr, "key", true);

    target = source;

    EXPECT_FALSE(target.initialized());
    EXPECT_EQ(target.edit(), std::vector<int>{7});
}

TEST(ReflectorArray, isUnchangedByAssignmentFromItself)
{
    Ints ints(nullptr, "ints", {1, 2});
    ReflectorArray<Row> rows(nullptr, "rows", {Row("a", 1)});

    ints = std::as_const(ints);
    ints.assign(ints());
    rows = std::as_const(rows);
    rows.assign(rows());

    EXPECT_EQ(ints(), (std::vector<int>{1, 2}));
    EXPECT_TRUE(ints.encoded());
    EXPECT_TRUE(rows() == std::vector<Row>{Row("a", 1)});
}

// Not inlined: the compiler guesses that any array may be one of these, and then warns that a plain one is too small.
class RecordingArray : public Strings {
public:
    using Strings::ReflectorArray;

    [[gnu::noinline]] void assign(std::vector<std::string> const& values) override
    {
        calls += "values; ";
        if (refuse)
            throw std::runtime_error("refused");
        Strings::assign(values);
    }
    [[gnu::noinline]] void assign(Element const& source) override
    {
        calls += "element; ";
        Strings::assign(source);
    }

    std::string calls;
    bool refuse = false;
};

TEST(ReflectorArray, givesOverridesOfAssignWhatIsRead)
{
    RecordingArray reflector(nullptr, "key", false);

    reflector.copyFromMetaData(object({{"key", array({string("a")})}}));

    EXPECT_EQ(reflector.calls, "element; values; ");
    EXPECT_EQ(reflector(), std::vector<std::string>{"a"});
}

TEST(ReflectorArray, takesAnOverrideThatThrowsForACorruptArray)
{
    RecordingArray reflector(nullptr, "key", false);
    reflector.refuse = true;

    EXPECT_EQ(printedBy([&] { reflector.copyFromMetaData(object({{"key", array({string("a")})}})); }), corrupt("key"));

    EXPECT_FALSE(reflector.initialized());
}

TEST(ReflectorArray, staysAsItWasIfMemoryRunsOutWhileItTakesElements)
{
    std::string const text(100, 'x');
    Strings const source(nullptr, "source", {text, text});
    ReflectorArray<Row> const rowSource(nullptr, "source", {Row(text), Row(text)});
    Strings target(nullptr, "target", false);
    target = {"a", "b", "c"};
    ReflectorArray<Row> rowTarget(nullptr, "target", false);
    rowTarget = {Row("a"), Row("b"), Row("c")};

    auto const stringsAreWhole = [&] {
        EXPECT_FALSE(target.isRequired());
        EXPECT_EQ(target(), (std::vector<std::string>{"a", "b", "c"}));
    };
    auto const rowsAreWhole = [&] {
        EXPECT_FALSE(rowTarget.isRequired());
        EXPECT_TRUE(rowTarget() == (std::vector<Row>{Row("a"), Row("b"), Row("c")}));
    };
    auto const failures = failEachAllocationInTurn([&] { target = source; }, stringsAreWhole);
    auto const rowFailures = failEachAllocationInTurn([&] { rowTarget = rowSource; }, rowsAreWhole);

    EXPECT_GT(failures, 0u);
    EXPECT_GT(rowFailures, 0u);
    EXPECT_EQ(target(), source());
    EXPECT_TRUE(rowTarget() == rowSource());
}

struct BehindArray : Strings {
    using Strings::ReflectorArray;
    virtual void next() {}
};

TEST(ReflectorArray, keepsItsVirtualFunctionsInTheirPlacesBehindTheDestructor)
{
    using Values = std::vector<std::string>;

    EXPECT_EQ(slotOf(&Strings::copyToMetaData), 2);
    EXPECT_EQ(slotOf(&Strings::copyFromMetaData), 3);
    EXPECT_EQ(slotOf(static_cast<void (Strings::*)(Values const&)>(&Strings::assign)), 4);
    EXPECT_EQ(slotOf(static_cast<void (Strings::*)(Element const&)>(&Strings::assign)), 5);
    EXPECT_EQ(slotOf(&BehindArray::next), 6);
}

TEST(ReflectorArray, readsArraysHoweverTheyCameAbout)
{
    Array emptied = static_cast<Array const&>(array({integer(1)}));
    emptied.erase(emptied.begin());
    Array grown;  // at both ends, where it has room of its own for each
    std::vector<int> values;
    for (int i = 0; i < 100; ++i) {
        grown.insert(integer(i), i % 3 == 0 ? grown.begin() : grown.end());
        values.insert(i % 3 == 0 ? values.begin() : values.end(), i);
    }
    struct {
        Array stored;
        std::vector<int> values;
    } const cases[] = {{Array(), {}}, {emptied, {}}, {grown, values}};

    for (auto const& row : cases) {
        Ints numbers(nullptr, "numbers", {7});
        numbers.copyFromMetaData(object({{"numbers", Element(row.stored)}}));
        EXPECT_EQ(numbers(), row.values);
        numbers.copyFromMetaData(object({{"numbers", Element(Array(row.stored))}}));
        EXPECT_EQ(numbers(), row.values);
    }
}

}  // namespace
}  // namespace Zelm::MetaData
