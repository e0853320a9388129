/// @file
/// host_monitor: watches the machine it runs on, with components that it knows by the names of their types alone.
#include "command_line.h"
#include "component_list.h"
#include "configuration.h"
#include "installation.h"
#include "monitor.h"
#include "standard_output.h"
#include "stop_request.h"

#include "zelm/components/components_map.h"
#include "zelm/components/components_repository.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using namespace HostMonitor;

void list()
{
    // A map of our own, found or built as the repository does it, which shows nobody its own.
    Zelm::ComponentsRepository::Map map;
    {
        OutputToErrors const redirection;  // see makeRepository
        Zelm::initializeSourceMap(map);
    }

    std::ostringstream text;
    writeComponentList(map, text);
    std::string loaded;
    for (auto const& library : loadedLibraries(map))
        loaded += (loaded.empty() ? "" : ", ") + library;
    text << "component libraries loaded to tell this: " << (loaded.empty() ? "none" : loaded) << '\n';
    writeStandardOutput(text.str());
    if (!map.components.initialized() || map.components().empty())
        throw std::runtime_error("no component types in " + libraryDirectory());
}

std::shared_ptr<Zelm::ComponentsRepositoryInterface> makeRepository()
{
    // While the map is taken in, the core library may tell on standard output what is wrong with the file, and
    // libraries that are loaded may say anything. Neither belongs into JSON that is piped into another program.
    OutputToErrors const redirection;
    return Zelm::ComponentsRepositoryInterface::getComponentsRepository();
}

/// Does the work, unless it throws; the first failure of several is kept.
template <class Work> void attempt(std::exception_ptr& failure, Work work)
{
    try {
        work();
    } catch (...) {
        if (!failure)
            failure = std::current_exception();
    }
}

void monitor(Options const& options)
{
    auto const configuration = readConfiguration(options.configuration);
    StopRequest stop;
    auto const repository = makeRepository();

    std::exception_ptr failure;
    attempt(failure, [&] {
        Monitor monitor(*repository, configuration, options, stop);
        monitor.run();
        if (options.summary)
            std::cerr << monitor.summary() << std::flush;
    });
    // The factories, before main ends: they may need what static destructors take away.
    attempt(failure, [&] { repository->releaseAllComponents(); });
    if (failure)
        std::rethrow_exception(failure);
}

int endWith(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');  // a reason that the map gives may have several lines
    std::cerr << "host_monitor: " << text << std::endl;
    return 1;
}

}  // namespace

int main(int argc, char** argv)
{
    // A reader that goes away is then a failure to write, which can be told.
    (void)std::signal(SIGPIPE, SIG_IGN);
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
        return endWith(failure.what());
    } catch (...) {
        return endWith("something that is no std::exception was thrown");
    }
}
