#include "zelm/components/component_factory.h"

#include "tests/components/types_of.h"
#include "tests/support/vtable_slot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <type_traits>

namespace Zelm {
namespace {

using ::testing::ElementsAre;
using Testing::slotOf;
using Testing::typesOf;

class NamedComponent : public Component_Base {
public:
    explicit NamedComponent(std::string text) : name(std::move(text)) {}
    std::string const name;
};

Creators::mapped_type makes(std::string const& name)
{
    return [name](auto const&) { return std::make_shared<NamedComponent>(name); };
}

std::string nameOf(std::shared_ptr<ComponentInterface> const& component)
{
    return component ? dynamic_cast<NamedComponent&>(*component).name : "nothing";
}

TEST(ComponentFactoryBase, supportsNothingAtFirst)
{
    ComponentFactory_Base factory;

    EXPECT_THAT(typesOf(factory), ElementsAre());
    EXPECT_EQ(factory.createComponent("Engine", {}), nullptr);
}

TEST(ComponentFactoryBase, givesAnEmptyPointerForAnUnknownType)
{
    ComponentFactory_Base factory;
    factory.addComponentCreator("Engine", makes("an engine"));

    EXPECT_EQ(factory.createComponent("engine", {}), nullptr);
    EXPECT_EQ(factory.createComponent("", {}), nullptr);
}

TEST(ComponentFactoryBase, givesWhatTheCreatorMakesOfTheArguments)
{
    ComponentFactory_Base factory;
    std::vector<std::string> seen;
    factory.addComponentCreator("Engine", [&](std::vector<std::string> const& arguments) {
        seen = arguments;
        return std::make_shared<NamedComponent>("an engine");
    });

    auto const component = factory.createComponent("Engine", {"V", "8"});

    EXPECT_EQ(nameOf(component), "an engine");
    EXPECT_THAT(seen, ElementsAre("V", "8"));
}

TEST(ComponentFactoryBase, passesOnTheEmptyPointerOfACreator)
{
    ComponentFactory_Base factory;
    factory.addComponentCreator("Engine", [](auto const&) { return nullptr; });

    EXPECT_EQ(factory.createComponent("Engine", {}), nullptr);
}

TEST(ComponentFactoryBase, keepsTheFirstCreatorOfATypeOnPurpose)
{
    ComponentFactory_Base factory;

    factory.addComponentCreator("Engine", makes("first"));
    factory.addComponentCreator("Engine", makes("second"));

    EXPECT_EQ(nameOf(factory.createComponent("Engine", {})), "first");
}

TEST(ComponentFactoryBase, takesANewCreatorForATypeThatWasRemoved)
{
    ComponentFactory_Base factory;
    factory.addComponentCreator("Engine", makes("first"));

    factory.removeComponentCreator("Engine");
    factory.addComponentCreator("Engine", makes("second"));

    EXPECT_EQ(nameOf(factory.createComponent("Engine", {})), "second");
}

TEST(ComponentFactoryBase, removesOneTypeAndIgnoresAnUnknownOne)
{
    ComponentFactory_Base factory;
    factory.addComponentCreator("Engine", makes("engine"));
    factory.addComponentCreator("Wheel", makes("wheel"));

    factory.removeComponentCreator("Sail");
    factory.removeComponentCreator("Engine");

    EXPECT_THAT(typesOf(factory), ElementsAre("Wheel"));
    EXPECT_EQ(factory.createComponent("Engine", {}), nullptr);
    EXPECT_EQ(nameOf(factory.createComponent("Wheel", {})), "wheel");
}

TEST(ComponentFactoryBase, supportsNothingAfterAllCreatorsWereRemoved)
{
    ComponentFactory_Base factory;
    factory.addComponentCreator("Engine", makes("engine"));
    factory.addComponentCreator("Wheel", makes("wheel"));

    factory.removeAllComponentCreators();

    EXPECT_THAT(typesOf(factory), ElementsAre());
    EXPECT_EQ(factory.createComponent("Engine", {}), nullptr);
    EXPECT_EQ(factory.createComponent("Wheel", {}), nullptr);
}

TEST(ComponentFactoryBase, listsItsTypesInByteOrderWhateverTheOrderOfRegistration)
{
    ComponentFactory_Base factory;

    for (char const* type : {"b", "\xC3\xA9", "a", "B", "", "ab"})
        factory.addComponentCreator(type, makes(type));

    EXPECT_THAT(typesOf(factory), ElementsAre("", "B", "a", "ab", "b", "\xC3\xA9"));
}

TEST(ComponentFactoryBase, throwsForAnEmptyFunctionAndReleasesItsLock)
{
    ComponentFactory_Base factory;
    factory.addComponentCreator("Engine", nullptr);

    EXPECT_THROW(factory.createComponent("Engine", {}), std::bad_function_call);

    factory.removeComponentCreator("Engine");  // would wait for ever if the lock were held
    EXPECT_THAT(typesOf(factory), ElementsAre());
}

TEST(ComponentFactoryBase, releasesItsLockWhenACreatorThrows)
{
    ComponentFactory_Base factory;
    factory.addComponentCreator("Engine", [](auto const&) -> std::shared_ptr<ComponentInterface> { throw 1; });

    EXPECT_THROW(factory.createComponent("Engine", {}), int);

    factory.removeAllComponentCreators();
    EXPECT_THAT(typesOf(factory), ElementsAre());
}

TEST(ComponentFactoryBase, letsACreatorLookAtTheSupportedComponentsWhichTakeNoLock)
{
    ComponentFactory_Base factory;
    std::vector<std::string> seen;
    factory.addComponentCreator("Engine", [&](auto const&) {
        seen = typesOf(factory);
        return nullptr;
    });

    factory.createComponent("Engine", {});

    EXPECT_THAT(seen, ElementsAre("Engine"));
}

/// Calls back into its factory when the creator that owns it goes.
std::shared_ptr<void> callsWhenItGoes(std::function<void()> call)
{
    return std::shared_ptr<void>(nullptr, [call = std::move(call)](void*) { call(); });
}

TEST(ComponentFactoryBase, dropsRemovedCreatorsOutsideItsLock)
{
    ComponentFactory_Base factory;
    int calls = 0;
    auto const addCreator = [&] {
        factory.addComponentCreator("Engine", [guard = callsWhenItGoes([&] {
                                                   factory.removeComponentCreator("Wheel");
                                                   ++calls;
                                               })](auto const&) { return nullptr; });
    };

    addCreator();
    factory.removeComponentCreator("Engine");
    addCreator();
    factory.removeAllComponentCreators();

    EXPECT_EQ(calls, 2);
}

TEST(ComponentFactoryBase, callsNoCreatorWhenItIsDestroyed)
{
    int calls = 0;
    {
        ComponentFactory_Base factory;
        factory.addComponentCreator("Engine", [&](auto const&) {
            ++calls;
            return nullptr;
        });
    }

    EXPECT_EQ(calls, 0);
}

TEST(ComponentFactoryBase, keepsItsTableLockedWhileACreatorRuns)
{
    struct {
        char const* call;
        std::function<void(ComponentFactory_Base&)> run;
    } const cases[] = {
        {"createComponent", [](auto& factory) { factory.createComponent("Wheel", {}); }},
        {"addComponentCreator", [](auto& factory) { factory.addComponentCreator("Wheel", nullptr); }},
        {"removeComponentCreator", [](auto& factory) { factory.removeComponentCreator("Wheel"); }},
        {"removeAllComponentCreators", [](auto& factory) { factory.removeAllComponentCreators(); }},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.call);
        ComponentFactory_Base factory;
        std::atomic<bool> called = false;
        std::atomic<bool> back = false;
        std::thread other;
        factory.addComponentCreator("Engine", [&](auto const&) {
            other = std::thread([&] {
                called = true;
                row.run(factory);
                back = true;
            });
            while (!called)
                std::this_thread::yield();
            // A while to come back wrongly. Where the call waits as it should, this never fails.
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            EXPECT_FALSE(back);
            return nullptr;
        });

        factory.createComponent("Engine", {});

        other.join();
    }
}

TEST(ComponentFactoryBase, mayBeChangedAndAskedFromSeveralThreadsAtOnce)
{
    ComponentFactory_Base factory;
    factory.addComponentCreator("Engine", makes("engine"));
    auto const work = [&](std::string const& type) {
        for (int i = 0; i < 200; ++i) {
            factory.addComponentCreator(type, makes(type));
            EXPECT_EQ(nameOf(factory.createComponent(type, {})), type);
            EXPECT_EQ(nameOf(factory.createComponent("Engine", {})), "engine");
            factory.removeComponentCreator(type);
        }
    };

    std::thread first(work, "first");
    std::thread second(work, "second");
    first.join();
    second.join();

    EXPECT_THAT(typesOf(factory), ElementsAre("Engine"));
}

struct BehindFactoryInterface : ComponentFactoryInterface {
    virtual void next() = 0;
};

struct BehindFactoryBase : ComponentFactory_Base {
    virtual void next() = 0;
};

TEST(ComponentFactoryInterface, hasItsFunctionsInTheOrderThatLibrariesAreBuiltFor)
{
    EXPECT_EQ(slotOf(&ComponentFactoryInterface::createComponent), 0);
    EXPECT_EQ(slotOf(&ComponentFactoryInterface::supportedComponents), 1);
    EXPECT_EQ(slotOf(&BehindFactoryInterface::next), 4);
}

TEST(ComponentFactoryBase, hasItsFunctionsInTheOrderThatLibrariesAreBuiltFor)
{
    EXPECT_EQ(slotOf(&ComponentFactory_Base::createComponent), 0);
    EXPECT_EQ(slotOf(&ComponentFactory_Base::supportedComponents), 1);
    EXPECT_EQ(slotOf(&ComponentFactory_Base::addComponentCreator), 4);
    EXPECT_EQ(slotOf(&ComponentFactory_Base::removeComponentCreator), 5);
    EXPECT_EQ(slotOf(&ComponentFactory_Base::removeAllComponentCreators), 6);
    EXPECT_EQ(slotOf(&BehindFactoryBase::next), 7);
}

TEST(ComponentFactoryInterface, isNoComponentByItself)
{
    EXPECT_FALSE((std::is_base_of_v<ComponentInterface, ComponentFactoryInterface>));
    EXPECT_FALSE((std::is_base_of_v<ComponentInterface, ComponentFactory_Base>));
}

class CompleteFactory : public Component_Base, public ComponentFactory_Base, public LifeCycle::PassiveInterface {
public:
    void startLifeCycle() override { addComponentCreator("Engine", makes("engine")); }
    void endLifeCycle() override { removeAllComponentCreators(); }
};

TEST(CompleteFactory, isReachedInAllThreeRolesFromAnyOfThem)
{
    std::shared_ptr<ComponentFactoryInterface> const factory = std::make_shared<CompleteFactory>();

    auto const component = std::dynamic_pointer_cast<ComponentInterface>(factory);
    ASSERT_TRUE(component);
    auto* const passive = dynamic_cast<LifeCycle::PassiveInterface*>(component.get());
    ASSERT_TRUE(passive);
    passive->startLifeCycle();

    EXPECT_THAT(typesOf(*factory), ElementsAre("Engine"));
    EXPECT_EQ(dynamic_cast<ComponentFactoryInterface*>(passive), factory.get());
}

}  // namespace
}  // namespace Zelm
