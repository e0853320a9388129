#include "json_lines_reporter.h"

#include "host_monitor/addresses.h"
#include "host_monitor/messaging.h"

#include "zelm/core/exceptions.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/writer_json.h"

#include <sstream>

namespace HostMonitor {

using Zelm::Msgs::Message;
using Zelm::Msgs::MessageDispatcherInterface;
using Zelm::Msgs::MessageKey;

namespace {

std::string parsePath(std::vector<std::string> const& arguments)
{
    if (arguments.size() != 1 || arguments.front().empty())
        throw Zelm::Exception::InvalidParameter("JsonLinesReporter takes one argument, a file or -");
    return arguments.front();
}

}  // namespace

std::string toJsonLine(Message const& message)
{
    Zelm::MetaData::Element element;
    message.copyToMetaData(element);
    std::ostringstream line;
    Zelm::MetaData::WriterJson::Write(element, line, false);
    line << '\n';
    return line.str();
}

JsonLinesReporter::JsonLinesReporter(std::vector<std::string> const& arguments) : path_(parsePath(arguments)) {}

void JsonLinesReporter::startLifeCycle()
{
    start(findDispatcher(), createQueue(MessageDispatcherInterface::QueueType));
}

void JsonLinesReporter::start(std::shared_ptr<MessageDispatcherInterface> const& dispatcher,
                              std::shared_ptr<Zelm::Msgs::MessageQueueInterface> const& queue)
{
    output_.emplace(path_);
    reported_ = 0;

    // By the address tree: whatever is sent from this machine.
    MessageKey const everythingFromHere(MessageDispatcherInterface::everyMsg, {hostName()}, {});
    receiver_.start(
        dispatcher, queue, componentAddress("reporter", instanceId()),
        {{everythingFromHere, [this](std::shared_ptr<Message const> const& message) { report(*message); }}});
}

void JsonLinesReporter::endLifeCycle()
{
    receiver_.stop();  // first: what has arrived is still written
    output_.reset();
}

void JsonLinesReporter::report(Message const& message)
{
    output_->write(toJsonLine(message));
    ++reported_;
}

}  // namespace HostMonitor
