/// @file
/// Receivers that a dispatcher has taken out of its tables while calls may be left behind their gates. Whoever
/// disconnects the same queue or forwarder later has to wait for these calls too, so they can be found here until they
/// are over. The receivers belong to the deliveries: none lives longer for standing here.
///
/// Thread-safety: none of its own; concurrent reads are fine.
#pragma once

#include "dispatcher/receiver.h"

#include <memory>
#include <vector>

namespace Zelm::Messaging {

class RetiredReceivers {
public:
    /// Forgets those that are gone, and makes sure that the next add can't fail.
    void makeRoom();

    /// Closes the receiver's gate. `whom` is the queue or forwarder, as a name.
    void add(void const* whom, std::shared_ptr<Receiver> const& receiver) noexcept;

    /// One receiver after the other of that queue or forwarder, then an empty pointer. `last` begins as 0 and remembers
    /// how far this has come, also if the list is changed meanwhile.
    std::shared_ptr<Receiver> next(void const* whom, unsigned long& last) const;

private:
    struct Retired {
        unsigned long number;  // ascending from 1
        void const* whom;
        std::weak_ptr<Receiver> receiver;
    };
    std::vector<Retired> retired_;
    unsigned long count_ = 0;
};

}  // namespace Zelm::Messaging
