#include "sample.h"

namespace Zelm {

Result Sample::result() const
{
    return {};
}

#ifdef OTHER_PARAMETER
void Sample::take(std::vector<std::string> const&) {}
#else
void Sample::take(std::vector<int> const&) {}
#endif

#ifdef ADDED_FUNCTION
void Sample::takeMore() {}
#endif

}  // namespace Zelm
