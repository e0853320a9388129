// Which factory makes a component. The repository remembers that of each type, so the second creation counts here.
#include "zelm/components/components_repository.h"

#include "tests/components/installed.h"
#include "tests/components/repository_shell.h"
#include "tests/components/scripted.h"
#include "tests/support/child_process.h"
#include "zelm/components/component_factory.h"
#include "zelm/core/exceptions.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace Zelm {
namespace {

using namespace Testing;

/// Says which factory made it.
class Marked : public Component_Base {
public:
    explicit Marked(int factory) : factory_(factory) {}
    int factory() const { return factory_; }

private:
    int factory_;
};

/// A factory of the program's own, which makes engines and nothing else.
class OwnFactory : public Component_Base, public ComponentFactoryInterface, public LifeCycle::PassiveInterface {
public:
    using Action = std::function<void()>;
    explicit OwnFactory(int number, Action start = {}, Action creation = {})
        : number_(number), start_(std::move(start)), creation_(std::move(creation))
    {
    }
    void startLifeCycle() override
    {
        if (start_)
            start_();
    }
    void endLifeCycle() override {}
    std::shared_ptr<ComponentInterface> createComponent(std::string type, std::vector<std::string> const&) override
    {
        if (creation_)
            creation_();
        return type == "Engine" ? std::make_shared<Marked>(number_) : nullptr;
    }
    Creators const& supportedComponents() const override { return creators_; }
    int number() const { return number_; }

private:
    int const number_;
    Action const start_;
    Action const creation_;
    Creators const creators_;
};

/// The number of the own factory that made it, 0 for a library's.
int makerOf(std::shared_ptr<ComponentInterface> const& component)
{
    auto const marked = std::dynamic_pointer_cast<Marked>(component);
    return marked ? marked->factory() : 0;
}

std::string outcomeOf(std::function<std::string()> const& function)
{
    try {
        return function();
    } catch (Exception::FailedToCreateComponent const& error) {
        return error.what();
    }
}

std::string madeBy(int factory)
{
    return "made by " + std::to_string(factory);
}

/// What creating the type comes to if nobody remembers anything: told by what stands under the factory's id.
std::string expectedOutcome(std::string const& type, std::shared_ptr<ComponentInterface> const& holder)
{
    if (auto const own = std::dynamic_pointer_cast<OwnFactory>(holder))
        return type == "Engine"
                   ? madeBy(own->number())
                   : Exception::FailedToCreateComponent(type, "Component factory didn't create component").what();
    if (holder && !std::dynamic_pointer_cast<ComponentFactoryInterface>(holder))
        return Exception::FailedToCreateComponent(enginesFactory, "Component factory failed to load").what();
    return madeBy(0);
}

/// Takes away what stands under the factory's id, and may put something else there; or changes another entry.
void change(ComponentsRepositoryInterface& repository, unsigned long kind, int number)
{
    if (kind < 3)
        repository.removeComponent(repository.findComponent(enginesFactory));
    switch (kind) {
    case 0:
        break;
    case 1:
        repository.addComponent(std::make_shared<OwnFactory>(number), enginesFactory);
        break;
    case 2:
        repository.addComponent(std::make_shared<Plain>(), enginesFactory);
        break;
    case 3:
        repository.addComponent(std::make_shared<Plain>(), "another");
        break;
    case 4:
        repository.removeComponent(repository.findComponent("another"));
        break;
    default:
        repository.releaseAllComponents();
    }
}

ZELM_CHILD(createsWhileFactoriesComeAndGo)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    std::ostringstream log;
    auto* const out = std::cout.rdbuf(log.rdbuf());
    auto* const err = std::cerr.rdbuf(log.rdbuf());

    std::mt19937 random(20240229);
    std::string faults;
    int byLibrary = 0;
    int byOwn = 0;
    int failures = 0;
    for (int step = 1; step <= 5000; ++step) {
        if (random() % 3 == 0) {
            change(*repository, random() % 6, step);
            continue;
        }
        std::string const type = random() % 2 == 0 ? "Engine" : "Wheel";
        auto const expected = expectedOutcome(type, repository->findComponent(enginesFactory));
        auto const outcome = outcomeOf([&] { return madeBy(makerOf(repository->createComponent(type, {}))); });
        if (outcome != expected)
            faults += "step " + std::to_string(step) + ", " + type + ": " + outcome + ", not " + expected + '\n';
        ++(outcome == madeBy(0) ? byLibrary : outcome.find("made by") == 0 ? byOwn : failures);
    }
    repository->releaseAllComponents();

    std::cout.rdbuf(out);
    std::cerr.rdbuf(err);
    std::cout << faults;
    ZELM_CHECK(byLibrary > 100 && byOwn > 100 && failures > 100);
    return 0;
}

TEST(CreateComponent, asksTheFactoryThatStandsUnderTheLibrarysIdAtThatMoment)
{
    auto const child = InstalledEngines().run("createsWhileFactoriesComeAndGo");
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.status, 0);
}

ZELM_CHILD(takesAFactoryOutInItsOwnCreation)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    bool takesOut = false;
    repository->addComponent(std::make_shared<OwnFactory>(1, OwnFactory::Action(),
                                                          [&] {
                                                              auto const factory =
                                                                  repository->findComponent(enginesFactory);
                                                              if (takesOut)
                                                                  repository->removeComponent(factory);
                                                          }),
                             enginesFactory);

    ZELM_CHECK(makerOf(repository->createComponent("Engine", {})) == 1);
    takesOut = true;
    ZELM_CHECK(makerOf(repository->createComponent("Engine", {})) == 1);
    ZELM_CHECK(!repository->findComponent(enginesFactory));
    return 0;
}

TEST(CreateComponent, keepsAFactoryThatIsTakenOutMeanwhileUntilItHasMadeTheComponent)
{
    auto const child = InstalledEngines().run("takesAFactoryOutInItsOwnCreation");
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.status, 0);
}

ZELM_CHILD(replacesAFactoryThatMadeAComponent)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    auto const outer = std::make_shared<OwnFactory>(1, [&] {
        repository->addComponent(std::make_shared<OwnFactory>(2), enginesFactory);
        ZELM_CHECK(makerOf(repository->createComponent("Engine", {})) == 2);
    });

    repository->addComponent(outer, enginesFactory);

    ZELM_CHECK(makerOf(repository->createComponent("Engine", {})) == 1);
    return 0;
}

TEST(CreateComponent, asksTheFactoryThatReplacedAnotherUnderTheSameId)
{
    auto const child = InstalledEngines().run("replacesAFactoryThatMadeAComponent");
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.status, 0);
}

TEST(CreateComponent, remembersAFactoryOnlyIfItStandsUnderItsLibrarysId)
{
    // The library takes its factory's id for another component, which is found there from then on.
    Installed const installation("gives_its_id_away", {"Item"});
    auto const id = TemporaryInstallation::libraryName("gives_its_id_away") + "->Factory";

    expectLines(installation, {"create Item", "find " + id, "create Item"},
                {"Usurper(): made", "Usurper(): starts as \"" + id + "\"", "Item(): made", "> create Item = #1 \"\"",
                 "> find " + id + " = #2 \"" + id + "\"",
                 "> create Item = " + failed(id, "Component factory failed to load")},
                "Error loading ComponentFactory: " + id + "\n");
}

TEST(CreateComponent, usesAFactoryThatIsTakenOutAsItComesInButDoesNotRememberIt)
{
    Installed const installation("takes_itself_out", {"Item"});
    auto const id = TemporaryInstallation::libraryName("takes_itself_out") + "->Factory";

    expectLines(installation, {"create Item", "find " + id, "create Item"},
                {"factory starts", "factory ends", "Item(): made", "> create Item = #1 \"\"",
                 "> find " + id + " = none", "factory starts", "factory ends", "Item(): made",
                 "> create Item = #2 \"\""});
}

}  // namespace
}  // namespace Zelm
