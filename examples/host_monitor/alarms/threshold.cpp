#include "threshold.h"

namespace HostMonitor {

std::optional<bool> Threshold::update(double value)
{
    // How far the value lies beyond the limit, on whichever side.
    double const excess = side_ == Side::Above ? value - limit_ : limit_ - value;
    bool const isRaised = isRaised_ ? excess > -hysteresis_ : excess > 0;
    if (isRaised == isRaised_)
        return std::nullopt;
    isRaised_ = isRaised;
    return isRaised;
}

}  // namespace HostMonitor
