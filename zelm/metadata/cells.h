/// @file
/// Where the values that elements hold, the members of objects and the places of short arrays lie: in small pieces of
/// memory of a few sizes, which trees take and give back by the million. Not for applications; it is here because the
/// containers in element.h are made of it.
///
///     std::set<Member, NameOrder, Private::CellAllocator<Member>> members;
///
/// Each thread has its own supply (private/cell_heap.h), from which a cell costs a few instructions. A program that
/// replaces operator new, as the sanitizers do, gets each piece by a call of its own instead and sees all of them.
///
/// Thread-safety: all is safe to call from any thread; a cell may be given back by another thread than took it.
#pragma once

#include "zelm/core/export.h"

#include <cstddef>

namespace Zelm::MetaData::Private {

/// At least `size` bytes, aligned for words of eight bytes. Throws std::bad_alloc.
ZELM_EXPORT void* takeCell(std::size_t size);
/// `size` is that which the cell was taken with.
ZELM_EXPORT void giveCell(void* cell, std::size_t size) noexcept;

/// For the standard containers.
template <class T> class CellAllocator {
public:
    using value_type = T;

    CellAllocator() = default;
    template <class Other> CellAllocator(CellAllocator<Other> const&) noexcept {}

    T* allocate(std::size_t count)
    {
        static_assert(alignof(T) <= alignof(void*));
        return static_cast<T*>(takeCell(count * sizeof(T)));
    }
    void deallocate(T* values, std::size_t count) noexcept { giveCell(values, count * sizeof(T)); }

    friend bool operator==(CellAllocator const&, CellAllocator const&) noexcept { return true; }
    friend bool operator!=(CellAllocator const&, CellAllocator const&) noexcept { return false; }
};

}  // namespace Zelm::MetaData::Private
