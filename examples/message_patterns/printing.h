/// @file
/// What the other files print of messages: the same at each run, so without the UUIDs.
#pragma once

#include "components.h"
#include "zelm/msgs/message.h"

#include <memory>
#include <string>

namespace MessagePatterns {

using MessagePointer = std::shared_ptr<Zelm::Msgs::Message const>;

/// "{ 10, 1, 1, 1 } from { plant, line 1 } for {  }"
std::string summary(Zelm::Msgs::Message const& message);

/// The message's JSON form on one line, with a word in place of the UUID.
std::string formOf(Zelm::Msgs::Message const& message);

/// Takes all that is in the queue now and prints a line for each message, "<name> has ..."; one line if there is none.
void printAll(std::string const& name, Queue const& queue);

}  // namespace MessagePatterns
