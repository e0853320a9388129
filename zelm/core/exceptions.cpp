#include "zelm/core/exceptions.h"

namespace Zelm::Exception {

namespace {

/// The message with the prefix in front, unless the prefix stands in it already. Anywhere counts: a text that has
/// travelled through several layers keeps one word, wherever it picked it up.
std::string ensurePrefix(std::string const& message, std::string const& prefix)
{
    if (message.find(prefix) != std::string::npos)
        return message;
    return prefix + message;
}

std::string quoted(std::string const& name)
{
    return '"' + name + '"';
}

}  // namespace

Base::Base(std::string const& message) : std::runtime_error(message) {}
Base::Base(Base const& other) noexcept = default;
Base::~Base() = default;

UnknownException::UnknownException(std::string const& message) : Base(message) {}
UnknownException::UnknownException(UnknownException const& other) noexcept = default;
UnknownException::~UnknownException() = default;

InvalidParameter::InvalidParameter(std::string const& message) : Base(ensurePrefix(message, "Invalid Parameter: ")) {}
InvalidParameter::InvalidParameter(InvalidParameter const& other) noexcept = default;
InvalidParameter::~InvalidParameter() = default;

InconsistentParameters::InconsistentParameters(std::string const& message)
    : Base(ensurePrefix(message, "Inconsistent Parameters: "))
{
}
InconsistentParameters::InconsistentParameters(InconsistentParameters const& other) noexcept = default;
InconsistentParameters::~InconsistentParameters() = default;

InsufficientResources::InsufficientResources(std::string const& message)
    : Base(ensurePrefix(message, "Insufficient Resources: "))
{
}
InsufficientResources::InsufficientResources(InsufficientResources const& other) noexcept = default;
InsufficientResources::~InsufficientResources() = default;

InvalidHandle::InvalidHandle(std::string const& message) : Base(ensurePrefix(message, "Invalid Handle: ")) {}
InvalidHandle::InvalidHandle(InvalidHandle const& other) noexcept = default;
InvalidHandle::~InvalidHandle() = default;

InvalidOperation::InvalidOperation(std::string const& message) : Base(message) {}
InvalidOperation::InvalidOperation(InvalidOperation const& other) noexcept = default;
InvalidOperation::~InvalidOperation() = default;

InvalidEnumValue::InvalidEnumValue(std::string const& message) : Base(ensurePrefix(message, "Invalid Enum Value: ")) {}
InvalidEnumValue::InvalidEnumValue(InvalidOperation const& other) : Base(other) {}
InvalidEnumValue::~InvalidEnumValue() = default;

InvalidEnumLiteral::InvalidEnumLiteral(std::string const& message)
    : Base(ensurePrefix(message, "Invalid Enum Literal: "))
{
}
InvalidEnumLiteral::InvalidEnumLiteral(InvalidOperation const& other) : Base(other) {}
InvalidEnumLiteral::~InvalidEnumLiteral() = default;

TransportDisconnected::TransportDisconnected(std::string const& message)
    // The general word on purpose: the text is fixed, as programs may match on it.
    : Base(ensurePrefix(message, "Internal Error: "))
{
}
TransportDisconnected::TransportDisconnected(TransportDisconnected const& other) noexcept = default;
TransportDisconnected::~TransportDisconnected() = default;

FailedToCreateComponent::FailedToCreateComponent(std::string const& name, std::string const& detail)
    : Base("Failed to Create Component Type " + quoted(name) + ": " + detail)
{
}
FailedToCreateComponent::~FailedToCreateComponent() = default;

MissingComponent::MissingComponent(std::string const& name, std::string const& detail)
    : FailedToCreateComponent(name, "Component not found: " + detail)
{
}
MissingComponent::~MissingComponent() = default;

MissingLibrary::MissingLibrary(std::string const& name, std::string const& detail)
    : Base("Library " + quoted(name) + " was not found: " + detail)
{
}
MissingLibrary::~MissingLibrary() = default;

FailedToLoad::FailedToLoad(std::string const& name, std::string const& detail)
    : Base("Component " + quoted(name) + " failed to load: " + detail)
{
}
FailedToLoad::~FailedToLoad() = default;

}  // namespace Zelm::Exception
