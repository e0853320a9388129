// A queue of the messaging library, a pump on it, and a handler in the pump's table.
#include "messaging/components.h"
#include "messaging/two_cores.h"
#include "zelm/msgs/message_pump.h"

#include <thread>

namespace Zelm::Benchmarks {

namespace {

void queuePumpHandler(benchmark::State& state)
{
    TwoCores const cores;
    Receiver receiver;
    auto const queue = makeQueue();
    Msgs::MessageKey const fromThePlant(Msgs::MessageDispatcherInterface::everyMsg, {"plant 3"}, {});
    Msgs::MessagePump pump(queue, makeDispatcher(),
                           {{fromThePlant, [&](MessagePtr const& message) { receiver(*message); }}});
    cores.onSecond([&] { return pump.start(); });

    measureTransfer(state, receiver, [&](MessagePtr message) { queue->putMessage(std::move(message)); });
    pump.stop();
}
BENCHMARK(queuePumpHandler)->Name("queue_pump_handler/ours/two_cores")->UseManualTime();

}  // namespace

}  // namespace Zelm::Benchmarks
