// CAF: an actor on the sending thread, and one with a single handler that the scheduler runs on a thread of its own.
// A scheduled actor is what its documentation recommends; one that is given a thread (detached) is no faster here, and
// neither is sending without an actor (anon_send).
#include "messaging/two_cores.h"

#include <caf/all.hpp>

#include <memory>

CAF_ALLOW_UNSAFE_MESSAGE_TYPE(Zelm::Benchmarks::MessagePtr)  // that is, no way to send it to another process

namespace Zelm::Benchmarks {

namespace {

/// One worker for one receiver.
struct OneWorker : caf::actor_system_config {
    OneWorker() { set("scheduler.max-threads", 1); }
};

void betweenActors(benchmark::State& state)
{
    TwoCores const cores;
    Receiver receiver;
    OneWorker config;
    auto const system = cores.onSecond([&] { return std::make_unique<caf::actor_system>(config); });
    auto const handling = system->spawn([&](caf::event_based_actor*) -> caf::behavior {
        return {[&](MessagePtr const& message) { receiver(*message); }};
    });
    caf::scoped_actor self(*system);

    measureTransfer(state, receiver, [&](MessagePtr message) { self->send(handling, std::move(message)); });
    self->send_exit(handling, caf::exit_reason::user_shutdown);
}
BENCHMARK(betweenActors)->Name("queue_pump_handler/caf/two_cores")->UseManualTime();

}  // namespace

}  // namespace Zelm::Benchmarks
