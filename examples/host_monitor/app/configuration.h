/// @file
/// The configuration: which components there are, under which ids, with which arguments.
///
///     {
///         "components" : [
///             { "id" : "cpu",  "type" : "CpuSensor" },
///             { "id" : "disk", "type" : "DiskSensor", "arguments" : [ "--period=10", "/", "/home" ] },
///             { "id" : "limits", "type" : "ThresholdAlarm", "arguments" : [
///                 { "sensor" : "cpu", "field" : "loadPercent", "above" : 90 } ] },
///             { "id" : "log",  "type" : "JsonLinesReporter", "arguments" : [ "-" ] }
///         ]
///     }
///
/// The order plays no part but among components of one role (see host_monitor/roles.h). An argument that is an object
/// reaches its component as JSON text.
///
/// Read strictly: what isn't understood is refused, with the place where it stands.
#pragma once

#include <string>
#include <vector>

namespace HostMonitor {

struct Configuration {
    struct Component {
        std::string id;    ///< not empty, unique
        std::string type;  ///< not empty
        std::vector<std::string> arguments;
    };
    std::vector<Component> components;  ///< at least one
};

/// Takes the text of a configuration. Throws std::runtime_error, whose text is one line without the file's name.
Configuration parseConfiguration(std::string const& text);

/// The same with the content of a file. The text of the exception begins with the path, which is
/// quoted if it is empty.
Configuration readConfiguration(std::string const& path);

}  // namespace HostMonitor
