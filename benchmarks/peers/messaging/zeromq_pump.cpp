// ZeroMQ inside a process: a PAIR of sockets, which is what its guide recommends between two threads; PUSH and PULL are
// no faster here. What travels is the address of a message that stays where it is: less than all others do, who hand
// over ownership.
#include "messaging/two_cores.h"

#include <zmq.hpp>

#include <thread>

namespace Zelm::Benchmarks {

namespace {

void inprocSockets(benchmark::State& state)
{
    TwoCores const cores;
    Receiver receiver;
    zmq::context_t context(0);  // no thread for input and output: nothing leaves the process
    zmq::socket_t sending(context, zmq::socket_type::pair);
    zmq::socket_t receiving(context, zmq::socket_type::pair);
    // Without a limit, as our own queue and those of the others.
    sending.set(zmq::sockopt::sndhwm, 0);
    receiving.set(zmq::sockopt::rcvhwm, 0);
    receiving.bind("inproc://messages");
    sending.connect("inproc://messages");
    auto const send = [&](Msgs::Message const* message) {
        sending.send(zmq::buffer(&message, sizeof message), zmq::send_flags::none);
    };
    std::thread thread = cores.onSecond([&] {
        return std::thread([&] {
            Msgs::Message const* message = nullptr;
            while (receiving.recv(zmq::buffer(&message, sizeof message)) && message)
                receiver(*message);
        });
    });

    measureTransfer(state, receiver, [&](MessagePtr const& message) { send(message.get()); });
    send(nullptr);
    thread.join();
}
BENCHMARK(inprocSockets)->Name("queue_pump_handler/zeromq/two_cores")->UseManualTime();

}  // namespace

}  // namespace Zelm::Benchmarks
