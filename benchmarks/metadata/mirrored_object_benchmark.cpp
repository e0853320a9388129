// A small mirrored object to a tree and from one.
#include "zelm/metadata/mirrored_object.h"

#include "metadata/station.h"
#include "support/agreement.h"
#include "support/allocations.h"
#include "zelm/metadata/reflector.h"

namespace Zelm::Benchmarks {

using namespace MetaData;

namespace {

class Station : public MirroredObject {
public:
    Reflector<int, false, true> port{this, "port", 0};
    Reflector<int, false, true> offset{this, "offset", 0};
    Reflector<unsigned int, false, true> flags{this, "flags", 0};
    Reflector<std::string, false, true> name{this, "name", ""};
    Reflector<std::string, false, true> address{this, "address", ""};
    ReflectorArray<std::string> sensors{this, "sensors", true};
};

void fill(Station& station)
{
    station.port = stationPort;
    station.offset = stationOffset;
    station.flags = stationFlags;
    station.name = stationName;
    station.address = stationAddress;
    station.sensors = stationSensors;
}

/// The tree and its destruction.
void toTree(benchmark::State& state)
{
    Station station;
    fill(station);
    CountedAllocations const counted(state);
    for (auto _ : state) {
        Element tree;
        station.copyToMetaData(tree);
        benchmark::DoNotOptimize(&tree);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(toTree)->Name("mirrored_object/ours/to_tree");

/// Into an object that is there, whose values are replaced.
void fromTree(benchmark::State& state)
{
    Element const tree = stationTree();
    Station station;
    CountedAllocations const counted(state);
    for (auto _ : state) {
        station.copyFromMetaData(tree);
        benchmark::DoNotOptimize(&station);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(fromTree)->Name("mirrored_object/ours/from_tree");

Agreement const comesBack("a station that went through a tree has its values", [] {
    Station station;
    station.copyFromMetaData(stationTree());
    return station.port() == stationPort && station.offset() == stationOffset && station.flags() == stationFlags &&
           station.name() == stationName && station.address() == stationAddress && station.sensors() == stationSensors;
});

}  // namespace

Element stationTree()
{
    Station station;
    fill(station);
    Element tree;
    station.copyToMetaData(tree);
    return tree;
}

}  // namespace Zelm::Benchmarks
