/// @file
/// What a call prints through std::cout or std::cerr. Swaps the stream's buffer, which costs next to nothing.
///
///     std::string const line = printedBy(std::cout, [&] { ReaderJson::Read(object, text); });
#pragma once

#include <ostream>
#include <sstream>
#include <string>

namespace Zelm::Fuzzing {

/// The stream has its own buffer back afterwards, after an exception too.
template <class F> std::string printedBy(std::ostream& stream, F&& call)
{
    struct Swap {
        Swap(std::ostream& target, std::streambuf* buffer) : stream(target), old(target.rdbuf(buffer)) {}
        Swap(Swap const&) = delete;
        Swap& operator=(Swap const&) = delete;
        ~Swap() { stream.rdbuf(old); }
        std::ostream& stream;
        std::streambuf* old;
    };
    std::stringbuf buffer;
    Swap const swap(stream, &buffer);
    call();
    return buffer.str();
}

}  // namespace Zelm::Fuzzing
