/// @file
/// Holds the sensors back where the receivers can't follow, so that memory which grows is a leak and not a backlog, and
/// tells when everything that was sent has been handled.
///
/// Both go by pings: readings that this sends to all receivers, one at a time. A receiver that has handled a ping has
/// handled all that was in its queue before. The sensors are held by a callback queue that all readings pass through,
/// on the threads that publish them: it waits while more than a certain number has passed since the last ping that
/// everybody has answered. The alarm component answers without knowing about it, by an alarm: the pings' value is above
/// its limit and below it in turn.
///
/// Thread-safety: any thread may call anything at any time, but for stop.
#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace Zelm::Msgs {
class Message;
class MessageDispatcherInterface;
class MessageQueueInterface;
}  // namespace Zelm::Msgs

namespace Soak {

class Flow {
public:
    /// Those who answer.
    enum Receiver : std::size_t { Pump, Log, Alarm, FarSide, receivers };

    /// At most `window` readings beyond those that are handled.
    Flow(std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> dispatcher, unsigned long window);
    ~Flow();  ///< stops
    Flow(Flow const&) = delete;
    Flow& operator=(Flow const&) = delete;

    /// The threshold by which the alarm component answers, and the id under which it does.
    static std::string alarmThreshold();
    static constexpr char const* alarmId = "limits";
    /// The alarm component has been started: it takes the value for being below the limit.
    void alarmHasStarted();
    /// It is no receiver any more.
    void alarmHasEnded();

    /// To be called for every message that the receiver has handled; looks for pings.
    void handled(Receiver receiver, Zelm::Msgs::Message const& message);

    /// Returns when all receivers have handled all that was sent before.
    void drain();
    /// Lets go of all that wait here. No more pings.
    void stop();

    unsigned long pings() const;
    /// For whoever looks into a hang: how far everybody is.
    std::string state() const;

private:
    void answer(Receiver receiver, unsigned long ping);
    void pass(Zelm::Msgs::Message const& message);
    void run();
    void sendPing(unsigned long number, double value);
    bool allHaveAnswered(unsigned long ping) const;

    std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> const dispatcher_;
    unsigned long const window_;
    std::shared_ptr<Zelm::Msgs::MessageQueueInterface> gate_;   // all readings
    std::shared_ptr<Zelm::Msgs::MessageQueueInterface> pongs_;  // the alarm component's alarms

    mutable std::mutex mutex_;  // guards all below but the thread
    std::condition_variable changed_;
    std::condition_variable opened_;  // for those who are held
    unsigned long passed_ = 0;        // readings of sensors, those that wait included
    unsigned long handled_ = 0;   // of these, how many had passed when the last ping was sent that all have answered
    unsigned long sent_ = 0;      // pings
    unsigned long wanted_ = 0;    // the ping that somebody waits for
    unsigned long answered_ = 0;  // by all
    bool isHigh_ = false;         // the value of the last ping
    bool hasAlarm_ = false;
    std::array<unsigned long, receivers> answers_{};
    bool isStopped_ = false;
    std::thread thread_;
};

}  // namespace Soak
