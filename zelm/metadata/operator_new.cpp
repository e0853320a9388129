// Finds out whether operator new is the standard library's own.
#include "zelm/metadata/private/cell_heap.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <dlfcn.h>

namespace Zelm::MetaData::Private {

namespace {

/// The library, or the program, that the function is in; null if that can't be told.
template <class Function> void const* homeOf(Function* function)
{
    Dl_info info{};
    return dladdr(reinterpret_cast<void const*>(function), &info) != 0 ? info.dli_fbase : nullptr;
}

}  // namespace

bool isOperatorNewReplaced()
{
    // Valgrind's tools redirect the calls, which no address tells; but they are loaded in front of all libraries.
    char const* const preloaded = std::getenv("LD_PRELOAD");
    if (preloaded && std::strstr(preloaded, "/vgpreload_"))
        return true;

    // The handler's functions can't be replaced.
    void const* const home = homeOf(&std::get_new_handler);
    if (!home || homeOf(static_cast<void* (*)(std::size_t)>(&::operator new)) != home)
        return true;
    // An allocator that lacks the former would be given its memory back by the latter.
    return homeOf(&posix_memalign) != homeOf(&std::free);
}

}  // namespace Zelm::MetaData::Private
