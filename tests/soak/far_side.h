/// @file
/// A forwarder to a second dispatcher: each message becomes JSON text, and a message again on the far side, as it would
/// over a wire. It goes one way.
///
/// Thread-safety: any thread may forward.
#pragma once

#include "zelm/msgs/dispatcher.h"

#include <functional>
#include <memory>

namespace Soak {

/// Carries what the function picks.
class Wire final : public Zelm::Msgs::ForwarderInterface {
public:
    using Picks = std::function<bool(Zelm::Msgs::Message const& message)>;

    Wire(std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> farSide, Picks picks);
    ~Wire() override;

    bool forwardMessage(std::shared_ptr<Zelm::Msgs::Message const> message) override;

    // Nothing comes from the far side.
    bool attach(std::weak_ptr<Zelm::Msgs::MessageDispatcherInterface>) override { return false; }
    void detach() override {}

private:
    std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> const farSide_;
    Picks const picks_;
};

}  // namespace Soak
