#include "dispatcher/delivery.h"

#include <utility>

namespace Zelm::Messaging {

namespace {

thread_local Delivery* innermostDelivery = nullptr;

}  // namespace

Delivery::Delivery(void const* dispatcher, MessagePointer message, Receivers receivers)
    : dispatcher_(dispatcher), message_(std::move(message)), receivers_(std::move(receivers)), outer_(innermostDelivery)
{
    innermostDelivery = this;
}

Delivery::~Delivery()
{
    innermostDelivery = outer_;
}

bool Delivery::run()
{
    deliverOutermostFirst(this, dispatcher_);
    if (failure_)
        std::rethrow_exception(failure_);
    return isTaken_;
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as the deliveries are nested, each of which is a call deeper itself
void Delivery::deliverOutermostFirst(Delivery* delivery, void const* dispatcher)
{
    if (!delivery)
        return;
    deliverOutermostFirst(delivery->outer_, dispatcher);
    if (delivery->dispatcher_ == dispatcher)
        delivery->deliverRest();
}

void Delivery::deliverRest()
{
    while (next_ < receivers_.size()) {
        Receiver& receiver = *receivers_[next_++];
        deliverTo(receiver, next_ == receivers_.size());
    }
}

void Delivery::deliverTo(Receiver& receiver, bool isLast)
{
    try {
        CallGate::Call const passed(receiver.gate);
        if (passed && receiver.take(isLast ? std::move(message_) : message_))
            isTaken_ = true;
    } catch (...) {
        if (!failure_)
            failure_ = std::current_exception();
    }
}

}  // namespace Zelm::Messaging
