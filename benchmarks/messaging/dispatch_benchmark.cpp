// One message through a dispatcher into the one queue of 10,000 that is subscribed to it, and out of that again, so
// that the queues stay as empty as they are where somebody reads them.
#include "messaging/components.h"
#include "messaging/presses.h"
#include "support/agreement.h"
#include "support/allocations.h"
#include "zelm/msgs/message.h"

#include <memory>
#include <vector>

namespace Zelm::Benchmarks {

namespace {

struct Plants {
    std::shared_ptr<Msgs::MessageDispatcherInterface> dispatcher = makeDispatcher();
    std::vector<std::shared_ptr<Msgs::MessageQueueInterface>> queues;
    std::vector<std::shared_ptr<Msgs::Message const>> messages;  // one from each press
};

Plants const& plants()
{
    static Plants const made = [] {
        Plants plants;
        for (std::size_t press = 0; press < pressCount; ++press) {
            auto const address = addressOfPress(press);
            plants.queues.push_back(makeQueue());
            plants.dispatcher->subscribe(plants.queues.back(), address, everyMeasurement);
            plants.messages.push_back(
                std::make_shared<Msgs::Message>(measurement, address, std::vector<std::string>()));
        }
        return plants;
    }();
    return made;
}

void dispatch(benchmark::State& state)
{
    Plants const& all = plants();
    std::size_t press = firstPress;
    CountedAllocations const counted(state);
    for (auto _ : state) {
        all.dispatcher->dispatchMessage(all.messages[press]);
        auto const received = all.queues[press]->getMessage(0);
        benchmark::DoNotOptimize(received.get());
        press = pressAfter(press);
    }
}
BENCHMARK(dispatch)->Name("dispatch/ours/10000");

Agreement const reachesItsQueue("a message reaches the queue that is subscribed to its press and no other", [] {
    Plants const& all = plants();
    for (std::size_t press = 0; press < pressCount; press += 997) {
        all.dispatcher->dispatchMessage(all.messages[press]);
        for (std::size_t other = 0; other < pressCount; ++other) {
            auto const received = all.queues[other]->getMessage(0);
            if (received != (other == press ? all.messages[press] : nullptr))
                return false;
        }
    }
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
