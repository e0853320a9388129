#include "app/stop_request.h"

#include "../support/child_process.h"

#include <gtest/gtest.h>

#include <iostream>
#include <thread>

#include <unistd.h>

namespace HostMonitor {

using Zelm::Testing::runChild;
using namespace std::chrono_literals;

namespace {

auto const now = [] { return std::chrono::steady_clock::now(); };

// A day that no test ever waits for: one that hangs is ended by the child's time limit.
auto const never = 24h;

}  // namespace

TEST(StopRequest, letsAMomentPassWithoutASignal)
{
    StopRequest stop;

    EXPECT_FALSE(stop.waitUntil(now()));
    EXPECT_FALSE(stop.waitUntil(now() - 1h));
    auto const moment = now() + 5ms;
    EXPECT_FALSE(stop.waitUntil(moment));
    EXPECT_GE(now(), moment);
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

ZELM_CHILD(waitsForEachSignal)
{
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, SIG_DFL);
        StopRequest stop;
        std::thread sender([signal] { kill(getpid(), signal); });
        bool const requested = stop.waitUntil(now() + never);
        sender.join();
        if (!requested || !stop.waitUntil(now()) || !stop.waitUntil(now() + never))
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
    return stop.waitUntil(now()) ? 1 : 0;
}

TEST(StopRequest, leavesASignalIgnoredThatWas)
{
    EXPECT_EQ(runChild("ignoresASignalFromTheStart").status, 0);
}

}  // namespace HostMonitor
