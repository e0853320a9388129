#include "child.h"

#include "components.h"
#include "installation.h"

#include "host_monitor/messaging.h"
#include "host_monitor/roles.h"

#include "zelm/components/component.h"
#include "zelm/components/components_map.h"
#include "zelm/components/components_repository.h"
#include "zelm/core/install_paths.h"
#include "zelm/msgs/dispatcher.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Soak {

namespace fs = std::filesystem;
using Random = std::minstd_rand;

namespace {

// ------------------------------------------------------------------------------------------------------- disturbances

std::string mapFile()
{
    return Zelm::zelmComponentsMapDir() + "CMP_ComponentsMap.json";
}

/// Another write time, to the second, is what tells the repository of another library.
void touch(std::string const& path, Random& random)
{
    timespec const time{1500000000 + static_cast<time_t>(random() % 200000000), 0};
    timespec const times[] = {time, time};
    if (utimensat(AT_FDCWD, path.c_str(), times, 0) != 0 && errno != ENOENT)  // the guest may have gone meanwhile
        throw std::runtime_error("can't touch " + path + ": " + std::strerror(errno));
}

void touchOne(Random& random)
{
    auto const libraries = componentLibraries(installationRoot());
    touch(libraries[random() % libraries.size()], random);
}

void touchAll(Random& random)
{
    for (auto const& library : componentLibraries(installationRoot()))
        touch(library, random);
}

void removeMap(Random&)
{
    std::remove(mapFile().c_str());
}

/// As somebody leaves it who is interrupted while writing.
void cutMap(Random& random)
{
    std::error_code none;  // somebody else may have removed it
    auto const size = fs::file_size(mapFile(), none);
    if (!none)
        fs::resize_file(mapFile(), size ? random() % size : 0, none);
}

void spoilMap(Random& random)
{
    std::string text(random() % 5000, ' ');
    std::generate(text.begin(), text.end(), [&] { return static_cast<char>(random() % 256); });
    std::ofstream(mapFile()) << text;
}

/// A component library comes, or goes if it is there.
void toggleGuest(Random&)
{
    for (auto const& guest : fs::directory_iterator(installationRoot() + "/guest")) {
        auto const place = installationRoot() + "/lib/" + guest.path().filename().string();
        if (unlink(place.c_str()) != 0)
            (void)!link(guest.path().c_str(), place.c_str());  // others do it, too
    }
}

void leaveAlone(Random&) {}

void disturb(Random& random)
{
    void (*const ways[])(Random&) = {touchOne, touchAll, removeMap, cutMap, spoilMap, toggleGuest, leaveAlone};
    ways[random() % std::size(ways)](random);
}

// --------------------------------------------------------------------------------------------------------------- usage

/// A build of the map loads every component library, taking it from its file none.
bool hasLoadedLibraries()
{
    std::ifstream maps("/proc/self/maps");
    std::string const text{std::istreambuf_iterator<char>(maps), {}};
    return text.find("libHostAlarms.so.") != std::string::npos;
}

void createAll(Zelm::ComponentsRepositoryInterface& repository)
{
    for (auto const& type : componentTypes())
        if (!repository.createComponent(type.name, type.arguments))
            throw std::runtime_error(std::string("there is no ") + type.name);
}

/// What the file says at this moment, or a new build.
void lookUpAll()
{
    Zelm::ComponentsRepository::Map map;
    if (!Zelm::initializeSourceMap(map))
        throw std::runtime_error("the map has no library");
    for (auto const& type : componentTypes())
        map.findLib(map[type.name].factoryName());
}

unsigned long linesIn(std::string const& path)
{
    std::ifstream file(path);
    return static_cast<unsigned long>(
        std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n'));
}

/// One sensor of each kind, whose messages must all be in the file in the end.
void monitor(Zelm::ComponentsRepositoryInterface& repository, std::string const& scratch)
{
    auto const path = scratch + ".log";
    std::remove(path.c_str());  // of a child that was interrupted
    auto const dispatcher = startComponent(repository, Zelm::Msgs::MessageDispatcherInterface::DispatcherType,
                                           HostMonitor::dispatcherId, {});
    auto const reporter = startComponent(repository, "JsonLinesReporter", "log", {path});
    std::vector<std::shared_ptr<Zelm::ComponentInterface>> sensors;
    for (char const* const type : {"CpuSensor", "MemorySensor", "DiskSensor", "NetworkSensor"})
        sensors.push_back(startComponent(repository, type, type, {"--period=0", "--readings=25"}));
    unsigned long published = 0;
    for (auto const& sensor : sensors) {
        endComponent(repository, sensor);
        published += dynamic_cast<HostMonitor::SensorInterface&>(*sensor).published() + 1;  // one says that it was all
    }
    endComponent(repository, reporter);
    endComponent(repository, dispatcher);
    auto const lines = linesIn(path);
    std::remove(path.c_str());
    if (lines != published)
        throw std::runtime_error(std::to_string(published) + " messages were published, " + std::to_string(lines) +
                                 " are in the file");
}

}  // namespace

ChildStatus runChild(unsigned seed, std::string const& scratch, bool isToFail)
{
    Random random(seed);
    try {
        disturb(random);
        EndOfComponents const end;
        bool const hasBuiltTheMap = hasLoadedLibraries();
        createAll(*end.repository);
        if (isToFail)
            end.repository->createComponent("NoSuchType", {});
        monitor(*end.repository, scratch);
        lookUpAll();
        return hasBuiltTheMap ? BuiltTheMap : TookTheMap;
    } catch (std::exception const& failure) {
        std::cerr << "failed: " << failure.what() << std::endl;
        return Failed;
    }
}

}  // namespace Soak
