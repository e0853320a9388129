/// @file
/// host_monitor: watches the machine it runs on, with components that it knows by the names of their types alone.
#include "command_line.h"
#include "component_list.h"
#include "configuration.h"
#include "installation.h"
#include "monitor.h"
#include "stop_request.h"

#include "zelm/components/components_map.h"
#include "zelm/components/components_repository.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

using namespace HostMonitor;

void list()
{
    // The repository finds or builds the map; the public way to look at it is to take it in once more.
    Zelm::ComponentsRepositoryInterface::getComponentsRepository();
    Zelm::ComponentsRepository::Map map;
    Zelm::initializeSourceMap(map);

    writeComponentList(map, std::cout);
    std::string loaded;
    for (auto const& library : loadedLibraries(map))
        loaded += (loaded.empty() ? "" : ", ") + library;
    std::cout << "component libraries loaded to tell this: " << (loaded.empty() ? "none" : loaded) << std::endl;
    if (!std::cout)
        throw std::runtime_error("can't write standard output");
}

void monitor(Options const& options)
{
    auto const configuration = readConfiguration(options.configuration);
    StopRequest stop;
    auto const repository = Zelm::ComponentsRepositoryInterface::getComponentsRepository();

    std::exception_ptr failure;
    try {
        Monitor(*repository, configuration).run(options.interval, options.samples, stop);
    } catch (...) {
        failure = std::current_exception();
    }
    // Before main ends: components may need what static destructors take away.
    repository->releaseAllComponents();
    if (failure)
        std::rethrow_exception(failure);
}

int fail(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');  // a reason that the map gives may have several lines
    std::cerr << "host_monitor: " << text << std::endl;
    return 1;
}

}  // namespace

int main(int argc, char** argv)
{
    // A reader that goes away is then a failure to write, which can be told.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        auto const root = installationRoot();
        auto const options = parseCommandLine(argc, argv, root + "/etc/host_monitor.json");
        if (!options)
            return 0;
        useOwnInstallation(root);
        if (options->list)
            list();
        else
            monitor(*options);
        return 0;
    } catch (std::exception const& failure) {
        return fail(failure.what());
    } catch (...) {
        return fail("a component has thrown something that is no std::exception");
    }
}
