/// @file
/// What a call does that isn't its result: what it prints on standard output, and how it ends. Beside a plain model of
/// it, both as text:
///
///     checkSame(outcomeOf([&] { object.read(tree); }), outcomeOf([&] { model.read(tree); }), "reading");
#pragma once

#include "fuzz/support/printed.h"

#include <exception>
#include <iostream>
#include <string>
#include <typeinfo>

namespace Zelm::Fuzzing {

/// What was printed, and behind it the class and the text of the exception that left the call, or "returned".
template <class F> std::string outcomeOf(F&& call)
{
    std::string end = "returned";
    auto const printed = printedBy(std::cout, [&] {
        try {
            call();
        } catch (std::exception const& error) {
            end = std::string(typeid(error).name()) + ": " + error.what();
        }
    });
    return printed + end;
}

}  // namespace Zelm::Fuzzing
