#include "zelm/metadata/private/stream_output.h"

#include <cfenv>
#include <locale>

namespace Zelm::MetaData::Private {

bool StreamOutput::hasPlainFormat() const
{
    using Flags = std::ios_base;
    constexpr auto numeric =
        Flags::basefield | Flags::floatfield | Flags::showbase | Flags::showpoint | Flags::showpos | Flags::uppercase;
    return stream_.width() == 0 && (stream_.flags() & numeric) == Flags::dec && std::fegetround() == FE_TONEAREST &&
           stream_.getloc() == std::locale::classic();
}

}  // namespace Zelm::MetaData::Private
