/// @file
/// The soak itself: rounds in which sensors publish as fast as they can while components and visitors come and go and
/// child processes disturb the installation. Between two rounds everything that was sent has been handled, so that what
/// was published and what has come must be the same to the last message, and memory, descriptors and threads what they
/// were.
#pragma once

#include "settings.h"

namespace Soak {

/// Tells on standard output how it goes, and in the end what came of it. Whether all was well.
/// Throws what stands in the way of going on.
bool runSoak(Settings const& settings);

}  // namespace Soak
