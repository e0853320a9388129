#include "table_reporter.h"

#include "alarm_text.h"

#include "host_monitor/messaging.h"

#include "zelm/core/exceptions.h"

#include <utility>

namespace HostMonitor {

using Zelm::Msgs::Message;
using Zelm::Msgs::MessageDispatcherInterface;
using Zelm::Msgs::MessageKey;

namespace {

constexpr char const* queueDepth = "1000";

}  // namespace

TableReporter::TableReporter(std::vector<std::string> const& arguments)
{
    if (!arguments.empty())
        throw Zelm::Exception::InvalidParameter("TableReporter takes no arguments");
}

void TableReporter::startLifeCycle()
{
    start(findDispatcher(), createQueue(MessageDispatcherInterface::FixedDepthQueueType, {queueDepth}));
}

void TableReporter::start(std::shared_ptr<MessageDispatcherInterface> const& dispatcher,
                          std::shared_ptr<Zelm::Msgs::MessageQueueInterface> const& queue)
{
    limits_ = std::dynamic_pointer_cast<Zelm::Messaging::FixedDepthQueueInterface>(queue);
    board_ = Board();
    reported_ = 0;

    // By patterns: whoever sends them.
    MessageKey const readings(Kinds::everyReading, {}, {});
    MessageKey const alarms(Kinds::everyAlarm, {}, {});
    receiver_.start(dispatcher, queue, componentAddress("reporter", instanceId()),
                    {{readings,
                      [this](std::shared_ptr<Message const> const& message) {
                          if (auto const reading = std::dynamic_pointer_cast<Reading const>(message))
                              report(reading);
                      }},
                     {alarms, [this](std::shared_ptr<Message const> const& message) {
                          if (auto const alarm = std::dynamic_pointer_cast<AlarmMessage const>(message))
                              report(*alarm);
                      }}});
}

void TableReporter::endLifeCycle()
{
    receiver_.stop();
}

void TableReporter::report(std::shared_ptr<Reading const> const& reading)
{
    board_.take(reading);
    show(screen_.isRefreshed() ? board_.lines(screen_.width()) : sampleLines({reading}, screen_.width()));
}

void TableReporter::report(AlarmMessage const& alarm)
{
    board_.take(alarm);
    show(screen_.isRefreshed() ? board_.lines(screen_.width()) : std::vector<std::string>{alarmLine(alarm)});
}

void TableReporter::show(std::vector<std::string> lines)
{
    if (auto const dropped = limits_ ? limits_->droppedMessages() : 0)
        lines.insert(lines.begin() + 1, std::to_string(dropped) + " messages have come too fast to be shown");
    screen_.show(lines);
    ++reported_;
}

}  // namespace HostMonitor
