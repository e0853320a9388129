/// @file
/// Private to Element: how the value that it points at lies in memory, in a cell of its own, and what is done to a
/// whole tree of them.
///
/// Thread-safety: that of Element.
#pragma once

#include "zelm/metadata/element.h"
#include "zelm/metadata/private/cell_heap.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>

namespace Zelm::MetaData {

/// What Element::held_ says, in both directions. Null has no value in memory; no other kind is 0.
class Element::Held {
public:
    template <class T> static constexpr bool isContainerType = std::is_same_v<T, Object> || std::is_same_v<T, Array>;

    template <class T> static constexpr std::uintptr_t kindOf = static_cast<std::uintptr_t>(TypeToEnum<T>()) ^ nullKind;

    static std::uintptr_t kind(std::uintptr_t held) { return held & kindBits; }
    template <class T> static bool is(std::uintptr_t held) { return kind(held) == kindOf<T>; }
    static bool isContainer(std::uintptr_t held) { return is<Object>(held) || is<Array>(held); }

    /// The value, which is of this kind.
    template <class T> static T& value(std::uintptr_t held) { return cell<T>(held).value; }

    /// A new value, made of the arguments. Throws what its construction does, and std::bad_alloc.
    // NOLINTNEXTLINE(misc-no-recursion): see nesting.h
    template <class T, class... Args> static std::uintptr_t make(Args&&... args)
    {
        void* const memory = Private::CellHeap::take(sizeof(Cell<T>));
        if constexpr (std::is_nothrow_constructible_v<T, Args...>) {
            new (memory) Cell<T>{T(std::forward<Args>(args)...)};
        } else {
            try {
                new (memory) Cell<T>{T(std::forward<Args>(args)...)};
            } catch (...) {
                Private::CellHeap::give(memory, sizeof(Cell<T>));
                throw;
            }
        }
        return reinterpret_cast<std::uintptr_t>(memory) | kindOf<T>;
    }

    template <class T> static void destroy(std::uintptr_t held) noexcept
    {
        Cell<T>& old = cell<T>(held);
        old.~Cell<T>();
        Private::CellHeap::give(&old, sizeof(Cell<T>));
    }

    /// For Tree::destroy alone: a container can be linked with another one.
    static std::uintptr_t& next(std::uintptr_t held)
    {
        return is<Object>(held) ? cell<Object>(held).next : cell<Array>(held).next;
    }

private:
    template <class T> struct alignas(kindBits + 1) ScalarCell {
        T value;
    };
    template <class T> struct alignas(kindBits + 1) ContainerCell {
        T value;
        std::uintptr_t next = 0;
    };
    template <class T> using Cell = std::conditional_t<isContainerType<T>, ContainerCell<T>, ScalarCell<T>>;

    template <class T> static Cell<T>& cell(std::uintptr_t held)
    {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): it was made of a pointer
        return *reinterpret_cast<Cell<T>*>(held - kindOf<T>);
    }
};

/// The ways without recursion, for trees of any depth. They take more time than the containers' own.
class Element::Tree {
public:
    static std::uintptr_t copy(std::uintptr_t source);
    static bool equal(std::uintptr_t a, std::uintptr_t b);
    static void destroy(std::uintptr_t root) noexcept;

private:
    struct Copying;
    struct Comparing;
};

}  // namespace Zelm::MetaData
