/// @file
/// Marks the library's interface. Everything else is hidden: ZELM_EXPORT stands at each exported function and at each
/// class whose dynamic_cast, catch or typeid must work across shared libraries.
#pragma once

#define ZELM_EXPORT __attribute__((visibility("default")))
