// A pump: a thread of its own for whoever handles messages. And a request with its answer.
#include "components.h"
#include "ideas.h"
#include "plant_messages.h"
#include "printing.h"

#include "zelm/msgs/message_key.h"
#include "zelm/msgs/message_pump.h"

#include <exception>
#include <iostream>
#include <stdexcept>
#include <utility>

using namespace Zelm::Msgs;

namespace MessagePatterns {

namespace {

// quote begins: guarded
/// The handler, with its exceptions caught: on a pump's thread they would end the process.
MessageHandler guarded(MessageHandler handler)
{
    return [handler = std::move(handler)](MessagePointer const& message) {
        try {
            handler(message);
        } catch (std::exception const& failure) {
            std::cout << "oven: " << failure.what() << '\n';
        }
    };
}
// quote ends: guarded

/// Does what the order says and tells whoever gave it.
// quote begins: handler
void heat(HeatOrder const& order, Dispatcher const& dispatcher)
{
    if (order.celsius() > 300)
        throw std::runtime_error("too hot");
    std::cout << "oven: heats up to " << order.celsius() << '\n';
    auto const answer = std::make_shared<Temperature>(order.destID(), order.celsius());
    answer->destID = order.senderID();
    dispatcher->dispatchMessage(answer);
}
// quote ends: handler

}  // namespace

void showPump()
{
    // quote begins: pump
    Dispatcher const dispatcher = dispatcherCalled("plant");
    Address const ovenAddress{"plant", "line 1", "oven"};
    Address const panelAddress{"plant", "panel"};

    MessagePump oven(makeQueue(MessageDispatcherInterface::QueueType), dispatcher);  // an empty table
    oven.start();
    // On a running pump this thread publishes the entries: what is dispatched from the next line on isn't missed.
    oven.addEntriesToDispatchTable(
        {{MessageKey(HeatOrder::MsgID(), {}, ovenAddress), guarded([dispatcher](MessagePointer const& message) {
              if (auto const order = std::dynamic_pointer_cast<HeatOrder const>(message))
                  heat(*order, dispatcher);
          })}});
    // quote ends: pump

    // quote begins: request
    Queue const panel = makeQueue(MessageDispatcherInterface::QueueType);
    dispatcher->registerService(panel, panelAddress);
    dispatcher->dispatchMessage(std::make_shared<HeatOrder>(panelAddress, ovenAddress, 200));
    if (auto const answer = panel->getMessage(60000))  // milliseconds
        std::cout << "panel: gets " << summary(*answer) << '\n';
    // quote ends: request

    // quote begins: stop
    for (double const degrees : {500, 150, 100})
        dispatcher->dispatchMessage(std::make_shared<HeatOrder>(panelAddress, ovenAddress, degrees));
    oven.stop();
    std::cout << "stopped\n";
    printAll("panel", panel);
    // quote ends: stop
    bool const somebody = dispatcher->dispatchMessage(std::make_shared<HeatOrder>(panelAddress, ovenAddress, 20));
    std::cout << "a later order is for " << (somebody ? "somebody" : "nobody") << '\n';
    dispatcher->disconnectQueue(panel);
}

}  // namespace MessagePatterns
