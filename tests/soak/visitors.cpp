#include "visitors.h"

#include "components.h"

#include "host_monitor/addresses.h"
#include "host_monitor/message_kinds.h"
#include "host_monitor/messaging.h"
#include "host_monitor/receiver.h"
#include "host_monitor/roles.h"

#include "zelm/components/component.h"
#include "zelm/messaging/callback_queue.h"
#include "zelm/messaging/fixed_depth_queue.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/handler_lookup.h"
#include "zelm/msgs/message.h"
#include "zelm/msgs/message_key.h"
#include "zelm/msgs/queue.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <thread>
#include <utility>

namespace Soak {

using HostMonitor::Address;
using Zelm::Msgs::Identifier;
using Zelm::Msgs::Message;
using Zelm::Msgs::MessageDispatcherInterface;
using Zelm::Msgs::MessageKey;
using MessagePointer = std::shared_ptr<Message const>;

namespace {

void stay(std::minstd_rand& random)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(2 + random() % 30));
}

std::string const& anyKind(std::minstd_rand& random)
{
    return sensorKinds[random() % sensorKinds.size()];
}

Address treeOf(std::string const& kind)
{
    return {HostMonitor::hostName(), kind};
}

/// Takes messages for a ledger without carrying them anywhere.
class Listener final : public Zelm::Msgs::ForwarderInterface {
public:
    explicit Listener(Ledger& ledger) : ledger_(ledger) {}

    bool forwardMessage(MessagePointer message) override
    {
        ledger_.take(*message);
        return true;
    }
    bool attach(std::weak_ptr<MessageDispatcherInterface>) override { return false; }
    void detach() override {}

private:
    Ledger& ledger_;
};

}  // namespace

Visitors::Visitors(Zelm::ComponentsRepositoryInterface& repository, Dispatcher dispatcher, Sensors const& sensors,
                   Faults& faults, std::string directory)
    : repository_(repository), dispatcher_(std::move(dispatcher)), sensors_(sensors), faults_(faults),
      directory_(std::move(directory))
{
}

void Visitors::visit(unsigned number, std::minstd_rand& random)
{
    struct {
        char const* name;
        void (Visitors::*use)(std::string const& id, Random& random);
    } const ways[] = {{"pump", &Visitors::usePump},
                      {"callback", &Visitors::useCallback},
                      {"fixed depth", &Visitors::useFixedDepth},
                      {"forwarder", &Visitors::useForwarder},
                      {"reporter", &Visitors::useReporter},
                      {"alarm", &Visitors::useAlarm}};
    auto const& way = ways[random() % std::size(ways)];
    (this->*way.use)("visiting " + std::string(way.name) + ' ' + std::to_string(number), random);
    add({1, 0, 0, 0, 0});
}

/// By an address tree, on a pump's thread.
void Visitors::usePump(std::string const& id, Random& random)
{
    auto const& kind = anyKind(random);
    Ledger ledger(id, faults_, Ledger::Piece);
    HostMonitor::Receiver receiver;
    receiver.start(dispatcher_, HostMonitor::createQueue(MessageDispatcherInterface::QueueType),
                   HostMonitor::componentAddress("soak", id),
                   {{MessageKey(MessageDispatcherInterface::everyMsg, treeOf(kind), {}),
                     [&ledger](MessagePointer const& message) { ledger.take(*message); }}});
    auto const arrival = sensors_.page();
    stay(random);
    auto const published = publishedSince(arrival);
    receiver.stop();
    check(id, ledger, kind, published);
}

/// By a pattern, on the sensors' threads.
void Visitors::useCallback(std::string const& id, Random& random)
{
    Ledger ledger(id, faults_, Ledger::Piece);
    auto const queue = HostMonitor::createQueue(MessageDispatcherInterface::CallbackQueueType);
    std::dynamic_pointer_cast<Zelm::Messaging::CallbackQueueInterface>(queue)->setCallback(
        [&ledger](MessagePointer const& message) { ledger.take(*message); });
    dispatcher_->subscribe(queue, Identifier(HostMonitor::Kinds::diskReading));
    auto const arrival = sensors_.page();
    stay(random);
    auto const published = publishedSince(arrival);
    dispatcher_->disconnectQueue(queue);
    check(id, ledger, "disk", published);
}

/// As a service, without a pump. What is missing was dropped, and that is counted.
void Visitors::useFixedDepth(std::string const& id, Random& random)
{
    Ledger ledger(id, faults_, Ledger::Gaps);
    auto const take = [&ledger](MessagePointer const& message) {
        ledger.take(*message);
        return false;
    };
    auto const queue = HostMonitor::createQueue(MessageDispatcherInterface::FixedDepthQueueType, {"64"});
    dispatcher_->registerService(queue, HostMonitor::alarmService());
    auto const arrival = sensors_.page();
    for (int i = 0; i < 3; ++i) {
        stay(random);
        Zelm::Msgs::processAllMessages(queue, take);
    }
    auto const published = publishedSince(arrival);
    dispatcher_->disconnectQueue(queue);
    Zelm::Msgs::processAllMessages(queue, take);

    unsigned long least = 0;
    for (auto const& entry : published)
        least += static_cast<unsigned long>(entry.second.next - entry.second.first);
    auto const dropped = std::dynamic_pointer_cast<Zelm::Messaging::FixedDepthQueueInterface>(queue)->droppedMessages();
    auto const counts = ledger.counts();
    unsigned long const accountedFor = counts.messages() + dropped;
    unsigned long const lost = least > accountedFor ? least - accountedFor : 0;
    if (lost > 0)
        faults_.add(id + ": of at least " + std::to_string(least) + " messages " + std::to_string(counts.messages()) +
                    " came and " + std::to_string(dropped) + " were dropped");
    add({0, counts.messages(), lost, counts.repeated, 0});
}

void Visitors::useForwarder(std::string const& id, Random& random)
{
    Ledger ledger(id, faults_, Ledger::Piece);
    auto const listener = std::make_shared<Listener>(ledger);
    dispatcher_->addForwarder(listener);
    auto const arrival = sensors_.page();
    stay(random);
    auto const published = publishedSince(arrival);
    dispatcher_->removeForwarder(listener);
    check(id, ledger, "", published);
}

/// The demo's component, into a file.
void Visitors::useReporter(std::string const& id, Random& random)
{
    auto const path = directory_ + '/' + id;
    auto const reporter = startComponent(repository_, "JsonLinesReporter", id, {path});
    auto const arrival = sensors_.page();
    stay(random);
    auto const published = publishedSince(arrival);
    endComponent(repository_, reporter);

    Ledger ledger(id, faults_, Ledger::Piece);
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        ledger.take(*Message::CreateFromMetaData(Zelm::Json::jsonStringtoMetaData(line)));
    std::remove(path.c_str());
    check(id, ledger, "", published);
    auto const reported = dynamic_cast<HostMonitor::ReporterInterface&>(*reporter).reported();
    if (reported != ledger.counts().messages())
        faults_.add(id + ": " + std::to_string(reported) + " messages reported, but " +
                    std::to_string(ledger.counts().messages()) + " in the file");
}

/// The demo's component, a second service beside the one that is always there. Every sensor that has published a
/// reading which it got is above its limit.
void Visitors::useAlarm(std::string const& id, Random& random)
{
    std::vector<std::string> thresholds;
    for (auto const& entry : sensors_.page().running)
        thresholds.push_back(R"({"sensor":")" + entry.first + R"(","field":"sequence","above":0})");
    auto const component = startComponent(repository_, "ThresholdAlarm", id, thresholds);
    auto const arrival = sensors_.page();
    stay(random);
    auto const published = publishedSince(arrival);
    endComponent(repository_, component);

    auto const alarms = dynamic_cast<HostMonitor::AlarmInterface&>(*component).published();
    unsigned long least = 0;
    for (auto const& threshold : dynamic_cast<HostMonitor::AlarmInterface&>(*component).watchedSensors())
        least += published.count(threshold);
    unsigned long const lost = least > alarms ? least - alarms : 0;
    if (lost > 0)
        faults_.add(id + ": " + std::to_string(alarms) + " alarms of " + std::to_string(least));
    add({0, 0, lost, 0, alarms});
}

std::map<std::string, Ledger::Stream> Visitors::publishedSince(Sensors::Page const& page) const
{
    std::map<std::string, Ledger::Stream> result;
    auto const note = [&](std::string const& id, long published) {
        auto const known = page.running.find(id);
        // The reading behind the last one that was published on arrival may have been on its way already.
        long const first = known == page.running.end() ? 1 : known->second + 2;
        if (published >= first)
            result[id] = {first, published + 1};
    };
    for (auto const& [id, published] : sensors_.page().running)
        note(id, published);
    for (auto const& [id, published] : sensors_.endedSince(page))
        note(id, published);
    return result;
}

void Visitors::check(std::string const& id, Ledger const& ledger, std::string const& kind,
                     std::map<std::string, Ledger::Stream> const& published)
{
    auto const seen = ledger.streams();
    auto const counts = ledger.counts();
    unsigned long lost = counts.lost;
    for (auto const& [sensor, wanted] : published) {
        if (sensor.rfind(kind, 0) != 0)
            continue;
        auto const found = seen.find(sensor);
        auto const stream = found == seen.end() ? Ledger::Stream{wanted.next, wanted.next} : found->second;
        long const missing = (stream.first > wanted.first ? stream.first - wanted.first : 0) +
                             (stream.next < wanted.next ? wanted.next - stream.next : 0);
        if (missing == 0)
            continue;
        lost += static_cast<unsigned long>(missing);
        faults_.add(id + ": of the readings " + std::to_string(wanted.first) + " to " +
                    std::to_string(wanted.next - 1) + " of " + sensor + " came " + std::to_string(stream.first) +
                    " to " + std::to_string(stream.next - 1));
    }
    add({0, counts.messages(), lost, counts.repeated, 0});
}

void Visitors::add(Totals const& totals)
{
    std::lock_guard const lock(mutex_);
    totals_.visits += totals.visits;
    totals_.messages += totals.messages;
    totals_.lost += totals.lost;
    totals_.repeated += totals.repeated;
    totals_.alarms += totals.alarms;
}

Visitors::Totals Visitors::totals() const
{
    std::lock_guard const lock(mutex_);
    return totals_;
}

}  // namespace Soak
