/// @file
/// A failure returned by value: a code, the category that the code belongs to and an optional text. Operations whose
/// failure is an ordinary outcome return an Error; everything else throws (see exceptions.h).
///
///     if (Error error = repository->removeComponent(component))
///         std::cerr << error.info() << std::endl;
///
/// The classes derived from Error add neither data nor behaviour: they only fix what the constructor stores, so nothing
/// is lost when one is returned as a plain Error.
///
/// Thread-safety: plain values without locks or shared state.
#pragma once

#include "zelm/core/export.h"

#include <cstdint>
#include <string>

namespace Zelm {

class ZELM_EXPORT Error {
public:
    enum class Category : std::uint32_t { Generic = 0, ComponentRepository = 1 };

    /// No error: code 0, category Generic, no text.
    Error();
    Error(unsigned int const& code, Category const& category, std::string const& message);
    Error(Error const& other);
    Error& operator=(Error const& other);  ///< all stays as it was if memory runs out
    virtual ~Error();

    unsigned int code() const { return code_; }
    Category category() const { return category_; }

    /// The text if there is one, otherwise "ERROR category: <category> code: <code>". Both numbers are printed as
    /// signed 32-bit values, so code 4294967295 reads -1.
    std::string info() const;

    /// Whether the code is not 0. Category and text play no part: an error whose code is 0 looks like success here, and
    /// ComponentsRepositoryInterface::AlreadyInRepository is one. Not const: it belongs to the interface in this form.
    operator bool() { return code_ != 0; }  // NOLINT(readability-make-member-function-const): see above

private:
    std::uint32_t code_;
    Category category_;
    std::string message_;
};

class ZELM_EXPORT NoError : public Error {};

/// An error of the category Generic.
class ZELM_EXPORT GenericError : public Error {
public:
    GenericError(unsigned int const& code, std::string const& message) : Error(code, Category::Generic, message) {}
};

/// Not to be confused with Exception::InvalidParameter, which is thrown.
class ZELM_EXPORT InvalidParameter : public GenericError {
public:
    InvalidParameter() : GenericError(1, "Invalid or out-of-range parameter passed to function.") {}
};

}  // namespace Zelm
