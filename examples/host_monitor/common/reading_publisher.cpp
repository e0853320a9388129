#include "host_monitor/reading_publisher.h"

#include "host_monitor/notices.h"

#include "zelm/core/exceptions.h"

#include <stdexcept>
#include <utility>

namespace HostMonitor {

ReadingPublisher::~ReadingPublisher()
{
    stop();
}

void ReadingPublisher::start(Dispatcher dispatcher, Address sender, Schedule const& schedule, TakeReading takeReading)
{
    if (schedule.period.count() == 0 && schedule.readings == 0)
        throw Zelm::Exception::InvalidParameter("a period of 0 needs a number of readings");
    stop();
    dispatcher_ = std::move(dispatcher);
    sender_ = std::move(sender);
    destination_ = alarmService();
    takeReading_ = std::move(takeReading);
    published_ = 0;
    ticker_.emplace(schedule.period);
    thread_ = std::thread([this, limit = schedule.readings] { run(limit); });
}

void ReadingPublisher::stop()
{
    if (!thread_.joinable())
        return;
    ticker_->stop();
    thread_.join();
}

void ReadingPublisher::run(unsigned long limit)
{
    try {
        while ((limit == 0 || published_ < limit) && ticker_->waitForTick())
            publishReading();
        publishEnd();
    } catch (...) {
        publishFailure(*dispatcher_, sender_);
    }
}

void ReadingPublisher::publishReading()
{
    auto const reading = takeReading_();
    if (!reading)
        throw std::runtime_error("no reading was taken");
    reading->senderID = sender_;
    reading->destID = destination_;
    reading->sequence = static_cast<long>(published_ + 1);
    dispatcher_->dispatchMessage(reading);
    ++published_;
}

void ReadingPublisher::publishEnd()
{
    auto const message = std::make_shared<FinishedMessage>();
    message->senderID = sender_;
    message->published = static_cast<long>(published_);
    dispatcher_->dispatchMessage(message);
}

}  // namespace HostMonitor
