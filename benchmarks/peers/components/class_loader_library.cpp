// What numbered_libraries/zelm_library.cpp is, for class_loader.
#include "components/create_component.h"
#include "components/numbered_libraries/number.h"

#include <class_loader/class_loader_core.hpp>

char numberedType[] = ZELM_NUMBERED_TYPE;

namespace {

class NumberedProduct : public Zelm::Benchmarks::Product {};

// CLASS_LOADER_REGISTER_CLASS, but for the name, which isn't that of the class.
auto const registration = class_loader::impl::registerPlugin<NumberedProduct, Zelm::Benchmarks::Product>(
    numberedType, "Zelm::Benchmarks::Product");

}  // namespace
