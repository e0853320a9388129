/// @file
/// The way of one message to its receivers, on the thread that dispatches it.
///
/// A receiver may be code that dispatches on its part, at the same dispatcher. Such a message mustn't overtake the one
/// whose delivery it is within, or a queue would get the two in the wrong order. So before it is delivered, the
/// receivers that still wait for the outer message are given that, from within the inner call. Both promises hold then:
/// what a thread dispatches reaches each queue in order, and it has been handed out when dispatchMessage returns.
///
/// What a receiver throws keeps the message from nobody: the first exception comes out at the end.
#pragma once

#include "dispatcher/receiver.h"

#include <cstddef>
#include <exception>

namespace Zelm::Messaging {

/// A local variable of the dispatching function: deliveries of a thread end in the reverse order of their beginning.
class Delivery {
public:
    /// `dispatcher` tells the deliveries of different dispatchers apart, which don't wait for each other.
    Delivery(void const* dispatcher, MessagePointer message, Receivers receivers);
    ~Delivery();
    Delivery(Delivery const&) = delete;
    Delivery& operator=(Delivery const&) = delete;

    /// Hands the message to its receivers, but for those whose gate is closed. Whether one of them counts as a taker.
    /// Throws what a receiver threw, if one did.
    bool run();

private:
    static void deliverOutermostFirst(Delivery* delivery, void const* dispatcher);
    void deliverRest();
    void deliverTo(Receiver& receiver, bool isLast);

    void const* const dispatcher_;
    MessagePointer message_;  // moved into the last receiver
    Receivers const receivers_;
    std::size_t next_ = 0;  // the receiver whose turn it is
    bool isTaken_ = false;
    std::exception_ptr failure_;
    Delivery* const outer_;  // the delivery of this thread, at any dispatcher, that this one is within
};

}  // namespace Zelm::Messaging
