#include "zelm/components/components_repository.h"

#include "tests/components/installed.h"
#include "tests/components/map_runs.h"
#include "tests/components/repository_shell.h"
#include "tests/components/scripted.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_installation.h"
#include "zelm/components/component_factory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace Zelm {
namespace {

using namespace Testing;

// -------------------------------------------------------------------------------------- adding, removing and releasing

TEST(AddComponent, refusesATakenIdWithAnErrorThatIsFalse)
{
    TemporaryInstallation const installation;

    expectLines(installation, {"add a", "add a", "add b", "add CoreComponentFactory"},
                {"> add a = " + success, "> add a = " + alreadyInRepository, "> add b = " + success,
                 "> add CoreComponentFactory = " + alreadyInRepository},
                failedToOpen(installation));
}

TEST(RemoveComponent, takesTheInstanceOutAndEndsIt)
{
    expectLines(InstalledEngines(), {"instantiate Engine main", "remove main", "find main", "instantiate Wheel main"},
                {"engines: loaded", "engines: factory starts", "Engine(): made", "Engine(): starts as \"main\"",
                 "> instantiate Engine main = #1 \"main\"", "Engine(): ends as \"main\"", "> remove main = " + success,
                 "> find main = none", "Wheel(): made", "Wheel(): starts as \"main\"",
                 "> instantiate Wheel main = #2 \"main\""});
}

TEST(RemoveComponent, refusesAnEmptyPointer)
{
    TemporaryInstallation const installation;

    expectLines(installation, {"remove nobody"}, {"> remove nobody = " + invalidParameter}, failedToOpen(installation));
}

TEST(ReleaseAllComponents, endsEverythingInTheByteOrderOfTheIdsAndLeavesTheRepositoryUsable)
{
    expectLines(InstalledEngines(),
                {"instantiate Engine z", "instantiate Wheel a", "instantiate Wheel B", "add m", "release", "find z",
                 "find m", "find CoreComponentFactory", "find " + enginesFactory, "create Engine"},
                {"engines: loaded",
                 "engines: factory starts",
                 "Engine(): made",
                 "Engine(): starts as \"z\"",
                 "> instantiate Engine z = #1 \"z\"",
                 "Wheel(): made",
                 "Wheel(): starts as \"a\"",
                 "> instantiate Wheel a = #2 \"a\"",
                 "Wheel(): made",
                 "Wheel(): starts as \"B\"",
                 "> instantiate Wheel B = #3 \"B\"",
                 "> add m = " + success,
                 "Wheel(): ends as \"B\"",
                 "Wheel(): ends as \"a\"",
                 "engines: factory ends",
                 "Engine(): ends as \"z\"",
                 "> release = done",
                 "> find z = none",
                 "> find m = none",
                 "> find CoreComponentFactory = none",
                 "> find " + enginesFactory + " = none",
                 "engines: factory starts",
                 "Engine(): made",
                 "> create Engine = #4 \"\""});
}

TEST(ReleaseAllComponents, stopsAtAnEndThatThrowsAndPassesItOn)
{
    expectLines(Installed("components_that_throw", {"ThrowsInEnd"}),
                {"add a", "instantiate ThrowsInEnd b", "add c", "release", "find a", "find b", "find c"},
                {"> add a = " + success, "components_that_throw: factory starts", "ThrowsInEnd(): made",
                 "ThrowsInEnd(): starts as \"b\"", "> instantiate ThrowsInEnd b = #1 \"b\"", "> add c = " + success,
                 "> release = runtime_error: no end for \"b\"", "> find a = none", "> find b = none",
                 "> find c = #2 \"c\""});
}

ZELM_CHILD(checksAddComponent)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    std::string idInStart;
    bool foundInStart = true;
    auto const component = std::make_shared<Scripted>([&](Scripted& self) {
        idInStart = self.instanceId();
        foundInStart = repository->findComponent("a") != nullptr;
    });

    ZELM_CHECK(!repository->addComponent(component, "a"));
    ZELM_CHECK(idInStart == "a");
    ZELM_CHECK(!foundInStart);
    ZELM_CHECK(component->instanceId() == "a");
    ZELM_CHECK(repository->findComponent("a") == component);

    auto const late = std::make_shared<Scripted>([](Scripted&) { check(false, "a refused component isn't started"); });
    late->setInstanceId("before");
    ZELM_CHECK(repository->addComponent(late, "a").category() == Error::Category::ComponentRepository);
    ZELM_CHECK(late->instanceId() == "before");
    ZELM_CHECK(repository->findComponent("a") == component);

    Error empty = repository->addComponent(nullptr, "b");
    ZELM_CHECK(empty && empty.code() == 1 && empty.category() == Error::Category::Generic);
    ZELM_CHECK(empty.info() == "Invalid or out-of-range parameter passed to function.");
    return 0;
}

TEST(AddComponent, namesAndStartsAComponentBeforeItCanBeFound)
{
    expectChecksHold("checksAddComponent");
}

ZELM_CHILD(checksAStartThatThrows)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    auto const component = std::make_shared<Scripted>([](Scripted&) { throw std::runtime_error("no start"); });

    try {
        repository->addComponent(component, "a");
        check(false, "the exception passes through");
    } catch (std::runtime_error const& error) {
        ZELM_CHECK(error.what() == std::string("no start"));
    }
    ZELM_CHECK(repository->findComponent("a") == nullptr);
    ZELM_CHECK(component->instanceId() == "a");
    return 0;
}

TEST(AddComponent, leavesTheIdOnAComponentWhoseStartThrowsAndDoesntKeepIt)
{
    expectChecksHold("checksAStartThatThrows");
}

ZELM_CHILD(checksAStartThatAddsUnderItsOwnId)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    auto const inner = std::make_shared<Plain>();
    auto const outer = std::make_shared<Scripted>([&](Scripted&) { repository->addComponent(inner, "a"); });

    ZELM_CHECK(!repository->addComponent(outer, "a"));
    ZELM_CHECK(repository->findComponent("a") == outer);
    ZELM_CHECK(inner->instanceId() == "a");
    return 0;
}

TEST(AddComponent, storesTheComponentAfterItsStartWhateverThatStoredMeanwhile)
{
    expectChecksHold("checksAStartThatAddsUnderItsOwnId");
}

ZELM_CHILD(checksRemoveComponent)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    std::string idInEnd;
    bool foundInEnd = true;
    auto const component = std::make_shared<Scripted>(Scripted::Action(), [&](Scripted& self) {
        idInEnd = self.instanceId();
        foundInEnd = repository->findComponent("a") != nullptr;
    });
    repository->addComponent(component, "a");

    ZELM_CHECK(!repository->removeComponent(component));
    ZELM_CHECK(idInEnd == "a");
    ZELM_CHECK(!foundInEnd);
    ZELM_CHECK(component->instanceId().empty());

    for (auto const& stranger : {component, std::make_shared<Scripted>()}) {
        Error notThere = repository->removeComponent(stranger);
        ZELM_CHECK(notThere && notThere.code() == 1 && notThere.category() == Error::Category::ComponentRepository);
    }

    ZELM_CHECK(!repository->addComponent(component, "b"));
    ZELM_CHECK(repository->findComponent("b") == component);
    repository->removeComponent(component);
    return 0;
}

TEST(RemoveComponent, endsAComponentThatCantBeFoundAnyMoreAndEmptiesItsId)
{
    expectChecksHold("checksRemoveComponent");
}

ZELM_CHILD(checksRemovingByAnotherObject)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    int ended = 0;
    auto const kept = std::make_shared<Scripted>(Scripted::Action(), [&](Scripted&) { ++ended; });
    auto const other =
        std::make_shared<Scripted>(Scripted::Action(), [](Scripted&) { check(false, "other isn't ended"); });
    repository->addComponent(kept, "a");
    other->setInstanceId("a");

    ZELM_CHECK(!repository->removeComponent(other));
    ZELM_CHECK(ended == 1);
    ZELM_CHECK(kept->instanceId().empty());
    ZELM_CHECK(other->instanceId() == "a");
    ZELM_CHECK(repository->findComponent("a") == nullptr);
    return 0;
}

TEST(RemoveComponent, removesWhateverStandsUnderTheIdOnPurpose)
{
    expectChecksHold("checksRemovingByAnotherObject");
}

ZELM_CHILD(checksAnEndThatThrows)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    auto const component =
        std::make_shared<Scripted>(Scripted::Action(), [](Scripted&) { throw std::runtime_error("no end"); });
    repository->addComponent(component, "a");

    try {
        repository->removeComponent(component);
        check(false, "the exception passes through");
    } catch (std::runtime_error const& error) {
        ZELM_CHECK(error.what() == std::string("no end"));
    }
    ZELM_CHECK(repository->findComponent("a") == nullptr);
    ZELM_CHECK(component->instanceId() == "a");
    return 0;
}

TEST(RemoveComponent, leavesTheIdOnAComponentWhoseEndThrows)
{
    expectChecksHold("checksAnEndThatThrows");
}

ZELM_CHILD(checksRelease)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    auto const core = repository->findComponent("CoreComponentFactory");
    auto const late = std::make_shared<Scripted>();
    auto const early =
        std::make_shared<Scripted>(Scripted::Action(), [&](Scripted&) { repository->addComponent(late, "z"); });
    repository->addComponent(early, "a");

    repository->releaseAllComponents();

    ZELM_CHECK(early->instanceId().empty());
    ZELM_CHECK(core->instanceId().empty());
    ZELM_CHECK(dynamic_cast<ComponentFactoryInterface&>(*core).supportedComponents().empty());
    ZELM_CHECK(repository->findComponent("z") == late);
    return 0;
}

TEST(ReleaseAllComponents, endsTheCoreFactoryAndLeavesWhatIsAddedMeanwhile)
{
    expectChecksHold("checksRelease");
}

class CountingRepository : public ComponentsRepository {
public:
    Error removeComponent(std::shared_ptr<ComponentInterface> component) override
    {
        removed.push_back(component->instanceId());
        return ComponentsRepository::removeComponent(component);
    }
    std::vector<std::string> removed;
};

ZELM_CHILD(checksThatReleaseRemovesThroughTheVirtualOperation)
{
    CountingRepository repository;
    repository.addComponent(std::make_shared<Plain>(), "b");
    repository.addComponent(std::make_shared<Plain>(), "a");

    repository.releaseAllComponents();

    ZELM_CHECK((repository.removed == std::vector<std::string>{"CoreComponentFactory", "a", "b"}));
    return 0;
}

TEST(ReleaseAllComponents, removesThroughTheVirtualOperation)
{
    expectChecksHold("checksThatReleaseRemovesThroughTheVirtualOperation");
}

/// Lets its two users go on when both have arrived.
class MeetingPoint {
public:
    void meet()
    {
        std::unique_lock lock(mutex_);
        ++arrived_;
        changed_.notify_all();
        changed_.wait(lock, [this] { return arrived_ == 2; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int arrived_ = 0;
};

ZELM_CHILD(endsTwoComponentsAtOnce)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    MeetingPoint point;
    std::vector<std::thread> threads;
    for (char const* id : {"a", "b"}) {
        auto const component = std::make_shared<Scripted>(Scripted::Action(), [&](Scripted&) {
            point.meet();  // for ever, if the first to arrive held the repository's lock
        });
        repository->addComponent(component, id);
        threads.emplace_back([&repository, component] { repository->removeComponent(component); });
    }
    for (auto& thread : threads)
        thread.join();
    return 0;
}

TEST(RemoveComponent, endsTheComponentOutsideTheLock)
{
    expectChecksHold("endsTwoComponentsAtOnce");
}

ZELM_CHILD(endsAComponentThatWaitsForAnotherThreadInARelease)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    auto const last = std::make_shared<Plain>();
    repository->addComponent(last, "z");
    bool found = false;
    repository->addComponent(
        std::make_shared<Scripted>(Scripted::Action(),
                                   [&](Scripted&) {
                                       // For ever, if the release held the lock.
                                       std::thread([&] { found = repository->findComponent("z") == last; }).join();
                                   }),
        "a");

    repository->releaseAllComponents();

    ZELM_CHECK(found);
    return 0;
}

TEST(ReleaseAllComponents, endsTheComponentsOutsideTheLock)
{
    expectChecksHold("endsAComponentThatWaitsForAnotherThreadInARelease");
}

/// In its start lets another thread look for the component that is being started. With the lock held until the
/// component is in the table, that thread always finds it.
class SoughtInItsStart {
public:
    explicit SoughtInItsStart(std::shared_ptr<ComponentsRepositoryInterface> repository)
        : repository_(std::move(repository)), component_(std::make_shared<Scripted>([this](Scripted&) { seek(); }))
    {
    }
    std::shared_ptr<Scripted> const& component() const { return component_; }
    bool wasFound()
    {
        thread_.join();
        return found_ == component_;
    }

private:
    void seek()
    {
        thread_ = std::thread([this] {
            seeking_ = true;
            found_ = repository_->findComponent("a");
        });
        while (!seeking_)
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));  // a while to come back wrongly
    }

    std::shared_ptr<ComponentsRepositoryInterface> repository_;
    std::shared_ptr<Scripted> component_;
    std::shared_ptr<ComponentInterface> found_;
    std::atomic<bool> seeking_ = false;
    std::thread thread_;
};

ZELM_CHILD(seeksAComponentThatIsBeingAdded)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    SoughtInItsStart sought(repository);

    repository->addComponent(sought.component(), "a");

    ZELM_CHECK(sought.wasFound());
    return 0;
}

TEST(AddComponent, startsTheComponentWithTheLockHeld)
{
    expectChecksHold("seeksAComponentThatIsBeingAdded");
}

ZELM_CHILD(seeksAComponentThatIsBeingInstantiated)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    SoughtInItsStart sought(repository);
    repository->createComponent("Single", {});  // starts the factory
    auto const factory = repository->findComponent(TemporaryInstallation::libraryName("one_at_a_time") + "->Factory");
    auto& creators = dynamic_cast<ComponentFactory_Base&>(*factory);
    creators.removeAllComponentCreators();
    creators.addComponentCreator("Single", [&](auto const&) { return sought.component(); });

    repository->instantiateComponent("Single", "a", {});

    ZELM_CHECK(sought.wasFound());
    creators.removeAllComponentCreators();
    return 0;
}

TEST(InstantiateComponent, startsTheComponentWithTheLockHeld)
{
    auto const child = Installed("one_at_a_time", {"Single"}).run("seeksAComponentThatIsBeingInstantiated");

    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

}  // namespace
}  // namespace Zelm
