/// @file
/// Installations of one fixture library that have a map already: a start scans nothing, unless something is changed.
#pragma once

#include "tests/components/map_text.h"
#include "tests/support/temporary_installation.h"

#include <string>
#include <vector>

namespace Zelm::Testing {

inline constexpr long writeTime = TemporaryInstallation::writeTime;
inline std::string const engines = TemporaryInstallation::libraryName("engines");

/// The map of an installation that has the library "engines" alone.
inline MapText const enginesMap{{{"Engine", engines}, {"Wheel", engines}}, {{engines, writeTime}}};

class Installed : public TemporaryInstallation {
public:
    /// The map gives these types to the library.
    Installed(std::string const& fixture, std::vector<std::string> const& types)
    {
        add(fixture);
        auto const library = libraryName(fixture);
        MapText map{{}, {{library, writeTime}}};
        for (auto const& type : types)
            map.components.push_back({type, library});
        writeFile(mapFile(), map.text());
    }
};

class InstalledEngines : public Installed {
public:
    InstalledEngines() : Installed("engines", {"Engine", "Wheel"}) {}
    /// The map file holds that text.
    explicit InstalledEngines(std::string const& map) : InstalledEngines() { writeFile(mapFile(), map); }
};

}  // namespace Zelm::Testing
