// Shows what the message layer does, one idea after the other, and prints the same at each run (expected_output.txt).
#include "ideas.h"
#include "installation.h"
#include "plant_messages.h"

#include "zelm/components/components_repository.h"

#include <exception>
#include <iostream>

using namespace MessagePatterns;

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
        useOwnInstallation();
        registerPlantMessages();
        for (auto const& idea : ideas) {
            std::cout << "== " << idea.title << '\n';
            idea.show();
        }
        // Before main ends: dispatchers may need what static destructors take away.
        Zelm::ComponentsRepositoryInterface::getComponentsRepository()->releaseAllComponents();
        return 0;
    } catch (std::exception const& failure) {
        std::cerr << "message_patterns: " << failure.what() << std::endl;
        return 1;
    }
}
