/// @file
/// The thread of a sensor: takes readings by a schedule and publishes them.
///
///     publisher.start(findDispatcher(), {host, "cpu", "cpu0"}, schedule, [this] { return takeReading(); });
///     ...
///     publisher.stop();
///
/// Each reading gets the sender, the alarm service as its destination, and a sequence number: 1, 2, 3 and so on. The
/// last message is a FinishedMessage with their number, or a FailureMessage if the function has thrown.
///
/// Let a publisher be the last member of its component. It stops before the members go that the function uses.
///
/// Thread-safety: published may be called by any thread; all else belongs to one thread at a time.
#pragma once

#include "host_monitor/addresses.h"
#include "host_monitor/reading.h"
#include "host_monitor/schedule.h"
#include "host_monitor/ticker.h"

#include "zelm/core/export.h"
#include "zelm/msgs/dispatcher.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace HostMonitor {

class ZELM_EXPORT ReadingPublisher {
public:
    using Dispatcher = std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface>;
    /// Measures now, on the publisher's thread. What can't be measured at the moment is no exception: it is a reading
    /// whose `error` says why.
    using TakeReading = std::function<std::shared_ptr<Reading>()>;

    ReadingPublisher() = default;
    ~ReadingPublisher();  ///< stops
    ReadingPublisher(ReadingPublisher const&) = delete;
    ReadingPublisher& operator=(ReadingPublisher const&) = delete;

    /// A publisher that is running is stopped first. Throws Zelm::Exception::InvalidParameter for a schedule without a
    /// period and without an end, which would fill the memory.
    void start(Dispatcher dispatcher, Address sender, Schedule const& schedule, TakeReading takeReading);

    /// Returns when all that was taken is published; nothing is published afterwards. Ends a wait for the next reading
    /// at once, and waits for one that is being taken. Does nothing if this isn't running.
    void stop();

    /// How many readings were published since the start.
    unsigned long published() const { return published_; }

private:
    void run(unsigned long limit);
    void publishReading();
    void publishEnd();

    Dispatcher dispatcher_;  // these four are written only while there is no thread
    Address sender_;
    Address destination_;
    TakeReading takeReading_;
    std::atomic<unsigned long> published_{0};
    std::optional<Ticker> ticker_;
    std::thread thread_;
};

}  // namespace HostMonitor
