/// @file
/// How full a file system is, from what statvfs says of it.
#pragma once

#include "host_monitor/host_readings.h"

#include <string>

#include <sys/statvfs.h>

namespace HostMonitor {

/// Asks the system about the file system that `mountPoint` lies in. What it refuses comes as the result's `error`. May
/// block, as statvfs does, on a network's file system whose server doesn't answer.
FileSystemUsage examineFileSystem(std::string const& mountPoint);

/// Fills in the numbers. Counts that make no sense (more free than there is) and overflow end at the nearest limit.
void assignUsage(struct statvfs const& status, FileSystemUsage& usage);

}  // namespace HostMonitor
