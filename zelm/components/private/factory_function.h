/// @file
/// How this folder finds the function getComponentFactory in a loaded library.
#pragma once

#include "zelm/components/component_factory.h"
#include "zelm/core/shared_library_loader.h"

namespace Zelm::Private {

using FactoryFunction = decltype(&::getComponentFactory);

/// Null if the library doesn't define it.
inline FactoryFunction factoryFunctionOf(SharedLibraryLoader const& library)
{
    return reinterpret_cast<FactoryFunction>(library.resolveSymbolByName("getComponentFactory"));
}

}  // namespace Zelm::Private
