/// @file
/// Messages to test with, their serialised forms, and short ways to look at those.
#pragma once

#include "tests/metadata/elements.h"
#include "zelm/msgs/message.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Zelm::Msgs::Testing {

using MetaData::Element;
using MetaData::Testing::array;
using MetaData::Testing::identical;
using MetaData::Testing::integer;
using MetaData::Testing::object;
using MetaData::Testing::string;

using Parts = std::vector<std::string>;
using Names = std::set<std::string>;

constexpr unsigned long kind = Identifier::toValue(1, 2, 3, 4);
inline Element const kindForm = array({integer(1), integer(2), integer(3), integer(4)});
inline std::string const uuidText = "0b5f8a0e-3d0c-4b0e-9c52-6f1c7e0d9a43";

/// An extended field of one member.
struct Note : MetaData::MirroredObject {
    Note() = default;
    explicit Note(std::string const& value) { text = value; }

    MetaData::Reflector<std::string, false, true> text{this, "text"};
};

/// A message with a payload of its own.
struct Payload : Message {
    explicit Payload(std::string const& value) : Message(kind, {}, {}) { data = value; }

    MetaData::Reflector<std::string, false, true> data{this, "Data"};
};

inline Element formOf(Message const& message)
{
    Element form;
    message.copyToMetaData(form);
    return form;
}

/// The form of a message of the kind above, with further members.
inline Element form(std::vector<std::pair<std::string, Element>> const& members = {})
{
    Element result = object(members);
    result["MessageID"] = kindForm;
    return result;
}

inline Element addressForm(Parts const& parts)
{
    Element result;
    MetaData::SetAs<Parts>(parts, result);
    return result;
}

inline Names namesIn(Element const& element)
{
    Names names;
    for (MetaData::Object::Member const& member : element.CastTo<MetaData::Object>())
        names.insert(member.name());
    return names;
}

}  // namespace Zelm::Msgs::Testing
