#include "messaging/two_cores.h"

#include <string>
#include <thread>

namespace Zelm::Benchmarks {

namespace {

constexpr std::size_t messageCount = 5000;
constexpr unsigned long kind = Msgs::Identifier::toValue(10, 1, 1, 7);

cpu_set_t ownCores()
{
    cpu_set_t cores;
    CPU_ZERO(&cores);
    sched_getaffinity(0, sizeof cores, &cores);
    return cores;
}

/// The set of one core alone: that with this number among those of `cores`, or the last of them.
cpu_set_t only(int number, cpu_set_t const& cores)
{
    cpu_set_t result = cores;
    for (int core = 0; core < CPU_SETSIZE && number >= 0; ++core) {
        if (!CPU_ISSET(core, &cores))
            continue;
        CPU_ZERO(&result);
        CPU_SET(core, &result);
        --number;
    }
    return result;
}

}  // namespace

TwoCores::TwoCores() : before_(ownCores()), first_(only(0, before_)), second_(only(1, before_))
{
    moveTo(first_);
}

TwoCores::~TwoCores()
{
    moveTo(before_);
}

void TwoCores::moveTo(cpu_set_t const& cores)
{
    // Where it isn't allowed the threads are where the system puts them, all ways alike.
    static_cast<void>(sched_setaffinity(0, sizeof cores, &cores));
}

std::vector<MessagePtr> const& messagesMadeBefore()
{
    static std::vector<MessagePtr> const messages = [] {
        std::vector<std::string> const sender{"plant 3", "line 1", "press 7"};
        std::vector<MessagePtr> made;
        for (std::size_t i = 0; i < messageCount; ++i)
            made.push_back(std::make_shared<Msgs::Message>(kind, sender, std::vector<std::string>()));
        return made;
    }();
    return messages;
}

void Receiver::await()
{
    while (!hasAll_.exchange(false, std::memory_order_acquire))
        std::this_thread::yield();
}

bool Receiver::hasHandledAll()
{
    return std::exchange(sum_, 0) == kind * messageCount;
}

}  // namespace Zelm::Benchmarks
