#include "zelm/metadata/reflector.h"

#include "zelm/metadata/private/print_line.h"

namespace Zelm::MetaData {

#define ZELM_REFLECTOR(...)                                                                                            \
    template class ReflectorNoWriteParend<__VA_ARGS__, true>;                                                          \
    template class Reflector<__VA_ARGS__, false, true>;

ZELM_REFLECTOR(int)
ZELM_REFLECTOR(unsigned int)
ZELM_REFLECTOR(long)
ZELM_REFLECTOR(unsigned long)
ZELM_REFLECTOR(double)
ZELM_REFLECTOR(bool)
ZELM_REFLECTOR(std::string)

template class ReflectorArray<int>;
template class ReflectorArray<std::string>;

namespace Private {

// No exceptions, and "MetaDat": on purpose, for those who look for these lines.

void reportNoArray() noexcept
{
    printLine("Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't");
}

void reportCorruptArray(std::string const& name) noexcept
{
    printLine("Exception MetaDat::ReflectorArray MetaData Array corrupt for ", name);
}

}  // namespace Private

}  // namespace Zelm::MetaData
