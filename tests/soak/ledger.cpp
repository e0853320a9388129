#include "ledger.h"

#include "host_monitor/addresses.h"
#include "host_monitor/alarm_message.h"
#include "host_monitor/notices.h"
#include "host_monitor/reading.h"

#include "zelm/msgs/message.h"

#include <sstream>
#include <utility>

namespace Soak {

Ledger::Ledger(std::string name, Faults& faults, Extent extent)
    : name_(std::move(name)), faults_(faults), extent_(extent)
{
}

void Ledger::take(Zelm::Msgs::Message const& message)
{
    auto const sender = HostMonitor::instanceIn(message.senderID());
    std::lock_guard const lock(mutex_);
    if (auto const* const reading = dynamic_cast<HostMonitor::Reading const*>(&message))
        takeReading(sender, reading->sequence());
    else if (auto const* const end = dynamic_cast<HostMonitor::FinishedMessage const*>(&message))
        takeEnd(sender, end->published());
    else if (dynamic_cast<HostMonitor::AlarmMessage const*>(&message))
        ++counts_.alarms;
    else if (auto const* const failure = dynamic_cast<HostMonitor::FailureMessage const*>(&message))
        faults_.add(name_ + ": " + sender + " has failed: " + failure->error());
    else {
        std::ostringstream text;
        text << name_ << ": a message of a kind that nobody sends, " << message.id() << " from " << sender;
        faults_.add(text.str());
    }
}

Ledger::Stream& Ledger::streamOf(std::string const& sensor, long sequence)
{
    auto const [stream, isNew] = streams_.try_emplace(sensor);
    if (isNew && extent_ != Whole)
        stream->second = {sequence, sequence};
    return stream->second;
}

void Ledger::takeReading(std::string const& sensor, long sequence)
{
    ++counts_.readings;
    auto& stream = streamOf(sensor, sequence);
    if (sequence < stream.next) {
        ++counts_.repeated;
        faults_.add(name_ + ": reading " + std::to_string(sequence) + " of " + sensor + " came behind reading " +
                    std::to_string(stream.next - 1));
        return;
    }
    noteLost(sensor, stream.next, sequence);
    stream.next = sequence + 1;
}

void Ledger::takeEnd(std::string const& sensor, long published)
{
    ++counts_.ends;
    auto& stream = streamOf(sensor, published + 1);
    if (stream.next > published + 1) {
        ++counts_.repeated;
        faults_.add(name_ + ": " + sensor + " has published " + std::to_string(published) + " readings, but " +
                    std::to_string(stream.next - 1) + " came");
    }
    noteLost(sensor, stream.next, published + 1);
    if (extent_ == Whole)
        streams_.erase(sensor);
    else
        stream.next = published + 1;
}

void Ledger::noteLost(std::string const& sensor, long from, long to)
{
    if (from >= to || extent_ == Gaps)
        return;
    counts_.lost += static_cast<unsigned long>(to - from);
    faults_.add(name_ + ": readings " + std::to_string(from) + " to " + std::to_string(to - 1) + " of " + sensor +
                " are missing");
}

Ledger::Counts Ledger::counts() const
{
    std::lock_guard const lock(mutex_);
    return counts_;
}

std::map<std::string, Ledger::Stream> Ledger::streams() const
{
    std::lock_guard const lock(mutex_);
    return streams_;
}

}  // namespace Soak
