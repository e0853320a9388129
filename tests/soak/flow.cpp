#include "flow.h"

#include "ledger.h"

#include "host_monitor/addresses.h"
#include "host_monitor/alarm_message.h"
#include "host_monitor/host_readings.h"
#include "host_monitor/message_kinds.h"
#include "host_monitor/messaging.h"

#include "zelm/messaging/callback_queue.h"
#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/message.h"
#include "zelm/msgs/queue.h"

#include <algorithm>
#include <utility>

namespace Soak {

using HostMonitor::AlarmMessage;
using HostMonitor::instanceIn;
using Zelm::Messaging::CallbackQueueInterface;
using Zelm::Msgs::Message;
using Zelm::Msgs::MessageDispatcherInterface;

namespace {

std::shared_ptr<Zelm::Msgs::MessageQueueInterface> makeCallbackQueue(CallbackQueueInterface::Callback callback)
{
    auto queue = HostMonitor::createQueue(MessageDispatcherInterface::CallbackQueueType);
    std::dynamic_pointer_cast<CallbackQueueInterface>(queue)->setCallback(std::move(callback));
    return queue;
}

}  // namespace

Flow::Flow(std::shared_ptr<MessageDispatcherInterface> dispatcher, unsigned long window)
    : dispatcher_(std::move(dispatcher)), window_(window),
      gate_(makeCallbackQueue([this](auto const& message) { pass(*message); })),
      pongs_(makeCallbackQueue([this](auto const& message) {
          auto const* const alarm = dynamic_cast<AlarmMessage const*>(message.get());
          if (alarm && alarm->sensor() == pingId)
              answer(Alarm, static_cast<unsigned long>(alarm->readingSequence()));
      }))
{
    dispatcher_->subscribe(gate_, Zelm::Msgs::Identifier(HostMonitor::Kinds::everyReading));
    dispatcher_->subscribe(pongs_, HostMonitor::componentAddress("alarm", alarmId),
                           Zelm::Msgs::Identifier(HostMonitor::Kinds::alarm));
    thread_ = std::thread([this] { run(); });
}

Flow::~Flow()
{
    stop();
}

std::string Flow::alarmThreshold()
{
    return std::string(R"({"sensor":")") + pingId + R"(","field":"usedPercent","above":50})";
}

void Flow::alarmHasStarted()
{
    std::lock_guard const lock(mutex_);
    isHigh_ = false;
    hasAlarm_ = true;
}

void Flow::alarmHasEnded()
{
    std::lock_guard const lock(mutex_);
    hasAlarm_ = false;
}

void Flow::handled(Receiver receiver, Message const& message)
{
    auto const* const reading = dynamic_cast<HostMonitor::MemoryReading const*>(&message);
    if (reading && instanceIn(message.senderID()) == pingId)
        answer(receiver, static_cast<unsigned long>(reading->sequence()));
}

void Flow::answer(Receiver receiver, unsigned long ping)
{
    std::lock_guard const lock(mutex_);
    answers_[receiver] = ping;
    changed_.notify_all();
}

void Flow::pass(Message const& message)
{
    if (instanceIn(message.senderID()) == pingId)
        return;
    std::unique_lock lock(mutex_);
    ++passed_;
    if (passed_ - handled_ == window_ / 4)
        changed_.notify_all();
    opened_.wait(lock, [this] { return passed_ - handled_ < window_ || isStopped_; });
}

void Flow::drain()
{
    std::unique_lock lock(mutex_);
    unsigned long const awaited = sent_ + 1;
    wanted_ = std::max(wanted_, awaited);
    changed_.notify_all();
    changed_.wait(lock, [&] { return answered_ >= awaited || isStopped_; });
}

void Flow::stop()
{
    if (!thread_.joinable())
        return;
    {
        std::lock_guard const lock(mutex_);
        isStopped_ = true;
        changed_.notify_all();
        opened_.notify_all();
    }
    thread_.join();
    dispatcher_->disconnectQueue(gate_);
    dispatcher_->disconnectQueue(pongs_);
}

unsigned long Flow::pings() const
{
    std::lock_guard const lock(mutex_);
    return sent_;
}

std::string Flow::state() const
{
    std::lock_guard const lock(mutex_);
    std::string text = std::to_string(passed_) + " readings of sensors have passed, " + std::to_string(handled_) +
                       " are known to be handled; ping " + std::to_string(sent_) + ", answers";
    for (auto const answer : answers_)
        text += ' ' + std::to_string(answer);
    return text + " (pump, log, alarm, far side)";
}

bool Flow::allHaveAnswered(unsigned long ping) const
{
    for (std::size_t receiver = 0; receiver < receivers; ++receiver)
        if (answers_[receiver] < ping && (receiver != Alarm || hasAlarm_))
            return false;
    return true;
}

void Flow::run()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isStopped_ || wanted_ > sent_ || passed_ - handled_ >= window_ / 4; });
        if (isStopped_)
            return;
        auto const passedBefore = passed_;
        auto const number = ++sent_;
        isHigh_ = !isHigh_;
        double const value = isHigh_ ? 100 : 0;
        lock.unlock();
        sendPing(number, value);
        lock.lock();
        changed_.wait(lock, [&] { return isStopped_ || allHaveAnswered(number); });
        handled_ = passedBefore;
        answered_ = number;
        changed_.notify_all();
        opened_.notify_all();
    }
}

void Flow::sendPing(unsigned long number, double value)
{
    auto const ping = std::make_shared<HostMonitor::MemoryReading>();
    ping->senderID = HostMonitor::componentAddress("soak", pingId);
    ping->destID = HostMonitor::alarmService();
    ping->sequence = static_cast<long>(number);
    ping->usedPercent = value;
    dispatcher_->dispatchMessage(ping);
}

}  // namespace Soak
