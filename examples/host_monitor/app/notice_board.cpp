#include "notice_board.h"

#include "host_monitor/messaging.h"

namespace HostMonitor {

using Zelm::Msgs::Message;
using Zelm::Msgs::MessageDispatcherInterface;
using Zelm::Msgs::MessageKey;

NoticeBoard::NoticeBoard(StopRequest& stop, std::size_t sensors) : stop_(stop), runningSensors_(sensors) {}

void NoticeBoard::start()
{
    MessageKey const finished(Kinds::finished, {}, {});
    MessageKey const failures(Kinds::failure, {}, {});
    receiver_.start(findDispatcher(), createQueue(MessageDispatcherInterface::QueueType),
                    componentAddress("application", "host_monitor"),
                    {{finished, [this](std::shared_ptr<Message const> const&) { takeFinished(); }},
                     {failures, [this](std::shared_ptr<Message const> const& message) {
                          if (auto const failure = std::dynamic_pointer_cast<FailureMessage const>(message))
                              takeFailure(*failure);
                      }}});
}

void NoticeBoard::stop()
{
    receiver_.stop();
}

void NoticeBoard::takeFinished()
{
    if (--runningSensors_ == 0)
        stop_.request();
}

void NoticeBoard::takeFailure(FailureMessage const& message)
{
    if (!failure_)
        failure_ = "component \"" + instanceIn(message.senderID()) + "\": " + message.error();
    stop_.request();
}

}  // namespace HostMonitor
