// What numbered_libraries/zelm_library.cpp is, for Poco's class loader.
#include "components/create_component.h"
#include "components/numbered_libraries/number.h"

#include <Poco/ClassLibrary.h>

char numberedType[] = ZELM_NUMBERED_TYPE;

namespace {

class NumberedProduct : public Zelm::Benchmarks::Product {};

}  // namespace

// POCO_EXPORT_CLASS, but for the name, which isn't that of the class.
POCO_BEGIN_MANIFEST(Zelm::Benchmarks::Product)
POCO_EXPORT_INTERFACE(NumberedProduct, numberedType)
POCO_END_MANIFEST
