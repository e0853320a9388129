#include "zelm/metadata/reflector.h"

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

}  // namespace Zelm::MetaData
