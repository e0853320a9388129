#include "zelm/components/components_repository.h"

#include "zelm/components/component_factory.h"
#include "zelm/components/components_map.h"
#include "zelm/components/core_component_factory.h"
#include "zelm/core/exceptions.h"

#include <atomic>
#include <iostream>
#include <utility>

namespace Zelm {

std::string const factorySuffix = "->Factory";
std::string const coreFactoryName = "CoreComponentFactory";

namespace {

/// The process's repository while its destructor ends the components, and null at all other times. Nobody owns it then.
std::atomic<ComponentsRepositoryInterface*> endingRepository{nullptr};

/// Destroys the process's repository in such a way that the components may ask for it while they are ended.
void destroyWithinReach(ComponentsRepository* repository)
{
    endingRepository = repository;
    delete repository;
}

/// The process's repository with the process's own share in it.
class ProcessRepository {
public:
    ProcessRepository() : owner_(new ComponentsRepository, &destroyWithinReach), repository_(owner_) {}

    /// Takes no lock and needs none: what it reads is never written again, or atomic.
    std::shared_ptr<ComponentsRepositoryInterface> get() const
    {
        if (auto repository = repository_.lock())
            return repository;
        // An owner made now would destroy the repository a second time.
        return {std::shared_ptr<void>(), endingRepository.load()};
    }
    void letGo() { owner_.reset(); }

private:
    std::shared_ptr<ComponentsRepositoryInterface> owner_;  // for letGo alone
    std::weak_ptr<ComponentsRepositoryInterface> const repository_;
};

class LetsGoAtExit {
public:
    explicit LetsGoAtExit(ProcessRepository& repository) : repository_(repository) {}
    LetsGoAtExit(LetsGoAtExit const&) = delete;
    LetsGoAtExit& operator=(LetsGoAtExit const&) = delete;
    ~LetsGoAtExit() { repository_.letGo(); }

private:
    ProcessRepository& repository_;
};

bool namesAFactory(std::string const& componentType)
{
    return componentType.size() >= factorySuffix.size() &&
           componentType.compare(componentType.size() - factorySuffix.size(), factorySuffix.size(), factorySuffix) == 0;
}

/// A new factory of the library that `factoryType` names in front of the suffix.
std::shared_ptr<ComponentInterface> createFactory(std::string const& factoryType)
{
    auto const factory =
        getComponentFactoryFromSharedLibrary(factoryType.substr(0, factoryType.size() - factorySuffix.size()));
    if (!factory)
        throw Exception::FailedToCreateComponent(factoryType, "No component factory provided");
    auto component = std::dynamic_pointer_cast<ComponentInterface>(factory);
    if (!component)
        throw Exception::FailedToCreateComponent(factoryType,
                                                 "Component factory provided doesn't support ComponentInterface");
    return component;
}

/// Takes the factory's instance by value: a creator may take its own factory out of the repository.
std::shared_ptr<ComponentInterface> createBy(ComponentFactoryInterface& factory,
                                             std::shared_ptr<ComponentInterface> const /*staysAlive*/,
                                             std::string const& componentType,
                                             std::vector<std::string> const& arguments)
{
    auto component = factory.createComponent(componentType, arguments);
    if (!component)
        throw Exception::FailedToCreateComponent(componentType, "Component factory didn't create component");
    return component;
}

}  // namespace

ComponentsRepositoryInterface::~ComponentsRepositoryInterface() = default;

std::shared_ptr<ComponentsRepositoryInterface> ComponentsRepositoryInterface::getComponentsRepository()
{
    // This storage is never destroyed: it answers also those who ask at the very end of the process.
    static auto& repository = *new ProcessRepository;
    static LetsGoAtExit const release(repository);
    return repository.get();
}

ComponentsRepository::ComponentsRepository()
{
    GuardedRepo::Access access(repo_);
    addComponent(access, std::make_shared<CoreComponentFactory_Impl>(), coreFactoryName);
    initializeSourceMap(access->map);
}

ComponentsRepository::~ComponentsRepository()
{
    releaseAllComponents();  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall): the one of this class
    // What goes with the members finds no repository any more.
    ComponentsRepositoryInterface* self = this;
    endingRepository.compare_exchange_strong(self, nullptr);
}

// ---------------------------------------------------------------------------------------------- instances in the table

void ComponentsRepository::releaseAllComponents()
{
    std::vector<std::shared_ptr<ComponentInterface>> components;
    {
        GuardedRepo::Access access(repo_);
        components.reserve(access->components.size());
        for (auto const& entry : access->components)
            components.push_back(entry.second);
    }
    for (auto const& component : components)
        removeComponent(component);  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall): the one of this class
}

Error ComponentsRepository::addComponent(std::shared_ptr<ComponentInterface> component, std::string const& instanceId)
{
    GuardedRepo::Access access(repo_);
    return addComponent(access, std::move(component), instanceId);
}

Error ComponentsRepository::addComponent(GuardedRepo::Access& access, std::shared_ptr<ComponentInterface> component,
                                         std::string const& instanceId)
{
    if (!component)
        return InvalidParameter();
    if (access->components.count(instanceId) != 0)
        return AlreadyInRepository();

    // The entry is made before the start, so that a component which has been started is sure to be kept, and ended.
    decltype(access->components) entry;
    entry.emplace(instanceId, component);
    component->setInstanceId(instanceId);
    if (auto* const passive = dynamic_cast<LifeCycle::PassiveInterface*>(component.get()))
        passive->startLifeCycle();
    auto stored = access->components.insert(entry.extract(entry.begin()));
    if (!stored.inserted) {
        access->factories.clear();
        stored.position->second = std::move(component);
    }
    return NoError();
}

Error ComponentsRepository::removeComponent(std::shared_ptr<ComponentInterface> component)
{
    if (!component)
        return InvalidParameter();

    // The id alone counts: what stands under it may be another object, and that one is ended then.
    auto const removed = [&] {
        GuardedRepo::Access access(repo_);
        auto const& id = component->instanceId();
        if (namesAFactory(id))
            access->factories.clear();
        return locateComponent(access->components, id, true);
    }();
    if (!removed)
        return NotInRepository();

    if (auto* const passive = dynamic_cast<LifeCycle::PassiveInterface*>(removed.get()))
        passive->endLifeCycle();
    removed->setInstanceId("");
    return NoError();
}

std::shared_ptr<ComponentInterface> ComponentsRepository::findComponent(std::string const& instanceId)
{
    GuardedRepo::Access access(repo_);
    return locateComponent(access->components, instanceId, false);
}

std::shared_ptr<ComponentInterface>
locateComponent(std::map<std::string, std::shared_ptr<ComponentInterface>>& components, std::string const& instanceId,
                bool remove)
{
    auto const entry = components.find(instanceId);
    if (entry == components.end())
        return nullptr;
    if (!remove)
        return entry->second;
    auto component = std::move(entry->second);
    components.erase(entry);
    return component;
}

// --------------------------------------------------------------------------------------------------- making components

std::shared_ptr<ComponentInterface> ComponentsRepository::createComponent(std::string const& componentType,
                                                                          std::vector<std::string> const& arguments)
{
    GuardedRepo::Access access(repo_);
    return createComponent(access, componentType, arguments);
}

// The two below go round once: what a component needs is its factory, and that needs none.
// NOLINTBEGIN(misc-no-recursion): see above
std::shared_ptr<ComponentInterface> ComponentsRepository::createComponent(GuardedRepo::Access& access,
                                                                          std::string const& componentType,
                                                                          std::vector<std::string> const& arguments)
{
    // The map stands from the repository's construction on, so the way below would lead to the same factory as before,
    // as long as that stands in the table.
    if (auto const known = access->factories.find(componentType); known != access->factories.end())
        return createBy(*known->second.factory, *known->second.instance, componentType, arguments);

    if (access->map.components().empty())
        throw Exception::FailedToCreateComponent(componentType, "No Component Repository Data");
    if (namesAFactory(componentType))
        return createFactory(componentType);

    auto const factoryType = std::as_const(access->map)[componentType].factoryName() + factorySuffix;
    auto const instance = instantiateComponent(access, factoryType, factoryType, {});
    auto* const factory = dynamic_cast<ComponentFactoryInterface*>(instance.get());
    if (!factory) {
        std::cerr << "Error loading ComponentFactory: " << factoryType << std::endl;
        throw Exception::FailedToCreateComponent(factoryType, "Component factory failed to load");
    }
    // A library whose code has put another component under that id meanwhile keeps its factory out of the table.
    if (auto const entry = access->components.find(factoryType);
        entry != access->components.end() && entry->second == instance)
        access->factories.insert_or_assign(componentType, RunningFactory{&entry->second, factory});
    return createBy(*factory, instance, componentType, arguments);
}

std::shared_ptr<ComponentInterface>
ComponentsRepository::instantiateComponent(std::string const& componentType, std::string const& instanceId,
                                           std::vector<std::string> const& arguments)
{
    GuardedRepo::Access access(repo_);
    return instantiateComponent(access, componentType, instanceId, arguments);
}

std::shared_ptr<ComponentInterface>
ComponentsRepository::instantiateComponent(GuardedRepo::Access& access, std::string const& componentType,
                                           std::string const& instanceId, std::vector<std::string> const& arguments)
{
    if (auto running = locateComponent(access->components, instanceId, false))
        return running;
    auto component = createComponent(access, componentType, arguments);
    addComponent(access, component, instanceId);
    return component;
}
// NOLINTEND(misc-no-recursion)

}  // namespace Zelm
