#include "zelm/components/core_component_factory.h"

#include "tests/components/types_of.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_installation.h"
#include "tests/support/throws_text.h"

#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <type_traits>

namespace Zelm {
namespace {

using namespace Testing;
using ::testing::ElementsAre;

TEST(CoreComponentFactory, supportsNothingBeforeItsStart)
{
    EXPECT_THAT(typesOf(CoreComponentFactory_Impl()), ElementsAre());
}

TEST(CoreComponentFactory, supportsMessageCenterAndMessageQueueWhileItRuns)
{
    CoreComponentFactory_Impl factory;

    factory.startLifeCycle();
    EXPECT_THAT(typesOf(factory), ElementsAre("MessageCenter", "MessageQueue"));
    factory.startLifeCycle();
    EXPECT_THAT(typesOf(factory), ElementsAre("MessageCenter", "MessageQueue"));
    factory.endLifeCycle();
    EXPECT_THAT(typesOf(factory), ElementsAre());
    factory.startLifeCycle();
    EXPECT_THAT(typesOf(factory), ElementsAre("MessageCenter", "MessageQueue"));
}

TEST(CoreComponentFactory, makesNothingOnPurpose)
{
    CoreComponentFactory_Impl factory;
    factory.startLifeCycle();

    EXPECT_EQ(factory.createComponent("MessageCenter", {}), nullptr);
    EXPECT_EQ(factory.createComponent("MessageQueue", {"a", "b"}), nullptr);
    EXPECT_EQ(factory.createComponent("Engine", {}), nullptr);
}

class CountingFactory : public CoreComponentFactory_Impl {
public:
    void addComponentCreator(std::string const& componentType, Creators::mapped_type creator) override
    {
        calls.push_back("add " + componentType);
        CoreComponentFactory_Impl::addComponentCreator(componentType, std::move(creator));
    }
    void removeAllComponentCreators() override
    {
        calls.push_back("remove all");
        CoreComponentFactory_Impl::removeAllComponentCreators();
    }
    std::vector<std::string> calls;
};

TEST(CoreComponentFactory, goesThroughItsVirtualTableOperations)
{
    CountingFactory factory;

    factory.startLifeCycle();
    factory.endLifeCycle();

    EXPECT_THAT(factory.calls, ElementsAre("add MessageCenter", "add MessageQueue", "remove all"));
}

TEST(CoreComponentFactory, playsAllThreeRolesOfAFactory)
{
    EXPECT_TRUE((std::is_base_of_v<Component_Base, CoreComponentFactory_Impl>));
    EXPECT_TRUE((std::is_base_of_v<ComponentFactory_Base, CoreComponentFactory_Impl>));
    EXPECT_TRUE((std::is_base_of_v<LifeCycle::PassiveInterface, CoreComponentFactory_Impl>));
}

// -------------------------------------------------------------------------------- getComponentFactoryFromSharedLibrary

/// Asks the library that its argument names for a factory twice, and prints what comes.
ZELM_CHILD(asksLibraryForItsFactoryTwice)
{
    auto const& name = childArguments().at(0);
    try {
        auto const first = getComponentFactoryFromSharedLibrary(name);
        auto const second = getComponentFactoryFromSharedLibrary(name);
        std::cout << (first ? "a factory" : "nothing") << ", then " << (first == second ? "the same" : "another")
                  << std::endl;
    } catch (Exception::FailedToLoad const& error) {
        std::cout << "FailedToLoad: " << error.what() << std::endl;
    } catch (Exception::FailedToCreateComponent const& error) {
        std::cout << "FailedToCreateComponent: " << error.what() << std::endl;
    } catch (std::runtime_error const& error) {
        std::cout << "runtime_error: " << error.what() << std::endl;
    } catch (int number) {
        std::cout << "the number " << number << std::endl;
    }
    return 0;
}

struct FactoryCase {
    char const* fixture;
    std::string out;
};

TEST(FactoryFromSharedLibrary, isWhatTheLibrarysFunctionGives)
{
    std::string const missing = TemporaryInstallation::libraryName("missing_symbol");
    FactoryCase const cases[] = {
        {"engines", "engines: loaded\na factory, then another\n"},
        {"rival", "rival: loaded\na factory, then the same\n"},
        {"not_passive", "not_passive: factory made\nnot_passive: factory made\na factory, then another\n"},
        {"empty_factory", "empty_factory: asked\nempty_factory: asked\nnothing, then the same\n"},
        {"missing_symbol", "missing_symbol: loaded\nFailedToCreateComponent: Failed to Create Component Type \"" +
                               missing + "\": Couldn't find factory function\n"},
        {"throws_in_factory_function", "runtime_error: thrown in factory_function\n"},
        {"throws_a_number_in_factory_function", "the number 42\n"},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.fixture);
        TemporaryInstallation installation;
        installation.add(row.fixture);

        auto const child =
            installation.run("asksLibraryForItsFactoryTwice", {TemporaryInstallation::libraryName(row.fixture)});

        EXPECT_EQ(child.out, row.out);
        EXPECT_EQ(child.err, "");
        EXPECT_EQ(child.status, 0);
    }
}

TEST(FactoryFromSharedLibrary, isLookedForBesideTheProgramFirst)
{
    TemporaryInstallation installation;
    installation.add("rival", "libtwin.so.1");
    installation.add("engines", "../bin/libtwin.so.1");

    auto const child = installation.run("asksLibraryForItsFactoryTwice", {"libtwin.so.1"});

    EXPECT_EQ(child.out, "engines: loaded\na factory, then another\n");
}

TEST(FactoryFromSharedLibrary, throwsTheLoadersTextForALibraryThatCantBeFound)
{
    EXPECT_THAT([] { getComponentFactoryFromSharedLibrary("libabsent.so.1"); },
                throwsText<Exception::FailedToLoad>(
                    "Component \"libabsent.so.1\" failed to load: libabsent.so.1: cannot open shared object file: "
                    "No such file or directory"));
}

TEST(FactoryFromSharedLibrary, takesTheEmptyNameForTheProgramWhichHasNoFactory)
{
    EXPECT_THAT([] { getComponentFactoryFromSharedLibrary(""); },
                throwsText<Exception::FailedToCreateComponent>(
                    "Failed to Create Component Type \"\": Couldn't find factory function"));
}

TEST(FactoryFromSharedLibrary, throwsTheLoadersTextForALibraryThatNeedsAnother)
{
    TemporaryInstallation installation;
    installation.add("needs_absent");
    std::string const name = TemporaryInstallation::libraryName("needs_absent");

    auto const child = installation.run("asksLibraryForItsFactoryTwice", {name});

    EXPECT_EQ(child.out, "FailedToLoad: Component \"" + name +
                             "\" failed to load: libfixture_absent.so: cannot open shared object file: No such file or "
                             "directory\n");
}

}  // namespace
}  // namespace Zelm
