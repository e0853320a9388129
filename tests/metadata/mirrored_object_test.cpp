#include "zelm/metadata/mirrored_object.h"

#include "tests/metadata/elements.h"
#include "tests/support/printed_by.h"
#include "tests/support/throws_text.h"
#include "tests/support/vtable_slot.h"
#include "zelm/metadata/reflector.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::identical;
using Testing::integer;
using Testing::object;
using Testing::string;
using Zelm::Testing::slotOf;
using Zelm::Testing::throwsText;

using OptionalInt = Reflector<int, false, true>;

char const* const readingFailed = "Provide better error handling please.\n";

/// A member whose reading and writing a test decides.
class Probe : public ReflectorBase {
public:
    Probe(MirroredObject* parent, std::string const& name) : ReflectorBase(parent, name, false) {}

    void copyToMetaData(Element& target) const override
    {
        if (onWrite)
            onWrite(target);
    }
    void copyFromMetaData(Element const& source) override
    {
        if (onRead)
            onRead(source);
    }

    std::function<void(Element&)> onWrite;
    std::function<void(Element const&)> onRead;
};

struct Point : MirroredObject {
    Point() = default;
    Point(Point const& other) : MirroredObject() { *this = other; }
    Point& operator=(Point const& other) = default;

    Reflector<int, false, true> x{this, "x", 0};
    Reflector<int, false, true> y{this, "y"};
};

std::string printedByReading(MirroredObject& target, Element const& source)
{
    return Zelm::Testing::printedBy([&] { target.copyFromMetaData(source); });
}

// ------------------------------------------------------------------------------------------------------- registration

TEST(MirroredObject, knowsTheMembersThatWereConstructedWithItByTheirExactNames)
{
    Point const point;

    EXPECT_TRUE(point.hasMember("x"));
    EXPECT_TRUE(point.hasMember("y"));
    EXPECT_FALSE(point.hasMember("X"));
    EXPECT_FALSE(point.hasMember("xy"));
    EXPECT_FALSE(point.hasMember(""));
}

TEST(MirroredObject, cantBeConstructedWithTwoMembersOfOneName)
{
    struct Twice : MirroredObject {
        Reflector<int, false, true> first{this, "x"};
        Reflector<std::string, false, true> second{this, "x", "text"};
    };

    EXPECT_THAT([] { Twice(); },
                throwsText<Zelm::Exception::InvalidOperation>("Object already contains an element with name: x"));
}

TEST(MirroredObject, keepsItsListWhenItRefusesAMember)
{
    Point point;
    point.x = 1;
    OptionalInt stranger(nullptr, "x");
    stranger = 2;

    EXPECT_THAT([&] { point.addReflection(&stranger); },
                throwsText<Zelm::Exception::InvalidOperation>("Object already contains an element with name: x"));

    Element written;
    point.copyToMetaData(written);
    EXPECT_PRED2(identical, written, object({{"x", integer(1)}}));
}

TEST(MirroredObject, isUnchangedByANullMember)
{
    Point point;

    point.addReflection(nullptr);

    Element written;
    point.copyToMetaData(written);
    EXPECT_PRED2(identical, written, object({{"x", integer(0)}}));
    EXPECT_EQ(printedByReading(point, written), "");
}

TEST(MirroredObject, takesAMemberThatIsntItsOwnField)
{
    OptionalInt stranger(nullptr, "z");
    stranger = 3;
    Point point;

    point.addReflection(&stranger);

    EXPECT_TRUE(point.hasMember("z"));
    Element written;
    point.copyToMetaData(written);
    EXPECT_PRED2(identical, written, object({{"x", integer(0)}, {"z", integer(3)}}));
}

TEST(MirroredObject, requiresAMemberOnlyOnceItHasAValue)
{
    Point point;

    EXPECT_FALSE(point.requireMember("y"));
    EXPECT_FALSE(point.y.initialized());

    point.y = 7;
    EXPECT_TRUE(point.requireMember("y"));
    point.y.uninit();
    EXPECT_TRUE(point.y.isRequired());
    EXPECT_EQ(point.y(), 7);
}

TEST(MirroredObject, cantRequireAMemberThatItDoesntHave)
{
    Point point;

    EXPECT_FALSE(point.requireMember("z"));
}

// ------------------------------------------------------------------------------------------------------------ writing

TEST(MirroredObject, writesItsMembersInTheOrderOfTheirDeclaration)
{
    MirroredObject parent;
    Probe b(&parent, "b"), a(&parent, "a"), c(&parent, "c");
    std::string order;
    for (Probe* probe : {&a, &b, &c})
        probe->onWrite = [&order, probe](Element&) { order += probe->name(); };

    Element target;
    parent.copyToMetaData(target);

    EXPECT_EQ(order, "bac");
}

TEST(MirroredObject, handsTheSameTargetToAllMembersAndClearsNothing)
{
    Point point;
    point.x = 1;
    Element target = object({{"other", string("kept")}, {"x", string("old")}, {"y", string("kept too")}});

    point.copyToMetaData(target);

    EXPECT_PRED2(identical, target, object({{"other", string("kept")}, {"x", integer(1)}, {"y", string("kept too")}}));
}

TEST(MirroredObject, leavesTheTargetAloneIfNoMemberHasAValue)
{
    struct Optional : MirroredObject {
        Reflector<int, false, true> x{this, "x"};
    } const nothingSet;

    for (Element const& before : {Element(), string("kept"), object({{"x", integer(1)}})}) {
        Element target = before;
        nothingSet.copyToMetaData(target);
        EXPECT_PRED2(identical, target, before);
    }
}

TEST(MirroredObject, turnsATargetOfAnotherKindIntoAnObjectAsSoonAsAMemberWrites)
{
    Element target = string("gone");

    Point().copyToMetaData(target);

    EXPECT_PRED2(identical, target, object({{"x", integer(0)}}));
}

TEST(MirroredObject, passesOnWhatAMemberThrowsWhileItWrites)
{
    MirroredObject parent;
    Probe first(&parent, "first"), second(&parent, "second");
    bool secondWrote = false;
    first.onWrite = [](Element&) { throw 42; };
    second.onWrite = [&](Element&) { secondWrote = true; };

    Element target;

    EXPECT_THROW(parent.copyToMetaData(target), int);
    EXPECT_FALSE(secondWrote);
}

// ------------------------------------------------------------------------------------------------------------ reading

TEST(MirroredObject, readsItsMembersAndIgnoresKeysThatNoneNames)
{
    Point point;

    std::string const printed =
        printedByReading(point, object({{"x", integer(1)}, {"y", integer(2)}, {"unknown", string("ignored")}}));

    EXPECT_EQ(point.x(), 1);
    EXPECT_EQ(point.y(), 2);
    EXPECT_EQ(printed, "");
    EXPECT_FALSE(point.hasMember("unknown"));
}

TEST(MirroredObject, printsALineForAMemberThatThrowsAndGoesOnWithTheNext)
{
    MirroredObject parent;
    OptionalInt before(&parent, "before");
    Probe text(&parent, "text"), number(&parent, "number"), exception(&parent, "exception");
    OptionalInt after(&parent, "after");
    text.onRead = [](Element const&) { throw "text"; };
    number.onRead = [](Element const&) { throw 42; };
    exception.onRead = [](Element const&) { throw Exception("text"); };

    std::string const printed = printedByReading(parent, object({{"before", integer(1)}, {"after", integer(2)}}));

    EXPECT_EQ(printed, std::string(readingFailed) + readingFailed + readingFailed);
    EXPECT_EQ(before(), 1);
    EXPECT_EQ(after(), 2);
}

TEST(MirroredObject, printsNothingForScalarMembersThatCantBeRead)
{
    for (Element const& source : {Element(), array({integer(1)}), string("x"), object({{"x", string("1")}})}) {
        Point point;
        point.x = 1;
        point.y = 2;

        EXPECT_EQ(printedByReading(point, source), "");

        EXPECT_EQ(point.x(), 0);
        EXPECT_FALSE(point.y.initialized());
    }
}

TEST(MirroredObject, doesntRetypeASourceThatIsNotConst)
{
    Point point;
    Element source = string("kept");

    point.copyFromMetaData(source);

    EXPECT_PRED2(identical, source, string("kept"));
}

// ------------------------------------------------------------------------------------------------------------ copying

TEST(MirroredObject, keepsItsOwnListWhenItIsAssigned)
{
    Point target;
    Element written;
    {
        Point source;
        source.x = 1;
        source.y = 2;

        target = source;

        source.x = 8;
        source.y = 9;
    }

    target.copyToMetaData(written);
    EXPECT_PRED2(identical, written, object({{"x", integer(1)}, {"y", integer(2)}}));
    target.copyFromMetaData(object({{"x", integer(5)}}));
    EXPECT_EQ(target.x(), 5);
    EXPECT_FALSE(target.y.initialized());
}

TEST(MirroredObject, losesAnOptionalValueWhenItIsAssignedFromOneWithout)
{
    Point target;
    target.x = 1;
    target.y = 2;

    target = Point();

    EXPECT_EQ(target.x(), 0);
    EXPECT_FALSE(target.y.initialized());
}

TEST(MirroredObject, hasAListOfItsOwnAfterACopyByAClassThatSaysHow)
{
    auto source = std::make_unique<Point>();
    source->x = 1;

    Point copy(*source);
    source.reset();

    copy.y = 2;
    Element written;
    copy.copyToMetaData(written);
    EXPECT_PRED2(identical, written, object({{"x", integer(1)}, {"y", integer(2)}}));
}

// A copied list would lead into the source, and a copied reflector would be on no list.
TEST(MirroredObject, hasNoCopyConstructorAndNeitherHaveReflectors)
{
    struct WithoutCopyConstructor : MirroredObject {
        Reflector<int, false, true> x{this, "x"};
    };

    EXPECT_FALSE(std::is_copy_constructible_v<MirroredObject>);
    EXPECT_FALSE(std::is_copy_constructible_v<WithoutCopyConstructor>);
    EXPECT_FALSE(std::is_copy_constructible_v<OptionalInt>);
    EXPECT_TRUE(std::is_copy_assignable_v<WithoutCopyConstructor>);
}

TEST(MirroredObject, doesntTouchItsReflectorsWhenItEnds)
{
    auto parent = std::make_unique<MirroredObject>();
    OptionalInt longer(parent.get(), "longer");
    auto shorter = std::make_unique<OptionalInt>(parent.get(), "shorter");
    longer = 1;

    shorter.reset();
    parent.reset();

    EXPECT_EQ(longer(), 1);
}

// ----------------------------------------------------------------------------------- the interface and its conversions

TEST(PartiallySerializableInterface, isReadAndWrittenByTheTypedConversions)
{
    Point point;
    PartiallySerializableInterface& object = point;
    Element element = Testing::object({{"x", integer(1)}, {"other", string("kept")}});

    GetAs<PartiallySerializableInterface>(element, object);
    point.x = point.x() + 1;
    SetAs<PartiallySerializableInterface>(object, element);

    EXPECT_PRED2(identical, element, Testing::object({{"x", integer(2)}, {"other", string("kept")}}));
}

TEST(PartiallySerializableInterface, conversionsPassOnWhatTheObjectThrows)
{
    Probe probe(nullptr, "probe");
    probe.onRead = [](Element const&) { throw 1; };
    probe.onWrite = [](Element&) { throw 'c'; };
    Element element;

    EXPECT_THROW(GetAs<PartiallySerializableInterface>(element, probe), int);
    EXPECT_THROW(SetAs<PartiallySerializableInterface>(probe, element), char);
}

TEST(PartiallySerializableInterface, isThereOnceInAClassThatIsBothObjectAndReflector)
{
    class Both : public MirroredObject, public ReflectorBase {
    public:
        Both() : ReflectorBase(nullptr, "both", false) {}
        void copyToMetaData(Element& target) const override { MirroredObject::copyToMetaData(target[name()]); }
        void copyFromMetaData(Element const& source) override { MirroredObject::copyFromMetaData(source[name()]); }

        Reflector<int, false, true> x{this, "x", 1};
    } both;
    Element element;

    SetAs<PartiallySerializableInterface>(both, element);

    EXPECT_PRED2(identical, element, object({{"both", object({{"x", integer(1)}})}}));
}

// A function that a class adds stands behind all those that it has, and so tells how many these are.
struct BehindInterface : PartiallySerializableInterface {
    virtual void next() = 0;
};
struct BehindObject : MirroredObject {
    virtual void next() = 0;
};
struct BehindReflectorBase : ReflectorBase {
    virtual void next() = 0;
};

TEST(PartiallySerializableInterface, keepsItsVirtualFunctionsInTheirPlacesBehindTheDestructor)
{
    EXPECT_EQ(slotOf(&PartiallySerializableInterface::copyToMetaData), 2);
    EXPECT_EQ(slotOf(&PartiallySerializableInterface::copyFromMetaData), 3);
    EXPECT_EQ(slotOf(&BehindInterface::next), 4);
}

TEST(MirroredObject, keepsItsVirtualFunctionsInTheirPlacesBehindTheDestructor)
{
    EXPECT_EQ(slotOf(&MirroredObject::copyToMetaData), 2);
    EXPECT_EQ(slotOf(&MirroredObject::copyFromMetaData), 3);
    EXPECT_EQ(slotOf(&BehindObject::next), 4);
}

// ------------------------------------------------------------------------------------------------------ ReflectorBase

/// The three states, each with a reflector that is in it.
struct InEveryState {
    OptionalInt uninitialized{nullptr, "uninitialized"};
    OptionalInt initialized{nullptr, "initialized"};
    OptionalInt required{nullptr, "required", 1};

    InEveryState() { initialized = 2; }
};

enum class State { Uninitialized, Initialized, Required };

State stateOf(ReflectorBase const& reflector)
{
    if (reflector.isRequired())
        return State::Required;
    return reflector.initialized() ? State::Initialized : State::Uninitialized;
}

TEST(ReflectorBase, startsRequiredOrWithoutAValue)
{
    InEveryState const all;

    EXPECT_EQ(stateOf(all.uninitialized), State::Uninitialized);
    EXPECT_EQ(stateOf(all.initialized), State::Initialized);
    EXPECT_EQ(stateOf(all.required), State::Required);
    EXPECT_TRUE(all.required.initialized());
    EXPECT_FALSE(all.initialized.isRequired());
}

TEST(ReflectorBase, hasAValueAfterInitAndStaysRequired)
{
    InEveryState all;

    for (ReflectorBase* reflector : {&all.uninitialized, &all.initialized, &all.required})
        reflector->init();

    EXPECT_EQ(stateOf(all.uninitialized), State::Initialized);
    EXPECT_EQ(stateOf(all.initialized), State::Initialized);
    EXPECT_EQ(stateOf(all.required), State::Required);
}

TEST(ReflectorBase, hasNoValueAfterUninitUnlessItIsRequired)
{
    InEveryState all;

    for (ReflectorBase* reflector : {&all.uninitialized, &all.initialized, &all.required})
        reflector->uninit();

    EXPECT_EQ(stateOf(all.uninitialized), State::Uninitialized);
    EXPECT_EQ(stateOf(all.initialized), State::Uninitialized);
    EXPECT_EQ(stateOf(all.required), State::Required);
}

TEST(ReflectorBase, canBeMadeRequiredOnlyWithAValue)
{
    InEveryState all;

    EXPECT_FALSE(all.uninitialized.makeRequired());
    EXPECT_TRUE(all.initialized.makeRequired());
    EXPECT_TRUE(all.required.makeRequired());

    EXPECT_EQ(stateOf(all.uninitialized), State::Uninitialized);
    EXPECT_EQ(stateOf(all.initialized), State::Required);
    EXPECT_EQ(stateOf(all.required), State::Required);
}

TEST(ReflectorBase, namesItselfAndTheContextWhenItHasNoValue)
{
    InEveryState const all;

    EXPECT_THAT([&] { all.uninitialized.throwIfUninited("some place"); },
                throwsText<Zelm::Exception::InvalidOperation>("> uninitialized < not initialized in some place"));
    EXPECT_NO_THROW(all.initialized.throwIfUninited("some place"));
    EXPECT_NO_THROW(all.required.throwIfUninited("some place"));
}

// The scalar reflectors' own operator= goes another way.
TEST(ReflectorBase, copiesTheStateAndNothingElseWhenItIsAssignedOnPurpose)
{
    InEveryState const sources;
    for (OptionalInt const* source : {&sources.uninitialized, &sources.initialized, &sources.required}) {
        InEveryState targets;
        for (OptionalInt* target : {&targets.uninitialized, &targets.initialized, &targets.required}) {
            std::string const name = target->name();
            ReflectorBase& base = *target;

            EXPECT_EQ(&(base = *source), &base);

            EXPECT_EQ(stateOf(*target), stateOf(*source));
            EXPECT_EQ(target->name(), name);
        }
        targets.required.init();  // so that the value can be looked at
        EXPECT_EQ(targets.required(), 1);
    }
}

TEST(ReflectorBase, addsNoVirtualFunctionToThoseOfTheInterface)
{
    EXPECT_TRUE(std::is_abstract_v<ReflectorBase>);
    EXPECT_EQ(slotOf(&ReflectorBase::copyToMetaData), 2);
    EXPECT_EQ(slotOf(&ReflectorBase::copyFromMetaData), 3);
    EXPECT_EQ(slotOf(&BehindReflectorBase::next), 4);
}

TEST(ReflectorBase, equalsAnotherOnPurposeIfBothHaveAValueOrBothHaveNone)
{
    InEveryState const all;
    Reflector<std::string, false, true> const otherType(nullptr, "text", "other");
    OptionalInt const otherName(nullptr, "other");
    ReflectorBase const& uninitialized = all.uninitialized;
    ReflectorBase const& initialized = all.initialized;

    EXPECT_TRUE(initialized == all.required);
    EXPECT_TRUE(initialized == otherType);
    EXPECT_TRUE(uninitialized == otherName);
    EXPECT_FALSE(uninitialized == initialized);
    EXPECT_FALSE(uninitialized == all.required);
    EXPECT_FALSE(initialized != all.required);
    EXPECT_TRUE(uninitialized != initialized);
}

}  // namespace
}  // namespace Zelm::MetaData
