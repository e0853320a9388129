/// @file
/// The monitor itself: brings the configured components onto the stage in the order of their roles, waits, and takes
/// them off in the reverse order.
///
///     dispatcher      |------------------------------------|
///     notice board      |--------------------------------|
///     reporters            |-------------------------|
///     alarms                  |------------------|
///     sensors                    |-----------|
///
/// Each layer begins to receive before the one below it begins to send, and has handled all that it was sent before it
/// ends itself: no message is lost at either end. What the components tell each other is no affair of the monitor's.
#pragma once

#include "command_line.h"
#include "components.h"
#include "configuration.h"
#include "notice_board.h"
#include "stop_request.h"

#include "zelm/components/components_repository.h"

#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

class Monitor {
public:
    /// Makes the dispatcher and the components, without starting these; throws as createComponents does, and if an id
    /// is taken. The schedule of the options goes before that of the configuration.
    Monitor(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration, Options const& options,
            StopRequest& stop);
    /// Ends the dispatcher, which outlives all components.
    ~Monitor();
    Monitor(Monitor const&) = delete;
    Monitor& operator=(Monitor const&) = delete;

    /// Starts the components and waits until a stop is requested, all sensors have finished, or a component has failed;
    /// then ends them all, whatever happens. Throws std::runtime_error, whose text names the component, for the first
    /// failure.
    void run();

    /// A line for each component: how many messages it has published or reported.
    std::string summary() const;

private:
    void start(std::string const& id, std::shared_ptr<Zelm::ComponentInterface> const& component);
    void startAll();
    void endAll(std::exception_ptr& failure);

    Zelm::ComponentsRepositoryInterface& repository_;
    StopRequest& stop_;
    std::shared_ptr<Zelm::ComponentInterface> dispatcher_;
    Components components_;
    std::vector<std::shared_ptr<Zelm::ComponentInterface>> running_;  // in the order of their start
    NoticeBoard notices_;
};

}  // namespace HostMonitor
