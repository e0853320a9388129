#include "zelm/components/core_component_factory.h"

#include "zelm/components/private/factory_function.h"
#include "zelm/core/exceptions.h"
#include "zelm/core/shared_library_loader.h"

namespace Zelm {

CoreComponentFactory_Impl::CoreComponentFactory_Impl() = default;
CoreComponentFactory_Impl::~CoreComponentFactory_Impl() = default;

void CoreComponentFactory_Impl::startLifeCycle()
{
    // Placeholders on purpose: the names are declared here, and other libraries bring the implementations.
    auto const makesNothing = [](std::vector<std::string> const&) { return std::shared_ptr<ComponentInterface>(); };
    addComponentCreator("MessageCenter", makesNothing);
    addComponentCreator("MessageQueue", makesNothing);
}

void CoreComponentFactory_Impl::endLifeCycle()
{
    removeAllComponentCreators();
}

std::shared_ptr<ComponentFactoryInterface> getComponentFactoryFromSharedLibrary(std::string const& libraryName)
{
    SharedLibraryLoader const library(libraryName.c_str(), 0);
    if (!library.isLoaded())
        throw Exception::FailedToLoad(libraryName, library.errorString());

    auto const makeFactory = Private::factoryFunctionOf(library);
    if (!makeFactory)
        throw Exception::FailedToCreateComponent(libraryName, "Couldn't find factory function");
    return makeFactory();
}

}  // namespace Zelm
