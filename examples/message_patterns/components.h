/// @file
/// Dispatchers and queues, as an application gets them: from the components repository, by the names of their types.
#pragma once

#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/queue.h"

#include <memory>
#include <string>
#include <vector>

namespace MessagePatterns {

// quote begins: names
using Dispatcher = std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface>;
using Queue = std::shared_ptr<Zelm::Msgs::MessageQueueInterface>;
// quote ends: names

/// The one dispatcher under that instance id: whoever asks for the id gets the same.
Dispatcher dispatcherCalled(std::string const& instanceId);

/// A queue of the caller's own.
Queue makeQueue(std::string const& type, std::vector<std::string> const& arguments = {});

}  // namespace MessagePatterns
