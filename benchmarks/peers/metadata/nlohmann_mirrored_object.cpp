// The same object by nlohmann's macro for classes, which writes and reads all that it lists. get_to is its way into an
// object that is there.
#include "metadata/station.h"
#include "support/agreement.h"
#include "support/allocations.h"
#include "zelm/metadata/reader_json.h"

#include <nlohmann/json.hpp>

namespace Zelm::Benchmarks {

namespace {

class Station {
public:
    int port = 0;
    int offset = 0;
    unsigned int flags = 0;
    std::string name;
    std::string address;
    std::vector<std::string> sensors;

    NLOHMANN_DEFINE_TYPE_INTRUSIVE(Station, port, offset, flags, name, address, sensors)
};

Station filled()
{
    Station station;
    station.port = stationPort;
    station.offset = stationOffset;
    station.flags = stationFlags;
    station.name = stationName;
    station.address = stationAddress;
    station.sensors = stationSensors;
    return station;
}

void toTree(benchmark::State& state)
{
    Station const station = filled();
    CountedAllocations const counted(state);
    for (auto _ : state) {
        nlohmann::json const tree = station;
        benchmark::DoNotOptimize(&tree);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(toTree)->Name("mirrored_object/nlohmann/to_tree");

void fromTree(benchmark::State& state)
{
    nlohmann::json const tree = filled();
    Station station;
    CountedAllocations const counted(state);
    for (auto _ : state) {
        tree.get_to(station);
        benchmark::DoNotOptimize(&station);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(fromTree)->Name("mirrored_object/nlohmann/from_tree");

Agreement const sameTree("nlohmann's tree of the station is ours", [] {
    MetaData::Element const ours = stationTree();
    nlohmann::json const theirs = filled();
    return nlohmann::json::parse(Json::metaDatatoJsonString(ours.CastTo<MetaData::Object>())) == theirs;
});
Agreement const comesBack("nlohmann's station that went through a tree has its values", [] {
    auto const station = nlohmann::json(filled()).get<Station>();
    return station.port == stationPort && station.flags == stationFlags && station.address == stationAddress &&
           station.sensors == stationSensors;
});

}  // namespace

}  // namespace Zelm::Benchmarks
