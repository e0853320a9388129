#include "zelm/metadata/reader_json.h"

#include <rapidjson/document.h>

#include <cstddef>
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
        if (void* const memory = std::realloc(old, size))
            return memory;
        throw std::bad_alloc();
    }
    static void Free(void* memory) { std::free(memory); }
};

using Pool = rapidjson::MemoryPoolAllocator<ThrowingAllocator>;
using Document = rapidjson::GenericDocument<rapidjson::UTF8<>, Pool, ThrowingAllocator>;
using Value = Document::ValueType;

Element ConvertValue(Value const& value);

/// The members in the order of the text, so that of equal names the last one wins. Names end at their first NUL.
void addMembers(Value const& source, Object& target)
{
    for (auto member = source.MemberBegin(); member != source.MemberEnd(); ++member)
        target[member->name.GetString()] = ConvertValue(member->value);
}

/// The order of the tests is part of the rule: a number from 2^63 up to 2^64 - 1 passes the unsigned test first, and
/// its 64 bits make a negative Integer, on purpose.
Element ConvertValue(Value const& value)
{
    auto const integer = [](long number) { return Element(Trivial_T<long>(number)); };
    if (value.IsBool())
        return Element(Trivial_T<bool>(value.GetBool()));
    if (value.IsInt())
        return integer(value.GetInt());
    if (value.IsUint())
        return integer(value.GetUint());
    if (value.IsUint64())
        return integer(static_cast<long>(value.GetUint64()));
    if (value.IsInt64())
        return integer(value.GetInt64());
    if (value.IsDouble())
        return Element(Trivial_T<double>(value.GetDouble()));
    if (value.IsString())
        return Element(Trivial_T<std::string>(value.GetString()));  // without its length: ends at its first NUL
    if (value.IsNull())
        return Element();
    if (value.IsArray()) {
        Array array;
        for (auto const* element = value.Begin(); element != value.End(); ++element)
            array.insert(ConvertValue(*element));
        return Element(std::move(array));
    }
    if (value.IsObject()) {
        Object object;
        addMembers(value, object);
        return Element(std::move(object));
    }
    // Never reached: a parsed value is of one of the kinds above.
    std::cout << "ConvertValue"
              << " Cannot convert JSON value, unknown type!" << std::endl;
    return Element();
}

}  // namespace

void ReaderJson::Read(Object& object, std::string const& text)
{
    Document document;
    // Flags 0 on purpose: doubles are converted fast, and may differ from the correctly rounded ones in the last
    // places.
    document.Parse<rapidjson::kParseNoFlags>(text.c_str());
    if (document.HasParseError()) {
        std::cout << "Read"
                  << ": Parser Error!" << std::endl;
        return;
    }
    if (document.IsObject())
        addMembers(document, object);
}

}  // namespace Zelm::MetaData
