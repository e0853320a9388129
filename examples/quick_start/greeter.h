/// @file
/// What the program and the component library of this example agree on.
#pragma once

#include "zelm/core/export.h"

#include <string>

// Exported whole, so that the cast from ComponentInterface works across libraries.
class ZELM_EXPORT Greeter {
public:
    virtual std::string greet(std::string const& name) const = 0;

protected:
    ~Greeter() = default;  // the object belongs to its shared pointer
};
