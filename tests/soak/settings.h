/// @file
/// What is asked of the soak on the command line.
#pragma once

#include <string>

namespace Soak {

struct Settings {
    double minutes = 10;
    unsigned sensors = 100;
    unsigned seed = 1;
    unsigned patience = 120;  ///< seconds without any progress that are taken for a hang
    /// The fault to make, to see that it is found: "loss", "duplicate", "memory", "descriptor", "child" or "hang".
    std::string broken;
};

}  // namespace Soak
