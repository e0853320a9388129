#include "tests/support/failing_malloc.h"

#include <cerrno>
#include <cstddef>
#include <cstring>

#include <dlfcn.h>

namespace Zelm::Testing {

namespace {

// Plain numbers: the dynamic loader calls these functions before anything is initialised.
thread_local unsigned long callsLeft = 0;
thread_local bool callIsToFail = false;
thread_local bool callHasFailed = false;

using Malloc = void*(std::size_t);
using Realloc = void*(void*, std::size_t);

template <class Function> Function* behindThis(char const* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// Whether the code at this address is the core library's, and not that of a library which it has called.
bool isInTheCoreLibrary(void const* address)
{
    Dl_info info;
    return ::dladdr(address, &info) != 0 && std::strstr(info.dli_fname, "libZelmCore.so") != nullptr;
}

bool fails(void const* caller)
{
    if (!callIsToFail || !isInTheCoreLibrary(caller) || callsLeft-- > 0)
        return false;
    callIsToFail = false;
    callHasFailed = true;
    errno = ENOMEM;
    return true;
}

}  // namespace

FailingMalloc::FailingMalloc(unsigned long successes)
{
    callsLeft = successes;
    callHasFailed = false;
    callIsToFail = true;
}

FailingMalloc::~FailingMalloc()
{
    callIsToFail = false;
}

bool FailingMalloc::hasFailed() const
{
    return callHasFailed;
}

}  // namespace Zelm::Testing

// Both: a compiler may make a call of malloc out of a realloc of nothing.

extern "C" __attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept
{
    using namespace Zelm::Testing;
    static Malloc* behind = nullptr;
    if (!behind)
        behind = behindThis<Malloc>("malloc");
    return fails(__builtin_return_address(0)) ? nullptr : behind(size);
}

extern "C" __attribute__((visibility("default"))) void* realloc(void* old, std::size_t size) noexcept
{
    using namespace Zelm::Testing;
    static Realloc* behind = nullptr;
    if (!behind)
        behind = behindThis<Realloc>("realloc");
    return fails(__builtin_return_address(0)) ? nullptr : behind(old, size);
}
