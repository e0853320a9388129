/// @file
/// How a shared library offers components: it exports the function getComponentFactory, and the factory that this
/// returns knows the component types and makes them. A complete library:
///
///     class EngineFactory : public Zelm::Component_Base,
///                           public Zelm::ComponentFactory_Base,
///                           public Zelm::LifeCycle::PassiveInterface {
///     public:
///         void startLifeCycle() override
///         {
///             addComponentCreator("Engine", [](auto const& arguments) {
///                 return std::make_shared<Engine>(arguments);
///             });
///         }
///         void endLifeCycle() override { removeAllComponentCreators(); }
///     };
///
///     std::shared_ptr<Zelm::ComponentFactoryInterface> getComponentFactory()
///     {
///         return std::make_shared<EngineFactory>();
///     }
///
/// A factory needs all three bases:
///  - without ComponentFactoryInterface it can't be returned at all;
///  - without LifeCycle::PassiveInterface the scan passes it over without a word, and none of its types is ever known;
///  - without ComponentInterface the repository can't keep it, and every creation fails with the detail
///    "Component factory provided doesn't support ComponentInterface".
///
/// supportedComponents is called only between startLifeCycle and endLifeCycle, createComponent only on a factory that
/// has been started.
///
/// Thread-safety: all operations of ComponentFactory_Base but supportedComponents may be called from any thread.
#pragma once

#include "zelm/components/component.h"
#include "zelm/core/export.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Zelm {

/// Component types in ascending byte order of their names, each with the function that makes one. What the function is
/// given are the arguments of whoever asks for the component; the type's name isn't among them.
using Creators =
    std::map<std::string, std::function<std::shared_ptr<ComponentInterface>(std::vector<std::string> const&)>>;

/// Makes components. Slot order: createComponent, supportedComponents, destructor.
class ZELM_EXPORT ComponentFactoryInterface {
public:
    /// A new object of that type, or an empty pointer if this factory can't make one.
    virtual std::shared_ptr<ComponentInterface> createComponent(std::string componentType,
                                                                std::vector<std::string> const& arguments) = 0;
    /// The types that createComponent takes. The reference lives as long as the factory.
    virtual Creators const& supportedComponents() const = 0;
    virtual ~ComponentFactoryInterface();
};

/// Keeps the creators in a table. A derived factory fills it in its startLifeCycle.
class ZELM_EXPORT ComponentFactory_Base : public ComponentFactoryInterface {
public:
    ComponentFactory_Base();
    ComponentFactory_Base(ComponentFactory_Base const&) = delete;
    ComponentFactory_Base& operator=(ComponentFactory_Base const&) = delete;

    /// What the type's creator returns for these arguments; an empty pointer for a type that has none. A creator that
    /// is an empty function gives std::bad_function_call. The table stays locked while the creator runs: a creator must
    /// not call the four locking operations of its own factory.
    std::shared_ptr<ComponentInterface> createComponent(std::string componentType,
                                                        std::vector<std::string> const& arguments) override;
    /// The table itself, without its lock: the caller must know that nobody changes it meanwhile.
    Creators const& supportedComponents() const override;
    ~ComponentFactory_Base() override;

    /// The first registration of a type wins: where there is a creator, the new one is dropped without a word.
    virtual void
    addComponentCreator(std::string const& componentType,
                        std::function<std::shared_ptr<ComponentInterface>(std::vector<std::string> const&)> creator);
    /// A type that isn't there is no error.
    virtual void removeComponentCreator(std::string const& componentType);
    virtual void removeAllComponentCreators();

private:
    Creators creators_;
    std::mutex creatorsLock_;  // guards creators_, but for supportedComponents
};

}  // namespace Zelm

#ifdef __clang__
#pragma clang diagnostic push
// "C" is here for the plain name alone, by which the dynamic loader finds the function; no C code calls it.
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif
/// Defined by every component library, and nowhere else: the one function through which the system reaches it. This
/// declaration gives the definition its plain, exported name.
///
/// Called once in each scan of the library and once more each time that the repository needs the factory. The result
/// may be a new factory each time or always the same one, which then must bear an endLifeCycle followed by a new
/// startLifeCycle. During a scan nothing in the library may ask for the repository, which is still being made.
extern "C" ZELM_EXPORT std::shared_ptr<Zelm::ComponentFactoryInterface> getComponentFactory();
#ifdef __clang__
#pragma clang diagnostic pop
#endif
