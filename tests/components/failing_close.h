/// @file
/// This test program has an fclose of its own, by which the C++ library's streams close their files. It does the real
/// work, unless it is to fail.
#pragma once

namespace Zelm::Testing {

/// While it lives, what is written to a file gets lost at its close, and the close fails: as where the system keeps
/// what is written, and finds too late that there is no room or no way to the disk any more.
///
/// Not for several threads.
class FailingClose {
public:
    FailingClose();
    ~FailingClose();
    FailingClose(FailingClose const&) = delete;
    FailingClose& operator=(FailingClose const&) = delete;

    /// How many have failed.
    int failures() const;
};

}  // namespace Zelm::Testing
