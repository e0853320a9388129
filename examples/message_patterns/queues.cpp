// The queues that aren't the plain one.
#include "components.h"
#include "ideas.h"
#include "plant_messages.h"
#include "printing.h"

#include "zelm/messaging/callback_queue.h"
#include "zelm/messaging/fixed_depth_queue.h"

#include <iostream>
#include <thread>

using namespace Zelm;
using namespace Zelm::Msgs;

namespace MessagePatterns {

namespace {

void showFixedDepth()
{
    // quote begins: fixed depth
    Queue const latest = makeQueue(MessageDispatcherInterface::FixedDepthQueueType, {"2"});
    for (char const* const sensor : {"1", "2", "3", "4", "5"})
        latest->putMessage(std::make_shared<Temperature>(Address{"plant", "sensor", sensor}, 20.0));
    printAll("latest", latest);
    auto const limits = std::dynamic_pointer_cast<Messaging::FixedDepthQueueInterface>(latest);
    std::cout << "depth " << limits->depth() << ", dropped " << limits->droppedMessages() << '\n';
    // quote ends: fixed depth
}

void showCallback()
{
    // quote begins: callback
    Dispatcher const dispatcher = dispatcherCalled("plant");
    Queue const queue = makeQueue(MessageDispatcherInterface::CallbackQueueType);
    auto const dispatching = std::this_thread::get_id();
    std::dynamic_pointer_cast<Messaging::CallbackQueueInterface>(queue)->setCallback(
        [dispatching](MessagePointer const& message) {
            std::cout << "callback: " << summary(*message) << ", on "
                      << (std::this_thread::get_id() == dispatching ? "the thread that dispatches" : "another thread")
                      << '\n';
        });
    dispatcher->subscribe(queue, Temperature::MsgID());
    std::cout << "dispatching\n";
    dispatcher->dispatchMessage(std::make_shared<Temperature>(Address{"plant", "line 1", "oven"}, 180.5));
    std::cout << "dispatched\n";
    dispatcher->disconnectQueue(queue);  // from here on the callback isn't called any more
    // quote ends: callback
}

}  // namespace

void showQueues()
{
    showFixedDepth();
    showCallback();
}

}  // namespace MessagePatterns
