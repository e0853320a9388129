#include "dispatcher/striped_mutex.h"

#include "tests/messaging/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <thread>
#include <utility>
#include <vector>

namespace Zelm::Messaging {
namespace {

using namespace Testing;

using Reading = std::shared_lock<StripedMutex>;
using Writing = std::unique_lock<StripedMutex>;

// More than there are stripes, so that some threads share one.
constexpr int manyThreads = 40;

TEST(StripedMutex, letsManyThreadsReadAtOnce)
{
    StripedMutex mutex;
    std::atomic<int> reading{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < manyThreads; ++i)
        threads.emplace_back([&] {
            Reading const lock(mutex);
            ++reading;
            EXPECT_TRUE(becomesTrue([&] { return reading == manyThreads; }));
        });
    for (auto& thread : threads)
        thread.join();
}

TEST(StripedMutex, letsNobodyReadOrWriteWhileOneWrites)
{
    StripedMutex mutex;
    Writing writing(mutex);
    auto other = inAnotherThread([&] { Writing const lock(mutex); });
    auto reading = inAnotherThread([&] { Reading const lock(mutex); });

    EXPECT_TRUE(isStillBlocked(other));
    EXPECT_TRUE(isStillBlocked(reading));

    writing.unlock();
    other.get();
    reading.get();
}

TEST(StripedMutex, letsNobodyWriteWhileOneReadsOnWhicheverStripe)
{
    StripedMutex mutex;
    for (int i = 0; i < 16; ++i) {  // each time a thread of the next number
        std::promise<void> isIn;
        std::promise<void> mayGo;
        std::thread reader([&] {
            Reading const lock(mutex);
            isIn.set_value();
            mayGo.get_future().wait();
        });
        isIn.get_future().wait();
        std::atomic<bool> hasWritten{false};
        std::thread writer([&] {
            mutex.lock();  // which asks for no number
            hasWritten = true;
            mutex.unlock();
        });

        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_FALSE(hasWritten);

        mayGo.set_value();
        reader.join();
        writer.join();
        EXPECT_TRUE(hasWritten);
    }
}

TEST(StripedMutex, letsOneThreadWriteWhileNobodyReads)
{
    constexpr int each = 300;
    StripedMutex mutex;
    int value = 0;  // a race under -fsanitize=thread, if not a wrong sum, wherever two get in at once
    int same = 0;
    std::atomic<long> torn{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < each; ++n) {
                Writing const lock(mutex);
                ++value;
                ++same;
            }
        });
    for (int i = 0; i < 20; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < each; ++n) {
                Reading const lock(mutex);
                torn += value != same;
            }
        });
    for (auto& thread : threads)
        thread.join();

    EXPECT_EQ(value, 3 * each);
    EXPECT_EQ(torn, 0);
}

/// Readers that stay until they are let go.
class Readers {
public:
    explicit Readers(StripedMutex& mutex)
    {
        for (int i = 0; i < manyThreads; ++i)
            threads_.emplace_back([this, &mutex] {
                Reading const lock(mutex);
                ++reading_;
                mayGo_.wait();
            });
    }
    ~Readers()
    {
        letGo();
        for (auto& thread : threads_)
            thread.join();
    }
    Readers(Readers const&) = delete;
    Readers& operator=(Readers const&) = delete;

    void letGo()
    {
        if (!std::exchange(areLetGo_, true))
            letGo_.set_value();
    }
    bool areAllIn() const { return reading_ == manyThreads; }
    bool isNoneIn() const { return reading_ == 0; }

private:
    bool areLetGo_ = false;
    std::promise<void> letGo_;
    std::shared_future<void> mayGo_ = letGo_.get_future().share();
    std::atomic<int> reading_{0};
    std::vector<std::thread> threads_;
};

TEST(StripedMutex, keepsNoWriterWaitingForReadersThatComeLaterHoweverManyThereAre)
{
    StripedMutex mutex;
    std::future<void> writing;
    std::vector<std::unique_ptr<Readers>> all;
    all.push_back(std::make_unique<Readers>(mutex));
    ASSERT_TRUE(becomesTrue([&] { return all.back()->areAllIn(); }));
    writing = inAnotherThread([&] { Writing const lock(mutex); });

    // While some read, others come, and these again stay until the next ones are there: the writer would never get in.
    // It may take a while until it waits at all.
    EXPECT_TRUE(becomesTrue([&] {
        if (all.size() > 1 && all.back()->areAllIn())
            all.pop_back();
        all.push_back(std::make_unique<Readers>(mutex));
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        return all.back()->isNoneIn();
    }));

    for (auto const& each : all)
        each->letGo();
    writing.get();
    EXPECT_TRUE(becomesTrue([&] { return all.back()->areAllIn(); }));
}

TEST(StripedMutex, keepsNoReaderWaitingForWritersThatComeLater)
{
    StripedMutex mutex;
    std::atomic<bool> finished{false};
    std::vector<std::thread> writers;
    for (int i = 0; i < 3; ++i)
        writers.emplace_back([&] {
            while (!finished)
                Writing const lock(mutex);
        });

    for (int i = 0; i < 200; ++i)
        Reading const lock(mutex);

    finished = true;
    for (auto& thread : writers)
        thread.join();
}

}  // namespace
}  // namespace Zelm::Messaging
