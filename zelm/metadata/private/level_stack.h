/// @file
/// Private to whatever walks a tree of elements. The containers that a walk has entered and not left yet, one entry for
/// each, the innermost on top. A walk that keeps them here goes as deep as there is memory, where one that calls itself
/// ends with the thread's stack.
///
///     LevelStack<Parts> levels;
///     levels.push(object);
///     while (!levels.empty())
///         ...
///
/// The levels of any ordinary tree lie inside of it, so that walking one allocates nothing.
///
/// Thread-safety: a plain value without locks.
#pragma once

#include <cstddef>
#include <deque>
#include <new>
#include <optional>
#include <type_traits>
#include <utility>

namespace Zelm::MetaData::Private {

template <class Level> class LevelStack {
    static_assert(std::is_trivially_destructible_v<Level>, "the levels inside are left as they are");

public:
    LevelStack() = default;
    LevelStack(LevelStack const&) = delete;
    LevelStack& operator=(LevelStack const&) = delete;

    bool empty() const { return size_ == 0; }
    std::size_t size() const { return size_; }

    /// Stays where it is while others are pushed on it.
    Level& top()
    {
        return size_ <= inside ? *std::launder(reinterpret_cast<Level*>(place(size_ - 1))) : beyond_->back();
    }

    template <class... Args> void push(Args&&... args)
    {
        if (size_ < inside) {
            new (place(size_)) Level{std::forward<Args>(args)...};
        } else {
            if (!beyond_)
                beyond_.emplace();
            beyond_->push_back(Level{std::forward<Args>(args)...});
        }
        ++size_;
    }

    void pop()
    {
        if (size_ > inside)
            beyond_->pop_back();
        --size_;
    }

private:
    static constexpr std::size_t inside = 32;

    void* place(std::size_t index) { return inside_ + index * sizeof(Level); }

    std::size_t size_ = 0;
    alignas(Level) unsigned char inside_[inside * sizeof(Level)];
    std::optional<std::deque<Level>> beyond_;
};

}  // namespace Zelm::MetaData::Private
