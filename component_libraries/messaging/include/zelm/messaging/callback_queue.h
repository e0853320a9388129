/// @file
/// What the component type "CallbackMessageQueue" offers beyond a queue: it stores nothing and hands each message to a
/// function, on the thread that puts it. For receivers that have a place of their own for messages (another library's
/// event loop, a file, a connection), or so little to do that a thread would be too much.
///
///     auto const component = repository->createComponent(MessageDispatcherInterface::CallbackQueueType, {});
///     auto const queue = std::dynamic_pointer_cast<Msgs::MessageQueueInterface>(component);
///     std::dynamic_pointer_cast<Messaging::CallbackQueueInterface>(component)->setCallback(
///         [&loop](std::shared_ptr<Msgs::Message const> const& message) { loop.post(message); });
///     dispatcher->subscribe(queue, Reading::MsgID());
///
/// There are no arguments. getMessage has nothing to deliver and waits for its time to run out, or for close. The one
/// exception are the stop messages of pumps (65520 in each field of the identifier): they wait in the queue and never
/// reach the function, so that a pump that was given such a queue can be stopped.
///
/// The function runs on the dispatching thread and holds it up.
///  - Several threads may run it at once, if several dispatch.
///  - It may call anything of this queue and of the dispatcher: dispatch, subscribe, disconnect its own queue, set
///    another function, close the queue.
///  - What it throws comes out of putMessage.
///
/// Thread-safety: any thread may call anything at any time.
#pragma once

#include "zelm/core/export.h"

#include <functional>
#include <memory>

namespace Zelm::Msgs {
class Message;
}  // namespace Zelm::Msgs

namespace Zelm::Messaging {

class ZELM_EXPORT CallbackQueueInterface {
public:
    using Callback = std::function<void(std::shared_ptr<Msgs::Message const> const&)>;

    /// From now on messages go to this function. Without one, at the beginning or after an empty one was set,
    /// putMessage is false and the message isn't kept. A closed queue doesn't keep the function either.
    ///
    /// When this returns, the function that was set before isn't running any more and is destroyed, and the same goes
    /// for close: what it refers to may go then. So neither may be called with a lock held that the function takes.
    /// Calls that couldn't end meanwhile aren't waited for: those of the calling thread, if it is within the function,
    /// and those that wait in such an operation, or in one of the dispatcher's, themselves.
    virtual void setCallback(Callback callback) = 0;

protected:
    ~CallbackQueueInterface() = default;  // nothing is deleted through this class
};

}  // namespace Zelm::Messaging
