#include "printing.h"

#include "zelm/metadata/typed_conversions.h"
#include "zelm/metadata/writer_json.h"
#include "zelm/msgs/address.h"
#include "zelm/msgs/handler_lookup.h"
#include "zelm/msgs/identifier.h"

#include <iostream>
#include <sstream>

using namespace Zelm;
using namespace Zelm::Msgs;

namespace MessagePatterns {

std::string summary(Message const& message)
{
    std::ostringstream text;
    text << message.id() << " from " << message.senderID() << " for " << message.destID();
    return text.str();
}

std::string formOf(Message const& message)
{
    MetaData::Element form;
    message.copyToMetaData(form);
    MetaData::SetAs<std::string>("(a UUID)", form["MsgUUID"]);
    std::ostringstream text;
    MetaData::WriterJson::Write(form, text, false);
    return text.str();
}

// quote begins: drain
void printAll(std::string const& name, Queue const& queue)
{
    bool isEmpty = true;
    processAllMessages(queue, [&](MessagePointer const& message) {
        std::cout << name << " has " << summary(*message) << '\n';
        isEmpty = false;
        return false;  // true would throw away the rest
    });
    if (isEmpty)
        std::cout << name << " has nothing\n";
}
// quote ends: drain

}  // namespace MessagePatterns
