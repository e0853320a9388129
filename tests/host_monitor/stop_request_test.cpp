#include "app/stop_request.h"

#include "../support/child_process.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>

#include <sys/syscall.h>
#include <unistd.h>

namespace HostMonitor {

using Zelm::Testing::runChild;

TEST(StopRequest, isNotThereAtFirst)
{
    StopRequest stop;

    EXPECT_FALSE(stop.isRequested());
}

TEST(StopRequest, canBeMadeByAnotherThreadAndStays)
{
    StopRequest stop;
    std::thread other([&stop] { stop.request(); });
    stop.wait();
    other.join();

    EXPECT_TRUE(stop.isRequested());
    stop.wait();
}

ZELM_CHILD(looksAtTheHandlingOfASignal)
{
    auto const handler = [] {
        struct sigaction action = {};
        sigaction(SIGINT, nullptr, &action);
        return action.sa_handler;
    };
    std::signal(SIGINT, SIG_DFL);  // whatever this test was started with
    {
        StopRequest const stop;
        std::cout << (handler() == SIG_DFL ? "default " : "handled ");
    }
    std::cout << (handler() == SIG_DFL ? "default" : "handled");
    return 0;
}

TEST(StopRequest, putsTheFormerHandlingBack)
{
    EXPECT_EQ(runChild("looksAtTheHandlingOfASignal").out, "handled default");
}

#ifdef SYS_poll
constexpr long pollingCall = SYS_poll;
#else
constexpr long pollingCall = SYS_ppoll;  // what poll makes of itself where the kernel has no other
#endif

/// The thread sanitizer now and then loses a signal that comes just before the call that waits for it.
void awaitThatMainThreadPolls()
{
    if (!Zelm::Testing::underThreadSanitizer)
        return;
    std::string call;  // "running", or a number and its arguments
    do {
        std::ifstream file("/proc/self/task/" + std::to_string(getpid()) + "/syscall");
        if (!(file >> call))
            return;  // not shown here
    } while (call != std::to_string(pollingCall));
}

ZELM_CHILD(waitsForEachSignal)
{
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, SIG_DFL);
        StopRequest stop;
        std::thread sender([signal] {
            awaitThatMainThreadPolls();
            kill(getpid(), signal);
        });
        stop.wait();
        sender.join();
        stop.wait();
        if (!stop.isRequested())
            return 1;
    }
    return 0;
}

TEST(StopRequest, endsAWaitAtOnceAndStaysRequested)
{
    EXPECT_EQ(runChild("waitsForEachSignal").status, 0);
}

ZELM_CHILD(raisesASignalTwice)
{
    std::signal(SIGINT, SIG_DFL);
    StopRequest const stop;
    std::raise(SIGINT);
    std::cout << "alive" << std::endl;
    std::raise(SIGINT);
    std::cout << "still alive" << std::endl;
    return 0;
}

TEST(StopRequest, endsTheProcessAtASecondSignalOfTheSameKind)
{
    auto const child = runChild("raisesASignalTwice");

    EXPECT_EQ(child.status, 128 + SIGINT);
    EXPECT_EQ(child.out, "alive\n");
}

ZELM_CHILD(ignoresASignalFromTheStart)
{
    std::signal(SIGHUP, SIG_IGN);
    StopRequest stop;
    std::raise(SIGHUP);
    return stop.isRequested() ? 1 : 0;
}

TEST(StopRequest, leavesASignalIgnoredThatWas)
{
    EXPECT_EQ(runChild("ignoresASignalFromTheStart").status, 0);
}

}  // namespace HostMonitor
