#include "zelm/msgs/message_pump.h"

#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/handler_lookup.h"
#include "zelm/msgs/queue.h"

#include <iostream>
#include <sstream>
#include <utility>

namespace Zelm::Msgs {

namespace {

constexpr unsigned long stopID = Identifier::toValue(65520, 65520, 65520, 65520);

/// One write for the whole line, so that the lines of several pumps don't mix.
void reportUnhandled(Message const& message)
{
    std::ostringstream line;
    line.imbue(std::cerr.getloc());
    line.flags(std::cerr.flags());  // numbers look as they do in everything else on standard error
    line << "Received message ID: " << message.id() << ", from: " << message.senderID() << ", for: " << message.destID()
         << " which didn't have a handler\n";
    std::cerr << line.str() << std::flush;
}

}  // namespace

MyStopThreadStopMessage::MyStopThreadStopMessage() : Message(stopID, {}, {}) {}
MyStopThreadStopMessage::~MyStopThreadStopMessage() = default;

MessagePump::MessagePump() = default;

MessagePump::MessagePump(std::shared_ptr<MessageQueueInterface> const& queue,
                         std::shared_ptr<MessageDispatcherInterface> const& dispatcher)
    : queue_(queue), dispatcher_(dispatcher)
{
}

MessagePump::MessagePump(std::shared_ptr<MessageQueueInterface> const& queue,
                         std::shared_ptr<MessageDispatcherInterface> const& dispatcher, DispatchTable const& entries)
    : MessagePump(queue, dispatcher)
{
    addEntriesToDispatchTable(entries);
}

MessagePump::~MessagePump()
{
    stop();
}

bool MessagePump::start()
{
    GuardedTable::Access access(dispatchTable_);
    return startPumpThread(access);
}

bool MessagePump::start(std::shared_ptr<MessageQueueInterface> const& queue,
                        std::shared_ptr<MessageDispatcherInterface> const& dispatcher, DispatchTable const& table)
{
    GuardedTable::Access access(dispatchTable_);
    if (isRunning())
        return false;
    DispatchTable copy = table;  // before anything is changed, since it may throw
    // On purpose before anybody asks whether something is missing: what was given stays for a later start().
    queue_ = queue;
    *access = std::move(copy);
    dispatcher_ = dispatcher;
    return startPumpThread(access);
}

bool MessagePump::startPumpThread(GuardedTable::Access&)
{
    if (isRunning() || !queue_ || !dispatcher_)
        return false;
    pumpThread_ = std::thread(&MessagePump::pumpMessages, this);
    isRunning_ = true;
    return true;
}

/// The thread. Nothing is caught here on purpose: what a handler throws ends the process.
void MessagePump::pumpMessages()
{
    {
        GuardedTable::Access access(dispatchTable_);  // waits until whoever starts the pump has finished
        publishTable(*access);                        // entries that the dispatcher refuses are no reason not to run
    }
    while (auto const message = queue_->getMessage()) {
        if (message->id().value() == stopID)
            break;
        if (!handle(message))
            reportUnhandled(*message);
    }
    dispatcher_->disconnectQueue(queue_);
}

bool MessagePump::handle(std::shared_ptr<Message const> const& message)
{
    GuardedTable::Access access(dispatchTable_);
    return invokeMessageHandlers(message, *access);
}

void MessagePump::stop()
{
    if (!isRunning())
        return;
    queue_->putMessage(std::make_shared<MyStopThreadStopMessage>());
    pumpThread_.join();
    isRunning_ = false;
}

bool MessagePump::isRunning() const
{
    return isRunning_;
}

bool MessagePump::addEntriesToDispatchTable(DispatchTable const& entries)
{
    GuardedTable::Access access(dispatchTable_);
    for (auto const& [key, handler] : entries)
        access->insert_or_assign(key, handler);
    return !isRunning() || publishTable(entries);
}

bool MessagePump::removeEntriesFromDispatchTable(DispatchTable const& entries)
{
    GuardedTable::Access access(dispatchTable_);
    for (auto const& [key, handler] : entries) {
        auto const entry = access->find(key);
        if (entry == access->end())
            continue;
        access->erase(entry);
        if (!isRunning())
            continue;
        // The side of the key that was asked for, on purpose: the one that was found may have both.
        if (key.dest.empty())
            dispatcher_->unsubscribe(queue_, key.sender, key.id);
        else
            dispatcher_->unregisterService(queue_, key.dest, key.id);
    }
    return true;
}

bool MessagePump::clearDispatchTable()
{
    GuardedTable::Access access(dispatchTable_);
    bool const result = !isRunning() || dispatcher_->disconnectQueue(queue_);
    access->clear();
    return result;
}

bool MessagePump::publishTable(DispatchTable const& entries)
{
    if (!dispatcher_)
        return false;
    for (auto const& [key, handler] : entries) {
        bool const accepted = key.dest.empty() ? dispatcher_->subscribe(queue_, key.sender, key.id)
                                               : dispatcher_->registerService(queue_, key.dest, key.id, 0);
        if (!accepted)
            return false;
    }
    return true;
}

}  // namespace Zelm::Msgs
