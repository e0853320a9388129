#include "msgs/tables.h"

#include <cmath>
#include <map>
#include <random>
#include <string>
#include <utility>

namespace Zelm::Benchmarks {

using namespace Msgs;

namespace {

using Address = std::vector<std::string>;

// So few that they stay in the processor's cache, as messages do that have just been made; but so many that what one of
// them has brought there of a large table is gone when its turn comes again.
constexpr std::size_t mostMessages = 250;

/// Numbers from a fixed seed, the same with every standard library.
class Numbers {
public:
    /// Of such a range that there are many more keys than entries, and yet entries share roots and identifiers.
    explicit Numbers(std::size_t entries) : range_(3 + static_cast<unsigned long>(std::cbrt(entries))) {}

    unsigned long below(unsigned long limit) { return engine_() % limit; }

    std::string name(char const* what) { return what + std::to_string(below(range_)); }

    Address address()
    {
        std::string plant = name("plant ");
        std::string line = name("line ");
        return {std::move(plant), std::move(line), name("press ")};
    }

    unsigned long id()
    {
        unsigned long value = 0;
        for (int field = 0; field < 4; ++field)
            value = value << 16 | below(range_);
        return value;
    }

private:
    std::mt19937_64 engine_{20};
    unsigned long const range_;
};

}  // namespace

Search const& searchIn(std::size_t entries)
{
    static std::map<std::size_t, Search> made;
    auto const [place, isNew] = made.try_emplace(entries);
    Search& search = place->second;

    Numbers numbers(entries);
    while (isNew && search.table.size() < entries) {
        unsigned long const id = numbers.id();
        Address const sender = numbers.address();
        Address const dest = numbers.address();
        bool const bySender = numbers.below(2) == 0;
        unsigned long const wildcards = (1ul << 16 * numbers.below(4)) - 1;
        Address root = bySender ? sender : dest;
        root.resize(1 + numbers.below(root.size()));

        MessageKey const key(id | wildcards, bySender ? root : Address(), bySender ? Address() : root);
        auto const ignore = [](std::shared_ptr<Message const> const&) {};
        if (search.table.emplace(key, ignore).second && search.messages.size() < mostMessages)
            search.messages.push_back(std::make_shared<Message const>(id, sender, dest));
    }
    return search;
}

}  // namespace Zelm::Benchmarks
