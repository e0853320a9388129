#include "host_monitor/notices.h"

#include "zelm/msgs/dispatcher.h"

#include <cstdio>
#include <exception>
#include <memory>

namespace HostMonitor {

namespace {

std::string textOfCurrentException()
{
    try {
        throw;
    } catch (std::exception const& failure) {
        return failure.what();
    } catch (...) {
        return "something was thrown that is no std::exception";
    }
}

}  // namespace

void publishFailure(Zelm::Msgs::MessageDispatcherInterface& dispatcher, Address const& sender) noexcept
{
    try {
        auto const message = std::make_shared<FailureMessage>();
        message->senderID = sender;
        message->error = textOfCurrentException();
        dispatcher.dispatchMessage(message);
    } catch (...) {
        static_cast<void>(std::fputs("host_monitor: a component has failed, and that couldn't be published\n", stderr));
    }
}

}  // namespace HostMonitor
