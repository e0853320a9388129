// Finds out whether operator new is the standard library's own.
#include "zelm/metadata/private/cell_heap.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <dlfcn.h>
#include <link.h>

namespace Zelm::MetaData::Private {

namespace {

/// The library, or the program, that the function is in; null if that can't be told. It can't where the address is that
/// of a jump in the program, to wherever the function is: a program that is loaded at a fixed place and takes a
/// function's address has such a jump, which stands for the function in all libraries too.
template <class Function> void const* homeOf(Function* function)
{
    Dl_info info{};
    void* found = nullptr;
    dladdr1(reinterpret_cast<void const*>(function), &info, &found, RTLD_DL_SYMENT);
    auto const* const symbol = static_cast<ElfW(Sym) const*>(found);
    return symbol && symbol->st_shndx != SHN_UNDEF ? info.dli_fbase : nullptr;
}

/// The home that comes before all others is the program itself.
bool isProgram(void const* home)
{
    Dl_info info{};
    void* found = nullptr;
    dladdr1(home, &info, &found, RTLD_DL_LINKMAP);
    return !static_cast<link_map const*>(found)->l_prev;
}

}  // namespace

bool isOperatorNewReplaced()
{
    // Valgrind's tools redirect the calls, which no address tells; but they are loaded in front of all libraries.
    char const* const preloaded = std::getenv("LD_PRELOAD");
    if (preloaded && std::strstr(preloaded, "/vgpreload_"))
        return true;

    // The handler's functions can't be replaced, so they are where the standard library is. If that is the program, an
    // operator new beside them may be anybody's.
    void const* const home = homeOf(&std::get_new_handler);
    if (!home || isProgram(home) || homeOf(static_cast<void* (*)(std::size_t)>(&::operator new)) != home)
        return true;
    // An allocator that lacks the former would be given its memory back by the latter.
    void const* const homeOfMemory = homeOf(&posix_memalign);
    return !homeOfMemory || homeOf(&std::free) != homeOfMemory;
}

}  // namespace Zelm::MetaData::Private
