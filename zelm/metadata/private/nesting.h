/// @file
/// Private to Element: decides between two ways to copy, compare or destroy containers that lie inside of one another.
/// The standard containers do it by recursion, which is the quickest way and ends with the thread's stack. So they are
/// left to it for as many levels as any ordinary tree has, and no further.
///
///     if (Nesting const nesting; nesting.isDeep())
///         return walkWithoutRecursion();
///     return a == b;                                       // comes back here for each container inside
///
/// Thread-safety: each thread has its own count.
#pragma once

namespace Zelm::MetaData::Private {

class Nesting {
public:
    Nesting() noexcept { ++levels_; }
    ~Nesting() { --levels_; }
    Nesting(Nesting const&) = delete;
    Nesting& operator=(Nesting const&) = delete;

    /// Few enough for the smallest of stacks, also where a sanitizer makes each call of them large.
    static constexpr unsigned mostLevels = 32;

    bool isDeep() const noexcept { return levels_ > mostLevels; }

private:
    // In the block that each thread has from its start: to make any other one takes memory, and destructors must do
    // without.
    [[gnu::tls_model("initial-exec")]] static inline thread_local unsigned levels_ = 0;
};

}  // namespace Zelm::MetaData::Private
