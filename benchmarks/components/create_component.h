/// @file
/// What the benchmarks of creation by name have in common.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Zelm::Benchmarks {

/// What a peer's library makes: as much as a component is, a virtual destructor and a string.
class Product {
public:
    virtual ~Product() = default;

private:
    std::string id_;
};

/// Strings one after the other, and from the first again.
class Turns {
public:
    explicit Turns(std::vector<std::string> const& strings) : strings_(strings) {}

    std::size_t nextIndex()
    {
        if (++last_ == strings_.size())
            last_ = 0;
        return last_;
    }
    std::string const& next() { return strings_[nextIndex()]; }

private:
    std::vector<std::string> const& strings_;
    std::size_t last_ = 0;
};

/// Registers the benchmark under that name and each number of libraries.
template <class Function> bool forEachNumberOfLibraries(std::string const& name, Function function)
{
    for (std::size_t const libraries : {1, 10, 100})
        benchmark::RegisterBenchmark((name + std::to_string(libraries)).c_str(), function, libraries);
    return true;
}

}  // namespace Zelm::Benchmarks
