// Shows what the message layer does, one idea after the other, and prints the same at each run (expected_output.txt).
#include "ideas.h"
#include "installation.h"
#include "plant_messages.h"

#include "zelm/components/components_repository.h"

#include <exception>
#include <iostream>
#include <memory>

using namespace MessagePatterns;

namespace {

/// Ends all components before main ends, also if something is thrown: what they need is still there then, which static
/// objects of their libraries may not be at the exit of the process.
// quote begins: end of components
struct EndOfComponents {
    std::shared_ptr<Zelm::ComponentsRepositoryInterface> const repository =
        Zelm::ComponentsRepositoryInterface::getComponentsRepository();
    ~EndOfComponents() { repository->releaseAllComponents(); }
};
// quote ends: end of components

}  // namespace

int main()
{
    struct {
        char const* title;
        void (*show)();
    } const ideas[] = {
        {"Identifiers and patterns", showIdentifiers},
        {"Addresses", showAddresses},
        {"Messages of one's own", showOwnMessages},
        {"Extended fields", showExtendedFields},
        {"Subscriptions and services", showSubscriptionsAndServices},
        {"Queues", showQueues},
        {"A pump", showPump},
        {"A forwarder", showForwarder},
    };
    try {
        // quote begins: frame
        useOwnInstallation();
        EndOfComponents const end;
        registerPlantMessages();
        // quote ends: frame
        for (auto const& idea : ideas) {
            std::cout << "== " << idea.title << '\n';
            idea.show();
        }
        return 0;
    } catch (std::exception const& failure) {
        std::cerr << "message_patterns: " << failure.what() << std::endl;
        return 1;
    }
}
