#include "zelm/core/errors.h"

#include <sstream>

namespace Zelm {

Error::Error() : Error(0, Category::Generic, {}) {}

Error::Error(unsigned int const& code, Category const& category, std::string const& message)
    : code_(code), category_(category), message_(message)
{
}

Error::Error(Error const& other) = default;
// NOLINTNEXTLINE(modernize-use-equals-default): that would keep the order of the members
Error& Error::operator=(Error const& other)
{
    message_ = other.message_;  // first, since it alone can fail
    code_ = other.code_;
    category_ = other.category_;
    return *this;
}
Error::~Error() = default;

std::string Error::info() const
{
    if (!message_.empty())
        return message_;

    std::ostringstream text;
    text << "ERROR category: " << static_cast<int>(category_) << " code: " << static_cast<int>(code_);
    return text.str();
}

}  // namespace Zelm
