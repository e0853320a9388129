#include "dispatcher/retired_receivers.h"

#include <algorithm>

namespace Zelm::Messaging {

void RetiredReceivers::makeRoom()
{
    auto const isGone = [](Retired const& each) { return each.receiver.expired(); };
    retired_.erase(std::remove_if(retired_.begin(), retired_.end(), isGone), retired_.end());
    retired_.reserve(retired_.size() + 1);
}

void RetiredReceivers::add(void const* whom, std::shared_ptr<Receiver> const& receiver) noexcept
{
    receiver->gate.close();
    retired_.push_back({++count_, whom, receiver});
}

std::shared_ptr<Receiver> RetiredReceivers::next(void const* whom, unsigned long& last) const
{
    for (Retired const& each : retired_) {
        if (each.number <= last || each.whom != whom)
            continue;
        last = each.number;
        if (auto receiver = each.receiver.lock())
            return receiver;
    }
    return nullptr;
}

}  // namespace Zelm::Messaging
