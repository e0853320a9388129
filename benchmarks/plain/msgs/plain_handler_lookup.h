/// @file
/// The plain way to find the handlers of a message, beside which zelm/msgs/handler_lookup.h is measured: all keys that
/// a subscription which takes the message in can have are built and put into a set, and each of them is looked up. A
/// table of up to 12 entries is walked.
///
///     auto const handlers = obtainHandlersThePlainWay(message, table);
///     assert(areFuncListsEquivalent(handlers, obtainMessageHandlers(message, table)));
///
/// Thread-safety: no state; the table must stay as it is during a call and while its result is used.
#pragma once

#include "zelm/msgs/message.h"
#include "zelm/msgs/message_key.h"

#include <memory>
#include <vector>

namespace Zelm::Benchmarks {

std::vector<Msgs::MessageHandler*> obtainHandlersThePlainWay(std::shared_ptr<Msgs::Message const> const& message,
                                                             Msgs::DispatchTable const& table);

}  // namespace Zelm::Benchmarks
