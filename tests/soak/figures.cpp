#include "figures.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <malloc.h>
#include <unistd.h>

namespace Soak {

namespace {

double residentKB()
{
    std::ifstream file("/proc/self/statm");
    long all = 0;
    long resident = 0;
    if (!(file >> all >> resident))
        throw std::runtime_error("/proc/self/statm can't be read");
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024;
}

double heapKB()
{
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 33)
    struct mallinfo2 const all = mallinfo2();
    return static_cast<double>(all.uordblks + all.hblkhd) / 1024;
#else
    return 0;
#endif
}

long entriesIn(char const* directory)
{
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator(directory), fs::directory_iterator());
}

/// Changes the order of the values.
double medianOf(std::vector<double>& values)
{
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double medianOf(std::vector<Sample> const& samples, std::size_t begin, std::size_t end)
{
    std::vector<double> values;
    for (std::size_t i = begin; i < end; ++i)
        values.push_back(samples[i].value);
    return medianOf(values);
}

}  // namespace

Figures figuresNow()
{
    // The directory that is being read has a descriptor itself.
    return {residentKB(), heapKB(), entriesIn("/proc/self/fd") - 1, entriesIn("/proc/self/task")};
}

Trend trendOf(std::vector<Sample> const& samples)
{
    std::size_t const third = std::max<std::size_t>(samples.size() / 3, 1);
    std::vector<double> slopes;
    for (std::size_t i = 0; i < samples.size(); ++i)
        for (std::size_t k = i + 1; k < samples.size(); ++k)
            if (samples[k].minutes > samples[i].minutes)
                slopes.push_back((samples[k].value - samples[i].value) / (samples[k].minutes - samples[i].minutes));
    return {medianOf(samples, 0, third), medianOf(samples, samples.size() - third, samples.size()),
            slopes.empty() ? 0 : medianOf(slopes)};
}

}  // namespace Soak
