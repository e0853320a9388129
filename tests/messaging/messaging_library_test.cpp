/// The library as it is installed: what the components repository makes of it.
#include "tests/messaging/messages.h"
#include "tests/support/temporary_installation.h"

#include "zelm/components/component.h"
#include "zelm/components/component_factory.h"
#include "zelm/components/components_repository.h"
#include "zelm/components/core_component_factory.h"
#include "zelm/core/exceptions.h"
#include "zelm/messaging/callback_queue.h"
#include "zelm/messaging/fixed_depth_queue.h"
#include "zelm/msgs/dispatcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <typeinfo>

namespace Zelm::Messaging {
namespace {

using Msgs::MessageDispatcherInterface;
using ::testing::HasSubstr;
using namespace Testing;
using Zelm::Testing::childArguments;
using Zelm::Testing::TemporaryInstallation;

class Installed : public TemporaryInstallation {
public:
    Installed()
    {
        std::filesystem::path const file = std::filesystem::canonical(ZELM_MESSAGING_LIBRARY);
        std::filesystem::copy_file(file, library(file.filename()));
    }
};

template <class T> std::shared_ptr<T> create(std::string const& type, Parts const& arguments = {})
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    return std::dynamic_pointer_cast<T>(repository->createComponent(type, arguments));
}

ZELM_CHILD(writesTheTypesOfTheMap)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    for (std::string const& type : childArguments()) {
        auto const queue = std::dynamic_pointer_cast<Msgs::MessageQueueInterface>(
            repository->instantiateComponent(type, "my " + type, {}));
        std::cout << type << ": " << (queue ? "a queue" : "none") << '\n';
    }
    repository->releaseAllComponents();
    return 0;
}

TEST(MessagingLibrary, givesItsFileTheNameThatTheScanTakes)
{
    EXPECT_EQ(std::filesystem::canonical(ZELM_MESSAGING_LIBRARY).filename(), "libZelmMessaging.so.0.1.0");
}

TEST(MessagingLibrary, makesQueuesByTheNamesOfTheirTypes)
{
    auto const child = Installed().run("writesTheTypesOfTheMap", {MessageDispatcherInterface::QueueType,
                                                                  MessageDispatcherInterface::CallbackQueueType});

    EXPECT_EQ(child.out, "MessageQueue: a queue\nCallbackMessageQueue: a queue\n");
    EXPECT_EQ(child.status, 0) << child.err;
}

ZELM_CHILD(fillsAFixedDepthQueue)
{
    auto const queue = create<Msgs::MessageQueueInterface>(MessageDispatcherInterface::FixedDepthQueueType, {"2"});
    auto const limits = std::dynamic_pointer_cast<FixedDepthQueueInterface>(queue);
    for (unsigned long id = 1; id <= 5; ++id)
        queue->putMessage(message(id));
    std::cout << limits->depth() << " deep, " << limits->droppedMessages() << " dropped, first "
              << queue->getMessage(0)->id().value();
    return 0;
}

TEST(MessagingLibrary, letsItsUserAskAFixedDepthQueueForWhatItDropped)
{
    auto const child = Installed().run("fillsAFixedDepthQueue");

    EXPECT_EQ(child.out, "2 deep, 3 dropped, first 4");
    EXPECT_EQ(child.status, 0) << child.err;
}

ZELM_CHILD(setsACallback)
{
    auto const component = create<ComponentInterface>(MessageDispatcherInterface::CallbackQueueType);
    std::dynamic_pointer_cast<CallbackQueueInterface>(component)->setCallback(
        [](MessagePtr const& each) { std::cout << "got " << each->id().value(); });
    std::dynamic_pointer_cast<Msgs::MessageQueueInterface>(component)->putMessage(message(7));
    return 0;
}

TEST(MessagingLibrary, letsItsUserSetTheCallbackOfACallbackQueue)
{
    auto const child = Installed().run("setsACallback");

    EXPECT_EQ(child.out, "got 7");
    EXPECT_EQ(child.status, 0) << child.err;
}

ZELM_CHILD(failsToCreate)
{
    auto arguments = childArguments();
    std::string const type = arguments.front();
    arguments.erase(arguments.begin());
    try {
        create<ComponentInterface>(type, arguments);
    } catch (Exception::InvalidParameter const& error) {
        std::cout << error.what();
    }
    return 0;
}

TEST(MessagingLibrary, refusesAWrongDepthWithAnExceptionThatItsUserCanCatch)
{
    auto const child = Installed().run("failsToCreate", {MessageDispatcherInterface::FixedDepthQueueType, "many"});

    EXPECT_EQ(child.out, "Invalid Parameter: many");
    EXPECT_EQ(child.status, 0) << child.err;
}

ZELM_CHILD(endsTheFactory)
{
    auto const factory = getComponentFactoryFromSharedLibrary("libZelmMessaging.so.0.1.0");
    auto const passive = std::dynamic_pointer_cast<LifeCycle::PassiveInterface>(factory);
    std::cout << factory->supportedComponents().size();
    passive->startLifeCycle();
    std::cout << ' ' << factory->supportedComponents().size();
    passive->endLifeCycle();
    std::cout << ' ' << factory->supportedComponents().size();
    return factory->createComponent(MessageDispatcherInterface::QueueType, {}) != nullptr;
}

TEST(MessagingLibrary, makesItsComponentsBetweenStartAndEndOfItsFactoryAlone)
{
    auto const child = Installed().run("endsTheFactory");

    EXPECT_EQ(child.out, "0 4 0");
    EXPECT_EQ(child.status, 0) << child.err;
}

}  // namespace
}  // namespace Zelm::Messaging
