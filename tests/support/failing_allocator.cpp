#include "failing_allocator.h"

#include <cstddef>
#include <cstdlib>

namespace Zelm::Testing {

namespace {

// Plain numbers: a thread's first use of them must not allocate.
thread_local unsigned long allocations = 0;
thread_local unsigned long successesLeft = 0;
thread_local bool failureIsDue = false;
thread_local bool failuresLast = false;
thread_local bool somethingFailed = false;

// More than any machine has at once. It is refused here, since some systems would grant it as long as nobody uses it,
// and the sanitizers end the program.
constexpr std::size_t tooMuch = std::size_t{1} << 40;

void* allocate(std::size_t size) noexcept
{
    ++allocations;
    if (size >= tooMuch)
        return nullptr;
    if (failureIsDue && successesLeft == 0) {
        failureIsDue = failuresLast;
        somethingFailed = true;
        return nullptr;
    }
    if (failureIsDue)
        --successesLeft;
    return std::malloc(size == 0 ? 1 : size);
}

void* allocateOrThrow(std::size_t size)
{
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

}  // namespace

AllocationCount::AllocationCount() : before_(allocations) {}

unsigned long AllocationCount::made() const
{
    return allocations - before_;
}

FailingAllocation::FailingAllocation(unsigned long successes, Shortage shortage)
{
    successesLeft = successes;
    failuresLast = shortage == Shortage::Lasting;
    somethingFailed = false;
    failureIsDue = true;
}

FailingAllocation::~FailingAllocation()
{
    failureIsDue = false;
}

bool FailingAllocation::hasFailed() const
{
    return somethingFailed;
}

}  // namespace Zelm::Testing

// All plain forms, so that each is released by its own counterpart. The aligned forms keep their own implementation.
void* operator new(std::size_t size)
{
    return Zelm::Testing::allocateOrThrow(size);
}
void* operator new[](std::size_t size)
{
    return Zelm::Testing::allocateOrThrow(size);
}
void* operator new(std::size_t size, std::nothrow_t const&) noexcept
{
    return Zelm::Testing::allocate(size);
}
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept
{
    return Zelm::Testing::allocate(size);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::nothrow_t const&) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::nothrow_t const&) noexcept
{
    std::free(memory);
}
