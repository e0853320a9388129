/// @file
/// The component that a probe becomes: publishes its readings, on a thread of its own, from its start to its end. A
/// factory makes one for each of its sensor types:
///
///     addComponentCreator("MemorySensor", [](auto const& arguments) {
///         return std::make_shared<Sensor>("memory", parseSchedule(arguments),
///                                         std::make_unique<MemoryProbe>(withoutSchedule(arguments)));
///     });
///
/// Thread-safety: published may be called by any thread; all else belongs to the thread that starts and ends it.
#pragma once

#include "host_monitor/probe.h"
#include "host_monitor/reading_publisher.h"
#include "host_monitor/roles.h"
#include "host_monitor/schedule.h"

#include "zelm/components/component.h"
#include "zelm/core/export.h"

#include <memory>
#include <string>

namespace HostMonitor {

class ZELM_EXPORT Sensor final : public Zelm::Component_Base,
                                 public Zelm::LifeCycle::PassiveInterface,
                                 public SensorInterface {
public:
    /// The kind is the middle part of the address that the readings come from.
    Sensor(std::string kind, Schedule const& schedule, std::unique_ptr<Probe> probe);
    ~Sensor() override;

    /// Throws Zelm::Exception::InvalidOperation without a dispatcher, and what ReadingPublisher::start throws.
    void startLifeCycle() override;
    void endLifeCycle() override;

    Schedule schedule() const override { return schedule_; }
    void setSchedule(Schedule const& schedule) override { schedule_ = schedule; }
    unsigned long published() const override { return publisher_.published(); }

private:
    std::string const kind_;
    Schedule schedule_;
    std::unique_ptr<Probe> const probe_;
    ReadingPublisher publisher_;  // last: its thread uses the probe
};

}  // namespace HostMonitor
