#include "zelm/core/uuid.h"

#include <cstddef>
#include <ostream>
#include <type_traits>
#include <utility>

#include <uuid/uuid.h>

namespace Zelm {

static_assert(std::is_same_v<uuid_t, Uuid::Bytes>);

namespace {

constexpr std::size_t textLength = UUID_STR_LEN - 1;

std::string unparsed(Uuid::Bytes const& bytes)
{
    char text[UUID_STR_LEN];
    uuid_unparse(bytes, text);
    return {text, textLength};
}

}  // namespace

Uuid::Uuid()
{
    uuid_generate(bytes_);
}

Uuid::Uuid(Bytes const& bytes)
{
    uuid_copy(bytes_, bytes);
}

Uuid::Uuid(std::string const& text) : bytes_(), text_(text)
{
    // The result isn't looked at on purpose: there is no error for malformed text.
    static_cast<void>(uuid_parse(text.c_str(), bytes_));
}

Uuid::Uuid(Uuid const& other) : Uuid(other.asUuid_t()) {}

std::string Uuid::asUuidString() const&
{
    if (text_.empty())
        text_ = unparsed(bytes_);
    return text_;
}

std::string Uuid::asUuidString() &&
{
    if (text_.empty())
        return unparsed(bytes_);
    return std::move(text_);
}

bool Uuid::operator==(Uuid const& other) const noexcept
{
    return uuid_compare(bytes_, other.bytes_) == 0;
}

bool Uuid::operator<(Uuid const& other) const noexcept
{
    // Equal values count as well, on purpose.
    return uuid_compare(bytes_, other.bytes_) <= 0;
}

std::ostream& operator<<(std::ostream& stream, Uuid const& uuid)
{
    return stream << uuid.asUuidString();
}

}  // namespace Zelm
