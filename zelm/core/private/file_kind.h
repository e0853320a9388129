/// @file
/// What kind of file a path leads to, for whoever has to know before it is opened: opening a pipe waits for good for
/// somebody at its other end, and opening a device may have effects of its own.
#pragma once

namespace Zelm::Private {

enum class FileKind {
    None,  ///< nothing is there, or it can't be told
    Regular,
    Directory,
    Pipe,
    Other  ///< a device or a socket
};

/// Follows links and opens nothing. Any thread.
FileKind fileKindOf(char const* path) noexcept;

}  // namespace Zelm::Private
