/// @file
/// A limit for one field of one sensor's readings, and whether it is crossed.
///
///     Threshold threshold{"cpu", "loadPercent", Threshold::Side::Above, 90, 10};
///     threshold.update(91);      // true: raised
///     threshold.update(95);      // nothing new
///     threshold.update(85);      // nothing new, since 85 is within the hysteresis
///     threshold.update(80);      // false: back
///
/// Thread-safety: none.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace HostMonitor {

class Threshold {
public:
    enum class Side { Above, Below };

    /// The hysteresis, not negative, is how far a value has to come back behind the limit: one that dances around the
    /// limit doesn't raise an alarm each time.
    Threshold(std::string sensor, std::string field, Side side, double limit, double hysteresis)
        : sensor_(std::move(sensor)), field_(std::move(field)), side_(side), limit_(limit), hysteresis_(hysteresis)
    {
    }

    std::string const& sensor() const { return sensor_; }  ///< instance id
    std::string const& field() const { return field_; }    ///< name, with dots into lists; see field_value.h
    Side side() const { return side_; }
    double limit() const { return limit_; }
    bool isRaised() const { return isRaised_; }

    /// Takes in the next value. Whether the alarm is raised now, if that is new; empty otherwise.
    std::optional<bool> update(double value);

private:
    std::string sensor_;
    std::string field_;
    Side side_;
    double limit_;
    double hysteresis_;
    bool isRaised_ = false;
};

}  // namespace HostMonitor
