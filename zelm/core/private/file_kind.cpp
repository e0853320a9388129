#include "zelm/core/private/file_kind.h"

#include <sys/stat.h>

namespace Zelm::Private {

FileKind fileKindOf(char const* path) noexcept
{
    struct ::stat attributes {};
    if (::stat(path, &attributes) != 0)
        return FileKind::None;
    switch (attributes.st_mode & S_IFMT) {
    case S_IFREG:
        return FileKind::Regular;
    case S_IFDIR:
        return FileKind::Directory;
    case S_IFIFO:
        return FileKind::Pipe;
    default:
        return FileKind::Other;
    }
}

}  // namespace Zelm::Private
