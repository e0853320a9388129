#include "zelm/metadata/reader_json.h"

#include "zelm/metadata/private/asked_memory.h"
#include "zelm/metadata/private/assembler.h"
#include "zelm/metadata/private/json_exponents.h"
#include "zelm/metadata/private/json_text.h"

#include <rapidjson/reader.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace Zelm::MetaData {

namespace {

/// The parser's memory: it never looks whether it got what it asked for. On malloc for the sake of realloc, which grows
/// the parser's stack without a copy where it can.
class ThrowingAllocator {
public:
    [[maybe_unused]] static constexpr bool kNeedFree = true;

    void* Malloc(std::size_t size) { return Realloc(nullptr, 0, size); }
    void* Realloc(void* old, std::size_t, std::size_t size)
    {
        if (size == 0) {
            Free(old);
            return nullptr;
        }
        // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): see above
        return Private::askedMemory([old, size] { return std::realloc(old, size); });
    }
    static void Free(void* memory) { std::free(memory); }  // NOLINT(cppcoreguidelines-no-malloc): see above
};

using Private::Assembler;
using Private::JsonText;
using Private::TextBytes;
using TextParser = rapidjson::GenericReader<TextBytes, TextBytes, ThrowingAllocator>;

/// For what waits until its container is complete. It takes the place of the parser's own stack for values, and its
/// memory comes from where the parser's comes from.
template <class T> struct WaitingAllocator {
    using value_type = T;

    WaitingAllocator() = default;
    template <class Other> WaitingAllocator(WaitingAllocator<Other> const&) noexcept {}

    static T* allocate(std::size_t count) { return static_cast<T*>(ThrowingAllocator().Malloc(count * sizeof(T))); }
    static void deallocate(T* values, std::size_t) { ThrowingAllocator::Free(values); }

    friend bool operator==(WaitingAllocator const&, WaitingAllocator const&) noexcept { return true; }
    friend bool operator!=(WaitingAllocator const&, WaitingAllocator const&) noexcept { return false; }
};
template <class T> using Waiting = std::vector<T, WaitingAllocator<T>>;

/// Finds the order of an Object's members. Most texts have many Objects with the same names in the same places, so the
/// order that was the right one last time, for as many members, is tried first: to see that it is right takes a
/// fraction of the time that it takes to find it.
class MemberOrder {
public:
    /// Where the names stand, in rising order; of equal ones only the last. Valid until the next call.
    std::pair<std::uint32_t const*, std::size_t> of(std::string const* names, std::size_t count)
    {
        static constexpr std::uint32_t first = 0;
        if (count <= 1)
            return {&first, count};
        auto& order = orders_[std::min(count, orders_.size() - 1)];
        if (order.count != count || order.places.size() != count || !isRising(order.places, names))
            find(names, count, order);
        return {order.places.data(), order.places.size()};
    }

private:
    using Places = std::vector<std::uint32_t>;
    struct Order {
        std::size_t count = 0;  // of the members that it was found for: fewer places than that if names were equal
        Places places;
    };

    /// If it is, it has each of the places, since it was found for as many.
    static bool isRising(Places const& order, std::string const* names)
    {
        auto const isNotBefore = [names](std::uint32_t a, std::uint32_t b) { return !isBefore(names[a], names[b]); };
        return std::adjacent_find(order.begin(), order.end(), isNotBefore) == order.end();
    }

    static void find(std::string const* names, std::size_t count, Order& order)
    {
        auto& places = order.places;
        order.count = count;
        places.resize(count);
        std::iota(places.begin(), places.end(), 0u);
        std::sort(places.begin(), places.end(), [names](std::uint32_t a, std::uint32_t b) {
            if (isBefore(names[a], names[b]))
                return true;
            return a > b && !isBefore(names[b], names[a]);  // of equal names the last one comes first
        });
        auto const isSame = [names](std::uint32_t a, std::uint32_t b) { return names[a] == names[b]; };
        places.erase(std::unique(places.begin(), places.end(), isSame), places.end());
    }

    static bool isBefore(std::string const& a, std::string const& b)
    {
        return Private::isBefore(a, Private::headOf(a), b, Private::headOf(b));
    }

    std::array<Order, 64> orders_;  // by the number of members; the last one is for all the larger ones
};

/// Makes elements of what the parser meets, without a tree of the parser's own in between: a container's parts wait in
/// a row until its end is met, when their number is known.
///
/// Of a number the parser says how it is written and where it fits: without fraction and exponent, in an int, unsigned,
/// long or unsigned long, in this order; all these become Integers. From 2^63 up to 2^64 - 1 the 64 bits make a
/// negative one, on purpose.
class TreeBuilder {
public:
    explicit TreeBuilder(unsigned mostLevels) : mostLevels_(mostLevels) {}

    /// The parser was told to end at a container that lies deeper than wanted.
    bool endedEarly() const { return level_ > mostLevels_; }

    /// Assigns the outermost Object's members in the order of the text, so that of equal names the last one wins, and
    /// each as soon as it is complete: if memory runs out, the ones before it are there. Any other outermost value has
    /// none.
    void moveMembersTo(Object& object)
    {
        for (std::size_t i = 0; i != members_.size(); ++i) {
            bool const isLast = i + 1 == members_.size();
            Element element = completed(members_[i], isLast ? names_.size() : members_[i + 1].name,
                                        isLast ? parts_.size() : members_[i + 1].part);
            object[names_[members_[i].name]] = std::move(element);
        }
    }

    bool Null() { return add(Element()); }
    bool Bool(bool value) { return add(Trivial_T<bool>(value)); }
    bool Int(int value) { return add(Trivial_T<long>(value)); }
    bool Uint(unsigned value) { return add(Trivial_T<long>(value)); }
    bool Int64(std::int64_t value) { return add(Trivial_T<long>(value)); }
    bool Uint64(std::uint64_t value) { return add(Trivial_T<long>(static_cast<long>(value))); }
    bool Double(double value) { return add(Trivial_T<double>(value)); }
    /// Only for parsers that are asked for numbers as text.
    bool RawNumber(char const*, rapidjson::SizeType, bool) { return false; }
    /// Without its length, as names too: a text ends at its first NUL.
    bool String(char const* text, rapidjson::SizeType, bool) { return add(Trivial_T<std::string>(std::string(text))); }
    bool Key(char const* text, rapidjson::SizeType, bool)
    {
        if (level_ == 1)
            members_.push_back({names_.size(), parts_.size(), ElementType::Null});
        names_.emplace_back(text);
        return true;
    }

    bool StartObject() { return ++level_ <= mostLevels_; }
    bool StartArray() { return ++level_ <= mostLevels_; }

    bool EndObject(rapidjson::SizeType size)
    {
        if (--level_ <= 1)
            return leaveOpen(ElementType::Object);
        Element object = objectOf(names_.size() - size, parts_.size() - size, size);
        names_.resize(names_.size() - size);
        return replace(size, std::move(object));
    }

    bool EndArray(rapidjson::SizeType size)
    {
        if (--level_ <= 1)
            return leaveOpen(ElementType::Array);
        return replace(size, Assembler::array(parts_.data() + (parts_.size() - size), size));
    }

private:
    /// Of the outermost Object. Where its name stands, and its value or, of a container, the value's parts and names.
    struct Member {
        std::size_t name;
        std::size_t part;
        ElementType container;  // Object or Array, or Null if it is none
    };

    bool add(Element&& part)
    {
        parts_.push_back(std::move(part));
        return true;
    }

    /// The parts stay in their row, if the container is the outermost one's member or the outermost one itself.
    bool leaveOpen(ElementType container)
    {
        if (level_ == 1 && !members_.empty())
            members_.back().container = container;
        return true;
    }

    Element completed(Member const& member, std::size_t nameBehind, std::size_t partBehind)
    {
        auto const size = partBehind - member.part;
        if (member.container == ElementType::Object)
            return objectOf(nameBehind - size, member.part, size);
        if (member.container == ElementType::Array)
            return Assembler::array(parts_.data() + member.part, size);
        return std::move(parts_[member.part]);
    }

    Element objectOf(std::size_t firstName, std::size_t firstPart, std::size_t size)
    {
        auto const [order, count] = order_.of(names_.data() + firstName, size);
        return Assembler::object(names_.data() + firstName, parts_.data() + firstPart, order, count);
    }

    bool replace(std::size_t size, Element&& container)
    {
        parts_.resize(parts_.size() - size);
        return add(std::move(container));
    }

    unsigned const mostLevels_;
    unsigned level_ = 0;
    Waiting<Member> members_;
    Waiting<Element> parts_;      // of all containers whose end wasn't met yet
    Waiting<std::string> names_;  // of those among them that are members
    MemberOrder order_;
};

/// Flags 0 on purpose: doubles are converted fast, and may differ from the correctly rounded ones in the last places.
constexpr unsigned flags = rapidjson::kParseNoFlags;

template <unsigned parseFlags> bool parse(JsonText text, TreeBuilder& builder)
{
    TextParser parser;
    return !parser.Parse<parseFlags>(text, builder).IsError();
}

/// False, with the object as it was, if the text doesn't parse. By the parser that calls itself for each level, which
/// is much the quicker one, or from the start once more by the other one, if the text turns out to be too deep for it.
/// Both give the same values.
bool readMembers(JsonText const& text, Object& object)
{
    constexpr unsigned mostLevels = 32;  // more than any ordinary text has, and few enough for small stacks
    {
        TreeBuilder builder(mostLevels);
        if (parse<flags>(text, builder)) {
            builder.moveMembersTo(object);
            return true;
        }
        if (!builder.endedEarly())
            return false;
    }
    TreeBuilder builder(std::numeric_limits<unsigned>::max());
    if (!parse<flags | rapidjson::kParseIterativeFlag>(text, builder))
        return false;
    builder.moveMembersTo(object);
    return true;
}

}  // namespace

void ReaderJson::Read(Object& object, std::string const& text)
{
    auto const read = [&object](std::string const& safe) {
        return readMembers(JsonText(safe.c_str(), safe.c_str() + safe.size()), object);
    };
    if (!(Private::mayRunOver(text) ? read(Private::madeSafe(text)) : read(text)))
        std::cout << "Read"
                  << ": Parser Error!" << std::endl;
}

}  // namespace Zelm::MetaData
