/// @file
/// One thread that takes messages from one queue and calls the handlers of one dispatch table, and keeps the dispatcher
/// informed meanwhile: what stands in the table is what the queue is subscribed to.
///
///     MessagePump pump(queue, dispatcher);
///     pump.start();
///     pump.addEntriesToDispatchTable({{MessageKey(Reading::MsgID(), {"plant"}, {}), onReading}});
///     ...
///     pump.stop();                    // handles what a first-in first-out queue holds, then ends the thread
///
/// A key with a destination is offered to the dispatcher as a service, any other is subscribed to. While the pump runs,
/// changes of the table reach the dispatcher at once, on the thread that makes them. A table filled before is published
/// by the pump's thread when that comes to it, some time after start() has returned: what is dispatched until then is
/// missed. So where that counts the table is filled after the start, as above.
///
/// Handlers run on the pump's thread with the pump's lock held, one at a time. A handler
///  - must not call its own pump: the lock isn't recursive, and stop() would wait for its own thread;
///  - must do its own catching: an exception that leaves it ends the process, and so does an empty handler that is
///    called, or anything that the queue or the dispatcher throws on the pump's thread;
///  - holds up everybody who changes the table while it runs.
///
/// Thread-safety: any thread may change the table at any time. start, stop, isRunning and the destructor belong to one
/// thread at a time.
#pragma once

#include "zelm/core/export.h"
#include "zelm/core/scoped_accessor.h"
#include "zelm/msgs/message.h"
#include "zelm/msgs/message_key.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

namespace Zelm::Msgs {

class MessageDispatcherInterface;
class MessageQueueInterface;

class ZELM_EXPORT MessagePump {
public:
    using GuardedTable = ScopedAccessor<DispatchTable, std::mutex>;

    /// Without queue and dispatcher: start() is false until they are given.
    MessagePump();
    MessagePump(std::shared_ptr<MessageQueueInterface> const& queue,
                std::shared_ptr<MessageDispatcherInterface> const& dispatcher);
    MessagePump(std::shared_ptr<MessageQueueInterface> const& queue,
                std::shared_ptr<MessageDispatcherInterface> const& dispatcher, DispatchTable const& entries);
    MessagePump(MessagePump const&) = delete;
    MessagePump& operator=(MessagePump const&) = delete;
    virtual ~MessagePump();  ///< stops the pump

    /// Starts the thread. False if it is running already, or if queue or dispatcher is missing. Waits for the lock
    /// first, so behind a running handler and behind changes of the table.
    /// Throws std::system_error if there is no thread to be had.
    bool start();
    /// The same with another queue, dispatcher and table in place of what was there. Nothing is changed if the pump is
    /// running, or if the table can't be copied; where the start itself fails, by false or by the exception, all three
    /// stay stored.
    bool start(std::shared_ptr<MessageQueueInterface> const& queue,
               std::shared_ptr<MessageDispatcherInterface> const& dispatcher, DispatchTable const& table);

    /// Puts the stop message into the queue and waits for the thread to end. What the queue hands out before it is
    /// still handled. The queue is disconnected from the dispatcher then; the table stays, and the pump can be started
    /// again. Does nothing if the pump isn't running.
    /// If the thread had ended by itself, the stop message stays in the queue, and ends the next pump on it. A queue
    /// that refuses the stop message has to give the thread an empty pointer, or this waits for good.
    void stop();

    /// Whether there is a thread to be stopped. Still true after the thread has ended by itself, on an empty message or
    /// a stop message from elsewhere, until stop() is called.
    bool isRunning() const;

    /// Adds the entries to the table; a key that is there already keeps its key object and gets the new handler. False
    /// if the pump is running and the dispatcher refused an entry: those behind it aren't published then, but all of
    /// them stand in the table.
    bool addEntriesToDispatchTable(DispatchTable const& entries);

    /// Removes what is found under the keys of the entries, whatever their handlers, and if the pump is running ends
    /// the service (a key with a destination) or the subscription (any other) of each key that was found. True in any
    /// case.
    bool removeEntriesFromDispatchTable(DispatchTable const& entries);

    /// Empties the table. If the pump is running, the queue is disconnected from the dispatcher first; the thread runs
    /// on without handlers. False if the dispatcher reported failure.
    bool clearDispatchTable();

    /// Tells the dispatcher about the entries: registerService for keys with a destination, subscribe for all others.
    /// Stops at the first refusal. False at a refusal and without a dispatcher.
    /// Takes no lock: the caller sees to it that nothing else is changed meanwhile.
    bool publishTable(DispatchTable const& entries);

    /// What start() does under the lock, of which `access` is the proof.
    bool startPumpThread(GuardedTable::Access& access);

private:
    void pumpMessages();
    bool handle(std::shared_ptr<Message const> const& message);

    // In this order: they go in the reverse one, the dispatcher first.
    std::thread pumpThread_;                                  // only for whoever starts and stops the pump
    std::atomic<bool> isRunning_{false};                      // pumpThread_.joinable(), for those who change the table
    std::shared_ptr<MessageQueueInterface> queue_;            // written only while no thread exists
    GuardedTable dispatchTable_;                              // the handlers run under its lock
    std::shared_ptr<MessageDispatcherInterface> dispatcher_;  // written only while no thread exists
};

/// Ends a pump's thread. Any other message of its identifier does too. Goes to no handler.
class ZELM_EXPORT MyStopThreadStopMessage : public Message {
public:
    MyStopThreadStopMessage();
    ~MyStopThreadStopMessage() override;
};

}  // namespace Zelm::Msgs
