#include "metadata/look_ups.h"

#include <iterator>
#include <random>

namespace Zelm::Benchmarks {

namespace {

char const* const words[] = {"id",    "name",   "time", "profile", "image",  "user",    "status", "count",
                             "text",  "color",  "list", "default", "border", "created", "offset", "zone",
                             "media", "follow", "url",  "screen",  "place",  "source",  "type",   "friend"};

/// std::shuffle may do otherwise in another standard library.
template <class T> void shuffle(std::vector<T>& values, std::mt19937& random)
{
    for (std::size_t left = values.size(); left > 1; --left)
        std::swap(values[left - 1], values[random() % left]);
}

}  // namespace

std::vector<std::string> memberNames(std::size_t count)
{
    std::vector<std::string> names;
    for (std::string const first : words) {
        names.push_back(first);
        for (std::string const second : words) {
            names.push_back(first + "_" + second);
            for (std::string const third : {"id", "count", "enabled"})
                names.push_back(first + "_" + second + "_" + third);
        }
    }
    std::mt19937 random(1);  // NOLINT: the same names each time
    shuffle(names, random);
    names.resize(count);
    return names;
}

std::vector<std::string> lookUpOrder(std::vector<std::string> const& names)
{
    std::vector<std::string> order;
    while (order.size() < 4096)
        order.insert(order.end(), names.begin(), names.end());
    std::mt19937 random(2);  // NOLINT: the same order each time
    shuffle(order, random);
    return order;
}

}  // namespace Zelm::Benchmarks
