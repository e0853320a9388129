// The least that two threads need: a deque, a mutex, and a condition to wait for. No table, no handler to be found.
#include "messaging/two_cores.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace Zelm::Benchmarks {

namespace {

class BareQueue {
public:
    void put(MessagePtr message)
    {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            messages_.push_back(std::move(message));
        }
        changed_.notify_one();
    }

    MessagePtr take()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return !messages_.empty(); });
        MessagePtr message = std::move(messages_.front());
        messages_.pop_front();
        return message;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<MessagePtr> messages_;
};

void bareQueue(benchmark::State& state)
{
    TwoCores const cores;
    Receiver receiver;
    BareQueue queue;
    std::thread thread = cores.onSecond([&] {
        return std::thread([&] {
            while (MessagePtr const message = queue.take())
                receiver(*message);
        });
    });

    measureTransfer(state, receiver, [&](MessagePtr message) { queue.put(std::move(message)); });
    queue.put(nullptr);
    thread.join();
}
BENCHMARK(bareQueue)->Name("queue_pump_handler/floor/two_cores")->UseManualTime();

}  // namespace

}  // namespace Zelm::Benchmarks
