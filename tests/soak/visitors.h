/// @file
/// Receivers that come while everything runs, stay for some milliseconds and go again: pumps, callbacks, queues that
/// are read without a pump, forwarders, and the demo's reporters and alarms as components. What was published while a
/// visitor was there it must have got, each message once and in its sensor's order.
///
/// Thread-safety: any number of threads may visit, each with a number of its own.
#pragma once

#include "faults.h"
#include "ledger.h"
#include "sensors.h"

#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>

namespace Zelm {
class ComponentsRepositoryInterface;
namespace Msgs {
class MessageDispatcherInterface;
}  // namespace Msgs
}  // namespace Zelm

namespace Soak {

class Visitors {
public:
    /// Files of visitors are in the directory while they are there.
    Visitors(Zelm::ComponentsRepositoryInterface& repository,
             std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> dispatcher, Sensors const& sensors, Faults& faults,
             std::string directory);

    /// One visit from its beginning to its end. The number tells apart the visits that go on at the same time.
    void visit(unsigned number, std::minstd_rand& random);

    struct Totals {
        unsigned long visits = 0;
        unsigned long messages = 0;
        unsigned long lost = 0;
        unsigned long repeated = 0;
        unsigned long alarms = 0;  ///< published by alarm components that were here
    };
    Totals totals() const;

private:
    using Dispatcher = std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface>;
    using Random = std::minstd_rand;

    void usePump(std::string const& id, Random& random);
    void useCallback(std::string const& id, Random& random);
    void useFixedDepth(std::string const& id, Random& random);
    void useForwarder(std::string const& id, Random& random);
    void useReporter(std::string const& id, Random& random);
    void useAlarm(std::string const& id, Random& random);

    /// What was published from the visitor's coming to the present moment, by sensor.
    std::map<std::string, Ledger::Stream> publishedSince(Sensors::Page const& page) const;
    /// Notes what is missing, and takes the ledger's figures into the totals. Of the sensors' ids, those count that
    /// begin with the kind.
    void check(std::string const& id, Ledger const& ledger, std::string const& kind,
               std::map<std::string, Ledger::Stream> const& published);
    void add(Totals const& totals);

    Zelm::ComponentsRepositoryInterface& repository_;
    Dispatcher const dispatcher_;
    Sensors const& sensors_;
    Faults& faults_;
    std::string const directory_;

    mutable std::mutex mutex_;  // guards the totals
    Totals totals_;
};

}  // namespace Soak
