/// @file
/// Counts what the program asks the allocator for, in all of its threads: operator new and malloc, by whomever they are
/// called, the libraries that it is linked with included. Each benchmark that can allocate tells how often it does:
///
///     void encode(benchmark::State& state)
///     {
///         std::string const bytes = someBytes();
///         CountedAllocations const counted(state);  // last before the loop, so that it ends first
///         for (auto _ : state)
///             benchmark::DoNotOptimize(encoded(bytes));
///     }
///
/// The counter is "allocations", for one iteration. What stands between the loop and the end of the function must not
/// allocate (SetBytesProcessed and other counters do; let them stand in front of it, or end this before). Work in the
/// loop that isn't measured isn't to be counted either:
///
///         for (auto _ : state) {
///             { Untimed const untimed(state, counted); tree.emplace(text); }
///             tree.reset();
///         }
///
/// The count costs two instructions for each allocation, ours and a peer's alike.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <thread>

namespace Zelm::Benchmarks {

/// Calls of malloc, calloc, realloc, operator new and the aligned forms so far, in all threads of the process.
unsigned long allocationsSoFar();

/// Counts from its construction on, and sets the benchmark's counter "allocations" when it goes.
class CountedAllocations {
public:
    explicit CountedAllocations(benchmark::State& state);
    ~CountedAllocations();
    CountedAllocations(CountedAllocations const&) = delete;
    CountedAllocations& operator=(CountedAllocations const&) = delete;

    void pause() const;
    void resume() const;

private:
    benchmark::State& state_;
    mutable unsigned long paused_ = 0;
    mutable unsigned long since_;
};

/// While it lives, neither time nor allocations count. Switching costs about a microsecond, part of which is measured:
/// for work that takes a hundred times as long.
class Untimed {
public:
    Untimed(benchmark::State& state, CountedAllocations const& counted);
    ~Untimed();
    Untimed(Untimed const&) = delete;
    Untimed& operator=(Untimed const&) = delete;

private:
    benchmark::State& state_;
    CountedAllocations const& counted_;
};

/// The bytes that the calling thread has allocated since this was made and not released again, as the allocator rounds
/// them up, its own header of each block included. What was allocated before has to stay until then. One at a time in a
/// thread; allocations are slower while it lives.
class LiveBytes {
public:
    LiveBytes();
    ~LiveBytes();
    LiveBytes(LiveBytes const&) = delete;
    LiveBytes& operator=(LiveBytes const&) = delete;

    std::ptrdiff_t now() const;
};

/// The bytes that what `make` returns takes up, for the counter "bytes". It is made in a thread of its own, where no
/// memory lies ready that was allocated before.
template <class Make> double liveBytesOf(Make const& make)
{
    std::ptrdiff_t bytes = 0;
    std::thread([&] {
        LiveBytes const live;
        auto const made = make();
        bytes = live.now();
    }).join();
    return static_cast<double>(bytes);
}

}  // namespace Zelm::Benchmarks
