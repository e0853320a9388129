// Messages out of any trees: the first one makes a message, and each one behind it is something that befalls it. An
// Object is read, ["name", value] sets an extended field, "SenderID" or another text an address through its name, an
// Integer or a Number the sender, and null looks at the destination by write access. Each time the message says and
// writes what a model says that spells out the rules, and the factory, an identifier and an address do with the tree
// what the rules say. In the end the message is copied, compared, printed and sent through JSON text.
#include "zelm/msgs/message.h"

#include "fuzz/msgs/message_parts.h"
#include "fuzz/msgs/plain_message.h"
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/json_losses.h"
#include "fuzz/support/outcome.h"
#include "fuzz/support/trees.h"
#include "zelm/core/exceptions.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/writer_json.h"

#include <memory>
#include <optional>
#include <sstream>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;
using namespace Zelm::Msgs;

namespace {

// ------------------------------------------------------------------------------------------------------------ messages

constexpr auto baseId = Identifier::toValue(1, 2, 3, 4);
constexpr auto derivedId = Identifier::toValue(1, 2, 3, 5);

class Measured : public Message {
public:
    explicit Measured(unsigned long id, PlainAddress const& sender = {}) : Message(id, sender, {}) {}
    explicit Measured(Object const& form) : Message(form) { copyFromMetaData(form); }

    Reflector<double, false, true> celsius{this, "Celsius"};
    Reflector<std::string, false, true> data{this, "Data"};
};

/// Writes the members of an Object each by itself, and anything else as a whole.
struct Writes : PartiallySerializableInterface {
    explicit Writes(Element writtenValue) : value(std::move(writtenValue)) {}
    void copyToMetaData(Element& target) const override
    {
        if (value.GetElementType() != ElementType::Object) {
            target = value;
            return;
        }
        for (auto const& member : value.CastTo<Object>())
            target[member.name()] = member.element();
    }
    void copyFromMetaData(Element const&) override {}
    Element value;
};

Element formOf(Message const& message)
{
    Element form;
    message.copyToMetaData(form);
    return form;
}

Exts::SenderId senderIdOf(PlainAddress const& parts)
{
    Exts::SenderId id{};
    id.parts() = parts;
    return id;
}

// ----------------------------------------------------------------------------------------------------------- comparing

bool looksLikeUuid(std::string const& text)
{
    if (text.size() != 36)
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const isDashPlace = i == 8 || i == 13 || i == 18 || i == 23;
        if (isDashPlace ? text[i] != '-' : std::string_view("0123456789abcdef").find(text[i]) == std::string_view::npos)
            return false;
    }
    return true;
}

void takeUuid(Message const& message, PlainMessage& model)
{
    if (!model.needsUuid)
        return;
    check(looksLikeUuid(message.msgUUID()), "a message that needs a UUID gets one", message.msgUUID());
    model.uuid.value = string(message.msgUUID());
    model.needsUuid = false;
}

void checkAddress(bool isSet, Exts::SenderId const& address, PlainArray const& model)
{
    check(isSet == model.set, "an address is set where the model says so", model.name);
    check(address == senderIdOf(model.set ? PlainMessage::partsOf(model) : PlainAddress()),
          "an address is what the model says", model.name);
}

void checkName(Message const& message, PlainMessage const& model, std::string const& name)
{
    check(message.validExtFieldName(name) == model.isValidName(name), "names are valid as the model says", name);
    check(message.hasExtendedField(name) == model.hasExtendedField(name), "fields are there as the model says", name);
    if (auto const* const expected = memberOf(model.extendedFields, name))
        checkSame(detailsOf(message.extendedField(name)), detailsOf(*expected),
                  "an extended field is what the model says");
}

/// Not part of checkName, as exceptions take more time than all the rest.
void checkMissingName(Message const& message, PlainMessage const& model, std::string const& name)
{
    if (!memberOf(model.extendedFields, name))
        checkSame(outcomeOf([&] { message.extendedField(name); }),
                  outcomeOf([&] { throw Zelm::Exception::InvalidParameter("Object member not found: " + name); }),
                  "an extended field that isn't there is told by name");
}

constexpr char const* names[] = {"SenderID", "DestID", "MessageID", "MsgUUID", "Data", "Celsius", "", "x"};

/// `target` is written over.
void checkMessage(Message const& message, PlainMessage& model, Element target)
{
    takeUuid(message, model);
    message.copyToMetaData(target);
    checkSame(detailsOf(target), detailsOf(model.form()), "a message is written as the model says");
    check(message.id().value() == model.id, "a message keeps its identifier");
    checkAddress(hasSenderID(message), getSenderID(message), model.sender);
    checkAddress(hasDestID(message), getDestID(message), model.dest);
    for (auto const* const name : names)
        checkName(message, model, name);
    for (auto const& member : target.CastTo<Object>())
        checkName(message, model, member.name());
}

// --------------------------------------------------------------------------------------------------------- making them

using Class = PlainMessage::Class;

std::unique_ptr<Message> messageOf(Class messageClass, Object const& form)
{
    return messageClass == Class::base ? std::make_unique<Message>(form) : std::make_unique<Measured>(form);
}

std::optional<PlainMessage> plainMessageOf(Class messageClass, Element const& form)
{
    PlainMessage base(Class::base, plainIdentifierIn(form));
    base.read(form);  // prints
    if (messageClass == Class::base)
        return base;
    PlainMessage derived(Class::derived, base.id);
    derived.extendedFields = base.extendedFields;
    // What the base class read; the members that aren't its own are read the second time only.
    derived.uuid.value = base.uuid.value;
    derived.needsUuid = base.needsUuid;
    PlainMessage::assign(derived.sender, PlainMessage::partsOf(base.sender));
    PlainMessage::assign(derived.dest, PlainMessage::partsOf(base.dest));
    derived.sender.set = base.sender.set;
    derived.dest.set = base.dest.set;
    derived.read(form);
    return derived;
}

struct Made {
    std::unique_ptr<Message> message;
    std::optional<PlainMessage> model;
};

/// Both, or none if the form makes no message. The form is an Object.
Made made(Class messageClass, Element const& form)
{
    Made result;
    auto const outcome = outcomeOf([&] { result.message = messageOf(messageClass, form.CastTo<Object>()); });
    auto const plainOutcome = outcomeOf([&] { result.model.emplace(*plainMessageOf(messageClass, form)); });
    checkSame(outcome, plainOutcome, "making a message of a form ends as the model says");
    if (result.message)
        checkMessage(*result.message, *result.model, Element());
    return result;
}

/// Of a class's own identifier, from "a", "b" to nobody.
Made fresh(Class messageClass)
{
    PlainAddress const sender{"a", "b"};
    Made result;
    if (messageClass == Class::base)
        result.message = std::make_unique<Message>(baseId, sender, PlainAddress());
    else
        result.message = std::make_unique<Measured>(derivedId, sender);
    result.model.emplace(messageClass, result.message->id().value());
    PlainMessage::assign(result.model->sender, sender);
    checkMessage(*result.message, *result.model, Element());
    return result;
}

// --------------------------------------------------------------------------------------------------------- the factory

constexpr auto conflictId = Identifier::toValue(1, 2, 3, 6);
constexpr auto nothingId = Identifier::toValue(1, 2, 3, 7);

Message* makeBase(Element const& source)
{
    return new Message(source.CastTo<Object>());
}
Message* makeDerived(Element const& source)
{
    return new Measured(source.CastTo<Object>());
}
Message* makeNothing(Element const&)
{
    return nullptr;
}

bool registerClasses()
{
    auto& factory = Message::MsgFactory::Instance();
    return factory.registerMessage(baseId, makeBase, "base") &&
           factory.registerMessage(derivedId, makeDerived, "derived") &&
           factory.registerMessage(nothingId, makeNothing, "nothing") &&
           factory.registerMessage(conflictId, makeBase, "first") &&
           !factory.registerMessage(conflictId, makeDerived, "second");
}

void checkFactory(Element const& form)
{
    std::shared_ptr<Message> message;
    auto const outcome = outcomeOf([&] { message = Message::CreateFromMetaData(form); });
    std::optional<PlainMessage> model;
    auto const plainOutcome = outcomeOf([&] {
        auto const id = plainIdentifierIn(form);
        if (id == baseId || id == derivedId) {
            model.emplace(*plainMessageOf(id == baseId ? Class::base : Class::derived, form));
        } else if (id != nothingId) {
            std::ostringstream json;
            WriterJson::Write(*memberOf(form, "MessageID"), json, true);
            if (id == conflictId)
                throw Zelm::Exception::InvalidOperation("Conflicting constructors registered for message ID: " +
                                                        json.str());
            throw Zelm::Exception::InvalidParameter("Can't construct class for message ID: " + json.str());
        }
    });
    checkSame(outcome, plainOutcome, "the factory ends as the model says");
    check((message != nullptr) == model.has_value(), "the factory makes a message where there is a class for it");
    if (message)
        checkMessage(*message, *model, Element());
}

// ----------------------------------------------------------------------------------------------------- what befalls it

/// Does the same to both, with the tree that says what.
void change(Message& message, PlainMessage& model, Element const& tree)
{
    std::string outcome;
    std::string plainOutcome;
    switch (tree.GetElementType()) {
    case ElementType::Array: {
        Element const name = tree.CastTo<Array>().empty() ? Element() : tree[0ul];
        std::string const text = name.GetElementType() == ElementType::String ? name.asString() : "Data";
        Element const value = tree.CastTo<Array>().size() < 2 ? Element() : tree[1ul];
        outcome = outcomeOf([&] { message.setExtendedField(text, Writes(value)); });
        plainOutcome = outcomeOf([&] { model.setExtendedField(text, value); });
        break;
    }
    case ElementType::String: {
        PlainAddress const parts{"named", tree.asString()};
        outcome = outcomeOf([&] { message.setExtendedField(tree.asString(), senderIdOf(parts)); });
        plainOutcome = outcomeOf([&] { model.setExtendedField(tree.asString(), parts); });
        break;
    }
    case ElementType::Number:
    case ElementType::Integer: {
        PlainAddress const parts(static_cast<unsigned long>(tree.asInt64()) % 4, "part");
        setSenderID(message, senderIdOf(parts));
        PlainMessage::assign(model.sender, parts);
        break;
    }
    case ElementType::Null:
        message.destID();
        model.dest.init();
        break;
    default:
        outcome = outcomeOf([&] { message.copyFromMetaData(tree); });
        plainOutcome = outcomeOf([&] { model.read(tree); });
    }
    checkSame(outcome, plainOutcome, "what befalls a message ends as the model says");
    checkMessage(message, model, tree);
}

// ------------------------------------------------------------------------------------------------------------- its end

void checkCopy(Message const& message, PlainMessage const& model)
{
    Message const copy(message);
    PlainMessage plainCopy(Class::base, model.id);
    plainCopy.sender.values = model.sender.values;
    plainCopy.sender.set = model.sender.set;
    plainCopy.dest.values = model.dest.values;
    plainCopy.dest.set = model.dest.set;
    checkMessage(copy, plainCopy, Element());
    Message const& itself = message;
    check(copy == message && message == copy && message == itself, "a copy equals its source");
    check(copy.msgUUID() != message.msgUUID(), "a copy has a UUID of its own");

    Message assigned(0);
    assigned = message;
    Element form = formOf(message);
    Element assignedForm = formOf(assigned);
    for (auto const* const derivedMember : {"Celsius", "Data"}) {  // a Message has none of these itself
        form[derivedMember] = Element();
        assignedForm[derivedMember] = Element();
    }
    checkSame(detailsOf(assignedForm), detailsOf(form), "an assignment takes over all that a Message has");
}

void checkEquality(Message const& a, PlainMessage const& plainA, Message const& b, PlainMessage const& plainB)
{
    auto const equal = [](PlainArray const& x, PlainArray const& y) {
        return x.set == y.set && (!x.set || PlainMessage::partsOf(x) == PlainMessage::partsOf(y));
    };
    bool const expected =
        plainA.id == plainB.id && equal(plainA.sender, plainB.sender) && equal(plainA.dest, plainB.dest);
    check((a == b) == expected && (b == a) == expected && (a != b) != expected, "messages are equal as the rules say");
}

void checkText(Class messageClass, Message const& message)
{
    Element const form = formOf(message);
    std::ostringstream json;
    WriterJson::Write(form, json, true);
    checkSame(printedBy(std::cout, [&] { printMessage(message); }), json.str() + '\n', "a message prints its form");

    JsonLosses const losses = lossesInJson(form);
    if (losses.notANumber)
        return;
    std::istringstream stream(json.str());
    Element read;
    ReaderJson::Read(read, stream);
    checkSame(detailsOf(read), detailsOf(withoutIntegers(form)), "the form comes back from its JSON text");
    Made const again = made(messageClass, read);
    check(again.message != nullptr, "a message comes back from its JSON text");
    if (hasSenderID(message) && hasDestID(message))
        check(*again.message == message, "a message equals what comes back from its JSON text");
    check(again.message->msgUUID() == message.msgUUID(), "a message keeps its UUID through JSON text");
    if (!losses.controlCharacters)
        check(made(messageClass, Json::jsonStringtoMetaData(json.str())).message != nullptr,
              "a message comes back from its JSON text by the fast path");
}

void checkParts(Element const& tree)
{
    checkIdentifier(tree);
    if (auto const* const id = memberOf(tree, "MessageID"))
        checkIdentifier(*id);
    if (tree.GetElementType() == ElementType::Object)
        checkAddressIn(tree.CastTo<Object>());
}

void checkLife(Input& input)
{
    Class const messageClass = input.choice(2) == 0 ? Class::base : Class::derived;
    TreeReader trees(input.rest());
    Element const first = trees.next();
    checkParts(first);
    checkFactory(first);
    Made life = first.GetElementType() == ElementType::Object ? made(messageClass, first) : fresh(messageClass);
    if (!life.message)
        return;
    while (trees.hasNext()) {
        Element const tree = trees.next();
        checkParts(tree);
        checkFactory(tree);
        if (tree.GetElementType() == ElementType::Object) {
            if (Made other = made(Class::base, tree); other.message)
                checkEquality(*life.message, *life.model, *other.message, *other.model);
        }
        change(*life.message, *life.model, tree);
    }
    for (auto const* const name : names)
        checkMissingName(*life.message, *life.model, name);
    checkCopy(*life.message, *life.model);
    checkText(messageClass, *life.message);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static bool const areRegistered = registerClasses();
    check(areRegistered, "classes can be registered, and two functions for one identifier are a conflict");
    Input input(data, size);
    printedBy(std::cout, [&] { checkLife(input); });  // what isn't looked at goes nowhere
    return 0;
}
