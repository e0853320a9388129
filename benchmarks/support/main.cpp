#include "support/agreement.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>

int main(int argc, char** argv)
{
    // Names alone are asked for, so nothing needs to hold.
    bool const isList = std::any_of(argv, argv + argc, [](char const* argument) {
        return std::strncmp(argument, "--benchmark_list_tests", std::strlen("--benchmark_list_tests")) == 0;
    });
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    if (!isList && !Zelm::Benchmarks::allAgree())
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
