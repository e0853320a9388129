// A message class of one's own: its JSON form, and back to an object of its class.
#include "ideas.h"
#include "plant_messages.h"
#include "printing.h"

#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"

#include <exception>
#include <iostream>

using namespace Zelm;

namespace MessagePatterns {

void showOwnMessages()
{
    // quote begins: json and back
    Temperature const measured({"plant", "line 1", "oven"}, 180.5);
    MetaData::Element form;
    measured.copyToMetaData(form);
    std::string const text = Json::metaDatatoJsonString(form.CastTo<MetaData::Object>());  // to a file, over a wire ...

    auto const message = Message::CreateFromMetaData(Json::jsonStringtoMetaData(text));
    if (auto const back = std::dynamic_pointer_cast<Temperature>(message))
        std::cout << "a Temperature of " << back->celsius() << (*back == measured ? ", equal to" : ", other than")
                  << " what was sent, with " << (back->msgUUID() == measured.msgUUID() ? "the same" : "another")
                  << " UUID\n";
    // quote ends: json and back
    std::cout << formOf(measured) << '\n';

    // quote begins: unknown kind
    try {
        Message::CreateFromMetaData(Json::jsonStringtoMetaData(R"({"MessageID": [10, 1, 2, 1]})"));
    } catch (std::exception const& failure) {
        std::cout << failure.what() << '\n';
    }
    // quote ends: unknown kind
}

}  // namespace MessagePatterns
