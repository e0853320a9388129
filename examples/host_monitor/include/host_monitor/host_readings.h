/// @file
/// The readings of the sensors in libHostSensors. Reporters show them without this header, as they show any Reading;
/// it is for those who want the fields by name. All are known to the message factory (see message_registration.h), so
/// that their JSON form turns into objects of these classes again. Their destructors are defined in a source file, so
/// that one library has the classes' type information, which casts go by.
///
/// Objects that stand in a list are copied when the list is filled. A mirrored object's copy constructor builds its
/// fields anew, so that each registers with its own object, and assigns the values then; the two lines of each class
/// below are the recipe.
#pragma once

#include "host_monitor/message_kinds.h"
#include "host_monitor/reading.h"

namespace HostMonitor {

/// Of one core. Its load is missing if nothing was counted for the core since the last reading, or if it wasn't online
/// then.
class ZELM_EXPORT CoreLoad : public Zelm::MetaData::MirroredObject {
public:
    Field<int> core{this, "core", 0};
    Field<double> loadPercent{this, "loadPercent"};

    CoreLoad() = default;
    CoreLoad(CoreLoad const& other) : CoreLoad() { *this = other; }
    CoreLoad& operator=(CoreLoad const&) = default;
};

/// How busy the processor was since the last reading, or since the sensor's start: the share of the time that was
/// neither idle nor spent in waiting for input and output.
class ZELM_EXPORT CpuReading : public Reading {
public:
    CpuReading() : Reading(Kinds::cpuReading) {}
    ~CpuReading() override;

    Field<double> loadPercent{this, "loadPercent"};  ///< all cores together; missing as in CoreLoad
    ListField<CoreLoad> cores{this, "cores", true};  ///< those online, in the kernel's order
};

/// Figures that the kernel doesn't give are missing.
class ZELM_EXPORT MemoryReading : public Reading {
public:
    MemoryReading() : Reading(Kinds::memoryReading) {}
    ~MemoryReading() override;

    Field<long> totalBytes{this, "totalBytes"};
    Field<long> freeBytes{this, "freeBytes"};            ///< used for nothing at all
    Field<long> availableBytes{this, "availableBytes"};  ///< could be had without swapping
    Field<long> usedBytes{this, "usedBytes"};            ///< total without available
    Field<double> usedPercent{this, "usedPercent"};
    Field<long> buffersBytes{this, "buffersBytes"};
    Field<long> cachedBytes{this, "cachedBytes"};
    Field<long> swapTotalBytes{this, "swapTotalBytes"};
    Field<long> swapFreeBytes{this, "swapFreeBytes"};
};

/// The file system that a path lies in. All numbers are missing if it couldn't be examined.
class ZELM_EXPORT FileSystemUsage : public Zelm::MetaData::MirroredObject {
public:
    Field<std::string> mountPoint{this, "mountPoint", std::string()};
    Field<long> totalBytes{this, "totalBytes"};
    Field<long> freeBytes{this, "freeBytes"};
    Field<long> availableBytes{this, "availableBytes"};  ///< free for users other than root
    Field<long> usedBytes{this, "usedBytes"};
    Field<double> usedPercent{this, "usedPercent"};  ///< of what users can have; missing if that is nothing
    Field<long> totalFiles{this, "totalFiles"};      ///< both missing on file systems without such a limit
    Field<long> freeFiles{this, "freeFiles"};
    Field<std::string> error{this, "error"};

    FileSystemUsage() = default;
    FileSystemUsage(FileSystemUsage const& other) : FileSystemUsage() { *this = other; }
    FileSystemUsage& operator=(FileSystemUsage const&) = default;
};

class ZELM_EXPORT DiskReading : public Reading {
public:
    DiskReading() : Reading(Kinds::diskReading) {}
    ~DiskReading() override;

    ListField<FileSystemUsage> fileSystems{this, "fileSystems", true};  ///< in the order of the sensor's arguments
};

/// Of one network interface. The counts run since the interface exists. The rates are those since the last reading, or
/// since the sensor's start; one is missing if the interface wasn't there then, or if its counter went backwards.
class ZELM_EXPORT InterfaceTraffic : public Zelm::MetaData::MirroredObject {
public:
    Field<std::string> interfaceName{this, "interface", std::string()};
    Field<long> receivedBytes{this, "receivedBytes", 0};
    Field<long> receivedPackets{this, "receivedPackets", 0};
    Field<long> receivedErrors{this, "receivedErrors", 0};
    Field<long> receivedDropped{this, "receivedDropped", 0};
    Field<long> receivedBytesPerSecond{this, "receivedBytesPerSecond"};
    Field<long> sentBytes{this, "sentBytes", 0};
    Field<long> sentPackets{this, "sentPackets", 0};
    Field<long> sentErrors{this, "sentErrors", 0};
    Field<long> sentDropped{this, "sentDropped", 0};
    Field<long> sentBytesPerSecond{this, "sentBytesPerSecond"};

    InterfaceTraffic() = default;
    InterfaceTraffic(InterfaceTraffic const& other) : InterfaceTraffic() { *this = other; }
    InterfaceTraffic& operator=(InterfaceTraffic const&) = default;
};

class ZELM_EXPORT NetworkReading : public Reading {
public:
    NetworkReading() : Reading(Kinds::networkReading) {}
    ~NetworkReading() override;

    Field<long> intervalMicroseconds{this, "intervalMicroseconds"};  ///< the time that the rates are taken over
    ListField<InterfaceTraffic> interfaces{this, "interfaces", true};
};

}  // namespace HostMonitor
