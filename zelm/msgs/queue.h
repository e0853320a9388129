/// @file
/// A queue of messages for one receiver. Queues are component types in libraries of their own: this library declares
/// the interface and uses it in the MessagePump and in processAllMessages.
///
///     queue->putMessage(std::make_shared<Reading>(21.5));                 // any thread
///     while (auto const message = queue->getMessage())                    // waits; empty: nothing more will come
///         ...
///
/// For implementers: declare the class final, or give it a virtual destructor of its own, since the interface has none;
/// a queue is owned through a std::shared_ptr made for its concrete class. `using MessageQueueInterface::getMessage;`
/// keeps the form without arguments visible beside your own.
///
/// Thread-safety: an implementation has to bear concurrent calls from any thread and to let putMessage and close
/// proceed while a call waits in getMessage.
#pragma once

#include "zelm/core/export.h"

#include <list>
#include <memory>

namespace Zelm::Msgs {

class Message;

class ZELM_EXPORT MessageQueueInterface {
public:
    MessageQueueInterface();

    /// Waits for the next message without limit: getMessage of the largest timeout. Empty: the queue delivers nothing
    /// more. A pump calls this form, and ends when it gets an empty pointer.
    virtual std::shared_ptr<Message const> getMessage();

    /// Waits for the next message, at most `timeout` milliseconds; 0 looks without waiting, the largest value waits
    /// without limit. Empty when the time is up, and when the queue is closed and drained.
    virtual std::shared_ptr<Message const> getMessage(long timeout) = 0;

    /// True if the message was taken; false from a queue that is closed, or full.
    virtual bool putMessage(std::shared_ptr<Message const> message) = 0;

    /// Replaces the list's content with all that the queue holds, in the order in which getMessage(0) hands it out.
    /// Never waits. What getMessage throws passes through; the messages taken until then are in the list.
    virtual void takeAllAvailableMessages(std::list<std::shared_ptr<Message const>>& messages);

    /// No further message is taken. getMessage calls, waiting ones included, deliver what is left and empty pointers
    /// from then on.
    virtual void close() = 0;

protected:
    MessageQueueInterface(MessageQueueInterface const&) = default;
    MessageQueueInterface& operator=(MessageQueueInterface const&) = default;
    ~MessageQueueInterface() = default;  // not virtual: nobody deletes a queue through its interface
};

}  // namespace Zelm::Msgs
