#include "topology.h"

#include "components.h"
#include "far_side.h"

#include "host_monitor/addresses.h"
#include "host_monitor/alarm_message.h"
#include "host_monitor/messaging.h"
#include "host_monitor/roles.h"

#include "zelm/components/component.h"
#include "zelm/components/components_repository.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/message.h"
#include "zelm/msgs/message_key.h"
#include "zelm/msgs/queue.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace Soak {

using Zelm::Msgs::Message;
using Zelm::Msgs::MessageDispatcherInterface;
using Zelm::Msgs::MessageKey;

namespace {

/// Readings that wait at most, or are under way: few enough to be small beside all else that is in memory, and enough
/// to keep everybody busy.
constexpr unsigned long window = 500;

/// The alarm's limit for a sensor's number of readings.
constexpr long alarmLimit = 20;

/// The one of many that is remembered.
char const* volatile forgotten = nullptr;

bool isFromMemorySensor(Message const& message)
{
    auto const id = HostMonitor::instanceIn(message.senderID());
    return id == pingId || id.rfind("memory", 0) == 0;
}

/// A named pipe, made anew, and its reading end.
int makePipe(std::string const& path)
{
    std::remove(path.c_str());
    int const descriptor = mkfifo(path.c_str(), 0600) == 0 ? open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC) : -1;
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "there is no pipe for the log");
    return descriptor;
}

}  // namespace

Topology::Topology(Zelm::ComponentsRepositoryInterface& repository, Settings const& settings, StandardOutput& output,
                   Faults& faults, std::string const& directory)
    : repository_(repository), settings_(settings), output_(output), faults_(faults),
      dispatcherComponent_(
          startComponent(repository, MessageDispatcherInterface::DispatcherType, HostMonitor::dispatcherId, {})),
      farDispatcherComponent_(
          startComponent(repository, MessageDispatcherInterface::DispatcherType, "far side's dispatcher", {})),
      dispatcher_(std::dynamic_pointer_cast<MessageDispatcherInterface>(dispatcherComponent_)),
      farDispatcher_(std::dynamic_pointer_cast<MessageDispatcherInterface>(farDispatcherComponent_)),
      sensors_(repository), visitors_(repository, dispatcher_, sensors_, faults, directory), flow_(dispatcher_, window),
      pumpLedger_("pump", faults, Ledger::Whole), logLedger_("log", faults, Ledger::Whole),
      farLedger_("far side", faults, Ledger::Whole), wire_(std::make_shared<Wire>(farDispatcher_, isFromMemorySensor))
{
    receive(pump_, dispatcher_, "pump", [this](Message const& message) { takeAtPump(message); });
    receive(farPump_, farDispatcher_, "far side", [this](Message const& message) {
        farLedger_.take(message);
        flow_.handled(Flow::FarSide, message);
    });
    dispatcher_->addForwarder(wire_);
    openLog(directory + "/log");
}

Topology::~Topology()
{
    sensors_.removeAll();  // there are some if a round couldn't be ended
    flow_.stop();
    endComponent(repository_, log_);
    logReader_.reset();
    dispatcher_->removeForwarder(wire_);
    farPump_.stop();
    pump_.stop();
    endComponent(repository_, farDispatcherComponent_);
    endComponent(repository_, dispatcherComponent_);
}

void Topology::receive(HostMonitor::Receiver& receiver, Dispatcher const& dispatcher, std::string const& id,
                       std::function<void(Message const&)> take)
{
    receiver.start(dispatcher, HostMonitor::createQueue(MessageDispatcherInterface::QueueType),
                   HostMonitor::componentAddress("soak", id),
                   {{MessageKey(MessageDispatcherInterface::everyMsg, {HostMonitor::hostName()}, {}),
                     [take = std::move(take)](MessagePointer const& message) { take(*message); }}});
}

void Topology::openLog(std::string const& path)
{
    int const descriptor = makePipe(path);
    log_ = startComponent(repository_, "JsonLinesReporter", "log", {path});
    // Now that there is a writer, waiting for it is what is wanted.
    fcntl(descriptor, F_SETFL, 0);
    logReader_.emplace(descriptor, [this](std::string const& line) {
        auto const message = Message::CreateFromMetaData(Zelm::Json::jsonStringtoMetaData(line));
        logLedger_.take(*message);
        flow_.handled(Flow::Log, *message);
    });
}

/// What the soak is asked to get wrong: once for all but memory, at the first ping. Each round ends with pings, so that
/// one comes however slow the machine is and however short the run.
void Topology::takeSpoilt(Message const& message)
{
    if (settings_.broken == "memory")
        forgotten = new char[256]{static_cast<char>(handledByPump_)};
    bool const isFirstPing = !hasSpoiltAPing_ && HostMonitor::instanceIn(message.senderID()) == pingId;
    hasSpoiltAPing_ = hasSpoiltAPing_ || isFirstPing;
    while (isFirstPing && settings_.broken == "hang")
        std::this_thread::sleep_for(std::chrono::seconds(1));
    if (isFirstPing && settings_.broken == "duplicate")
        pumpLedger_.take(message);
    if (!isFirstPing || settings_.broken != "loss")
        pumpLedger_.take(message);
}

void Topology::takeAtPump(Message const& message)
{
    ++handledByPump_;
    takeSpoilt(message);
    if (auto const* const alarm = dynamic_cast<HostMonitor::AlarmMessage const*>(&message))
        if (HostMonitor::instanceIn(message.senderID()) == Flow::alarmId && alarm->sensor() != pingId &&
            (!alarm->raised() || alarm->readingSequence() != alarmLimit + 1))
            faults_.add("the alarm of " + alarm->sensor() + " is about reading " +
                        std::to_string(alarm->readingSequence()));
    flow_.handled(Flow::Pump, message);
}

void Topology::beginRound()
{
    roundBegan_ = sensors_.page();
    watched_ = sensors_.nextIds(settings_.sensors);
    std::vector<std::string> thresholds{Flow::alarmThreshold()};
    for (auto const& id : watched_)
        thresholds.push_back(R"({"sensor":")" + id + R"(","field":"sequence","above":)" + std::to_string(alarmLimit) +
                             "}");
    publishedBefore_ = published();
    pingsBefore_ = flow_.pings();
    table_ = startComponent(repository_, "TableReporter", "table", {});
    alarm_ = startComponent(repository_, "ThresholdAlarm", Flow::alarmId, thresholds);
    flow_.alarmHasStarted();
    sensors_.add(settings_.sensors);
}

void Topology::endRound()
{
    sensors_.removeAll();
    flow_.drain();
    endAlarm();
    flow_.drain();  // once more, for the alarms that the last ping has brought
    endTable();
    sensors_.forgetEnded();
}

void Topology::endAlarm()
{
    auto const pings = flow_.pings() - pingsBefore_;
    endComponent(repository_, alarm_);
    flow_.alarmHasEnded();
    std::set<std::string> const watched(watched_.begin(), watched_.end());
    alarmsExpected_ += pings;
    for (auto const& [id, readings] : sensors_.endedSince(roundBegan_))
        if (watched.count(id) != 0 && readings > alarmLimit)
            ++alarmsExpected_;
    alarmsPublished_ += dynamic_cast<HostMonitor::AlarmInterface&>(*alarm_).published();
    alarm_.reset();
}

void Topology::endTable()
{
    endComponent(repository_, table_);
    tableExpected_ += published() - publishedBefore_;
    shown_ += dynamic_cast<HostMonitor::ReporterInterface&>(*table_).reported();
    dropped_ += output_.takeDropped();
    table_.reset();
}

/// Readings and alarms.
unsigned long Topology::published() const
{
    return sensors_.totals().readings + flow_.pings() + alarmsPublished_ + visitors_.totals().alarms;
}

std::vector<Account> Topology::accounts() const
{
    auto const all = sensors_.totals();
    auto const memory = sensors_.totals("memory");
    auto const alarms = alarmsPublished_ + visitors_.totals().alarms;
    auto const missing = [](unsigned long expected, unsigned long received) {
        return expected > received ? expected - received : 0;
    };
    auto const accountOf = [&](std::string const& name, unsigned long expected, Ledger const& ledger) {
        auto const counts = ledger.counts();
        // The greater one: what came twice may hide a loss among the sums.
        auto const lost = std::max(missing(expected, counts.messages()), counts.lost);
        return Account{name, expected, counts.messages(), lost, counts.repeated};
    };
    auto const shown = shown_ + dropped_;
    auto const visitors = visitors_.totals();
    auto const everything = all.readings + all.ended + flow_.pings() + alarms;
    return {accountOf("pump", everything, pumpLedger_),
            accountOf("log", everything, logLedger_),
            accountOf("far side", memory.readings + memory.ended + flow_.pings(), farLedger_),
            {"alarm", alarmsExpected_, alarmsPublished_, missing(alarmsExpected_, alarmsPublished_), 0},
            {"table", tableExpected_, shown, missing(tableExpected_, shown), 0},
            {"visitors", visitors.messages + visitors.lost, visitors.messages, visitors.lost, visitors.repeated}};
}

unsigned long Topology::handled() const
{
    return pumpLedger_.counts().messages();
}

}  // namespace Soak
