// The look-up of handlers: a message and subscriptions are read from lines of text, such as
//
//     10                          choices: fillers, buckets
//     1.2.3.4 plant/press me      the message: identifier, sender, destination
//     1.2.*.* plant -             a subscription
//     *.*.*.* - me #7             one whose hash is fixed to 7; "#" alone is a hash function that gives the mark for
//     none
//
// and what is found in the table is compared with what the plain ways find. Keys, their hashes and the hash
// permutations are compared with the rules spelled out. What a large table finds differently than a walk does is one of
// the differences that are meant to be.
#include "zelm/msgs/handler_lookup.h"

#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/outcome.h"
#include "tests/msgs/lookup_oracle.h"
#include "zelm/msgs/message.h"

#include <array>
#include <map>
#include <set>
#include <tuple>

using namespace Zelm::Fuzzing;
using namespace Zelm::Msgs;
using namespace Zelm::Msgs::Testing;

namespace {

using Address = std::vector<std::string>;
using Group = MessageKey::HashingGroup;

// --------------------------------------------------------------------------------------------------- reading the input

constexpr std::size_t mostKeys = 60;
constexpr unsigned short any = 65535;

/// The text in front of the separator, which is taken from `rest` with it.
std::string_view takeUpTo(char separator, std::string_view& rest)
{
    auto const text = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(text.size() + 1, rest.size()));
    return text;
}

unsigned long numberFrom(std::string_view text)
{
    unsigned long number = 0;
    for (char const c : text)
        number = number * 10 + static_cast<unsigned char>(c) % 16;  // of a digit its value
    return number;
}

unsigned long identifierFrom(std::string_view text)
{
    std::array<unsigned short, 4> fields{};
    for (auto& field : fields) {
        auto const part = takeUpTo('.', text);
        field = part == "*" ? any : static_cast<unsigned short>(numberFrom(part));
    }
    return Identifier::toValue(fields[0], fields[1], fields[2], fields[3]);
}

Address addressFrom(std::string_view text)
{
    Address address;
    if (text == "-")
        return address;
    while (!text.empty())
        address.emplace_back(takeUpTo('/', text));
    return address;
}

struct Line {
    explicit Line(std::string_view text)
        : id(identifierFrom(takeUpTo(' ', text))), sender(addressFrom(takeUpTo(' ', text))),
          dest(addressFrom(takeUpTo(' ', text)))
    {
        if (!text.empty() && text.front() == '#') {
            unsigned long const value = text.size() == 1 ? MessageKey::noHash : numberFrom(text.substr(1));
            hash = [value](MessageKey const&) { return value; };
        }
    }
    MessageKey key() const { return {id, sender, dest, hash}; }

    unsigned long id;
    Address sender;
    Address dest;
    KeyHashFunction hash;
};

// -------------------------------------------------------------------------------------------------- the rules, plainly

bool plainlyCovers(unsigned long pattern, unsigned long id)
{
    auto const field = [](unsigned long value, unsigned number) { return value >> (48 - 16 * number) & 0xFFFF; };
    if (pattern == id || field(pattern, 0) == any)
        return true;
    if (field(pattern, 0) != field(id, 0) || field(pattern, 3) != any)
        return false;
    if (field(pattern, 1) == any)
        return true;
    if (field(pattern, 1) != field(id, 1))
        return false;
    return field(pattern, 2) == any || field(pattern, 2) == field(id, 2);
}

bool plainlyInTree(Address const& root, Address const& address)
{
    for (std::size_t i = 0; i < root.size(); ++i) {
        if (i >= address.size() || root[i] != address[i])
            return false;
    }
    return true;
}

bool plainlyCovers(MessageKey const& key, MessageKey const& other)
{
    if (!plainlyCovers(key.id.value(), other.id.value()))
        return false;
    return key.dest.empty() ? plainlyInTree(key.sender, other.sender) : plainlyInTree(key.dest, other.dest);
}

bool plainlyEqual(MessageKey const& left, MessageKey const& right)
{
    if (left.id.value() != right.id.value())
        return false;
    return left.dest.empty() ? left.sender == right.sender : left.dest == right.dest;
}

unsigned long plainHash(unsigned long id, Address const& address)
{
    for (auto const& part : address)
        id ^= std::hash<std::string>()(part);
    return id;
}

unsigned long plainHash(MessageKey const& key)
{
    return key.cachedHash != MessageKey::noHash ? key.cachedHash
                                                : plainHash(key.id.value(), key.dest.empty() ? key.sender : key.dest);
}

/// Identifier, sender, destination and the hash that is fixed.
using Permutation = std::tuple<unsigned long, Address, Address, unsigned long>;

std::set<Permutation> plainPermutations(MessageKey const& key, Group group)
{
    std::set<Permutation> result;
    auto const addPatterns = [&](Address const& sender, Address const& dest) {
        std::array<unsigned short, 4> fields{key.id.category(), key.id.sub1(), key.id.sub2(), key.id.type()};
        for (std::size_t wild = 0; wild <= 4; ++wild) {
            if (wild > 0)
                fields[4 - wild] = any;
            auto const id = Identifier::toValue(fields[0], fields[1], fields[2], fields[3]);
            result.emplace(id, sender, dest, plainHash(id, dest.empty() ? sender : dest));
        }
    };
    if (group != Group::DestinationOnly) {
        for (std::size_t parts = 0; parts <= key.sender.size(); ++parts)
            addPatterns(Address(key.sender.begin(), key.sender.begin() + static_cast<long>(parts)), {});
    }
    if (group != Group::SenderOnly) {
        for (std::size_t parts = 1; parts <= key.dest.size(); ++parts)
            addPatterns({}, Address(key.dest.begin(), key.dest.begin() + static_cast<long>(parts)));
    }
    return result;
}

// ---------------------------------------------------------------------------------------------------------------- keys

std::string textOf(MessageKey const& key)
{
    std::string text = std::to_string(key.id.value()) + " from";
    for (auto const& part : key.sender)
        text += ' ' + quoted(part);
    text += " to";
    for (auto const& part : key.dest)
        text += ' ' + quoted(part);
    return text + " hash " + std::to_string(key.cachedHash);
}

void checkPair(MessageKey const& a, MessageKey const& b)
{
    auto const details = [&] { return textOf(a) + "\n" + textOf(b); };
    if (a.covers(b) != plainlyCovers(a, b) || a.id.covers(b.id) != plainlyCovers(a.id.value(), b.id.value()))
        fail("a key covers what the rules say", details());
    if ((a == b) != plainlyEqual(a, b) || (a != b) == plainlyEqual(a, b))
        fail("keys are equal where the rules say so", details());
    if (MessageKey::Hasher()(a) != plainHash(a))
        fail("a key has the hash that the rules say", details());
    bool const bothComputed = a.cachedHash == MessageKey::noHash && b.cachedHash == MessageKey::noHash;
    if (bothComputed && a == b && b == a && a.dest.empty() == b.dest.empty())
        check(MessageKey::Hasher()(a) == MessageKey::Hasher()(b), "equal keys of one side hash alike", details());
}

void checkPermutations(Message const& message, Group group)
{
    std::set<Permutation> actual;
    for (auto const& key : MessageKey::hashMessagesList(message, group))
        check(actual.emplace(key.id.value(), key.sender, key.dest, key.cachedHash).second,
              "no permutation comes twice");
    check(actual == plainPermutations(MessageKey(message), group), "the permutations are those of the rules",
          textOf(MessageKey(message)));
}

// ------------------------------------------------------------------------------------------------------------ look-ups

using Keys = std::vector<MessageKey>;  // by the value of their entry

std::string textOf(Keys const& keys)
{
    std::string text;
    for (auto const& key : keys)
        text += '\n' + std::to_string(&key - keys.data()) + ": " + textOf(key);
    return text;
}

std::string textOf(std::vector<int> const& values)
{
    std::string text;
    for (int const value : values)
        text += std::to_string(value) + ' ';
    return text;
}

template <class Hash> void fill(TableWith<Hash>& table, Keys& keys, std::vector<Line> const& lines, unsigned buckets)
{
    if (buckets == 1)
        table.max_load_factor(100);  // few, so that a look-up passes many keys of other hashes
    for (auto const& line : lines) {
        MessageKey const key = line.key();
        if (table.emplace(key, static_cast<int>(keys.size())).second)
            keys.push_back(key);
    }
    if (buckets == 2)
        table.rehash(500);
}

/// What a large table finds otherwise than a walk does.
void checkDifferences(Keys const& keys, std::vector<int> const& probed, std::vector<int> const& walked,
                      Message const& message)
{
    auto const hidesBehind = [](MessageKey const& key, MessageKey const& other) {
        return key.id.value() == other.id.value() && plainHash(key) == plainHash(other) &&
               (key.dest.empty() ? key.sender == other.sender : key.dest == other.dest);
    };
    for (int const value : walked) {
        auto const& key = keys[static_cast<std::size_t>(value)];
        bool const isFound = std::binary_search(probed.begin(), probed.end(), value);
        bool const isHidden =
            1 < std::count_if(keys.begin(), keys.end(), [&](auto const& other) { return hidesBehind(key, other); });
        check(isFound || key.cachedHash != MessageKey::noHash || isHidden ||
                  !isPermutation(key.id.value(), message.id().value()),
              "a large table finds what goes wild from the right and isn't hidden", textOf(keys));
    }
    for (auto value = probed.begin(); value != probed.end(); ++value) {
        auto const& key = keys[static_cast<std::size_t>(*value)];
        check(std::binary_search(walked.begin(), walked.end(), *value), "what a large table finds is covered",
              textOf(keys));
        bool const hashesAlike = plainHash(key.id.value(), key.sender) == plainHash(key.id.value(), key.dest) ||
                                 key.cachedHash != MessageKey::noHash;
        check(value == probed.begin() || value[-1] != *value || (!key.dest.empty() && hashesAlike),
              "only what both sides reach is found twice", textOf(keys));
    }
}

template <class Hash>
void checkLookUp(std::shared_ptr<Message const> const& message, std::vector<Line> const& lines, unsigned buckets)
{
    TableWith<Hash> table;
    Keys keys;
    fill(table, keys, lines, buckets);
    bool const isLarge = table.size() > 12;
    auto const walked = byWalking(message, table);

    for (Group const group : groups) {
        auto const actual = found(message, table, group);
        auto const expected = isLarge ? byProbing(message, table, group) : walked;
        checkSame(textOf(actual), textOf(expected), "a look-up finds what the plain way finds");

        auto const one = findCovering(message, table, true, group);
        check(one.size() == (expected.empty() ? 0 : 1), "one of what is found, if only one is wanted");
        if (!one.empty())
            check(std::binary_search(expected.begin(), expected.end(), *one.front()), "the one is among all");
    }
    if (isLarge)
        checkDifferences(keys, byProbing(message, table, Group::SenderAndDestination), walked, *message);
}

void checkHandlers(std::shared_ptr<Message const> const& message, std::vector<Line> const& lines)
{
    TableWith<MessageKey::Hasher> table;
    DispatchTable handlers;
    std::vector<int> called;
    for (auto const& line : lines) {
        int const value = static_cast<int>(table.size());
        if (table.emplace(line.key(), value).second)
            handlers.emplace(line.key(), [&called, value](auto const&) { called.push_back(value); });
    }
    auto const expected = found(message, table, Group::SenderAndDestination);
    check(invokeMessageHandlers(message, handlers) == !expected.empty(), "it is told whether there was a handler");
    checkSame(textOf(sorted(called)), textOf(expected), "what is found is called");

    auto list = obtainMessageHandlers(message, handlers);
    auto const reversed = std::vector<MessageHandler*>(list.rbegin(), list.rend());
    check(areFuncListsEquivalent(list, reversed), "a list is equivalent to itself in another order");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Input input(data, size);
    bool const withFillers = input.choice(2) == 1;
    unsigned const buckets = input.choice(3);
    input.upTo('\n');

    Line const sent(input.upTo('\n'));
    auto const message = std::make_shared<Message const>(sent.id, sent.sender, sent.dest);
    std::vector<Line> lines;
    while (!input.empty() && lines.size() < mostKeys)
        lines.emplace_back(input.upTo('\n'));
    for (unsigned short i = 0; withFillers && i < 13; ++i)
        lines.emplace_back("900." + std::to_string(i));

    MessageKey const messageKey(*message);
    for (auto const& line : lines) {
        checkPair(line.key(), messageKey);
        checkPair(line.key(), lines.front().key());
        checkPair(lines.front().key(), line.key());
    }
    for (Group const group : groups)
        checkPermutations(*message, group);
    checkLookUp<MessageKey::Hasher>(message, lines, buckets);
    checkLookUp<ForeignHasher>(message, lines, buckets);
    checkHandlers(message, lines);
    return 0;
}
