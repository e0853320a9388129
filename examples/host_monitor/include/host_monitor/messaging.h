/// @file
/// Finding what messages go through. Dispatcher and queues are components like any other: they come from
/// libZelmMessaging by the names of their types, and nobody is linked with that library. What they can do is told by
/// interfaces of the core library, which a cast leads to.
///
/// Thread-safety: any thread, but not from within a message handler: the repository's lock may be held by somebody who
/// waits for the handler's end.
#pragma once

#include "zelm/core/export.h"
#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/queue.h"

#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

/// The instance id of the application's dispatcher.
inline constexpr char const* dispatcherId = "dispatcher";

/// The dispatcher, which the application makes before its components.
/// Throws Zelm::Exception::InvalidOperation if there is none.
ZELM_EXPORT std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> findDispatcher();

/// A new queue, which belongs to the caller. The type is MessageDispatcherInterface::QueueType or another one of these.
/// Throws what the repository's createComponent throws, and Zelm::Exception::InvalidParameter for a type of something
/// else.
ZELM_EXPORT std::shared_ptr<Zelm::Msgs::MessageQueueInterface>
createQueue(std::string const& type, std::vector<std::string> const& arguments = {});

}  // namespace HostMonitor
