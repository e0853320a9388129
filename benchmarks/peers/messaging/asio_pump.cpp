// Boost.Asio: functions posted to an io_context that one thread runs. The context is told that there is one thread
// alone, which its documentation recommends where it is so.
#include "messaging/two_cores.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>

#include <thread>

namespace Zelm::Benchmarks {

namespace {

void postToContext(benchmark::State& state)
{
    TwoCores const cores;
    Receiver receiver;
    boost::asio::io_context context(1);
    auto work = boost::asio::make_work_guard(context);
    std::thread thread = cores.onSecond([&] { return std::thread([&] { context.run(); }); });

    measureTransfer(state, receiver, [&](MessagePtr message) {
        boost::asio::post(context, [&receiver, message = std::move(message)] { receiver(*message); });
    });
    work.reset();
    thread.join();
}
BENCHMARK(postToContext)->Name("queue_pump_handler/asio/two_cores")->UseManualTime();

}  // namespace

}  // namespace Zelm::Benchmarks
