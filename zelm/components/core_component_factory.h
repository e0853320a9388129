/// @file
/// The core library's own factory, which is also the model of what every library's factory looks like, and the way from
/// a library's name to its factory.
///
/// Thread-safety: as ComponentFactory_Base has it; getComponentFactoryFromSharedLibrary has no state.
#pragma once

#include "zelm/components/component.h"
#include "zelm/components/component_factory.h"
#include "zelm/core/export.h"

#include <memory>
#include <string>

namespace Zelm {

/// Stands in the repository under coreFactoryName from the beginning. It declares the types "MessageCenter" and
/// "MessageQueue" and makes nothing of either: both creators return an empty pointer, just as an unknown type does,
/// since the core library holds no implementation of them. They are not in the components map, so
/// ComponentsRepositoryInterface::createComponent never comes here; a library that supports such a type provides it in
/// the ordinary way.
class ZELM_EXPORT CoreComponentFactory_Impl : public Component_Base,
                                              public ComponentFactory_Base,
                                              public LifeCycle::PassiveInterface {
public:
    CoreComponentFactory_Impl();
    ~CoreComponentFactory_Impl() override;

    void startLifeCycle() override;
    void endLifeCycle() override;
};

/// Opens the library by its bare name, beside the running program or else by the dynamic loader's own search, and calls
/// its getComponentFactory. The result may be empty. The library stays loaded.
/// Throws Exception::FailedToLoad with the loader's text, Exception::FailedToCreateComponent "Couldn't find factory
/// function" with the library's name, and what the function throws.
ZELM_EXPORT std::shared_ptr<ComponentFactoryInterface>
getComponentFactoryFromSharedLibrary(std::string const& libraryName);

}  // namespace Zelm
