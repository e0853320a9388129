#include "zelm/msgs/message.h"

#include "tests/metadata/elements.h"
#include "tests/msgs/messages.h"
#include "tests/support/child_process.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <iostream>
#include <stdexcept>
#include <thread>
#include <type_traits>

namespace Zelm::Msgs {
namespace {

using MetaData::Element;
using MetaData::Testing::array;
using MetaData::Testing::integer;
using MetaData::Testing::object;
using MetaData::Testing::string;
using Testing::kind;
using Zelm::Testing::runChild;
using Zelm::Testing::throwsText;

using Factory = Message::MsgFactory;

static_assert(!std::is_polymorphic_v<Factory>);
static_assert(!std::is_copy_constructible_v<Factory>);
static_assert(Factory::CtorConflict == nullptr);
static_assert(std::is_same_v<decltype(Factory::CtorAndType::ctor), Message* (*)(Element const&)>);

Element greetingOfKind(unsigned short category, unsigned short sub1, unsigned short sub2, unsigned short type)
{
    return object({{"MessageID", array({integer(category), integer(sub1), integer(sub2), integer(type)})},
                   {"text", string("hello")}});
}
Element const greetingForm = greetingOfKind(1, 2, 3, 4);

struct Greeting : Message {
    explicit Greeting(MetaData::Object const& object) : Message(object) { copyFromMetaData(Element(object)); }

    MetaData::Reflector<std::string, false, true> text{this, "text"};
};

Message* makeGreeting(Element const& source)
{
    return new Greeting(source.CastTo<MetaData::Object>());
}

Message* makePlain(Element const& source)
{
    return new Message(source.CastTo<MetaData::Object>());
}

Message* makeNothing(Element const&)
{
    return nullptr;
}

/// The factory of the process, left without entries.
struct MessageFactory : testing::Test {
    void TearDown() override
    {
        while (!factory.registry().empty())
            factory.deregisterMessage(factory.registry().begin()->first);
    }

    Factory& factory = Factory::Instance();
};

ZELM_CHILD(countsTheRegisteredMessages)
{
    std::cout << Message::getAllMessagesRegistry().size();
    return 0;
}

TEST_F(MessageFactory, hasNoEntriesAtFirst)
{
    EXPECT_EQ(runChild("countsTheRegisteredMessages").out, "0");
}

TEST_F(MessageFactory, isOneForTheProcess)
{
    factory.registerMessage(kind, makeGreeting, "Greeting");

    EXPECT_EQ(&Factory::Instance(), &factory);
    EXPECT_EQ(&Message::getAllMessagesRegistry(), &factory.registry());
    EXPECT_EQ(Message::getAllMessagesRegistry().size(), 1u);
}

TEST_F(MessageFactory, makesAnObjectOfTheRegisteredClassFromTheWholeForm)
{
    EXPECT_TRUE(factory.registerMessage(kind, makeGreeting, "Greeting"));

    std::shared_ptr<Message> const message = factory.create(greetingForm);

    auto const greeting = std::dynamic_pointer_cast<Greeting>(message);
    ASSERT_TRUE(greeting);
    EXPECT_EQ(greeting->text(), "hello");
    EXPECT_EQ(greeting->id().value(), kind);
    EXPECT_EQ(message.use_count(), 2);
}

TEST_F(MessageFactory, isReachedThroughTheMessageClass)
{
    factory.registerMessage(kind, makeGreeting, "Greeting");

    EXPECT_TRUE(std::dynamic_pointer_cast<Greeting>(Message::CreateFromMetaData(greetingForm)));
}

TEST_F(MessageFactory, picksTheFunctionByTheExactValue)
{
    factory.registerMessage(kind, makeGreeting, "Greeting");
    factory.registerMessage(kind + 1, makePlain, "Message");

    EXPECT_TRUE(std::dynamic_pointer_cast<Greeting>(factory.create(greetingForm)));
    EXPECT_FALSE(std::dynamic_pointer_cast<Greeting>(factory.create(greetingOfKind(1, 2, 3, 5))));
}

TEST_F(MessageFactory, takesAWildcardForANumberLikeAnyOther)
{
    factory.registerMessage(Identifier::toValue(1, 2, 3, 0xFFFF), makePlain, "wildcard");

    EXPECT_TRUE(factory.create(greetingOfKind(1, 2, 3, 0xFFFF)));
    EXPECT_ANY_THROW(factory.create(greetingForm));
    factory.deregisterMessage(Identifier::toValue(1, 2, 3, 0xFFFF));
    factory.registerMessage(kind, makePlain, "exact");
    EXPECT_ANY_THROW(factory.create(greetingOfKind(1, 2, 3, 0xFFFF)));
}

TEST_F(MessageFactory, handsOnTheNullPointerOfAFunction)
{
    factory.registerMessage(kind, makeNothing, "nothing");

    EXPECT_FALSE(factory.create(greetingForm));
}

TEST_F(MessageFactory, letsAFunctionsExceptionPass)
{
    factory.registerMessage(
        kind, [](Element const&) -> Message* { throw std::runtime_error("out of order"); }, "broken");

    EXPECT_THAT([&] { factory.create(greetingForm); }, throwsText<std::runtime_error>("out of order"));
}

// ------------------------------------------------------------------------------------------------------ registration

TEST_F(MessageFactory, takesTheSameFunctionTwiceWithoutAChange)
{
    EXPECT_TRUE(factory.registerMessage(kind, makeGreeting, "first"));
    EXPECT_FALSE(factory.registerMessage(kind, makeGreeting, "second"));

    EXPECT_TRUE(factory.create(greetingForm));
    EXPECT_EQ(factory.registry().at(kind).typeName, "first");
    EXPECT_EQ(factory.registry().at(kind).ctor, &makeGreeting);
}

TEST_F(MessageFactory, marksTwoFunctionsOfOneIdentifierAsAConflictForGoodOnPurpose)
{
    EXPECT_TRUE(factory.registerMessage(kind, makeGreeting, "first"));
    EXPECT_FALSE(factory.registerMessage(kind, makePlain, "second"));
    for (Factory::Ctor const ctor : {&makeGreeting, &makePlain, &makeNothing}) {
        EXPECT_FALSE(factory.registerMessage(kind, ctor, "third"));
        EXPECT_EQ(factory.registry().at(kind).ctor, Factory::CtorConflict);
        EXPECT_EQ(factory.registry().at(kind).typeName, "first");
    }
}

TEST_F(MessageFactory, takesAnIdentifierAnewAfterItsConflictWasRemoved)
{
    factory.registerMessage(kind, makeGreeting, "first");
    factory.registerMessage(kind, makePlain, "second");

    factory.deregisterMessage(kind);

    EXPECT_TRUE(factory.registerMessage(kind, makeGreeting, "again"));
    EXPECT_TRUE(factory.create(greetingForm));
    EXPECT_EQ(factory.registry().at(kind).typeName, "again");
}

TEST_F(MessageFactory, doesNothingWhenAnUnknownIdentifierIsRemoved)
{
    factory.registerMessage(kind, makeGreeting, "Greeting");

    factory.deregisterMessage(kind + 1);

    EXPECT_EQ(factory.registry().size(), 1u);
}

TEST_F(MessageFactory, takesANullFunctionForAConflict)
{
    EXPECT_TRUE(factory.registerMessage(kind, nullptr, "none"));
    EXPECT_FALSE(factory.registerMessage(kind, nullptr, "none"));
    EXPECT_FALSE(factory.registerMessage(kind, makeGreeting, "Greeting"));

    EXPECT_EQ(factory.registry().at(kind).typeName, "none");
    EXPECT_THROW(factory.create(greetingForm), Exception::InvalidOperation);
}

TEST_F(MessageFactory, showsItsEntriesInTheOrderOfTheirValues)
{
    factory.registerMessage(~0ul, makePlain, "last");
    factory.registerMessage(0, makePlain, "first");
    factory.registerMessage(kind, makePlain, "conflict");
    factory.registerMessage(kind, makeGreeting, "not shown");

    std::vector<std::string> shown;
    for (auto const& [id, entry] : Message::getAllMessagesRegistry())
        shown.push_back(entry.typeName + (entry.ctor == Factory::CtorConflict ? "!" : ""));

    EXPECT_EQ(shown, (std::vector<std::string>{"first", "conflict!", "last"}));
}

// ---------------------------------------------------------------------------------------------------------- failures

TEST_F(MessageFactory, reportsAnIdentifierThatNobodyRegistered)
{
    factory.registerMessage(kind + 1, makeGreeting, "Greeting");

    EXPECT_THAT([&] { factory.create(greetingForm); },
                throwsText<Exception::InvalidParameter>(
                    "Invalid Parameter: Can't construct class for message ID: [\n\t1,\n\t2,\n\t3,\n\t4\n]"));
}

TEST_F(MessageFactory, reportsTheIdentifierAsItStandsInTheForm)
{
    Element const source =
        object({{"MessageID", array({integer(-1), integer(2), integer(3), integer(4), string("x")})}});

    EXPECT_THAT([&] { factory.create(source); },
                throwsText<Exception::InvalidParameter>("Invalid Parameter: Can't construct class for message ID: "
                                                        "[\n\t-1,\n\t2,\n\t3,\n\t4,\n\t\"x\"\n]"));
}

TEST_F(MessageFactory, reportsAConflict)
{
    factory.registerMessage(kind, makeGreeting, "first");
    factory.registerMessage(kind, makePlain, "second");

    EXPECT_THAT([&] { factory.create(greetingForm); },
                throwsText<Exception::InvalidOperation>(
                    "Conflicting constructors registered for message ID: [\n\t1,\n\t2,\n\t3,\n\t4\n]"));
    EXPECT_EQ(factory.registry().size(), 1u);
}

TEST_F(MessageFactory, reportsAFormWithoutAUsableIdentifier)
{
    EXPECT_THAT([&] { factory.create(array({integer(1)})); },
                throwsText<Exception::InvalidOperation>("Looking for MessageID in Element which isn't an Object"));
    EXPECT_THAT([&] { factory.create(object({})); },
                throwsText<Exception::InvalidParameter>("Invalid Parameter: Object member not found: MessageID"));
    EXPECT_THAT(
        [&] {
            factory.create(object({{"MessageID", integer(1)}}));
        },
        throwsText<Exception::InvalidOperation>("Attempting to index into Element which isn't an Array"));
    EXPECT_THAT(
        [&] {
            factory.create(object({{"MessageID", array({integer(1)})}}));
        },
        throwsText<Exception::InvalidParameter>("Invalid Parameter: Array out of bounds"));
    EXPECT_THAT(
        [&] {
            factory.create(object({{"MessageID", array({string("1")})}}));
        },
        throwsText<MetaData::Exception>("Bad cast: Can't convert MetaData String to Integer"));
}

// ----------------------------------------------------------------------------------------------------------- threads

TEST_F(MessageFactory, makesMessagesOnManyThreadsOnceRegistrationIsOver)
{
    factory.registerMessage(kind, makeGreeting, "Greeting");
    std::atomic<int> made{0};

    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                if (std::dynamic_pointer_cast<Greeting>(Message::CreateFromMetaData(greetingForm)))
                    ++made;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(made, 200);
}

}  // namespace
}  // namespace Zelm::Msgs
