/// @file
/// The components of the messaging library, as the shared library that ships makes them.
#pragma once

#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/queue.h"

#include <memory>

namespace Zelm::Benchmarks {

std::shared_ptr<Msgs::MessageQueueInterface> makeQueue();
std::shared_ptr<Msgs::MessageDispatcherInterface> makeDispatcher();

}  // namespace Zelm::Benchmarks
