/// @file
/// The components repository: the one place in a process where components are created and found.
///
///     auto const repository = Zelm::ComponentsRepositoryInterface::getComponentsRepository();
///     auto const engine = repository->instantiateComponent("Engine", "main engine", {"V", "8"});
///     ...
///     auto const same = repository->findComponent("main engine");
///
/// It holds two things: the table of running instances by instance id, and the components map, which says which
/// library's factory makes which type (components_map.h tells where that comes from). There are two ways of making a
/// component:
///
///                                  createComponent      instantiateComponent
///     kept in the table            no                   yes, under the instance id
///     instance id set, started     no                   yes, startLifeCycle if it is a LifeCycle::PassiveInterface
///     an instance under the id     not looked for       returned as it is, whatever its type and arguments
///     ended at exit                no                   yes
///
/// A library's factory is a component too. The first creation of one of its types puts it into the table under the
/// library's name and "->Factory", so that it lives and is started once.
///
/// The process lets go of the repository at exit, and the repository goes with the last copy of its pointer: a copy
/// that a static object keeps delays the end until that object goes, and one that is never given up, such as a
/// component's own, prevents it. All instances that stand in the table then end, once and in ascending byte order of
/// their ids and of nothing else; what they add meanwhile is dropped without an end. By then static objects of a
/// library that was loaded late may be gone: an application with such components calls releaseAllComponents() before it
/// leaves main. A component may ask for the repository while it is being ended.
///
/// Thread-safety: any thread may call any operation of the repository. One recursive lock guards everything and is held
/// while libraries are loaded, creators run and components start: creations run one at a time in the whole process, and
/// a creator or a startLifeCycle may call the repository on its own thread. endLifeCycle runs outside the lock, and so
/// does the emptying of the id behind it: two threads must not remove the same object at the same time.
/// ComponentsRepository::Map and its rows have no lock.
#pragma once

#include "zelm/components/component.h"
#include "zelm/core/errors.h"
#include "zelm/core/export.h"
#include "zelm/core/scoped_accessor.h"
#include "zelm/metadata/mirrored_object.h"
#include "zelm/metadata/reflector.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace Zelm {

class ComponentFactoryInterface;

/// "->Factory": ends every instance id and type name that stands for a library's factory.
ZELM_EXPORT extern std::string const factorySuffix;
/// "CoreComponentFactory": the instance id of the core library's own factory (core_component_factory.h).
ZELM_EXPORT extern std::string const coreFactoryName;

/// Slot order: releaseAllComponents, addComponent, removeComponent, findComponent, createComponent,
/// instantiateComponent, destructor.
class ZELM_EXPORT ComponentsRepositoryInterface {
public:
    class ComponentRepositoryError;
    class AlreadyInRepository;
    class NotInRepository;

    /// The process's one repository. The first call makes it: that reads the components map and, unless the map still
    /// fits the installation, loads every component library; other callers wait meanwhile. If making it throws, the
    /// exception comes out here and the next call tries again.
    /// Never empty before the process exits, nor as long as anybody keeps a copy. While the repository goes and ends
    /// its components, they get a pointer that can be used but owns nothing, and so is worth nothing after their end.
    /// Behind that it is empty.
    static std::shared_ptr<ComponentsRepositoryInterface> getComponentsRepository();

    /// Ends all instances that stand in the table now, in ascending byte order of their ids, the factories and the core
    /// factory among them. What is added meanwhile stays. The repository can create components afterwards.
    /// An exception from an endLifeCycle passes through; the instances behind that one stay.
    virtual void releaseAllComponents() = 0;

    /// Puts a component under that id, which it gets, and starts its life cycle before it can be found.
    /// Returns InvalidParameter for an empty pointer, AlreadyInRepository for a taken id, which changes nothing. An
    /// exception from startLifeCycle passes through: the component isn't in the table then and keeps the id.
    virtual Error addComponent(std::shared_ptr<ComponentInterface> component, std::string const& instanceId) = 0;

    /// Takes out whatever stands under the component's instance id, which needn't be this very object, and ends it: its
    /// life cycle first, without the lock, then its id is emptied.
    /// Returns InvalidParameter for an empty pointer, NotInRepository if nothing stands there. An exception from
    /// endLifeCycle passes through: the entry is gone then and the object keeps its id.
    /// The id is read with the lock and emptied without it, so two threads must not remove one object at the same time.
    virtual Error removeComponent(std::shared_ptr<ComponentInterface> component) = 0;

    /// The instance under that id, or an empty pointer.
    virtual std::shared_ptr<ComponentInterface> findComponent(std::string const& instanceId) = 0;

    /// A new object of that type, which belongs to the caller: not started, without an id and not in the table. Never
    /// empty. A type that ends in "->Factory" gives a new factory of the library in front of that.
    ///
    /// Throws, and then the library's factory may stand in the table all the same:
    ///  - Exception::MissingComponent if the type isn't known, or its library isn't, with what the last build failed
    ///    on if it failed;
    ///  - Exception::FailedToLoad if the library can't be loaded;
    ///  - Exception::FailedToCreateComponent in all other cases: the map is empty, the map says why the type or its
    ///    library can't be used, the library offers no usable factory, or the factory didn't make anything;
    ///  - what the factory or the creator throws.
    virtual std::shared_ptr<ComponentInterface> createComponent(std::string const& componentType,
                                                                std::vector<std::string> const& arguments) = 0;

    /// The instance under that id if there is one, otherwise a new object of that type, put there and started. Never
    /// empty. Throws what createComponent and startLifeCycle throw; nothing is stored then.
    virtual std::shared_ptr<ComponentInterface> instantiateComponent(std::string const& componentType,
                                                                     std::string const& instanceId,
                                                                     std::vector<std::string> const& arguments) = 0;

    virtual ~ComponentsRepositoryInterface();
};

/// An error of the category ComponentRepository, without a text.
class ZELM_EXPORT ComponentsRepositoryInterface::ComponentRepositoryError : public Error {
public:
    explicit ComponentRepositoryError(unsigned int const& code) : Error(code, Category::ComponentRepository, "") {}
};

/// Code 0 on purpose: a plain boolean test takes it for success, since the component that was asked for is there. Only
/// category() tells it from NoError.
class ZELM_EXPORT ComponentsRepositoryInterface::AlreadyInRepository : public ComponentRepositoryError {
public:
    AlreadyInRepository() : ComponentRepositoryError(0) {}
};

class ZELM_EXPORT ComponentsRepositoryInterface::NotInRepository : public ComponentRepositoryError {
public:
    NotInRepository() : ComponentRepositoryError(1) {}
};

/// The repository itself. Applications take the one of getComponentsRepository(); another object has a table of its own
/// and reads the same map file.
class ZELM_EXPORT ComponentsRepository : public ComponentsRepositoryInterface {
public:
    /// The components map: which library's factory makes which component type, or why it can't. The object in memory
    /// and the JSON document in "CMP_ComponentsMap.json" are two views of the same data; see components_map.h.
    class ZELM_EXPORT Map : public MetaData::MirroredObject {
    public:
        /// A component type.
        class ZELM_EXPORT Component : public MetaData::MirroredObject {
        public:
            Component();
            Component(std::string const& typeName, std::string const& factoryName);
            Component(Component const& other);
            Component& operator=(Component const& other) = default;
            ~Component() override;

            MetaData::Reflector<std::string, false, true> componentTypeName;
            MetaData::Reflector<std::string, false, true> factoryName;  ///< file name of the library that makes it
            MetaData::Reflector<std::string, false, true> error;        ///< why it can't be made; only then set
        };

        /// A library file that was scanned.
        class ZELM_EXPORT LibInfo : public MetaData::MirroredObject {
        public:
            LibInfo();
            LibInfo(std::string const& name, int timeStamp);
            LibInfo(LibInfo const& other);
            LibInfo& operator=(LibInfo const& other) = default;
            ~LibInfo() override;

            MetaData::Reflector<std::string, false, true> sharedObjectName;  ///< file name with all version suffixes
            /// The file's last write time, seconds since 1970, of which the low 32 bits are kept.
            MetaData::Reflector<int, false, true> sharedObjectTimeStamp;
            MetaData::Reflector<std::string, false, true> error;  ///< why it couldn't be loaded; only then set
        };

        /// Of the present format version, without rows.
        Map();
        Map(Map const&) = delete;
        Map& operator=(Map const&) = delete;
        ~Map() override;

        /// The first row of that type, if it can be used. The reference is valid until "Components" changes.
        /// Throws Exception::FailedToCreateComponent with the "Error" of the row or else of its library, and
        /// Exception::MissingComponent if there is no row or its library has none. The detail then is "No entry found",
        /// or the strings of "Errors", if that is set, one on each line and the newest first.
        Component const& operator[](std::string const& componentType) const;
        Component& operator[](std::string const& componentType);

        /// The first row of that library. Throws Exception::MissingLibrary if there is none.
        LibInfo const& findLib(std::string const& libraryName) const;

        MetaData::ReflectorArray<int> version;              ///< major, minor, patch of the format
        MetaData::ReflectorArray<Component> components;     ///< one row for each type, in the order of the scan
        MetaData::ReflectorArray<LibInfo> sharedLibraries;  ///< one row for each candidate file, in directory order
        MetaData::ReflectorArray<std::string> errors;       ///< failures of the last build that belong to no row
    };

    /// Starts the core factory, then takes the components map from its file or builds it: see initializeSourceMap. A
    /// repository without a usable map exists all the same, and each creation says what is wrong.
    /// Throws only what a library throws that is no std::exception.
    ComponentsRepository();
    ComponentsRepository(ComponentsRepository const&) = delete;
    ComponentsRepository& operator=(ComponentsRepository const&) = delete;
    /// Releases all components. An exception from that ends the process.
    ~ComponentsRepository() override;

    void releaseAllComponents() override;
    Error addComponent(std::shared_ptr<ComponentInterface> component, std::string const& instanceId) override;
    Error removeComponent(std::shared_ptr<ComponentInterface> component) override;
    std::shared_ptr<ComponentInterface> findComponent(std::string const& instanceId) override;
    std::shared_ptr<ComponentInterface> createComponent(std::string const& componentType,
                                                        std::vector<std::string> const& arguments) override;
    std::shared_ptr<ComponentInterface> instantiateComponent(std::string const& componentType,
                                                             std::string const& instanceId,
                                                             std::vector<std::string> const& arguments) override;

private:
    struct RunningFactory {
        std::shared_ptr<ComponentInterface> const* instance;  // its place in the table of instances
        ComponentFactoryInterface* factory;                   // the same object
    };
    struct Repo {
        std::map<std::string, std::shared_ptr<ComponentInterface>> components;  // running instances by instance id
        Map map;
        // Who made the types that were made before. Each factory stands in the table: what leaves that, leaves this.
        std::unordered_map<std::string, RunningFactory> factories;
    };
    using GuardedRepo = ScopedAccessor<Repo, std::recursive_mutex>;

    Error addComponent(GuardedRepo::Access& access, std::shared_ptr<ComponentInterface> component,
                       std::string const& instanceId);
    std::shared_ptr<ComponentInterface> createComponent(GuardedRepo::Access& access, std::string const& componentType,
                                                        std::vector<std::string> const& arguments);
    std::shared_ptr<ComponentInterface> instantiateComponent(GuardedRepo::Access& access,
                                                             std::string const& componentType,
                                                             std::string const& instanceId,
                                                             std::vector<std::string> const& arguments);

    GuardedRepo repo_;
};

/// The instance under that id, or an empty pointer. If `remove` is true, the entry is taken out of the table as well.
ZELM_EXPORT std::shared_ptr<ComponentInterface>
locateComponent(std::map<std::string, std::shared_ptr<ComponentInterface>>& components, std::string const& instanceId,
                bool remove);

}  // namespace Zelm
