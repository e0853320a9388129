#include "zelm/metadata/reader_json.h"

#include "zelm/metadata/private/json_exponents.h"
#include "zelm/metadata/private/level_stack.h"

#include <rapidjson/document.h>
#include <rapidjson/reader.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <new>

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
        if (void* const memory = std::realloc(old, size))
            return memory;
        throw std::bad_alloc();
    }
    static void Free(void* memory) { std::free(memory); }  // NOLINT(cppcoreguidelines-no-malloc): see above
};

using Pool = rapidjson::MemoryPoolAllocator<ThrowingAllocator>;
using Encoding = rapidjson::UTF8<>;
using Document = rapidjson::GenericDocument<Encoding, Pool, ThrowingAllocator>;
using Value = Document::ValueType;

// ------------------------------------------------------------------------------------------------------------ parse

/// Hands all that the parser meets on to the document, but ends the parsing at a container that lies too deep.
class ShallowTextHandler {
public:
    explicit ShallowTextHandler(Document& document) : document_(document) {}

    bool endedEarly() const { return levels_ > mostLevels; }

    bool Null() { return document_.Null(); }
    bool Bool(bool value) { return document_.Bool(value); }
    bool Int(int value) { return document_.Int(value); }
    bool Uint(unsigned value) { return document_.Uint(value); }
    bool Int64(std::int64_t value) { return document_.Int64(value); }
    bool Uint64(std::uint64_t value) { return document_.Uint64(value); }
    bool Double(double value) { return document_.Double(value); }
    bool RawNumber(char const* text, rapidjson::SizeType length, bool copy)
    {
        return document_.RawNumber(text, length, copy);
    }
    bool String(char const* text, rapidjson::SizeType length, bool copy)
    {
        return document_.String(text, length, copy);
    }
    bool Key(char const* text, rapidjson::SizeType length, bool copy) { return document_.Key(text, length, copy); }
    bool StartObject() { return ++levels_ <= mostLevels && document_.StartObject(); }
    bool StartArray() { return ++levels_ <= mostLevels && document_.StartArray(); }
    bool EndObject(rapidjson::SizeType members)
    {
        --levels_;
        return document_.EndObject(members);
    }
    bool EndArray(rapidjson::SizeType elements)
    {
        --levels_;
        return document_.EndArray(elements);
    }

private:
    static constexpr unsigned mostLevels = 32;  // more than any ordinary text has, and few enough for small stacks

    Document& document_;
    unsigned levels_ = 0;
};

/// Flags 0 on purpose: doubles are converted fast, and may differ from the correctly rounded ones in the last places.
constexpr unsigned flags = rapidjson::kParseNoFlags;

/// False if the text doesn't parse. By the parser that calls itself for each level, which is much the quicker one, or
/// from the start once more by the other one, if the text turns out to be too deep for it. Both give the same values.
bool parse(char const* text, Document& document)
{
    bool isDeep = false;
    bool parsed = false;
    auto const parseAsShallow = [&](Document& target) {
        ShallowTextHandler handler(target);
        rapidjson::GenericReader<Encoding, Encoding, ThrowingAllocator> reader;
        rapidjson::GenericStringStream<Encoding> stream(text);
        parsed = !reader.Parse<flags>(stream, handler).IsError();
        isDeep = handler.endedEarly();
        return parsed;
    };
    document.Populate(parseAsShallow);
    if (isDeep) {
        document = Document();  // what was built until then goes
        parsed = !document.Parse<flags | rapidjson::kParseIterativeFlag>(text).HasParseError();
    }
    return parsed;
}

// ---------------------------------------------------------------------------------------------------------- convert

/// A container and what it is converted to, which is complete but for the parts from `next` on.
struct Level {
    Value const& source;
    Object* object;  // one of the two
    Array* array;
    rapidjson::SizeType next;
};
using Levels = Private::LevelStack<Level>;

/// Makes the element what the value says or, of a container, an empty one whose parts are left to its level.
///
/// The order of the tests is part of the rule: a number from 2^63 up to 2^64 - 1 passes the unsigned test first, and
/// its 64 bits make a negative Integer, on purpose.
void begin(Value const& value, Element& element, Levels& levels)
{
    auto const integer = [](long number) { return Element(Trivial_T<long>(number)); };
    if (value.IsBool()) {
        element = Element(Trivial_T<bool>(value.GetBool()));
    } else if (value.IsInt()) {
        element = integer(value.GetInt());
    } else if (value.IsUint()) {
        element = integer(value.GetUint());
    } else if (value.IsUint64()) {
        element = integer(static_cast<long>(value.GetUint64()));
    } else if (value.IsInt64()) {
        element = integer(value.GetInt64());
    } else if (value.IsDouble()) {
        element = Element(Trivial_T<double>(value.GetDouble()));
    } else if (value.IsString()) {
        element = Element(Trivial_T<std::string>(value.GetString()));  // without its length: ends at its first NUL
    } else if (value.IsNull()) {
        element = Element();
    } else if (value.IsArray()) {
        element = Element(Array());
        levels.push(value, nullptr, &static_cast<Array&>(element), 0u);
    } else if (value.IsObject()) {
        element = Element(Object());
        levels.push(value, &static_cast<Object&>(element), nullptr, 0u);
    } else {
        // Never reached: a parsed value is of one of the kinds above.
        std::cout << "ConvertValue"
                  << " Cannot convert JSON value, unknown type!" << std::endl;
        element = Element();
    }
}

/// Goes on until a part is a container itself, which comes first then, or until the level is complete.
void convertParts(Level& level, Levels& levels)
{
    auto const depth = levels.size();
    if (level.array) {
        auto const* const elements = level.source.Begin();
        for (auto const size = level.source.Size(); level.next != size;) {
            begin(elements[level.next++], *level.array->insert(Element()), levels);
            if (levels.size() != depth)
                return;
        }
    } else {
        // In the order of the text, so that of equal names the last one wins. Names end at their first NUL.
        auto const members = level.source.MemberBegin();
        for (auto const size = level.source.MemberCount(); level.next != size;) {
            auto const& member = members[level.next++];
            begin(member.value, (*level.object)[member.name.GetString()], levels);
            if (levels.size() != depth)
                return;
        }
    }
    levels.pop();
}

Element ConvertValue(Value const& value)
{
    Element element;
    Levels levels;
    begin(value, element, levels);
    while (!levels.empty())
        convertParts(levels.top(), levels);
    return element;
}

}  // namespace

void ReaderJson::Read(Object& object, std::string const& text)
{
    Document document;
    bool const isSafe = !Private::mayHaveTooLongAnExponent(text);
    if (!parse(isSafe ? text.c_str() : Private::withoutTooLongExponents(text).c_str(), document)) {
        std::cout << "Read"
                  << ": Parser Error!" << std::endl;
        return;
    }
    Value const& root = document;
    if (!root.IsObject())
        return;
    for (auto member = root.MemberBegin(); member != root.MemberEnd(); ++member)
        object[member->name.GetString()] = ConvertValue(member->value);
}

}  // namespace Zelm::MetaData
