/// @file
/// What the library throws, for misuse and for failures that the caller can't carry on from. Each class stands for one
/// kind of failure, and most put a fixed word in front of the text that they are given:
///
///     Exception::InvalidParameter("x").what()                      // "Invalid Parameter: x"
///     Exception::InvalidParameter("Invalid Parameter: x").what()   // "Invalid Parameter: x"
///
/// A text in which the word already stands, anywhere and in this very spelling, is taken as it is.
///
/// All classes derive from Exception::Base, and so from std::runtime_error.
/// Thread-safety: plain values without shared state.
#pragma once

#include "zelm/core/export.h"

#include <stdexcept>
#include <string>

namespace Zelm::Exception {

/// Root of the family; keeps its text unchanged.
class ZELM_EXPORT Base : public std::runtime_error {
public:
    explicit Base(std::string const& message);
    Base(Base const& other) noexcept;
    Base& operator=(Base const& other) = default;
    ~Base() override;
};

/// Keeps its text unchanged.
class ZELM_EXPORT UnknownException : public Base {
public:
    explicit UnknownException(std::string const& message);
    UnknownException(UnknownException const& other) noexcept;
    UnknownException& operator=(UnknownException const& other) = default;
    ~UnknownException() override;
};

/// "Invalid Parameter: "
class ZELM_EXPORT InvalidParameter : public Base {
public:
    explicit InvalidParameter(std::string const& message);
    InvalidParameter(InvalidParameter const& other) noexcept;
    InvalidParameter& operator=(InvalidParameter const& other) = default;
    ~InvalidParameter() override;
};

/// "Inconsistent Parameters: "
class ZELM_EXPORT InconsistentParameters : public Base {
public:
    explicit InconsistentParameters(std::string const& message);
    InconsistentParameters(InconsistentParameters const& other) noexcept;
    InconsistentParameters& operator=(InconsistentParameters const& other) = default;
    ~InconsistentParameters() override;
};

/// "Insufficient Resources: "
class ZELM_EXPORT InsufficientResources : public Base {
public:
    explicit InsufficientResources(std::string const& message);
    InsufficientResources(InsufficientResources const& other) noexcept;
    InsufficientResources& operator=(InsufficientResources const& other) = default;
    ~InsufficientResources() override;
};

/// "Invalid Handle: "
class ZELM_EXPORT InvalidHandle : public Base {
public:
    explicit InvalidHandle(std::string const& message);
    InvalidHandle(InvalidHandle const& other) noexcept;
    InvalidHandle& operator=(InvalidHandle const& other) = default;
    ~InvalidHandle() override;
};

/// Has no word of its own: the text stays unchanged.
class ZELM_EXPORT InvalidOperation : public Base {
public:
    explicit InvalidOperation(std::string const& message);
    InvalidOperation(InvalidOperation const& other) noexcept;
    InvalidOperation& operator=(InvalidOperation const& other) = default;
    ~InvalidOperation() override;
};

/// "Invalid Enum Value: ". Converts from an InvalidOperation, whose text it takes as it stands, without the word. It is
/// no InvalidOperation itself: a handler for that class doesn't see it.
class ZELM_EXPORT InvalidEnumValue : public Base {
public:
    explicit InvalidEnumValue(std::string const& message);
    InvalidEnumValue(InvalidOperation const& other);
    InvalidEnumValue(InvalidEnumValue const& other) = default;
    InvalidEnumValue& operator=(InvalidEnumValue const& other) = default;
    ~InvalidEnumValue() override;
};

/// "Invalid Enum Literal: ". Converts from an InvalidOperation just as InvalidEnumValue does.
class ZELM_EXPORT InvalidEnumLiteral : public Base {
public:
    explicit InvalidEnumLiteral(std::string const& message);
    InvalidEnumLiteral(InvalidOperation const& other);
    InvalidEnumLiteral(InvalidEnumLiteral const& other) = default;
    InvalidEnumLiteral& operator=(InvalidEnumLiteral const& other) = default;
    ~InvalidEnumLiteral() override;
};

/// "Internal Error: ", and no word about transports: on purpose. Thrown by transport implementations that have lost
/// their peer.
class ZELM_EXPORT TransportDisconnected : public Base {
public:
    explicit TransportDisconnected(std::string const& message);
    TransportDisconnected(TransportDisconnected const& other) noexcept;
    TransportDisconnected& operator=(TransportDisconnected const& other) = default;
    ~TransportDisconnected() override;
};

/// Failed to Create Component Type "<name>": <detail>
class ZELM_EXPORT FailedToCreateComponent : public Base {
public:
    FailedToCreateComponent(std::string const& name, std::string const& detail);
    FailedToCreateComponent(FailedToCreateComponent const& other) = default;
    FailedToCreateComponent& operator=(FailedToCreateComponent const& other) = default;
    ~FailedToCreateComponent() override;
};

/// Failed to Create Component Type "<name>": Component not found: <detail>
class ZELM_EXPORT MissingComponent : public FailedToCreateComponent {
public:
    MissingComponent(std::string const& name, std::string const& detail);
    MissingComponent(MissingComponent const& other) = default;
    MissingComponent& operator=(MissingComponent const& other) = default;
    ~MissingComponent() override;
};

/// Library "<name>" was not found: <detail>
class ZELM_EXPORT MissingLibrary : public Base {
public:
    MissingLibrary(std::string const& name, std::string const& detail);
    MissingLibrary(MissingLibrary const& other) = default;
    MissingLibrary& operator=(MissingLibrary const& other) = default;
    ~MissingLibrary() override;
};

/// Component "<name>" failed to load: <detail>. Here <name> is a library, and this is no FailedToCreateComponent.
class ZELM_EXPORT FailedToLoad : public Base {
public:
    FailedToLoad(std::string const& name, std::string const& detail);
    FailedToLoad(FailedToLoad const& other) = default;
    FailedToLoad& operator=(FailedToLoad const& other) = default;
    ~FailedToLoad() override;
};

}  // namespace Zelm::Exception
