/// @file
/// A benchmark compares only what gives the same result. Whatever can be compared is, once, before anything is
/// measured: the program ends with status 1 if one of its agreements doesn't hold.
///
///     Agreement const textIsOurs("glib's Base64 text is ours", [] { return glibText(bytes()) == ourText(bytes()); });
///
/// A static object beside the peer's benchmarks. The function is called from main.
#pragma once

#include <functional>
#include <string>

namespace Zelm::Benchmarks {

class Agreement {
public:
    Agreement(std::string const& sentence, std::function<bool()> holds);
};

/// Checks all of them; tells on standard error which don't hold.
bool allAgree();

}  // namespace Zelm::Benchmarks
