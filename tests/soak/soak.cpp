#include "soak.h"

#include "children.h"
#include "components.h"
#include "faults.h"
#include "figures.h"
#include "installation.h"
#include "repeater.h"
#include "report.h"
#include "standard_output.h"
#include "topology.h"
#include "watchdog.h"

#include "zelm/components/components_repository.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace Soak {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr unsigned childrenAtOnce = 2;
constexpr unsigned visitorsAtOnce = 2;
constexpr unsigned swapsAtOnce = 4;

/// Twenty rounds at least, and none longer than ten seconds.
Seconds lengthOfRound(Settings const& settings)
{
    return Seconds(std::clamp(settings.minutes * 60 / 20, 0.2, 10.0));
}

/// A folder for files of this run, empty.
std::string makeScratchFolder()
{
    auto const path = installationRoot() + "/scratch";
    std::filesystem::remove_all(path);
    std::filesystem::create_directory(path);
    return path;
}

/// So that all libraries are loaded before anything is measured.
void loadAllLibraries(Zelm::ComponentsRepositoryInterface& repository)
{
    for (auto const& type : componentTypes())
        repository.createComponent(type.name, type.arguments);
}

class Run {
public:
    Run(Settings const& settings, Zelm::ComponentsRepositoryInterface& repository)
        : settings_(settings), repository_(repository), scratch_(makeScratchFolder()), output_(faults_)
    {
        loadAllLibraries(repository_);
    }

    bool toItsEnd()
    {
        Topology topology(repository_, settings_, output_, faults_, scratch_);
        children_.emplace(childrenAtOnce, settings_.seed, settings_.patience, scratch_, settings_.broken == "child",
                          faults_);
        {
            // Messages alone are progress: children go on whatever becomes of these.
            Watchdog const watchdog([&] { return topology.handled(); },
                                    [&] { output_.tell("soak: nothing moves any more: " + topology.state()); },
                                    std::chrono::seconds(settings_.patience));
            output_.tell(lineTitles());
            doAllRounds(topology);
        }
        // From here on everything comes to its end, and the signal is for what doesn't.
        alarm(2 * settings_.patience);
        children_->stop();
        return tellReport(output_,
                          {settings_, rounds_, topology.accounts(), topology.shownByTable(), topology.droppedByTable(),
                           topology.sensors().totals().added, topology.visitors().totals().visits, children_->totals()},
                          faults_);
    }

private:
    void doAllRounds(Topology& topology)
    {
        std::vector<std::minstd_rand> randoms;
        for (unsigned number = 0; number < swapsAtOnce + visitorsAtOnce; ++number)
            randoms.emplace_back(settings_.seed + 1000 + number);
        std::vector<std::unique_ptr<Repeater>> comingAndGoing;
        for (unsigned number = 0; number < visitorsAtOnce; ++number)
            comingAndGoing.push_back(std::make_unique<Repeater>(
                [&, number] { topology.visitors().visit(number, randoms[number]); }, faults_));
        for (unsigned number = visitorsAtOnce; number < visitorsAtOnce + swapsAtOnce; ++number)
            comingAndGoing.push_back(
                std::make_unique<Repeater>([&, number] { topology.sensors().swapOne(randoms[number]); }, faults_));

        auto const end = begin_ + Seconds(settings_.minutes * 60);
        do {
            topology.beginRound();
            for (auto& each : comingAndGoing)
                each->resume();
            std::this_thread::sleep_for(lengthOfRound(settings_));
            double const busyKB = figuresNow().residentKB;
            for (auto& each : comingAndGoing)
                each->pause();
            topology.endRound();
            measure(topology, busyKB);
        } while (Clock::now() < end);
    }

    void measure(Topology const& topology, double busyKB)
    {
        if (settings_.broken == "descriptor")
            open("/dev/null", O_RDONLY | O_CLOEXEC);
        auto const accounts = topology.accounts();
        rounds_.push_back({Seconds(Clock::now() - begin_).count() / 60, accounts.front().received, busyKB, figuresNow(),
                           children_->totals().run});
        output_.tell(lineOf(rounds_));
        noteDeviations(accounts);
    }

    /// Each once, in the round in which it arises.
    void noteDeviations(std::vector<Account> const& accounts)
    {
        deviations_.resize(accounts.size());
        for (std::size_t i = 0; i < accounts.size(); ++i) {
            auto const& account = accounts[i];
            long const deviation = static_cast<long>(account.received) - static_cast<long>(account.expected);
            if (deviation != deviations_[i])
                faults_.add(account.receiver + ": " + std::to_string(account.received) + " messages of " +
                            std::to_string(account.expected) + " after round " + std::to_string(rounds_.size()));
            deviations_[i] = deviation;
        }
    }

    Settings const& settings_;
    Zelm::ComponentsRepositoryInterface& repository_;
    std::string const scratch_;
    Faults faults_;
    StandardOutput output_;
    std::optional<Children> children_;
    Clock::time_point const begin_ = Clock::now();
    std::vector<Round> rounds_;
    std::vector<long> deviations_;  // of each receiver
};

}  // namespace

bool runSoak(Settings const& settings)
{
    EndOfComponents const end;
    return Run(settings, *end.repository).toItsEnd();
}

}  // namespace Soak
