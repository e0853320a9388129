/// @file
/// Lets chosen calls of malloc and realloc fail that the core library makes itself. RapidJSON's memory comes from
/// there; that of everything else comes from operator new, which isn't touched (failing_allocator.h is for that).
///
///     for (unsigned long successes = 0;; ++successes) {
///         FailingMalloc const failing(successes);
///         ReaderJson::Read(object, text);          // throws, or there were no more calls
///         if (!failing.hasFailed())
///             break;
///     }
///
/// A test program that uses this lists ../support/failing_malloc.cpp among its sources. That file defines malloc and
/// realloc for the whole program, the libraries that it is linked with included, and hands on to those behind it: the C
/// library's, or the ones of a sanitizer's shared runtime, which so goes on seeing leaks and stray accesses.
///
/// Thread-safety: each thread has its own failure.
#pragma once

namespace Zelm::Testing {

/// While it lives, the call after the next `successes` ones gives a null pointer. One at a time in a thread.
class FailingMalloc {
public:
    explicit FailingMalloc(unsigned long successes);
    ~FailingMalloc();
    FailingMalloc(FailingMalloc const&) = delete;
    FailingMalloc& operator=(FailingMalloc const&) = delete;

    bool hasFailed() const;
};

}  // namespace Zelm::Testing
