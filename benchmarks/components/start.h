/// @file
/// What the benchmarks of the start have in common.
#pragma once

#include "components/installation.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

namespace Zelm::Benchmarks {

/// The installation of so many libraries, in its place.
StartedInstallation const& startedInstallation(std::size_t libraries);

/// Whether this process has the library of that path loaded.
bool isLoaded(std::string const& library);

/// Registers the benchmark under that name and each number of libraries.
template <class Function> bool forEachInstallation(std::string const& name, Function function)
{
    for (std::size_t const libraries : {100, 1000})
        benchmark::RegisterBenchmark((name + std::to_string(libraries)).c_str(), function, libraries);
    return true;
}

}  // namespace Zelm::Benchmarks
