/// @file
/// Dispatch tables and messages to search them for, the same in every run.
///
///     Search const& search = searchIn(10000);
///     obtainMessageHandlers(search.messages[i % search.messages.size()], search.table);
#pragma once

#include "zelm/msgs/message.h"
#include "zelm/msgs/message_key.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Zelm::Benchmarks {

/// Subscriptions by sender and services by destination, at roots of 1 to 3 parts, with 0 to 3 fields wild from the
/// right; and messages with addresses of 3 parts on both sides, each of which has a handler at least.
struct Search {
    Msgs::DispatchTable table;
    std::vector<std::shared_ptr<Msgs::Message const>> messages;
};

/// Made at the first call for that number of entries, and kept for the next ones: a million entries take seconds.
Search const& searchIn(std::size_t entries);

}  // namespace Zelm::Benchmarks
