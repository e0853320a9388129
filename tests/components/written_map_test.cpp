// The quick way into a map, beside the rule that it equals.
#include "zelm/components/private/written_map.h"

#include "tests/components/map_text.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"

#include <gtest/gtest.h>

#include <exception>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <string_view>

namespace Zelm {
namespace {

using namespace Testing;
using Map = ComponentsRepository::Map;

std::mt19937& randomBits()
{
    static std::mt19937 bits(19990414);
    return bits;
}

/// From 0 to one less than the limit.
std::size_t randomBelow(std::size_t limit)
{
    return randomBits()() % limit;
}

char randomCharacter(std::string_view alphabet)
{
    return alphabet[randomBelow(alphabet.size())];
}

std::string randomWord()
{
    std::string word;
    for (auto length = randomBelow(40); length > 0; --length)
        word += randomCharacter("abcxyzABCXYZ0123456789 .:_->{}[],/~!");
    return word;
}

std::optional<std::string> randomError()
{
    return randomBelow(4) == 0 ? std::optional(randomWord()) : std::nullopt;
}

MapText randomMap()
{
    MapText map;
    for (auto count = 1 + randomBelow(4); count > 0; --count)
        map.components.push_back({randomWord(), randomWord(), randomError()});
    for (auto count = 1 + randomBelow(4); count > 0; --count)
        map.libraries.push_back({randomWord(), static_cast<long>(randomBits()()) - 2147483648L, randomError()});
    map.version[randomBelow(3)] += static_cast<int>(randomBelow(3)) - 1;
    return map;
}

/// A map that has something of everything.
void fill(Map& map)
{
    map.version.assign({7});
    map.version.setEncoded(true);
    map.components.edit().emplace_back("Oar", "libOld.so.1");
    map.sharedLibraries.edit().emplace_back("libOld.so.1", 1);
    map.errors.assign({"old"});
}

std::string stateOf(Map const& map)
{
    MetaData::Element element;
    map.copyToMetaData(element);
    return Json::metaDatatoJsonString(element.CastTo<MetaData::Object>());
}

/// What a map holds that took in the text by the rule; nothing if that threw.
std::optional<std::string> stateByTheRule(std::string const& text)
{
    Map map;
    fill(map);
    try {
        std::istringstream stream(text);
        MetaData::Object object;
        MetaData::ReaderJson::Read(object, stream);
        map.copyFromMetaData(MetaData::Element(std::move(object)));
        return stateOf(map);
    } catch (std::exception const&) {
        return std::nullopt;
    }
}

/// Whether the quick way takes the text. Expects that it does what the rule does, or nothing.
bool isTakenAsByTheRule(std::string const& text)
{
    SCOPED_TRACE(text);
    Map map;
    fill(map);
    auto const before = stateOf(map);

    bool const taken = Private::takeWrittenForm(map, text);

    EXPECT_EQ(stateOf(map), taken ? stateByTheRule(text) : before);
    return taken;
}

/// One change, of the kinds that a hand, a cut or a disk makes.
void damage(std::string& text)
{
    auto const at = randomBelow(text.size());
    char const other = randomCharacter("\"\\{}[],: \t\n\r0123456789-+.eEnu/abc\x01\x7f\x80\xff");
    switch (randomBelow(6)) {
    case 0:
        text.erase(at, 1 + randomBelow(3));
        break;
    case 1:
        text.insert(at, 1, other);
        break;
    case 2:
        text.resize(at);
        break;
    case 3: {  // a line twice
        auto const begin = text.rfind('\n', at);
        auto const end = text.find('\n', at + 1);
        if (begin != std::string::npos && begin != at && end != std::string::npos)
            text.insert(begin, text.substr(begin, end - begin));
        break;
    }
    case 4:
        text += other;
        break;
    default:
        text[at] = other;
    }
}

TEST(WrittenForm, isTakenAsByTheRule)
{
    for (int i = 0; i < 300; ++i)
        EXPECT_TRUE(isTakenAsByTheRule(randomMap().text()));
}

TEST(WrittenForm, isTakenAsByTheRuleOrNotAtAllIfItIsDamaged)
{
    ::testing::internal::CaptureStdout();  // the rule's lines about arrays that it can't read
    int taken = 0;
    int others = 0;
    for (int i = 0; i < 3000; ++i) {
        auto text = randomMap().text();
        for (auto changes = 1 + randomBelow(3); changes > 0 && !text.empty(); --changes)
            damage(text);
        ++(isTakenAsByTheRule(text) ? taken : others);
    }
    ::testing::internal::GetCapturedStdout();

    EXPECT_GT(taken, 100);
    EXPECT_GT(others, 1000);
}

TEST(WrittenForm, isThatOfTheWriter)
{
    Map map;
    map.components.edit().emplace_back("Engine", "libEngines.so.1.0.0");
    map.components.edit().emplace_back("Wheel", "libEngines.so.1.0.0").error.assign("in conflict");
    map.sharedLibraries.edit().emplace_back("libEngines.so.1.0.0", 1700000000);
    map.sharedLibraries.edit().emplace_back("libOars.so.1", -1).error.assign("");

    EXPECT_TRUE(isTakenAsByTheRule(stateOf(map)));
}

TEST(WrittenForm, isNotThatOfATextThatNeedsTheReader)
{
    MapText const map{{{"Engine", "libEngines.so.1.0.0"}}, {{"libEngines.so.1.0.0", 1}}};
    struct Row {
        char const* why;
        MapText map;
    };
    auto const with = [&map](auto const& change) {
        auto changed = map;
        change(changed);
        return changed;
    };
    Row const rows[] = {
        {"a list of errors", with([](MapText& text) { text.errors = {"a"}; })},
        {"an escape", with([](MapText& text) { text.components[0].type = "En\"gine"; })},
        {"a character that isn't ASCII", with([](MapText& text) { text.components[0].type = "\xc3\x84"; })},
        {"a time stamp of more than 32 bits", with([](MapText& text) { text.libraries[0].timeStamp = 1L << 31; })},
        {"no components", with([](MapText& text) { text.components.clear(); })},
        {"no libraries", with([](MapText& text) { text.libraries.clear(); })},
    };

    EXPECT_TRUE(isTakenAsByTheRule(map.text()));
    for (auto const& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_FALSE(isTakenAsByTheRule(row.map.text()));
    }
}

}  // namespace
}  // namespace Zelm
