/// @file
/// Keeps account of what one receiver gets. Sensors number their readings from 1 and say at their end how many there
/// were, so each sensor's stream tells by itself what is missing, what came twice and what came out of order:
///
///     Ledger ledger("log", faults, Ledger::Whole);
///     ledger.take(*message);                      // for each message, in the order in which the receiver gets them
///     ledger.counts().lost;
///
/// A receiver that comes when sensors are running already, or leaves before they end, sees a piece of each stream. Its
/// ledger is a Piece: streams begin with whatever number comes first, and whoever knows what was published meanwhile
/// asks for their ends.
///
/// Thread-safety: any thread may call anything at any time, as callbacks and forwarders do; the messages of one sensor
/// come one at a time.
#pragma once

#include "faults.h"

#include <cstddef>
#include <map>
#include <mutex>
#include <string>

namespace Zelm::Msgs {
class Message;
}  // namespace Zelm::Msgs

namespace Soak {

/// The instance id that the flow control's own messages come from (see flow.h). They are numbered like a sensor's
/// readings and never end.
inline constexpr char const* pingId = "ping";

class Ledger {
public:
    enum Extent {
        Whole,  ///< every stream from its first message to its last
        Piece,  ///< streams may begin and end with any message
        Gaps,   ///< the same, and messages may be missing in between, but none comes twice or too late
    };

    struct Counts {
        unsigned long readings = 0;
        unsigned long ends = 0;    ///< sensors that have said how many readings there were
        unsigned long alarms = 0;  ///< of all alarm components
        unsigned long lost = 0;
        unsigned long repeated = 0;  ///< came twice or too late

        unsigned long messages() const { return readings + ends + alarms; }
    };

    /// The numbers of a sensor's readings that were seen.
    struct Stream {
        long first = 1;
        long next = 1;  ///< behind the last one
    };

    /// The name is for the texts of faults, which begin with it.
    Ledger(std::string name, Faults& faults, Extent extent);

    void take(Zelm::Msgs::Message const& message);

    Counts counts() const;
    /// Streams by the sensors' ids: those that haven't ended where all are whole, otherwise all.
    std::map<std::string, Stream> streams() const;

private:
    void takeReading(std::string const& sensor, long sequence);
    void takeEnd(std::string const& sensor, long published);
    void noteLost(std::string const& sensor, long from, long to);
    Stream& streamOf(std::string const& sensor, long sequence);

    std::string const name_;
    Faults& faults_;
    Extent const extent_;

    mutable std::mutex mutex_;  // guards all below
    Counts counts_;
    std::map<std::string, Stream> streams_;
};

}  // namespace Soak
