// A dispatcher with two queues: one hears what is sent, the other one gets what is addressed to it.
#include "components.h"
#include "ideas.h"
#include "plant_messages.h"
#include "printing.h"

#include <iostream>

using namespace Zelm::Msgs;

namespace MessagePatterns {

void showSubscriptionsAndServices()
{
    // quote begins: subscriptions
    Dispatcher const dispatcher = dispatcherCalled("plant");
    Address const oven{"plant", "line 1", "oven"};
    Address const panel{"plant", "panel"};

    Queue const display = makeQueue(MessageDispatcherInterface::QueueType);
    dispatcher->subscribe(display, {"plant", "line 1"});   // all that comes from there or below
    dispatcher->subscribe(display, Temperature::MsgID());  // all temperatures, whoever sends them

    Queue const orders = makeQueue(MessageDispatcherInterface::QueueType);
    dispatcher->registerService(orders, oven, HeatOrder::MsgID(), 0);  // heat orders that are for the oven
    // quote ends: subscriptions

    // quote begins: dispatching
    bool const temperatureHadReceivers = dispatcher->dispatchMessage(std::make_shared<Temperature>(oven, 180.5));
    bool const orderHadReceivers =
        dispatcher->dispatchMessage(std::make_shared<HeatOrder>(panel, Address{"plant", "press"}, 90));
    dispatcher->dispatchMessage(std::make_shared<HeatOrder>(panel, oven, 200));
    std::cout << "the temperature was for " << (temperatureHadReceivers ? "somebody" : "nobody")
              << ", the order for the press for " << (orderHadReceivers ? "somebody" : "nobody") << '\n';
    printAll("display", display);
    printAll("orders", orders);
    // quote ends: dispatching

    // quote begins: disconnecting
    dispatcher->disconnectQueue(display);
    dispatcher->disconnectQueue(orders);
    // quote ends: disconnecting
}

}  // namespace MessagePatterns
