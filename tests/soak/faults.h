/// @file
/// What the soak found to be wrong, told by any of its threads. The first texts are kept, all are counted.
///
/// Thread-safety: any thread may call anything at any time.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Soak {

class Faults {
public:
    static constexpr std::size_t keptTexts = 20;

    void add(std::string text)
    {
        std::lock_guard const lock(mutex_);
        ++count_;
        if (texts_.size() < keptTexts)
            texts_.push_back(std::move(text));
    }
    unsigned long count() const
    {
        std::lock_guard const lock(mutex_);
        return count_;
    }
    std::vector<std::string> texts() const
    {
        std::lock_guard const lock(mutex_);
        return texts_;
    }

private:
    mutable std::mutex mutex_;  // guards both below
    unsigned long count_ = 0;
    std::vector<std::string> texts_;
};

}  // namespace Soak
