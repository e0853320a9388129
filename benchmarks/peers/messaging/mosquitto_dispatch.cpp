// mosquitto's match of a topic against a subscription, for each of 10,000 subscriptions: what a program does that has
// several receivers on one client, since a client hands all messages to one function. Nothing is delivered.
#include "messaging/presses.h"
#include "support/agreement.h"
#include "support/allocations.h"

#include <mosquitto.h>

#include <string>
#include <vector>

namespace Zelm::Benchmarks {

namespace {

struct Topics {
    std::vector<std::string> subscriptions;
    std::vector<std::string> topics;  // one of each press
};

/// The same addresses and identifiers as levels of topics.
Topics const& topics()
{
    static Topics const made = [] {
        Topics topics;
        for (std::size_t press = 0; press < pressCount; ++press) {
            std::string levels;
            for (std::string const& part : addressOfPress(press))
                levels += part + '/';
            topics.subscriptions.push_back(levels + "10/1/#");
            topics.topics.push_back(levels + "10/1/1/7");
        }
        return topics;
    }();
    return made;
}

bool matches(std::string const& subscription, std::string const& topic)
{
    bool result = false;
    return mosquitto_topic_matches_sub(subscription.c_str(), topic.c_str(), &result) == MOSQ_ERR_SUCCESS && result;
}

void match(benchmark::State& state)
{
    Topics const& all = topics();
    std::size_t press = firstPress;
    CountedAllocations const counted(state);
    for (auto _ : state) {
        std::size_t receivers = 0;
        for (std::string const& subscription : all.subscriptions)
            receivers += matches(subscription, all.topics[press]);
        benchmark::DoNotOptimize(receivers);
        press = pressAfter(press);
    }
}
BENCHMARK(match)->Name("dispatch/mosquitto/10000");

Agreement const matchesItsPress("mosquitto matches a topic to the subscription of its press and to no other", [] {
    Topics const& all = topics();
    for (std::size_t press = 0; press < pressCount; press += 997) {
        for (std::size_t other = 0; other < pressCount; ++other) {
            if (matches(all.subscriptions[other], all.topics[press]) != (other == press))
                return false;
        }
    }
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
