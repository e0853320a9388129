/// @file
/// Installations of one fixture library that have a map already: a start scans nothing, unless something is changed.
/// And those of two libraries without a map, for what depends on the order of the scan.
#pragma once

#include "tests/components/map_text.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/temporary_installation.h"

#include <string>
#include <vector>

namespace Zelm::Testing {

inline constexpr long writeTime = TemporaryInstallation::writeTime;
inline std::string const engines = TemporaryInstallation::libraryName("engines");
inline std::string const rival = TemporaryInstallation::libraryName("rival");

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

/// Two libraries that the scan meets in this order, called libone.so.1 and libtwo.so.1 or the other way round.
class InstalledInOrder : public TemporaryInstallation {
public:
    InstalledInOrder(std::string const& firstFixture, std::string const& secondFixture)
    {
        add(firstFixture, "libone.so.1");
        add(secondFixture, "libtwo.so.1");
        auto const order = librariesInDirectoryOrder();
        if (order[0] == "libtwo.so.1") {  // change what they hold, which leaves them at their places
            auto const one = readFile(library("libone.so.1"));
            writeFile(library("libone.so.1"), readFile(library("libtwo.so.1")));
            writeFile(library("libtwo.so.1"), one);
            setWriteTime(library("libone.so.1"), writeTime);
            setWriteTime(library("libtwo.so.1"), writeTime);
        }
        first = order[0];
        second = order[1];
    }

    std::string first;
    std::string second;
};

}  // namespace Zelm::Testing
