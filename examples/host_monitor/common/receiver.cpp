#include "host_monitor/receiver.h"

#include "host_monitor/notices.h"

#include "zelm/core/exceptions.h"

#include <utility>

namespace HostMonitor {

using Zelm::Msgs::DispatchTable;
using Zelm::Msgs::MessageHandler;

Receiver::~Receiver()
{
    stop();
}

void Receiver::start(std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> dispatcher,
                     std::shared_ptr<Zelm::Msgs::MessageQueueInterface> const& queue, Address self,
                     DispatchTable const& handlers)
{
    stop();
    dispatcher_ = std::move(dispatcher);
    self_ = std::move(self);
    failed_ = false;

    DispatchTable table;
    for (auto const& [key, handler] : handlers)
        table.emplace(key, guarded(handler));

    // A pump that is started with its table publishes it on its own thread, some time later, and keeps the dispatcher's
    // answer to itself. Entries that are added to a running pump are published here and now. If the thread comes to its
    // own publishing only then, it repeats them, which is the same to a dispatcher.
    pump_.emplace(queue, dispatcher_);
    if (pump_->start() && pump_->addEntriesToDispatchTable(table))
        return;
    pump_.reset();
    throw Zelm::Exception::InvalidOperation("the message dispatcher has refused a subscription");
}

void Receiver::stop()
{
    pump_.reset();  // its destructor stops it
}

/// An exception that leaves a handler would end the process.
MessageHandler Receiver::guarded(MessageHandler handler)
{
    return [this, handler = std::move(handler)](auto const& message) {
        if (failed_)
            return;
        try {
            handler(message);
        } catch (...) {
            failed_ = true;
            publishFailure(*dispatcher_, self_);
        }
    };
}

}  // namespace HostMonitor
