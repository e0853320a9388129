#include "support/allocations.h"

#include <malloc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>

namespace Zelm::Benchmarks {

namespace {

// A thread counts in a place of its own, so that threads don't slow each other down. Places stay when threads end, and
// threads beyond the last place share that.
struct alignas(64) Place {
    std::atomic<unsigned long> count{0};
};
constexpr std::size_t placeCount = 1024;
std::array<Place, placeCount> places;
std::atomic<std::size_t> placesTaken{0};
thread_local Place* ownPlace = nullptr;
thread_local bool bytesCount = false;
thread_local std::ptrdiff_t liveBytes = 0;

// A block of glibc has one word in front of what its user gets.
std::ptrdiff_t sizeOf(void* block) noexcept
{
    return static_cast<std::ptrdiff_t>(malloc_usable_size(block) + sizeof(std::size_t));
}

void* counted(void* block) noexcept
{
    if (!ownPlace)
        ownPlace = &places[std::min(placesTaken++, placeCount - 1)];
    if (ownPlace != &places.back())
        ownPlace->count.store(ownPlace->count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    else
        ++ownPlace->count;
    if (bytesCount && block)
        liveBytes += sizeOf(block);
    return block;
}

void released(void* block) noexcept
{
    if (bytesCount && block)
        liveBytes -= sizeOf(block);
}

}  // namespace

unsigned long allocationsSoFar()
{
    unsigned long sum = 0;
    for (Place const& place : places)
        sum += place.count.load(std::memory_order_relaxed);
    return sum;
}

CountedAllocations::CountedAllocations(benchmark::State& state) : state_(state), since_(allocationsSoFar()) {}

CountedAllocations::~CountedAllocations()
{
    auto const made = allocationsSoFar() - since_ - paused_;
    state_.counters["allocations"] = benchmark::Counter(static_cast<double>(made), benchmark::Counter::kAvgIterations);
}

void CountedAllocations::pause() const
{
    paused_ -= allocationsSoFar();
}

void CountedAllocations::resume() const
{
    paused_ += allocationsSoFar();
}

Untimed::Untimed(benchmark::State& state, CountedAllocations const& counted) : state_(state), counted_(counted)
{
    state_.PauseTiming();
    counted_.pause();
}

Untimed::~Untimed()
{
    counted_.resume();
    state_.ResumeTiming();
}

LiveBytes::LiveBytes()
{
    liveBytes = 0;
    bytesCount = true;
}

LiveBytes::~LiveBytes()
{
    bytesCount = false;
}

std::ptrdiff_t LiveBytes::now() const
{
    return liveBytes;
}

}  // namespace Zelm::Benchmarks

// The program's own malloc family, on glibc's. All libraries take these too, and the standard library's operator new
// and delete call them.
using Zelm::Benchmarks::counted;
using Zelm::Benchmarks::released;

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

[[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept
{
    return counted(__libc_malloc(size));
}
[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) noexcept
{
    return counted(__libc_calloc(count, size));
}
[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) noexcept
{
    released(block);
    return counted(__libc_realloc(block, size));
}
[[gnu::visibility("default")]] void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    return counted(__libc_memalign(alignment, size));
}
[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return counted(__libc_memalign(alignment, size));
}
[[gnu::visibility("default")]] int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept
{
    void* const aligned = counted(__libc_memalign(alignment, size));
    if (!aligned)
        return ENOMEM;
    *block = aligned;
    return 0;
}
[[gnu::visibility("default")]] void free(void* block) noexcept
{
    released(block);
    __libc_free(block);
}

}  // extern "C"
