/// @file
/// Private to the data model: memory that comes past operator new, and runs out as it does there.
///
///     void* const memory = askedMemory([size] { return std::malloc(size); });
///
/// Thread-safety: a function without a state of its own.
#pragma once

#include <new>

namespace Zelm::MetaData::Private {

/// What `tryToGet` returns, as soon as that isn't null: each time that it is, the new handler is called, which may make
/// some memory free, as operator new does. Throws std::bad_alloc if there is no handler, or whatever that one throws.
template <class TryToGet> void* askedMemory(TryToGet const& tryToGet)
{
    for (;;) {
        if (void* const memory = tryToGet())
            return memory;
        auto const handler = std::get_new_handler();
        if (!handler)
            throw std::bad_alloc();
        handler();
    }
}

}  // namespace Zelm::MetaData::Private
