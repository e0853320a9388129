#include "arguments.h"

#include "zelm/core/exceptions.h"

#include <charconv>
#include <system_error>

namespace Zelm::Messaging {

void refuseArguments(std::vector<std::string> const& arguments)
{
    if (!arguments.empty())
        throw Exception::InvalidParameter(arguments.front());
}

unsigned long parseDepth(std::vector<std::string> const& arguments)
{
    if (arguments.empty())
        throw Exception::InvalidParameter("the depth of the queue is missing");
    if (arguments.size() > 1)
        throw Exception::InvalidParameter(arguments[1]);

    std::string const& text = arguments.front();
    char const* const end = text.data() + text.size();
    unsigned long depth = 0;
    auto const [behind, error] = std::from_chars(text.data(), end, depth);
    if (error != std::errc() || behind != end || depth == 0)
        throw Exception::InvalidParameter(text);
    return depth;
}

}  // namespace Zelm::Messaging
