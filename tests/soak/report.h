/// @file
/// What the soak tells: a line for each round, and in the end what came of it all.
///
/// Thread-safety: functions without state.
#pragma once

#include "children.h"
#include "faults.h"
#include "figures.h"
#include "settings.h"
#include "topology.h"

#include <string>
#include <vector>

namespace Soak {

/// What was measured at the end of a round, when nothing was under way.
struct Round {
    double minutes = 0;         ///< since the beginning
    unsigned long handled = 0;  ///< messages until then, by the pump
    double busyKB = 0;          ///< resident at the height of the round
    Figures quiet;
    unsigned long children = 0;  ///< until then
};

std::string lineTitles();
/// About the last round.
std::string lineOf(std::vector<Round> const& rounds);

struct Results {
    Settings const& settings;
    std::vector<Round> const& rounds;
    std::vector<Account> accounts;
    unsigned long shownByTable;
    unsigned long droppedByTable;
    unsigned long sensors;
    unsigned long visits;
    Children::Totals children;
};

/// Judges memory, descriptors and threads, adds what is wrong to the faults, and tells everything. Whether there are no
/// faults.
bool tellReport(StandardOutput& output, Results const& results, Faults& faults);

}  // namespace Soak
