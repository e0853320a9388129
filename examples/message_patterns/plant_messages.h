/// @file
/// The messages of this program's plant. Its identifiers are numbered so that the questions which receivers ask are
/// patterns that go wild from the right:
///
///     category  10 everything of this plant
///     sub1      1 measurements, 2 orders
///     sub2      what is measured or done: 1 temperature, 2 pressure
///     type      1 the plain message, 2 an alarm about it
#pragma once

#include "zelm/metadata/mirrored_object.h"
#include "zelm/metadata/reflector.h"
#include "zelm/msgs/identifier.h"
#include "zelm/msgs/message.h"

#include <string>
#include <vector>

namespace MessagePatterns {

using Zelm::Msgs::Identifier;
using Zelm::Msgs::Message;
using Address = std::vector<std::string>;

// quote begins: message class
/// A temperature was measured.
class Temperature : public Message {
public:
    static Identifier MsgID() { return Identifier::toValue(10, 1, 1, 1); }

    Temperature(Address const& sender, double degrees) : Message(MsgID(), sender, {}) { celsius = degrees; }
    explicit Temperature(Zelm::MetaData::Object const& form) : Message(form) { copyFromMetaData(form); }

    Zelm::MetaData::Reflector<double, false, true> celsius{this, "Celsius"};
};
// quote ends: message class

/// Heat up, or cool down, to this temperature.
class HeatOrder : public Message {
public:
    static Identifier MsgID() { return Identifier::toValue(10, 2, 1, 1); }

    HeatOrder(Address const& sender, Address const& dest, double degrees) : Message(MsgID(), sender, dest)
    {
        celsius = degrees;
    }
    explicit HeatOrder(Zelm::MetaData::Object const& form) : Message(form) { copyFromMetaData(form); }

    Zelm::MetaData::Reflector<double, false, true> celsius{this, "Celsius"};
};

/// Tells the message factory about both. Once, before there is a second thread.
void registerPlantMessages();

}  // namespace MessagePatterns
