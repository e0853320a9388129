/// @file
/// The sensors of the soak: the demo's own, of each kind as many, without a pause between two readings. They come and
/// go all the time, each under an id of its own, and the book says what each has published.
///
/// Thread-safety: any thread may call anything at any time.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Zelm {
class ComponentInterface;
class ComponentsRepositoryInterface;
}  // namespace Zelm

namespace Soak {

/// In their order the kinds that ids begin with: "cpu-17" is a CpuSensor.
extern std::vector<std::string> const sensorKinds;

class Sensors {
public:
    explicit Sensors(Zelm::ComponentsRepositoryInterface& repository);

    /// The ids that the next `count` sensors will have.
    std::vector<std::string> nextIds(std::size_t count) const;
    /// Adds sensors to the repository, which starts them; their kinds take turns.
    void add(std::size_t count);
    /// Removes one from the repository, which ends it, and adds another one in its place. Returns when it is over.
    void swapOne(std::minstd_rand& random);
    /// Several at a time. Nobody adds or swaps any meanwhile.
    void removeAll();

    /// What was published at a moment.
    struct Page {
        std::map<std::string, long> running;  ///< readings that receivers have, by the ids of sensors that run
        std::size_t ended = 0;                ///< how many have ended before
    };
    Page page() const;
    /// The sensors that have ended since the page, with the numbers of their readings.
    std::vector<std::pair<std::string, long>> endedSince(Page const& page) const;
    /// Forgets those that have ended: no page is older.
    void forgetEnded();

    struct Totals {
        unsigned long readings = 0;
        unsigned long ended = 0;
        unsigned long added = 0;
    };
    /// Of one kind, or of all if it is empty. The readings are those of sensors that have ended.
    Totals totals(std::string const& kind = {}) const;

private:
    struct Sensor {
        std::string id;
        std::string kind;
        std::shared_ptr<Zelm::ComponentInterface> component;
    };

    static std::string const& kindOf(std::size_t number);
    static std::string idOf(std::size_t number);
    static long publishedBy(Sensor const& sensor);
    void addOne();
    Sensor takeOne(std::size_t number);
    void remove(Sensor const& sensor);

    Zelm::ComponentsRepositoryInterface& repository_;
    mutable std::mutex mutex_;  // guards all below
    std::map<std::string, Sensor> running_;
    std::map<std::string, Sensor> staying_;  // of these, those that nobody is about to remove
    std::vector<std::pair<std::string, long>> ended_;
    std::size_t forgotten_ = 0;             // that had ended and aren't in the list any more
    std::size_t next_ = 0;                  // number of the next sensor
    std::map<std::string, Totals> totals_;  // by kind
};

}  // namespace Soak
