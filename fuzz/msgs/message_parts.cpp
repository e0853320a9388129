#include "fuzz/msgs/message_parts.h"

#include "fuzz/msgs/plain_message.h"
#include "fuzz/support/check.h"
#include "fuzz/support/outcome.h"
#include "fuzz/support/trees.h"
#include "zelm/msgs/address.h"
#include "zelm/msgs/identifier.h"

#include <sstream>

namespace Zelm::Fuzzing {

using namespace MetaData;
using namespace Msgs;

namespace {

/// "{ a, b }"
std::string listed(std::vector<std::string> const& parts)
{
    std::string text;
    for (auto const& part : parts)
        text += (text.empty() ? "{ " : ", ") + part;
    return (text.empty() ? "{ " : text) + " }";
}

template <class T> std::string printed(T const& value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

}  // namespace

void checkIdentifier(Element const& tree)
{
    unsigned long expected = Identifier::toValue(1, 65535, 3, 4);
    Identifier id(expected);
    checkSame(outcomeOf([&] { id.copyFromMetaData(tree); }), outcomeOf([&] { expected = plainIdentifierOf(tree); }),
              "reading an identifier ends as the model says");
    check(id.value() == expected, "an identifier is what was read, or what it was", detailsOf(tree));

    Element target = tree;
    id.copyToMetaData(target);
    checkSame(detailsOf(target), detailsOf(plainFormOf(expected)), "an identifier is written as an array of four");
    std::vector<std::string> fields;
    for (auto const field : {id.category(), id.sub1(), id.sub2(), id.type()})
        fields.push_back(std::to_string(field));
    checkSame(printed(id), listed(fields), "an identifier prints its four fields");
    check(Identifier::toValue(id.category(), id.sub1(), id.sub2(), id.type()) == expected,
          "the four fields make up the identifier");
}

void checkAddressIn(Object const& tree)
{
    for (bool const isSet : {false, true}) {
        ReflectedAddress address(nullptr, "SenderID", false);
        PlainArray model("SenderID", stringOf);
        if (isSet) {
            address = {"a", "b"};
            PlainMessage::assign(model, {"a", "b"});
        }
        checkSame(outcomeOf([&] { address = tree; }), outcomeOf([&] { model.read(Element(tree)); }),
                  "an address takes an Object as the model does");

        ReflectedAddress const& read = address;
        PlainAddress const expected = model.set ? PlainMessage::partsOf(model) : PlainAddress();
        check(read.initialized() == model.set && read() == expected, "an address is what the model says");
        checkSame(printed(read()), listed(expected), "an address prints its parts");
        check(inTree({}, read()) && inTree(read(), read()), "an address lies below the root and itself");
    }
}

}  // namespace Zelm::Fuzzing
