#include "file_system_usage.h"

#include "proc_text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace HostMonitor {

FileSystemUsage examineFileSystem(std::string const& mountPoint)
{
    FileSystemUsage usage;
    usage.mountPoint = mountPoint;
    struct statvfs status = {};
    int result = 0;
    do {
        result = statvfs(mountPoint.c_str(), &status);
    } while (result != 0 && errno == EINTR);
    if (result != 0)
        usage.error = std::string(std::strerror(errno));
    else
        assignUsage(status, usage);
    return usage;
}

void assignUsage(struct statvfs const& status, FileSystemUsage& usage)
{
    // Some file systems leave the fragment size, in which the counts are given, at 0 and mean the block size.
    unsigned long const unit = status.f_frsize != 0 ? status.f_frsize : status.f_bsize;
    auto const used = status.f_blocks - std::min(status.f_bfree, status.f_blocks);
    usage.totalBytes = toLong(status.f_blocks, unit);
    usage.freeBytes = toLong(status.f_bfree, unit);
    usage.availableBytes = toLong(status.f_bavail, unit);
    usage.usedBytes = toLong(used, unit);

    double const reachable = static_cast<double>(used) + static_cast<double>(status.f_bavail);
    if (reachable > 0)
        usage.usedPercent = 100 * static_cast<double>(used) / reachable;
    if (status.f_files != 0) {
        usage.totalFiles = toLong(status.f_files);
        usage.freeFiles = toLong(status.f_ffree);
    }
}

}  // namespace HostMonitor
